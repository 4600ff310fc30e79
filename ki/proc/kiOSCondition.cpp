// kiOSCondition.cpp - the condition variable made of one mutex and two
// semaphores. Portable: it only calls the other kiOS records.
#include <cstdint>

#include "ki/proc/kiFatalError.h"
#include "ki/proc/kiLog.h"
#include "ki/proc/kiMem.h"
#include "ki/proc/kiOSThread.h"

struct kiOSCondition {
  kiOSMutex* lock;          // guards the two counts
  kiOSSemaphore* wait;      // one unit per signal given
  kiOSSemaphore* waitDone;  // one unit per signal taken, for the signaller
  std::int32_t waiters;     // threads between steps 1 and 6 of a wait
  std::int32_t signals;     // signals posted and not yet taken
};

kiOSCondition* kiOSCondition_New() {
  auto* c = static_cast<kiOSCondition*>(kiMem_Calloc(sizeof(kiOSCondition)));
  c->lock = kiOSMutex_New();
  c->wait = kiOSSemaphore_New(0);
  c->waitDone = kiOSSemaphore_New(0);
  if (c->lock == nullptr || c->wait == nullptr || c->waitDone == nullptr) {
    kiOSCondition_Delete(c);
    return nullptr;
  }
  return c;
}

void kiOSCondition_Delete(kiOSCondition* condition) {
  if (condition == nullptr) return;
  kiOSMutex_Delete(condition->lock);
  kiOSSemaphore_Delete(condition->wait);
  kiOSSemaphore_Delete(condition->waitDone);
  kiMem_Free(condition);
}

namespace {

// Steps 5 and 6 of a wait that ended with result (0 signalled, else not):
// a signal given to this waiter meanwhile is taken and acknowledged, and the
// waiter is counted out.
void LeaveWait(kiOSCondition* condition, int result) {
  kiOSMutex_Lock(condition->lock);
  if (condition->signals > 0) {
    // Timed out while a signal was being given: take the unit that is still
    // there, so that it cannot wake a later waiter, and acknowledge it. When
    // no unit is left, every pending signal was taken by another waiter that
    // acknowledges it itself; waiting for a unit here, with the lock held,
    // would block that waiter and the signaller for ever. So the unit is
    // only tried for, never waited for.
    const bool taken = result == 0 || kiOSSemaphore_WaitTimeout(condition->wait, 0) == 0;
    if (taken) {
      kiOSSemaphore_Post(condition->waitDone);
      --condition->signals;
    }
  }
  --condition->waiters;
  kiOSMutex_Unlock(condition->lock);
}

}  // namespace

int kiOSCondition_WaitTimeout(kiOSCondition* condition, kiOSMutex* mutex, std::uint32_t ms) {
  if (condition == nullptr || mutex == nullptr) return 2;
  kiOSMutex_Lock(condition->lock);
  ++condition->waiters;
  kiOSMutex_Unlock(condition->lock);

  if (kiOSMutex_Unlock(mutex) != 0) {
    // The caller does not hold mutex: no wait, and it must not come back
    // holding it. Counted out as a waiter that timed out.
    LeaveWait(condition, 1);
    return 2;
  }
  const int result = kiOSSemaphore_WaitTimeout(condition->wait, ms);
  if (result == 2) kiFatalError("os:condition: WaitTimeout returned an error");
  LeaveWait(condition, result);

  kiOSMutex_Lock(mutex);
  return result;
}

int kiOSCondition_Wait(kiOSCondition* condition, kiOSMutex* mutex) {
  return kiOSCondition_WaitTimeout(condition, mutex, kiOS_Infinite);
}

int kiOSCondition_Signal(kiOSCondition* condition) {
  if (condition == nullptr) return 0;
  kiOSMutex_Lock(condition->lock);
  if (condition->waiters > condition->signals) {
    ++condition->signals;
    kiOSSemaphore_Post(condition->wait);
    kiOSMutex_Unlock(condition->lock);
    kiOSSemaphore_Wait(condition->waitDone);
  } else {
    kiOSMutex_Unlock(condition->lock);
  }
  return 0;
}

int kiOSCondition_Broadcast(kiOSCondition* condition) {
  if (condition == nullptr) return 0;
  kiOSMutex_Lock(condition->lock);
  if (condition->waiters > condition->signals) {
    const std::int32_t n = condition->waiters - condition->signals;
    condition->signals = condition->waiters;
    for (std::int32_t i = 0; i < n; ++i) kiOSSemaphore_Post(condition->wait);
    kiOSMutex_Unlock(condition->lock);
    for (std::int32_t i = 0; i < n; ++i) kiOSSemaphore_Wait(condition->waitDone);
  } else {
    kiOSMutex_Unlock(condition->lock);
  }
  return 0;
}
