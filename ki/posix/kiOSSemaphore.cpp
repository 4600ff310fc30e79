// kiOSSemaphore.cpp - kiOSSemaphore on POSIX: an unnamed sem_t whose timed
// waits run on CLOCK_MONOTONIC, with the 32768-unit ceiling kept beside it.
#include <atomic>
#include <cerrno>
#include <semaphore.h>

#include "ki/posix/kiPosix_p.h"
#include "ki/proc/kiLog.h"
#include "ki/proc/kiMem.h"
#include "ki/proc/kiOSThread.h"
#include "ki/proc/kiOSThread_p.h"

KI_LOG_SOURCE("posix/kiOSSemaphore")

struct kiOSSemaphore {
  sem_t semaphore;
  // Units posted and not yet taken. Raised before sem_post and lowered after
  // a wait, so it never falls below the semaphore's value and a post that
  // would pass the ceiling is refused exactly, even among racing posters.
  std::atomic<int> units;
};

kiOSSemaphore* kiOSSemaphore_New(int initialCount) {
  auto* s = static_cast<kiOSSemaphore*>(kiPosix_AllocRecord(sizeof(kiOSSemaphore)));
  if (s == nullptr) {
    KI_LOG(kiLogLevel_Error, kiLogCat_OS,
           "kiOSSemaphore: Cannot allocate memory for a semaphore\n");
    return nullptr;
  }
  long error = 0;
  if (initialCount < 0 || initialCount > kiOSSemaphore_MaxCount) {
    error = EINVAL;
  } else if (kiOS_ShouldFail(kiOSFault_SemaphoreCreate)) {
    error = ENOSPC;
  } else if (sem_init(&s->semaphore, 0, static_cast<unsigned>(initialCount)) != 0) {
    error = errno;
  }
  if (error != 0) {
    KI_LOG(kiLogLevel_Error, kiLogCat_OS, "kiOSSemaphore: CreateSemaphore failed (error = %ld)\n",
           error);
    kiMem_Free(s);
    return nullptr;
  }
  s->units.store(initialCount, std::memory_order_relaxed);
  return s;
}

void kiOSSemaphore_Delete(kiOSSemaphore* semaphore) {
  if (semaphore == nullptr) return;
  if (sem_destroy(&semaphore->semaphore) != 0) {
    KI_LOG(kiLogLevel_Error, kiLogCat_OS, "kiOSSemaphore: CloseHandle failed (error = %ld)\n",
           static_cast<long>(errno));
  }
  kiMem_Free(semaphore);
}

int kiOSSemaphore_Post(kiOSSemaphore* semaphore) {
  if (semaphore == nullptr) return 2;
  int units = semaphore->units.load(std::memory_order_relaxed);
  do {
    if (units >= kiOSSemaphore_MaxCount) {
      KI_LOG(kiLogLevel_Error, kiLogCat_OS,
             "kiOSSemaphore: ReleaseSemaphore failed (error = %ld)\n",
             static_cast<long>(EOVERFLOW));
      return 2;
    }
  } while (!semaphore->units.compare_exchange_weak(units, units + 1, std::memory_order_relaxed));
  if (sem_post(&semaphore->semaphore) != 0) {
    const long error = errno;
    semaphore->units.fetch_sub(1, std::memory_order_relaxed);
    KI_LOG(kiLogLevel_Error, kiLogCat_OS, "kiOSSemaphore: ReleaseSemaphore failed (error = %ld)\n",
           error);
    return 2;
  }
  return 0;
}

int kiOSSemaphore_WaitTimeout(kiOSSemaphore* semaphore, std::uint32_t ms) {
  if (semaphore == nullptr) return 2;
  sem_t* sem = &semaphore->semaphore;
  int result;
  if (kiOS_ShouldFail(kiOSFault_SemaphoreWait)) {
    errno = EINVAL;
    result = -1;
  } else if (ms == kiOS_Infinite) {
    result = kiPosix_RetryOnEINTR([&] { return sem_wait(sem); });
  } else if (ms == 0) {
    result = kiPosix_RetryOnEINTR([&] { return sem_trywait(sem); });
    if (result != 0 && errno == EAGAIN) errno = ETIMEDOUT;
  } else {
    // An interrupted wait resumes towards the same deadline.
    const timespec deadline = kiPosix_MonotonicDeadline(ms);
    result = kiPosix_RetryOnEINTR([&] { return sem_clockwait(sem, CLOCK_MONOTONIC, &deadline); });
    if (result == 0) kiPosix_AnnotateAcquire(sem);
  }
  if (result == 0) {
    semaphore->units.fetch_sub(1, std::memory_order_relaxed);
    return 0;
  }
  const long error = errno;
  if (error == ETIMEDOUT) return 1;
  KI_LOG(kiLogLevel_Error, kiLogCat_OS,
         "kiOSSemaphore: WaitForSingleObject(%lu) returned %ld (error = %ld)\n",
         static_cast<unsigned long>(ms), static_cast<long>(result), error);
  return 2;
}

int kiOSSemaphore_Wait(kiOSSemaphore* semaphore) {
  return kiOSSemaphore_WaitTimeout(semaphore, kiOS_Infinite);
}
