// BitString.cpp - kiBitString: the bit reader and the byte-order helpers.
#include "ki/core/BitString.h"

#include <cstring>

namespace {

// The largest byte count whose bit count fits in 32 bits.
constexpr unsigned int kMaxBytes = 0xFFFFFFFFu / 8;

const unsigned char* Bytes(const void* p) { return static_cast<const unsigned char*>(p); }

unsigned int BigEndian(const unsigned char* p, int n) {
  unsigned int value = 0;
  if (p == nullptr) return 0;
  for (int i = 0; i < n; ++i) value = value << 8 | p[i];
  return value;
}

unsigned long long LittleEndian(const unsigned char* p, int n) {
  unsigned long long value = 0;
  if (p == nullptr) return 0;
  for (int i = n - 1; i >= 0; --i) value = value << 8 | p[i];
  return value;
}

}  // namespace

void kiBitString::SetBuffer(const void* bytes, unsigned int size) {
  if (bytes == nullptr) size = 0;
  if (size > kMaxBytes) size = kMaxBytes;
  m_next = Bytes(bytes);
  m_bitsLeft = 8 * size;
  m_totalBits = m_bitsLeft;
  m_current = 0;
  m_currentBitsLeft = 0;
  m_marker = false;
  m_savedNext = m_next;
  m_savedBitsLeft = m_bitsLeft;
  m_savedCurrent = 0;
  m_savedCurrentBitsLeft = 0;
}

// Only called with m_bitsLeft != 0.
void kiBitString::Load() {
  m_current = *m_next++;
  m_bitsLeft -= 8;
  m_currentBitsLeft = 8;
}

unsigned int kiBitString::Get(unsigned int n) {
  if (n == 0 || n > 32) return 0;
  unsigned long long value = 0;
  while (n != 0) {
    if (m_currentBitsLeft == 0) {
      if (m_bitsLeft == 0) {
        value <<= n;  // past the end: zero bits
        break;
      }
      Load();
    }
    const unsigned int take = n < m_currentBitsLeft ? n : m_currentBitsLeft;
    const unsigned int shift = m_currentBitsLeft - take;
    value = value << take | ((m_current >> shift) & ((1u << take) - 1));
    m_currentBitsLeft = static_cast<unsigned char>(shift);
    n -= take;
  }
  return static_cast<unsigned int>(value);
}

unsigned int kiBitString::Peek(unsigned int n) {
  ToggleMarker(true);
  const unsigned int value = Get(n);
  ToggleMarker(false);
  return value;
}

void kiBitString::Skip(unsigned int n) {
  if (n <= m_currentBitsLeft) {
    m_currentBitsLeft = static_cast<unsigned char>(m_currentBitsLeft - n);
    return;
  }
  n -= m_currentBitsLeft;
  m_currentBitsLeft = 0;
  if (n > m_bitsLeft) n = m_bitsLeft;
  if (n == 0) return;
  // Whole bytes are passed over; the byte the skip ends in is loaded.
  const unsigned int passed = (n - 1) / 8;
  m_next += passed;
  m_bitsLeft -= 8 * passed;
  Load();
  m_currentBitsLeft = static_cast<unsigned char>(8 - (n - 8 * passed));
}

void kiBitString::ByteAlign() { m_currentBitsLeft = 0; }

void kiBitString::ToggleMarker(bool on) {
  if (on) {
    m_savedNext = m_next;
    m_savedBitsLeft = m_bitsLeft;
    m_savedCurrent = m_current;
    m_savedCurrentBitsLeft = m_currentBitsLeft;
  } else {
    m_next = m_savedNext;
    m_bitsLeft = m_savedBitsLeft;
    m_current = m_savedCurrent;
    m_currentBitsLeft = m_savedCurrentBitsLeft;
  }
  m_marker = on;
}

// ---- Byte order ----------------------------------------------------------------

unsigned int kiBitString::Get1(const unsigned char* p) { return BigEndian(p, 1); }
unsigned int kiBitString::Get2(const unsigned char* p) { return BigEndian(p, 2); }
unsigned int kiBitString::Get3(const unsigned char* p) { return BigEndian(p, 3); }
unsigned int kiBitString::Get4(const unsigned char* p) { return BigEndian(p, 4); }
unsigned int kiBitString::Get1(const char* p) { return BigEndian(Bytes(p), 1); }
unsigned int kiBitString::Get2(const char* p) { return BigEndian(Bytes(p), 2); }
unsigned int kiBitString::Get3(const char* p) { return BigEndian(Bytes(p), 3); }
unsigned int kiBitString::Get4(const char* p) { return BigEndian(Bytes(p), 4); }

short kiBitString::BigEndianToint16(const void* p) {
  return static_cast<short>(BigEndian(Bytes(p), 2));
}
unsigned short kiBitString::BigEndianTouint16(const void* p) {
  return static_cast<unsigned short>(BigEndian(Bytes(p), 2));
}
int kiBitString::BigEndianToint32(const void* p) {
  return static_cast<int>(BigEndian(Bytes(p), 4));
}
unsigned int kiBitString::BigEndianTouint32(const void* p) { return BigEndian(Bytes(p), 4); }

short kiBitString::LittleEndianToint16(const void* p) {
  return static_cast<short>(LittleEndian(Bytes(p), 2));
}
unsigned short kiBitString::LittleEndianTouint16(const void* p) {
  return static_cast<unsigned short>(LittleEndian(Bytes(p), 2));
}
int kiBitString::LittleEndianToint32(const void* p) {
  return static_cast<int>(LittleEndian(Bytes(p), 4));
}
unsigned int kiBitString::LittleEndianTouint32(const void* p) {
  return static_cast<unsigned int>(LittleEndian(Bytes(p), 4));
}
unsigned long long kiBitString::LittleEndianTouint64(const void* p) {
  return LittleEndian(Bytes(p), 8);
}

unsigned short kiBitString::uint16ToLittleEndian(unsigned short value) {
  const unsigned char bytes[2] = {static_cast<unsigned char>(value),
                                  static_cast<unsigned char>(value >> 8)};
  unsigned short stored;
  std::memcpy(&stored, bytes, sizeof stored);
  return stored;
}

unsigned int kiBitString::uint32ToLittleEndian(unsigned int value) {
  const unsigned char bytes[4] = {
      static_cast<unsigned char>(value), static_cast<unsigned char>(value >> 8),
      static_cast<unsigned char>(value >> 16), static_cast<unsigned char>(value >> 24)};
  unsigned int stored;
  std::memcpy(&stored, bytes, sizeof stored);
  return stored;
}

bool kiBitString::IsBigEndianPlatform() {
  const unsigned short one = 1;
  unsigned char first;
  std::memcpy(&first, &one, 1);
  return first == 0;
}
