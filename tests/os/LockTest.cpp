// LockTest.cpp - the lock classes over their records: lockers, long time-outs,
// and the fatal end of every lock class whose system part cannot be made.
#include <atomic>
#include <chrono>
#include <climits>
#include <cstdio>
#include <functional>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "ki/os/Condition.h"
#include "ki/os/CriticalSection.h"
#include "ki/os/Mutex.h"
#include "ki/os/Semaphore.h"
#include "ki/proc/kiOSThread_p.h"
#include "support/ChildProcess.h"
#include <kiLog/Log.h>

namespace {

TEST(LockTest, LockersHoldForTheirScope) {
  kiMutex m;
  kiCriticalSection s;
  long counter = 0;  // plain: the lockers protect it
  auto work = [&] {
    for (int i = 0; i < 10000; ++i) {
      kiMutexLocker outer(&m);
      kiCriticalSectionLocker inner(&s);
      kiCriticalSectionLocker again(&s);  // recursive
      ++counter;
    }
  };
  std::thread a(work), b(work);
  a.join();
  b.join();
  EXPECT_EQ(20000, counter);
  kiMutexLocker none(nullptr);  // a null lock is ignored
  kiCriticalSectionLocker noSection(nullptr);
}
}  // namespace

// Reads kiMutex's lock count, which nothing else shows.
struct kiMutexTestAccess {
  static int LockCount(const kiMutex& m) { return m.m_lockCount.load(); }
};

namespace {

// Only the holder writes the lock count: an unlock refused to another thread
// must not race with the holder's own locks and unlocks. Answers the count
// left while the holder still holds the lock once.
int CountAfterRefusedUnlocks() KI_NO_THREAD_SAFETY_ANALYSIS {
  kiMutex m;
  m.Lock();
  std::atomic<bool> stop{false};
  std::atomic<int> refused{0};
  std::thread intruder([&]() KI_NO_THREAD_SAFETY_ANALYSIS {
    while (!stop) refused += m.Unlock();
  });
  // Until the intruder has been refused often, however late it gets to run.
  for (int i = 0; i < 200000 || refused.load() < 1000; ++i) {
    m.Lock();
    m.Unlock();
  }
  stop = true;
  intruder.join();
  EXPECT_GT(refused.load(), 0);
  const int count = kiMutexTestAccess::LockCount(m);
  EXPECT_EQ(0, m.Unlock());
  return count;
}

TEST(LockTest, RefusedUnlockLeavesTheHoldersCountAlone) {
  EXPECT_EQ(1, CountAfterRefusedUnlocks());
}

// The class takes unsigned long: every value from 0xFFFFFFFF up waits without
// limit rather than being cut to a short wait.
TEST(LockTest, SemaphoreLongTimeOutsWaitWithoutLimit) {
  kiSemaphore s(1);
  EXPECT_EQ(0, s.WaitTimeout(0));
  EXPECT_EQ(1, s.WaitTimeout(0));
  for (unsigned long ms : {ULONG_MAX, 0x100000000ul}) {
    std::thread poster([&] {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
      s.Post();
    });
    EXPECT_EQ(0, s.WaitTimeout(ms));
    poster.join();
  }
}

struct FatalCase {
  const char* what;
  kiOSFault fault;
  int skip;
  std::function<void()> make;
  const char* tag;
};

TEST(LockFatalTest, ConstructorsEndTheProcessWhenTheSystemRefuses) {
  const FatalCase cases[] = {
      {"mutex", kiOSFault_MutexCreate, 0, [] { kiMutex m; }, "os:mutex"},
      {"critical section", kiOSFault_MutexCreate, 0, [] { kiCriticalSection s; },
       "os:criticalsection"},
      {"semaphore", kiOSFault_SemaphoreCreate, 0, [] { kiSemaphore s(0); }, "os:semaphore"},
      {"semaphore above its ceiling", kiOSFault_Count, 0, [] { kiSemaphore s(32769); },
       "os:semaphore"},
      {"condition's own condition", kiOSFault_SemaphoreCreate, 0, [] { kiCondition c; },
       "os:condition"},
      {"condition's guard", kiOSFault_MutexCreate, 1, [] { kiCondition c(true, false); },
       "os:mutex"},
      {"extended condition", kiOSFault_SemaphoreCreate, 1,
       [] {
         kiMutex m;
         kiConditionExt c(&m, false);
       },
       "os:condition"},
      {"extended condition without a mutex", kiOSFault_Count, 0,
       [] { kiConditionExt c(nullptr, false); }, "os:mutex"},
  };
  for (const FatalCase& c : cases) {
    SCOPED_TRACE(c.what);
    const kiTest::ChildResult r = kiTest::RunInChild([&] {
      kiLog_SetLevel(0);  // only the console report matters here
      if (c.fault != kiOSFault_Count) kiOS_FailForTesting(c.fault, c.skip);
      c.make();
      std::printf("survived\n");
    });
    EXPECT_EQ(255, r.exitStatus);
    EXPECT_EQ(std::string("kiFatalError\nkiFatalError: ") + c.tag + "\n", r.out);
  }
}

}  // namespace
