// kiOSThread_p.h - the stack-size rule of new threads, the counted unlock of
// kiMutex, and the test seam of the thread and lock records: makes one chosen
// system call fail, so that failure paths run without exhausting the system.
// Not installed.
#ifndef KI_PROC_KIOSTHREAD_P_H
#define KI_PROC_KIOSTHREAD_P_H

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "ki/Export.h"
#include "ki/proc/kiOSThread.h"

// The stack size a thread is made with for the size asked in its creation
// parameters; 0 means the platform's own default.
inline std::size_t kiOSThread_StackSize(std::uint32_t asked) {
  if (asked == kiOSThread_StackPlatform) return 0;
  if (asked == kiOSThread_StackDefault) return kiOSThread_StackDefaultSize;
  return asked < kiOSThread_StackMinimumSize ? kiOSThread_StackMinimumSize : asked;
}

// kiOSMutex_Unlock for kiMutex, whose lock count only the holder may write:
// a caller that does not hold the lock is refused (1) before count is
// touched; the holder lowers count before the release and restores it when
// the release fails.
int kiOSMutex_UnlockCounted(kiOSMutex* mutex, std::atomic<int>* count);

enum kiOSFault {
  kiOSFault_Allocate,     // a record's memory (any kind of record)
  kiOSFault_MutexCreate,  // a mutex or critical section
  kiOSFault_SemaphoreCreate,
  kiOSFault_SemaphoreWait,  // the wait answers a system error
  kiOSFault_ThreadCreate,
  kiOSFault_ThreadPriority,  // the system refuses the change (EPERM)
  kiOSFault_CheckerCreate,   // the single-instance mark (EACCES)
  kiOSFault_Count
};

// The call of that kind made after `skip` more successful ones fails, once.
// A negative skip disarms it. Process-wide; for tests only.
KI_API void kiOS_FailForTesting(kiOSFault fault, int skip);

// Consumes an armed fault: true when this call is the one to fail.
bool kiOS_ShouldFail(kiOSFault fault);

#endif  // KI_PROC_KIOSTHREAD_P_H
