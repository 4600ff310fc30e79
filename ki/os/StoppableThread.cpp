// StoppableThread.cpp - kiStoppableThread over kiOSThread.
#include "ki/os/StoppableThread.h"

#include <cstring>

#include "ki/core/Log.h"
#include "ki/os/kiOSThread.h"
#include "ki/proc/kiMem.h"

KI_LOG_SOURCE("os/StoppableThread")

namespace {

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
      m_stop(0) {}

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
  m_state.store(kiThreadState_Starting);
  kiOSThread_Start(m_os);
  while (m_state.load() < waitState) kiOSThread_Sleep(10);
}

int kiStoppableThread::GetThreadState() { return m_state.load(); }

int kiStoppableThread::GetThreadKind() { return m_kind; }

void kiStoppableThread::ThreadSleep(int ms) {
  kiOSThread_Sleep(ms > 0 ? static_cast<unsigned>(ms) : 0u);
}

int kiStoppableThread::Entry() {
  kiOSThread_SetCurrentName(m_name);
  t_running = this;
  m_state.store(kiThreadState_Running);
  OnRun();
  if (t_running != this) return 0;  // destroyed inside OnRun: nothing is left
  t_running = nullptr;
  // Written whatever the state was, so a stop request's 5 is overwritten.
  m_state.store(m_kind == 1 ? kiThreadState_Terminated : kiThreadState_Returned);
  return 0;
}

void kiStoppableThread::OnRun() {}

void kiStoppableThread::RaiseState(int state) {
  int current = m_state.load();
  while (current < state && !m_state.compare_exchange_weak(current, state)) {
  }
}

void kiStoppableThread::ThreadCancel() {
  if (m_state.load() < kiThreadState_Starting) return;
  m_stop.store(1);
  RaiseState(kiThreadState_Stopping);
}

bool kiStoppableThread::TestExit() {
  if (m_stop.load() == 0) return m_state.load() >= kiThreadState_Stopping;
  RaiseState(kiThreadState_Stopping);
  return true;
}

void kiStoppableThread::ThreadWaitTerminate() {
  if (m_state.load() >= kiThreadState_Starting) {
    const int result = kiOSThread_Join(m_os);
    if (result != 0) {
      KI_LOG(kiLogLevel_Error, kiLogCat_Thread,
             "Error waiting termination of thread '%s' (Error = %d)\n", m_name, result);
    }
  }
  m_state.store(kiThreadState_Terminated);
}

void kiStoppableThread::ThreadSetPriority(unsigned short priority) {
  kiOSThread_SetPriority(m_os, priority);
}

bool kiStoppableThread::InThreadContext() { return false; }
