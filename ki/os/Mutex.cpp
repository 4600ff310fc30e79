// Mutex.cpp - kiMutex over kiOSMutex: the parts that are not inline.
#include "ki/os/Mutex.h"

#include "ki/os/kiOSThread.h"
#include "ki/os/kiOSThread_p.h"
#include "ki/proc/kiFatalError.h"

kiMutex::kiMutex() : m_os(kiOSMutex_New()), m_lockCount(0) {
  if (m_os == nullptr) kiFatalError("os:mutex");
}

kiMutex::~kiMutex() { kiOSMutex_Delete(m_os); }

int kiMutex::Unlock() KI_NO_THREAD_SAFETY_ANALYSIS {
  // Refused before the count is touched: a thread that does not hold the lock
  // would race with the holder's own updates.
  if (!kiOSMutex_HeldByCaller(m_os)) return 1;
  const int count = m_lockCount.load(std::memory_order_relaxed);
  m_lockCount.store(count - 1, std::memory_order_relaxed);
  const int result = kiOSMutex_Unlock(m_os);
  if (result != 0) m_lockCount.store(count, std::memory_order_relaxed);
  return result;
}
