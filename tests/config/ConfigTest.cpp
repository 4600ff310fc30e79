// ConfigTest.cpp - kiConfig and kiConfigConfig: file names, the read-write
// file over the read-only one, narrow integers, substitution, and the
// bootstrap file's paths and branding.
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include "ki/config/Config.h"
#include "ki/proc/kiLog.h"
#include "ki/proc/kiMem.h"
#include "ki/proc/kiPath_p.h"
#include "ki/proc/kiPlatform.h"
#include "support/LogCapture.h"
#include "support/TempDir.h"

namespace {

void WriteFile(const std::string& path, const std::string& text) {
  for (std::size_t at = path.find('/', 1); at != std::string::npos; at = path.find('/', at + 1)) {
    mkdir(path.substr(0, at).c_str(), 0700);
  }
  std::ofstream(path) << text;
}

bool IsDir(const std::string& path) {
  struct stat st;
  return stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

// kiPlatform_GetHostName has the lookup's shape but for the context.
char* HostLookup(char* name, void* /*context*/) { return kiPlatform_GetHostName(name); }

void* g_seenContext = &g_seenContext;
// Answers "<name>" for names starting with 'x', and "%x%" for "again".
char* TestLookup(char* name, void* context) {
  g_seenContext = context;
  if (std::string(name) == "again") return kiMem_Strdup("%x%");
  if (name[0] != 'x') return nullptr;
  return kiMem_Strdup(("<" + std::string(name) + ">").c_str());
}

class ConfigTest : public ::testing::Test {
 protected:
  ConfigTest() {
    WriteFile(Ro(), "[s]\nboth=ro\nonlyRo=1\n[ro2]\nk=v\n");
    WriteFile(Rw(), "[s]\nboth=rw\nonlyRw=2\n");
  }
  std::string Ro() const { return dir_.Path("ro/app.ini"); }
  std::string Rw() const { return dir_.Path("rw/_app.ini"); }
  kiConfig* Open(bool withWrite = true) {
    return new kiConfig(dir_.Path("ro").c_str(), withWrite ? dir_.Path("rw").c_str() : "",
                        "app.ini");
  }

  kiTest::TempDir dir_;
};

TEST(ConfigPathTest, ValidPathJoinsDirectoryPrefixAndBareName) {
  struct Row {
    const char* dir;
    const char* file;
    const char* prefix;
    const char* expected;
  };
  const Row rows[] = {
      {"C:\\cfg", "sub\\app.ini", "_", "C:/cfg/_app.ini"},
      {"C:/ro", "app.ini", "", "C:/ro/app.ini"},
      {"C:/rw/", "/x/y/app.ini", "_", "C:/rw/_app.ini"},
      {"", "app.ini", "", "./app.ini"},
      {"\\\\srv\\share\\", "a.ini", nullptr, "//srv/share/a.ini"},
      {"/etc", "", "_", "/etc/_"},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.expected);
    EXPECT_STREQ(r.expected, kiConfig::GetValidPath(r.dir, r.file, r.prefix).c_str());
  }
}

// The read-write file (named "_" + the name) hides the read-only one key by
// key; each file is listed on its own (the default section comes first).
TEST_F(ConfigTest, ReadWriteValuesHideReadOnlyOnesUntilDeleted) {
  std::unique_ptr<kiConfig> config(Open());
  EXPECT_STREQ("rw", config->GetCString("S", "BOTH", "def").c_str());
  EXPECT_EQ(1, config->GetInt32("s", "onlyRo", 0));
  EXPECT_STREQ("def", config->GetCString("s", "none", "def").c_str());
  EXPECT_EQ(3u, config->GetSectionCount(true));
  EXPECT_STREQ("ro2", config->GetSectionName(2, true).c_str());
  EXPECT_TRUE(config->GetKeyName("s", 1, false) == kiString(u"onlyrw"));
  EXPECT_TRUE(config->GetKeyName("s", 9, false).IsEmpty());

  EXPECT_TRUE(config->DeleteKey("s", "both"));
  EXPECT_TRUE(config->Save());
  config.reset(Open());
  EXPECT_STREQ("ro", config->GetCString("s", "both", "def").c_str());
  EXPECT_EQ(2u, config->GetUInt32("s", "onlyRw", 0));
}

TEST_F(ConfigTest, ChangesNeedReadWriteFileAndKey) {
  std::unique_ptr<kiConfig> readOnly(Open(false));
  EXPECT_FALSE(readOnly->SetString("s", "k", kiCString("v")));
  EXPECT_FALSE(readOnly->DeleteSection("s"));
  EXPECT_FALSE(readOnly->Save());
  readOnly->Reset();
  EXPECT_STREQ("ro", readOnly->GetCString("s", "both", "").c_str());

  std::unique_ptr<kiConfig> config(Open());
  EXPECT_FALSE(config->SetString("s", nullptr, kiCString("v")));
  EXPECT_FALSE(config->DeleteKey("s", nullptr));
  EXPECT_STREQ("d", config->GetCString("s", nullptr, "d").c_str());
  EXPECT_TRUE(config->OptionIsSet(nullptr, nullptr, true));
}

TEST_F(ConfigTest, SettersFormatAndResetDropsChanges) {
  std::unique_ptr<kiConfig> config(Open());
  EXPECT_TRUE(config->SetInt32("n", "neg", -5));
  EXPECT_TRUE(config->SetUInt32("n", "big", 4294967295ul));
  EXPECT_TRUE(config->SetString("n", "wide", kiString(u"caf\u00e9 \u266b")));
  EXPECT_STREQ("-5", config->GetCString("n", "neg", "").c_str());
  EXPECT_EQ(4294967295ul, config->GetUInt32("n", "big", 0));
  EXPECT_STREQ("caf\xc3\xa9 \xe2\x99\xab", config->GetCString("n", "wide", "").c_str());
  EXPECT_TRUE(config->GetString("N", "Wide", kiString()) == kiString(u"caf\u00e9 \u266b"));

  config->Reset();
  EXPECT_EQ(0u, config->GetSectionCount(false));
  EXPECT_STREQ("ro", config->GetCString("s", "both", "").c_str());
  EXPECT_TRUE(config->GetString("n", "wide", kiString(u"d")) == kiString(u"d"));
}

TEST_F(ConfigTest, NarrowIntegersFallBackOutsideTheirRange) {
  WriteFile(Ro(), "[n]\nlatin=caf\xe9\nyes=y\n");
  std::unique_ptr<kiConfig> config(Open());
  struct Row {
    const char* value;
    int uint8, int8, int16, uint16;  // 7: the default
  };
  const Row rows[] = {
      {"300", 7, 7, 300, 300},    {"-1", 7, -1, -1, 7},       {"-32768", 7, 7, -32768, 7},
      {"32768", 7, 7, 7, 32768},  {"-128", 7, -128, -128, 7}, {"255", 255, 7, 255, 255},
      {"2147483647", 7, 7, 7, 7},  // the "absent" marker: intended
      {"x", 7, 7, 7, 7},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.value);
    ASSERT_TRUE(config->SetString("n", "v", kiCString(r.value)));
    EXPECT_EQ(r.uint8, config->GetUInt8("n", "v", 7));
    EXPECT_EQ(r.int8, config->GetInt8("n", "v", 7));
    EXPECT_EQ(r.int16, config->GetInt16("n", "v", 7));
    EXPECT_EQ(r.uint16, config->GetUInt16("n", "v", 7));
  }
  EXPECT_TRUE(config->OptionIsSet("N", "YES", false));
  // Text that is not UTF-8 is read as Latin-1, not dropped.
  EXPECT_TRUE(config->GetString("n", "latin", kiString()) == kiString(u"caf\u00e9"));
}

TEST_F(ConfigTest, SubstitutesVariables) {
  const char* oldTemp = std::getenv("TEMP");
  const std::string savedTemp = oldTemp != nullptr ? oldTemp : "";
  kiPlatform_SetEnv("TEMP", "/var/t");
  kiPlatform_SetEnv("KI_CONFIG_TEST_UNSET", nullptr);
  char* host = kiPlatform_GetHostName("hostname");
  const std::string hostName = host != nullptr ? host : "";
  kiMem_Free(host);

  std::unique_ptr<kiConfig> config(Open(false));
  struct Row {
    const char* value;
    char* (*lookup)(char*, void*);
    std::string expected;
  };
  const Row rows[] = {
      {"%env.TEMP%/x", nullptr, "/var/t/x"},
      {"%env.TEMP%/x", TestLookup, "/var/t/x"},
      {"100%%", nullptr, "100%"},
      {"%%%env.TEMP%%%", nullptr, "%/var/t%"},
      {"a%b", nullptr, "a%b"},
      {"a%b%c%d", TestLookup, "ac%d"},  // the second '%' closes the first pair
      {"%env.KI_CONFIG_TEST_UNSET%-%nothing%-", nullptr, "--"},
      {"%x1%%x2%", TestLookup, "<x1><x2>"},
      {"%again%.", TestLookup, "%x%."},  // inserted text is not scanned again
      {"[%hostname%]", HostLookup, "[" + hostName + "]"},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.value);
    EXPECT_STREQ(r.expected.c_str(),
                 config->GetCStringWithSubstitution("s", "none", r.value, r.lookup).c_str());
  }
  EXPECT_EQ(nullptr, g_seenContext);
  WriteFile(Ro(), "[s]\nk=%env.TEMP%\n");
  config.reset(Open(false));
  EXPECT_STREQ("/var/t", config->GetCStringWithSubstitution("s", "k", "", nullptr).c_str());
  kiPlatform_SetEnv("TEMP", oldTemp != nullptr ? savedTemp.c_str() : nullptr);
}

// kiConfigConfig reads "./ConfigPath.ini": the application's directory is
// moved to a temporary one.
class ConfigConfigTest : public ::testing::Test {
 protected:
  ConfigConfigTest() {
    kiPath_SetDialectForTesting(kiPathDialect_Posix, (dir_.Path() + "/").c_str());
  }
  ~ConfigConfigTest() override { kiPath_ResetForTesting(); }

  kiTest::TempDir dir_;
  kiTest::LogCapture log_;
};

TEST_F(ConfigConfigTest, PathsMustBothBeSet) {
  WriteFile(dir_.Path("ConfigPath.ini"), "ReadPath=/cfg/ro\n");
  kiConfigConfig config;
  kiCString ro, rw;
  EXPECT_FALSE(config.GetPaths(ro, rw));
  EXPECT_STREQ("/cfg/ro", ro.c_str());
  ASSERT_EQ(1u, log_.Count());
  const kiTest::LogRecord record = log_.Records()[0];
  EXPECT_EQ(1u, record.level);
  EXPECT_EQ(static_cast<unsigned>(kiLogCat_ConfigFile), record.category);
  EXPECT_EQ("config/Config", record.source);
  EXPECT_EQ("kiConfigConfig: Cannot get paths (RO = '/cfg/ro', RW = '')\n", record.text);

  WriteFile(dir_.Path("other.ini"), "readpath=a\nWRITEPATH=b\n");
  kiConfigConfig other("sub\\other.ini");  // only the bare name counts
  EXPECT_TRUE(other.GetPaths(ro, rw));
  EXPECT_STREQ("b", rw.c_str());
}

TEST_F(ConfigConfigTest, CheckedPathsAreCreated) {
  WriteFile(dir_.Path("ConfigPath.ini"), "ReadPath=cfg/ro\nWritePath=" + dir_.Path("w/rw") + "\n");
  kiCString ro, rw;
  EXPECT_TRUE(kiConfigConfig::GetConfigPaths(ro, rw));
  EXPECT_TRUE(IsDir(dir_.Path("cfg/ro")));
  EXPECT_TRUE(IsDir(dir_.Path("w/rw")));
  EXPECT_EQ(0u, log_.Count());

  // Absent keys are the application's directory itself.
  WriteFile(dir_.Path("none.ini"), "");
  EXPECT_TRUE(kiConfigConfig::GetConfigPaths(ro, rw, "none.ini"));
  EXPECT_STREQ("./", ro.c_str());

  WriteFile(dir_.Path("file"), "");
  WriteFile(dir_.Path("bad.ini"), "ReadPath=file/x\nWritePath=w2\n");
  EXPECT_FALSE(kiConfigConfig::GetConfigPaths(ro, rw, "bad.ini"));
  EXPECT_TRUE(IsDir(dir_.Path("w2")));  // the second is made all the same
  ASSERT_LE(1u, log_.Count());
  EXPECT_EQ("kiConfigConfig: Cannot get checked paths (RO = 'file/x', RW = 'w2')\n",
            log_.Texts().back());
}

TEST_F(ConfigConfigTest, BrandInfoHasDefaults) {
  EXPECT_STREQ("kivo", kiConfigConfig::GetBrandInfo("Tarn").c_str());
  const kiCString appSet = kiConfigConfig::GetBrandInfo("AppSet");
  EXPECT_FALSE(appSet.IsEmpty());
  EXPECT_EQ('.', appSet.Last());
  WriteFile(dir_.Path("ConfigPath.ini"), "[Brand]\nTarn=acme\nAppSet=com.acme.\nOther=x\n");
  EXPECT_STREQ("acme", kiConfigConfig::GetBrandInfo("tarn").c_str());
  EXPECT_STREQ("com.acme.", kiConfigConfig::GetBrandInfo("AppSet", nullptr).c_str());
  EXPECT_STREQ("", kiConfigConfig::GetBrandInfo("Other").c_str());
  EXPECT_STREQ("", kiConfigConfig::GetBrandInfo(nullptr).c_str());
}

}  // namespace
