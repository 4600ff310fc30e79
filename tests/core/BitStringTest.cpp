// BitStringTest.cpp - kiBitString: reads across byte boundaries, the marker,
// reads past the end, and the byte-order helpers.
#include <cstring>

#include <gtest/gtest.h>

#include "ki/core/BitString.h"

namespace {

const unsigned char kBytes[] = {0xA5, 0x0F, 0xC3, 0x81, 0x7E};

TEST(BitStringTest, PeekLeavesThePositionAlone) {
  kiBitString bits(kBytes, 2);
  EXPECT_EQ(0xAu, bits.Get(4));
  EXPECT_EQ(0x50u, bits.Peek(8));
  EXPECT_EQ(12u, bits.GetRemainingBitCount());
  EXPECT_FALSE(bits.IsMarkerSet());
  EXPECT_EQ(0x50u, bits.Get(8));
  EXPECT_EQ(2u, bits.GetByteOffset());
}

TEST(BitStringTest, ReadsCrossByteBoundariesMostSignificantBitFirst) {
  // Each row starts from a fresh reader: skip, then read.
  const struct {
    unsigned int skip, n, expected, offset;
  } rows[] = {
      {0, 1, 1, 1},           {0, 12, 0xA50, 2},      {3, 7, 0x14, 2},
      {0, 32, 0xA50FC381, 4}, {1, 32, 0x4A1F8702, 5}, {8, 8, 0x0F, 2},
      {39, 1, 0, 5},          {4, 0, 0, 1},           {0, 33, 0, 0},
  };
  for (const auto& r : rows) {
    SCOPED_TRACE(testing::Message() << "skip " << r.skip << " get " << r.n);
    kiBitString bits(kBytes, sizeof kBytes);
    bits.Skip(r.skip);
    const unsigned int before = bits.GetRemainingBitCount();
    EXPECT_EQ(r.expected, bits.Get(r.n));
    EXPECT_EQ(r.offset, bits.GetByteOffset());
    EXPECT_EQ(before - (r.n <= 32 ? r.n : 0), bits.GetRemainingBitCount());
  }
}

TEST(BitStringTest, ReadsPastTheEndArePaddedWithZeros) {
  kiBitString bits(kBytes, 1);
  bits.Skip(4);
  EXPECT_EQ(0x50u, bits.Get(8));  // 0101 then four zero bits
  EXPECT_EQ(0u, bits.GetRemainingBitCount());
  EXPECT_EQ(0u, bits.Get(32));
  bits.Skip(100);
  EXPECT_EQ(1u, bits.GetByteOffset());

  kiBitString skipped(kBytes, 2);
  skipped.Skip(1000);
  EXPECT_EQ(0u, skipped.GetRemainingBitCount());
  kiBitString empty(nullptr, 10);
  EXPECT_EQ(0u, empty.GetRemainingBitCount());
  EXPECT_EQ(0u, empty.Get(5));
}

TEST(BitStringTest, ByteAlignAndMarker) {
  kiBitString bits(kBytes, sizeof kBytes);
  bits.ByteAlign();  // nothing loaded yet: nothing to drop
  EXPECT_EQ(40u, bits.GetRemainingBitCount());
  bits.Get(3);
  bits.ByteAlign();
  EXPECT_EQ(32u, bits.GetRemainingBitCount());
  bits.ToggleMarker(true);
  EXPECT_EQ(0x0FC3u, bits.Get(16));
  bits.ToggleMarker(false);
  EXPECT_EQ(0x0FC3u, bits.Get(16));
  bits.ToggleMarker(true);
  EXPECT_EQ(0x81u, bits.Get(8));
  bits.Peek(4);              // intended: Peek takes the marker over...
  bits.ToggleMarker(false);  // ...so this goes back to where Peek started
  EXPECT_EQ(0x7Eu, bits.Get(8));

  bits.SetBuffer(kBytes + 4, 1);
  bits.Get(5);
  bits.ToggleMarker(false);  // no marker since SetBuffer: back to the start
  EXPECT_EQ(0x7Eu, bits.Get(8));
}

// Bytes are unsigned through either pointer type; the signed results keep their sign.
TEST(BitStringTest, ByteOrderHelpers) {
  const unsigned char u[] = {0xFF, 0xFE, 0x80, 0x01, 0x02, 0x03, 0x04, 0x85};
  const char* s = reinterpret_cast<const char*>(u);
  EXPECT_EQ(0xFFFE80u, kiBitString::Get3(s));
  EXPECT_EQ(0xFFFE8001u, kiBitString::Get4(s));
  EXPECT_EQ(0xFE8001u, kiBitString::Get3(u + 1));
  EXPECT_EQ(-2, kiBitString::BigEndianToint16(u));
  EXPECT_EQ(-98303, kiBitString::BigEndianToint32(u));
  EXPECT_EQ(-32514, kiBitString::LittleEndianToint16(u + 1));
  EXPECT_EQ(-2063334654, kiBitString::LittleEndianToint32(u + 4));
  EXPECT_EQ(0x850403020180FEFFull, kiBitString::LittleEndianTouint64(u));
  EXPECT_EQ(0u, kiBitString::Get4(static_cast<const char*>(nullptr)));
  EXPECT_EQ(0u, kiBitString::LittleEndianTouint32(nullptr));
  const unsigned int le32 = kiBitString::uint32ToLittleEndian(0x12345678u);
  unsigned char stored[4];
  std::memcpy(stored, &le32, 4);
  EXPECT_EQ(0x78563412u, kiBitString::Get4(stored));
}

}  // namespace
