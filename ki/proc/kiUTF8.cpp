// kiUTF8.cpp - the codec behind the converters. Every conversion takes two
// passes: the first validates and counts, the second writes into a block of
// the exact size. Runs of ASCII go through 8 or 16 bytes at a time.
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "ki/proc/kiMem.h"
#include "ki/proc/kiUTF8_p.h"

namespace {

typedef unsigned char kiByte;
typedef std::make_unsigned<wchar_t>::type kiWideBits;

constexpr size_t kFailed = SIZE_MAX;
constexpr size_t kMaxBlock = 0xFFFFFFFFu;  // kiMem_Malloc takes an unsigned int

// Where wchar_t is 16 bits wide it already holds UTF-16.
constexpr bool kWideIsUTF16 = sizeof(wchar_t) == sizeof(kiWChar);

#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
constexpr bool kBigEndian = true;
#else
constexpr bool kBigEndian = false;
#endif

constexpr uint64_t kHighBits = 0x8080808080808080u;   // bit 7 of each byte
constexpr uint64_t kHighUnits = 0xFF80FF80FF80FF80u;  // bits 7-15 of each 16-bit unit

// 8 bytes from any address; memcpy keeps the load free of alignment and
// aliasing faults and compiles to one move. The mask tests above hold on
// either byte order.
inline uint64_t Load8(const void* at) {
  uint64_t word;
  std::memcpy(&word, at, sizeof word);
  return word;
}

// A native wide character as an unsigned value: a negative wchar_t reads as
// past 0x7FFFFFFF (intended: it is no code point).
inline uint32_t WideValue(wchar_t c) {
  return static_cast<kiWideBits>(c);  // NOLINT(bugprone-signed-char-misuse)
}

inline bool IsHigh(unsigned int u) { return u - 0xD800u < 0x400u; }
inline bool IsLow(unsigned int u) { return u - 0xDC00u < 0x400u; }

// Blocks are sized in bytes by kiMem_Malloc's unsigned int.
template <typename C>
C* NewText(size_t count) {
  if (count >= kMaxBlock / sizeof(C)) return nullptr;  // count + 1 would not fit
  return static_cast<C*>(kiMem_MallocArray(count + 1, sizeof(C)));
}

// ---- UTF-8 -> UTF-16 ----------------------------------------------------------
//
// The counting pass checks 16 bytes at a time as two 64-bit lanes (the vector
// extension of GCC and Clang; SSE2 or NEON where there is one, plain words
// elsewhere), so its cost does not depend on how sequence lengths mix. In a
// lane, byte i of the text sits in bits 8i..8i+7 whatever the byte order, and
// every per-byte flag lives in bit 7 of its byte: shifting a lane left by k
// brings bit 7 - k of each byte there, and by 8 moves a flag to the next
// byte; what leaves a lane at the top enters the next lane at the bottom.

typedef uint64_t kiLanes __attribute__((vector_size(16)));

constexpr kiLanes kNoLanes = {0, 0};

// Lane 0 from the last lane of before, lane 1 from lane 0 of now: the flags
// that left the top of each lane, as they enter the next one.
inline kiLanes Carried(kiLanes before, kiLanes now) {
  return __builtin_shufflevector(before, now, 1, 2);
}

inline kiLanes Load16(const kiByte* p) {
  kiLanes lanes;
  std::memcpy(&lanes, p, sizeof lanes);
  if (kBigEndian) {
    lanes = ((lanes & 0x00FF00FF00FF00FFu) << 8) | ((lanes >> 8) & 0x00FF00FF00FF00FFu);
    lanes = ((lanes & 0x0000FFFF0000FFFFu) << 16) | ((lanes >> 16) & 0x0000FFFF0000FFFFu);
    lanes = (lanes << 32) | (lanes >> 32);
  }
  return lanes;
}

class kiUTF8Checker {
 public:
  // The next 16 bytes; real has bit 7 set for each byte of the text (the rest
  // pad the last block with zero bytes, which no sequence may own).
  void Step(kiLanes w, kiLanes real) {
    const kiLanes s1 = w << 1, s2 = w << 2, s3 = w << 3;
    const kiLanes cont = w & ~s1 & kHighBits;  // 10xxxxxx
    const kiLanes lead2 = w & s1 & kHighBits;  // 11xxxxxx
    const kiLanes lead3 = lead2 & s2;          // 111xxxxx
    const kiLanes lead4 = lead3 & s3;          // 1111xxxx
    // Exactly the owed bytes are continuation bytes: a lead of n bytes owes
    // the n - 1 after it.
    const kiLanes owed = (lead2 >> 56) | (lead3 >> 48) | (lead4 >> 40);
    kiLanes bad = ((lead2 << 8) | (lead3 << 16) | (lead4 << 24) | Carried(m_owed, owed)) ^ cont;
    m_owed = owed;
    // A unit at each lead byte, a second at each 4-byte lead: at most 2 a
    // byte a step, so the byte counters are emptied before they could wrap.
    m_counts += ((~cont & real) >> 7) + (lead4 >> 7);
    if (++m_steps == 120) Flush();
    // Lead bytes that can only start an overlong form or a value past
    // 0x10FFFF are rare, so they are looked for only when a block holds a lead
    // from 0xF0 or one whose bits 4..1 are zero (0xC0, 0xC1, 0xE0, 0xE1).
    const kiLanes s4 = w << 4, s5 = w << 5, s6 = w << 6;
    const kiLanes rare = lead4 | (lead2 & ~(s3 | s4 | s5 | s6)) | m_afterRare;
    if ((rare[0] | rare[1]) != 0) {
      const kiLanes s6or7 = s6 | (w << 7);
      const kiLanes any3to0 = s4 | s5 | s6or7;
      bad |= lead2 & ~(s2 | s3 | s4 | s5 | s6);  // 0xC0, 0xC1: the value fits 7 bits
      bad |= lead4 & (s4 | (s5 & s6or7));        // 0xF5..0xFF: past 0x10FFFF, or 5+ bytes
      // 0xE0 needs a second byte from 0xA0 (else the value fits 11 bits), 0xF0
      // one from 0x90 (else 16 bits), 0xF4 one below 0x90 (else past 0x10FFFF).
      const kiLanes e0 = lead3 & ~s3 & ~any3to0;
      const kiLanes f0 = lead4 & ~any3to0;
      const kiLanes f4 = lead4 & ~s4 & s5 & ~s6or7;
      const kiLanes e0Out = e0 >> 56, f0Out = f0 >> 56, f4Out = f4 >> 56;
      const kiLanes second54 = s2 | s3;  // bit 5 or 4 of the second byte
      bad |= ((e0 << 8) | Carried(m_e0Out, e0Out)) & ~s2;
      bad |= ((f0 << 8) | Carried(m_f0Out, f0Out)) & ~second54;
      bad |= ((f4 << 8) | Carried(m_f4Out, f4Out)) & second54;
      m_e0Out = e0Out;
      m_f0Out = f0Out;
      m_f4Out = f4Out;
      m_afterRare = e0Out | f0Out | f4Out;
    }
    m_bad |= bad;
  }
  void StepAscii16() { m_units += 16; }
  bool Pending() const { return m_owed[1] != 0; }  // a sequence runs into the next block
  // The units, or kFailed; a sequence still owed bytes at the end fails.
  size_t Units() {
    Flush();
    return (m_bad[0] | m_bad[1] | m_owed[1]) != 0 ? kFailed : m_units;
  }

 private:
  void Flush() {
    for (int i = 0; i < 2; ++i) {
      const uint64_t pairs =
          (m_counts[i] & 0x00FF00FF00FF00FFu) + ((m_counts[i] >> 8) & 0x00FF00FF00FF00FFu);
      m_units += static_cast<size_t>((pairs * 0x0001000100010001u) >> 48);
    }
    m_counts = kNoLanes;
    m_steps = 0;
  }

  kiLanes m_bad = kNoLanes;
  kiLanes m_owed = kNoLanes;    // per lane, the owed bytes that left its top
  kiLanes m_counts = kNoLanes;  // per byte, units not yet added to m_units
  kiLanes m_e0Out = kNoLanes, m_f0Out = kNoLanes, m_f4Out = kNoLanes;
  kiLanes m_afterRare = kNoLanes;
  size_t m_units = 0;
  int m_steps = 0;
};

// The UTF-16 units the UTF-8 text [p, end) decodes to, end being its
// terminator, or kFailed. The last partial block is copied, padded with zeros.
size_t CountUTF16(const kiByte* p, const kiByte* end) {
  kiUTF8Checker checker;
  for (;;) {
    kiLanes w;
    kiLanes real = {kHighBits, kHighBits};
    const ptrdiff_t left = end - p;
    if (left >= 16) {
      w = Load16(p);
      p += 16;
      if (!checker.Pending() && ((w[0] | w[1]) & kHighBits) == 0) {
        checker.StepAscii16();
        continue;
      }
    } else if (left > 0) {
      kiByte last[16] = {};
      std::memcpy(last, p, static_cast<size_t>(left));
      w = Load16(last);
      real[0] = left >= 8 ? kHighBits : kHighBits >> (8 * (8 - left));
      real[1] = left > 8 ? kHighBits >> (8 * (16 - left)) : 0;
      p = end;
    } else {
      return checker.Units();
    }
    checker.Step(w, real);
  }
}

// Writes the text CountUTF16 accepted, and its terminator; answers the
// terminator's place. Only the bytes of each sequence are read.
kiWChar* WriteUTF16(const kiByte* p, const kiByte* end, kiWChar* out) {
  while (p != end) {
    const unsigned int c = *p;
    if (c < 0x80) {
      *out++ = static_cast<kiWChar>(c);
      ++p;
      while (end - p >= 16 && ((Load8(p) | Load8(p + 8)) & kHighBits) == 0) {
        for (int i = 0; i < 16; ++i) out[i] = p[i];
        p += 16;
        out += 16;
      }
    } else if (c < 0xE0) {
      *out++ = static_cast<kiWChar>(((c & 0x1F) << 6) | (p[1] & 0x3Fu));
      p += 2;
    } else if (c < 0xF0) {
      // 0xD800..0xDFFF too: surrogates pass (intended)
      *out++ = static_cast<kiWChar>(((c & 0x0F) << 12) | ((p[1] & 0x3Fu) << 6) | (p[2] & 0x3Fu));
      p += 3;
    } else {
      const unsigned int value =
          (((c & 0x07) << 18) | ((p[1] & 0x3Fu) << 12) | ((p[2] & 0x3Fu) << 6) | (p[3] & 0x3Fu)) -
          0x10000;
      out[0] = static_cast<kiWChar>(0xD800 + (value >> 10));
      out[1] = static_cast<kiWChar>(0xDC00 + (value & 0x3FF));
      out += 2;
      p += 4;
    }
  }
  *out = 0;
  return out;
}

// ---- UTF-16 -> UTF-8 ----------------------------------------------------------

// Per-lane flags of four 16-bit units: bit 15 of each lane whose unit in t
// is not zero. The order of the lanes does not matter to these counts.
inline uint64_t NonZeroLanes(uint64_t t) {
  constexpr uint64_t kLow15 = 0x7FFF7FFF7FFF7FFFu;
  return (((t & kLow15) + kLow15) | t) & ~kLow15;
}
// The sum of four small lanes.
inline size_t SumLanes(uint64_t lanes) {
  return static_cast<size_t>((lanes * 0x0001000100010001u) >> 48);
}

constexpr uint64_t kFrom800 = 0xF800F800F800F800u;  // bits 11-15 of each unit

// Whether one of the four units in w is a surrogate (0xD800..0xDFFF).
inline bool HasSurrogate(uint64_t w) {
  return NonZeroLanes((w & kFrom800) ^ 0xD800D800D800D800u) != 0x8000800080008000u;
}

// The UTF-8 bytes of a UTF-16 text; *end receives its terminator. A unit
// counts 1 byte, 2 from 0x80, 3 from 0x800, and a pair 4 in all (1 at its
// high surrogate): a lone surrogate keeps its own 3-byte form. A unit after
// a non-zero one is at most the terminator, so it may always be read.
size_t CountUTF8(const kiWChar* text, const kiWChar** end) {
  size_t bytes = 0;
  const kiWChar* p = text;
  // Eight units at a time once each is known not to be the terminator:
  // eight ASCII units at once, others by lanes without a branch on their
  // values, and a block holding a surrogate looked at unit by unit for pairs.
  while (p[0] != 0 && p[1] != 0 && p[2] != 0 && p[3] != 0 && p[4] != 0 && p[5] != 0 && p[6] != 0 &&
         p[7] != 0) {
    const uint64_t w0 = Load8(p);
    const uint64_t w1 = Load8(p + 4);
    bytes += 8;
    if (((w0 | w1) & kHighUnits) != 0) {
      bytes +=
          SumLanes((NonZeroLanes(w0 & kHighUnits) >> 15) + (NonZeroLanes(w0 & kFrom800) >> 15) +
                   (NonZeroLanes(w1 & kHighUnits) >> 15) + (NonZeroLanes(w1 & kFrom800) >> 15));
      if (HasSurrogate(w0) || HasSurrogate(w1)) {
        for (int k = 0; k < 8; ++k) {
          if (IsHigh(p[k]) && IsLow(p[k + 1])) bytes -= 2;
        }
      }
    }
    p += 8;
  }
  for (unsigned int c = *p; c != 0; c = *++p) {
    bytes += 1 + (c >= 0x80) + (c >= 0x800);
    if (IsHigh(c) && IsLow(p[1])) bytes -= 2;
  }
  *end = p;
  return bytes;
}

// One unit outside a pair in 1 to 3 bytes, written as three (the rest is
// overwritten by what follows) with masks rather than conditions, so that no
// compiler turns them into branches, which mixed text makes unpredictable.
inline kiByte* PutUnit(uint32_t c, kiByte* out) {
  const uint32_t n = (c >= 0x80) + (c >= 0x800);  // bytes after the lead
  const uint32_t three = 0u - (n >> 1);           // all ones for 3 bytes
  const uint32_t low = 0x80 | (c & 0x3F);
  const uint32_t middle = 0x80 | ((c >> 6) & 0x3F);
  out[0] = static_cast<kiByte>(((0x00E0C000u >> (8 * n)) & 0xFF) | (c >> (6 * n)));
  out[1] = static_cast<kiByte>((middle & three) | (low & ~three));
  out[2] = static_cast<kiByte>(low);
  return out + 1 + n;
}

inline kiByte* PutPair(uint32_t high, uint32_t low, kiByte* out) {
  const uint32_t value = 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
  out[0] = static_cast<kiByte>(0xF0 | (value >> 18));
  out[1] = static_cast<kiByte>(0x80 | ((value >> 12) & 0x3F));
  out[2] = static_cast<kiByte>(0x80 | ((value >> 6) & 0x3F));
  out[3] = static_cast<kiByte>(0x80 | (value & 0x3F));
  return out + 4;
}

// Writes the text into a block of exactly CountUTF8 + 1 bytes ending at
// limit; answers the terminator's place. Away from the end four units go at
// a time: as bytes when they are ASCII, through PutUnit when none is a
// surrogate.
kiByte* WriteUTF8(const kiWChar* p, const kiWChar* end, kiByte* out, const kiByte* limit) {
  while (end - p >= 4 && limit - out >= 12) {
    const uint64_t w = Load8(p);
    if ((w & kHighUnits) == 0) {
      for (int i = 0; i < 4; ++i) out[i] = static_cast<kiByte>(p[i]);
      p += 4;
      out += 4;
      // The rest of an ASCII run: the count gave each of its units one byte.
      while (end - p >= 8 && ((Load8(p) | Load8(p + 4)) & kHighUnits) == 0) {
        for (int i = 0; i < 8; ++i) out[i] = static_cast<kiByte>(p[i]);
        p += 8;
        out += 8;
      }
    } else if (!HasSurrogate(w)) {
      for (int i = 0; i < 4; ++i) out = PutUnit(p[i], out);
      p += 4;
    } else if (IsHigh(p[0]) && IsLow(p[1])) {
      out = PutPair(p[0], p[1], out);
      p += 2;
    } else {
      out = PutUnit(*p++, out);  // a lone surrogate in its own 3-byte form
    }
  }
  while (p != end) {
    const unsigned int c = *p;
    if (c < 0x80) {
      *out++ = static_cast<kiByte>(c);
      ++p;
    } else if (c < 0x800) {
      out[0] = static_cast<kiByte>(0xC0 | (c >> 6));
      out[1] = static_cast<kiByte>(0x80 | (c & 0x3F));
      out += 2;
      ++p;
    } else if (IsHigh(c) && IsLow(p[1])) {
      out = PutPair(c, p[1], out);
      p += 2;
    } else {
      out[0] = static_cast<kiByte>(0xE0 | (c >> 12));
      out[1] = static_cast<kiByte>(0x80 | ((c >> 6) & 0x3F));
      out[2] = static_cast<kiByte>(0x80 | (c & 0x3F));
      out += 3;
      ++p;
    }
  }
  *out = 0;
  return out;
}

}  // namespace

kiWChar* kiUTF8_ToUTF16(const char* text) {
  if (text == nullptr) return nullptr;
  // The length first, so that the text may be read a block at a time without
  // a read past the terminator.
  const kiByte* begin = reinterpret_cast<const kiByte*>(text);
  const kiByte* end = begin + std::strlen(text);
  const size_t units = CountUTF16(begin, end);
  if (units == kFailed) return nullptr;
  kiWChar* out = NewText<kiWChar>(units);
  if (out == nullptr) return nullptr;
  kiWChar* const written = WriteUTF16(begin, end, out);
  assert(written == out + units);  // the two passes agree
  (void)written;
  return out;
}

bool kiUTF8_IsValid(const char* text) {
  if (text == nullptr) return false;
  const kiByte* begin = reinterpret_cast<const kiByte*>(text);
  return CountUTF16(begin, begin + std::strlen(text)) != kFailed;
}

char* kiUTF8_FromUTF16(const kiWChar* text) {
  if (text == nullptr) return nullptr;
  const kiWChar* end = nullptr;
  const size_t bytes = CountUTF8(text, &end);
  char* out = NewText<char>(bytes);
  if (out == nullptr) return nullptr;
  kiByte* const begin = reinterpret_cast<kiByte*>(out);
  kiByte* const written = WriteUTF8(text, end, begin, begin + bytes + 1);
  assert(written == begin + bytes);  // the two passes agree
  (void)written;
  return out;
}

wchar_t* kiUTF16_ToWide(const kiWChar* text) {
  if (text == nullptr) return nullptr;
  size_t values = 0;
  for (const kiWChar* p = text; *p != 0; ++p, ++values) {
    if (!kWideIsUTF16 && IsHigh(p[0]) && IsLow(p[1])) ++p;
  }
  wchar_t* out = NewText<wchar_t>(values);
  if (out == nullptr) return nullptr;
  wchar_t* at = out;
  for (const kiWChar* p = text; *p != 0; ++p) {
    if (!kWideIsUTF16 && IsHigh(p[0]) && IsLow(p[1])) {
      *at++ = static_cast<wchar_t>(0x10000 + ((p[0] - 0xD800u) << 10) + (p[1] - 0xDC00u));
      ++p;
    } else {
      *at++ = static_cast<wchar_t>(*p);
    }
  }
  *at = 0;
  return out;
}

kiWChar* kiUTF16_FromWide(const wchar_t* text) {
  if (text == nullptr) return nullptr;
  size_t units = 0;
  for (const wchar_t* p = text; *p != 0; ++p) {
    const uint32_t value = WideValue(*p);
    if (value >= 0x110000) return nullptr;
    units += value >= 0x10000 ? 2 : 1;
  }
  kiWChar* out = NewText<kiWChar>(units);
  if (out == nullptr) return nullptr;
  kiWChar* at = out;
  for (const wchar_t* p = text; *p != 0; ++p) {
    const uint32_t value = WideValue(*p);
    if (value >= 0x10000) {
      *at++ = static_cast<kiWChar>(0xD800 + ((value - 0x10000) >> 10));
      *at++ = static_cast<kiWChar>(0xDC00 + (value & 0x3FF));
    } else {
      *at++ = static_cast<kiWChar>(value);  // surrogates too (intended)
    }
  }
  *at = 0;
  return out;
}

wchar_t* kiUTF8_ToWide(const char* text) {
  kiWChar* units = kiUTF8_ToUTF16(text);
  wchar_t* wide = kiUTF16_ToWide(units);
  kiMem_Free(units);
  return wide;
}

char* kiUTF8_FromWide(const wchar_t* text) {
  kiWChar* units = kiUTF16_FromWide(text);
  char* bytes = kiUTF8_FromUTF16(units);
  kiMem_Free(units);
  return bytes;
}
