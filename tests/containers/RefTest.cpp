// RefTest.cpp - kiRefCounted, kiRefAny and kiRef<T>: exactly one delete (also
// from many threads), assignment order, null references.
#include <atomic>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ki/containers/Ref.h"
#include "support/ChildProcess.h"

namespace {

std::atomic<int> g_deleted{0};

struct Counted : kiRefCounted {
  ~Counted() override { ++g_deleted; }
  kiRef<Counted> child;  // for an object kept alive only by another
};

class RefTest : public ::testing::Test {
 protected:
  void SetUp() override { g_deleted = 0; }
};

TEST_F(RefTest, CountsAndExactlyOneDelete) {
  {
    kiRef<Counted> a = new Counted;
    a = a.Get();  // the same object: nothing changes
    kiRefAny any = a;
    EXPECT_TRUE(any == a.Get() && a != kiRef<Counted>());
    EXPECT_EQ(2, a->_GetRefCount());
  }
  EXPECT_EQ(1, g_deleted);
  Counted local;  // never retained: a stray Release leaves it alone
  EXPECT_EQ(-1, local.Release());
  EXPECT_EQ(-1, Counted(local)._GetRefCount());  // intended: the count travels with a copy
  EXPECT_EQ(2, g_deleted);                       // the copy went out of scope, not local
}

// The new object is retained before the old one is released.
TEST_F(RefTest, AssignmentKeepsAnObjectHeldOnlyByTheOldOne) {
  kiRef<Counted> ref = new Counted;
  ref->child = new Counted;
  ref = ref->child;
  EXPECT_EQ(1, g_deleted);
  EXPECT_EQ(1, ref->_GetRefCount());
  ref._SetPointedObject(nullptr);
  EXPECT_EQ(2, g_deleted);
}

TEST_F(RefTest, NullReferences) {
  kiRef<Counted> null = 0;
  EXPECT_TRUE(null == nullptr && null == kiRef<Counted>() && kiRefAny() == kiRefAny(0));
  EXPECT_EQ(nullptr, null.operator->());  // the hook runs and answers null
  const kiTest::ChildResult child = kiTest::RunInChild([&null] { (void)*null; });
  EXPECT_EQ(255, child.exitStatus);
  EXPECT_THAT(child.out, ::testing::HasSubstr("kiRef: null reference dereferenced"));
}

TEST_F(RefTest, ReleaseFromManyThreadsDeletesOnce) {
  for (int round = 1; round <= 20; ++round) {
    std::vector<std::thread> threads;
    {
      kiRef<Counted> shared = new Counted;
      for (int t = 0; t < 8; ++t) {
        threads.emplace_back([copy = shared]() mutable {
          for (int i = 0; i < 1000; ++i) kiRef<Counted> extra(copy);
          copy = nullptr;
        });
      }
    }
    for (std::thread& t : threads) t.join();
    ASSERT_EQ(round, g_deleted);
  }
}

}  // namespace
