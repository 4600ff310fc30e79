// kiOSThread.cpp - kiOSThread on POSIX: a pthread created at once and held at
// a start gate (a semaphore) until kiOSThread_Start, priorities as nice
// values of the thread, names through pthread_setname_np.
#include "ki/proc/kiOSThread.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <pthread.h>
#include <semaphore.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include "ki/posix/kiPosix_p.h"
#include "ki/proc/kiLog.h"
#include "ki/proc/kiMem.h"
#include "ki/proc/kiOSThread_p.h"

KI_LOG_SOURCE("posix/kiOSThread")

namespace {

enum RunState { kNew = 0, kCreated = 1, kStarted = 2, kJoined = 3 };
enum DetachState { kJoinable = 0, kDetached = 1, kDetachedDone = 2 };

}  // namespace

struct kiOSThread {
  pthread_t thread;
  kiOSThread_EntryFunction entry;
  kiOSThread_DestroyFunction destroy;  // detached threads only
  void* argument;
  std::atomic<int> runState;
  std::atomic<int> detachState;
  sem_t gate;   // one unit opens it
  sem_t ready;  // the new thread has published its id
  // The kernel's id of the thread, for its nice value; 0 once the entry
  // function has returned, since the id may then pass to another thread or
  // process. Read and cleared under tidLock, so a priority change never
  // reaches a thread that has gone.
  pthread_mutex_t tidLock;
  pid_t tid;
  int baseNice;   // the process's nice value at creation
  bool gateOpen;  // touched by the owner only
  bool reaped;    // pthread_join has returned (or the thread was detached)
};

namespace {

void OpenGate(kiOSThread* t) {
  if (t->gateOpen) return;
  t->gateOpen = true;
  sem_post(&t->gate);
}

void FreeRecord(kiOSThread* t) {
  pthread_mutex_destroy(&t->tidLock);
  sem_destroy(&t->gate);
  sem_destroy(&t->ready);
  kiMem_Free(t);
}

void* StartRoutine(void* argument) {
  auto* t = static_cast<kiOSThread*>(argument);
  t->tid = static_cast<pid_t>(syscall(SYS_gettid));
  sem_post(&t->ready);
  kiPosix_RetryOnEINTR([&] { return sem_wait(&t->gate); });
  // A thread joined or deleted before it was started skips its work.
  if (t->runState.load(std::memory_order_acquire) != kJoined) t->entry(t->argument);
  pthread_mutex_lock(&t->tidLock);
  t->tid = 0;
  pthread_mutex_unlock(&t->tidLock);
  // Detached from the start, or handed over by a delete on this thread.
  int expected = kDetached;
  if (t->detachState.compare_exchange_strong(expected, kDetachedDone, std::memory_order_acq_rel)) {
    kiOSThread_Delete(t);
  }
  return nullptr;
}

// Joins the pthread once; a thread that cannot be joined is detached
// instead, so its resources are still returned. Failing both is the failure
// to close the thread's handle.
void Reap(kiOSThread* t) {
  if (t->reaped) return;
  t->reaped = true;
  if (pthread_join(t->thread, nullptr) == 0) return;
  const int error = pthread_detach(t->thread);
  if (error != 0) {
    KI_LOG(kiLogLevel_Error, kiLogCat_OS,
           "kiOSThread: CloseHandle on Thread handle failed (error = %ld)\n",
           static_cast<long>(error));
  }
}

}  // namespace

kiOSThread* kiOSThread_New(const kiOSThread_Data* data) {
  auto* t = static_cast<kiOSThread*>(kiPosix_AllocRecord(sizeof(kiOSThread)));
  if (t == nullptr) {
    KI_LOG(kiLogLevel_Error, kiLogCat_OS, "kiOSThread: Cannot allocate memory for a thread\n");
    return nullptr;
  }
  const bool detached = data != nullptr && data->detached == 1;
  if (data != nullptr) {
    t->entry = data->entry;
    t->argument = data->argument;
    if (detached) t->destroy = data->destroy;
  }
  t->runState.store(kNew, std::memory_order_relaxed);
  t->detachState.store(detached ? kDetached : kJoinable, std::memory_order_relaxed);
  t->reaped = detached;
  errno = 0;
  t->baseNice = getpriority(PRIO_PROCESS, 0);
  if (errno != 0) t->baseNice = 0;
  sem_init(&t->gate, 0, 0);
  sem_init(&t->ready, 0, 0);
  pthread_mutex_init(&t->tidLock, nullptr);

  pthread_attr_t attr;
  pthread_attr_init(&attr);
  if (detached) pthread_attr_setdetachstate(&attr, PTHREAD_CREATE_DETACHED);
  const std::size_t stackSize =
      kiOSThread_StackSize(data != nullptr ? data->stackSize : kiOSThread_StackDefault);
  // Linux maps a stack lazily, so the size is a reservation, as intended.
  if (stackSize != 0) pthread_attr_setstacksize(&attr, stackSize);
  int error = 0;
  if (data == nullptr || data->entry == nullptr) {
    error = EINVAL;
  } else if (kiOS_ShouldFail(kiOSFault_ThreadCreate)) {
    error = EAGAIN;
  } else {
    error = pthread_create(&t->thread, &attr, StartRoutine, t);
  }
  pthread_attr_destroy(&attr);
  if (error != 0) {
    KI_LOG(kiLogLevel_Error, kiLogCat_OS, "kiOSThread: Cannot create thread (error = %ld)\n",
           static_cast<long>(error));
    FreeRecord(t);
    return nullptr;
  }
  // The id is needed for priorities, which may be set before the start.
  kiPosix_RetryOnEINTR([&] { return sem_wait(&t->ready); });
  t->runState.store(kCreated, std::memory_order_release);
  return t;
}

int kiOSThread_Start(kiOSThread* thread) {
  // Only the first start of a created thread succeeds, as a resume of a
  // thread suspended once.
  if (thread == nullptr || thread->gateOpen) {
    KI_LOG(kiLogLevel_Error, kiLogCat_OS, "kiOSThread: cannot start thread\n");
    return 1;
  }
  int expected = kCreated;
  thread->runState.compare_exchange_strong(expected, kStarted, std::memory_order_acq_rel);
  OpenGate(thread);
  return 0;
}

int kiOSThread_Join(kiOSThread* thread) {
  if (thread == nullptr) return 1;
  if (thread->detachState.load(std::memory_order_acquire) != kJoinable) return 1;
  const int state = thread->runState.load(std::memory_order_acquire);
  if (state == kJoined) return 0;
  if (state == kStarted && !thread->reaped) {
    const int error = pthread_join(thread->thread, nullptr);
    if (error == 0) {
      thread->reaped = true;
    } else {
      KI_LOG(kiLogLevel_Error, kiLogCat_OS,
             "kiOSThread: Failed to join a thread (error = %ld, errorcode = %ld)\n",
             static_cast<long>(error), static_cast<long>(error));
    }
  }
  // A thread never started is not waited for; marked joined, it skips its
  // entry function should it run later (intended).
  thread->runState.store(kJoined, std::memory_order_release);
  return 0;
}

int kiOSThread_SetPriority(kiOSThread* thread, unsigned short priority) {
  if (thread == nullptr) return 1;
  int level = 0;  // above 100: normal (intended)
  if (priority <= 20) {
    level = -2;
  } else if (priority <= 40) {
    level = -1;
  } else if (priority <= 60) {
    level = 0;
  } else if (priority <= 80) {
    level = 1;
  } else if (priority <= 100) {
    level = 2;
  }
  int nice = thread->baseNice - 5 * level;
  if (nice < -20) nice = -20;
  if (nice > 19) nice = 19;
  int result = -1;
  if (kiOS_ShouldFail(kiOSFault_ThreadPriority)) {
    errno = EPERM;
  } else {
    pthread_mutex_lock(&thread->tidLock);
    if (thread->tid == 0) {
      errno = ESRCH;  // ended: its id may be another's by now
    } else {
      result = setpriority(PRIO_PROCESS, static_cast<id_t>(thread->tid), nice);
    }
    const int error = errno;
    pthread_mutex_unlock(&thread->tidLock);
    errno = error;
  }
  if (result != 0) {
    KI_LOG(kiLogLevel_Error, kiLogCat_OS,
           "kiOSThread: Cannot set thread priority to %d for thread %p (error = %ld)\n", level,
           static_cast<void*>(thread), static_cast<long>(errno));
    return 1;
  }
  return 0;
}

void kiOSThread_Sleep(unsigned int ms) {
  timespec left;
  left.tv_sec = static_cast<time_t>(ms / 1000);
  left.tv_nsec = static_cast<long>(ms % 1000) * 1000000L;
  while (nanosleep(&left, &left) != 0 && errno == EINTR) {
  }
}

void kiOSThread_SetCurrentName(const char* name) {
  if (name == nullptr || *name == 0) return;
  // The kernel keeps 15 bytes; the cut never splits a UTF-8 character.
  char shown[16];
  std::size_t n = std::strlen(name);
  if (n > 15) {
    n = 15;
    while (n > 0 && (static_cast<unsigned char>(name[n]) & 0xC0) == 0x80) --n;
  }
  std::memcpy(shown, name, n);
  shown[n] = 0;
  pthread_setname_np(pthread_self(), shown);
}

void kiOSThread_Delete(kiOSThread* thread) {
  if (thread == nullptr) return;
  const int detach = thread->detachState.load(std::memory_order_acquire);
  if (detach == kDetached) {
    // Deleted by its owner: a thread never started is let go without its
    // work and frees the record itself; after the start the record is the
    // thread's, which deletes it when its entry function returns.
    if (!thread->gateOpen) {
      thread->destroy = nullptr;
      thread->runState.store(kJoined, std::memory_order_release);
      OpenGate(thread);
    }
    return;
  }
  if (detach == kDetachedDone) {
    if (thread->destroy != nullptr) thread->destroy(thread->argument);
    FreeRecord(thread);
    return;
  }
  if (thread->gateOpen && pthread_equal(pthread_self(), thread->thread) != 0) {
    // Deleted on its own thread, which cannot join itself: the record is
    // handed to the thread as a detached one without a destroy callback, and
    // the thread frees it when its entry function returns.
    thread->reaped = true;
    const int error = pthread_detach(thread->thread);
    if (error != 0) {
      KI_LOG(kiLogLevel_Error, kiLogCat_OS,
             "kiOSThread: CloseHandle on Thread handle failed (error = %ld)\n",
             static_cast<long>(error));
    }
    thread->destroy = nullptr;
    thread->detachState.store(kDetached, std::memory_order_release);
    return;
  }
  if (!thread->gateOpen) {
    thread->runState.store(kJoined, std::memory_order_release);
    OpenGate(thread);
  }
  Reap(thread);
  FreeRecord(thread);
}
