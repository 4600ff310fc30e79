// SupportTest.cpp - kiTest::RunInChild: how a child's end and output are reported.
#include <cstdio>
#include <functional>
#include <signal.h>
#include <string>
#include <unistd.h>

#include <gtest/gtest.h>

#include "support/ChildProcess.h"

namespace {

TEST(RunInChildTest, ReportsHowTheChildEnded) {
  const struct {
    const char* what;
    std::function<void()> body;
    int exitStatus;
    bool signaled;
  } rows[] = {{"body returns", [] {}, 0, false},
              {"_exit with the fatal path's status", [] { _exit(255); }, 255, false},
              {"killed by a signal", [] { raise(SIGTERM); }, 128 + SIGTERM, true}};
  for (const auto& r : rows) {
    SCOPED_TRACE(r.what);
    kiTest::ChildResult result = kiTest::RunInChild(r.body);
    EXPECT_EQ(r.exitStatus, result.exitStatus);
    EXPECT_EQ(r.signaled, result.signaled);
  }
}

// Far more than a pipe holds on both pipes: a parent that drains one pipe
// before the other deadlocks.
TEST(RunInChildTest, CollectsBothPipesInFull) {
  const std::string block(1 << 20, 'x');
  kiTest::ChildResult result = kiTest::RunInChild([&block] {
    std::fputs(block.c_str(), stderr);
    std::printf("%sout\n", block.c_str());  // the tail is still in stdio's buffer on return
  });
  EXPECT_EQ(0, result.exitStatus);
  EXPECT_TRUE(result.out == block + "out\n");  // no 1 MiB dump on failure
  EXPECT_TRUE(result.err == block);
}

}  // namespace
