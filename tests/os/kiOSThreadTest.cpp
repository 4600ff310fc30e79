// kiOSThreadTest.cpp - the thread, mutex and semaphore records: the start gate,
// joins, detached ends, stack sizes, priorities, names, and their failures.
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <pthread.h>
#include <string>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ki/proc/kiOSThread.h"
#include "ki/proc/kiOSThread_p.h"
#include "support/LogCapture.h"

#include "os/ThreadTestSupport.h"

namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::StartsWith;

class OSThreadTest : public ::testing::Test {
 protected:
  void TearDown() override {
    for (int f = 0; f < kiOSFault_Count; ++f) kiOS_FailForTesting(static_cast<kiOSFault>(f), -1);
  }
  kiTest::LogCapture log_;
};

struct Probe {
  std::atomic<int> runs{0};
  std::atomic<int> destroyed{0};
  std::atomic<long> tid{0};
  std::atomic<std::size_t> stack{0};
  kiOSSemaphore* hold = nullptr;  // when set, the entry waits for one unit
};

int RecordEntry(void* arg) {
  auto* p = static_cast<Probe*>(arg);
  p->tid = static_cast<long>(syscall(SYS_gettid));
  pthread_attr_t attr;
  if (pthread_getattr_np(pthread_self(), &attr) == 0) {
    std::size_t size = 0;
    pthread_attr_getstacksize(&attr, &size);
    p->stack = size;
    pthread_attr_destroy(&attr);
  }
  if (p->hold != nullptr) kiOSSemaphore_Wait(p->hold);
  ++p->runs;
  return 0;
}

void CountDestroy(void* arg) { ++static_cast<Probe*>(arg)->destroyed; }

kiOSThread_Data DataFor(Probe* p, int detached = 0, std::uint32_t stack = 0) {
  return kiOSThread_Data{RecordEntry, CountDestroy, p, stack, detached};
}

// A held thread running RecordEntry on p; null when it cannot be made.
kiOSThread* NewThread(Probe* p, int detached = 0, std::uint32_t stack = 0) {
  const kiOSThread_Data data = DataFor(p, detached, stack);
  return kiOSThread_New(&data);
}

TEST_F(OSThreadTest, CreatedThreadWaitsForStartAndJoinWaitsForIt) {
  Probe p;
  kiOSThread* t = NewThread(&p);
  ASSERT_NE(nullptr, t);
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_EQ(0, p.runs.load()) << "ran before kiOSThread_Start";
  EXPECT_EQ(0, kiOSThread_Start(t));
  EXPECT_EQ(0, kiOSThread_Join(t));
  EXPECT_EQ(1, p.runs.load());
  EXPECT_EQ(0, kiOSThread_Join(t)) << "a second join answers at once";
  kiOSThread_Delete(t);
  EXPECT_EQ(0, p.destroyed.load()) << "a joinable thread has no destroy callback";
  EXPECT_EQ(0u, log_.Count());
}

TEST_F(OSThreadTest, SecondStartFailsAndIsLogged) {
  Probe p;
  kiOSThread* t = NewThread(&p);
  ASSERT_NE(nullptr, t);
  EXPECT_EQ(0, kiOSThread_Start(t));
  EXPECT_EQ(1, kiOSThread_Start(t));
  EXPECT_EQ(1, kiOSThread_Start(nullptr));
  kiOSThread_Delete(t);  // joins the started thread
  EXPECT_EQ(1, p.runs.load());
  ASSERT_EQ(2u, log_.Count());
  const kiTest::LogRecord r = log_.Records()[0];
  EXPECT_EQ("kiOSThread: cannot start thread\n", r.text);
  EXPECT_EQ(1u, r.level);
  EXPECT_EQ(7u, r.category);
  EXPECT_EQ("posix/kiOSThread", r.source);
}

// A thread joined or deleted before it was started never runs its work.
TEST_F(OSThreadTest, ThreadNeverStartedSkipsItsEntry) {
  Probe joined;
  kiOSThread* t = NewThread(&joined);
  ASSERT_NE(nullptr, t);
  EXPECT_EQ(0, kiOSThread_Join(t)) << "not waited for";
  EXPECT_EQ(0, kiOSThread_Start(t));
  kiOSThread_Delete(t);
  EXPECT_EQ(0, joined.runs.load());

  Probe deleted;
  t = NewThread(&deleted);
  ASSERT_NE(nullptr, t);
  kiOSThread_Delete(t);  // must not hang on the held thread
  EXPECT_EQ(0, deleted.runs.load());
}

TEST_F(OSThreadTest, DetachedThreadCallsDestroyOnceAfterItsEntry) {
  Probe p;
  kiOSThread* t = NewThread(&p, 1);
  ASSERT_NE(nullptr, t);
  EXPECT_EQ(1, kiOSThread_Join(t)) << "detached threads are not joined";
  EXPECT_EQ(0, kiOSThread_Start(t));
  // The record now belongs to the thread, which frees it at its end.
  EXPECT_TRUE(kiTest::WaitUntil([&] { return p.destroyed.load() == 1; }));
  EXPECT_EQ(1, p.runs.load());
  std::this_thread::sleep_for(std::chrono::milliseconds(10));
  EXPECT_EQ(1, p.destroyed.load());
}

// Only exactly 1 means detached; a detached thread deleted before its start
// neither runs nor calls its destroy callback.
TEST_F(OSThreadTest, DetachedFlagAndUnstartedDetachedThread) {
  Probe joinable;
  kiOSThread* t = NewThread(&joinable, 2);
  ASSERT_NE(nullptr, t);
  EXPECT_EQ(0, kiOSThread_Start(t));
  EXPECT_EQ(0, kiOSThread_Join(t)) << "detached = 2 is joinable";
  kiOSThread_Delete(t);
  EXPECT_EQ(0, joinable.destroyed.load());

  Probe unstarted;
  t = NewThread(&unstarted, 1);
  ASSERT_NE(nullptr, t);
  kiOSThread_Delete(t);
  std::this_thread::sleep_for(std::chrono::milliseconds(20));  // let it free its record
  EXPECT_EQ(0, unstarted.runs.load());
  EXPECT_EQ(0, unstarted.destroyed.load());
}

// Polls until the kernel no longer lists the thread tid of this process.
bool ThreadGone(long tid) {
  const std::string task = "/proc/self/task/" + std::to_string(tid);
  return kiTest::WaitUntil([&] { return access(task.c_str(), F_OK) != 0; });
}

// A joinable thread that deletes its own record cannot join itself: the
// record is handed to the thread, which frees it after its entry returns.
TEST_F(OSThreadTest, JoinableThreadMayDeleteItsOwnRecord) {
  struct Self {
    kiOSThread* record = nullptr;
    std::atomic<long> tid{0};
  } self;
  const kiOSThread_Data data{[](void* arg) {
                               auto* s = static_cast<Self*>(arg);
                               kiOSThread_Delete(s->record);
                               s->tid = static_cast<long>(syscall(SYS_gettid));
                               return 0;
                             },
                             nullptr, &self, 0, 0};
  self.record = kiOSThread_New(&data);
  ASSERT_NE(nullptr, self.record);
  EXPECT_EQ(0, kiOSThread_Start(self.record));
  ASSERT_TRUE(kiTest::WaitUntil([&] { return self.tid.load() != 0; }));
  EXPECT_TRUE(ThreadGone(self.tid.load()));  // ran to its end on a live record
  EXPECT_EQ(0u, log_.Count());
}

// Once a thread has ended, its kernel id may be given to another thread or
// process: a priority change must not reach that one. The next process id is
// steered to the ended thread's (root only, and skipped when another process
// takes it first).
TEST_F(OSThreadTest, PriorityOfAnEndedThreadReachesNobodyElse) {
  Probe p;
  kiOSThread* t = NewThread(&p);
  ASSERT_NE(nullptr, t);
  kiOSThread_Start(t);
  kiOSThread_Join(t);
  ASSERT_TRUE(ThreadGone(p.tid.load()));
  FILE* last = std::fopen("/proc/sys/kernel/ns_last_pid", "w");
  if (last == nullptr) {
    kiOSThread_Delete(t);
    GTEST_SKIP() << "the next process id cannot be chosen here";
  }
  std::fprintf(last, "%ld", p.tid.load() - 1);
  const bool steered = std::fclose(last) == 0;
  const pid_t other = steered ? fork() : -1;
  if (other == 0) {
    pause();
    _exit(0);
  }
  if (other == static_cast<pid_t>(p.tid.load())) {
    errno = 0;
    const int before = getpriority(PRIO_PROCESS, static_cast<id_t>(other));
    EXPECT_EQ(1, kiOSThread_SetPriority(t, 0));
    EXPECT_EQ(before, getpriority(PRIO_PROCESS, static_cast<id_t>(other)));
  }
  if (other > 0) {
    kill(other, SIGKILL);
    waitpid(other, nullptr, 0);
  }
  kiOSThread_Delete(t);
  if (other != static_cast<pid_t>(p.tid.load())) GTEST_SKIP() << "the id went elsewhere";
}

TEST_F(OSThreadTest, StackSizeRules) {
  struct Row {
    std::uint32_t asked;
    std::size_t size;
  };
  const Row rows[] = {{1, 0},
                      {0, 0x20000},
                      {2, 0x10000},
                      {65535, 0x10000},
                      {65536, 0x10000},
                      {300000, 300000},
                      {0xFFFFFFFFu, 0xFFFFFFFFu}};
  for (const Row& r : rows) EXPECT_EQ(r.size, kiOSThread_StackSize(r.asked)) << r.asked;

  // The sizes reach the system. It reuses cached stacks of up to four times
  // the size asked, so only the order of magnitude is checked.
  pthread_attr_t attr;
  pthread_attr_init(&attr);
  std::size_t platform = 0;
  pthread_attr_getstacksize(&attr, &platform);
  pthread_attr_destroy(&attr);
  for (std::uint32_t asked : {0u, 1u}) {
    Probe p;
    kiOSThread* t = NewThread(&p, 0, asked);
    ASSERT_NE(nullptr, t);
    kiOSThread_Start(t);
    kiOSThread_Delete(t);
    if (asked == 1) {
      EXPECT_GE(p.stack.load() + 4096, platform);
    } else {
      EXPECT_LE(p.stack.load(), 4u * 0x20000);
      EXPECT_GE(p.stack.load() + 4096, 0x20000u);
    }
  }
}

// The five levels as nice values relative to the process: +10, +5, 0, -5, -10.
TEST_F(OSThreadTest, PriorityScaleMapsToNiceValues) {
  kiOSSemaphore* hold = kiOSSemaphore_New(0);
  Probe p;
  p.hold = hold;
  kiOSThread* t = NewThread(&p);
  ASSERT_NE(nullptr, t);
  kiOSThread_Start(t);
  ASSERT_TRUE(kiTest::WaitUntil([&] { return p.tid.load() != 0; }));
  errno = 0;
  const int base = getpriority(PRIO_PROCESS, 0);
  struct Row {
    unsigned short priority;
    int offset;
  };
  const Row rows[] = {{0, 10},  {20, 10}, {21, 5},   {40, 5},    {41, 0},  {60, 0},
                      {61, -5}, {80, -5}, {81, -10}, {100, -10}, {101, 0}, {65535, 0}};
  for (const Row& r : rows) {
    SCOPED_TRACE(r.priority);
    const int result = kiOSThread_SetPriority(t, r.priority);
    if (result != 0 && geteuid() != 0) continue;  // raising needs the privilege
    EXPECT_EQ(0, result);
    EXPECT_EQ(base + r.offset, getpriority(PRIO_PROCESS, static_cast<id_t>(p.tid.load())));
  }
  log_.Clear();
  kiOS_FailForTesting(kiOSFault_ThreadPriority, 0);
  EXPECT_EQ(1, kiOSThread_SetPriority(t, 90));
  EXPECT_EQ(1, kiOSThread_SetPriority(nullptr, 50));
  ASSERT_EQ(1u, log_.Count());
  const std::string text = log_.Texts()[0];
  EXPECT_THAT(text, StartsWith("kiOSThread: Cannot set thread priority to 2 for thread 0x"));
  EXPECT_THAT(text, EndsWith(" (error = 1)\n"));
  kiOSSemaphore_Post(hold);
  kiOSThread_Delete(t);
  kiOSSemaphore_Delete(hold);
}

std::string NameShownFor(const char* name) {
  std::string shown;
  std::thread([&] {
    kiOSThread_SetCurrentName(name);
    char buffer[32] = {};
    pthread_getname_np(pthread_self(), buffer, sizeof buffer);
    shown = buffer;
  }).join();
  return shown;
}

TEST_F(OSThreadTest, CurrentNameIsCutToFifteenBytesOnACharacterBoundary) {
  EXPECT_EQ("worker", NameShownFor("worker"));
  EXPECT_EQ("a-very-long-thr", NameShownFor("a-very-long-thread-name"));
  // 14 ASCII bytes and a 2-byte character: the character does not fit.
  EXPECT_EQ("abcdefghijklmn", NameShownFor("abcdefghijklmn\xC3\xA9"));
  kiOSThread_SetCurrentName(nullptr);
}

TEST_F(OSThreadTest, CreationFailuresAreLoggedAndAnswerNull) {
  Probe p;
  kiOSThread_Data data = DataFor(&p);
  kiOS_FailForTesting(kiOSFault_ThreadCreate, 0);
  EXPECT_EQ(nullptr, kiOSThread_New(&data));
  kiOS_FailForTesting(kiOSFault_Allocate, 0);
  EXPECT_EQ(nullptr, kiOSThread_New(&data));
  EXPECT_EQ(nullptr, kiOSThread_New(nullptr));
  EXPECT_THAT(log_.Texts(), ElementsAre("kiOSThread: Cannot create thread (error = 11)\n",
                                        "kiOSThread: Cannot allocate memory for a thread\n",
                                        "kiOSThread: Cannot create thread (error = 22)\n"));
  EXPECT_EQ(0, p.runs.load());
  kiOSThread_Delete(nullptr);
}

// ---------------------------------------------------------------- locks

TEST_F(OSThreadTest, MutexAndCriticalSectionAreRecursiveForTheirOwner) {
  kiOSMutex* m = kiOSMutex_New();
  kiOSCriticalSection* s = kiOSCriticalSection_New();
  ASSERT_NE(nullptr, m);
  ASSERT_NE(nullptr, s);
  EXPECT_EQ(0, kiOSMutex_Lock(m));
  EXPECT_EQ(0, kiOSMutex_Lock(m));
  EXPECT_EQ(0, kiOSCriticalSection_Enter(s));
  EXPECT_EQ(0, kiOSCriticalSection_Enter(s));
  // Another thread may not release what this one holds.
  int otherUnlock = -1;
  int otherLeave = -1;
  std::thread([&] {
    otherUnlock = kiOSMutex_Unlock(m);
    otherLeave = kiOSCriticalSection_Leave(s);
  }).join();
  EXPECT_EQ(1, otherUnlock);
  EXPECT_EQ(1, otherLeave);
  EXPECT_EQ(0, kiOSMutex_Unlock(m));
  EXPECT_EQ(0, kiOSMutex_Unlock(m));
  EXPECT_EQ(1, kiOSMutex_Unlock(m)) << "not held any more";
  EXPECT_EQ(0, kiOSCriticalSection_Leave(s));
  EXPECT_EQ(0, kiOSCriticalSection_Leave(s));
  EXPECT_EQ(1, kiOSCriticalSection_Leave(s));
  kiOSMutex_Delete(m);
  kiOSCriticalSection_Delete(s);
  kiOSMutex_Delete(nullptr);
  kiOSCriticalSection_Delete(nullptr);
  EXPECT_EQ(1, kiOSMutex_Lock(nullptr));
  EXPECT_EQ(1, kiOSCriticalSection_Enter(nullptr));
  EXPECT_EQ(0u, log_.Count());
}

TEST_F(OSThreadTest, MutexExcludesOtherThreads) {
  kiOSMutex* m = kiOSMutex_New();
  long counter = 0;  // plain: only the mutex protects it
  auto work = [&] {
    for (int i = 0; i < 20000; ++i) {
      kiOSMutex_Lock(m);
      ++counter;
      kiOSMutex_Unlock(m);
    }
  };
  std::thread a(work), b(work);
  a.join();
  b.join();
  EXPECT_EQ(40000, counter);
  kiOSMutex_Delete(m);
}

TEST_F(OSThreadTest, LockCreationFailuresAreLogged) {
  kiOS_FailForTesting(kiOSFault_Allocate, 0);
  EXPECT_EQ(nullptr, kiOSMutex_New());
  kiOS_FailForTesting(kiOSFault_MutexCreate, 0);
  EXPECT_EQ(nullptr, kiOSMutex_New());
  kiOS_FailForTesting(kiOSFault_MutexCreate, 0);
  EXPECT_EQ(nullptr, kiOSCriticalSection_New());
  EXPECT_THAT(log_.Texts(),
              ElementsAre("kiOSMutex: Cannot allocate memory for a mutex\n",
                          "kiOSMutex: Cannot allocate memory for a mutex\n",
                          "kiOSCriticalSection: Cannot allocate memory for a critical section\n"));
}

// ---------------------------------------------------------------- semaphores

TEST_F(OSThreadTest, SemaphoreCountsUnitsUpToItsCeiling) {
  kiOSSemaphore* s = kiOSSemaphore_New(kiOSSemaphore_MaxCount);
  ASSERT_NE(nullptr, s);
  EXPECT_EQ(2, kiOSSemaphore_Post(s)) << "full";
  EXPECT_EQ(0, kiOSSemaphore_WaitTimeout(s, 0));
  EXPECT_EQ(0, kiOSSemaphore_Post(s));
  EXPECT_EQ(2, kiOSSemaphore_Post(s));
  EXPECT_THAT(log_.Texts(), ElementsAre("kiOSSemaphore: ReleaseSemaphore failed (error = 75)\n",
                                        "kiOSSemaphore: ReleaseSemaphore failed (error = 75)\n"));
  kiOSSemaphore_Delete(s);

  s = kiOSSemaphore_New(2);
  EXPECT_EQ(0, kiOSSemaphore_WaitTimeout(s, 0));
  EXPECT_EQ(0, kiOSSemaphore_Wait(s));
  EXPECT_EQ(1, kiOSSemaphore_WaitTimeout(s, 0)) << "empty: 0 ms only looks";
  kiOSSemaphore_Delete(s);
}

TEST_F(OSThreadTest, SemaphoreTimedWaitTimesOutAndWakesOnPost) {
  kiOSSemaphore* s = kiOSSemaphore_New(0);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(1, kiOSSemaphore_WaitTimeout(s, 20));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(20));
  std::thread poster([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    kiOSSemaphore_Post(s);
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    kiOSSemaphore_Post(s);
  });
  EXPECT_EQ(0, kiOSSemaphore_WaitTimeout(s, 10000));
  EXPECT_EQ(0, kiOSSemaphore_Wait(s));
  poster.join();
  kiOSSemaphore_Delete(s);
  EXPECT_EQ(0u, log_.Count());
}

TEST_F(OSThreadTest, SemaphoreFailures) {
  EXPECT_EQ(nullptr, kiOSSemaphore_New(-1));
  EXPECT_EQ(nullptr, kiOSSemaphore_New(kiOSSemaphore_MaxCount + 1));
  kiOS_FailForTesting(kiOSFault_Allocate, 0);
  EXPECT_EQ(nullptr, kiOSSemaphore_New(0));
  kiOSSemaphore* s = kiOSSemaphore_New(1);
  kiOS_FailForTesting(kiOSFault_SemaphoreWait, 0);
  EXPECT_EQ(2, kiOSSemaphore_Wait(s));
  EXPECT_EQ(0, kiOSSemaphore_WaitTimeout(s, 5)) << "the unit is still there";
  EXPECT_EQ(2, kiOSSemaphore_Post(nullptr));
  EXPECT_EQ(2, kiOSSemaphore_Wait(nullptr));
  kiOSSemaphore_Delete(nullptr);
  kiOSSemaphore_Delete(s);
  EXPECT_THAT(
      log_.Texts(),
      ElementsAre("kiOSSemaphore: CreateSemaphore failed (error = 22)\n",
                  "kiOSSemaphore: CreateSemaphore failed (error = 22)\n",
                  "kiOSSemaphore: Cannot allocate memory for a semaphore\n",
                  "kiOSSemaphore: WaitForSingleObject(4294967295) returned -1 (error = 22)\n"));
}

}  // namespace
