// SingleInstanceCheckerTest.cpp - the single-instance mark within a process,
// across two processes, after the holder is killed, and its bad names.
#include <csignal>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ki/os/SingleInstanceChecker.h"
#include "ki/proc/kiOSThread.h"
#include "ki/proc/kiOSThread_p.h"
#include "support/LogCapture.h"

namespace {

using ::testing::ElementsAre;

// Names of their own, so parallel test runs do not meet.
std::string UniqueName(const char* what) {
  return std::string("kiTest-") + what + "-" + std::to_string(getpid());
}

TEST(SingleInstanceCheckerTest, SecondHolderOfANameSeesTheFirst) {
  const std::string name = UniqueName("same");
  auto* first = new kiSingleInstanceChecker(name.c_str(), nullptr);
  EXPECT_FALSE(first->IsAnotherRunning());
  EXPECT_FALSE(first->Error());
  {
    kiSingleInstanceChecker second(name.c_str(), nullptr);
    EXPECT_TRUE(second.IsAnotherRunning());
    EXPECT_FALSE(second.Error());
    kiSingleInstanceChecker suffixed(name.c_str(), "x");
    EXPECT_FALSE(suffixed.IsAnotherRunning()) << "the suffix makes another name";
  }
  delete first;
  kiSingleInstanceChecker third(name.c_str(), nullptr);
  EXPECT_FALSE(third.IsAnotherRunning()) << "the name is free once its holder is gone";
}

TEST(SingleInstanceCheckerTest, SuffixJoinsTheNameWithADash) {
  const std::string name = UniqueName("joined");
  kiSingleInstanceChecker byParts(name.c_str(), "7");
  kiSingleInstanceChecker whole((name + "-7").c_str(), nullptr);
  EXPECT_TRUE(whole.IsAnotherRunning());
}

// Names longer than the system keeps are shortened with a hash of the whole.
TEST(SingleInstanceCheckerTest, LongNamesStayDistinct) {
  const std::string head = UniqueName("long") + std::string(200, 'n');
  kiSingleInstanceChecker a((head + "a").c_str(), nullptr);
  kiSingleInstanceChecker b((head + "b").c_str(), nullptr);
  kiSingleInstanceChecker a2((head + "a").c_str(), nullptr);
  EXPECT_FALSE(a.IsAnotherRunning());
  EXPECT_FALSE(b.IsAnotherRunning());
  EXPECT_TRUE(a2.IsAnotherRunning());
  EXPECT_FALSE(a2.Error());
}

TEST(SingleInstanceCheckerTest, BadNamesAndFailuresReportBothFlags) {
  kiTest::LogCapture log;
  {
    kiSingleInstanceChecker none(nullptr, "x");
    kiSingleInstanceChecker empty("", nullptr);
    kiSingleInstanceChecker invalid("bad\xFF", nullptr);
    kiOS_FailForTesting(kiOSFault_CheckerCreate, 0);
    kiSingleInstanceChecker refused(UniqueName("refused").c_str(), nullptr);
    for (const kiSingleInstanceChecker* c : {&none, &empty, &invalid, &refused}) {
      EXPECT_TRUE(c->IsAnotherRunning());
      EXPECT_TRUE(c->Error());
    }
  }
  EXPECT_THAT(
      log.Texts(),
      ElementsAre(
          "kiOSSingleInstanceChecker: Cannot create checker: name '(null)' may be invalid\n",
          "kiOSSingleInstanceChecker: Cannot create checker: name '' may be invalid\n",
          "kiOSSingleInstanceChecker: Cannot create wide char name 'bad\xFF'\n",
          "kiOSSingleInstanceChecker: CreateMutex failed (error = 13)\n"));
  EXPECT_EQ(1, kiOSSingleInstanceChecker_IsAnotherRunning(nullptr));
  EXPECT_EQ(1, kiOSSingleInstanceChecker_Error(nullptr));
  kiOSSingleInstanceChecker_Delete(nullptr);
}

// A child process holds the name; the test sees it, kills the child with
// SIGKILL, and finds the name free again.
TEST(SingleInstanceCheckerTest, NameDiesWithItsProcessEvenWhenKilled) {
  const std::string name = UniqueName("process");
  int ready[2];
  ASSERT_EQ(0, pipe(ready));
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    close(ready[0]);
    kiSingleInstanceChecker holder(name.c_str(), nullptr);
    const char state = holder.IsAnotherRunning() || holder.Error() ? 'e' : 'r';
    if (write(ready[1], &state, 1) != 1) _exit(2);
    sleep(20);  // until killed; bounded should the test die first
    _exit(0);
  }
  close(ready[1]);
  char state = 0;
  ASSERT_EQ(1, read(ready[0], &state, 1));
  close(ready[0]);
  EXPECT_EQ('r', state) << "the child could not take the name";
  {
    kiSingleInstanceChecker second(name.c_str(), nullptr);
    EXPECT_TRUE(second.IsAnotherRunning());
    EXPECT_FALSE(second.Error());
  }
  kill(child, SIGKILL);
  int status = 0;
  ASSERT_EQ(child, waitpid(child, &status, 0));
  EXPECT_TRUE(WIFSIGNALED(status));
  kiSingleInstanceChecker after(name.c_str(), nullptr);
  EXPECT_FALSE(after.IsAnotherRunning());
  EXPECT_FALSE(after.Error());
}

}  // namespace
