// kiFatalErrorTest.cpp - the fatal report's exact output, its log lines, the
// exit status, and the callback kept in the environment; each case runs in a
// child process because the report ends the process.
#include <cstdio>
#include <cstdlib>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ki/proc/kiFatalError.h"
#include "ki/proc/kiFatalError_p.h"
#include "ki/proc/kiMem.h"
#include "ki/proc/kiPlatform.h"
#include "support/ChildProcess.h"
#include "support/LogCapture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

// In the child: every record goes to standard error as one
// "level|category|source|line|text" line, so the parent can read the log.
int EchoRecord(void*, const kiLog_Entry* e) {
  std::fprintf(stderr, "%u|%u|%s|%u|%s\n", e->level, e->category,
               e->source != nullptr ? e->source : "", e->line, e->text);
  std::fflush(stderr);
  return 1;
}

void EchoLog() {
  kiLog_SetCaptureHook(EchoRecord, nullptr, nullptr);
  kiLog_SetLevel(2);
}

std::string Flat(const std::string& s) {
  std::string out;
  for (char c : s) out += c == '\n' ? std::string("\\n") : std::string(1, c);
  return out;
}

void PrintingCallback(const char* tag) {
  std::printf("callback(%s)\n", tag != nullptr ? tag : "null");
  std::fflush(stdout);
}

struct Case {
  const char* what;
  const char* tag;
  std::uintptr_t detail;
  std::uintptr_t logDetail;
  const char* out;
  const char* log;  // the two kiLog_Error records, joined by '#'
};

// The console and the log each show their own detail parameter.
TEST(FatalErrorTest, ReportsInOrderAndEndsWithStatus255) {
  static const char kReason[] = "index in range";
  static const char kLogReason[] = "for the log";
  const Case cases[] = {
      {"memory tag", "memory:malloc", 1234, 0,
       "kiFatalError\nkiFatalError: memory:malloc (size=1234)\n",
       "Fatal Error 'memory:malloc'# (size=0)\n"},
      {"both details", "memory:realloc", 77, 88,
       "kiFatalError\nkiFatalError: memory:realloc (size=77)\n",
       "Fatal Error 'memory:realloc'# (size=88)\n"},
      {"os tag", "os:mutex", 5, 6, "kiFatalError\nkiFatalError: os:mutex\n",
       "Fatal Error 'os:mutex'#\n"},
      {"assert", "assert", reinterpret_cast<std::uintptr_t>(kReason),
       reinterpret_cast<std::uintptr_t>(kLogReason),
       "kiFatalError\nkiFatalError: assert (reason='index in range')\n",
       "Fatal Error 'assert'# (reason='for the log')\n"},
      {"null tag", nullptr, 1, 1, "kiFatalError\nkiFatalError: unknown reason\n",
       "Fatal Error '(null)'#\n"},
      {"tags compare exactly", "Memory:malloc", 9, 9, "kiFatalError\nkiFatalError: Memory:malloc\n",
       "Fatal Error 'Memory:malloc'#\n"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const kiTest::ChildResult r = kiTest::RunInChild([&] {
      EchoLog();
      kiPlatform_SetEnv(kiFatalError_VariableName(), nullptr);
      kiFatalError(c.tag, c.detail, c.logDetail);
    });
    EXPECT_FALSE(r.signaled);
    EXPECT_EQ(255, r.exitStatus);
    EXPECT_EQ(c.out, r.out);
    const std::string log = c.log;
    const std::string first = log.substr(0, log.find('#'));
    const std::string second = log.substr(log.find('#') + 1);
    EXPECT_EQ("1|0|kiLog/Log|449|" + first + "\n1|0|kiLog/Log|449|" + second + "\n", r.err)
        << Flat(r.err);
  }
}

TEST(FatalErrorTest, RegisteredCallbackRunsAfterTheReport) {
  const kiTest::ChildResult r = kiTest::RunInChild([] {
    kiFatalError_SetCallback(PrintingCallback);
    kiFatalError("os:semaphore");
  });
  EXPECT_EQ(255, r.exitStatus);
  EXPECT_EQ("kiFatalError\nkiFatalError: os:semaphore\ncallback(os:semaphore)\n", r.out);
}

// The environment is the only storage: a callback registered before a child
// starts is found by the child's reporter, and the text reads back as hex.
TEST(FatalErrorTest, CallbackTravelsThroughTheEnvironment) {
  const kiTest::ChildResult r = kiTest::RunInChild([] {
    kiFatalError_SetCallback(PrintingCallback);
    char* text = kiPlatform_GetEnv(kiFatalError_VariableName());
    std::printf("[%s]\n", text != nullptr ? text : "unset");
    kiMem_Free(text);
    const kiTest::ChildResult inner = kiTest::RunInChild([] { kiFatalError("memory:strdup", 3); });
    std::printf("%s", inner.out.c_str());
    std::fflush(stdout);
  });
  EXPECT_EQ(0, r.exitStatus);
  EXPECT_THAT(r.out, StartsWith("[0x"));
  EXPECT_THAT(r.out, HasSubstr("kiFatalError: memory:strdup (size=3)\ncallback(memory:strdup)\n"));
}

TEST(FatalErrorTest, MalformedOrClearedCallbackIsIgnored) {
  const char* const values[] = {"0xZ", "", "junk", "0x", "0"};
  for (const char* value : values) {
    SCOPED_TRACE(value);
    const kiTest::ChildResult r = kiTest::RunInChild([&] {
      kiPlatform_SetEnv(kiFatalError_VariableName(), value);
      kiFatalError("os:condition");
    });
    EXPECT_EQ(255, r.exitStatus);
    EXPECT_FALSE(r.signaled);
    EXPECT_EQ("kiFatalError\nkiFatalError: os:condition\n", r.out);
  }
  const kiTest::ChildResult cleared = kiTest::RunInChild([] {
    kiFatalError_SetCallback(PrintingCallback);
    kiFatalError_SetCallback(nullptr);
    kiFatalError("os:mutex");
  });
  EXPECT_EQ("kiFatalError\nkiFatalError: os:mutex\n", cleared.out);
}

TEST(FatalErrorTest, FailureToStoreTheCallbackIsLogged) {
  kiTest::LogCapture log;
  kiFatalError_SetVariableNameForTesting("refused=name");
  kiFatalError_SetCallback(PrintingCallback);
  kiFatalError_SetVariableNameForTesting(nullptr);
  ASSERT_EQ(1u, log.Count());
  const kiTest::LogRecord r = log.Records()[0];
  EXPECT_EQ(1u, r.level);
  EXPECT_EQ(0u, r.category);
  EXPECT_EQ("kiLog/Log", r.source);
  EXPECT_EQ(449u, r.line);
  EXPECT_EQ(
      "kiFatalError: Cannot store callback address (fatal error callback will not be called)\n",
      r.text);
}

}  // namespace
