// PropertyList.cpp - property lists to events (kiPropertyListSerializer and
// the static walk of kiPropertyListFormatter) and events to property lists
// (kiPropertyListFormatter as a sink).
#include "ki/serialize/PropertyList.h"

#include "ki/core/CString.h"
#include "ki/proc/kiFatalError.h"
#include "ki/proc/kiMem.h"
#include "ki/serialize/PackedData.h"

namespace {

// The walk of kiPropertyListFormatter::Serialize: the serializer's shapes,
// with packed data written as escaped text instead of being skipped.
class PackedTextSerializer : public kiPropertyListSerializer {
 public:
  int WriteProperty(kiProperty* property, kiISerialize& sink) {
    return SerializeProperty(property, sink);
  }

 protected:
  int SerializeData(kiData* data, kiISerialize& sink) override {
    if (data == nullptr || data->type != kiDataType_PackedData) {
      return kiPropertyListSerializer::SerializeData(data, sink);
    }
    const kiCString text = kiPackedData_ToText(data->value.bytes, data->size);
    return sink.String(text.c_str(), false);
  }
};

// The property lists and properties come from a library that answers null
// when the heap refuses; here that is fatal, as for every ki block.
[[noreturn]] void OutOfMemory(unsigned int size) { kiFatalError("memory:malloc", size); }

}  // namespace

// ---- kiPropertyListSerializer --------------------------------------------------

kiPropertyListSerializer::~kiPropertyListSerializer() = default;

int kiPropertyListSerializer::Serialize(kiPropertyList* list, kiISerialize& sink) {
  kiPropertyList_Take(list);
  int result = sink.MapBegin();
  for (kiProperty* property = list != nullptr ? list->head : nullptr;
       property != nullptr && result == 0; property = property->next) {
    result = SerializeProperty(property, sink);
  }
  if (result == 0) result = sink.MapEnd();
  kiPropertyList_Release(list);
  return result;
}

int kiPropertyListSerializer::SerializeProperty(kiProperty* property, kiISerialize& sink) {
  if (property == nullptr) return 0;
  const unsigned int count = property->values != nullptr ? property->count : 0;
  int result = sink.MapKey(property->name != nullptr ? property->name : "", false);
  // One value is written bare, never as a one-element array (intended).
  if (result == 0 && count >= 2) result = sink.ArrayBegin();
  for (unsigned int i = 0; i < count && result == 0; ++i) {
    result = SerializeData(&property->values[i], sink);
  }
  if (result == 0 && count >= 2) result = sink.ArrayEnd();
  return result;
}

int kiPropertyListSerializer::SerializeData(kiData* data, kiISerialize& sink) {
  if (data == nullptr) return 0;
  switch (data->type) {
    case kiDataType_UInt32:
      return sink.U32(data->value.u32);
    case kiDataType_Double:
      return sink.Float(data->value.f64);
    case kiDataType_UInt64:
      return sink.U64(data->value.u64);
    case kiDataType_String:
      return sink.String(data->value.text != nullptr ? data->value.text : "", false);
    case kiDataType_WString:
      return sink.String(data->value.wtext != nullptr ? data->value.wtext : u"", false);
    case kiDataType_PackedData:
      return 0;  // intended: packed data is skipped, its key stands alone
    default:
      return sink.Null();
  }
}

// ---- kiPropertyListFormatter: the static walk ----------------------------------

int kiPropertyListFormatter::Serialize(kiPropertyList* list, kiISerialize& sink) {
  PackedTextSerializer walk;
  return walk.Serialize(list, sink);
}

int kiPropertyListFormatter::SerializeKeyValue(kiPropertyList* list, const char* key,
                                               kiISerialize& sink) {
  kiPropertyList_Take(list);
  PackedTextSerializer walk;
  const int result = walk.WriteProperty(kiPropertyList_Find(list, key), sink);
  kiPropertyList_Release(list);
  return result;
}

// ---- kiPropertyListFormatter: building -----------------------------------------

kiPropertyListFormatter::kiPropertyListFormatter()
    : m_property(nullptr),
      m_stack(nullptr),
      m_list(nullptr),
      m_depth(0),
      m_index(0),
      m_stackSize(0) {}

kiPropertyListFormatter::~kiPropertyListFormatter() {
  ReleaseAll();
  kiMem_Free(m_stack);
}

void kiPropertyListFormatter::ReleaseAll() {
  kiProperty_Delete(m_property);
  m_property = nullptr;
  m_index = 0;
  kiPropertyList_Release(m_list);
  m_list = nullptr;
  while (m_depth > 0) kiPropertyList_Release(m_stack[--m_depth]);
}

kiPropertyList* kiPropertyListFormatter::Reset() {
  kiPropertyList* list = m_list;
  m_list = nullptr;  // the caller's now
  ReleaseAll();
  return list;
}

void kiPropertyListFormatter::LinkProperty() {
  if (m_property == nullptr) return;
  if (m_list != nullptr) {
    kiPropertyList_Add(m_list, m_property);  // at the head: members end up reversed (intended)
  } else {
    kiProperty_Delete(m_property);  // a key outside any map: nothing could reach it
  }
  m_property = nullptr;
}

long long kiPropertyListFormatter::NextSlot() {
  if (m_property == nullptr || m_index >= kiProperty_MaxCount) return -1;
  const unsigned int slot = m_index;
  const int result = kiProperty_Resize(m_property, slot + 1);
  if (result != kiPlugins_Ok) OutOfMemory((slot + 1) * static_cast<unsigned int>(sizeof(kiData)));
  ++m_index;
  return slot;
}

int kiPropertyListFormatter::MapBegin() {
  if (m_list != nullptr) {
    if (m_depth == m_stackSize) {  // grown by one entry at a time
      if (m_stackSize >= 0xFFFFFFFFu / sizeof(*m_stack)) OutOfMemory(0xFFFFFFFFu);
      m_stack = static_cast<kiPropertyList**>(
          kiMem_ReallocArray(m_stack, m_stackSize + 1ull, sizeof(*m_stack)));
      ++m_stackSize;
    }
    m_stack[m_depth++] = m_list;
  }
  m_list = kiPropertyList_New();
  if (m_list == nullptr) OutOfMemory(sizeof(kiPropertyList));
  return 0;
}

int kiPropertyListFormatter::MapKey(const char* key, bool /*raw*/) {
  LinkProperty();
  m_property = kiProperty_New(key, 1);
  if (m_property == nullptr) OutOfMemory(sizeof(kiProperty) + sizeof(kiData));
  m_index = 0;
  return 0;
}

int kiPropertyListFormatter::MapEnd() {
  LinkProperty();
  if (m_depth > 0) {
    // The inner map's list is dropped (intended: nested maps are not
    // represented); nothing else holds it, so it is released here.
    kiPropertyList* closed = m_list;
    m_list = m_stack[--m_depth];
    kiPropertyList_Release(closed);
  }
  return 0;
}

int kiPropertyListFormatter::String(const kiWChar* text, bool /*raw*/) {
  const long long slot = NextSlot();
  if (slot >= 0 && kiProperty_Set_wcharPtr(m_property, static_cast<unsigned int>(slot),
                                           text != nullptr ? text : u"", 1) != kiPlugins_Ok) {
    OutOfMemory(0);
  }
  return 0;
}

int kiPropertyListFormatter::String(const char* text, bool /*raw*/) {
  const long long slot = NextSlot();
  if (slot >= 0 && kiProperty_Set_charPtr(m_property, static_cast<unsigned int>(slot),
                                          text != nullptr ? text : "", 1) != kiPlugins_Ok) {
    OutOfMemory(0);
  }
  return 0;
}

int kiPropertyListFormatter::Boolean(bool value) { return U32(value ? 1u : 0u); }

int kiPropertyListFormatter::U32(unsigned int value) {
  const long long slot = NextSlot();
  if (slot >= 0) kiProperty_Set_uint32(m_property, static_cast<unsigned int>(slot), value);
  return 0;
}

int kiPropertyListFormatter::S32(int value) { return U32(static_cast<unsigned int>(value)); }

int kiPropertyListFormatter::U64(unsigned long long value) {
  const long long slot = NextSlot();
  if (slot >= 0) kiProperty_Set_uint64(m_property, static_cast<unsigned int>(slot), value);
  return 0;
}

int kiPropertyListFormatter::S64(long long value) {
  return U64(static_cast<unsigned long long>(value));
}

int kiPropertyListFormatter::Float(double value) {
  const long long slot = NextSlot();
  if (slot >= 0) kiProperty_Set_double(m_property, static_cast<unsigned int>(slot), value);
  return 0;
}
