// Mutex.cpp - kiMutex over kiOSMutex: the parts that are not inline.
#include "ki/os/Mutex.h"

#include "ki/proc/kiFatalError.h"
#include "ki/proc/kiOSThread.h"
#include "ki/proc/kiOSThread_p.h"

kiMutex::kiMutex() : m_os(kiOSMutex_New()), m_lockCount(0) {
  if (m_os == nullptr) kiFatalError("os:mutex");
}

kiMutex::~kiMutex() { kiOSMutex_Delete(m_os); }

// Refused before the count is touched: a thread that does not hold the lock
// would race with the holder's own updates.
int kiMutex::Unlock() KI_NO_THREAD_SAFETY_ANALYSIS {
  return kiOSMutex_UnlockCounted(m_os, &m_lockCount);
}
