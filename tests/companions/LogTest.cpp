// LogTest.cpp - kivoToolsLog: threshold and categories, per-thread records and
// nesting, the capture hook, the line written to a file or standard error, and
// the environment read at load.
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <regex>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/ChildProcess.h"
#include "support/LogCapture.h"
#include "support/TempDir.h"
#include <kiLog/Log.h>

extern char** environ;

namespace {

using ::testing::ElementsAre;

// Started again as a probe (see EnvironmentIsReadAtLoad), the test program
// reports what the library read at load and ends before any test runs.
[[maybe_unused]] const bool g_probe = [] {
  if (std::getenv("KI_LOG_TEST_PROBE") == nullptr) return false;
  std::printf("level=%u", static_cast<unsigned>(_kiLog_Level.load()));
  for (unsigned category : {0u, 7u, 42u, 300u}) {
    std::printf(" %u:%d", category, kiLog_WillLog(0, category));
  }
  std::printf("\n");
  std::fflush(stdout);
  if (kiLog_Record* record = kiLog_Begin(1, 300)) {
    kiLog_Append_F("probe\n");
    kiLog_End(record);
  }
  _exit(0);
}();

// One record in the shape ki writes it; false when it was not wanted.
bool Log(unsigned level, unsigned category, const char* text, const char* source = "tests/Log",
         unsigned line = 7) {
  kiLog_Record* record = kiLog_Begin(level, category);
  if (record == nullptr) return false;
  record->source = source;
  record->line = line;
  kiLog_Append_F("%s", text);
  kiLog_End(record);
  return true;
}

// The lines of a log file with their timestamps checked and cut off.
std::vector<std::string> ReadLines(const std::string& path) {
  static const std::regex kStamp(
      "[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3} ");
  std::ifstream in(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) {
    EXPECT_TRUE(line.size() >= 24 && std::regex_match(line.substr(0, 24), kStamp)) << line;
    lines.push_back(line.size() >= 24 ? line.substr(24) : line);
  }
  return lines;
}

class LogTest : public ::testing::Test {
 protected:
  void SetUp() override { kiLog_EnableAllCategories(1); }  // whatever the environment chose
  void TearDown() override {
    kiLog_SetLevel(m_level);
    kiLog_EnableAllCategories(1);
    kiLog_SetFile(nullptr);
  }

  kiTest::TempDir dir_;

 private:
  unsigned short m_level = _kiLog_Level.load();
};

TEST_F(LogTest, ThresholdAndCategoriesDecideWhatIsWanted) {
  struct Row {
    const char* what;
    unsigned short threshold;
    unsigned level;
    unsigned category;
    int disabled;  // a category switched off first; -1: none, -2: all
    bool wanted;
  };
  const Row rows[] = {
      {"below the threshold", 2, 1, 42, -1, true},
      {"at the threshold", 2, 2, 42, -1, false},
      {"threshold 0 wants nothing", 0, 0, 42, -1, false},
      {"highest threshold", 65535, 65534, 42, -1, true},
      {"category switched off", 5, 1, 42, 42, false},
      {"another category switched off", 5, 1, 42, 43, true},
      {"last bit of a word", 5, 1, 63, 64, true},
      {"first bit of the next word", 5, 1, 64, 64, false},
      {"all off, last switch", 5, 1, 255, -2, false},
      {"all off, no switch above 255", 5, 1, 256, -2, true},
      {"switching off 300 does nothing", 5, 1, 300, 300, true},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.what);
    kiTest::LogCapture log(r.threshold);
    kiLog_EnableAllCategories(1);
    if (r.disabled == -2) kiLog_EnableAllCategories(0);
    if (r.disabled >= 0) kiLog_EnableCategory(static_cast<unsigned>(r.disabled), 0);
    EXPECT_EQ(r.wanted, kiLog_WillLog(r.level, r.category) != 0);
    EXPECT_EQ(r.wanted, Log(r.level, r.category, "x"));
    EXPECT_EQ(r.wanted ? 1u : 0u, log.Count());
  }
}

TEST_F(LogTest, AppendsBuildOneText) {
  kiTest::LogCapture log;
  kiLog_Append_F("stray %d", 1);  // no open record: ignored
  kiLog_Record* record = kiLog_Begin(1, 42);
  ASSERT_NE(nullptr, record);
  const char* none = nullptr;
  kiLog_Append_F("a=%d", 1);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
  kiLog_Append_F(none);  // a null format is ignored
#pragma GCC diagnostic pop
  kiLog_Append_F(", b=%s", none);
  kiLog_End(record);
  ASSERT_EQ(1u, log.Count());
  kiTest::LogRecord r = log.Records()[0];
  EXPECT_EQ("a=1, b=(null)", r.text);
  EXPECT_EQ("", r.source);  // the writer set none
}

TEST_F(LogTest, LongMessagesAreKeptWhole) {
  kiTest::LogCapture log;
  for (size_t length : {255u, 256u, 257u, 100000u}) {
    SCOPED_TRACE(length);
    log.Clear();
    std::string big(length, 'q');
    kiLog_Record* record = kiLog_Begin(1, 42);
    ASSERT_NE(nullptr, record);
    kiLog_Append_F("<%s|%d|%s>", big.c_str(), 42, "tail");  // arguments used again after growing
    kiLog_Append_F("%s", big.c_str());
    kiLog_End(record);
    EXPECT_THAT(log.Texts(), ElementsAre("<" + big + "|42|tail>" + big));
  }
}

// A message argument that logs must not disturb the record being built.
TEST_F(LogTest, RecordsNestWhenAnArgumentLogs) {
  kiTest::LogCapture log;
  auto argument = [] {
    Log(1, 7, "inner", "tests/Inner", 3);
    return "arg";
  };
  kiLog_Record* outer = kiLog_Begin(1, 42);
  ASSERT_NE(nullptr, outer);
  outer->source = "tests/Outer";
  outer->line = 5;
  kiLog_Append_F("outer %s", argument());
  kiLog_End(outer);
  std::vector<std::string> seen;
  for (const kiTest::LogRecord& r : log.Records()) {
    seen.push_back(std::to_string(r.category) + " " + r.source + ":" + std::to_string(r.line) +
                   " " + r.text);
  }
  EXPECT_THAT(seen, ElementsAre("7 tests/Inner:3 inner", "42 tests/Outer:5 outer arg"));
}

TEST_F(LogTest, OnlyTheTopRecordOfTheThreadCanBeEnded) {
  kiTest::LogCapture log;
  kiLog_Record* open[4];
  for (unsigned i = 0; i < 4; ++i) {
    open[i] = kiLog_Begin(1, i);
    ASSERT_NE(nullptr, open[i]);
    kiLog_Append_F("%u", i);
  }
  EXPECT_EQ(nullptr, kiLog_Begin(1, 9));  // too deep
  kiLog_End(nullptr);
  kiLog_End(open[0]);  // not on top
  std::thread([&open] {
    kiLog_End(open[3]);  // another thread's record
    Log(1, 8, "own");
  }).join();
  EXPECT_THAT(log.Texts(), ElementsAre("own"));
  for (int i = 3; i >= 0; --i) kiLog_End(open[i]);
  EXPECT_THAT(log.Texts(), ElementsAre("own", "3", "2", "1", "0"));
  EXPECT_TRUE(Log(1, 9, "again"));  // the stack is empty again
}

TEST_F(LogTest, HookAnswerDecidesWhetherTheRecordIsWritten) {
  ASSERT_EQ(0, kiLog_SetFile(dir_.Path("log").c_str()));
  kiLog_SetLevel(2);
  struct Seen {
    int answer;
    std::vector<std::string> texts;
  };
  kiLog_CaptureHook hook = [](void* context, const kiLog_Entry* entry) {
    Seen* seen = static_cast<Seen*>(context);
    seen->texts.push_back(entry->text);
    return seen->answer;
  };
  Seen passes{0, {}};
  Seen consumes{1, {}};
  void* previousContext = &passes;
  kiLog_CaptureHook previous = kiLog_SetCaptureHook(hook, &passes, &previousContext);
  Log(1, 42, "passed on\n");
  void* context = nullptr;
  EXPECT_EQ(hook, kiLog_SetCaptureHook(hook, &consumes, &context));
  EXPECT_EQ(&passes, context);
  Log(1, 42, "consumed\n");
  kiLog_SetCaptureHook(previous, previousContext, nullptr);

  EXPECT_THAT(passes.texts, ElementsAre("passed on\n"));
  EXPECT_THAT(consumes.texts, ElementsAre("consumed\n"));
  EXPECT_THAT(ReadLines(dir_.Path("log")), ElementsAre("E 42 tests/Log:7 passed on"));
}

TEST_F(LogTest, FileLinesHaveOneRecordEach) {
  std::ofstream(dir_.Path("log")) << "2000-01-01 00:00:00.000 old line\n";
  ASSERT_EQ(0, kiLog_SetFile(dir_.Path("log").c_str()));
  kiLog_SetLevel(10);
  for (unsigned level = 0; level <= 5; ++level) Log(level, 42, "level\n", "files/File", 120);
  Log(1, 3, "no newline");
  Log(1, 3, "");
  kiLog_Record* record = kiLog_Begin(1, 3);
  kiLog_End(record);  // no source tag
  EXPECT_EQ(-1, kiLog_SetFile(dir_.Path("missing/log").c_str()));
  Log(1, 3, "still here\n");
  EXPECT_THAT(ReadLines(dir_.Path("log")),
              ElementsAre("old line", "F 42 files/File:120 level", "E 42 files/File:120 level",
                          "I 42 files/File:120 level", "D 42 files/File:120 level",
                          "T 42 files/File:120 level", "5 42 files/File:120 level",
                          "E 3 tests/Log:7 no newline", "E 3 tests/Log:7 ", "E 3 - ",
                          "E 3 tests/Log:7 still here"));
}

// In a child, so that standard error can be read: a file set and unset again
// leaves it the destination, and a hook that logs on its own thread neither
// deadlocks, nor recurses, nor disturbs the record it is looking at.
TEST_F(LogTest, StandardErrorAndAHookThatLogs) {
  const std::string file = dir_.Path("log");
  kiTest::ChildResult result = kiTest::RunInChild([&file] {
    kiLog_SetLevel(2);
    kiLog_SetFile(file.c_str());
    kiLog_SetFile(nullptr);
    kiLog_SetCaptureHook(
        [](void*, const kiLog_Entry*) {
          Log(1, 3, "from hook\n");
          kiLog_Append_F("junk");  // ignored: the record being emitted is closed
          return 0;
        },
        nullptr, nullptr);
    Log(1, 42, "outer\n");
  });
  EXPECT_EQ("", result.out);
  EXPECT_THAT(result.err, ::testing::MatchesRegex(".* E 3 tests/Log:7 from hook\n"
                                                  ".* E 42 tests/Log:7 outer\n"));
  EXPECT_THAT(ReadLines(file), ElementsAre());
}

// Records built from several appends on many threads at once stay whole and
// unmixed, whether they go to the hook or to a file.
TEST_F(LogTest, ConcurrentRecordsStayWhole) {
  constexpr int kThreads = 8;
  constexpr int kRecords = 200;
  auto run = [] {
    std::atomic<bool> go{false};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
      threads.emplace_back([t, &go] {
        const std::string part(150, static_cast<char>('a' + t));
        while (!go.load()) std::this_thread::yield();
        for (int i = 0; i < kRecords; ++i) {
          kiLog_Record* record = kiLog_Begin(1, 5);
          if (record == nullptr) continue;
          for (int p = 0; p < 3; ++p) kiLog_Append_F("%s", part.c_str());
          kiLog_End(record);
        }
      });
    }
    go.store(true);
    for (std::thread& t : threads) t.join();
  };
  auto countWhole = [](const std::vector<std::string>& texts, const std::string& prefix) {
    std::map<char, int> counts;
    for (const std::string& text : texts) {
      std::string body = text.substr(std::min(prefix.size(), text.size()));
      if (text.compare(0, prefix.size(), prefix) == 0 && body.size() == 450 &&
          body.find_first_not_of(body[0]) == std::string::npos) {
        ++counts[body[0]];
      }
    }
    return counts;
  };
  std::map<char, int> expected;
  for (int t = 0; t < kThreads; ++t) expected[static_cast<char>('a' + t)] = kRecords;

  {
    kiTest::LogCapture log;
    run();
    EXPECT_EQ(expected, countWhole(log.Texts(), ""));
  }
  ASSERT_EQ(0, kiLog_SetFile(dir_.Path("log").c_str()));
  kiLog_SetLevel(2);
  run();
  kiLog_SetFile(nullptr);
  EXPECT_EQ(expected, countWhole(ReadLines(dir_.Path("log")), "E 5 - "));
}

// The test program is started again with chosen variables; the probe at the
// top of this file prints what the library made of them.
TEST_F(LogTest, EnvironmentIsReadAtLoad) {
  struct Row {
    const char* what;
    std::vector<std::string> variables;
    const char* expected;
  };
  const std::string file = dir_.Path("env.log");
  const Row rows[] = {
      {"nothing set", {}, "level=2 0:1 7:1 42:1 300:1\n"},
      {"level", {"KIVO_LOG_LEVEL=5"}, "level=5 0:1 7:1 42:1 300:1\n"},
      {"level not a number", {"KIVO_LOG_LEVEL=5x"}, "level=2 0:1 7:1 42:1 300:1\n"},
      {"level out of range", {"KIVO_LOG_LEVEL=65536"}, "level=2 0:1 7:1 42:1 300:1\n"},
      {"categories listed", {"KIVO_LOG_CATEGORIES=7, 42"}, "level=2 0:0 7:1 42:1 300:1\n"},
      {"categories all", {"KIVO_LOG_CATEGORIES=all"}, "level=2 0:1 7:1 42:1 300:1\n"},
      {"categories malformed", {"KIVO_LOG_CATEGORIES=7,,42"}, "level=2 0:1 7:1 42:1 300:1\n"},
      {"file", {"KIVO_LOG_FILE=" + file}, "level=2 0:1 7:1 42:1 300:1\n"},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.what);
    std::vector<std::string> variables = r.variables;
    variables.push_back("KI_LOG_TEST_PROBE=1");
    for (char** e = environ; *e != nullptr; ++e) {
      if (std::strncmp(*e, "KIVO_LOG_", 9) != 0) variables.push_back(*e);
    }
    std::vector<char*> envp;
    for (std::string& v : variables) envp.push_back(&v[0]);
    envp.push_back(nullptr);
    char program[] = "kivoToolsLogTest";
    char* argv[] = {program, nullptr};
    kiTest::ChildResult result = kiTest::RunInChild([&argv, &envp] {
      execve("/proc/self/exe", argv, envp.data());  // only async-signal-safe calls after fork
      _exit(127);
    });
    EXPECT_EQ(0, result.exitStatus);
    EXPECT_EQ(r.expected, result.out);
    if (!r.variables.empty() && r.variables[0].rfind("KIVO_LOG_FILE=", 0) == 0) {
      EXPECT_EQ("", result.err);
    } else {
      EXPECT_THAT(result.err, ::testing::EndsWith(" E 300 - probe\n"));
    }
  }
  EXPECT_THAT(ReadLines(file), ElementsAre("E 300 - probe"));
}

}  // namespace
