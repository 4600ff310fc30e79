// bitstring_fuzzer.cpp - kiBitString beside a reference reader that keeps one
// bit position and looks every bit up on its own, and the byte-order helpers
// beside arithmetic on the bytes.
//
// Input: two bytes of buffer length, the buffer (copied into a block of
// exactly that size, so a read past it is caught), then operations, each an
// opcode byte and an argument byte. Reads past the end of the input give zeros.
#include <cstdint>
#include <cstring>
#include <memory>

#include "ki/core/BitString.h"

#include "FuzzInput.h"

namespace {

constexpr size_t kMaxInput = 4096;
constexpr int kMaxOps = 512;

using kiFuzz::Check;
using kiFuzz::Reader;

// One bit position over the buffer; bits past the end read as zero.
class Model {
 public:
  Model(const uint8_t* bytes, size_t size) : m_bytes(bytes), m_total(8 * size) {}
  uint64_t Bit(uint64_t i) const { return i < m_total ? (m_bytes[i / 8] >> (7 - i % 8)) & 1u : 0u; }
  uint32_t Get(unsigned int n) {
    if (n == 0 || n > 32) return 0;
    uint64_t v = 0;
    for (unsigned int k = 0; k < n; ++k) v = v << 1 | Bit(m_pos + k);
    Skip(n);
    return static_cast<uint32_t>(v);
  }
  void Skip(uint64_t n) { m_pos = m_pos + n < m_total ? m_pos + n : m_total; }
  void Align() { Skip((8 - m_pos % 8) % 8); }
  void Marker(bool on) {
    if (on) {
      m_saved = m_pos;
    } else {
      m_pos = m_saved;
    }
  }
  uint64_t Remaining() const { return m_total - m_pos; }
  uint64_t ByteOffset() const { return (m_pos + 7) / 8; }

 private:
  const uint8_t* m_bytes;
  uint64_t m_total;
  uint64_t m_pos = 0;
  uint64_t m_saved = 0;
};

void Same(const kiBitString& bits, const Model& model) {
  Check(bits.GetRemainingBitCount() == model.Remaining(), "GetRemainingBitCount");
  Check(bits.GetByteOffset() == model.ByteOffset(), "GetByteOffset");
}

void FuzzReader(Reader& in, const uint8_t* buffer, size_t size) {
  kiBitString bits(buffer, static_cast<unsigned int>(size));
  Model model(buffer, size);
  Same(bits, model);
  for (int op = 0; op < kMaxOps && !in.AtEnd(); ++op) {
    const uint8_t code = in.Byte();
    const uint8_t arg = in.Byte();
    switch (code % 6) {
      case 0:
      case 1: {  // mostly 0..33, sometimes anything
        const unsigned int n = (code & 0x80) != 0 ? arg * 0x01010101u : arg % 34;
        Check(bits.Get(n) == model.Get(n), "Get");
        break;
      }
      case 2: {  // a marker set before is replaced by Peek's own
        const unsigned int n = arg % 34;
        model.Marker(true);
        const uint32_t expected = model.Get(n);
        model.Marker(false);
        Check(bits.Peek(n) == expected, "Peek");
        Check(!bits.IsMarkerSet(), "marker after Peek");
        break;
      }
      case 3: {  // small skips, or large ones up to all ones
        const unsigned int n = (code & 0x80) != 0 ? arg * 0x01010101u : arg;
        bits.Skip(n);
        model.Skip(n);
        break;
      }
      case 4:
        bits.ByteAlign();
        model.Align();
        break;
      default:
        bits.ToggleMarker((arg & 1) != 0);
        model.Marker((arg & 1) != 0);
        Check(bits.IsMarkerSet() == ((arg & 1) != 0), "marker flag");
        break;
    }
    Same(bits, model);
  }
}

// ---- Byte order ------------------------------------------------------------------

uint64_t BigEndian(const uint8_t* p, int n) {
  uint64_t v = 0;
  for (int i = 0; i < n; ++i) v = v * 256 + p[i];
  return v;
}

uint64_t LittleEndian(const uint8_t* p, int n) {
  uint64_t v = 0;
  for (int i = n; i > 0; --i) v = v * 256 + p[i - 1];
  return v;
}

void FuzzByteOrder(const uint8_t* p) {
  const auto* s = reinterpret_cast<const char*>(p);
  Check(kiBitString::Get1(p) == BigEndian(p, 1) && kiBitString::Get1(s) == BigEndian(p, 1), "Get1");
  Check(kiBitString::Get2(p) == BigEndian(p, 2) && kiBitString::Get2(s) == BigEndian(p, 2), "Get2");
  Check(kiBitString::Get3(p) == BigEndian(p, 3) && kiBitString::Get3(s) == BigEndian(p, 3), "Get3");
  Check(kiBitString::Get4(p) == BigEndian(p, 4) && kiBitString::Get4(s) == BigEndian(p, 4), "Get4");
  Check(kiBitString::BigEndianTouint16(p) == BigEndian(p, 2), "BigEndianTouint16");
  Check(kiBitString::BigEndianTouint32(p) == BigEndian(p, 4), "BigEndianTouint32");
  Check(static_cast<uint16_t>(kiBitString::BigEndianToint16(p)) == BigEndian(p, 2),
        "BigEndianToint16");
  Check(static_cast<uint32_t>(kiBitString::BigEndianToint32(p)) == BigEndian(p, 4),
        "BigEndianToint32");
  Check(kiBitString::LittleEndianTouint16(p) == LittleEndian(p, 2), "LittleEndianTouint16");
  Check(kiBitString::LittleEndianTouint32(p) == LittleEndian(p, 4), "LittleEndianTouint32");
  Check(kiBitString::LittleEndianTouint64(p) == LittleEndian(p, 8), "LittleEndianTouint64");
  Check(static_cast<uint16_t>(kiBitString::LittleEndianToint16(p)) == LittleEndian(p, 2),
        "LittleEndianToint16");
  Check(static_cast<uint32_t>(kiBitString::LittleEndianToint32(p)) == LittleEndian(p, 4),
        "LittleEndianToint32");
  // Stored in memory, the converted values must read back little-endian.
  const auto v16 = static_cast<unsigned short>(BigEndian(p, 2));
  const auto v32 = static_cast<unsigned int>(BigEndian(p, 4));
  const unsigned short le16 = kiBitString::uint16ToLittleEndian(v16);
  const unsigned int le32 = kiBitString::uint32ToLittleEndian(v32);
  uint8_t stored[4];
  std::memcpy(stored, &le16, 2);
  Check(LittleEndian(stored, 2) == v16, "uint16ToLittleEndian");
  std::memcpy(stored, &le32, 4);
  Check(LittleEndian(stored, 4) == v32, "uint32ToLittleEndian");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > kMaxInput) return 0;
  Reader in(data, size);
  const unsigned int wanted = in.Byte() | in.Byte() << 8u;
  const size_t length = wanted % (in.Left() + 1);
  // A block of exactly the buffer's size; an empty buffer is sometimes null.
  std::unique_ptr<uint8_t[]> buffer(length != 0 || (wanted & 0x8000) == 0 ? new uint8_t[length]
                                                                          : nullptr);
  if (length != 0) std::memcpy(buffer.get(), in.Take(length).data, length);  // length <= Left()

  uint8_t eight[8] = {};
  if (length != 0) std::memcpy(eight, buffer.get(), length < 8 ? length : 8);
  FuzzByteOrder(eight);
  FuzzReader(in, buffer.get(), length);
  return 0;
}
