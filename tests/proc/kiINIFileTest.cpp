// kiINIFileTest.cpp - kiINIFile: the line rules of the parser, the exact bytes
// the writer produces, the number and boolean getters, order and first-match
// through the index, deletions, null arguments and the process locale.
#include <clocale>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ki/proc/kiINIFile.h"
#include "ki/proc/kiLog.h"
#include "support/LogCapture.h"
#include "support/TempDir.h"

namespace {

// A table that deletes itself.
struct Table {
  kiINIFile* ini = kiINIFile_New(0);
  ~Table() { kiINIFile_Delete(ini); }
  void Parse(const std::string& text) {
    ASSERT_EQ(1, kiINIFile_Parse(text.data(), static_cast<unsigned>(text.size()), ini));
  }
  std::string Get(const char* section, const char* key) const {
    int found = -1;
    const char* v = kiINIFile_Get(ini, section, key, "<none>", &found);
    return found == 1 ? std::string(v) : std::string("<none>");
  }
  // "section:key=value;" for the whole table, in table order.
  std::string Dump() const {
    std::string out;
    for (unsigned s = 0; s < kiINIFile_GetSectionCount(ini); ++s) {
      const char* name = kiINIFile_GetSectionName(ini, s);
      out += std::string("[") + name + "]";
      for (unsigned k = 0; k < kiINIFile_GetKeyCount(ini, name); ++k) {
        const char* key = kiINIFile_GetKeyName(ini, name, k);
        out += std::string(key) + "=" + Get(name, key) + ";";
      }
    }
    return out;
  }
};

std::string ReadAll(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}

TEST(INIFileTest, ParsesEveryLineRule) {
  struct Row {
    const char* what;
    std::string text;
    const char* section;
    const char* key;
    const char* expected;
  };
  const std::string longKey(200, 'k');
  const std::string cutKey(127, 'k');
  const Row rows[] = {
      {"byte-order mark on the first line", "\xEF\xBB\xBFname=v", "", "name", "v"},
      {"mark on a later line stays text", "a=1\n\xEF\xBB\xBFname=v", "", "\xEF\xBB\xBFname", "v"},
      {"inline comment and trimming", "[S]\n  Port = 80 ; comment", "s", "port", "80"},
      {"number sign comment", "k=v#c", "", "k", "v"},
      {"double quotes keep ';'", "k=\"a;b\"", "", "k", "a;b"},
      {"escaped single quote", "k='it\\'s'", "", "k", "it's"},
      {"two backslashes give one", "k=\"a\\\\b\"", "", "k", "a\\b"},
      {"text after the closing quote", "k=\"x\" # c", "", "k", "x"},
      {"quoted spaces are kept", "k=\"  a \"", "", "k", "  a "},
      {"unterminated quote runs to the end", "k='abc", "", "k", "abc"},
      {"line without '='", "Flag", "", "flag", ""},
      {"only the first '=' splits", "k=a=b", "", "k", "a=b"},
      {"'[' without ']' is an entry", "[abc=1", "", "[abc", "1"},
      {"header text after ']' ignored", "[ Net ] trailing\nk=1", "net", "k", "1"},
      {"empty header is the default", "[x]\n[]\nk=1", "", "k", "1"},
      {"headers fold to one section", "[Net]\na=1\n[net]\nb=2", "NET", "b", "2"},
      {"duplicate keeps the later value", "k=1\nk=2", "", "k", "2"},
      {"keys are cut at 127", "[s]\n" + longKey + "=v", "s", cutKey.c_str(), "v"},
      {"CR alone ends a line", "a=1\rb=2", "", "b", "2"},
      {"a zero byte ends the line", std::string("a=1\0junk\nb=2", 12), "", "a", "1"},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.what);
    Table t;
    t.Parse(r.text);
    EXPECT_EQ(r.expected, t.Get(r.section, r.key));
  }
}

TEST(INIFileTest, SkipsCommentsAndKeylessLines) {
  Table t;
  t.Parse("; c\n# c\n\n=3\n   \n[s]\n;k=1\n");
  EXPECT_EQ("[][s]", t.Dump());
}

TEST(INIFileTest, LongLinesSplitAt1023Bytes) {
  Table t;
  // 2000 bytes without a line end: a 1023-byte line, then the rest.
  t.Parse("k=" + std::string(1021, 'a') + "x=" + std::string(975, 'b'));
  EXPECT_EQ(std::string(1021, 'a'), t.Get("", "k"));
  EXPECT_EQ(std::string(975, 'b'), t.Get("", "x"));
  // The LF that ends a line counts in the next one's 1023 bytes.
  Table u;
  u.Parse("a=1\ny=" + std::string(1020, 'c') + "z=2");
  EXPECT_EQ(std::string(1020, 'c'), u.Get("", "y"));
  EXPECT_EQ("2", u.Get("", "z"));
}

TEST(INIFileTest, DuplicatesKeepTheirFirstPlace) {
  Table t;
  t.Parse("a=1\nb=2\n[s]\nx=1\n[]\na=3\nc=4");
  EXPECT_EQ("[]a=3;b=2;c=4;[s]x=1;", t.Dump());
}

TEST(INIFileTest, SavesExactBytes) {
  kiTest::TempDir dir;
  Table t;
  t.Parse("Top=1\n[Net]\nPort=80\nName=a b\nPath=c:\\x\nQ=say \"hi\" it's\nEmpty=\n");
  ASSERT_EQ(1, kiINIFile_Save(dir.Path("a.ini").c_str(), t.ini));
  EXPECT_EQ(
      "top=1\r\n\r\n[net]\r\nport=80\r\nname=\"a b\"\r\npath=\"c:\\\\x\"\r\n"
      "q=\"say \\\"hi\\\" it\\'s\"\r\nempty=\r\n",
      ReadAll(dir.Path("a.ini")));
  // And the file reads back to the same table.
  Table back;
  ASSERT_EQ(1, kiINIFile_Load(dir.Path("a.ini").c_str(), back.ini));
  EXPECT_EQ(t.Dump(), back.Dump());
}

TEST(INIFileTest, SavesSectionsInOrderOfFirstUse) {
  kiTest::TempDir dir;
  Table t;
  kiINIFile_Set(t.ini, "b", "k", "1");
  kiINIFile_Set(t.ini, nullptr, "d", "2");
  kiINIFile_Set(t.ini, "a", nullptr, nullptr);  // section only
  kiINIFile_Set(t.ini, "B", "K", "3");          // replaces in place
  ASSERT_EQ(1, kiINIFile_Save(dir.Path("a.ini").c_str(), t.ini));
  // Intended: "default" gets no header, so its entries follow [b] here.
  EXPECT_EQ("[b]\r\nk=3\r\nd=2\r\n\r\n[a]\r\n", ReadAll(dir.Path("a.ini")));
}

TEST(INIFileTest, WrittenLinesAreCutAt1023Bytes) {
  kiTest::TempDir dir;
  Table t;
  kiINIFile_Set(t.ini, nullptr, "k", std::string(1500, 'v').c_str());
  ASSERT_EQ(1, kiINIFile_Save(dir.Path("a.ini").c_str(), t.ini));
  EXPECT_EQ("k=" + std::string(1021, 'v'), ReadAll(dir.Path("a.ini")));
}

TEST(INIFileTest, LoadAndSaveReportFailures) {
  kiTest::TempDir dir;
  kiTest::LogCapture log;
  Table t;
  EXPECT_EQ(0, kiINIFile_Load(dir.Path("missing.ini").c_str(), t.ini));
  EXPECT_EQ(0, kiINIFile_Load(dir.Path().c_str(), t.ini));  // a directory
  EXPECT_EQ(0, kiINIFile_Save(dir.Path("no/such/dir.ini").c_str(), t.ini));
  EXPECT_EQ(0u, kiINIFile_GetSectionCount(t.ini));
}

TEST(INIFileTest, NumberGetters) {
  Table t;
  t.Parse(
      "i=-42\nbig=2147483648\ntrail=12abc\nspace= 7 \nneg=-1\nd=2.5e3\nhalf=0.5x\n"
      "word=abc\ninf=-Infinity\nu=4294967295");
  struct Row {
    const char* key;
    long i;
    unsigned long u;
    double d;
  };
  const Row rows[] = {
      {"i", -42, 99, -42},
      {"big", 99, 2147483648ul, 2147483648.0},
      {"trail", 99, 99, 12},
      {"space", 7, 7, 7},
      {"neg", -1, 99, -1},
      {"d", 99, 99, 2500},
      {"half", 99, 99, 0.5},
      {"word", 99, 99, 0},
      {"u", 99, 4294967295ul, 4294967295.0},
      {"missing", 99, 99, 99},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.key);
    EXPECT_EQ(r.i, kiINIFile_GetInt32(t.ini, nullptr, r.key, 99));
    EXPECT_EQ(r.u, kiINIFile_GetUInt32(t.ini, nullptr, r.key, 99));
    EXPECT_EQ(r.d, kiINIFile_GetDouble(t.ini, nullptr, r.key, 99));
  }
  EXPECT_EQ(-HUGE_VAL, kiINIFile_GetDouble(t.ini, nullptr, "inf", 0));
}

TEST(INIFileTest, NumberSettersFormatLikePrintf) {
  Table t;
  kiINIFile_SetInt32(t.ini, "n", "i", -2147483647L - 1);
  kiINIFile_SetUInt32(t.ini, "n", "u", 4294967295ul);
  const struct {
    double value;
    const char* text;
  } doubles[] = {{0.1, "0.1"},          {1e6, "1e+06"},        {123456.0, "123456"},
                 {1.0 / 3, "0.333333"}, {-2.5e-7, "-2.5e-07"}, {HUGE_VAL, "inf"}};
  for (const auto& d : doubles) {
    kiINIFile_SetDouble(t.ini, "n", "d", d.value);
    EXPECT_EQ(d.text, t.Get("n", "d"));
  }
  EXPECT_EQ("-2147483648", t.Get("n", "i"));
  EXPECT_EQ("4294967295", t.Get("n", "u"));
}

TEST(INIFileTest, NumbersIgnoreTheProcessLocale) {
  const char* const locales[] = {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "de_DE"};
  std::string previous = std::setlocale(LC_ALL, nullptr);
  const char* set = nullptr;
  for (const char* l : locales) {
    if ((set = std::setlocale(LC_ALL, l)) != nullptr) break;
  }
  if (set == nullptr) GTEST_SKIP() << "no decimal-comma locale is installed";
  Table t;
  kiINIFile_SetDouble(t.ini, nullptr, "d", 1.5);
  t.Parse("e=2.25");
  const std::string written = t.Get("", "d");
  const double read = kiINIFile_GetDouble(t.ini, nullptr, "e", 0);
  std::setlocale(LC_ALL, previous.c_str());
  EXPECT_EQ("1.5", written);
  EXPECT_EQ(2.25, read);
}

TEST(INIFileTest, BooleansAndTheirWarning) {
  Table t;
  t.Parse("[Opt]\na=yes\nb=True\nc=1\nd=12\ne=no\nf=false\ng=0\nh=maybe\ni=\nj=99999999999");
  kiTest::LogCapture log;
  const struct {
    const char* key;
    int def;
    int expected;
  } rows[] = {{"a", 0, 1}, {"b", 0, 1}, {"c", 0, 1},       {"d", 0, 1}, {"j", 0, 1}, {"e", 1, 0},
              {"f", 1, 0}, {"g", 1, 0}, {"missing", 1, 1}, {"h", 1, 1}, {"i", 0, 0}};
  for (const auto& r : rows) {
    SCOPED_TRACE(r.key);
    EXPECT_EQ(r.expected, kiINIFile_GetBool(t.ini, "OPT", r.key, r.def));
  }
  const std::vector<kiTest::LogRecord> records = log.Records();
  ASSERT_EQ(2u, records.size());
  EXPECT_EQ(1u, records[0].level);
  EXPECT_EQ(static_cast<unsigned>(kiLogCat_INIFile), records[0].category);
  EXPECT_EQ("proc/kiINIFile", records[0].source);
  EXPECT_EQ("kiINIFile: invalid value 'maybe' for a boolean for entry 'opt/h' (returning 1) \n",
            records[0].text);
  EXPECT_EQ("kiINIFile: invalid value '' for a boolean for entry 'opt/i' (returning 0) \n",
            records[1].text);
}

TEST(INIFileTest, EnumerationAndDeletion) {
  Table t;
  t.Parse("top=1\n[A]\nx=1\ny=2\n[b]\nz=3");
  EXPECT_EQ(3u, kiINIFile_GetSectionCount(t.ini));
  EXPECT_STREQ("", kiINIFile_GetSectionName(t.ini, 0));
  EXPECT_STREQ("a", kiINIFile_GetSectionName(t.ini, 1));
  EXPECT_STREQ("", kiINIFile_GetSectionName(t.ini, 3));
  EXPECT_STREQ("", kiINIFile_GetKeyName(t.ini, "a", 2));

  EXPECT_EQ(1, kiINIFile_DeleteKey(t.ini, "a", "X"));
  EXPECT_EQ(0, kiINIFile_DeleteKey(t.ini, "a", "x"));
  EXPECT_EQ("[]top=1;[a]y=2;[b]z=3;", t.Dump());
  EXPECT_EQ(1, kiINIFile_DeleteSection(t.ini, "A"));
  EXPECT_EQ(0, kiINIFile_DeleteSection(t.ini, "a"));
  EXPECT_EQ("[]top=1;[b]z=3;", t.Dump());
  // The index follows the moved records; a name added again goes last.
  kiINIFile_Set(t.ini, "a", "x", "new");
  EXPECT_EQ("[]top=1;[b]z=3;[a]x=new;", t.Dump());
  EXPECT_EQ(1, kiINIFile_DeleteSection(t.ini, nullptr));
  EXPECT_EQ("[b]z=3;[a]x=new;", t.Dump());
}

TEST(INIFileTest, ManyEntriesKeepOrderAndLookups) {
  std::string text;
  for (int s = 0; s < 50; ++s) {
    text += "[Sec" + std::to_string(s) + "]\n";
    for (int k = 0; k < 600; ++k)
      text += "Key" + std::to_string(k) + "=" + std::to_string(s * k) + "\n";
  }
  Table t;
  t.Parse(text);
  ASSERT_EQ(51u, kiINIFile_GetSectionCount(t.ini));
  for (int s = 0; s < 50; s += 7) {
    const std::string sec = "sec" + std::to_string(s);
    ASSERT_EQ(600u, kiINIFile_GetKeyCount(t.ini, sec.c_str()));
    EXPECT_STREQ("key599", kiINIFile_GetKeyName(t.ini, sec.c_str(), 599));
    for (int k = 0; k < 600; k += 13) {
      EXPECT_EQ(s * k,
                kiINIFile_GetInt32(t.ini, sec.c_str(), ("KEY" + std::to_string(k)).c_str(), -1));
    }
  }
  // Deleting rebuilds the index: every remaining entry is still found.
  kiINIFile_DeleteSection(t.ini, "sec0");
  EXPECT_EQ(49 * 48, kiINIFile_GetInt32(t.ini, "sec49", "key48", -1));
  EXPECT_EQ(-1, kiINIFile_GetInt32(t.ini, "sec0", "key1", -1));
}

TEST(INIFileTest, NullArgumentsFailQuietly) {
  kiTest::LogCapture log;
  int found = -1;
  EXPECT_STREQ("d", kiINIFile_Get(nullptr, "s", "k", "d", &found));
  EXPECT_EQ(0, found);
  EXPECT_EQ(0, kiINIFile_Set(nullptr, "s", "k", "v"));
  EXPECT_EQ(0, kiINIFile_Parse("a=1", 3, nullptr));
  EXPECT_EQ(0, kiINIFile_Load(nullptr, nullptr));
  EXPECT_EQ(0, kiINIFile_Save("x", nullptr));
  EXPECT_EQ(5, kiINIFile_GetInt32(nullptr, "s", "k", 5));
  EXPECT_EQ(1, kiINIFile_GetBool(nullptr, "s", "k", 1));
  EXPECT_EQ(0u, kiINIFile_GetSectionCount(nullptr));
  EXPECT_STREQ("", kiINIFile_GetKeyName(nullptr, "s", 0));
  EXPECT_EQ(0, kiINIFile_DeleteSection(nullptr, "s"));
  kiINIFile_Delete(nullptr);

  Table t;
  EXPECT_EQ(0, kiINIFile_Parse(nullptr, 4, t.ini));
  EXPECT_EQ(1, kiINIFile_Parse(nullptr, 0, t.ini));  // adds the default section
  EXPECT_EQ(1, kiINIFile_Set(t.ini, "s", "k", nullptr));
  EXPECT_EQ("", t.Get("s", "k"));
  EXPECT_EQ("<none>", t.Get("s", nullptr));
  EXPECT_EQ("<none>", t.Get("s", ""));
  EXPECT_EQ(0u, log.Count());
}

}  // namespace
