// Ref.h - kiRefCounted, the base of objects shared by count, and the references
// that hold them: kiRefAny (untyped) and kiRef<T>.
#ifndef KI_CONTAINERS_REF_H
#define KI_CONTAINERS_REF_H

#include <atomic>
#include <cstdint>

#include "ki/Export.h"

// An object that dies when its last reference goes. The count is changed
// atomically, so references may be taken and dropped from any thread (the
// object itself is not made thread-safe by this). A new object has count 0;
// the first Retain (usually a kiRef taking it) makes it 1.
class KI_API kiRefCounted {
 public:
  kiRefCounted() : m_refCount(0) {}
  // Intended: the count travels with a copied object, in both the copy
  // constructor and the assignment. Derived classes that are copied while
  // referenced should decide for themselves (kiUserData does not copy it).
  kiRefCounted(const kiRefCounted& other) : m_refCount(other._GetRefCount()) {}
  kiRefCounted& operator=(const kiRefCounted& other) {
    m_refCount.store(other._GetRefCount(), std::memory_order_relaxed);
    return *this;
  }
  virtual ~kiRefCounted();

  // Called by the Release that brings the count to 0. The default deletes the
  // object through its virtual destructor, so objects released to 0 must come
  // from new; override it to pool or to keep objects on the stack.
  virtual void NotifyRefCountIsNull();

  // Adds one; answers the new count.
  int32_t Retain();
  // Takes one away; answers the new count. Exactly one Release sees 0 and
  // calls NotifyRefCountIsNull, however many threads release at once. A
  // Release below 0 (more releases than retains) leaves the count negative and
  // notifies nothing, so it never deletes twice; the object is not touched
  // again by this call.
  int32_t Release();
  int32_t _GetRefCount() const { return m_refCount.load(std::memory_order_acquire); }

 private:
  std::atomic<int32_t> m_refCount;
};

// Holds one kiRefCounted (retained) or null.
class KI_API kiRefAny {
 public:
  kiRefAny() : m_object(nullptr) {}
  // Retains a non-null object. Implicit, so `kiRefAny r = new X;` works.
  kiRefAny(kiRefCounted* object);  // NOLINT(google-explicit-constructor)
  // A null reference whatever the number: kept so that `kiRefAny r = 0;` and
  // NULL compile (intended, not a way to store an address).
  kiRefAny(int);  // NOLINT(google-explicit-constructor)
  kiRefAny(const kiRefAny& other);
  kiRefAny(kiRefAny&& other) noexcept : m_object(other.m_object) { other.m_object = nullptr; }
  // Releases the object held.
  ~kiRefAny();

  // When the object changes: the new one (if any) is retained before the old
  // one (if any) is released, so an object kept alive only by the old one
  // survives. Holding the same object already (self-assignment included)
  // changes nothing.
  kiRefAny& operator=(const kiRefAny& other);
  kiRefAny& operator=(kiRefCounted* object);
  kiRefAny& operator=(kiRefAny&& other) noexcept;

  // Same object; two null references are equal. The pointer forms compare
  // without taking a reference.
  bool operator==(const kiRefAny& other) const { return m_object == other.m_object; }
  bool operator!=(const kiRefAny& other) const { return m_object != other.m_object; }
  bool operator==(const kiRefCounted* object) const { return m_object == object; }
  bool operator!=(const kiRefCounted* object) const { return m_object != object; }

  kiRefCounted* Get() const { return m_object; }
  kiRefCounted* _GetPointedObject() const { return m_object; }
  bool IsNull() const { return m_object == nullptr; }

  // The hook called when a null reference is dereferenced; it does nothing
  // (a place for a breakpoint).
  void NullPointerAccess() const;

 protected:
  // The end of operator* on a null reference: calls NullPointerAccess, then
  // kiFatalError("assert"), since no object can be answered.
  [[noreturn]] void NullDereference() const;

  kiRefCounted* m_object;
};

// A kiRefAny typed for T, a class derived (not virtually) from kiRefCounted.
template <class T>
class kiRef : public kiRefAny {
 public:
  kiRef() {}
  kiRef(T* object) : kiRefAny(object) {}  // NOLINT(google-explicit-constructor)
  kiRef(int) : kiRefAny(0) {}             // NOLINT(google-explicit-constructor); null
  kiRef(const kiRef& other) : kiRefAny(other) {}
  kiRef(kiRef&& other) noexcept : kiRefAny(static_cast<kiRefAny&&>(other)) {}
  // From a reference to a derived class.
  template <class U>
  kiRef(const kiRef<U>& other)  // NOLINT(google-explicit-constructor)
      : kiRefAny(static_cast<T*>(other._GetPointedObject())) {}
  ~kiRef() = default;  // kiRefAny releases

  kiRef& operator=(const kiRef& other) {
    kiRefAny::operator=(other);
    return *this;
  }
  kiRef& operator=(kiRef&& other) noexcept {
    kiRefAny::operator=(static_cast<kiRefAny&&>(other));
    return *this;
  }
  kiRef& operator=(T* object) {
    kiRefAny::operator=(object);
    return *this;
  }

  T* Get() const { return static_cast<T*>(m_object); }
  T* _GetPointedObject() const { return static_cast<T*>(m_object); }
  // The same as assigning object: retains it, releases the old one.
  void _SetPointedObject(T* object) { kiRefAny::operator=(object); }

  // A null reference calls NullPointerAccess and answers null: the caller's
  // member access then faults in the caller, not here.
  T* operator->() const {
    if (m_object == nullptr) NullPointerAccess();
    return static_cast<T*>(m_object);
  }
  // A null reference has no object to answer: NullPointerAccess, then the
  // process ends through kiFatalError("assert"). Test IsNull first.
  T& operator*() const {
    if (m_object == nullptr) NullDereference();
    return *static_cast<T*>(m_object);
  }

  bool operator==(const kiRef& other) const { return m_object == other.m_object; }
  bool operator!=(const kiRef& other) const { return m_object != other.m_object; }
  bool operator==(const T* object) const { return m_object == object; }
  bool operator!=(const T* object) const { return m_object != object; }
};

#endif  // KI_CONTAINERS_REF_H
