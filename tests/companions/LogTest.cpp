// LogTest.cpp - kivoToolsLog: threshold and categories, per-thread records and
// nesting, the capture hook, the line written to a file.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <fstream>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/LogCapture.h"
#include "support/TempDir.h"
#include <kiLog/Log.h>

#if !defined(_WIN32)
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace {

using ::testing::ElementsAre;

// One record in the shape ki writes it; false when it was not wanted.
bool Log(unsigned level, unsigned category, const char* text) {
  kiLog_Record* record = kiLog_Begin(level, category);
  if (record == nullptr) return false;
  record->source = "tests/Log";
  record->line = 7;
  kiLog_Append_F("%s", text);
  kiLog_End(record);
  return true;
}

// Records go to a fresh file at threshold 2 unless a capture takes them.
class LogTest : public ::testing::Test {
 protected:
  void SetUp() override {
    kiLog_EnableAllCategories(1);
    kiLog_SetLevel(2);
    ASSERT_EQ(0, kiLog_SetFile(path_.c_str()));
  }
  void TearDown() override {
    kiLog_SetLevel(level_);
    kiLog_EnableAllCategories(1);
    kiLog_SetFile(nullptr);
  }
  // The file's lines, each checked for its timestamp and cut after it.
  std::vector<std::string> Lines() const {
    static const std::regex kStamp("\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3} ");
    std::ifstream in(path_);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) {
      EXPECT_TRUE(std::regex_match(line.substr(0, 24), kStamp)) << line;
      lines.push_back(line.substr(std::min<size_t>(24, line.size())));
    }
    return lines;
  }
  kiTest::TempDir dir_;
  const std::string path_ = dir_.Path("log");
  const unsigned short level_ = _kiLog_Level.load();
};

TEST_F(LogTest, ThresholdAndCategoriesDecideWhatIsWanted) {
  // clang-format off
  const struct {
    const char* what;
    unsigned short threshold;
    unsigned level, category;
    int disabled;  // a category switched off first; -1: none, -2: all
    bool wanted;
  } rows[] = {
      {"below the threshold", 2, 1, 42, -1, true},   {"at the threshold", 2, 2, 42, -1, false},
      {"threshold 0", 0, 0, 42, -1, false},          {"highest", 65535, 65534, 42, -1, true},
      {"category off", 5, 1, 42, 42, false},         {"another category off", 5, 1, 42, 43, true},
      {"last bit of a word", 5, 1, 63, 64, true},    {"first of the next", 5, 1, 64, 64, false},
      {"all off, last one", 5, 1, 255, -2, false},   {"all off, none above", 5, 1, 256, -2, true},
      {"no switch for 300", 5, 1, 300, 300, true}};
  // clang-format on
  for (const auto& r : rows) {
    SCOPED_TRACE(r.what);
    kiTest::LogCapture log(r.threshold);
    kiLog_EnableAllCategories(r.disabled != -2);
    if (r.disabled >= 0) kiLog_EnableCategory(static_cast<unsigned>(r.disabled), 0);
    EXPECT_EQ(r.wanted, kiLog_WillLog(r.level, r.category) != 0);
    EXPECT_EQ(r.wanted, Log(r.level, r.category, "x"));
    EXPECT_EQ(r.wanted ? 1u : 0u, log.Count());
  }
}

// Arguments are read again when the text outgrows its first buffer.
TEST_F(LogTest, AppendsBuildOneTextOfAnyLength) {
  kiTest::LogCapture log;
  const char* volatile none = nullptr;  // opaque, so the compiler does not warn
  for (size_t length : {255u, 256u, 257u, 100000u}) {
    SCOPED_TRACE(length);
    log.Clear();
    const std::string big(length, 'q');
    kiLog_Record* record = kiLog_Begin(1, 42);
    kiLog_Append_F("<%s|%d|%s>", big.c_str(), 42, none);
    kiLog_Append_F("%s", big.c_str());
    kiLog_End(record);
    EXPECT_THAT(log.Texts(), ElementsAre("<" + big + "|42|(null)>" + big));
  }
}

TEST_F(LogTest, RecordsNestWhenAnArgumentLogs) {
  kiLog_Record* outer = kiLog_Begin(1, 42);
  ASSERT_NE(nullptr, outer);
  outer->source = "tests/Outer";
  outer->line = 5;
  kiLog_Append_F("outer %s", Log(1, 7, "inner") ? "arg" : "");
  kiLog_End(outer);
  EXPECT_THAT(Lines(), ElementsAre("E 7 tests/Log:7 inner", "E 42 tests/Outer:5 outer arg"));
}

TEST_F(LogTest, HookAnswerDecidesWhetherTheRecordIsWritten) {
  struct Seen {
    int answer;
    std::vector<std::string> texts;
  } seen{0, {}};
  kiLog_CaptureHook hook = [](void* context, const kiLog_Entry* entry) {
    static_cast<Seen*>(context)->texts.push_back(entry->text);
    return static_cast<Seen*>(context)->answer;
  };
  void* context = nullptr;
  kiLog_CaptureHook previous = kiLog_SetCaptureHook(hook, &seen, &context);
  Log(1, 42, "passed on\n");
  seen.answer = 1;
  Log(1, 42, "consumed\n");
  EXPECT_EQ(hook, kiLog_SetCaptureHook(previous, context, &context));
  EXPECT_EQ(&seen, context);
  EXPECT_THAT(seen.texts, ElementsAre("passed on\n", "consumed\n"));
  EXPECT_THAT(Lines(), ElementsAre("E 42 tests/Log:7 passed on"));
}

TEST_F(LogTest, FileLinesHaveOneRecordEach) {
  std::ofstream(path_) << "2000-01-01 00:00:00.000 old line\n";
  ASSERT_EQ(0, kiLog_SetFile(path_.c_str()));  // appended to
  kiLog_SetLevel(10);
  for (unsigned level = 0; level <= 5; ++level) Log(level, 42, "level\n");
  Log(1, 3, "no newline");
  kiLog_End(kiLog_Begin(1, 3));  // no source tag
  EXPECT_EQ(-1, kiLog_SetFile(dir_.Path("missing/log").c_str()));
  Log(1, 3, "still here\n");
  EXPECT_THAT(Lines(),
              ElementsAre("old line", "F 42 tests/Log:7 level", "E 42 tests/Log:7 level",
                          "I 42 tests/Log:7 level", "D 42 tests/Log:7 level",
                          "T 42 tests/Log:7 level", "5 42 tests/Log:7 level",
                          "E 3 tests/Log:7 no newline", "E 3 - ", "E 3 tests/Log:7 still here"));
}

// Records built from several appends on many threads at once stay whole and
// unmixed.
TEST_F(LogTest, ConcurrentRecordsStayWhole) {
  std::vector<std::thread> threads;
  std::vector<std::string> expected;
  for (char c = 'a'; c < 'i'; ++c) {
    expected.insert(expected.end(), 200, "E 5 - " + std::string(450, c));
    threads.emplace_back([c] {
      const std::string part(150, c);
      for (int i = 0; i < 200; ++i) {
        kiLog_Record* record = kiLog_Begin(1, 5);
        for (int p = 0; p < 3; ++p) kiLog_Append_F("%s", part.c_str());
        kiLog_End(record);
      }
    });
  }
  for (std::thread& t : threads) t.join();
  std::vector<std::string> lines = Lines();
  std::sort(lines.begin(), lines.end());
  EXPECT_TRUE(lines == expected);  // no dump of 1600 lines on failure
}

#if !defined(_WIN32)
// A child forked while another thread is inside the output path can log and
// change settings: the fork waits for the lock and the child gets it free.
TEST_F(LogTest, ChildForkedWhileAnotherThreadWritesCanLog) {
  // 1: the hook holds the lock (for 100 ms), 2: forked. The writer outlives
  // the fork so that the child inherits no ended, unjoined thread.
  static std::atomic<int> stage;
  stage = 0;
  kiLog_CaptureHook blocking = [](void*, const kiLog_Entry*) {
    stage = 1;
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    return 1;
  };
  kiLog_CaptureHook previous = kiLog_SetCaptureHook(blocking, nullptr, nullptr);
  std::thread writer([] {
    Log(1, 42, "held");
    while (stage.load() != 2) std::this_thread::yield();
  });
  while (stage.load() != 1) std::this_thread::yield();
  pid_t child = fork();
  if (child == 0) {
    kiLog_SetCaptureHook(nullptr, nullptr, nullptr);
    Log(1, 42, "child");
    _exit(0);
  }
  stage = 2;
  writer.join();
  ASSERT_NE(-1, child);
  kiLog_SetCaptureHook(previous, nullptr, nullptr);
  int status = 0;
  auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (waitpid(child, &status, WNOHANG) == 0) {
    if (std::chrono::steady_clock::now() > deadline) {
      kill(child, SIGKILL);
      waitpid(child, &status, 0);
      FAIL() << "the child hung on the log lock";
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  EXPECT_THAT(Lines(), ElementsAre("E 42 tests/Log:7 child"));
}
#endif

}  // namespace
