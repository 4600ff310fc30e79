// StressTest.cpp - several producers and consumers at once on kiSemaphore,
// kiCondition and the OS condition (some waiters with short time-outs): no
// unit or signal is lost, nothing is taken twice, nothing deadlocks. Each
// case runs well under a second (a few seconds under ThreadSanitizer).
#include <atomic>
#include <deque>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "ki/os/Condition.h"
#include "ki/os/Semaphore.h"
#include "ki/proc/kiOSThread.h"

#include "os/ThreadTestSupport.h"

namespace {

constexpr int kProducers = 3;
constexpr int kConsumers = 3;
constexpr int kPerProducer = 3000;
constexpr int kTotal = kProducers * kPerProducer;

// Every item id 0..kTotal-1 must be taken exactly once.
class Ledger {
 public:
  Ledger() : m_taken(kTotal) {}
  void Take(int id) { m_taken[static_cast<size_t>(id)].fetch_add(1); }
  void ExpectEachOnce() const {
    int missing = 0;
    int twice = 0;
    for (const std::atomic<int>& t : m_taken) {
      if (t.load() == 0) ++missing;
      if (t.load() > 1) ++twice;
    }
    EXPECT_EQ(0, missing) << "items lost";
    EXPECT_EQ(0, twice) << "items taken twice";
  }

 private:
  std::vector<std::atomic<int>> m_taken;
};

void RunAll(std::vector<std::thread>& threads) {
  for (std::thread& t : threads) t.join();
}

TEST(ThreadStressTest, SemaphoreLosesAndDuplicatesNoUnit) {
  kiTest::RunBounded("semaphore stress", [] {
    kiSemaphore units(0);
    std::atomic<int> taken{0};
    std::atomic<int> timeouts{0};
    std::vector<std::thread> threads;
    for (int p = 0; p < kProducers; ++p) {
      threads.emplace_back([&] {
        for (int i = 0; i < kPerProducer; ++i) units.Post();
      });
    }
    for (int c = 0; c < kConsumers; ++c) {
      threads.emplace_back([&, c] {
        for (int i = 0; i < kTotal / kConsumers; ++i) {
          // Half the consumers poll with short time-outs, which must not
          // swallow units.
          while ((c % 2 == 0 ? units.WaitTimeout(1) : units.Wait()) != 0) ++timeouts;
          ++taken;
        }
      });
    }
    RunAll(threads);
    EXPECT_EQ(kTotal, taken.load());
    EXPECT_EQ(1, units.WaitTimeout(0)) << "a unit too many";
  });
}

// A queue under one OS mutex and condition; half the consumers wait with a
// 1 ms time-out, so time-outs meet signals all the time.
TEST(ThreadStressTest, OSConditionQueueTakesEveryItemOnce) {
  kiTest::RunBounded("condition stress", [] {
    kiOSMutex* mutex = kiOSMutex_New();
    kiOSCondition* cond = kiOSCondition_New();
    std::deque<int> queue;  // guarded by mutex
    int produced = 0;       // guarded by mutex
    Ledger ledger;
    std::vector<std::thread> threads;
    for (int p = 0; p < kProducers; ++p) {
      threads.emplace_back([&, p] {
        for (int i = 0; i < kPerProducer; ++i) {
          kiOSMutex_Lock(mutex);
          queue.push_back(p * kPerProducer + i);
          ++produced;
          kiOSMutex_Unlock(mutex);
          if (i % 64 == 63) {
            kiOSCondition_Broadcast(cond);
          } else {
            kiOSCondition_Signal(cond);
          }
        }
      });
    }
    for (int c = 0; c < kConsumers; ++c) {
      threads.emplace_back([&, c] {
        kiOSMutex_Lock(mutex);
        for (;;) {
          while (queue.empty() && produced < kTotal) {
            if (c % 2 == 0) {
              kiOSCondition_WaitTimeout(cond, mutex, 1);
            } else {
              kiOSCondition_Wait(cond, mutex);
            }
          }
          if (queue.empty()) break;  // all produced and taken
          ledger.Take(queue.front());
          queue.pop_front();
        }
        kiOSMutex_Unlock(mutex);
        kiOSCondition_Broadcast(cond);  // wake the others to see the end
      });
    }
    RunAll(threads);
    ledger.ExpectEachOnce();
    kiOSCondition_Delete(cond);
    kiOSMutex_Delete(mutex);
  });
}

// kiCondition as an auto-reset "work available" event: signals given while
// nobody waits are remembered (several coalesce), and one signal wakes one
// waiter. Consumers wait without limit, so a lost signal would hang the test.
TEST(ThreadStressTest, EventHandsOverEveryItem) {
  kiTest::RunBounded("event stress", [] {
    kiCondition available;
    kiMutex queueLock;
    std::deque<int> queue;  // guarded by queueLock
    int taken = 0;          // guarded by queueLock
    Ledger ledger;
    std::vector<std::thread> threads;
    for (int p = 0; p < kProducers; ++p) {
      threads.emplace_back([&, p] {
        for (int i = 0; i < kPerProducer; ++i) {
          {
            kiMutexLocker lock(&queueLock);
            queue.push_back(p * kPerProducer + i);
          }
          available.Signal();
        }
      });
    }
    for (int c = 0; c < kConsumers; ++c) {
      threads.emplace_back([&] {
        for (;;) {
          bool done = false;
          bool got = false;
          int id = 0;
          {
            kiMutexLocker lock(&queueLock);
            if (!queue.empty()) {
              id = queue.front();
              queue.pop_front();
              got = true;
              ++taken;
            }
            done = taken == kTotal;
          }
          if (got) ledger.Take(id);
          if (done) break;
          if (!got) available.Wait();
        }
        available.Signal();  // pass the end on to the next waiting consumer
      });
    }
    RunAll(threads);
    ledger.ExpectEachOnce();
  });
}

}  // namespace
