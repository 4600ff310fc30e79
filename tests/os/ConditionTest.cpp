// ConditionTest.cpp - the two-semaphore condition (how many waiters a signal
// and a broadcast wake, time-outs, failures) and the event classes over it.
#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ki/os/Condition.h"
#include "ki/proc/kiOSThread.h"
#include "ki/proc/kiOSThread_p.h"
#include "support/ChildProcess.h"
#include "support/LogCapture.h"

#include "os/ThreadTestSupport.h"

namespace {

using ::testing::HasSubstr;

class OSConditionTest : public ::testing::Test {
 protected:
  void SetUp() override {
    cond_ = kiOSCondition_New();
    mutex_ = kiOSMutex_New();
    ASSERT_NE(nullptr, cond_);
    ASSERT_NE(nullptr, mutex_);
  }
  void TearDown() override {
    kiOSCondition_Delete(cond_);
    kiOSMutex_Delete(mutex_);
  }

  // Starts n threads that each wait once (without limit) and count their wake;
  // returns once all of them are inside the wait.
  void StartWaiters(int n) {
    for (int i = 0; i < n; ++i) {
      waiters_.emplace_back([this] {
        kiOSMutex_Lock(mutex_);
        ++ready_;  // still holding the mutex: the wait has begun once it is free
        kiOSCondition_Wait(cond_, mutex_);
        ++woken_;
        kiOSMutex_Unlock(mutex_);
      });
    }
    ASSERT_TRUE(kiTest::WaitUntil([&] {
      kiOSMutex_Lock(mutex_);
      const bool all = ready_ == n;
      kiOSMutex_Unlock(mutex_);
      return all;
    }));
  }
  void JoinWaiters() {
    for (std::thread& t : waiters_) t.join();
  }

  kiOSCondition* cond_ = nullptr;
  kiOSMutex* mutex_ = nullptr;
  int ready_ = 0;  // guarded by mutex_
  std::atomic<int> woken_{0};
  std::vector<std::thread> waiters_;
};

TEST_F(OSConditionTest, SignalWakesExactlyOneWaiterAndBroadcastTheRest) {
  StartWaiters(3);
  EXPECT_EQ(0, kiOSCondition_Signal(cond_));
  EXPECT_TRUE(kiTest::WaitUntil([&] { return woken_.load() == 1; }));
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_EQ(1, woken_.load()) << "one signal woke more than one waiter";
  EXPECT_EQ(0, kiOSCondition_Broadcast(cond_));
  EXPECT_TRUE(kiTest::WaitUntil([&] { return woken_.load() == 3; }));
  JoinWaiters();
  EXPECT_EQ(3, woken_.load());
}

TEST_F(OSConditionTest, SignalWithoutWaiterIsNotRemembered) {
  EXPECT_EQ(0, kiOSCondition_Signal(cond_));
  EXPECT_EQ(0, kiOSCondition_Broadcast(cond_));
  kiOSMutex_Lock(mutex_);
  EXPECT_EQ(1, kiOSCondition_WaitTimeout(cond_, mutex_, 0));
  EXPECT_EQ(1, kiOSCondition_WaitTimeout(cond_, mutex_, 10));
  // The mutex is held again after a time-out: another thread cannot take it.
  int otherUnlock = -1;
  std::thread([&] { otherUnlock = kiOSMutex_Unlock(mutex_); }).join();
  EXPECT_EQ(1, otherUnlock);
  kiOSMutex_Unlock(mutex_);
}

// A waiter that times out must not take a signal given after it left.
TEST_F(OSConditionTest, TimedOutWaiterDoesNotStealALaterSignal) {
  kiOSMutex_Lock(mutex_);
  EXPECT_EQ(1, kiOSCondition_WaitTimeout(cond_, mutex_, 5));
  kiOSMutex_Unlock(mutex_);
  StartWaiters(1);
  kiOSCondition_Signal(cond_);
  JoinWaiters();
  EXPECT_EQ(1, woken_.load());
}

TEST_F(OSConditionTest, NullArgumentsAndFailedParts) {
  kiTest::LogCapture log;
  EXPECT_EQ(2, kiOSCondition_Wait(nullptr, mutex_));
  EXPECT_EQ(2, kiOSCondition_WaitTimeout(cond_, nullptr, 0));
  EXPECT_EQ(0, kiOSCondition_Signal(nullptr));
  EXPECT_EQ(0, kiOSCondition_Broadcast(nullptr));
  kiOSCondition_Delete(nullptr);
  // Each missing part: the record is given up whole (ASan sees any leak).
  kiOS_FailForTesting(kiOSFault_MutexCreate, 0);
  EXPECT_EQ(nullptr, kiOSCondition_New());
  kiOS_FailForTesting(kiOSFault_SemaphoreCreate, 0);
  EXPECT_EQ(nullptr, kiOSCondition_New());
  kiOS_FailForTesting(kiOSFault_SemaphoreCreate, 1);
  EXPECT_EQ(nullptr, kiOSCondition_New());
  EXPECT_EQ(3u, log.Count());
}

// A caller that does not hold the mutex is refused before waiting, does not
// come back holding it, and leaves no waiter counted behind (a broadcast
// would wait for its acknowledgement for ever).
TEST_F(OSConditionTest, WaitWithoutHoldingTheMutexIsRefused) {
  EXPECT_EQ(2, kiOSCondition_WaitTimeout(cond_, mutex_, 0));
  EXPECT_EQ(1, kiOSMutex_Unlock(mutex_)) << "came back holding the mutex";
  StartWaiters(1);
  kiTest::RunBounded("broadcast", [&] { kiOSCondition_Broadcast(cond_); });
  JoinWaiters();
  EXPECT_EQ(1, woken_.load());
}

TEST(OSConditionFatalTest, FailedWaitEndsTheProcess) {
  const kiTest::ChildResult r = kiTest::RunInChild([] {
    kiOSCondition* c = kiOSCondition_New();
    kiOSMutex* m = kiOSMutex_New();
    kiOSMutex_Lock(m);
    kiOS_FailForTesting(kiOSFault_SemaphoreWait, 0);
    kiOSCondition_WaitTimeout(c, m, 1000);
  });
  EXPECT_EQ(255, r.exitStatus);
  EXPECT_THAT(r.out, HasSubstr("kiFatalError: os:condition: WaitTimeout returned an error\n"));
}

// ---------------------------------------------------------------- kiCondition

TEST(ConditionTest, AutoResetRemembersOneSignal) {
  kiCondition c;
  EXPECT_EQ(0, c.Signal());
  EXPECT_EQ(0, c.WaitTimeout(0xFFFFFFFFul)) << "a signal given before the wait";
  EXPECT_EQ(1, c.WaitTimeout(10)) << "the wait consumed it";
  EXPECT_EQ(0, c.Signal());
  EXPECT_EQ(0, c.Signal());
  EXPECT_EQ(0, c.Wait());
  EXPECT_EQ(1, c.WaitTimeout(0)) << "signals do not add up";
}

TEST(ConditionTest, ManualResetStaysSignalledUntilReset) {
  kiCondition c(true, true);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(0, c.WaitTimeout(0));
  EXPECT_EQ(0, c.Reset());
  EXPECT_EQ(1, c.WaitTimeout(0));
  c.Signal();
  EXPECT_EQ(0, c.Wait());
  EXPECT_EQ(0, c.Wait());
}

TEST(ConditionTest, TimeOutClearsTheFlagAndLaterSignalsStillWork) {
  kiCondition c(false, false);
  EXPECT_EQ(1, c.WaitTimeout(0));
  EXPECT_EQ(1, c.WaitTimeout(5));
  kiCondition unsignalled;
  EXPECT_EQ(1, unsignalled.WaitTimeout(0));
  std::thread signaller([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    c.Signal();
  });
  EXPECT_EQ(0, c.WaitTimeout(10000));
  signaller.join();
}

TEST(ConditionTest, SignalReleasesABlockedWaiter) {
  kiCondition c;
  std::atomic<int> woken{0};
  std::thread waiter([&] {
    c.Wait();
    ++woken;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(10));
  EXPECT_EQ(0, woken.load());
  c.Signal();
  waiter.join();
  EXPECT_EQ(1, woken.load());
}

// ---------------------------------------------------------------- kiConditionExt

TEST(ConditionExtTest, WaitsUnderTheCallersMutex) {
  kiMutex mutex;
  kiConditionExt c(&mutex, false);
  int items = 0;  // guarded by mutex
  mutex.Lock();
  c.Signal();
  EXPECT_EQ(0, c.Wait()) << "a signal given before the wait";
  EXPECT_EQ(1, c.WaitTimeout(5));
  mutex.Unlock();

  std::thread producer([&] {
    for (int i = 0; i < 100; ++i) {
      kiMutexLocker lock(&mutex);
      ++items;
      c.Signal();
    }
  });
  int taken = 0;
  kiTest::RunBounded("consumer", [&] {
    mutex.Lock();
    while (taken < 100) {
      while (items == 0) c.Wait();
      taken += items;
      items = 0;
    }
    mutex.Unlock();
  });
  producer.join();
  EXPECT_EQ(100, taken);
}

TEST(ConditionExtTest, OwnedMutexIsDeletedWithTheCondition) {
  // A leak shows under AddressSanitizer.
  auto* mutex = new kiMutex;
  kiConditionExt c(mutex, true);
  mutex->Lock();
  EXPECT_EQ(1, c.WaitTimeout(0));
  mutex->Unlock();
}

}  // namespace
