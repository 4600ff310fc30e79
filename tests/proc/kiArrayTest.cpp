// kiArrayTest.cpp - kiArray_t: edits against a std::vector model across
// growth, null and out-of-range arguments, sorted insertion and lookup.
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ki/core/StringData.h"
#include "ki/proc/kiArray.h"

namespace {

void* P(std::uintptr_t n) { return reinterpret_cast<void*>(n); }

void ExpectSame(const std::vector<void*>& model, const kiArray_t* array) {
  ASSERT_EQ(model.size(), kiArray_GetCount(array));
  for (unsigned int i = 0; i < model.size(); ++i) ASSERT_EQ(model[i], kiArray_Get(array, i)) << i;
}

// Adds (null items too), inserts at the front and middle and removals,
// through several growths.
TEST(ArrayTest, EditsMatchAVectorAcrossGrowth) {
  kiArray_t* array = kiArray_New(0);
  std::vector<void*> model;
  for (std::uintptr_t i = 1; i <= 300; ++i) {
    const unsigned int at = i % 4 == 0 ? 0 : static_cast<unsigned int>(model.size() / 2);
    if (i % 4 < 2) {
      EXPECT_EQ(at, kiArray_InsertAt(array, at, P(i)));
      model.insert(model.begin() + at, P(i));
    } else if (i % 4 == 2) {
      EXPECT_EQ(model[at], kiArray_RemoveAt(array, at));
      model.erase(model.begin() + at);
    } else {
      EXPECT_EQ(model.size(), kiArray_Add(array, i % 7 == 0 ? nullptr : P(i)));
      model.push_back(i % 7 == 0 ? nullptr : P(i));
    }
    ExpectSame(model, array);
  }
  EXPECT_EQ(model.size(), kiArray_InsertAt(array, 100000, P(7)));  // past the end: appended
  kiArray_Clear(array);
  EXPECT_EQ(0u, kiArray_Add(array, P(1)));
  kiArray_Delete(array);
}

TEST(ArrayTest, NullAndOutOfRangeAreHarmless) {
  EXPECT_EQ(0u, kiArray_GetCount(nullptr));
  EXPECT_EQ(nullptr, kiArray_Get(nullptr, 0));
  EXPECT_EQ(kiNPos, kiArray_Add(nullptr, P(1)));
  EXPECT_EQ(kiNPos, kiArray_InsertAt(nullptr, 0, P(1)));
  EXPECT_EQ(nullptr, kiArray_RemoveAt(nullptr, 0));
  EXPECT_EQ(kiNPos, kiArray_InsertSorted(nullptr, P(1), nullptr));
  EXPECT_EQ(kiNPos, kiArray_FindSorted(nullptr, P(1), nullptr));
  kiArray_Clear(nullptr);
  kiArray_Delete(nullptr);
  kiArray_DeleteWith(nullptr, nullptr);

  kiArray_t* array = kiArray_New(0xFFFFFFFFu);  // only a hint: nothing absurd is reserved
  kiArray_Add(array, P(1));
  EXPECT_EQ(nullptr, kiArray_Get(array, 1));
  EXPECT_EQ(nullptr, kiArray_Get(array, kiNPos));
  EXPECT_EQ(nullptr, kiArray_RemoveAt(array, 1));
  EXPECT_EQ(kiNPos, kiArray_InsertSorted(array, P(2), nullptr));
  EXPECT_EQ(1u, kiArray_GetCount(array));
  kiArray_Delete(array);
}

// Items are {key, serial}; equal keys keep their insertion order.
struct Item {
  int key;
  int serial;
};
int CompareItems(const void* a, const void* b) {
  return static_cast<const Item*>(a)->key - static_cast<const Item*>(b)->key;
}
int CompareKey(const void* key, const void* item) {
  return *static_cast<const int*>(key) - static_cast<const Item*>(item)->key;
}

TEST(ArrayTest, SortedInsertIsStableAndFindAnswersTheFirstEqual) {
  Item items[] = {{5, 0}, {1, 1}, {5, 2}, {3, 3}, {9, 4}, {1, 5}, {5, 6}, {0, 7}, {9, 8}};
  kiArray_t* array = kiArray_New(2);
  for (Item& item : items) kiArray_InsertSorted(array, &item, CompareItems);
  std::string serials;
  for (unsigned int i = 0; i < 9; ++i) {
    serials += std::to_string(static_cast<Item*>(kiArray_Get(array, i))->serial);
  }
  EXPECT_EQ("715302648", serials);
  const int keys[] = {0, 1, 3, 5, 9, -1, 4, 10};
  const unsigned int found[] = {0, 1, 3, 4, 7, kiNPos, kiNPos, kiNPos};
  for (int i = 0; i < 8; ++i) EXPECT_EQ(found[i], kiArray_FindSorted(array, &keys[i], CompareKey));
  kiArray_Delete(array);
}

int g_freed = 0;
TEST(ArrayTest, DeleteWithFreesEveryItemButNulls) {
  g_freed = 0;
  kiArray_t* array = kiArray_New(1);
  kiArray_Add(array, P(1));
  kiArray_Add(array, nullptr);
  kiArray_Add(array, P(2));
  kiArray_DeleteWith(array, [](void*) { ++g_freed; });
  EXPECT_EQ(2, g_freed);
}

}  // namespace
