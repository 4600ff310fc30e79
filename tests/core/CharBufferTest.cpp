// CharBufferTest.cpp - kiCharBuffer: one owner at a time, adoption and release.
// Leaks and double frees are left to the sanitizer build to catch.
#include <utility>

#include <gtest/gtest.h>

#include "ki/core/CString.h"
#include "ki/proc/kiMem.h"

namespace {

TEST(CharBufferTest, CopyingHandsTheTextOver) {
  kiCharBuffer source("abc", true);
  const char* text = source.data();
  kiCharBuffer copy(source);
  EXPECT_EQ(nullptr, source.data());
  EXPECT_EQ(text, copy.data());

  kiCharBuffer target("old", true);  // freed by the assignment
  target = copy;
  EXPECT_EQ(nullptr, copy.data());
  EXPECT_EQ(text, target.data());
  kiCharBuffer& alias = target;
  target = alias;
  EXPECT_EQ(text, target.data());

  const kiCharBuffer moved(std::move(target));
  EXPECT_EQ(nullptr, target.data());  // NOLINT(bugprone-use-after-move): left null
  EXPECT_STREQ("abc", moved);
}

TEST(CharBufferTest, CopiesAdoptsReleasesOrAllocatesText) {
  const char text[] = "shared";
  const kiCharBuffer copied(text, true);
  EXPECT_NE(text, copied.data());
  EXPECT_STREQ("shared", copied);

  char* heap = kiMem_Strdup("adopted");
  kiCharBuffer adopted(heap, false);
  EXPECT_EQ(heap, adopted.data());
  EXPECT_EQ(heap, adopted.release());
  EXPECT_EQ(nullptr, adopted.data());
  kiMem_Free(heap);

  EXPECT_EQ(nullptr, kiCharBuffer(nullptr, true).data());
  EXPECT_EQ(nullptr, kiCharBuffer(nullptr, false).data());
  for (unsigned int n : {0u, 16u}) {
    const kiCharBuffer sized(n);  // n + 1 bytes, terminated at n
    EXPECT_EQ('\0', sized[n]);
  }
}

TEST(CharBufferTest, AssigningTextDuplicatesEvenItsOwn) {
  kiCharBuffer buffer("first", true);
  const char other[] = "second";
  buffer = other;
  EXPECT_NE(other, buffer.data());
  EXPECT_STREQ("second", buffer);
  buffer = buffer.data();  // its own text: unchanged
  EXPECT_STREQ("second", buffer);
  buffer = buffer.data() + 3;  // part of it: read before the old text is freed
  EXPECT_STREQ("ond", buffer);
  buffer = static_cast<const char*>(nullptr);
  EXPECT_EQ(nullptr, buffer.data());
}

}  // namespace
