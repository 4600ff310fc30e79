// Mutex.h - kiMutex, the library's recursive lock, and kiMutexLocker, its
// scope guard.
#ifndef KI_OS_MUTEX_H
#define KI_OS_MUTEX_H

#include <atomic>

#include "ki/Export.h"
#include "ki/proc/kiOSThread.h"

// Lock annotations for clang's -Wthread-safety; empty elsewhere.
#if defined(__clang__)
#define KI_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define KI_THREAD_ANNOTATION(x)
#endif
#define KI_CAPABILITY(name) KI_THREAD_ANNOTATION(capability(name))
#define KI_SCOPED_CAPABILITY KI_THREAD_ANNOTATION(scoped_lockable)
#define KI_ACQUIRE(...) KI_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define KI_RELEASE(...) KI_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define KI_REQUIRES(...) KI_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define KI_NO_THREAD_SAFETY_ANALYSIS KI_THREAD_ANNOTATION(no_thread_safety_analysis)

// A recursive lock. Construction never fails: when the system cannot make the
// lock, kiFatalError("os:mutex") ends the process. Not copyable.
class KI_CAPABILITY("mutex") KI_API kiMutex {
 public:
  kiMutex();
  ~kiMutex();
  kiMutex(const kiMutex&) = delete;
  kiMutex& operator=(const kiMutex&) = delete;

  int Lock() KI_ACQUIRE();  // 0
  // 0; 1 when the calling thread does not hold the lock (POSIX), and then the
  // lock count, which only the holder writes, is left alone.
  int Unlock() KI_RELEASE();
  void AssertLocked() {}  // hook for debug builds

 private:
  friend class kiConditionExt;      // waits on the OS record
  friend struct kiMutexTestAccess;  // tests read the lock count

  kiOSMutex* m_os;  // owned
  // Bookkeeping only, never used for recursion checks. Written under the
  // lock; relaxed, so it costs plain moves.
  std::atomic<int> m_lockCount;
};

// Locks the mutex for its own lifetime.
class KI_SCOPED_CAPABILITY kiMutexLocker {
 public:
  // A null mutex is ignored.
  explicit kiMutexLocker(kiMutex* mutex) KI_ACQUIRE(mutex) : m_mutex(mutex) {
    if (m_mutex != nullptr) m_mutex->Lock();
  }
  ~kiMutexLocker() KI_RELEASE() {
    if (m_mutex != nullptr) m_mutex->Unlock();
  }
  kiMutexLocker(const kiMutexLocker&) = delete;
  kiMutexLocker& operator=(const kiMutexLocker&) = delete;

 private:
  kiMutex* m_mutex;
};

// Inline, so that an uncontended lock costs one call into the library. The
// analysis cannot see into the OS layer; this is the lock's own edge.
inline int kiMutex::Lock() KI_NO_THREAD_SAFETY_ANALYSIS {
  const int result = kiOSMutex_Lock(m_os);
  if (result == 0) {
    m_lockCount.store(m_lockCount.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
  }
  return result;
}

#endif  // KI_OS_MUTEX_H
