// LogMacroTest.cpp - KI_LOG: nothing is evaluated below the threshold, and a
// record carries level, category, source tag, line and text.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ki/proc/kiLog.h"
#include "support/LogCapture.h"

KI_LOG_SOURCE("tests/LogMacro")

namespace {

int g_evaluated = 0;

const char* Counted(const char* text) {
  ++g_evaluated;
  return text;
}

TEST(LogMacroTest, ArgumentsAreNotEvaluatedWhenTheRecordIsUnwanted) {
  kiTest::LogCapture log(1);  // threshold 1: not even errors are wanted
  g_evaluated = 0;
  KI_LOG(kiLogLevel_Error, kiLogCat_File, "x %s\n", Counted("a"));
  EXPECT_EQ(0, g_evaluated);

  kiLog_SetLevel(5);  // traces pass the threshold but their category is off
  kiLog_EnableCategory(kiLogCat_SocketTrace, 0);
  KI_LOG(kiLogLevel_Trace, kiLogCat_SocketTrace, "x %s\n", Counted("b"));
  kiLog_EnableCategory(kiLogCat_SocketTrace, 1);
  EXPECT_EQ(0, g_evaluated);
  EXPECT_EQ(0u, log.Count());
}

TEST(LogMacroTest, RecordCarriesItsPosition) {
  kiTest::LogCapture log;
  const unsigned line = __LINE__ + 1;
  KI_LOG(kiLogLevel_Error, kiLogCat_Dir, "kiDir: Cannot create '%s' (%d)\n", "d/e", -3);
  ASSERT_EQ(1u, log.Count());
  const kiTest::LogRecord r = log.Records()[0];
  EXPECT_EQ(1u, r.level);
  EXPECT_EQ(43u, r.category);
  EXPECT_EQ("tests/LogMacro", r.source);
  EXPECT_EQ(line, r.line);
  EXPECT_EQ("kiDir: Cannot create 'd/e' (-3)\n", r.text);
}

// In an application built with exceptions, a message argument that throws
// must not leave the record open: four such records would fill the thread's
// stack of open records and silence its logging.
TEST(LogMacroTest, ArgumentThatThrowsClosesItsRecord) {
  kiTest::LogCapture log;
  const auto thrower = []() -> const char* { throw 1; };
  for (int i = 0; i < 5; ++i) {
    try {
      KI_LOG(kiLogLevel_Error, kiLogCat_File, "lost %s\n", thrower());
    } catch (int) {
    }
  }
  KI_LOG(kiLogLevel_Error, kiLogCat_File, "still heard\n");
  ASSERT_EQ(6u, log.Count());
  EXPECT_EQ("", log.Texts()[0]) << "a record whose message threw has no text";
  EXPECT_EQ("still heard\n", log.Texts()[5]);
}

}  // namespace
