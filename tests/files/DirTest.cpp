// DirTest.cpp - kiDir and the kiDir_* layer: listings and their flags,
// creation and removal with their messages, recursive removal, times and the
// mounted roots.
#include <algorithm>
#include <string>
#include <unistd.h>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ki/files/Dir.h"
#include "ki/proc/kiDir.h"
#include "ki/proc/kiLog.h"
#include "ki/proc/kiPath_p.h"
#include "ki/proc/kiTime.h"

#include "PathTestSupport.h"

namespace {

using ::testing::ElementsAre;
using Names = std::vector<std::string>;

bool Exists(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

class DirTest : public kiTest::PathFixture {
 protected:
  // The entries a listing reports, as full paths relative to the directory,
  // sorted (the system's order is its own).
  Names List(kiDir& dir, const char* filter, int flags) {
    Names names;
    kiPathName entry;
    for (bool more = dir.GetFirst(entry, filter, flags); more; more = dir.GetNext(entry)) {
      names.push_back(entry.c_str() + dir.GetPathName().GetPath().length());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  std::string Base() const { return dir_.Path() + "/"; }
};

TEST_F(DirTest, ListingFlagsAndFilters) {
  kiTest::WriteFile(dir_.Path("a.txt"), "");
  kiTest::WriteFile(dir_.Path(".h.txt"), "");
  kiTest::WriteFile(dir_.Path("sub/.hd/x"), "");
  kiDir dir(dir_.Path().c_str());
  ASSERT_TRUE(dir.IsOpened());
  struct Row {
    const char* filter;
    int flags;
    Names expected;
  };
  const Row rows[] = {
      {"*", kiDirFlag_Files, {"a.txt"}},
      {"", kiDirFlag_Dirs, {"sub/"}},
      {"*", kiDirFlag_Files | kiDirFlag_Hidden, {".h.txt", "a.txt"}},
      {"*", kiDirFlag_Dirs | kiDirFlag_Dots, {"../", "./", "sub/"}},
      {"*.txt", kiDirFlag_Files | kiDirFlag_Dirs | kiDirFlag_Hidden, {".h.txt", "a.txt"}},
      {"[ab]*", kiDirFlag_Files, {"a.txt"}},
      {"*", 0, {}},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(std::string(r.filter) + " " + std::to_string(r.flags));
    EXPECT_EQ(r.expected, List(dir, r.filter, r.flags));
    EXPECT_EQ(static_cast<int>(r.expected.size()), dir.GetCount(r.filter, r.flags));
    EXPECT_FALSE(dir.Error());
  }

  // A link to a directory is listed as a file.
  symlink("sub", dir_.Path("link").c_str());
  EXPECT_EQ(Names({"a.txt", "link"}), List(dir, "*", kiDirFlag_Files));
  EXPECT_EQ(Names({"sub/"}), List(dir, "*", kiDirFlag_Dirs));

  // Hidden entries count for neither test.
  kiDir sub((dir_.Path("sub")).c_str());
  EXPECT_FALSE(sub.HasFiles());
  EXPECT_FALSE(sub.HasDirs());
  EXPECT_TRUE(dir.HasFiles("*.txt"));
  EXPECT_FALSE(dir.HasFiles("*.mp3"));
  EXPECT_TRUE(dir.HasDirs());
}

TEST_F(DirTest, EntriesAreUnderTheDirectoryAndRewind) {
  kiTest::WriteFile(dir_.Path("one.tar.gz"), "");
  kiDir dir(dir_.Path().c_str());
  kiPathName entry;
  ASSERT_TRUE(dir.GetFirst(entry, "*", kiDirFlag_Files));
  EXPECT_EQ("one.tar", entry.GetFileName());
  EXPECT_EQ("gz", entry.GetExtension());
  EXPECT_FALSE(dir.GetNext(entry));
  EXPECT_FALSE(entry.IsValid());
  EXPECT_TRUE(dir.Rewind());
  EXPECT_TRUE(dir.GetNext(entry));
  EXPECT_EQ(Base() + "one.tar.gz", entry.c_str());

  dir.Close();  // nothing to list any more
  EXPECT_FALSE(dir.Rewind() || dir.GetNext(entry) || dir.GetFirst(entry, "*", kiDirFlag_Files));
  EXPECT_TRUE(dir.Error());
  EXPECT_FALSE(dir.Open(dir_.Path("missing").c_str()));
}

TEST_F(DirTest, ListingFailuresAreLogged) {
  kiTest::WriteFile(dir_.Path("gone/x"), "");
  kiDir dir(dir_.Path("gone").c_str());
  ASSERT_TRUE(dir.IsOpened());
  ASSERT_EQ(0, unlink(dir_.Path("gone/x").c_str()));
  ASSERT_EQ(0, rmdir(dir_.Path("gone").c_str()));
  kiPathName entry;
  {
    kiTest::LogCapture log;
    EXPECT_FALSE(dir.GetFirst(entry, "*", kiDirFlag_Files));
    EXPECT_TRUE(dir.Error());
    kiTest::ExpectOnlyLog(
        log, kiLogCat_Dir, "posix/kiDir",
        "kiFile: Cannot enumerate files in directory '" + dir_.Path("gone") + "/' (error = 2)\n");
  }
  {
    kiTest::LogCapture log;
    kiOSDirList* list = nullptr;
    EXPECT_EQ(-1, kiDir_OpenList(dir_.Path().c_str(), "sub/*", &list));
    EXPECT_EQ(nullptr, list);
    kiTest::ExpectOnlyLog(log, kiLogCat_Dir, "posix/kiDir",
                          "kiDir: Cannot enumerate files in directory '" + dir_.Path() +
                              "' using specified 'sub/*'\n");
  }
}

// Each failure answers false and logs the system's error; invalid names
// (null, a bad token) are reported as such.
TEST_F(DirTest, CreateAndRemoveReportFailures) {
  kiTest::WriteFile(dir_.Path("file"), "");
  kiTest::WriteFile(dir_.Path("full/x"), "");
  const std::string d = dir_.Path("d");
  const std::string file = dir_.Path("file");
  struct Row {
    bool (*call)(const char*);
    std::string path;     // "(null)": null
    std::string message;  // empty: succeeds silently
  };
  const Row rows[] = {
      {kiDir::Create, d, ""},
      {kiDir::Create, d, "kiDir: Cannot create directory '" + d + "' (error = 17)\n"},
      {kiDir::Create, file + "/d",
       "kiDir: Cannot create directory '" + file + "/d' (error = 20)\n"},
      {kiDir::Create, d + "/no/d", "kiDir: Cannot create directory '" + d + "/no/d' (error = 2)\n"},
      {kiDir::Create, "(null)", "kiDir: Cannot create directory: '(null)' (invalid name)\n"},
      {kiDir::Remove, d, ""},
      {kiDir::Remove, d, "kiDir: Cannot remove directory '" + d + "' (errno = 2)\n"},
      {kiDir::Remove, dir_.Path("full"),
       "kiDir: Cannot remove directory '" + dir_.Path("full") + "' (errno = 39)\n"},
      {kiDir::Remove, "<Nope>/x", "kiDir: Cannot remove directory: '<Nope>/x' (invalid name)\n"},
      {kiDir::Exists, "<Nope>", "kiDir: Cannot check directory '<Nope>' exists (invalid name)\n"},
      {kiDir::CreateRecursively, d + "//b/c/", ""},
      {kiDir::CreateRecursively, d + "/b/c", ""},  // an existing tree
      {kiDir::CreateRecursively, file + "/g/h",
       "kiDir: Cannot create directory path part: '" + file +
           "' (path size = " + std::to_string(file.size()) + ")\n"},
      {kiDir::CreateRecursively, "(null)",
       "kiDir: Cannot create directory path: '(null)' (invalid path)\n"},
      {kiDir::CreateRecursively, "", "kiDir: Cannot analyze directory path: '' (invalid path)\n"},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.path + " " + r.message);
    kiTest::LogCapture log;
    EXPECT_EQ(r.message.empty(), r.call(r.path == "(null)" ? nullptr : r.path.c_str()));
    if (r.message.empty()) {
      EXPECT_EQ(0u, log.Count());
    } else {
      kiTest::ExpectOnlyLog(log, kiLogCat_Dir, "posix/kiDir", r.message);
    }
  }
  EXPECT_TRUE(kiTest::IsDir(d + "/b/c"));
  EXPECT_FALSE(kiDir::Exists(file.c_str()));
}

TEST_F(DirTest, RemoveRecursivelyRemovesTheTreeOnly) {
  kiTest::WriteFile(dir_.Path("outside/keep"), "");
  kiTest::WriteFile(dir_.Path("t/.hidden"), "");
  kiTest::WriteFile(dir_.Path("t/a/b/c.txt"), "");
  kiTest::WriteFile(dir_.Path("t/a/.hd/x"), "");
  symlink(dir_.Path("outside").c_str(), dir_.Path("t/a/link").c_str());
  EXPECT_FALSE(kiDir::RemoveRecursively(dir_.Path("t").c_str(), 0));
  EXPECT_TRUE(kiDir::RemoveRecursively(dir_.Path("t").c_str(), 2));
  EXPECT_FALSE(Exists(dir_.Path("t")));
  EXPECT_TRUE(Exists(dir_.Path("outside/keep")));  // the link went, not its target

  EXPECT_TRUE(kiDir::RemoveRecursively(dir_.Path("t").c_str(), 0));             // nothing there
  EXPECT_TRUE(kiDir::RemoveRecursively(dir_.Path("outside/keep").c_str(), 3));  // intended
  EXPECT_TRUE(Exists(dir_.Path("outside/keep")));
}

// A name that the path builder would read differently is never removed in
// its place: "..\\..\\victim" would name a file outside the tree.
TEST_F(DirTest, RemoveRecursivelyRefusesNamesThatAreNoPaths) {
  kiTest::WriteFile(dir_.Path("victim"), "");
  kiTest::WriteFile(dir_.Path("t/u/..\\..\\victim"), "");
  kiTest::LogCapture log;
  EXPECT_FALSE(kiDir::RemoveRecursively(dir_.Path("t").c_str(), 2));
  EXPECT_TRUE(Exists(dir_.Path("victim")));
  const std::vector<kiTest::LogRecord> records = log.Records();
  ASSERT_EQ(2u, records.size());  // once a pass
  EXPECT_EQ("RemoveRecursively: Cannot remove '" + dir_.Path("t/u/..\\..\\victim") +
                "' (the name is not a usable path)\n",
            records[0].text);
  EXPECT_EQ("files/Dir", records[0].source);
}

TEST_F(DirTest, TimesOfADirectory) {
  kitimeval now;
  kiTime_GetTimeOfDay(&now);
  kiDateTime modified;
  kiDateTime untouched;
  ASSERT_TRUE(kiDir::GetTimes(dir_.Path().c_str(), nullptr, &modified, nullptr));
  EXPECT_NEAR(now.tv_sec, modified.GetTicks(), 60);

  kiTest::LogCapture log;
  EXPECT_FALSE(kiDir::GetTimes(nullptr, &untouched, nullptr, nullptr));
  EXPECT_FALSE(untouched.IsValid());
  kiTest::ExpectOnlyLog(log, kiLogCat_Dir, "posix/kiDir",
                        "kiDir: Cannot get modification time for directory: '(null)' (invalid "
                        "name)\n");
}

// Pseudo file systems, what is mounted below them, files and repeats are left
// out; an unreadable table gives the root alone.
TEST_F(DirTest, RootsComeFromTheMountTable) {
  kiTest::WriteFile(dir_.Path("file"), "");
  using kiTest::MountLine;
  kiTest::WriteFile(dir_.Path("mountinfo"),
                    MountLine("/", "ext4", "/dev/sda1") + MountLine("/proc", "proc", "proc") +
                        MountLine("/proc/sys", "tmpfs", "tmpfs") + MountLine("/sys", "sysfs", "") +
                        MountLine(dir_.Path(), "xfs", "/dev/sda2") +
                        MountLine(dir_.Path(), "xfs", "/dev/sda2") +
                        MountLine(dir_.Path("file"), "xfs", "/dev/sda2"));
  kiPath_SetMountTableForTesting(dir_.Path("mountinfo").c_str());
  kiList<kiPathName>* roots = kiDir::GetRootDirList();
  Names paths;
  for (auto* item = roots->GetFirstItem(); item != nullptr; item = item->GetNextItem()) {
    EXPECT_TRUE(item->Get().IsDirPath());
    paths.push_back(item->Get().c_str());
  }
  delete roots;
  EXPECT_THAT(paths, ElementsAre("/", Base()));

  kiPath_SetMountTableForTesting(dir_.Path("none").c_str());
  roots = kiDir::GetRootDirList();
  ASSERT_EQ(1, roots->size());
  EXPECT_STREQ("/", roots->front().c_str());
  delete roots;
}

}  // namespace
