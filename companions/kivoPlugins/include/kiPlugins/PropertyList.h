/* PropertyList.h - kivoPlugins property lists: a counted list of named
 * properties, each an array of 16-byte tagged values.
 *
 * The records are plain structs: readers walk them directly (list->head,
 * property->next, name, count, values[i].type and .value). Writers go through
 * the functions below, which own every block they hand to a record and free
 * it again. Memory comes from malloc/free. When memory runs out nothing is
 * aborted: the function that needed it answers null or
 * kiPlugins_ErrNoMemory and leaves every record as it was.
 *
 * Nothing here is locked except the list's reference count (changed
 * atomically): a list may be referenced from several threads, but its
 * properties are changed by one thread at a time. */
#ifndef KIPLUGINS_PROPERTYLIST_H
#define KIPLUGINS_PROPERTYLIST_H

#ifndef __cplusplus
#include <uchar.h> /* char16_t in C */
#endif

#if defined(KIVO_PLUGINS_STATIC)
#define KIVO_PLUGINS_API
#elif defined(_WIN32)
#if defined(KIVO_PLUGINS_BUILDING)
#define KIVO_PLUGINS_API __declspec(dllexport)
#else
#define KIVO_PLUGINS_API __declspec(dllimport)
#endif
#else
#define KIVO_PLUGINS_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Type tags of a value. The numbers are shared with every reader of the
 * records and never change. */
enum {
  kiDataType_None = 0,         /* no value: new slots, and texts set to null */
  kiDataType_UInt32 = 1,       /* value.u32 */
  kiDataType_Double = 2,       /* value.f64 */
  kiDataType_UInt64 = 4,       /* value.u64 */
  kiDataType_String = 100,     /* value.text: UTF-8, zero-terminated, owned */
  kiDataType_PackedData = 101, /* value.bytes, size bytes, owned (null when size is 0) */
  kiDataType_WString = 104     /* value.wtext: UTF-16, zero-terminated, owned */
};

/* Answers of the functions that answer an int: 0 or one of these. */
enum {
  kiPlugins_Ok = 0,
  kiPlugins_ErrNull = -1,     /* a null list or property */
  kiPlugins_ErrIndex = -2,    /* index not below the property's count */
  kiPlugins_ErrNoMemory = -3, /* the heap refused; nothing was changed */
  kiPlugins_ErrTooMany = -4,  /* a count above kiProperty_MaxCount */
  kiPlugins_ErrLinked = -5    /* the property is already the list's head */
};

/* The most values one property holds: their array stays below 4 GB. */
#define kiProperty_MaxCount 0x0FFFFFFFu

/* One tagged value: 16 bytes on every platform. size is used by packed data
 * only (0 for every other kind). */
typedef struct kiData {
  unsigned short type; /* a kiDataType_* tag */
  unsigned short reserved;
  unsigned int size;
  union {
    unsigned int u32;
    double f64;
    unsigned long long u64;
    char* text;
    char16_t* wtext;
    unsigned char* bytes;
  } value;
} kiData;

#ifdef __cplusplus
static_assert(sizeof(kiData) == 16, "a value is 16 bytes on every platform");
#else
_Static_assert(sizeof(kiData) == 16, "a value is 16 bytes on every platform");
#endif

/* A named array of values and the link to the next property of a list. The
 * name is never null (a null name is stored as ""); values is null when count
 * is 0. */
typedef struct kiProperty {
  char* name;
  unsigned int count;
  kiData* values;
  struct kiProperty* next;
} kiProperty;

/* A chain of properties and its reference count. */
typedef struct kiPropertyList {
  kiProperty* head;
  int refs;
} kiPropertyList;

/* ---- Lists ----------------------------------------------------------------- */

/* An empty list with one reference; null when memory runs out. */
KIVO_PLUGINS_API kiPropertyList* kiPropertyList_New(void);
/* Adds a reference and answers the list. Null is ignored (answers null). */
KIVO_PLUGINS_API kiPropertyList* kiPropertyList_Take(kiPropertyList* list);
/* Drops a reference and answers the references left. At 0 the list, every
 * property of its chain and every value they own are freed. Null (or a list
 * whose count is already 0) is ignored and answers 0. */
KIVO_PLUGINS_API int kiPropertyList_Release(kiPropertyList* list);
/* The first property of the chain with exactly this name (bytes compared),
 * or null; null list or name: null. */
KIVO_PLUGINS_API kiProperty* kiPropertyList_Find(const kiPropertyList* list, const char* name);
/* Links property at the head of the list, which then owns it. The property
 * must be in no list: its next pointer is overwritten. Adding the list's own
 * head again is refused (it would make the chain a loop). Answers 0,
 * kiPlugins_ErrNull (null list or property) or kiPlugins_ErrLinked. */
KIVO_PLUGINS_API int kiPropertyList_Add(kiPropertyList* list, kiProperty* property);

/* ---- Properties ------------------------------------------------------------ */

/* A property in no list, named with a copy of name (null: ""), holding count
 * values of type kiDataType_None. Null when memory runs out or count is above
 * kiProperty_MaxCount. */
KIVO_PLUGINS_API kiProperty* kiProperty_New(const char* name, unsigned int count);
/* The property holds count values: existing ones are kept up to count, new
 * ones are kiDataType_None, and values cut off are freed. Answers 0,
 * kiPlugins_ErrNull, kiPlugins_ErrTooMany or kiPlugins_ErrNoMemory (the
 * property is then unchanged). */
KIVO_PLUGINS_API int kiProperty_Resize(kiProperty* property, unsigned int count);
/* Frees a property that is in no list, with its name and values; next is not
 * followed. Null is ignored. */
KIVO_PLUGINS_API void kiProperty_Delete(kiProperty* property);

/* ---- Values ---------------------------------------------------------------- */
/* Each stores one value at index and frees the owned value it replaces.
 * Answers 0, kiPlugins_ErrNull (null property), kiPlugins_ErrIndex (index not
 * below count) or kiPlugins_ErrNoMemory; on an error the value is unchanged
 * and a text passed for adoption stays the caller's. */

KIVO_PLUGINS_API int kiProperty_Set_uint32(kiProperty* property, unsigned int index,
                                           unsigned int value);
KIVO_PLUGINS_API int kiProperty_Set_uint64(kiProperty* property, unsigned int index,
                                           unsigned long long value);
KIVO_PLUGINS_API int kiProperty_Set_double(kiProperty* property, unsigned int index, double value);
/* copy non-zero stores a copy of text; copy 0 adopts text itself, which must
 * come from malloc (the property frees it). A null text makes the value
 * kiDataType_None. */
KIVO_PLUGINS_API int kiProperty_Set_charPtr(kiProperty* property, unsigned int index,
                                            const char* text, int copy);
KIVO_PLUGINS_API int kiProperty_Set_wcharPtr(kiProperty* property, unsigned int index,
                                             const char16_t* text, int copy);
/* Packed data: a copy of size bytes. Null bytes count as no bytes: the value
 * is then packed data of size 0 (value.bytes null). */
KIVO_PLUGINS_API int kiProperty_Set_data(kiProperty* property, unsigned int index,
                                         const void* bytes, unsigned int size);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* KIPLUGINS_PROPERTYLIST_H */
