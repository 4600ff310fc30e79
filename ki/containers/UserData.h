// UserData.h - kiUserData and its small payload classes (a number, a pointer,
// one or two strings), counted so that kiRef<kiUserData> can share them.
#ifndef KI_CONTAINERS_USERDATA_H
#define KI_CONTAINERS_USERDATA_H

#include <cstdint>

#include "ki/Export.h"
#include "ki/containers/Ref.h"
#include "ki/core/CString.h"

// A payload that carries nothing; the base of the family. Copies are new
// payloads: a copy starts with count 0 and an assignment keeps the target's
// count (unlike kiRefCounted's own copy, which carries the count), so copying
// a shared payload never disturbs who holds it.
class KI_API kiUserData : public kiRefCounted {
 public:
  kiUserData() {}
  kiUserData(const kiUserData&) : kiRefCounted() {}
  kiUserData& operator=(const kiUserData&) { return *this; }
  ~kiUserData() override;

  // A copy on the heap with count 0, of the same class, for handing a payload
  // on (kiRef<kiUserData> takes it). Strings are copied into blocks of their
  // own, so the clone may go to another thread. Derived classes override it.
  virtual kiUserData* Clone() const;
};

// An unsigned 32-bit number.
class KI_API kiUserData_uint32 : public kiUserData {
 public:
  explicit kiUserData_uint32(uint32_t value = 0) : m_value(value) {}
  ~kiUserData_uint32() override;
  kiUserData* Clone() const override;

  uint32_t GetValue() const { return m_value; }
  void SetValue(uint32_t value) { m_value = value; }

 private:
  uint32_t m_value;
};

// A pointer, never owned, never freed.
class KI_API kiUserData_VoidPtr : public kiUserData {
 public:
  explicit kiUserData_VoidPtr(void* pointer = nullptr) : m_pointer(pointer) {}
  ~kiUserData_VoidPtr() override;
  kiUserData* Clone() const override;  // the clone holds the same pointer

  void* GetPointer() const { return m_pointer; }
  void SetPointer(void* pointer) { m_pointer = pointer; }

 private:
  void* m_pointer;
};

// One string.
class KI_API kiUserData_CString : public kiUserData {
 public:
  kiUserData_CString() {}
  explicit kiUserData_CString(const kiCString& text) : m_string(text) {}
  ~kiUserData_CString() override;
  kiUserData* Clone() const override;

  const kiCString& GetString() const { return m_string; }
  void SetString(const kiCString& text) { m_string = text; }

 private:
  kiCString m_string;
};

// Two strings.
class KI_API kiUserData_2CString : public kiUserData {
 public:
  kiUserData_2CString() {}
  kiUserData_2CString(const kiCString& first, const kiCString& second)
      : m_first(first), m_second(second) {}
  ~kiUserData_2CString() override;
  kiUserData* Clone() const override;

  const kiCString& GetFirst() const { return m_first; }
  const kiCString& GetSecond() const { return m_second; }
  void SetFirst(const kiCString& text) { m_first = text; }
  void SetSecond(const kiCString& text) { m_second = text; }

 private:
  kiCString m_first;
  kiCString m_second;
};

#endif  // KI_CONTAINERS_USERDATA_H
