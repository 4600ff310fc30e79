// kiOSMutex.cpp - kiOSMutex and kiOSCriticalSection on POSIX: recursive
// pthread mutexes that know their holder.
#include <atomic>
#include <pthread.h>

#include "ki/posix/kiPosix_p.h"
#include "ki/proc/kiLog.h"
#include "ki/proc/kiMem.h"
#include "ki/proc/kiOSThread.h"
#include "ki/proc/kiOSThread_p.h"

KI_LOG_SOURCE("posix/kiOSMutex")

namespace {

// A recursive lock made of a plain pthread mutex, its holder and a depth. The
// holder re-enters without touching the mutex, and a thread that does not
// hold the lock is refused by the holder test alone, without asking the
// system to unlock what it does not hold. Only the holder writes its own id
// into holder, so a thread that reads its own id there holds the lock. The
// holder is written after the mutex is taken and cleared before it is
// released; relaxed atomics cost plain moves.
struct RecursiveLock {
  pthread_mutex_t mutex;              // PTHREAD_MUTEX_NORMAL
  std::atomic<unsigned long> holder;  // 0: free
  int depth;                          // touched by the holder only
};

// The calling thread's identity: the address of a thread-local byte, read
// from the thread pointer without a call.
__attribute__((tls_model("initial-exec"))) thread_local char t_identity;
unsigned long Self() { return reinterpret_cast<unsigned long>(&t_identity); }

bool Init(RecursiveLock* lock) {
  if (kiOS_ShouldFail(kiOSFault_MutexCreate)) return false;
  return pthread_mutex_init(&lock->mutex, nullptr) == 0;
}

int Lock(RecursiveLock* lock) {
  if (lock == nullptr) return 1;
  const unsigned long self = Self();
  if (lock->holder.load(std::memory_order_relaxed) == self) {
    ++lock->depth;
    return 0;
  }
  if (pthread_mutex_lock(&lock->mutex) != 0) return 1;
  lock->holder.store(self, std::memory_order_relaxed);
  lock->depth = 1;
  return 0;
}

int Unlock(RecursiveLock* lock) {
  if (lock == nullptr || lock->holder.load(std::memory_order_relaxed) != Self()) return 1;
  if (--lock->depth > 0) return 0;
  lock->holder.store(0, std::memory_order_relaxed);
  return pthread_mutex_unlock(&lock->mutex) == 0 ? 0 : 1;
}

}  // namespace

struct kiOSMutex {
  RecursiveLock lock;
};

struct kiOSCriticalSection {
  RecursiveLock lock;
};

kiOSMutex* kiOSMutex_New() {
  auto* m = static_cast<kiOSMutex*>(kiPosix_AllocRecord(sizeof(kiOSMutex)));
  // A mutex that cannot be initialised lacks memory or another resource, and
  // is reported as such.
  if (m == nullptr || !Init(&m->lock)) {
    kiMem_Free(m);
    KI_LOG(kiLogLevel_Error, kiLogCat_OS, "kiOSMutex: Cannot allocate memory for a mutex\n");
    return nullptr;
  }
  return m;
}

void kiOSMutex_Delete(kiOSMutex* mutex) {
  if (mutex == nullptr) return;
  pthread_mutex_destroy(&mutex->lock.mutex);
  kiMem_Free(mutex);
}

int kiOSMutex_Lock(kiOSMutex* mutex) { return Lock(mutex != nullptr ? &mutex->lock : nullptr); }

int kiOSMutex_Unlock(kiOSMutex* mutex) { return Unlock(mutex != nullptr ? &mutex->lock : nullptr); }

int kiOSMutex_UnlockCounted(kiOSMutex* mutex, std::atomic<int>* count) {
  if (mutex == nullptr || mutex->lock.holder.load(std::memory_order_relaxed) != Self()) return 1;
  const int before = count->load(std::memory_order_relaxed);
  count->store(before - 1, std::memory_order_relaxed);
  const int result = Unlock(&mutex->lock);
  if (result != 0) count->store(before, std::memory_order_relaxed);
  return result;
}

kiOSCriticalSection* kiOSCriticalSection_New() {
  auto* s = static_cast<kiOSCriticalSection*>(kiPosix_AllocRecord(sizeof(kiOSCriticalSection)));
  if (s == nullptr || !Init(&s->lock)) {
    kiMem_Free(s);
    KI_LOG(kiLogLevel_Error, kiLogCat_OS,
           "kiOSCriticalSection: Cannot allocate memory for a critical section\n");
    return nullptr;
  }
  return s;
}

void kiOSCriticalSection_Delete(kiOSCriticalSection* section) {
  if (section == nullptr) return;
  pthread_mutex_destroy(&section->lock.mutex);
  kiMem_Free(section);
}

int kiOSCriticalSection_Enter(kiOSCriticalSection* section) {
  return Lock(section != nullptr ? &section->lock : nullptr);
}

int kiOSCriticalSection_Leave(kiOSCriticalSection* section) {
  return Unlock(section != nullptr ? &section->lock : nullptr);
}
