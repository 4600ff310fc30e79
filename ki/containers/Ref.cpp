// Ref.cpp - the atomic count of kiRefCounted and the retain/release rules of
// kiRefAny.
#include "ki/containers/Ref.h"

#include <cstdint>

#include "ki/proc/kiFatalError.h"

kiRefCounted::~kiRefCounted() = default;

void kiRefCounted::NotifyRefCountIsNull() { delete this; }

int32_t kiRefCounted::Retain() { return m_refCount.fetch_add(1, std::memory_order_relaxed) + 1; }

int32_t kiRefCounted::Release() {
  // acq_rel: every use of the object by other holders happens before the delete.
  const int32_t count = m_refCount.fetch_sub(1, std::memory_order_acq_rel) - 1;
  if (count == 0) NotifyRefCountIsNull();
  return count;
}

kiRefAny::kiRefAny(kiRefCounted* object) : m_object(object) {
  if (m_object != nullptr) m_object->Retain();
}

kiRefAny::kiRefAny(int) : m_object(nullptr) {}

kiRefAny::kiRefAny(const kiRefAny& other) : m_object(other.m_object) {
  if (m_object != nullptr) m_object->Retain();
}

kiRefAny::~kiRefAny() {
  if (m_object != nullptr) m_object->Release();
}

kiRefAny& kiRefAny::operator=(const kiRefAny& other) { return *this = other.m_object; }

kiRefAny& kiRefAny::operator=(kiRefCounted* object) {
  if (object == m_object) return *this;
  if (object != nullptr) object->Retain();
  kiRefCounted* old = m_object;
  m_object = object;  // set before the release, which may run arbitrary code
  if (old != nullptr) old->Release();
  return *this;
}

kiRefAny& kiRefAny::operator=(kiRefAny&& other) noexcept {
  if (this == &other) return *this;
  kiRefCounted* old = m_object;
  m_object = other.m_object;
  other.m_object = nullptr;
  if (old != nullptr) old->Release();  // when both held it, one of the two references goes
  return *this;
}

void kiRefAny::NullPointerAccess() const {}

void kiRefAny::NullDereference() const {
  NullPointerAccess();
  static const char kReason[] = "kiRef: null reference dereferenced";
  kiFatalError("assert", reinterpret_cast<std::uintptr_t>(kReason),
               reinterpret_cast<std::uintptr_t>(kReason));
}
