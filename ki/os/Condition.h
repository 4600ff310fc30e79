// Condition.h - kiCondition, an event that threads wait for (manual or auto
// reset), and kiConditionExt, a condition waited for under a caller's kiMutex.
#ifndef KI_OS_CONDITION_H
#define KI_OS_CONDITION_H

#include "ki/Export.h"
#include "ki/os/Mutex.h"

struct kiOSCondition;  // opaque; defined by the OS layer

// An event. A signal given while nobody waits is remembered: the next wait
// returns at once. With auto reset every wait clears the signal (also one that
// times out), so one Signal releases one wait; with manual reset the signal
// stays until Reset and every wait returns at once. Signal wakes at most one
// waiter and returns once that waiter has taken it. Construction never fails:
// kiFatalError("os:condition") or ("os:mutex") ends the process when the
// system cannot make its parts. Not copyable.
class KI_API kiCondition {
 public:
  kiCondition();  // auto reset, not signalled
  kiCondition(bool manualReset, bool initiallySignalled);
  ~kiCondition();
  kiCondition(const kiCondition&) = delete;
  kiCondition& operator=(const kiCondition&) = delete;

  int Wait();  // 0
  // 0 signalled (or already signalled), 1 timed out. A time-out of 0xFFFFFFFF
  // or more never expires; 0 only looks.
  int WaitTimeout(unsigned long ms);
  int Signal();  // 0
  int Reset();   // 0

 private:
  kiOSCondition* m_os;  // owned
  kiOSMutex* m_guard;   // owned; guards the flags and is the wait's mutex
  bool m_signalled;     // guarded by m_guard
  bool m_manualReset;
};

// A condition with auto reset whose flag is guarded by a caller's kiMutex: the
// caller holds that mutex around Wait, WaitTimeout and Signal. A signal given
// while nobody waits is remembered for the next wait. The mutex's lock count
// is not changed by a wait. Construction never fails: kiFatalError
// ("os:condition") when the system cannot make it, ("os:mutex") for a null
// mutex. Not copyable.
class KI_API kiConditionExt {
 public:
  // ownsMutex: the destructor deletes the mutex.
  kiConditionExt(kiMutex* mutex, bool ownsMutex);
  ~kiConditionExt();
  kiConditionExt(const kiConditionExt&) = delete;
  kiConditionExt& operator=(const kiConditionExt&) = delete;

  int Wait();                         // 0
  int WaitTimeout(unsigned long ms);  // 0 signalled, 1 timed out
  int Signal();                       // 0

 private:
  kiOSCondition* m_os;  // owned
  kiMutex* m_mutex;     // owned when m_ownsMutex
  bool m_signalled;     // guarded by *m_mutex
  bool m_ownsMutex;
};

#endif  // KI_OS_CONDITION_H
