// StoppableThread.h - kiStoppableThread, the base of every thread the library
// runs: a subclass supplies OnRun and polls TestExit; another thread asks it
// to stop with ThreadCancel and waits with ThreadWaitTerminate.
#ifndef KI_OS_STOPPABLETHREAD_H
#define KI_OS_STOPPABLETHREAD_H

#include <atomic>

#include "ki/Export.h"

class kiSemaphore;
struct kiOSThread;
struct kiOSThread_Data;

// The states, in the order a run passes them; compared with < and >=.
enum {
  kiThreadState_Constructed = 0,  // no OS thread yet
  kiThreadState_Created = 1,      // ThreadCreate: the OS thread waits to start
  kiThreadState_Starting = 2,     // Go: start requested
  kiThreadState_Running = 3,      // the thread is in OnRun
  kiThreadState_Stopping = 5,     // ThreadCancel, or TestExit after it (4 is not used)
  kiThreadState_Returned = 6,     // OnRun returned; a joinable thread awaits its join
  kiThreadState_Terminated = 7    // ThreadWaitTerminate, or a kind-1 thread ended
};

// The order of use: construct; ThreadCreate(); Go(3), which returns once
// OnRun is about to run; OnRun loops while TestExit() is false; another thread
// calls ThreadCancel() (and wakes whatever the thread blocks on), then
// ThreadWaitTerminate(); destroy.
//
// Kind 0 is a joinable thread owned by whoever made the object; it may also be
// destroyed on its own worker, inside OnRun (when the last reference to its
// owner goes there): nothing of it is touched after that. Any other kind runs
// detached and deletes its object (through the virtual destructor) when OnRun
// returns, so such an object must be made with new and must not be touched
// once it may have ended: Go does not look at it after the start, and
// ThreadCancel changes it in one atomic step, after which the worker may let
// it go. The state and the stop request share one atomic word, read and
// written by two threads.
class KI_API kiStoppableThread {
 public:
  kiStoppableThread();  // an empty name, kind 0
  kiStoppableThread(const char* name, int kind);
  virtual ~kiStoppableThread();
  kiStoppableThread(const kiStoppableThread&) = delete;
  kiStoppableThread& operator=(const kiStoppableThread&) = delete;

  // Starts the thread and polls every 10 ms until the state reaches
  // waitState. The start's result is not looked at (intended), so a state a
  // failed start can never reach must not be asked for: Go would not return.
  // A self-deleting thread (kind other than 0) is not polled: Go waits on a
  // semaphore of its own that the worker posts once the state is reached, or
  // when OnRun has returned, whichever comes first.
  virtual void Go(int waitState);
  int GetThreadState();
  int GetThreadKind();
  static void ThreadSleep(int ms);  // negative: 0

 protected:
  // Makes the OS thread, held until Go. 0, or -1 when the thread cannot be
  // made ("Cannot create thread '<name>'", logged).
  int ThreadCreate();
  // Joins a started thread (a failed join is logged), then state 7.
  void ThreadWaitTerminate();
  // Priority 0..100 in five levels (see kiOSThread_SetPriority); a refused
  // change is logged by the OS layer.
  void ThreadSetPriority(unsigned short priority);
  bool InThreadContext();  // always false (kept for compatibility)

  // True once a stop was asked for (the state is then at least 5).
  virtual bool TestExit();
  virtual void OnRun();  // the thread's work; empty here
  // Asks the thread to stop: sets the stop flag and raises the state to 5.
  // Before Go it does nothing.
  virtual void ThreadCancel();
  // Fills the creation parameters: this object's entry, a destroy callback for
  // kinds other than 0, a 131072-byte stack, detached for kinds other than 0.
  // A subclass may change the block after calling this.
  virtual void ThreadSetData(kiOSThread_Data* data);

 private:
  virtual int Entry();  // on the new thread: name it, run OnRun, record the end

  static int EntryTrampoline(void* self);
  static void DestroyTrampoline(void* self);
  void SetState(int state);          // keeps the stop request
  void ReleaseGo(int state, bool ended);  // on the worker only

  int m_kind;
  // The state in the low byte and the stop request above it, so that a stop
  // request is one atomic step. A request counts from state 2 on, and then
  // reads as state 5 until the state is past it.
  std::atomic<int> m_state;
  char* m_name;      // owned copy
  kiOSThread* m_os;  // owned
  // Go of a self-deleting thread: its caller's semaphore and the state it
  // waits for. Set before the start; read and cleared by the worker only.
  kiSemaphore* m_goReached;
  int m_goState;
};

#endif  // KI_OS_STOPPABLETHREAD_H
