// StringHashMap.cpp - kiStringHashMap_ForEach, the exported visitor through
// which every kiStringHashMap<T>::ForEach reaches its callback.
#include "ki/containers/StringHashMap.h"

void kiStringHashMap_ForEach(const void* key, void* value, void* adapter) {
  const auto* a = static_cast<const kiStringHashMap_ForEachAdapter*>(adapter);
  if (a == nullptr || a->callback == nullptr) return;
  a->callback(static_cast<const char*>(key), value, a->context);
}
