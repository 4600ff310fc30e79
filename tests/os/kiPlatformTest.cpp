// kiPlatformTest.cpp - launching programs (arguments, failures and their
// messages, the start time-out, reaping, what the program inherits) and the
// host name.
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ki/proc/kiCommandLine.h"
#include "ki/proc/kiFatalError_p.h"
#include "ki/proc/kiMem.h"
#include "ki/proc/kiPlatform.h"
#include "ki/proc/kiPlatform_p.h"
#include "ki/proc/kiTime_p.h"
#include "support/CommandLineText.h"
#include "support/LogCapture.h"
#include "support/TempDir.h"

#include "ThreadTestSupport.h"

namespace {

using ::testing::ElementsAre;
using Lines = std::vector<std::string>;

// The lines of a file the launched program writes under a temporary name and
// renames when done; empty when it does not appear within the bound.
Lines WaitForLines(const std::string& path) {
  Lines lines;
  if (!kiTest::WaitUntil([&] { return access(path.c_str(), F_OK) == 0; })) return lines;
  std::ifstream in(path);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// Arguments for sh that run script with its output going to out: written to
// "$0.tmp" and renamed when done. rest become "$1"...
std::string ShArgs(const std::string& script, const std::string& out, const Lines& rest = {}) {
  Lines args = {"-c", script + " > \"$0.tmp\" && mv \"$0.tmp\" \"$0\"", out};
  args.insert(args.end(), rest.begin(), rest.end());
  return kiTest::JoinArguments(args);
}

class PlatformTest : public ::testing::Test {
 protected:
  kiTest::TempDir dir_;
};

// sh is found in PATH, and every argument reaches it as it was.
TEST_F(PlatformTest, ArgumentsReachTheProgramExactly) {
  const Lines args = {"two words",          "say \"hi\"", "back\\slash", "trail\\",
                      "C:\\tools\\app.exe", "",           "\\\"",        "caf\xC3\xA9"};
  ASSERT_EQ(
      0, kiPlatform_Launch("sh", ShArgs("printf '%s\\n' \"$@\"", dir_.Path("out"), args).c_str()));
  EXPECT_EQ(args, WaitForLines(dir_.Path("out")));
}

TEST_F(PlatformTest, FailuresAreLoggedWithTheCommandText) {
  kiTest::LogCapture log;
  EXPECT_EQ(-1, kiPlatform_Launch("/nonexistent/ki-tool", "-v \"a b\""));
  EXPECT_EQ(-1, kiPlatform_Launch("/nonexistent/ki-tool", ""));
  EXPECT_EQ(-1, kiPlatform_Launch("/nonexistent/ki-tool", nullptr));
  EXPECT_EQ(-1, kiPlatform_Launch("ki-tool-not-in-path", "x"));
  EXPECT_EQ(-1, kiPlatform_Launch(nullptr, "x"));
  EXPECT_THAT(log.Texts(),
              ElementsAre("Unable to launch '\"/nonexistent/ki-tool\" -v \"a b\"' (Error = 2)\n",
                          "Unable to launch '/nonexistent/ki-tool' (Error = 2)\n",
                          "Unable to launch '/nonexistent/ki-tool' (Error = 2)\n",
                          "Unable to launch '\"ki-tool-not-in-path\" x' (Error = 2)\n",
                          "Unable to launch '(null)' (Error = 22)\n"));
  for (const kiTest::LogRecord& r : log.Records()) {
    EXPECT_EQ(1u, r.level);
    EXPECT_EQ(7u, r.category);
    EXPECT_EQ("posix/kiPlatform", r.source);
  }
}

std::atomic<std::uint32_t> g_ticks{0};
std::uint32_t SlowTicks() { return g_ticks.fetch_add(6000); }

// A start that takes longer than 5 s answers -1, but the program goes on.
TEST_F(PlatformTest, SlowStartIsATimeOutAndTheProgramRuns) {
  kiTest::LogCapture log;
  const std::string out = dir_.Path("late");
  const std::string arguments = ShArgs("echo ran", out);
  kiTime_SetTickSourceForTesting(SlowTicks);
  const int result = kiPlatform_Launch("/bin/sh", arguments.c_str());
  kiTime_SetTickSourceForTesting(nullptr);
  EXPECT_EQ(-1, result);
  EXPECT_THAT(log.Texts(), ElementsAre("The application '\"/bin/sh\" " + arguments +
                                       "' has not started before the 5 seconds timeout (Error = "
                                       "1, 110)\n"));
  EXPECT_EQ(Lines{"ran"}, WaitForLines(out));
}

// The program reports its pid and ends; the library, not the test, reaps it.
TEST_F(PlatformTest, EndedProgramIsReaped) {
  const std::string out = dir_.Path("pid");
  ASSERT_EQ(0, kiPlatform_Launch("/bin/sh", ShArgs("echo $$", out).c_str()));
  const Lines lines = WaitForLines(out);
  ASSERT_EQ(1u, lines.size());
  const pid_t pid = static_cast<pid_t>(std::stol(lines[0]));
  EXPECT_TRUE(kiTest::WaitUntil([pid] {
    siginfo_t info = {};
    return waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOHANG | WNOWAIT) == -1 &&
           errno == ECHILD;
  })) << "the ended program is still a zombie";
}

// An ignored SIGPIPE, a blocked SIGUSR1 and an inheritable descriptor of the
// caller do not reach the program. cp copies its own status, since sh would
// clear the signal mask itself; sh looks for the descriptor.
TEST_F(PlatformTest, ProgramStartsWithDefaultSignalsAndStandardDescriptors) {
  struct sigaction ignore = {};
  struct sigaction previous = {};
  ignore.sa_handler = SIG_IGN;
  ASSERT_EQ(0, sigaction(SIGPIPE, &ignore, &previous));
  sigset_t usr1;
  sigset_t mask;
  sigemptyset(&usr1);
  sigaddset(&usr1, SIGUSR1);
  ASSERT_EQ(0, pthread_sigmask(SIG_BLOCK, &usr1, &mask));
  const int null = open("/dev/null", O_RDONLY);
  const int fd = fcntl(null, F_DUPFD, 100);  // inheritable: no FD_CLOEXEC

  const std::string status = dir_.Path("status");
  const int copied =
      kiPlatform_Launch("cp", kiTest::JoinArguments({"/proc/self/status", status}).c_str());
  const std::string script = "test -e /proc/$$/fd/$1 && echo open || echo closed";
  const int listed =
      kiPlatform_Launch("/bin/sh", ShArgs(script, dir_.Path("fd"), {std::to_string(fd)}).c_str());
  close(fd);
  close(null);
  pthread_sigmask(SIG_SETMASK, &mask, nullptr);
  sigaction(SIGPIPE, &previous, nullptr);
  ASSERT_GE(fd, 100);
  ASSERT_EQ(0, copied);
  ASSERT_EQ(0, listed);

  std::string text;
  EXPECT_TRUE(kiTest::WaitUntil([&] {  // SigCgt follows both lines read here
    std::ifstream in(status);
    text.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return text.find("SigCgt:") != std::string::npos;
  }));
  std::uint64_t ignored = ~0ull;
  std::uint64_t blocked = ~0ull;
  std::istringstream(text.substr(text.find("SigIgn:") + 7)) >> std::hex >> ignored;
  std::istringstream(text.substr(text.find("SigBlk:") + 7)) >> std::hex >> blocked;
  EXPECT_EQ(0u, ignored & (1ull << (SIGPIPE - 1))) << "SigIgn: " << std::hex << ignored;
  EXPECT_EQ(0u, blocked & (1ull << (SIGUSR1 - 1))) << "SigBlk: " << std::hex << blocked;
#if defined(__GLIBC__) && (__GLIBC__ > 2 || (__GLIBC__ == 2 && __GLIBC_MINOR__ >= 34))
  EXPECT_EQ(Lines{"closed"}, WaitForLines(dir_.Path("fd")));
#endif
}

// The program gets the caller's environment, less the fatal-error callback's
// address, which means nothing in another process. The shell's own start-up
// environment is read, since a shell drops names it cannot hold.
TEST_F(PlatformTest, ProgramInheritsTheEnvironmentButNotTheFatalCallback) {
  const std::string callback = kiFatalError_VariableName();
  ASSERT_EQ(0, kiPlatform_SetEnv(callback.c_str(), "0x1234"));
  ASSERT_EQ(0, kiPlatform_SetEnv("KI_TEST_INHERITED", "yes"));
  const int result = kiPlatform_Launch(
      "/bin/sh", ShArgs("tr '\\0' '\\n' < /proc/$$/environ", dir_.Path("env")).c_str());
  kiPlatform_SetEnv(callback.c_str(), nullptr);
  kiPlatform_SetEnv("KI_TEST_INHERITED", nullptr);
  ASSERT_EQ(0, result);
  const Lines lines = WaitForLines(dir_.Path("env"));
  // Counted, so that a failure does not print the whole environment.
  EXPECT_EQ(1, std::count(lines.begin(), lines.end(), "KI_TEST_INHERITED=yes"));
  EXPECT_EQ(0, std::count(lines.begin(), lines.end(), callback + "=0x1234"));
}

TEST(HostNameTest, ShortNameRule) {
  struct Row {
    const char* name;
    const char* expected;
  };
  const Row rows[] = {{"myhost.example.lan", "myhost"},
                      {"myhost", "myhost"},
                      {"192.168.0.10", "192.168.0.10"},
                      {"10.1.2", "10"},
                      {"1.2.3.4.5", "1"},
                      {"1a.2.3.4", "1a"},
                      {"", ""}};
  for (const Row& r : rows) {
    SCOPED_TRACE(r.name);
    std::string name = r.name;
    kiPlatform_ShortenHostName(&name[0]);
    EXPECT_STREQ(r.expected, name.c_str());
  }
  kiPlatform_ShortenHostName(nullptr);
}

TEST(HostNameTest, OnlyHostnameIsKnown) {
  char host[64] = {};
  ASSERT_EQ(0, gethostname(host, sizeof host - 1));
  kiPlatform_ShortenHostName(host);
  char* name = kiPlatform_GetHostName("hostname");
  ASSERT_NE(nullptr, name);
  EXPECT_STREQ(host, name);
  kiMem_Free(name);
  EXPECT_EQ(nullptr, kiPlatform_GetHostName("HOSTNAME"));
  EXPECT_EQ(nullptr, kiPlatform_GetHostName("domain"));
  EXPECT_EQ(nullptr, kiPlatform_GetHostName(nullptr));
}

}  // namespace
