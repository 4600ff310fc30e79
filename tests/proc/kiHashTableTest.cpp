// kiHashTableTest.cpp - kiHashTable: the string hashes, bucket order, replacement
// and refusal with counted helpers, duplicates, pointer keys, null arguments.
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "ki/proc/kiHashTable.h"
#include "ki/proc/kiMem.h"

namespace {

// Helpers that count what they make and free; "refuse" cannot be copied.
int g_made = 0, g_freed = 0;
void* CountedCopy(const void* item) {
  if (std::strcmp(static_cast<const char*>(item), "refuse") == 0) return nullptr;
  return ++g_made, kiMem_Strdup(static_cast<const char*>(item));
}
void CountedFree(void* item) { ++g_freed, kiMem_Free(item); }
const kiCustomHashTable_HelperFunctions_Key kKeys = {
    CountedCopy, CountedFree, kiHashTable_StringKeyCompare, kiHashTable_StringKeyHash};
const kiCustomHashTable_HelperFunctions_Value kValues = {CountedCopy, CountedFree};

// "key=value " in ForEach order.
std::string Walk(const kiHashTable* table) {
  std::string out;
  kiHashTable_ForEach(
      table,
      [](const void* k, void* v, void* o) {
        *static_cast<std::string*>(o) +=
            std::string(static_cast<const char*>(k)) + "=" + static_cast<const char*>(v) + " ";
      },
      &out);
  return out;
}

TEST(HashTableTest, KnownHashes) {
  struct Row {
    const char* text;
    unsigned int hash;
  };
  const Row rows[] = {{nullptr, 0},
                      {"", 0},
                      {"a", 98},
                      {"ab", 3137},
                      {"abc", 97347},
                      {"\xff", 256},                   // bytes are unsigned
                      {"Hello, World", 2777186892u}};  // modulo 2^32
  for (const Row& r : rows) {
    SCOPED_TRACE(r.text != nullptr ? r.text : "null");
    EXPECT_EQ(r.hash, kiHashTable_StringHash(r.text));
  }
  EXPECT_EQ(65536u, kiHashTable_WStringHash(u"\xffff"));
  EXPECT_EQ(228735u, kiHashTable_WStringHash(u"\u00e9t\u00e9"));
}

// Buckets: "b", "m", "x" -> 0; "c" -> 1; "a" -> 10.
TEST(HashTableTest, BucketOrderReplacementAndRefusal) {
  g_made = g_freed = 0;
  kiHashTable* table = kiHashTable_New(&kKeys, &kValues, false);
  for (const char* k : {"a", "b", "c", "m", "x"}) ASSERT_EQ(0, kiHashTable_Insert(table, k, k));
  EXPECT_EQ("x=x m=m b=b c=c a=a ", Walk(table));
  ASSERT_EQ(0, kiHashTable_Insert(table, "m", "new"));  // old key and value freed
  EXPECT_EQ(2, g_freed);
  EXPECT_EQ(-1, kiHashTable_Insert(table, "c", "refuse"));  // the old "c" stays
  EXPECT_EQ(-1, kiHashTable_Insert(table, "refuse", "v"));
  EXPECT_EQ("m=new x=x b=b c=c a=a ", Walk(table));
  const void* key = nullptr;
  EXPECT_EQ(0, kiHashTable_GetAt(table, 3, &key, nullptr));  // past bucket 0
  EXPECT_STREQ("c", static_cast<const char*>(key));
  // A visitor may remove the key it is given: the walk goes on past it.
  kiHashTable_ForEach(
      table,
      [](const void* k, void*, void* t) {
        EXPECT_EQ(1u, kiHashTable_Remove(static_cast<kiHashTable*>(t), k));
      },
      table);
  EXPECT_EQ(0u, kiHashTable_GetCount(table));
  kiHashTable_Free(table);
  EXPECT_EQ(g_made, g_freed);
}

TEST(HashTableTest, DuplicatesComeNewestFirstAndGoTogether) {
  kiHashTable* table = kiHashTable_New(nullptr, nullptr, true);
  for (const char* v : {"1", "m", "2"}) kiHashTable_Insert(table, v[0] == 'm' ? "m" : "b", v);
  EXPECT_EQ("b=2 m=m b=1 ", Walk(table));
  const void* stored = nullptr;  // the newest "b" itself, freed on the way
  ASSERT_EQ(0, kiHashTable_GetAt(table, 0, &stored, nullptr));
  EXPECT_EQ(2u, kiHashTable_Remove(table, stored));
  EXPECT_EQ("m=m ", Walk(table));
  kiHashTable_Free(table);
}

// Without helpers keys are pointers; an entry replaced by the same pointers
// must not free what the new entry holds.
TEST(HashTableTest, PointerKeysKeepSharedItems) {
  static int freed = 0;
  const kiCustomHashTable_HelperFunctions_Key keys = {nullptr, [](void*) { ++freed; }, nullptr,
                                                      [](const void*) { return 7u; }};
  const kiCustomHashTable_HelperFunctions_Value values = {nullptr, [](void*) { ++freed; }};
  kiHashTable* table = kiHashTable_New(&keys, &values, false);
  char first[] = "k", second[] = "k";
  for (char* k : {first, second, first}) ASSERT_EQ(0, kiHashTable_Insert(table, k, first));
  EXPECT_EQ(2u, table->bucketCounts[7]);
  EXPECT_EQ(0, freed);
  kiHashTable_Free(table);
  EXPECT_EQ(4, freed);
}

TEST(HashTableTest, NullTablesHaveDefinedResults) {
  const kiCustomHashTable_HelperFunctions_Key noHash = {};
  EXPECT_EQ(nullptr, kiHashTable_New(&noHash, nullptr, false));
  void* value = &value;
  EXPECT_EQ(-3, kiHashTable_Insert(nullptr, "k", "v") + kiHashTable_Find(nullptr, "k", &value) +
                    kiHashTable_GetAt(nullptr, 0, nullptr, &value));
  EXPECT_EQ(0u, kiHashTable_Remove(nullptr, "k") + kiHashTable_GetCount(nullptr));
  kiHashTable_ForEach(
      nullptr, [](const void*, void*, void*) { ADD_FAILURE(); }, nullptr);
  kiHashTable_Clear(nullptr);
  kiHashTable_Free(nullptr);
}

}  // namespace
