// ConfigCrashTest.cpp - kiConfigFile_Save killed (SIGKILL) at many points:
// the next kiConfigFile_Open always finds exactly the old or exactly the new
// table, never a mix and never an empty one.
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <sched.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "ki/proc/kiConfigFile.h"
#include "ki/proc/kiConfigFile_p.h"
#include "support/LogCapture.h"
#include "support/TempDir.h"

namespace {

constexpr int kEntries = 300;  // a file of about 7 KB

// Table "old" or "new": disjoint keys and values, so any mix shows.
void Fill(kiConfigFile* cf, const char* version) {
  kiConfigFile_ClearReadWrite(cf);
  for (int i = 0; i < kEntries; ++i) {
    const std::string n = std::to_string(i);
    kiConfigFile_Set(cf, ("s" + std::to_string(i % 7)).c_str(), (version + n).c_str(),
                     (std::string(version) + " value " + n).c_str());
  }
}

// "old", "new", or what went wrong.
std::string Outcome(const std::string& path) {
  kiConfigFile* cf = kiConfigFile_Open(nullptr, path.c_str());
  std::string version;
  unsigned keys = 0;
  for (unsigned s = 0; s < kiConfigFile_GetSectionCount(cf, 0); ++s) {
    keys += kiConfigFile_GetKeyCount(cf, kiConfigFile_GetSectionName(cf, s, 0), 0);
  }
  for (const char* v : {"old", "new"}) {
    int found = 0;
    kiConfigFile_Get(cf, "s0", (std::string(v) + "0").c_str(), nullptr, &found);
    if (found != 0) version = v;
  }
  bool exact = !version.empty() && keys == kEntries;
  for (int i = 0; exact && i < kEntries; ++i) {
    const std::string n = std::to_string(i);
    const char* value = kiConfigFile_Get(cf, ("s" + std::to_string(i % 7)).c_str(),
                                         (version + n).c_str(), "", nullptr);
    exact = version + " value " + n == value;
  }
  kiConfigFile_Close(cf);
  if (keys == 0) return "empty";
  return exact ? version : "mixed (" + std::to_string(keys) + " keys)";
}

// Puts the old table in place: saved once, then its bytes copied.
void WriteOld(const std::string& path) {
  static std::string bytes;
  if (bytes.empty()) {
    kiConfigFile* cf = kiConfigFile_Open(nullptr, path.c_str());
    Fill(cf, "old");
    ASSERT_EQ(1, kiConfigFile_Save(cf));
    kiConfigFile_Close(cf);
    std::ifstream in(path, std::ios::binary);
    bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    ASSERT_FALSE(bytes.empty());
  }
  std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

int g_stopAt = 0;
const char* g_blockedPath = nullptr;  // made a directory once the save removed it
void StopHere(int point) {
  if (g_blockedPath != nullptr && point == kiConfigFileSave_FileRemoved) {
    mkdir(g_blockedPath, 0700);
  }
  if (point == g_stopAt) raise(SIGKILL);
}

// Forks a child that opens the file, fills in the new table, writes one byte
// to ready and saves; it is killed at hook point stopAt (0: none) or by the
// parent after delay. The parent waits for it (bounded) and reports whether it
// died by SIGKILL. With afterFailedSave, the child first saves the old table
// and has that save fail at its last step (the file's name is taken by a
// directory, removed afterwards), so that only ".ok" holds a table.
bool RunChild(const std::string& path, int stopAt, std::chrono::microseconds delay,
              bool afterFailedSave = false) {
  int ready[2];
  if (pipe(ready) != 0) return false;
  const pid_t pid = fork();
  if (pid == 0) {
    close(ready[0]);
    kiConfigFile* cf = kiConfigFile_Open(nullptr, path.c_str());
    kiConfigFile_SetSaveHookForTesting(StopHere);
    if (afterFailedSave) {
      Fill(cf, "old");
      g_blockedPath = path.c_str();
      if (kiConfigFile_Save(cf) != 0 || rmdir(path.c_str()) != 0) _exit(3);
      g_blockedPath = nullptr;
    }
    Fill(cf, "new");
    g_stopAt = stopAt;
    const char byte = 1;
    if (write(ready[1], &byte, 1) != 1) _exit(2);
    _exit(kiConfigFile_Save(cf) == 1 ? 0 : 1);
  }
  close(ready[1]);
  char byte = 0;
  const bool started = read(ready[0], &byte, 1) == 1;
  close(ready[0]);
  if (started && delay.count() > 0) {
    // A busy wait: the kill must land within the save, far below a sleep's
    // granularity.
    const auto until = std::chrono::steady_clock::now() + delay;
    while (std::chrono::steady_clock::now() < until) {
    }
    kill(pid, SIGKILL);
  }
  int status = 0;
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (waitpid(pid, &status, WNOHANG) == 0) {
    if (std::chrono::steady_clock::now() > deadline) {
      kill(pid, SIGKILL);
      waitpid(pid, &status, 0);
      ADD_FAILURE() << "the saving child did not end";
      break;
    }
    sched_yield();
  }
  return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
}

// Started from the old file, and from a process whose earlier save of the old
// table failed at its last step, leaving only ".ok".
TEST(ConfigCrashTest, KilledAtEachStepLeavesOldOrNew) {
  kiTest::TempDir dir;
  kiTest::LogCapture log;
  const std::string path = dir.Path("user.ini");
  const struct {
    int point;
    const char* expected;
  } rows[] = {{kiConfigFileSave_Noted, "old"},       {kiConfigFileSave_TempWritten, "old"},
              {kiConfigFileSave_OkRemoved, "old"},   {kiConfigFileSave_TempRenamed, "new"},
              {kiConfigFileSave_FileRemoved, "new"}, {kiConfigFileSave_Committed, "new"}};
  for (bool afterFailedSave : {false, true}) {
    for (const auto& r : rows) {
      SCOPED_TRACE(std::to_string(r.point) + (afterFailedSave ? " after a failed save" : ""));
      if (afterFailedSave) {
        std::remove(path.c_str());
      } else {
        WriteOld(path);
      }
      EXPECT_TRUE(RunChild(path, r.point, std::chrono::microseconds(0), afterFailedSave));
      EXPECT_EQ(r.expected, Outcome(path));
    }
  }
  EXPECT_EQ(0u, log.Count());
}

TEST(ConfigCrashTest, KilledAtRandomMomentsLeavesOldOrNew) {
  kiTest::TempDir dir;
  kiTest::LogCapture log;
  const std::string path = dir.Path("user.ini");
  // How long one whole run takes here, so that the kills spread over it.
  WriteOld(path);
  const auto start = std::chrono::steady_clock::now();
  RunChild(path, 0, std::chrono::microseconds(0));
  const auto span = std::chrono::duration_cast<std::chrono::microseconds>(
      std::chrono::steady_clock::now() - start);
  const long spanUs = span.count() < 200 ? 200 : span.count();

  constexpr int kRuns = 240;
  int old = 0, fresh = 0, killed = 0;
  std::uint32_t x = 2463534242u;
  const auto testStart = std::chrono::steady_clock::now();
  int runs = 0;
  while (runs < kRuns) {
    ++runs;
    WriteOld(path);
    x ^= x << 13, x ^= x >> 17, x ^= x << 5;
    const std::chrono::microseconds delay(1 + static_cast<long>(x % (spanUs * 5 / 4)));
    killed += RunChild(path, 0, delay) ? 1 : 0;
    const std::string outcome = Outcome(path);
    if (outcome == "old") {
      ++old;
    } else if (outcome == "new") {
      ++fresh;
    } else {
      ADD_FAILURE() << "run " << runs << " after " << delay.count() << " us: " << outcome;
    }
    if (std::chrono::steady_clock::now() - testStart > std::chrono::seconds(25)) break;
  }
  std::printf("ConfigCrashTest: %d runs (one run about %ld us), %d killed: %d old, %d new\n", runs,
              spanUs, killed, old, fresh);
  EXPECT_GE(runs, 200);
  EXPECT_EQ(runs, old + fresh);
  EXPECT_EQ(0u, log.Count());
}

}  // namespace
