// kiDebugTest.cpp - debugger output: the line written, cut at 254 bytes, and
// no trap without a debugger.
#include <string>

#include <gtest/gtest.h>

#include "ki/proc/kiDebug.h"
#include "support/ChildProcess.h"

namespace {

TEST(DebugOutputTest, WritesOneLineAndDoesNotTrapWithoutDebugger) {
  const std::string longText(300, 'x');
  const kiTest::ChildResult r = kiTest::RunInChild([&] {
    kiDebug_Output("hello");
    kiDebug_Output(nullptr);
    kiDebug_Output(longText.c_str());
  });
  EXPECT_FALSE(r.signaled);
  EXPECT_EQ(0, r.exitStatus);
  EXPECT_EQ("hello\n\n" + std::string(254, 'x') + "\n", r.err);
}

}  // namespace
