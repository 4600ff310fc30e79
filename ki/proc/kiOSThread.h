// kiOSThread.h - the operating system's threads and locks as small records
// behind opaque pointers: kiOSThread, kiOSMutex, kiOSCriticalSection,
// kiOSSemaphore, kiOSCondition and kiOSSingleInstanceChecker.
#ifndef KI_PROC_KIOSTHREAD_H
#define KI_PROC_KIOSTHREAD_H

#include <cstdint>

#include "ki/Export.h"

// Every record is made by its _New function and freed by its _Delete function,
// which ignores null. Other functions given a null record do nothing and answer
// their failure result. Failures are logged at error level, category 7.

// ---------------------------------------------------------------- threads

typedef int (*kiOSThread_EntryFunction)(void* argument);  // the result is ignored
typedef void (*kiOSThread_DestroyFunction)(void* argument);

// Stack sizes with a meaning of their own; any other value below 65536 is
// raised to 65536, larger values are used as given.
enum : std::uint32_t {
  kiOSThread_StackDefault = 0,   // 131072 bytes
  kiOSThread_StackPlatform = 1,  // the platform's own default size
  kiOSThread_StackDefaultSize = 0x20000,
  kiOSThread_StackMinimumSize = 0x10000
};

// The creation parameters, filled by the caller.
struct kiOSThread_Data {
  kiOSThread_EntryFunction entry;
  kiOSThread_DestroyFunction destroy;  // kept for a detached thread only
  void* argument;                      // passed to entry and destroy
  std::uint32_t stackSize;
  int detached;  // exactly 1: detached; anything else: joinable
};

struct kiOSThread;  // opaque; defined by the platform layer

// Creates the thread held before its entry function until kiOSThread_Start.
// Null when the thread or the record cannot be made (logged).
KI_API kiOSThread* kiOSThread_New(const kiOSThread_Data* data);
// Lets a created thread run. 0, or 1 (logged) when it was started before.
KI_API int kiOSThread_Start(kiOSThread* thread);
// Waits for a started thread to end. 0; 1 for a detached thread, which is not
// waited for. A thread never started is not waited for, and skips its entry
// function should it be started later.
KI_API int kiOSThread_Join(kiOSThread* thread);
// Priority 0..100 in five levels: 0-20 lowest, 21-40 below normal, 41-60
// normal, 61-80 above normal, 81-100 highest; above 100: normal. POSIX: a nice
// value of the thread relative to the process's (+10, +5, 0, -5, -10). 0, or
// 1 when the system refuses the change or the thread's entry function has
// returned (logged).
KI_API int kiOSThread_SetPriority(kiOSThread* thread, unsigned short priority);
// Sleeps the calling thread for ms milliseconds.
KI_API void kiOSThread_Sleep(unsigned int ms);
// Shows name (its first 15 bytes on Linux) as the calling thread's name in
// debuggers and system tools. Null and empty names are ignored.
KI_API void kiOSThread_SetCurrentName(const char* name);
// Joins a started joinable thread not yet joined, lets a thread never started
// end without running its entry function, calls the destroy callback of a
// detached thread whose entry function has returned, and frees the record.
// A detached thread's record belongs to the thread once it is started: it is
// deleted on that thread when the entry function returns.
KI_API void kiOSThread_Delete(kiOSThread* thread);

// ---------------------------------------------------------------- locks

struct kiOSMutex;            // opaque; recursive for its owning thread
struct kiOSCriticalSection;  // opaque; recursive for its owning thread

// Null when the record cannot be made ("Cannot allocate memory", logged).
KI_API kiOSMutex* kiOSMutex_New();
KI_API void kiOSMutex_Delete(kiOSMutex* mutex);
// 0. POSIX: 1 when the system refuses, e.g. unlocking a mutex the calling
// thread does not hold.
KI_API int kiOSMutex_Lock(kiOSMutex* mutex);
KI_API int kiOSMutex_Unlock(kiOSMutex* mutex);

KI_API kiOSCriticalSection* kiOSCriticalSection_New();
KI_API void kiOSCriticalSection_Delete(kiOSCriticalSection* section);
KI_API int kiOSCriticalSection_Enter(kiOSCriticalSection* section);
KI_API int kiOSCriticalSection_Leave(kiOSCriticalSection* section);

// ---------------------------------------------------------------- semaphores

// A time-out in milliseconds that never expires.
constexpr std::uint32_t kiOS_Infinite = 0xFFFFFFFFu;
// The most units a semaphore holds; a post beyond it fails.
constexpr int kiOSSemaphore_MaxCount = 32768;

struct kiOSSemaphore;  // opaque

// Null (logged) when the initial count is negative or above 32768, or the
// system cannot make the semaphore.
KI_API kiOSSemaphore* kiOSSemaphore_New(int initialCount);
KI_API void kiOSSemaphore_Delete(kiOSSemaphore* semaphore);
// Adds one unit. 0, or 2 (logged) when the semaphore is full.
KI_API int kiOSSemaphore_Post(kiOSSemaphore* semaphore);
// Takes one unit, waiting at most ms milliseconds (kiOS_Infinite: without
// limit) on a monotonic clock. 0 acquired, 1 timed out, 2 error (logged).
KI_API int kiOSSemaphore_WaitTimeout(kiOSSemaphore* semaphore, std::uint32_t ms);
KI_API int kiOSSemaphore_Wait(kiOSSemaphore* semaphore);

// ---------------------------------------------------------------- conditions

// A condition variable made of one mutex and two semaphores. A signaller waits
// until the thread it woke has taken the signal, so a waiter that times out at
// that moment cannot take a later signal. At most 32768 waiters.
struct kiOSCondition;  // opaque

// Null when its mutex or either semaphore cannot be made.
KI_API kiOSCondition* kiOSCondition_New();
KI_API void kiOSCondition_Delete(kiOSCondition* condition);
// Wakes at most one waiter; every current waiter. 0.
KI_API int kiOSCondition_Signal(kiOSCondition* condition);
KI_API int kiOSCondition_Broadcast(kiOSCondition* condition);
// The caller holds mutex (once: a recursive hold stays held while waiting).
// Releases it, waits, takes it again. 0 signalled, 1 timed out; a failure of
// the wait itself is fatal ("os:condition: WaitTimeout returned an error").
// A null condition or mutex, or a mutex the caller does not hold (POSIX: the
// unlock is refused), answers 2 without waiting and without taking mutex.
KI_API int kiOSCondition_Wait(kiOSCondition* condition, kiOSMutex* mutex);
KI_API int kiOSCondition_WaitTimeout(kiOSCondition* condition, kiOSMutex* mutex, std::uint32_t ms);

// ---------------------------------------------------------------- single instance

// A named mark held by the process for the record's lifetime; the system
// drops it when the process ends, however it ends. POSIX: an abstract local
// socket named "Global\<name>" (Linux); long names are shortened with a hash.
struct kiOSSingleInstanceChecker;  // opaque

// Always a record unless memory is short. Both flags are 1 when the name is
// null or empty, cannot be converted, or the mark cannot be made (logged).
KI_API kiOSSingleInstanceChecker* kiOSSingleInstanceChecker_New(const char* name);
// 1 when another holder of the name existed at creation, else 0.
KI_API int kiOSSingleInstanceChecker_IsAnotherRunning(const kiOSSingleInstanceChecker* checker);
KI_API int kiOSSingleInstanceChecker_Error(const kiOSSingleInstanceChecker* checker);
KI_API void kiOSSingleInstanceChecker_Delete(kiOSSingleInstanceChecker* checker);

#endif  // KI_PROC_KIOSTHREAD_H
