// StringListTest.cpp - kiStringList and kiCSVStringList: splitting with escapes
// and joining back, the table edits (Add, Remove, the single-pass RemoveEmpty),
// numbers, deep copies.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ki/core/StringList.h"

namespace {

using Items = std::vector<std::string>;

Items ItemsOf(const kiStringList& list) {
  Items items;
  for (unsigned int i = 0; i < list.GetCount(); ++i) items.emplace_back(list.GetAt(i));
  return items;
}

std::string Bytes(const kiCString& s) { return std::string(s.c_str(), s.length()); }

TEST(StringListTest, SetSplitsAndGetStringJoinsBack) {
  struct Row {
    const char* what;
    const char* text;
    char separator, escape;
    Items items;
    std::string joined;  // GetString(escape)
  };
  const Row rows[] = {
      {"escaped separator", "a\\,b,c", ',', '\\', {"a,b", "c"}, "a\\,b,c"},
      {"no escape", "a\\,b,c", ',', 0, {"a\\", "b", "c"}, "a\\,b,c"},
      {"separators only", ",", ',', '\\', {"", ""}, ","},
      {"escaped at both ends", "\\,a\\,", ',', '\\', {",a,"}, "\\,a\\,"},
      {"escape is not escapable", "a\\\\,b", ',', '\\', {"a\\,b"}, "a\\\\,b"},
      {"escaped then split", "a\\,,b", ',', '\\', {"a,", "b"}, "a\\,,b"},
      {"escape equal to separator", "a,,b", ',', ',', {"a", "", "b"}, "a,,b"},
      {"separator 0", "a,b", 0, '\\', {"a,b"}, "a,b"},
      {"empty text", "", ',', 0, {}, ""},
      {"null text", nullptr, ',', 0, {}, ""},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.what);
    const kiStringList list(r.text, r.separator, r.escape);
    EXPECT_EQ(r.items, ItemsOf(list));
    EXPECT_EQ(r.joined, Bytes(list.GetString(r.escape)));
  }
}

TEST(StringListTest, Lookups) {
  const kiStringList list("12,12x,-7, 3,2147483648,12", ',');
  EXPECT_EQ(nullptr, list.GetAt(6));
  EXPECT_STREQ("d", list.GetAt(static_cast<unsigned int>(-1), "d"));
  const int numbers[] = {12, 99, -7, 3, 99, 12, 99};  // index 6 is out of range
  for (unsigned int i = 0; i < 7; ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(numbers[i], list.GetAtInt32(i, 99));
  }
  EXPECT_EQ(0, list.IndexOf("12"));  // the first of two, exactly
  EXPECT_EQ(-1, list.IndexOf("12X"));
  EXPECT_EQ(-1, list.IndexOf(nullptr));
}

TEST(StringListTest, AddAndRemoveEditTheTable) {
  kiStringList list;  // separator ','
  list.Add("x,y");
  list.Add(nullptr);
  list.Add(list.GetAt(0));  // its own item, while the block moves
  EXPECT_EQ((Items{"x,y", "", "x,y"}), ItemsOf(list));
  EXPECT_EQ("x\\,y,,x\\,y", Bytes(list.GetString('\\')));
  EXPECT_TRUE(list.Remove("x,y"));
  EXPECT_FALSE(list.Remove("x"));
  EXPECT_EQ((Items{"", "x,y"}), ItemsOf(list));
  list.Set(list.GetAt(1), ',');  // its own item, while the block is freed
  EXPECT_EQ((Items{"x", "y"}), ItemsOf(list));

  kiStringList zero("a", 0);
  zero.Add("b");
  EXPECT_EQ(std::string("a\0b", 3), Bytes(zero.GetString()));
}

TEST(StringListTest, RemoveEmptyStepsOverTheItemThatSlidIn) {
  const struct {
    const char* text;
    Items left;
    unsigned int removed;
  } rows[] = {{"a,,,b", {"a", "", "b"}, 1}, {",,,", {"", ""}, 2}, {",a,", {"a"}, 2}};
  for (const auto& r : rows) {
    SCOPED_TRACE(r.text);
    kiStringList list(r.text, ',');
    EXPECT_EQ(r.removed, list.RemoveEmpty());
    EXPECT_EQ(r.left, ItemsOf(list));
  }
}

TEST(StringListTest, CopiesAreDeep) {
  kiCSVStringList list("a\\,b,c", '\\');
  list.Remove("c");
  kiStringList copy(list);
  list.Add("e");
  EXPECT_EQ((Items{"a,b"}), ItemsOf(copy));
  copy = list;
  list.Reset();
  EXPECT_EQ((Items{"a,b", "e"}), ItemsOf(copy));
}

}  // namespace
