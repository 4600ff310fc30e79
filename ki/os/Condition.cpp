// Condition.cpp - kiCondition and kiConditionExt over kiOSCondition.
#include "ki/os/Condition.h"

#include "ki/os/Timeout_p.h"
#include "ki/proc/kiFatalError.h"
#include "ki/proc/kiOSThread.h"

kiCondition::kiCondition() : kiCondition(false, false) {}

kiCondition::kiCondition(bool manualReset, bool initiallySignalled)
    : m_os(kiOSCondition_New()),
      m_guard(nullptr),
      m_signalled(initiallySignalled),
      m_manualReset(manualReset) {
  if (m_os == nullptr) kiFatalError("os:condition");
  m_guard = kiOSMutex_New();
  if (m_guard == nullptr) kiFatalError("os:mutex");
}

kiCondition::~kiCondition() {
  kiOSCondition_Delete(m_os);
  kiOSMutex_Delete(m_guard);
}

int kiCondition::Wait() { return WaitTimeout(kiOS_Infinite); }

int kiCondition::WaitTimeout(unsigned long ms) {
  kiOSMutex_Lock(m_guard);
  int result = 0;
  // A signal that arrives between waits is kept in the flag, so the wait is
  // skipped; the OS condition itself remembers nothing.
  if (!m_signalled) result = kiOSCondition_WaitTimeout(m_os, m_guard, kiOS_TimeoutFromLong(ms));
  // Cleared after a time-out too (intended): the wait consumed the chance.
  if (!m_manualReset) m_signalled = false;
  kiOSMutex_Unlock(m_guard);
  return result;
}

int kiCondition::Signal() {
  kiOSMutex_Lock(m_guard);
  m_signalled = true;
  const int result = kiOSCondition_Signal(m_os);
  kiOSMutex_Unlock(m_guard);
  return result;
}

int kiCondition::Reset() {
  kiOSMutex_Lock(m_guard);
  m_signalled = false;
  kiOSMutex_Unlock(m_guard);
  return 0;
}

kiConditionExt::kiConditionExt(kiMutex* mutex, bool ownsMutex)
    : m_os(kiOSCondition_New()), m_mutex(mutex), m_signalled(false), m_ownsMutex(ownsMutex) {
  if (m_os == nullptr) kiFatalError("os:condition");
  if (m_mutex == nullptr) kiFatalError("os:mutex");
}

kiConditionExt::~kiConditionExt() {
  kiOSCondition_Delete(m_os);
  if (m_ownsMutex) delete m_mutex;
}

int kiConditionExt::Wait() { return WaitTimeout(kiOS_Infinite); }

int kiConditionExt::WaitTimeout(unsigned long ms) {
  int result = 0;
  if (!m_signalled) {
    result = kiOSCondition_WaitTimeout(m_os, m_mutex->m_os, kiOS_TimeoutFromLong(ms));
  }
  m_signalled = false;  // always auto reset
  return result;
}

int kiConditionExt::Signal() {
  m_signalled = true;
  return kiOSCondition_Signal(m_os);
}
