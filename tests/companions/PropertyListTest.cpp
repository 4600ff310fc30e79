// PropertyListTest.cpp - kivoPlugins: reference counting, resizing that keeps
// values, replaced values freed (leaks show under ASan), null handling, the
// 16-byte record.
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <kiPlugins/PropertyList.h>
#include <string>

#include <gtest/gtest.h>

namespace {

char* Allocated(const char* text) { return std::strcpy(static_cast<char*>(std::malloc(16)), text); }

TEST(PropertyListTest, ValueRecordIsSixteenBytesWithTheTagFirst) {
  EXPECT_EQ(16u, sizeof(kiData));
  EXPECT_EQ(0u, offsetof(kiData, type));
  EXPECT_EQ(8u, offsetof(kiData, value));
}

TEST(PropertyListTest, TheLastReleaseFreesTheWholeChain) {
  kiPropertyList* list = kiPropertyList_New();
  EXPECT_EQ(1, list->refs);
  EXPECT_EQ(list, kiPropertyList_Take(list));
  kiProperty* p = kiProperty_New("p", 3);
  kiProperty_Set_charPtr(p, 0, "text", 1);
  kiProperty_Set_wcharPtr(p, 1, u"wide", 1);
  kiProperty_Set_data(p, 2, "\0\1", 2);
  kiPropertyList_Add(list, p);
  // A recursive free would overflow the stack on a chain this long.
  for (int i = 0; i < 200000; ++i) kiPropertyList_Add(list, kiProperty_New("k", 1));
  EXPECT_EQ(1, kiPropertyList_Release(list));
  EXPECT_STREQ("k", list->head->name);  // still alive
  EXPECT_EQ(0, kiPropertyList_Release(list));
  EXPECT_EQ(nullptr, kiPropertyList_Take(nullptr));
  EXPECT_EQ(0, kiPropertyList_Release(nullptr));
}

TEST(PropertyListTest, AddLinksAtTheHeadAndFindTakesTheFirstMatch) {
  kiPropertyList* list = kiPropertyList_New();
  kiProperty* older = kiProperty_New("dup", 1);
  kiProperty* newer = kiProperty_New("dup", 1);
  kiPropertyList_Add(list, older);
  kiPropertyList_Add(list, kiProperty_New("other", 1));
  kiPropertyList_Add(list, newer);
  EXPECT_EQ(older, list->head->next->next);
  EXPECT_EQ(newer, kiPropertyList_Find(list, "dup"));
  EXPECT_EQ(kiPlugins_ErrLinked, kiPropertyList_Add(list, newer));  // would make a loop
  EXPECT_EQ(older, list->head->next->next);
  kiPropertyList_Release(list);
}

TEST(PropertyListTest, ResizeKeepsValuesAndFreesThoseCutOff) {
  kiProperty* p = kiProperty_New("size", 2);
  kiProperty_Set_uint64(p, 0, 1ull << 40);
  kiProperty_Set_charPtr(p, 1, "second", 1);
  EXPECT_EQ(0, kiProperty_Resize(p, 5));
  EXPECT_EQ(1ull << 40, p->values[0].value.u64);
  EXPECT_STREQ("second", p->values[1].value.text);
  for (unsigned int i = 2; i < 5; ++i) EXPECT_EQ(kiDataType_None, p->values[i].type);

  kiProperty_Set_data(p, 4, "xyz", 3);
  EXPECT_EQ(0, kiProperty_Resize(p, 1));  // the text and the bytes go
  EXPECT_EQ(kiDataType_UInt64, p->values[0].type);
  EXPECT_EQ(kiPlugins_ErrIndex, kiProperty_Set_uint32(p, 1, 0));
  EXPECT_EQ(0, kiProperty_Resize(p, 0));
  EXPECT_EQ(nullptr, p->values);
  EXPECT_EQ(0, kiProperty_Resize(p, 1));
  EXPECT_EQ(kiDataType_None, p->values[0].type);
  kiProperty_Delete(p);
}

TEST(PropertyListTest, SettingAValueReplacesAndFreesTheOldOne) {
  kiProperty* p = kiProperty_New("v", 1);
  char source[] = "copied";
  kiProperty_Set_charPtr(p, 0, source, 1);
  source[0] = 'X';  // a copy does not follow its source
  EXPECT_STREQ("copied", p->values[0].value.text);
  kiProperty_Set_wcharPtr(p, 0, u"\u00e9t\u00e9", 1);
  EXPECT_EQ(std::u16string(u"\u00e9t\u00e9"), p->values[0].value.wtext);

  char* adopted = Allocated("adopted");
  EXPECT_EQ(0, kiProperty_Set_charPtr(p, 0, adopted, 0));
  EXPECT_EQ(adopted, p->values[0].value.text);
  EXPECT_EQ(0, kiProperty_Set_charPtr(p, 0, adopted, 0));  // already its own: kept
  EXPECT_STREQ("adopted", p->values[0].value.text);

  kiProperty_Set_data(p, 0, "\xff\0", 2);
  EXPECT_EQ(2u, p->values[0].size);
  EXPECT_EQ(0, std::memcmp("\xff\0", p->values[0].value.bytes, 2));
  kiProperty_Set_double(p, 0, 2.5);
  EXPECT_EQ(kiDataType_Double, p->values[0].type);
  EXPECT_EQ(0u, p->values[0].size);  // the byte count goes with the bytes
  kiProperty_Delete(p);
}

TEST(PropertyListTest, NullsAndBadIndexesHaveDefinedAnswers) {
  EXPECT_EQ(kiPlugins_ErrNull, kiProperty_Set_uint32(nullptr, 0, 1));
  EXPECT_EQ(kiPlugins_ErrNull, kiProperty_Set_data(nullptr, 0, "a", 1));
  EXPECT_EQ(kiPlugins_ErrNull, kiProperty_Resize(nullptr, 1));
  EXPECT_EQ(nullptr, kiPropertyList_Find(nullptr, "a"));
  kiProperty_Delete(nullptr);

  kiProperty* p = kiProperty_New(nullptr, 2);
  EXPECT_STREQ("", p->name);
  EXPECT_EQ(kiPlugins_ErrIndex, kiProperty_Set_double(p, 2, 1));
  char* text = Allocated("mine");
  EXPECT_EQ(kiPlugins_ErrIndex, kiProperty_Set_charPtr(p, 0xFFFFFFFFu, text, 0));
  std::free(text);  // not adopted on an error

  kiProperty_Set_charPtr(p, 0, "x", 1);
  EXPECT_EQ(0, kiProperty_Set_charPtr(p, 0, nullptr, 1));  // null text: no value
  EXPECT_EQ(kiDataType_None, p->values[0].type);
  EXPECT_EQ(0, kiProperty_Set_data(p, 1, nullptr, 99));  // null bytes: none of them
  EXPECT_EQ(kiDataType_PackedData, p->values[1].type);
  EXPECT_EQ(0u, p->values[1].size);

  EXPECT_EQ(nullptr, kiProperty_New("big", kiProperty_MaxCount + 1));
  EXPECT_EQ(kiPlugins_ErrTooMany, kiProperty_Resize(p, kiProperty_MaxCount + 1));
  EXPECT_EQ(2u, p->count);
  kiProperty_Delete(p);
}

}  // namespace
