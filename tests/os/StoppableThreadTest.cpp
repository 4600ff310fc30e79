// StoppableThreadTest.cpp - kiStoppableThread's states through a run, stop
// requests before and after the start, the name the system shows, a
// self-deleting kind-1 thread, and creation failures.
#include <atomic>
#include <pthread.h>
#include <string>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ki/os/Semaphore.h"
#include "ki/os/StoppableThread.h"
#include "ki/proc/kiOSThread.h"
#include "ki/proc/kiOSThread_p.h"
#include "support/LogCapture.h"

#include "os/ThreadTestSupport.h"

namespace {

// Loops until asked to stop, like every worker of the library.
class Worker : public kiStoppableThread {
 public:
  explicit Worker(const char* name = "ki-worker", int kind = 0) : kiStoppableThread(name, kind) {}
  ~Worker() override {
    if (ThreadStateAtDeletion != nullptr) *ThreadStateAtDeletion = GetThreadState();
    if (Deleted != nullptr) Deleted->Post();
  }

  using kiStoppableThread::InThreadContext;
  using kiStoppableThread::TestExit;
  using kiStoppableThread::ThreadCancel;
  using kiStoppableThread::ThreadCreate;
  using kiStoppableThread::ThreadSetPriority;
  using kiStoppableThread::ThreadWaitTerminate;

  std::atomic<int> loops{0};
  std::atomic<bool> stopAtOnce{false};
  std::string shownName;  // written by the thread before its state leaves 3
  std::atomic<int>* ThreadStateAtDeletion = nullptr;
  kiSemaphore* Deleted = nullptr;

 protected:
  void OnRun() override {
    char name[32] = {};
    pthread_getname_np(pthread_self(), name, sizeof name);
    shownName = name;
    while (!stopAtOnce && !TestExit()) {
      ++loops;
      ThreadSleep(1);
    }
  }
};

TEST(StoppableThreadTest, RunPassesEveryStateInOrder) {
  Worker w("ki-worker-with-a-long-name");
  EXPECT_EQ(0, w.GetThreadState());
  EXPECT_EQ(0, w.GetThreadKind());
  EXPECT_EQ(0, w.ThreadCreate());
  EXPECT_EQ(1, w.GetThreadState());
  w.Go(kiThreadState_Running);
  EXPECT_EQ(3, w.GetThreadState());
  EXPECT_TRUE(kiTest::WaitUntil([&] { return w.loops.load() > 0; }));
  w.ThreadCancel();
  EXPECT_GE(w.GetThreadState(), 5);
  EXPECT_TRUE(kiTest::WaitUntil([&] { return w.GetThreadState() == 6; }))
      << "OnRun returned: 6 until joined";
  w.ThreadWaitTerminate();
  EXPECT_EQ(7, w.GetThreadState());
  EXPECT_EQ("ki-worker-with-", w.shownName) << "the system shows 15 bytes";
  EXPECT_FALSE(w.InThreadContext());
}

TEST(StoppableThreadTest, CancelBeforeTheStartChangesNothing) {
  Worker w;
  w.ThreadCancel();
  EXPECT_EQ(0, w.GetThreadState());
  EXPECT_FALSE(w.TestExit());
  ASSERT_EQ(0, w.ThreadCreate());
  w.ThreadCancel();
  EXPECT_EQ(1, w.GetThreadState());
  EXPECT_FALSE(w.TestExit());
  // Never started: marked terminated without waiting; the thread never runs.
  w.ThreadWaitTerminate();
  EXPECT_EQ(7, w.GetThreadState());
  EXPECT_EQ(0, w.loops.load());
  EXPECT_TRUE(w.shownName.empty());
}

TEST(StoppableThreadTest, TestExitAfterCancelRaisesTheState) {
  Worker w;
  w.stopAtOnce = true;  // OnRun returns at once
  ASSERT_EQ(0, w.ThreadCreate());
  w.Go(kiThreadState_Returned);
  EXPECT_EQ(6, w.GetThreadState());
  w.ThreadCancel();  // after OnRun returned: the state does not go back
  EXPECT_EQ(6, w.GetThreadState());
  EXPECT_TRUE(w.TestExit());
  w.ThreadWaitTerminate();
  EXPECT_EQ(7, w.GetThreadState());
}

TEST(StoppableThreadTest, DestructorJoinsAFinishedThread) {
  auto* w = new Worker;
  w->stopAtOnce = true;
  ASSERT_EQ(0, w->ThreadCreate());
  w->Go(kiThreadState_Running);
  delete w;  // joins; a leak or a dangling thread shows under the sanitizers
}

// Kind 1 runs detached and deletes its object when OnRun returns.
TEST(StoppableThreadTest, KindOneDeletesItselfWhenDone) {
  kiSemaphore deleted(0);
  std::atomic<int> stateAtDeletion{-1};
  auto* w = new Worker("ki-detached", 1);
  w->Deleted = &deleted;
  w->ThreadStateAtDeletion = &stateAtDeletion;
  EXPECT_EQ(1, w->GetThreadKind());
  ASSERT_EQ(0, w->ThreadCreate());
  w->Go(kiThreadState_Running);
  w->ThreadCancel();  // w must not be touched after this
  EXPECT_EQ(0, deleted.WaitTimeout(5000));
  EXPECT_EQ(7, stateAtDeletion.load());
}

// Self-deleting threads, each shape run many times so that the sanitizer
// build sees any access to the object after it is gone: a kind-0 object
// destroyed on its own worker (its owner let go there), and kind-1 objects
// whose OnRun ends before Go's caller looks again or right after a cancel.
class Ending : public kiStoppableThread {
 public:
  Ending(int kind, bool deleteInRun)
      : kiStoppableThread("ki-ending", kind), m_delete(deleteInRun) {}
  using kiStoppableThread::ThreadCancel;
  using kiStoppableThread::ThreadCreate;
  kiSemaphore* Deleted = nullptr;
  kiSemaphore* Release = nullptr;  // waited for before a delete in OnRun
  ~Ending() override {
    if (Deleted != nullptr) Deleted->Post();
  }

 protected:
  void OnRun() override {
    if (m_delete) {
      Release->Wait();  // Go of a kind-0 object still polls its state
      delete this;
      return;
    }
    while (GetThreadKind() == 2 && !TestExit()) {
    }
  }

 private:
  bool m_delete;
};

TEST(StoppableThreadTest, SelfDeletingObjectsAreNotTouchedOnceGone) {
  kiSemaphore deleted(0);
  kiSemaphore release(0);
  for (int i = 0; i < 50; ++i) {
    for (const auto& shape : {std::make_pair(0, true), std::make_pair(1, false)}) {
      auto* t = new Ending(shape.first, shape.second);
      t->Deleted = &deleted;
      t->Release = &release;
      ASSERT_EQ(0, t->ThreadCreate());
      t->Go(kiThreadState_Running);
      if (shape.second) release.Post();
      ASSERT_EQ(0, deleted.WaitTimeout(5000));
    }
    auto* spinning = new Ending(2, false);  // loops on TestExit until cancelled
    spinning->Deleted = &deleted;
    ASSERT_EQ(0, spinning->ThreadCreate());
    spinning->Go(kiThreadState_Running);
    spinning->ThreadCancel();
    ASSERT_EQ(0, deleted.WaitTimeout(5000));
  }
}

TEST(StoppableThreadTest, FailuresAreLoggedInTheThreadCategory) {
  kiTest::LogCapture log;
  Worker w("ki-refused");
  kiOS_FailForTesting(kiOSFault_ThreadCreate, 0);
  EXPECT_EQ(-1, w.ThreadCreate());
  EXPECT_EQ(0, w.GetThreadState());
  ASSERT_EQ(2u, log.Count());
  const kiTest::LogRecord r = log.Records()[1];
  EXPECT_EQ("Cannot create thread 'ki-refused'\n", r.text);
  EXPECT_EQ(44u, r.category);
  EXPECT_EQ("os/StoppableThread", r.source);

  log.Clear();
  ASSERT_EQ(0, w.ThreadCreate());
  w.Go(kiThreadState_Running);
  kiOS_FailForTesting(kiOSFault_ThreadPriority, 0);
  w.ThreadSetPriority(100);
  w.ThreadSetPriority(50);
  ASSERT_EQ(1u, log.Count()) << "a refused change is logged once, by the OS layer";
  EXPECT_EQ(7u, log.Records()[0].category);
  w.ThreadCancel();
  w.ThreadWaitTerminate();
}

}  // namespace
