// PathTest.cpp - the path builder: both dialects of kiPath_Build, the POSIX
// entry points, simplification, special folders, the application-data folder
// and the drive class.
#include <string>

#include <gtest/gtest.h>

#include "ki/proc/kiLog.h"
#include "ki/proc/kiMem.h"
#include "ki/proc/kiPath.h"
#include "ki/proc/kiPath_p.h"

#include "PathTestSupport.h"

namespace {

using kiTest::Taken;

char* WindowsFolder(int index) {
  static const char* const kFolders[] = {"C:\\Users\\u\\AppData\\Roaming", "C:\\Users\\u\\Music",
                                         nullptr};
  return index < 2 ? kiMem_Strdup(kFolders[index]) : nullptr;
}

char* WindowsAnchor() { return kiMem_Strdup("C:/app/"); }

TEST(PathBuildTest, WindowsDialect) {
  struct Row {
    const char* path;
    bool strip;
    int flags;
    const char* expected;  // null: fails
  };
  const Row rows[] = {
      // Tokens, abbreviated or not; a folder the source cannot give fails.
      {"<MyMusic>/a.mp3", false, 0, "C:/Users/u/Music/a.mp3"},
      {"<My>/x", false, 0, "C:/Users/u/AppData/Roaming/x"},
      {"<Nope>/x", false, 0, nullptr},
      {"a<b", false, 0, nullptr},
      {"<MyPictures>", false, 0, nullptr},
      // Anchoring: a leading "." goes, a single leading separator is relative.
      {"data/x.ini", false, 0, "C:/app/data/x.ini"},
      {"./data/x.ini", false, 0, "C:/app/data/x.ini"},
      {".\\data\\x.ini", false, 0, "C:/app/data/x.ini"},
      {".", false, 0, "C:/app/"},
      {"/x", false, 0, "C:/app//x"},
      // Trailing separators, never the drive root's.
      {"C:\\a\\b\\", true, 0, "C:/a/b"},
      {"C:\\", true, 0, "C:/"},
      // Separators and prefixes.
      {"C:/a/b", false, kiPath_Backslashes, "C:\\a\\b"},
      {"C:/a", false, kiPath_LongPrefix | kiPath_Backslashes, "\\\\?\\C:\\a"},
      {"\\\\srv\\share\\f", false, 0, "\\\\srv/share/f"},
      {"\\\\srv/share/f", false, kiPath_LongPrefix | kiPath_Backslashes,
       "\\\\?\\UNC\\srv\\share\\f"},
      {"\\\\?\\C:\\a/b", false, kiPath_LongPrefix, "\\\\?\\C:/a/b"},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.path);
    const std::string built = Taken(kiPath_Build(
        r.path, r.strip, r.flags, nullptr, kiPathDialect_Windows, WindowsFolder, WindowsAnchor));
    EXPECT_EQ(r.expected != nullptr ? r.expected : "(null)", built);
  }
  EXPECT_EQ("D:/b/x", Taken(kiPath_Build("x", false, 0, "D:/b/", kiPathDialect_Windows,
                                         WindowsFolder, WindowsAnchor)));
}

TEST(PathBuildTest, MissingAnchorIsLogged) {
  kiTest::LogCapture log;
  EXPECT_EQ(nullptr, kiPath_Build("rel", false, 0, nullptr, kiPathDialect_Posix, nullptr, nullptr));
  EXPECT_EQ(nullptr, kiPath_Build(nullptr, false, 0, "/a/", kiPathDialect_Posix, nullptr, nullptr));
  kiTest::ExpectOnlyLog(
      log, kiLogCat_Path, "os/kiPath",
      "kiPath: Cannot get an anchor path (or none specified) to build an absolute "
      "path for 'rel'\n");
}

TEST(PathBuildTest, Simplify) {
  struct Row {
    const char* text;
    const char* expected;  // null: fails
  };
  const Row rows[] = {
      {"/a/..", "/"},
      {"", "/"},
      {"/../a/../../x", nullptr},       // above the root only once
      {"\\\\srv/s/../../x/", nullptr},  // the volume stays
      {"../x", nullptr},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.text);
    EXPECT_EQ(r.expected != nullptr ? r.expected : "(null)", Taken(kiPath_Simplify(r.text)));
  }
  EXPECT_EQ(nullptr, kiPath_Simplify(nullptr));
}

class PathTest : public kiTest::PathFixture {};

TEST_F(PathTest, PosixPathsAnchorAtTheApplicationDirectory) {
  const std::string exe = kiTest::RealPath("/proc/self/exe");
  const std::string dir = exe.substr(0, exe.rfind('/') + 1);
  EXPECT_EQ(exe, Taken(kiPath_GetApplicationFileName()));
  EXPECT_EQ(dir, Taken(kiPath_GetApplicationDir()));
  EXPECT_EQ("kiPathTest", Taken(kiPath_GetApplicationName(true)));

  EXPECT_EQ(dir + "data/x.ini", Taken(kiPath_MakeAbsolute("./data/x.ini", false, 0, nullptr)));
  EXPECT_EQ(dir + "data/x.ini", Taken(kiPath_MakeAbsolute(".\\data\\x.ini", false, 0, nullptr)));
  EXPECT_EQ("/x/y", Taken(kiPath_MakeAbsolute("/x/y//", true, kiPath_LongPrefix, "/anchor/")));
  EXPECT_EQ("/", Taken(kiPath_MakeAbsolute("///", true, 0, nullptr)));
  EXPECT_TRUE(kiPath_IsAbsolute("/x") && kiPath_IsAbsolute(""));
  EXPECT_FALSE(kiPath_IsAbsolute("C:/x") || kiPath_IsAbsolute(nullptr));

  kiPath_SetFolderRootForTesting("/t");
  EXPECT_EQ("/t/MyMusic/a.mp3", Taken(kiPath_MakeAbsolute("<MyMusic>/a.mp3", false, 0, nullptr)));
  EXPECT_EQ("/t/AllUsersVideos", Taken(kiPath_MakeAbsolute("<AllUsersV>", false, 0, nullptr)));
}

// The folders come from the XDG variables and user-dirs.dirs, with the usual
// defaults, and never from a relative value.
TEST_F(PathTest, SpecialFoldersFollowTheUserDirectories) {
  const std::string home = dir_.Path("home");
  kiTest::WriteFile(dir_.Path("config/user-dirs.dirs"),
                    "# written by hand\n"
                    "XDG_MUSIC_DIR=\"$HOME/My Music\"\n"
                    "  XDG_VIDEOS_DIR=\"/srv/vid\\\"eos/\"\n"
                    "XDG_PICTURES_DIR=\"relative/pictures\"\n");
  env_.Set("HOME", home.c_str());
  env_.Set("XDG_CONFIG_HOME", dir_.Path("config").c_str());
  env_.Set("XDG_DATA_HOME", nullptr);
  struct Row {
    const char* token;
    std::string expected;
  };
  const Row rows[] = {
      {"<MyMusic>", home + "/My Music"},       {"<MyVideos>", "/srv/vid\"eos"},
      {"<MyPictures>", home + "/Pictures"},    {"<MyAppData>", home + "/.local/share"},
      {"<AllUsersMusic>", "/srv/media/music"}, {"<AllUsersPictures>", "/srv/media/pictures"}};
  for (const Row& r : rows) {
    SCOPED_TRACE(r.token);
    EXPECT_EQ(r.expected, Taken(kiPath_MakeAbsolute(r.token, false, 0, nullptr)));
  }
  env_.Set("XDG_DATA_HOME", "/data/home/");
  EXPECT_EQ("/data/home/x", Taken(kiPath_MakeAbsolute("<MyAppData>/x", false, 0, nullptr)));
}

TEST_F(PathTest, AppDataFolderIsCreatedOrLogged) {
  kiPath_SetFolderRootForTesting(dir_.Path("a/b").c_str());
  EXPECT_EQ(dir_.Path("a/b/MyAppData"), Taken(kiPath_GetAppDataDir()));
  EXPECT_TRUE(kiTest::IsDir(dir_.Path("a/b/MyAppData")));

  kiTest::WriteFile(dir_.Path("file"), "");
  kiPath_SetFolderRootForTesting(dir_.Path("file").c_str());
  kiTest::LogCapture log;
  EXPECT_EQ(nullptr, kiPath_GetAppDataDir());
  kiTest::ExpectOnlyLog(log, kiLogCat_Path, "posix/kiPathFolders",
                        "kiPath: Cannot get application specific data directory name (error = "
                        "'20')\n");
}

// The mount that holds a path (its nearest existing part) decides the class.
TEST_F(PathTest, DriveClassComesFromTheMountTable) {
  const std::string base = kiTest::RealPath(dir_.Path().c_str());
  for (const char* sub : {"net", "ram", "proc", "cd", "with space"}) {
    mkdir((base + "/" + sub).c_str(), 0700);
  }
  using kiTest::MountLine;
  kiTest::WriteFile(
      dir_.Path("mountinfo"),
      MountLine("/", "ext4", "/dev/ki-missing") + MountLine(base + "/net", "nfs4", "srv:/x") +
          MountLine(base + "/ram", "tmpfs", "tmpfs") + MountLine(base + "/proc", "proc", "proc") +
          MountLine(base + "/cd", "iso9660", "/dev/sr9") +
          MountLine(base + "/with\\040space", "cifs", "//s/x") + "garbage line\n");
  kiPath_SetMountTableForTesting(dir_.Path("mountinfo").c_str());
  struct Row {
    std::string path;
    int expected;
  };
  const Row rows[] = {{base, kiPath_DriveFixed},
                      {base + "/net/missing/deeper", kiPath_DriveRemote},
                      {base + "/network", kiPath_DriveFixed},
                      {base + "/ram/", kiPath_DriveRemovable},
                      {base + "/cd", kiPath_DriveRemovable},
                      {base + "/proc/x", kiPath_DriveUnknown},
                      {base + "/with space/f", kiPath_DriveRemote},
                      {"relative", kiPath_DriveUnknown}};
  for (const Row& r : rows) {
    SCOPED_TRACE(r.path);
    EXPECT_EQ(r.expected, kiPath_GetDriveClass(r.path.c_str()));
  }
  EXPECT_EQ(kiPath_DriveUnknown, kiPath_GetDriveClass(nullptr));
  kiPath_SetMountTableForTesting(dir_.Path("none").c_str());
  EXPECT_EQ(kiPath_DriveUnknown, kiPath_GetDriveClass("/"));
}

}  // namespace
