// UserData.cpp - the destructors and clones of the kiUserData family.
#include "ki/containers/UserData.h"

namespace {

// The same characters in a block of their own: kiCString counts are not
// atomic, so a clone never shares a block with its source.
kiCString Private(const kiCString& text) { return kiCString(text.c_str(), text.length()); }

}  // namespace

kiUserData::~kiUserData() = default;
kiUserData* kiUserData::Clone() const { return new kiUserData(); }

kiUserData_uint32::~kiUserData_uint32() = default;
kiUserData* kiUserData_uint32::Clone() const { return new kiUserData_uint32(m_value); }

kiUserData_VoidPtr::~kiUserData_VoidPtr() = default;
kiUserData* kiUserData_VoidPtr::Clone() const { return new kiUserData_VoidPtr(m_pointer); }

kiUserData_CString::~kiUserData_CString() = default;
kiUserData* kiUserData_CString::Clone() const { return new kiUserData_CString(Private(m_string)); }

kiUserData_2CString::~kiUserData_2CString() = default;
kiUserData* kiUserData_2CString::Clone() const {
  return new kiUserData_2CString(Private(m_first), Private(m_second));
}
