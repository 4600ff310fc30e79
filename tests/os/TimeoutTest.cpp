// TimeoutTest.cpp - kiTimeout across the wrap of the tick counter, and the
// order, links and handler rule of kiTimeoutQueue, on a fake tick counter.
#include <climits>
#include <vector>

#include <gtest/gtest.h>

#include "ki/os/Timeout.h"
#include "support/FakeClock.h"

namespace {

// Records each handler call and cancels the time-out it handled, as owners do.
class Queue : public kiTimeoutQueue {
 public:
  std::vector<kiTimeout*> Order() {
    std::vector<kiTimeout*> order;
    std::vector<std::pair<kiTimeout*, unsigned long>> taken;
    // Walks by cancelling and restarting with the remaining time, which keeps
    // the order: equal times stay in start order.
    for (kiTimeout* t = FirstExpiringTimeout(); t != nullptr; t = FirstExpiringTimeout()) {
      order.push_back(t);
      taken.emplace_back(t, t->Remaining());
      TimeoutCancel(t);
    }
    for (const auto& entry : taken) TimeoutStart(entry.first, entry.second);
    return order;
  }
  int calls = 0;

 protected:
  void OnTimeouts() override {
    ++calls;
    TimeoutCancel(FirstExpiringTimeout());
  }
};

TEST(TimeoutTest, CountsDownAcrossTheWrapOfTheTickCounter) {
  kiTest::FakeTicks ticks(0xFFFFFFFFu - 500);
  kiTimeout never;
  EXPECT_TRUE(never.IsExpired());  // never started
  EXPECT_EQ(0u, never.Remaining());

  kiTimeout t;
  t.Start(1000);
  EXPECT_EQ(1000u, t.Remaining());
  ticks.Advance(600);  // the counter wraps
  EXPECT_EQ(400u, t.Remaining());
  ticks.Advance(399);
  EXPECT_FALSE(t.IsExpired());
  ticks.Advance(1);
  EXPECT_TRUE(t.IsExpired());
  ticks.Advance(0x80000000u);  // long past: still expired
  EXPECT_EQ(0u, t.Remaining());

  kiTimeout forever;
  forever.Start(0xFFFFFFFFu);
  kiTimeout beyond;
  beyond.Start(ULONG_MAX);  // unsigned long is wider than the tick counter
  ticks.Advance(0xFFFFFFF0u);
  EXPECT_EQ(0xFFFFFFFFu, forever.Remaining());
  EXPECT_FALSE(beyond.IsExpired());
}

TEST(TimeoutTest, QueueKeepsRemainingTimeOrderAndStartOrderOnTies) {
  kiTest::FakeTicks ticks(0xFFFFFF00u);
  Queue q;
  EXPECT_EQ(nullptr, q.FirstExpiringTimeout());
  kiTimeout a, b, c, d;
  q.TimeoutStart(&a, 300);
  q.TimeoutStart(&b, 100);
  q.TimeoutStart(&c, 200);
  q.TimeoutStart(&d, 100);
  EXPECT_EQ((std::vector<kiTimeout*>{&b, &d, &c, &a}), q.Order());

  ticks.Advance(50);
  q.TimeoutStart(&b, 120);  // restarting moves it: 120 left is behind c's 150
  EXPECT_EQ((std::vector<kiTimeout*>{&d, &b, &c, &a}), q.Order());
  q.TimeoutCancel(&c);
  q.TimeoutCancel(&c);  // not linked: left alone
  q.TimeoutCancel(nullptr);
  q.TimeoutStart(nullptr, 10);
  EXPECT_EQ((std::vector<kiTimeout*>{&d, &b, &a}), q.Order());
  {
    kiTimeout gone;
    q.TimeoutStart(&gone, 0);
  }  // a destroyed time-out leaves its queue
  EXPECT_EQ(&d, q.FirstExpiringTimeout());
}

TEST(TimeoutTest, HandlerRunsOncePerCallWhileTimeoutsAreDue) {
  kiTest::FakeTicks ticks(0);
  Queue q;
  kiTimeout a, b, later;
  q.TimeoutStart(&a, 10);
  q.TimeoutStart(&b, 20);
  q.TimeoutStart(&later, 1000);
  q.HandleExpiredTimeouts();
  EXPECT_EQ(0, q.calls);
  ticks.Advance(25);
  q.HandleExpiredTimeouts();
  EXPECT_EQ(1, q.calls);  // both are due, one call
  q.HandleExpiredTimeouts();
  q.HandleExpiredTimeouts();
  EXPECT_EQ(2, q.calls);
  EXPECT_EQ(&later, q.FirstExpiringTimeout());
}

TEST(TimeoutTest, CopiesAndQueuesNeverShareLinks) {
  kiTest::FakeTicks ticks(0);
  auto* first = new Queue;
  Queue second;
  kiTimeout a, b;
  first->TimeoutStart(&a, 100);
  first->TimeoutStart(&b, 200);
  {
    kiTimeout copy(a);  // a copy is in no queue; destroying it changes nothing
    EXPECT_EQ(100u, copy.Remaining());
    Queue queueCopy(*first);
    EXPECT_EQ(nullptr, queueCopy.FirstExpiringTimeout());
  }
  EXPECT_EQ((std::vector<kiTimeout*>{&a, &b}), first->Order());

  second.TimeoutStart(&a, 50);  // moving to another queue leaves the first
  EXPECT_EQ((std::vector<kiTimeout*>{&b}), first->Order());
  b = a;  // re-timed by assignment: out of its queue
  EXPECT_EQ(nullptr, first->FirstExpiringTimeout());
  first->TimeoutStart(&b, 10);
  delete first;  // its time-outs are unlinked and outlive it
  EXPECT_EQ(10u, b.Remaining());
  EXPECT_EQ(&a, second.FirstExpiringTimeout());
}

}  // namespace
