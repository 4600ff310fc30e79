// StringHashMap.h - kiStringHashMap<T>, a string-keyed map of pointer-sized
// values over the procedural kiHashTable, and kiStringHashMap_ForEach.
#ifndef KI_CONTAINERS_STRINGHASHMAP_H
#define KI_CONTAINERS_STRINGHASHMAP_H

#include <cstdint>
#include <type_traits>

#include "ki/Export.h"
#include "ki/proc/kiHashTable.h"

// What kiStringHashMap<T>::ForEach hands to kiStringHashMap_ForEach: the
// caller's callback, with the value as stored, and its context.
struct kiStringHashMap_ForEachAdapter {
  void (*callback)(const char* key, void* value, void* context);
  void* context;
};

// The table visitor through which every kiStringHashMap<T>::ForEach runs:
// adapter is a kiStringHashMap_ForEachAdapter*; calls its callback (key,
// value, context). A null adapter or callback calls nothing.
KI_API void kiStringHashMap_ForEach(const void* key, void* value, void* adapter);

// Maps narrow text keys to values of a pointer-sized type T (a pointer or an
// integer no wider than a pointer), stored as void*. Keys are copied on Add
// and compared byte for byte (case matters). Eleven fixed buckets: the map
// never grows, so lookups slow down linearly past a few dozen keys (intended).
// Not thread-safe: guard a shared map with a lock.
//
// !!! COPIES SHARE THE TABLE !!!
// Kept for compatibility: the copy constructor and the assignment copy the
// table pointer, not the entries. Every copy sees and makes the same changes,
// and every copy's destructor frees the same table, so exactly one copy may
// ever be destroyed; destroying a second one frees the table twice. Pass maps
// by reference. Assignment frees the target's own table first (its entries
// go through the free helpers) and then shares the source's.
//
// A null key is never stored or found. A null value (0 for an integer T) is
// stored like any other, but operator[] cannot tell it from an absent key:
// use Find when null is a meaningful value.
template <class T>
class kiStringHashMap {
  static_assert((std::is_pointer<T>::value || std::is_integral<T>::value) &&
                    sizeof(T) <= sizeof(void*),
                "kiStringHashMap holds pointers or pointer-sized integers");

 public:
  typedef void (*Callback)(const char* key, T value, void* context);

  // No value helpers: values are stored as given and never freed.
  kiStringHashMap() : m_table(kiHashTable_New(nullptr, nullptr, false)) {}
  // Values go through valueCopy on Add and valueFree on removal.
  explicit kiStringHashMap(const kiCustomHashTable_HelperFunctions_Value& values)
      : m_table(kiHashTable_New(nullptr, &values, false)) {}
  // Shares the source's table (see above): intended.
  kiStringHashMap(const kiStringHashMap& other) : m_table(other.m_table) {}
  // Frees this map's table and shares the source's (see above); self-assignment
  // and maps already sharing a table change nothing.
  kiStringHashMap& operator=(const kiStringHashMap& other) {
    if (m_table != other.m_table) {
      kiHashTable_Free(m_table);
      m_table = other.m_table;
    }
    return *this;
  }
  // Clears (the free helpers apply) and frees the table.
  ~kiStringHashMap() { kiHashTable_Free(m_table); }

  // Stores a copy of key with value, replacing an entry with the same key
  // (its key and value freed, the count unchanged). False for a null key or
  // when the value copy helper answers null.
  bool Add(const char* key, T value) {
    return kiHashTable_Insert(m_table, key, ToVoid(value)) == 0;
  }
  // True and the value when key is present; false and value untouched when it
  // is absent or null.
  bool Find(const char* key, T& value) const {
    void* stored = nullptr;
    if (kiHashTable_Find(m_table, key, &stored) != 0) return false;
    value = FromVoid(stored);
    return true;
  }
  // The value, or null (0) when key is absent or null.
  T operator[](const char* key) const {
    void* stored = nullptr;
    kiHashTable_Find(m_table, key, &stored);
    return FromVoid(stored);
  }
  // Removes key's entry, freeing key and value through the helpers. False
  // when there was none (or key is null).
  bool Remove(const char* key) { return kiHashTable_Remove(m_table, key) != 0; }
  unsigned int GetCount() const { return kiHashTable_GetCount(m_table); }
  // Removes every entry through the free helpers.
  void Clear() { kiHashTable_Clear(m_table); }
  // Calls callback(key, value, context) for every entry: buckets in order,
  // the most recently added entry of a bucket first. The callback may Remove
  // the key it is given and must not change the map otherwise (nor destroy
  // it). A null callback calls nothing.
  void ForEach(Callback callback, void* context) const {
    if (callback == nullptr) return;
    if constexpr (std::is_same<T, void*>::value) {
      kiStringHashMap_ForEachAdapter adapter = {callback, context};
      kiHashTable_ForEach(m_table, kiStringHashMap_ForEach, &adapter);
    } else {
      Typed typed = {callback, context};
      kiStringHashMap_ForEachAdapter adapter = {TypedCallback, &typed};
      kiHashTable_ForEach(m_table, kiStringHashMap_ForEach, &adapter);
    }
  }

  // The table this map (and every copy of it) works on, for the kiHashTable_*
  // functions such as kiHashTable_GetAt. Never null.
  kiHashTable* GetTable() const { return m_table; }

 private:
  struct Typed {
    Callback callback;
    void* context;
  };

  static void* ToVoid(T value) {
    if constexpr (std::is_pointer<T>::value) {
      return const_cast<void*>(static_cast<const void*>(value));
    } else {
      return reinterpret_cast<void*>(static_cast<std::uintptr_t>(value));
    }
  }
  static T FromVoid(void* stored) {
    if constexpr (std::is_pointer<T>::value) {
      return static_cast<T>(stored);
    } else {
      return static_cast<T>(reinterpret_cast<std::uintptr_t>(stored));
    }
  }
  static void TypedCallback(const char* key, void* value, void* context) {
    const Typed* typed = static_cast<const Typed*>(context);
    typed->callback(key, FromVoid(value), typed->context);
  }

  kiHashTable* m_table;  // owned by exactly one of the copies that share it
};

#endif  // KI_CONTAINERS_STRINGHASHMAP_H
