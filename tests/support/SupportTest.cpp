// SupportTest.cpp - the test support library: how a child's end and output are
// reported, what a temporary directory leaves behind, what a log capture restores.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <signal.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/ChildProcess.h"
#include "support/LogCapture.h"
#include "support/TempDir.h"

namespace {

using ::testing::ElementsAre;

bool Exists(const std::string& path) {
  struct stat st;
  return lstat(path.c_str(), &st) == 0;
}

void LogText(unsigned level, const char* text) {
  kiLog_Record* record = kiLog_Begin(level, 42);
  if (record == nullptr) return;
  record->source = "support/Test";
  record->line = 9;
  kiLog_Append_F("%s", text);
  kiLog_End(record);
}

TEST(RunInChildTest, ReportsHowTheChildEnded) {
  struct Row {
    const char* what;
    std::function<void()> body;
    int exitStatus;
    bool signaled;
  };
  const Row rows[] = {
      {"body returns", [] {}, 0, false},
      {"_exit with a status", [] { _exit(3); }, 3, false},
      {"the fatal path's status", [] { _exit(255); }, 255, false},
      {"killed by a signal", [] { raise(SIGTERM); }, 128 + SIGTERM, true},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.what);
    kiTest::ChildResult result = kiTest::RunInChild(r.body);
    EXPECT_EQ(r.exitStatus, result.exitStatus);
    EXPECT_EQ(r.signaled, result.signaled);
  }
}

// Far more than a pipe holds, on both pipes (a parent that drains one pipe
// before the other deadlocks), then text left in stdio's buffer when the body
// returns.
TEST(RunInChildTest, CollectsBothPipesInFull) {
  const std::string block(1 << 20, 'x');
  kiTest::ChildResult result = kiTest::RunInChild([&block] {
    if (write(STDERR_FILENO, block.data(), block.size()) < 0) _exit(1);
    if (write(STDOUT_FILENO, block.data(), block.size()) < 0) _exit(1);
    std::printf("out\n");
    std::fprintf(stderr, "err\n");
  });
  EXPECT_EQ(0, result.exitStatus);
  EXPECT_TRUE(result.out == block + "out\n");  // no 1 MiB dump on failure
  EXPECT_TRUE(result.err == block + "err\n");
}

TEST(TempDirTest, IsCreatedUnderTmpdir) {
  kiTest::TempDir base;
  const std::string expectedPrefix = base.Path() + "/kiTest-";
  kiTest::ChildResult result = kiTest::RunInChild([&base, &expectedPrefix] {
    setenv("TMPDIR", (base.Path() + "/").c_str(), 1);  // a trailing '/' is tolerated
    kiTest::TempDir a;
    kiTest::TempDir b;
    bool ok = a.Path().compare(0, expectedPrefix.size(), expectedPrefix) == 0 &&
              a.Path() != b.Path() && Exists(a.Path()) && Exists(b.Path()) &&
              a.Path("f") == a.Path() + "/f";
    std::fflush(nullptr);
    _exit(ok ? 0 : 1);
  });
  EXPECT_EQ(0, result.exitStatus);
}

TEST(TempDirTest, RemovesTheWholeTreeButNothingOutsideIt) {
  kiTest::TempDir outside;
  std::ofstream(outside.Path("keep")) << "x";
  std::string path;
  {
    kiTest::TempDir dir;
    path = dir.Path();
    ASSERT_EQ(0, mkdir(dir.Path("sub").c_str(), 0700));
    ASSERT_EQ(0, mkdir(dir.Path("sub/locked").c_str(), 0700));
    std::ofstream(dir.Path("sub/locked/file")) << "data";
    ASSERT_EQ(0, chmod(dir.Path("sub/locked").c_str(), 0));
    ASSERT_EQ(0, symlink(outside.Path().c_str(), dir.Path("link").c_str()));
  }
  EXPECT_FALSE(Exists(path));
  EXPECT_TRUE(Exists(outside.Path("keep")));
}

TEST(LogCaptureTest, NestedCapturesRestoreHookAndLevel) {
  unsigned short level = _kiLog_Level.load();
  {
    kiTest::LogCapture outer(3);
    {
      kiTest::LogCapture inner(2);
      LogText(2, "dropped");  // below inner's threshold only
      LogText(1, "inner");
      EXPECT_THAT(inner.Texts(), ElementsAre("inner"));
    }
    EXPECT_EQ(3, _kiLog_Level.load());
    LogText(2, "outer");
    EXPECT_THAT(outer.Texts(), ElementsAre("outer"));
  }
  EXPECT_EQ(level, _kiLog_Level.load());
  void* context = &level;
  EXPECT_EQ(nullptr, kiLog_SetCaptureHook(nullptr, nullptr, &context));
  EXPECT_EQ(nullptr, context);
}

}  // namespace
