// hashmap_fuzzer.cpp - kiStringHashMap beside std::map, and a duplicates-allowed
// kiHashTable (values copied and freed by helpers) beside std::multimap. After
// every operation the count, the lookups and two walks (ForEach and GetAt) are
// checked: every entry visited once, buckets in order, equal keys newest first.
//
// Input: one byte per operation, then its arguments. A key is a length byte
// (low 2 bits, so 0..3) and that many bytes from an 8-letter alphabet, so keys
// collide and share buckets; a value is one byte. Reads past the end give zeros.
#include <cstdint>
#include <cstring>
#include <iterator>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "ki/containers/StringHashMap.h"
#include "ki/proc/kiHashTable.h"
#include "ki/proc/kiMem.h"

#include "FuzzInput.h"

namespace {

constexpr size_t kMaxInput = 4096;

using Entries = std::vector<std::pair<std::string, std::string>>;

using kiFuzz::Check;
using kiFuzz::Fail;

class Reader : public kiFuzz::Reader {
 public:
  using kiFuzz::Reader::Reader;
  std::string Key() {
    static const char kAlphabet[] = "abmxAB\xff~";  // "b", "m", "x" share a bucket
    std::string key;
    for (int n = Byte() & 3; n > 0; --n) key += kAlphabet[Byte() & 7];
    return key;
  }
};

// Values of the duplicates table are texts copied by the table; "" cannot be
// copied, so inserting it must fail and change nothing.
void* CopyText(const void* value) {
  return *static_cast<const char*>(value) == 0 ? nullptr
                                               : kiMem_Strdup(static_cast<const char*>(value));
}
void FreeText(void* value) { kiMem_Free(value); }

// Both walks give the same entries in the same order, buckets never go back,
// and each entry is visited once (the count bounds the positional walk).
// Values are texts, or numbers when `numbers` is set.
Entries Walk(const kiHashTable* table, bool numbers) {
  struct Out {
    Entries entries;
    bool numbers;
  } out{{}, numbers};
  kiHashTable_ForEach(
      table,
      [](const void* key, void* value, void* o) {
        Out* out = static_cast<Out*>(o);
        out->entries.emplace_back(static_cast<const char*>(key),
                                  out->numbers
                                      ? std::to_string(reinterpret_cast<std::uintptr_t>(value))
                                      : std::string(static_cast<const char*>(value)));
      },
      &out);
  const Entries& forEach = out.entries;
  Check(forEach.size() == kiHashTable_GetCount(table), "ForEach visits count entries");
  unsigned int lastBucket = 0;
  for (unsigned int i = 0; i < forEach.size(); ++i) {
    const void* key = nullptr;
    void* value = nullptr;
    Check(kiHashTable_GetAt(table, i, &key, &value) == 0, "GetAt in range");
    Check(forEach[i].first == static_cast<const char*>(key), "GetAt order");
    const unsigned int bucket = kiHashTable_StringHash(forEach[i].first.c_str()) % 11;
    Check(bucket >= lastBucket, "bucket order");
    lastBucket = bucket;
  }
  Check(kiHashTable_GetAt(table, static_cast<unsigned int>(forEach.size()), nullptr, nullptr) == -1,
        "GetAt past the end");
  return forEach;
}

void CheckMap(const kiStringHashMap<std::uintptr_t>& map,
              const std::map<std::string, std::uintptr_t>& model) {
  Check(map.GetCount() == model.size(), "map count");
  const Entries walked = Walk(map.GetTable(), true);
  std::map<std::string, std::uintptr_t> seen;
  for (const auto& e : walked) {
    Check(seen.emplace(e.first, std::stoul(e.second)).second, "map key visited twice");
  }
  Check(seen == model, "map entries");
}

void CheckTable(const kiHashTable* table, const std::multimap<std::string, std::string>& model) {
  Check(kiHashTable_GetCount(table) == model.size(), "table count");
  // Per key, the walk shows the values newest first: the reverse of the model.
  std::map<std::string, std::vector<std::string>> walked;
  for (const auto& e : Walk(table, false)) walked[e.first].push_back(e.second);
  std::map<std::string, std::vector<std::string>> expected;
  for (auto it = model.rbegin(); it != model.rend(); ++it)
    expected[it->first].push_back(it->second);
  Check(walked == expected, "table entries");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > kMaxInput) return 0;
  Reader in(data, size);
  kiStringHashMap<std::uintptr_t> map;
  std::map<std::string, std::uintptr_t> mapModel;
  const kiCustomHashTable_HelperFunctions_Value texts = {CopyText, FreeText};
  kiHashTable* table = kiHashTable_New(nullptr, &texts, true);
  std::multimap<std::string, std::string> tableModel;

  while (!in.AtEnd()) {
    const uint8_t op = in.Byte();
    const std::string key = in.Key();
    const char* k = (op & 0x80) != 0 && key.empty() ? nullptr : key.c_str();  // now and then null
    switch (op & 7) {
      case 0: {  // map Add; values 0..255, 0 (null) included
        const std::uintptr_t v = in.Byte();
        Check(map.Add(k, v) == (k != nullptr), "map Add");
        if (k != nullptr) mapModel[key] = v;
        break;
      }
      case 1:
        Check(map.Remove(k) == (k != nullptr && mapModel.erase(key) == 1), "map Remove");
        break;
      case 2: {
        const auto it = k != nullptr ? mapModel.find(key) : mapModel.end();
        std::uintptr_t v = 999;
        Check(map.Find(k, v) == (it != mapModel.end()), "map Find");
        Check(v == (it != mapModel.end() ? it->second : 999), "map Find value");
        Check(map[k] == (it != mapModel.end() ? it->second : 0), "map operator[]");
        break;
      }
      case 3:
        if ((op & 0x40) != 0) {
          map.Clear();
          mapModel.clear();
        } else {
          kiHashTable_Clear(table);
          tableModel.clear();
        }
        break;
      case 4: {  // table Insert; "" values are refused by the copy helper
        const std::string v(in.Byte() & 3, 'v');
        const std::string value = v.empty() ? v : v + std::to_string(tableModel.size());
        const bool ok = k != nullptr && !value.empty();
        Check((kiHashTable_Insert(table, k, value.c_str()) == 0) == ok, "table Insert");
        if (ok) tableModel.emplace(key, value);
        break;
      }
      case 5: {
        const size_t expected = k != nullptr ? tableModel.erase(key) : 0;
        Check(kiHashTable_Remove(table, k) == expected, "table Remove");
        break;
      }
      case 6: {  // table Find: the newest value of the key
        void* value = nullptr;
        const auto range = k != nullptr ? tableModel.equal_range(key)
                                        : std::make_pair(tableModel.end(), tableModel.end());
        const bool present = range.first != range.second;
        Check((kiHashTable_Find(table, k, &value) == 0) == present, "table Find");
        Check(!present || std::prev(range.second)->second == static_cast<const char*>(value),
              "table Find value");
        break;
      }
      default:
        if ((op & 0x40) != 0) {  // a callback that removes every key it is shown
          map.ForEach(
              [](const char* key, std::uintptr_t, void* m) {
                if (!static_cast<kiStringHashMap<std::uintptr_t>*>(m)->Remove(key)) {
                  Fail("map Remove from ForEach");
                }
              },
              &map);
          mapModel.clear();
        } else {  // remove by a key the table holds: every equal one goes
          const void* stored = nullptr;
          if (kiHashTable_GetAt(table, in.Byte(), &stored, nullptr) != 0) break;
          const std::string copy = static_cast<const char*>(stored);
          Check(kiHashTable_Remove(table, stored) == tableModel.erase(copy), "Remove stored");
        }
        break;
    }
    CheckMap(map, mapModel);
    CheckTable(table, tableModel);
  }
  kiHashTable_Free(table);
  return 0;
}
