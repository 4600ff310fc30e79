// kiArray.h - kiArray_t, a growable array of pointers: appended in order, or
// kept sorted by a comparison the caller gives.
#ifndef KI_PROC_KIARRAY_H
#define KI_PROC_KIARRAY_H

#include "ki/Export.h"

// The array holds pointers it does not own: deleting it frees only its own
// block; freeing the items is the caller's business (kiArray_DeleteWith
// helps). Indexes are unsigned; an index out of range gives null or is
// ignored. A null array counts as empty everywhere. Growth doubles the room;
// out of memory is fatal ("memory:malloc"), as for every ki block.
struct kiArray_t {
  void** items;
  unsigned int count;
  unsigned int capacity;
};

// Orders two items, or a key and an item: negative, 0 or positive.
typedef int (*kiArray_CompareFunction)(const void* a, const void* b);
typedef void (*kiArray_FreeFunction)(void* item);

// capacity is a hint (0: nothing is reserved until the first add; above
// 65536 it is cut to 65536). Never null.
KI_API kiArray_t* kiArray_New(unsigned int capacity);
KI_API void kiArray_Delete(kiArray_t* array);
// Calls freeItem (when not null) on every non-null item, then deletes the array.
KI_API void kiArray_DeleteWith(kiArray_t* array, kiArray_FreeFunction freeItem);

KI_API unsigned int kiArray_GetCount(const kiArray_t* array);
KI_API void* kiArray_Get(const kiArray_t* array, unsigned int index);

// Appends; answers the item's index (kiNPos, 0xFFFFFFFF, for a null array).
KI_API unsigned int kiArray_Add(kiArray_t* array, void* item);
// Inserts before index (an index past the end appends); answers the index.
KI_API unsigned int kiArray_InsertAt(kiArray_t* array, unsigned int index, void* item);
// Removes and answers the item at index (null when out of range).
KI_API void* kiArray_RemoveAt(kiArray_t* array, unsigned int index);
KI_API void kiArray_Clear(kiArray_t* array);

// Sorted use: insert after the items that compare equal (so equal items keep
// their insertion order) and answer the index; find by binary search with a
// key-to-item comparison, answering the index of the first equal item or
// 0xFFFFFFFF.
// A null comparison does nothing and answers 0xFFFFFFFF.
KI_API unsigned int kiArray_InsertSorted(kiArray_t* array, void* item,
                                         kiArray_CompareFunction compare);
KI_API unsigned int kiArray_FindSorted(const kiArray_t* array, const void* key,
                                       kiArray_CompareFunction compareKeyToItem);

#endif  // KI_PROC_KIARRAY_H
