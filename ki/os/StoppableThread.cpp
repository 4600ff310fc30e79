// StoppableThread.cpp - kiStoppableThread over kiOSThread.
#include "ki/os/StoppableThread.h"

#include <cstring>

#include "ki/os/Semaphore.h"
#include "ki/proc/kiLog.h"
#include "ki/proc/kiMem.h"
#include "ki/proc/kiOSThread.h"

KI_LOG_SOURCE("os/StoppableThread")

namespace {

constexpr int kStateMask = 0xFF;
constexpr int kStopRequested = 0x100;

// The state a word reads as: a stop request made after the start lifts the
// states 2 and 3 to 5.
int StateOf(int word) {
  const int state = word & kStateMask;
  if ((word & kStopRequested) != 0 && state >= kiThreadState_Starting &&
      state < kiThreadState_Stopping) {
    return kiThreadState_Stopping;
  }
  return state;
}

// The object whose Entry runs on this thread; cleared by its destructor when
// that runs here, inside OnRun.
thread_local kiStoppableThread* t_running;

}  // namespace

kiStoppableThread::kiStoppableThread() : kiStoppableThread("", 0) {}

kiStoppableThread::kiStoppableThread(const char* name, int kind)
    : m_kind(kind),
      m_state(kiThreadState_Constructed),
      m_name(kiMem_Strdup(name != nullptr ? name : "")),
      m_os(nullptr),
      m_goReached(nullptr),
      m_goState(0) {}

kiStoppableThread::~kiStoppableThread() {
  // On its own worker (kind 0, inside OnRun) the OS record is handed to the
  // thread, and Entry learns that the object is gone.
  if (t_running == this) t_running = nullptr;
  kiOSThread_Delete(m_os);
  kiMem_Free(m_name);
}

int kiStoppableThread::EntryTrampoline(void* self) {
  return static_cast<kiStoppableThread*>(self)->Entry();
}

// Runs on a detached thread once its work is done, inside the deletion of its
// OS record: the object must not delete that record a second time.
void kiStoppableThread::DestroyTrampoline(void* self) {
  auto* thread = static_cast<kiStoppableThread*>(self);
  thread->m_os = nullptr;
  delete thread;
}

void kiStoppableThread::ThreadSetData(kiOSThread_Data* data) {
  std::memset(data, 0, sizeof *data);
  data->entry = EntryTrampoline;
  data->destroy = m_kind != 0 ? DestroyTrampoline : nullptr;
  data->argument = this;
  data->stackSize = kiOSThread_StackDefault;
  data->detached = m_kind != 0 ? 1 : 0;
}

int kiStoppableThread::ThreadCreate() {
  kiOSThread_Data data;
  ThreadSetData(&data);
  m_os = kiOSThread_New(&data);
  if (m_os == nullptr) {
    KI_LOG(kiLogLevel_Error, kiLogCat_Thread, "Cannot create thread '%s'\n", m_name);
    return -1;
  }
  m_state.store(kiThreadState_Created);
  return 0;
}

void kiStoppableThread::Go(int waitState) {
  if (m_kind != 0 && m_os != nullptr && GetThreadState() == kiThreadState_Created) {
    // Self-deleting: the object may be gone as soon as the thread runs, so
    // nothing of it is read after the start; the semaphore is the caller's.
    kiOSThread* os = m_os;
    if (waitState <= kiThreadState_Starting) {
      m_state.store(kiThreadState_Starting);
      kiOSThread_Start(os);
      return;  // reached by the store itself
    }
    kiSemaphore reached(0);
    m_goReached = &reached;
    m_goState = waitState;
    m_state.store(kiThreadState_Starting);
    kiOSThread_Start(os);
    reached.Wait();
    return;
  }
  // Also clears a stop request made before the start, which changes nothing.
  m_state.store(kiThreadState_Starting);
  kiOSThread_Start(m_os);
  while (GetThreadState() < waitState) kiOSThread_Sleep(10);
}

int kiStoppableThread::GetThreadState() { return StateOf(m_state.load()); }

int kiStoppableThread::GetThreadKind() { return m_kind; }

void kiStoppableThread::ThreadSleep(int ms) {
  kiOSThread_Sleep(ms > 0 ? static_cast<unsigned>(ms) : 0u);
}

int kiStoppableThread::Entry() {
  kiOSThread_SetCurrentName(m_name);
  t_running = this;
  SetState(kiThreadState_Running);
  ReleaseGo(GetThreadState(), false);
  OnRun();
  if (t_running != this) return 0;  // destroyed inside OnRun: nothing is left
  t_running = nullptr;
  // Written whatever the state was, so a stop request's 5 is overwritten.
  const int end = m_kind == 1 ? kiThreadState_Terminated : kiThreadState_Returned;
  SetState(end);
  ReleaseGo(end, true);  // the last use of a self-deleting object here
  return 0;
}

void kiStoppableThread::OnRun() {}

void kiStoppableThread::SetState(int state) {
  int word = m_state.load();
  while (!m_state.compare_exchange_weak(word, (word & ~kStateMask) | state)) {
  }
}

void kiStoppableThread::ReleaseGo(int state, bool ended) {
  if (m_goReached == nullptr || (!ended && state < m_goState)) return;
  kiSemaphore* reached = m_goReached;
  m_goReached = nullptr;
  reached->Post();
}

void kiStoppableThread::ThreadCancel() {
  if (GetThreadState() < kiThreadState_Starting) return;
  // One step: once the request is seen, a self-deleting worker may end and
  // free this object.
  m_state.fetch_or(kStopRequested);
}

bool kiStoppableThread::TestExit() {
  const int state = GetThreadState();
  if (state < kiThreadState_Stopping) return false;
  if (t_running == this) ReleaseGo(state, false);
  return true;
}

void kiStoppableThread::ThreadWaitTerminate() {
  if (GetThreadState() >= kiThreadState_Starting) {
    const int result = kiOSThread_Join(m_os);
    if (result != 0) {
      KI_LOG(kiLogLevel_Error, kiLogCat_Thread,
             "Error waiting termination of thread '%s' (Error = %d)\n", m_name, result);
    }
  }
  SetState(kiThreadState_Terminated);
}

void kiStoppableThread::ThreadSetPriority(unsigned short priority) {
  kiOSThread_SetPriority(m_os, priority);
}

bool kiStoppableThread::InThreadContext() { return false; }
