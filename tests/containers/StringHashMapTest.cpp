// StringHashMapTest.cpp - kiStringHashMap<T>: lookups of present, absent, case
// and null keys, typed callbacks, value helpers and the table copies share.
#include <cstdint>
#include <new>

#include <gtest/gtest.h>

#include "ki/containers/StringHashMap.h"
#include "ki/proc/kiMem.h"

namespace {

int g_live = 0;  // values copied by the helper and not yet freed
const kiCustomHashTable_HelperFunctions_Value kCounted = {
    [](const void* v) -> void* { return ++g_live, kiMem_Strdup(static_cast<const char*>(v)); },
    [](void* v) { --g_live, kiMem_Free(v); }};

TEST(StringHashMapTest, FindsExactKeysOnly) {
  kiStringHashMap<const char*> map;
  char key[] = "key";
  map.Add(key, "lower");
  key[0] = 'K';  // the map holds its own copy
  map.Add(key, "upper");
  EXPECT_TRUE(map.Add("key", "again"));  // replaces
  EXPECT_TRUE(map.Add("n", nullptr));
  EXPECT_FALSE(map.Add(nullptr, "v"));
  EXPECT_EQ(3u, map.GetCount());
  struct Row {
    const char* key;
    bool found;
    const char* value;
  };
  const Row rows[] = {{"key", true, "again"},
                      {"Key", true, "upper"},
                      {"KEY", false, nullptr},
                      {nullptr, false, nullptr},
                      {"n", true, nullptr}};  // [] cannot tell
  for (const Row& r : rows) {
    SCOPED_TRACE(r.key != nullptr ? r.key : "null");
    const char* found = "untouched";
    EXPECT_EQ(r.found, map.Find(r.key, found));
    EXPECT_STREQ(r.found ? r.value : "untouched", found);
    EXPECT_STREQ(r.value, map[r.key]);
  }
  EXPECT_TRUE(map.Remove("Key"));
  EXPECT_FALSE(map.Remove("Key") || map.Remove(nullptr));
}

// "b" and "m" share bucket 0, "a" is in 10; the typed callback gets T back.
TEST(StringHashMapTest, ForEachGoesByBucketNewestFirst) {
  kiStringHashMap<std::uintptr_t> map;
  map.Add("a", 1);
  map.Add("b", 20);
  map.Add("m", 300);
  std::uintptr_t seen = 0;
  map.ForEach(
      [](const char*, std::uintptr_t v, void* s) {
        *static_cast<std::uintptr_t*>(s) = *static_cast<std::uintptr_t*>(s) * 1000 + v;
      },
      &seen);
  EXPECT_EQ(300020001u, seen);
}

TEST(StringHashMapTest, ValueHelpersAndSharedTables) {
  {
    kiStringHashMap<char*> map(kCounted);
    char value[] = "v";
    map.Add("k", value);
    map.Add("k", value);  // the replaced copy is freed
    EXPECT_NE(value, map["k"]);
    map.Add("j", value);
  }
  EXPECT_EQ(0, g_live);  // freed by the destructor

  // Kept for compatibility: copies share the table, so only one may be destroyed.
  kiStringHashMap<const char*> map;
  alignas(kiStringHashMap<const char*>) unsigned char storage[sizeof map];
  auto* copy = new (storage) kiStringHashMap<const char*>(map);  // never destroyed
  copy->Add("k", "v");
  EXPECT_STREQ("v", map["k"]);
  alignas(kiStringHashMap<const char*>) unsigned char otherStorage[sizeof map];
  auto* other = new (otherStorage) kiStringHashMap<const char*>(kCounted);  // never destroyed
  other->Add("own", "x");
  *other = map;  // frees its own table, then shares
  EXPECT_EQ(0, g_live);
  EXPECT_EQ(map.GetTable(), other->GetTable());
}  // only map frees the shared table

}  // namespace
