// DataBufferTest.cpp - kiDataBuffer and kiGrowingBuffer: sizes, ownership
// hand-overs without leaks or double frees, the doubling rule.
#include <string>

#include <gtest/gtest.h>

#include "ki/core/DataBuffer.h"
#include "ki/proc/kiMem.h"

namespace {

std::string Bytes(const unsigned char* data, unsigned int size) {
  return data == nullptr ? std::string("<null>")
                         : std::string(reinterpret_cast<const char*>(data), size);
}

TEST(DataBufferTest, ConstructorsHoldTheirBytes) {
  const char* null = nullptr;
  // clang-format off
  const struct { const char* what; kiDataBuffer buffer; std::string expected; } rows[] = {
      {"text keeps its terminator", kiDataBuffer("abc"), std::string("abc\0", 4)},
      {"empty text", kiDataBuffer(""), std::string(1, '\0')},
      {"null text counts as empty", kiDataBuffer(null), std::string(1, '\0')},
      {"bytes", kiDataBuffer("a\0b", 3u), std::string("a\0b", 3)},
      {"null bytes", kiDataBuffer(static_cast<const void*>(nullptr), 5u), "<null>"},
      {"no bytes", kiDataBuffer("abc", 0u), "<null>"},
      {"size 0", kiDataBuffer(0u), "<null>"}};
  // clang-format on
  for (const auto& r : rows) {
    SCOPED_TRACE(r.what);
    EXPECT_EQ(r.expected, Bytes(r.buffer.data(), r.buffer.size()));
    EXPECT_EQ(r.buffer.data() == nullptr, r.buffer.size() == 0);
  }
  EXPECT_EQ(7u, kiDataBuffer(7u).size());
}

// Every hand-over leaves exactly one owner; ASan reports a leak or a double free.
TEST(DataBufferTest, OwnershipMovesWithoutLeakOrDoubleFree) {
  kiDataBuffer a("hello");
  a.Realloc(3);
  EXPECT_EQ("hel", Bytes(a.data(), a.size()));
  a.Realloc(0);
  EXPECT_EQ(nullptr, a.data());
  EXPECT_EQ(0u, a.size());

  a.Set(kiMem_Strdup("xy"), 3);  // adopted
  a.Set(a.data(), 2);            // the same block again: kept, not freed
  EXPECT_EQ("xy", Bytes(a.data(), a.size()));
  a.Set(nullptr, 9);
  EXPECT_EQ(0u, a.size());

  kiDataBuffer b("shared");
  kiDataBuffer c(4u);
  kiDataBuffer keep = std::move(c);  // c's block now belongs to keep
  c = b;                             // shallow: c and b hold one block
  EXPECT_EQ(b.data(), c.data());
  c.TakeOwnership(b);  // the same block: not freed, b left empty
  EXPECT_EQ(nullptr, b.data());
  c.TakeOwnership(c);
  EXPECT_EQ("shared", Bytes(c.data(), c.size() - 1));
  keep = kiDataBuffer("next");  // from a temporary: the old block is freed
  unsigned char* taken = keep.TakeOwnership();
  EXPECT_EQ(nullptr, keep.data());
  EXPECT_EQ(0u, keep.size());
  kiMem_Free(taken);
}

TEST(GrowingBufferTest, GrowsToTwiceTheNeededLengthWhenFull) {
  kiGrowingBuffer g;
  EXPECT_EQ(nullptr, g.buffer());
  g.Append("0123456789", 10);
  EXPECT_EQ(20u, g.capacity());
  g.Append("abcdefghij", 10);  // 20 >= 20 also grows
  EXPECT_EQ(40u, g.capacity());
  g += nullptr;
  g.Append(nullptr, 5);
  g += "-";
  g += 0u;
  g += 4294967295u;
  EXPECT_EQ("0123456789abcdefghij-04294967295", Bytes(g.buffer(), g.length()));

  kiGrowingBuffer sized(8);
  sized.Append("1234567", 7);  // 7 < 8: no growth
  EXPECT_EQ(8u, sized.capacity());
}

TEST(GrowingBufferTest, PositionReduceAndTakeOwnership) {
  kiGrowingBuffer g(4);
  g += "abc";
  g.SetPosition(1);  // within the block: only the length moves
  EXPECT_EQ(4u, g.capacity());
  g += "Z";
  g.SetPosition(10);  // past the block: resized to exactly 10
  EXPECT_EQ(10u, g.capacity());
  EXPECT_EQ("aZ", Bytes(g.buffer(), 2));
  g.Reduce(1);
  EXPECT_EQ(1u, g.capacity());
  EXPECT_EQ("a", Bytes(g.buffer(), g.length()));

  kiGrowingBuffer h(40);
  h += "twelve bytes";
  unsigned int n = 0;
  unsigned char* block = h.TakeOwnership(true, &n);
  EXPECT_EQ(12u, n);
  EXPECT_EQ("twelve bytes", Bytes(block, n));
  EXPECT_EQ(nullptr, h.buffer());
  EXPECT_EQ(0u, h.length() + h.capacity());
  kiMem_Free(block);
  h += "again";  // usable after the hand-over
  kiMem_Free(h.TakeOwnership(false, nullptr));
  EXPECT_EQ(nullptr, h.TakeOwnership(true, &n));
  EXPECT_EQ(0u, n);
}

}  // namespace
