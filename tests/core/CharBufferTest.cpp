// CharBufferTest.cpp - kiCharBuffer: one owner at a time, adoption and release.
// Leaks and double frees are left to the sanitizer build to catch.
#include <gtest/gtest.h>

#include "ki/core/CString.h"
#include "ki/proc/kiMem.h"

namespace {

TEST(CharBufferTest, CopyingHandsTheTextOver) {
  kiCharBuffer source("abc", true);
  const char* text = source.data();
  kiCharBuffer target("old", true);  // freed by the assignment
  target = source;
  EXPECT_EQ(nullptr, source.data());
  EXPECT_EQ(text, target.data());
  kiCharBuffer& alias = target;
  target = alias;
  EXPECT_EQ(text, target.data());
}

TEST(CharBufferTest, CopiesAdoptsOrAllocatesText) {
  const char text[] = "shared";
  const kiCharBuffer copied(text, true);
  EXPECT_NE(text, copied.data());
  EXPECT_STREQ("shared", copied);
  char* heap = kiMem_Strdup("adopted");
  EXPECT_EQ(heap, kiCharBuffer(heap, false).data());  // and freed with it
  EXPECT_TRUE(kiCharBuffer(nullptr, true).data() == nullptr &&
              kiCharBuffer(nullptr, false).data() == nullptr);
  for (unsigned int n : {0u, 16u}) EXPECT_EQ('\0', kiCharBuffer(n)[n]);  // n + 1 bytes
}

TEST(CharBufferTest, AssigningTextDuplicatesEvenItsOwn) {
  kiCharBuffer buffer("first", true);
  const char other[] = "second";
  buffer = other;
  EXPECT_NE(other, buffer.data());
  buffer = buffer.data();  // its own text: unchanged
  EXPECT_STREQ("second", buffer);
  buffer = buffer.data() + 3;  // part of it: read before the old text is freed
  EXPECT_STREQ("ond", buffer);
  buffer = static_cast<const char*>(nullptr);
  EXPECT_EQ(nullptr, buffer.data());
}

}  // namespace
