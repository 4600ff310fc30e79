// kiConfigFileTest.cpp - kiConfigFile: which table answers, setters without a
// read-write file, the recovery at opening, the commit and its failure
// messages.
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "ki/proc/kiConfigFile.h"
#include "ki/proc/kiDir.h"
#include "ki/proc/kiFile.h"
#include "ki/proc/kiLog.h"
#include "support/LogCapture.h"
#include "support/TempDir.h"

namespace {

class ConfigFileTest : public ::testing::Test {
 protected:
  std::string P(const char* suffix = "") const { return dir_.Path("user.ini") + suffix; }
  std::string RO() const { return dir_.Path("defaults.ini"); }

  void Write(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
  }
  static std::string Read(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
  }
  static bool Exists(const std::string& path) {
    struct stat st;
    return stat(path.c_str(), &st) == 0;
  }
  // The config-file messages, in order (the file layer's are left out).
  std::vector<std::string> Messages() const {
    std::vector<std::string> out;
    for (const kiTest::LogRecord& r : log_.Records()) {
      if (r.category == kiLogCat_ConfigFile) {
        EXPECT_EQ(1u, r.level);
        EXPECT_EQ("proc/kiConfigFile", r.source);
        out.push_back(r.text);
      }
    }
    return out;
  }

  kiTest::TempDir dir_;
  kiTest::LogCapture log_;
};

TEST_F(ConfigFileTest, ReadWriteTableAnswersFirst) {
  Write(RO(), "[a]\nname=ro\nonly=ro\nn=5\nflag=yes\n");
  Write(P(), "[a]\nname=rw\nn=abc\nflag=0\n");
  kiConfigFile* cf = kiConfigFile_Open(RO().c_str(), P().c_str());
  int found = 0;
  EXPECT_STREQ("rw", kiConfigFile_Get(cf, "a", "name", "def", &found));
  EXPECT_STREQ("ro", kiConfigFile_Get(cf, "A", "only", "def", &found));
  EXPECT_STREQ("def", kiConfigFile_Get(cf, "a", "none", "def", &found));
  EXPECT_EQ(0, found);
  // The read-write value is used even when it is not a number.
  EXPECT_EQ(9, kiConfigFile_GetInt32(cf, "a", "n", 9));
  EXPECT_EQ(0, kiConfigFile_GetBool(cf, "a", "flag", 1));
  EXPECT_EQ(7u, kiConfigFile_GetUInt32(cf, "a", "none", 7));

  EXPECT_EQ(1, kiConfigFile_SetDouble(cf, "a", "only", 0.25));
  EXPECT_EQ(0.25, kiConfigFile_GetDouble(cf, "a", "only", 0));
  EXPECT_EQ(1, kiConfigFile_DeleteKey(cf, "a", "only"));
  EXPECT_STREQ("ro", kiConfigFile_Get(cf, "a", "only", "def", nullptr));

  // Enumeration of either table.
  EXPECT_EQ(2u, kiConfigFile_GetSectionCount(cf, 1));
  EXPECT_STREQ("a", kiConfigFile_GetSectionName(cf, 1, 0));
  EXPECT_EQ(4u, kiConfigFile_GetKeyCount(cf, "a", 1));
  EXPECT_STREQ("n", kiConfigFile_GetKeyName(cf, "a", 1, 0));

  kiConfigFile_ClearReadWrite(cf);
  EXPECT_EQ(0u, kiConfigFile_GetSectionCount(cf, 0));
  EXPECT_STREQ("ro", kiConfigFile_Get(cf, "a", "name", "def", nullptr));
  kiConfigFile_Close(cf);
  EXPECT_TRUE(Messages().empty());
}

TEST_F(ConfigFileTest, WithoutReadWriteFileSettersFail) {
  Write(RO(), "k=v\n");
  kiConfigFile* cf = kiConfigFile_Open(RO().c_str(), nullptr);
  EXPECT_EQ(0, kiConfigFile_HasReadWrite(cf));
  EXPECT_EQ(0, kiConfigFile_Set(cf, nullptr, "k", "x"));
  EXPECT_EQ(0, kiConfigFile_SetInt32(cf, nullptr, "k", 1));
  EXPECT_EQ(0, kiConfigFile_DeleteKey(cf, nullptr, "k"));
  EXPECT_EQ(0, kiConfigFile_DeleteSection(cf, nullptr));
  EXPECT_EQ(0, kiConfigFile_Save(cf));
  EXPECT_STREQ("v", kiConfigFile_Get(cf, "", "k", "d", nullptr));
  EXPECT_EQ(0u, kiConfigFile_GetSectionCount(cf, 0));
  EXPECT_STREQ("", kiConfigFile_GetSectionName(cf, 0, 0));
  kiConfigFile_ClearReadWrite(cf);
  kiConfigFile_Close(cf);

  // A null record answers like an empty one.
  EXPECT_STREQ("d", kiConfigFile_Get(nullptr, "s", "k", "d", nullptr));
  EXPECT_EQ(0, kiConfigFile_Save(nullptr));
  EXPECT_EQ(0u, kiConfigFile_GetKeyCount(nullptr, "s", 1));
  kiConfigFile_Close(nullptr);
  EXPECT_EQ(0u, log_.Count());
}

TEST_F(ConfigFileTest, OpeningReportsReadOnlyFailuresOnly) {
  kiConfigFile* cf = kiConfigFile_Open(RO().c_str(), P().c_str());  // neither exists
  EXPECT_EQ(1, kiConfigFile_HasReadWrite(cf));
  kiConfigFile_Close(cf);
  cf = kiConfigFile_Open("<NoSuchFolderToken>/x.ini", "<NoSuchFolderToken>/y.ini");
  EXPECT_EQ(1, kiConfigFile_HasReadWrite(cf));
  EXPECT_EQ(0, kiConfigFile_Save(cf));
  kiConfigFile_Close(cf);
  EXPECT_EQ((std::vector<std::string>{
                "Cannot load read-only config file '" + RO() + "'\n",
                "Cannot resolve read-only config file path for '<NoSuchFolderToken>/x.ini'\n",
                "Cannot resolve read-write config file path for '<NoSuchFolderToken>/y.ini'\n",
                "Cannot save file '<NoSuchFolderToken>/y.ini'\n"}),
            Messages());
}

TEST_F(ConfigFileTest, SaveCommitsAndLeavesNoSideFiles) {
  kiConfigFile* cf = kiConfigFile_Open(nullptr, P().c_str());
  kiConfigFile_SetInt32(cf, nullptr, "n", -3);
  kiConfigFile_Set(cf, "Net", "Port", "80");
  ASSERT_EQ(1, kiConfigFile_Save(cf));
  EXPECT_EQ("n=-3\r\n\r\n[net]\r\nport=80\r\n", Read(P()));
  kiConfigFile_Set(cf, "Net", "Port", "81");
  ASSERT_EQ(1, kiConfigFile_Save(cf));  // over an existing file
  kiConfigFile_Close(cf);
  EXPECT_FALSE(Exists(P(".tmp")));
  EXPECT_FALSE(Exists(P(".ok")));
  cf = kiConfigFile_Open(nullptr, P().c_str());
  EXPECT_EQ(81, kiConfigFile_GetInt32(cf, "net", "port", 0));
  kiConfigFile_Close(cf);
  EXPECT_EQ(0u, log_.Count());
}

TEST_F(ConfigFileTest, RecoveryFinishesOrDropsAnInterruptedSave) {
  struct Row {
    const char* what;
    const char* p;    // null: absent
    const char* tmp;  // null: absent
    const char* ok;   // null: absent
    const char* expected;
  };
  const Row rows[] = {
      {"unfinished save: .tmp is dropped", "k=old", "k=half", nullptr, "old"},
      {"finished save: .ok replaces the file", "k=old", nullptr, "k=new", "new"},
      {"file already removed: .ok is renamed", nullptr, nullptr, "k=new", "new"},
      {"both side files", "k=old", "k=newer", "k=new", "new"},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.what);
    std::remove(P().c_str());
    if (r.p != nullptr) Write(P(), r.p);
    if (r.tmp != nullptr) Write(P(".tmp"), r.tmp);
    if (r.ok != nullptr) Write(P(".ok"), r.ok);
    kiConfigFile* cf = kiConfigFile_Open(nullptr, P().c_str());
    EXPECT_STREQ(r.expected, kiConfigFile_Get(cf, nullptr, "k", "none", nullptr));
    kiConfigFile_Close(cf);
    EXPECT_FALSE(Exists(P(".tmp")));
    EXPECT_FALSE(Exists(P(".ok")));
  }
  EXPECT_TRUE(Messages().empty());
}

TEST_F(ConfigFileTest, SaveFailuresAreLogged) {
  // The temporary file cannot be created.
  const std::string inMissingDir = dir_.Path("no/user.ini");
  kiConfigFile* cf = kiConfigFile_Open(nullptr, inMissingDir.c_str());
  EXPECT_EQ(0, kiConfigFile_Save(cf));
  kiConfigFile_Close(cf);
  EXPECT_EQ(std::vector<std::string>{"Cannot save file '" + inMissingDir + ".tmp'\n"}, Messages());
  log_.Clear();

  // The final rename is refused: a directory holds the file's name. The
  // complete ".ok" stays, and the next opening cannot commit it either.
  ASSERT_EQ(0, mkdir(P().c_str(), 0700));
  ASSERT_EQ(0, mkdir(P("/sub").c_str(), 0700));
  cf = kiConfigFile_Open(nullptr, P().c_str());
  kiConfigFile_Set(cf, nullptr, "k", "v");
  EXPECT_EQ(0, kiConfigFile_Save(cf));
  kiConfigFile_Close(cf);
  EXPECT_EQ("k=v\r\n", Read(P(".ok")));
  cf = kiConfigFile_Open(nullptr, P().c_str());
  kiConfigFile_Close(cf);
  EXPECT_EQ((std::vector<std::string>{"Cannot save file: cannot commit file '" + P(".ok") + "'\n",
                                      "Cannot commit file '" + P(".ok") + "'\n"}),
            Messages());
  log_.Clear();

  // The rename of the temporary file is refused: ".ok" is a directory.
  ASSERT_EQ(0, std::remove(P(".ok").c_str()));
  ASSERT_EQ(0, mkdir(P(".ok").c_str(), 0700));
  ASSERT_EQ(0, mkdir(P(".ok/sub").c_str(), 0700));
  cf = kiConfigFile_Open(nullptr, P().c_str());
  EXPECT_EQ(0, kiConfigFile_Save(cf));
  kiConfigFile_Close(cf);
  EXPECT_EQ(std::vector<std::string>{"Cannot save file: cannot rename temporary file '" +
                                     P(".tmp") + "'\n"},
            Messages());
  log_.Clear();

  // ".ok" alone, left by a failed save, cannot become the file (a dangling
  // link holds the name): the next save refuses and touches nothing.
  const std::string other = dir_.Path("other.ini");
  Write(other + ".ok", "k=old\r\n");
  ASSERT_EQ(0, symlink("missing", other.c_str()));
  cf = kiConfigFile_Open(nullptr, other.c_str());
  log_.Clear();  // the opening's recovery failed as well
  kiConfigFile_Set(cf, nullptr, "k", "new");
  EXPECT_EQ(0, kiConfigFile_Save(cf));
  kiConfigFile_Close(cf);
  EXPECT_EQ("k=old\r\n", Read(other + ".ok"));
  EXPECT_FALSE(Exists(other + ".tmp"));
  EXPECT_EQ(std::vector<std::string>{"Cannot save file: cannot commit file '" + other + ".ok'\n"},
            Messages());
}

// The durability helpers the commit relies on.
TEST_F(ConfigFileTest, SyncHelpersReportFailures) {
  void* fd = kiFile_NoFD();
  ASSERT_EQ(0, kiFile_Open(P().c_str(), kiFileMode_Write | kiFileMode_Create, 0, &fd));
  EXPECT_EQ(0, kiFile_Sync(fd));
  kiFile_Close(fd);
  EXPECT_EQ(0, kiDir_Sync(dir_.Path().c_str()));
  EXPECT_EQ(0u, log_.Count());
  EXPECT_EQ(-1, kiFile_Sync(kiFile_NoFD()));
  EXPECT_EQ(2, kiDir_Sync(dir_.Path("missing").c_str()));
  EXPECT_EQ(20, kiDir_Sync(P("/sub").c_str()));  // ENOTDIR
  const std::vector<kiTest::LogRecord> records = log_.Records();
  ASSERT_EQ(3u, records.size());
  EXPECT_EQ("kiFile: Cannot sync file (fd = 0xffffffffffffffff) (error = 9)\n", records[0].text);
  EXPECT_EQ("kiDir: Cannot sync directory '" + dir_.Path("missing") + "' (error = 2)\n",
            records[1].text);
}

}  // namespace
