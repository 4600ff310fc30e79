// kiHashTable.cpp - the procedural hash table: insertion at the head of a fixed
// bucket, lookup, removal, positional access and the string hashes.
#include "ki/proc/kiHashTable.h"

#include <cstring>

#include "ki/proc/kiMem.h"

namespace {

unsigned int BucketOf(unsigned int hash) { return hash % kiHashTable_BucketCount; }

bool SameKey(const kiHashTable* table, const kiHashTableEntry* entry, unsigned int hash,
             const void* key) {
  if (entry->hash != hash) return false;
  if (table->keyCompare == nullptr) return entry->key == key;
  return table->keyCompare(entry->key, key) == 0;
}

// Frees an unlinked entry and what it holds, except the items it shares with
// `keep` (the entry replacing it, or null).
void FreeEntry(const kiHashTable* table, kiHashTableEntry* entry, const kiHashTableEntry* keep) {
  if (table->keyFree != nullptr && entry->key != nullptr &&
      (keep == nullptr || keep->key != entry->key)) {
    table->keyFree(entry->key);
  }
  if (table->valueFree != nullptr && entry->value != nullptr &&
      (keep == nullptr || keep->value != entry->value)) {
    table->valueFree(entry->value);
  }
  kiMem_Free(entry);
}

// Unlinks and frees the entries equal to key in its bucket: the first one only,
// or all of them when duplicates are allowed. Answers how many went. Entries
// are freed after the walk, since key may be the stored key of one of them.
unsigned int RemoveMatches(kiHashTable* table, unsigned int hash, const void* key,
                           const kiHashTableEntry* keep) {
  const unsigned int b = BucketOf(hash);
  unsigned int removed = 0;
  kiHashTableEntry* unlinked = nullptr;
  kiHashTableEntry** link = &table->buckets[b];
  while (*link != nullptr) {
    kiHashTableEntry* entry = *link;
    if (!SameKey(table, entry, hash, key)) {
      link = &entry->next;
      continue;
    }
    *link = entry->next;
    entry->next = unlinked;
    unlinked = entry;
    ++removed;
    if (!table->allowDuplicates) break;
  }
  table->bucketCounts[b] -= removed;
  table->count -= removed;
  while (unlinked != nullptr) {
    kiHashTableEntry* next = unlinked->next;
    FreeEntry(table, unlinked, keep);
    unlinked = next;
  }
  return removed;
}

}  // namespace

unsigned int kiHashTable_StringHash(const char* text) {
  unsigned int h = 0;
  if (text == nullptr) return h;
  for (const unsigned char* p = reinterpret_cast<const unsigned char*>(text); *p != 0; ++p) {
    h = h * 31u + *p + 1u;
  }
  return h;
}

unsigned int kiHashTable_WStringHash(const char16_t* text) {
  unsigned int h = 0;
  if (text == nullptr) return h;
  for (const char16_t* p = text; *p != 0; ++p) h = h * 31u + *p + 1u;
  return h;
}

void* kiHashTable_StringKeyCopy(const void* key) {
  return kiMem_Strdup(static_cast<const char*>(key));
}

void kiHashTable_StringKeyFree(void* key) { kiMem_Free(key); }

int kiHashTable_StringKeyCompare(const void* key1, const void* key2) {
  if (key1 == nullptr || key2 == nullptr) return (key1 != nullptr) - (key2 != nullptr);
  return std::strcmp(static_cast<const char*>(key1), static_cast<const char*>(key2));
}

unsigned int kiHashTable_StringKeyHash(const void* key) {
  return kiHashTable_StringHash(static_cast<const char*>(key));
}

kiHashTable* kiHashTable_New(const kiCustomHashTable_HelperFunctions_Key* keys,
                             const kiCustomHashTable_HelperFunctions_Value* values,
                             bool allowDuplicates) {
  if (keys != nullptr && keys->hash == nullptr) return nullptr;
  auto* table = static_cast<kiHashTable*>(kiMem_Calloc(sizeof(kiHashTable)));
  if (keys != nullptr) {
    table->keyCopy = keys->keyCopy;
    table->keyFree = keys->keyFree;
    table->keyCompare = keys->keyCompare;
    table->hash = keys->hash;
  } else {
    table->keyCopy = kiHashTable_StringKeyCopy;
    table->keyFree = kiHashTable_StringKeyFree;
    table->keyCompare = kiHashTable_StringKeyCompare;
    table->hash = kiHashTable_StringKeyHash;
  }
  if (values != nullptr) {
    table->valueCopy = values->valueCopy;
    table->valueFree = values->valueFree;
  }
  table->allowDuplicates = allowDuplicates;
  return table;
}

void kiHashTable_Free(kiHashTable* table) {
  if (table == nullptr) return;
  kiHashTable_Clear(table);
  kiMem_Free(table);
}

int kiHashTable_Insert(kiHashTable* table, const void* key, const void* value) {
  if (table == nullptr || key == nullptr) return -1;
  auto* entry = static_cast<kiHashTableEntry*>(kiMem_Malloc(sizeof(kiHashTableEntry)));
  entry->hash = table->hash(key);
  entry->key = table->keyCopy != nullptr ? table->keyCopy(key) : const_cast<void*>(key);
  entry->value = table->valueCopy != nullptr && value != nullptr ? table->valueCopy(value)
                                                                 : const_cast<void*>(value);
  entry->next = nullptr;

  if (entry->key == nullptr || (value != nullptr && entry->value == nullptr)) {
    // Only what the helpers made is freed: the caller keeps what it passed in.
    if (table->keyCopy != nullptr && table->keyFree != nullptr && entry->key != nullptr) {
      table->keyFree(entry->key);
    }
    if (table->valueCopy != nullptr && table->valueFree != nullptr && entry->value != nullptr) {
      table->valueFree(entry->value);
    }
    kiMem_Free(entry);
    return -1;
  }

  if (!table->allowDuplicates) RemoveMatches(table, entry->hash, entry->key, entry);

  const unsigned int b = BucketOf(entry->hash);
  entry->next = table->buckets[b];
  table->buckets[b] = entry;
  ++table->bucketCounts[b];
  ++table->count;
  return 0;
}

unsigned int kiHashTable_Remove(kiHashTable* table, const void* key) {
  if (table == nullptr || key == nullptr) return 0;
  return RemoveMatches(table, table->hash(key), key, nullptr);
}

void kiHashTable_Clear(kiHashTable* table) {
  if (table == nullptr) return;
  for (unsigned int b = 0; b < kiHashTable_BucketCount; ++b) {
    kiHashTableEntry* entry = table->buckets[b];
    table->buckets[b] = nullptr;
    table->bucketCounts[b] = 0;
    while (entry != nullptr) {
      kiHashTableEntry* next = entry->next;
      FreeEntry(table, entry, nullptr);
      entry = next;
    }
  }
  table->count = 0;
}

int kiHashTable_Find(const kiHashTable* table, const void* key, void** value) {
  if (table == nullptr || key == nullptr) return -1;
  const unsigned int hash = table->hash(key);
  for (const kiHashTableEntry* entry = table->buckets[BucketOf(hash)]; entry != nullptr;
       entry = entry->next) {
    if (SameKey(table, entry, hash, key)) {
      if (value != nullptr) *value = entry->value;
      return 0;
    }
  }
  return -1;
}

unsigned int kiHashTable_GetCount(const kiHashTable* table) {
  return table != nullptr ? table->count : 0;
}

int kiHashTable_GetAt(const kiHashTable* table, unsigned int index, const void** key,
                      void** value) {
  if (table == nullptr || index >= table->count) return -1;
  for (unsigned int b = 0; b < kiHashTable_BucketCount; ++b) {
    if (index >= table->bucketCounts[b]) {
      index -= table->bucketCounts[b];
      continue;
    }
    const kiHashTableEntry* entry = table->buckets[b];
    for (; index > 0 && entry != nullptr; --index) entry = entry->next;
    if (entry == nullptr) return -1;  // counts and chain disagree: never, but never a crash
    if (key != nullptr) *key = entry->key;
    if (value != nullptr) *value = entry->value;
    return 0;
  }
  return -1;
}

void kiHashTable_ForEach(const kiHashTable* table, kiHashTable_Visitor visitor, void* context) {
  if (table == nullptr || visitor == nullptr) return;
  for (unsigned int b = 0; b < kiHashTable_BucketCount; ++b) {
    const kiHashTableEntry* entry = table->buckets[b];
    while (entry != nullptr) {
      const kiHashTableEntry* next = entry->next;  // read first: the visitor may remove entry
      visitor(entry->key, entry->value, context);
      entry = next;
    }
  }
}
