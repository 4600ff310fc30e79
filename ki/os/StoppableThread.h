// StoppableThread.h - kiStoppableThread, the base of every thread the library
// runs: a subclass supplies OnRun and polls TestExit; another thread asks it
// to stop with ThreadCancel and waits with ThreadWaitTerminate.
#ifndef KI_OS_STOPPABLETHREAD_H
#define KI_OS_STOPPABLETHREAD_H

#include <atomic>

#include "ki/Export.h"

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
// once it may have ended. The state and the stop flag are read and
// written by two threads; they are atomic, and Go polls for the state.
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
  void RaiseState(int state);

  int m_kind;
  std::atomic<int> m_state;
  char* m_name;             // owned copy
  kiOSThread* m_os;         // owned
  std::atomic<int> m_stop;  // 0 or 1
};

#endif  // KI_OS_STOPPABLETHREAD_H
