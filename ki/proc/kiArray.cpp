// kiArray.cpp - kiArray_t: a growable array of non-owned pointers in one
// kiMem_* block, with ordered insertion and binary search.
#include "ki/proc/kiArray.h"

#include <cstring>

#include "ki/core/StringData.h"
#include "ki/proc/kiFatalError.h"
#include "ki/proc/kiMem.h"

namespace {

// The most items whose block size still fits the unsigned sizes of kiMem_*.
constexpr unsigned int kMaxItems = 0xFFFFFFFFu / sizeof(void*);
// The initial capacity is only a hint: a larger one is cut to this, so an
// absurd hint costs nothing until items really arrive.
constexpr unsigned int kMaxInitialCapacity = 65536;
constexpr unsigned int kFirstGrowth = 8;

// Makes room for one more item: doubles, up to kMaxItems; past that the
// block cannot be expressed, which is an out-of-memory like any other.
void Grow(kiArray_t* array) {
  if (array->count < array->capacity) return;
  if (array->capacity >= kMaxItems) {
    kiFatalError("memory:malloc",
                 static_cast<std::uintptr_t>(array->capacity + 1ull) * sizeof(void*));
  }
  unsigned int capacity = array->capacity * 2;
  if (array->capacity < kFirstGrowth) {
    capacity = kFirstGrowth;
  } else if (array->capacity > kMaxItems / 2) {
    capacity = kMaxItems;
  }
  array->items = static_cast<void**>(kiMem_ReallocArray(array->items, capacity, sizeof(void*)));
  array->capacity = capacity;
}

}  // namespace

kiArray_t* kiArray_New(unsigned int capacity) {
  kiArray_t* array = static_cast<kiArray_t*>(kiMem_Malloc(sizeof(kiArray_t)));
  if (capacity > kMaxInitialCapacity) capacity = kMaxInitialCapacity;
  array->items =
      capacity == 0 ? nullptr : static_cast<void**>(kiMem_MallocArray(capacity, sizeof(void*)));
  array->count = 0;
  array->capacity = capacity;
  return array;
}

void kiArray_Delete(kiArray_t* array) {
  if (array == nullptr) return;
  kiMem_Free(array->items);
  kiMem_Free(array);
}

void kiArray_DeleteWith(kiArray_t* array, kiArray_FreeFunction freeItem) {
  if (array == nullptr) return;
  if (freeItem != nullptr) {
    for (unsigned int i = 0; i < array->count; ++i) {
      if (array->items[i] != nullptr) freeItem(array->items[i]);
    }
  }
  kiArray_Delete(array);
}

unsigned int kiArray_GetCount(const kiArray_t* array) {
  return array == nullptr ? 0 : array->count;
}

void* kiArray_Get(const kiArray_t* array, unsigned int index) {
  if (array == nullptr || index >= array->count) return nullptr;
  return array->items[index];
}

unsigned int kiArray_Add(kiArray_t* array, void* item) {
  if (array == nullptr) return kiNPos;
  Grow(array);
  array->items[array->count] = item;
  return array->count++;
}

unsigned int kiArray_InsertAt(kiArray_t* array, unsigned int index, void* item) {
  if (array == nullptr) return kiNPos;
  if (index >= array->count) return kiArray_Add(array, item);
  Grow(array);
  std::memmove(array->items + index + 1, array->items + index,
               (array->count - index) * sizeof(void*));
  array->items[index] = item;
  ++array->count;
  return index;
}

void* kiArray_RemoveAt(kiArray_t* array, unsigned int index) {
  if (array == nullptr || index >= array->count) return nullptr;
  void* item = array->items[index];
  std::memmove(array->items + index, array->items + index + 1,
               (array->count - index - 1) * sizeof(void*));
  --array->count;
  return item;
}

void kiArray_Clear(kiArray_t* array) {
  if (array != nullptr) array->count = 0;  // the block is kept for reuse
}

unsigned int kiArray_InsertSorted(kiArray_t* array, void* item, kiArray_CompareFunction compare) {
  if (array == nullptr || compare == nullptr) return kiNPos;
  // The first position whose item orders after the new one (an upper bound).
  unsigned int low = 0;
  unsigned int high = array->count;
  while (low < high) {
    const unsigned int mid = low + (high - low) / 2;
    if (compare(item, array->items[mid]) < 0) {
      high = mid;
    } else {
      low = mid + 1;
    }
  }
  return kiArray_InsertAt(array, low, item);
}

unsigned int kiArray_FindSorted(const kiArray_t* array, const void* key,
                                kiArray_CompareFunction compareKeyToItem) {
  if (array == nullptr || compareKeyToItem == nullptr) return kiNPos;
  // The first position whose item does not order before the key (a lower bound).
  unsigned int low = 0;
  unsigned int high = array->count;
  while (low < high) {
    const unsigned int mid = low + (high - low) / 2;
    if (compareKeyToItem(key, array->items[mid]) > 0) {
      low = mid + 1;
    } else {
      high = mid;
    }
  }
  if (low < array->count && compareKeyToItem(key, array->items[low]) == 0) return low;
  return kiNPos;
}
