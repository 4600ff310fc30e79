// Mutex.cpp - kiMutex over kiOSMutex: the parts that are not inline.
#include "ki/os/Mutex.h"

#include "ki/os/kiOSThread.h"
#include "ki/proc/kiFatalError.h"

kiMutex::kiMutex() : m_os(kiOSMutex_New()), m_lockCount(0) {
  if (m_os == nullptr) kiFatalError("os:mutex");
}

kiMutex::~kiMutex() { kiOSMutex_Delete(m_os); }
