// PropertyList.cpp - kivoPlugins property lists: counted lists, properties and
// their tagged values, on plain malloc/free.
#include <cstdlib>
#include <cstring>
#include <kiPlugins/PropertyList.h>

namespace {

// A copy of count bytes with nothing added; null when the heap refuses.
void* CopyBytes(const void* bytes, size_t count) {
  void* copy = std::malloc(count);
  if (copy != nullptr) std::memcpy(copy, bytes, count);
  return copy;
}

template <typename C>
C* CopyText(const C* text) {
  size_t n = 0;
  while (text[n] != 0) ++n;
  return static_cast<C*>(CopyBytes(text, (n + 1) * sizeof(C)));
}

// The owned text pointer of a value, for either width.
char*& TextOf(kiData* data, const char*) { return data->value.text; }
char16_t*& TextOf(kiData* data, const char16_t*) { return data->value.wtext; }

// Frees what the value owns and leaves it kiDataType_None.
void ClearValue(kiData* data) {
  switch (data->type) {
    case kiDataType_String:
      std::free(data->value.text);
      break;
    case kiDataType_WString:
      std::free(data->value.wtext);
      break;
    case kiDataType_PackedData:
      std::free(data->value.bytes);
      break;
    default:
      break;
  }
  std::memset(data, 0, sizeof *data);
}

// The slot a setter writes, or null with the error stored in *error.
kiData* Slot(kiProperty* property, unsigned int index, int* error) {
  if (property == nullptr) {
    *error = kiPlugins_ErrNull;
    return nullptr;
  }
  if (index >= property->count || property->values == nullptr) {
    *error = kiPlugins_ErrIndex;
    return nullptr;
  }
  *error = kiPlugins_Ok;
  return &property->values[index];
}

// Replaces the slot's value by a fresh one of this type; the caller fills in
// the value itself.
kiData* Reset(kiData* data, unsigned short type) {
  ClearValue(data);
  data->type = type;
  return data;
}

void FreeProperty(kiProperty* property) {
  for (unsigned int i = 0; i < property->count && property->values != nullptr; ++i) {
    ClearValue(&property->values[i]);
  }
  std::free(property->values);
  std::free(property->name);
  std::free(property);
}

// The text setters of both widths: a copy, or the caller's block adopted.
template <typename C>
int SetText(kiProperty* property, unsigned int index, const C* text, int copy,
            unsigned short type) {
  int error;
  kiData* data = Slot(property, index, &error);
  if (data == nullptr) return error;
  if (text == nullptr) {
    ClearValue(data);
    return kiPlugins_Ok;
  }
  if (copy == 0 && data->type == type && TextOf(data, text) == text) {
    return kiPlugins_Ok;  // adopting the text it already owns
  }
  C* owned = copy != 0 ? CopyText(text) : const_cast<C*>(text);
  if (owned == nullptr) return kiPlugins_ErrNoMemory;
  TextOf(Reset(data, type), text) = owned;
  return kiPlugins_Ok;
}

}  // namespace

// ---- Lists ---------------------------------------------------------------------

kiPropertyList* kiPropertyList_New(void) {
  kiPropertyList* list = static_cast<kiPropertyList*>(std::malloc(sizeof(kiPropertyList)));
  if (list == nullptr) return nullptr;
  list->head = nullptr;
  list->refs = 1;
  return list;
}

kiPropertyList* kiPropertyList_Take(kiPropertyList* list) {
  if (list != nullptr) __atomic_add_fetch(&list->refs, 1, __ATOMIC_RELAXED);
  return list;
}

int kiPropertyList_Release(kiPropertyList* list) {
  if (list == nullptr) return 0;
  int refs = __atomic_load_n(&list->refs, __ATOMIC_RELAXED);
  // A count already at 0 belongs to a list being freed: ignored.
  do {
    if (refs <= 0) return 0;
  } while (!__atomic_compare_exchange_n(&list->refs, &refs, refs - 1, true, __ATOMIC_ACQ_REL,
                                        __ATOMIC_RELAXED));
  if (refs > 1) return refs - 1;
  kiProperty* property = list->head;
  while (property != nullptr) {  // a loop, not recursion: chains may be long
    kiProperty* next = property->next;
    FreeProperty(property);
    property = next;
  }
  std::free(list);
  return 0;
}

kiProperty* kiPropertyList_Find(const kiPropertyList* list, const char* name) {
  if (list == nullptr || name == nullptr) return nullptr;
  for (kiProperty* property = list->head; property != nullptr; property = property->next) {
    if (std::strcmp(property->name, name) == 0) return property;
  }
  return nullptr;
}

int kiPropertyList_Add(kiPropertyList* list, kiProperty* property) {
  if (list == nullptr || property == nullptr) return kiPlugins_ErrNull;
  if (property == list->head) return kiPlugins_ErrLinked;
  property->next = list->head;
  list->head = property;
  return kiPlugins_Ok;
}

// ---- Properties ----------------------------------------------------------------

kiProperty* kiProperty_New(const char* name, unsigned int count) {
  if (count > kiProperty_MaxCount) return nullptr;
  kiProperty* property = static_cast<kiProperty*>(std::malloc(sizeof(kiProperty)));
  if (property == nullptr) return nullptr;
  property->name = CopyText(name != nullptr ? name : "");
  property->count = count;
  property->values = count > 0 ? static_cast<kiData*>(std::calloc(count, sizeof(kiData))) : nullptr;
  property->next = nullptr;
  if (property->name == nullptr || (count > 0 && property->values == nullptr)) {
    std::free(property->values);
    std::free(property->name);
    std::free(property);
    return nullptr;
  }
  return property;
}

int kiProperty_Resize(kiProperty* property, unsigned int count) {
  if (property == nullptr) return kiPlugins_ErrNull;
  if (count > kiProperty_MaxCount) return kiPlugins_ErrTooMany;
  const unsigned int old = property->values != nullptr ? property->count : 0;
  if (count == old) {
    property->count = count;
    return kiPlugins_Ok;
  }
  if (count == 0) {
    for (unsigned int i = 0; i < old; ++i) ClearValue(&property->values[i]);
    std::free(property->values);
    property->values = nullptr;
    property->count = 0;
    return kiPlugins_Ok;
  }
  if (count < old) {
    for (unsigned int i = count; i < old; ++i) ClearValue(&property->values[i]);
    // A shrink the heap refuses keeps the larger block, which still serves.
    void* smaller = std::realloc(property->values, count * sizeof(kiData));
    if (smaller != nullptr) property->values = static_cast<kiData*>(smaller);
    property->count = count;
    return kiPlugins_Ok;
  }
  void* larger = std::realloc(property->values, count * sizeof(kiData));
  if (larger == nullptr) return kiPlugins_ErrNoMemory;
  property->values = static_cast<kiData*>(larger);
  std::memset(property->values + old, 0, (count - old) * sizeof(kiData));
  property->count = count;
  return kiPlugins_Ok;
}

void kiProperty_Delete(kiProperty* property) {
  if (property != nullptr) FreeProperty(property);
}

// ---- Values --------------------------------------------------------------------

int kiProperty_Set_uint32(kiProperty* property, unsigned int index, unsigned int value) {
  int error;
  kiData* data = Slot(property, index, &error);
  if (data != nullptr) Reset(data, kiDataType_UInt32)->value.u32 = value;
  return error;
}

int kiProperty_Set_uint64(kiProperty* property, unsigned int index, unsigned long long value) {
  int error;
  kiData* data = Slot(property, index, &error);
  if (data != nullptr) Reset(data, kiDataType_UInt64)->value.u64 = value;
  return error;
}

int kiProperty_Set_double(kiProperty* property, unsigned int index, double value) {
  int error;
  kiData* data = Slot(property, index, &error);
  if (data != nullptr) Reset(data, kiDataType_Double)->value.f64 = value;
  return error;
}

int kiProperty_Set_charPtr(kiProperty* property, unsigned int index, const char* text, int copy) {
  return SetText(property, index, text, copy, kiDataType_String);
}

int kiProperty_Set_wcharPtr(kiProperty* property, unsigned int index, const char16_t* text,
                            int copy) {
  return SetText(property, index, text, copy, kiDataType_WString);
}

int kiProperty_Set_data(kiProperty* property, unsigned int index, const void* bytes,
                        unsigned int size) {
  int error;
  kiData* data = Slot(property, index, &error);
  if (data == nullptr) return error;
  if (bytes == nullptr) size = 0;
  unsigned char* owned = nullptr;
  if (size > 0) {
    owned = static_cast<unsigned char*>(CopyBytes(bytes, size));
    if (owned == nullptr) return kiPlugins_ErrNoMemory;
  }
  Reset(data, kiDataType_PackedData)->value.bytes = owned;
  data->size = size;
  return kiPlugins_Ok;
}
