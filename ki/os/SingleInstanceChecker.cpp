// SingleInstanceChecker.cpp - kiSingleInstanceChecker over kiOSSingleInstanceChecker.
#include "ki/os/SingleInstanceChecker.h"

#include "ki/proc/kiMem.h"
#include "ki/proc/kiOSThread.h"

kiSingleInstanceChecker::kiSingleInstanceChecker(const char* name, const char* suffix)
    : m_os(nullptr) {
  // A null name stays null, so the OS layer reports it as such.
  char* full = kiMem_Strdup(name);
  if (full != nullptr && suffix != nullptr) {
    kiMem_StrAppend(&full, "-");
    kiMem_StrAppend(&full, suffix);
  }
  m_os = kiOSSingleInstanceChecker_New(full);
  kiMem_Free(full);
}

kiSingleInstanceChecker::~kiSingleInstanceChecker() { kiOSSingleInstanceChecker_Delete(m_os); }

bool kiSingleInstanceChecker::IsAnotherRunning() const {
  return kiOSSingleInstanceChecker_IsAnotherRunning(m_os) != 0;
}

bool kiSingleInstanceChecker::Error() const { return kiOSSingleInstanceChecker_Error(m_os) != 0; }
