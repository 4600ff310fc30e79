// Semaphore.cpp - kiSemaphore over kiOSSemaphore.
#include "ki/os/Semaphore.h"

#include "ki/os/Timeout_p.h"
#include "ki/proc/kiFatalError.h"
#include "ki/proc/kiOSThread.h"

kiSemaphore::kiSemaphore(int initialCount) : m_os(kiOSSemaphore_New(initialCount)) {
  if (m_os == nullptr) kiFatalError("os:semaphore");
}

kiSemaphore::~kiSemaphore() { kiOSSemaphore_Delete(m_os); }

int kiSemaphore::Post() { return kiOSSemaphore_Post(m_os); }

int kiSemaphore::Wait() { return kiOSSemaphore_Wait(m_os); }

int kiSemaphore::WaitTimeout(unsigned long ms) {
  return kiOSSemaphore_WaitTimeout(m_os, kiOS_TimeoutFromLong(ms));
}
