// kiHashTable.h - kiHashTable, the procedural hash table behind kiStringHashMap:
// 11 fixed buckets, pluggable helpers for keys and values, and the string hashes.
#ifndef KI_PROC_KIHASHTABLE_H
#define KI_PROC_KIHASHTABLE_H

#include "ki/Export.h"

// The table never grows or rehashes: an entry lives in bucket hash % 11, so a
// lookup walks about count / 11 entries (intended: tables stay small).
enum { kiHashTable_BucketCount = 11 };

// Helper types. A copy answers the stored item (null means it could not be
// made); a free releases a stored item; a compare answers 0 for equal keys.
// The table never passes null to a copy or a free helper.
typedef void* (*kiHashTable_CopyFunction)(const void* item);
typedef void (*kiHashTable_FreeFunction)(void* item);
typedef int (*kiHashTable_CompareFunction)(const void* key1, const void* key2);
typedef unsigned int (*kiHashTable_HashFunction)(const void* key);
// Called by kiHashTable_ForEach for every entry.
typedef void (*kiHashTable_Visitor)(const void* key, void* value, void* context);

// One entry of a bucket's chain.
struct kiHashTableEntry {
  unsigned int hash;  // hash of the key as inserted
  void* key;          // as stored: through the key copy, or as given
  void* value;        // as stored: through the value copy, or as given
  kiHashTableEntry* next;
};

// The table record (zero-filled at creation). The fields are kept in this
// order for compatibility; read them if you must, change them only through the
// functions below.
struct kiHashTable {
  kiHashTableEntry* buckets[kiHashTable_BucketCount];  // chain heads, newest first
  unsigned int bucketCounts[kiHashTable_BucketCount];
  unsigned int count;
  kiHashTable_CopyFunction keyCopy;        // null: the key pointer is stored
  kiHashTable_FreeFunction keyFree;        // null: keys are never freed
  kiHashTable_CompareFunction keyCompare;  // null: keys compare as pointers
  kiHashTable_HashFunction hash;           // never null
  kiHashTable_CopyFunction valueCopy;      // null: the value pointer is stored
  kiHashTable_FreeFunction valueFree;      // null: values are never freed
  bool allowDuplicates;
};

// The key helpers, in record order. Null for the whole set means the string
// helpers below.
struct kiCustomHashTable_HelperFunctions_Key {
  kiHashTable_CopyFunction keyCopy;
  kiHashTable_FreeFunction keyFree;
  kiHashTable_CompareFunction keyCompare;
  kiHashTable_HashFunction hash;
};

// The value helpers, in this order: copy, then free. Either may be null.
struct kiCustomHashTable_HelperFunctions_Value {
  kiHashTable_CopyFunction valueCopy;
  kiHashTable_FreeFunction valueFree;
};

// ---- String hashes -----------------------------------------------------------
// h = h * 31 + c + 1 over the characters (bytes taken unsigned), modulo 2^32,
// from 0. The empty text and null hash to 0.
KI_API unsigned int kiHashTable_StringHash(const char* text);
// The same over 16-bit characters.
KI_API unsigned int kiHashTable_WStringHash(const char16_t* text);

// ---- The string key helpers (the defaults) -----------------------------------
KI_API void* kiHashTable_StringKeyCopy(const void* key);  // kiMem_Strdup; null: null
KI_API void kiHashTable_StringKeyFree(void* key);         // kiMem_Free; null ignored
// strcmp; a null key sorts before every text, two nulls are equal.
KI_API int kiHashTable_StringKeyCompare(const void* key1, const void* key2);
KI_API unsigned int kiHashTable_StringKeyHash(const void* key);  // kiHashTable_StringHash

// ---- Life --------------------------------------------------------------------
// A new empty table from kiMem_Calloc. keys null gives the string key helpers
// (copied with kiMem_Strdup, freed, compared with strcmp, hashed with
// kiHashTable_StringHash); values null gives none (values are stored as they
// are and never freed). Answers null, allocating nothing, when keys is given
// without a hash function.
KI_API kiHashTable* kiHashTable_New(const kiCustomHashTable_HelperFunctions_Key* keys,
                                    const kiCustomHashTable_HelperFunctions_Value* values,
                                    bool allowDuplicates);
// Clears the table (the free helpers apply) and frees it. Null is ignored.
KI_API void kiHashTable_Free(kiHashTable* table);

// ---- Changes -----------------------------------------------------------------
// Stores key and value through their copy helpers at the head of the key's
// bucket. Without duplicates an entry with an equal key is removed first (its
// key and value freed through the helpers), so the count stays the same; an
// item the old entry shares with the new one (the same pointer, when there is
// no copy helper) is not freed. 0 on success; -1, with nothing changed, for a
// null table, a null key, a key copy that answers null or a value copy that
// answers null for a non-null value. On failure what the copy helpers made is
// freed and the caller keeps what it passed in. A null value is stored as null.
KI_API int kiHashTable_Insert(kiHashTable* table, const void* key, const void* value);
// Removes the first entry with an equal key, or every one when duplicates are
// allowed, freeing key and value through the helpers. key may be a key the
// table holds (from GetAt or ForEach). Answers how many were removed; 0 for a
// null table or key.
KI_API unsigned int kiHashTable_Remove(kiHashTable* table, const void* key);
// Removes every entry through the free helpers. Null is ignored.
KI_API void kiHashTable_Clear(kiHashTable* table);

// ---- Lookup ------------------------------------------------------------------
// 0 and *value (when value is not null) for the most recently inserted entry
// whose key is equal; -1, *value untouched, when there is none or table or key
// is null.
KI_API int kiHashTable_Find(const kiHashTable* table, const void* key, void** value);
// The number of entries; 0 for null.
KI_API unsigned int kiHashTable_GetCount(const kiHashTable* table);
// The entry at position index in ForEach order (whole buckets are skipped by
// their counts): 0 and the stored key and value (either out pointer may be
// null); -1, outputs untouched, when index >= the count or table is null.
KI_API int kiHashTable_GetAt(const kiHashTable* table, unsigned int index, const void** key,
                             void** value);
// Calls visitor(key, value, context) for every entry: buckets 0 to 10, each
// chain from its head, so the newest entry of a bucket comes first. The
// visitor must not insert into, remove from or free the table, with one
// exception: in a table without duplicates it may remove the key it is given.
// A null table or visitor calls nothing.
KI_API void kiHashTable_ForEach(const kiHashTable* table, kiHashTable_Visitor visitor,
                                void* context);

#endif  // KI_PROC_KIHASHTABLE_H
