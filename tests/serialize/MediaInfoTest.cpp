// MediaInfoTest.cpp - kiMediaInfo (overwrite rules, numbers as text, the text
// form, Peek, shared tables, hooks) and kiMediaInfoSerializer.
#include <cfloat>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <kiPlugins/PropertyList.h>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "ki/proc/kiMem.h"
#include "ki/serialize/MediaInfo.h"
#include "support/LogCapture.h"

namespace {

using Entries = std::vector<std::pair<std::string, std::string>>;

// The table holds exactly these entries (order aside).
void ExpectEntries(const kiMediaInfo& info, const Entries& expected) {
  EXPECT_EQ(expected.size(), info.GetCount());
  for (const auto& e : expected) {
    EXPECT_EQ(e.second, info.GetCString(e.first.c_str(), "<absent>").c_str()) << "key " << e.first;
  }
}

TEST(MediaInfoTest, OverwriteFalseKeepsANonEmptyTableValue) {
  const struct {
    const char* first;
    const char* second;
    bool overwrite;
    const char* expected;
  } rows[] = {{"1", "2", false, "1"}, {"1", "2", true, "2"},      {"1", "", false, "1"},
              {"", "2", false, "2"},  {nullptr, "2", false, "2"}, {"1", nullptr, true, "<absent>"}};
  for (const auto& r : rows) {
    kiMediaInfo info;
    info.Set("xx", r.first);
    info.Set("xx", r.second, r.overwrite);
    EXPECT_EQ(r.expected, std::string(info.GetCString("xx", "<absent>")))
        << (r.first ? r.first : "null") << " then " << (r.second ? r.second : "null");
  }
}

// The overwrite test and the getters look only in the table (intended).
TEST(MediaInfoTest, FixedKeysBypassTheTableExceptWhenReadFromText) {
  kiMediaInfo info;
  info.Set("ti", "A", false);
  info.Set("ti", "B", false);
  info.Set("an", "N");
  info.Set("TI", "upper");  // case matters
  EXPECT_EQ("B", info.GetTitle());
  EXPECT_EQ("N", info.GetFixedField("an"));
  EXPECT_EQ("d", info.GetCString("ti", "d"));
  EXPECT_EQ("TI=upper", info.GetSerializedInfo());

  info.DeserializeInfo("ti=from text");  // fills the table, not the title
  EXPECT_EQ("B", info.GetTitle());
  EXPECT_EQ("from text", info.GetCString("ti"));
  info.Set("ti", "kept out", false);
  EXPECT_EQ("B", info.GetTitle());
  info.Set("ti", static_cast<const char*>(nullptr), true);
  EXPECT_EQ("", info.GetTitle());
}

TEST(MediaInfoTest, HasInfoSeesTheTableAndFixedFieldsNotNullsOrFolderOrDate) {
  kiMediaInfo info;
  EXPECT_FALSE(info.GetDate().IsValid());  // 1900 is before kiDateTime's range
  info.Set(nullptr, "x");
  info.DeserializeInfo(nullptr);
  info.SetFolder("/media");
  info.SetDate(kiDateTime(0L));
  EXPECT_FALSE(info.HasInfo());
  EXPECT_FALSE(info.Validate());
  EXPECT_EQ(7, info.GetInt(nullptr, 7));
  info.Set("cr", "x");
  EXPECT_TRUE(info.HasInfo());
  info.Set("cr", "");
  info.Set("k", "v");
  EXPECT_TRUE(info.HasInfo());
  EXPECT_TRUE(info.Remove("k"));
  EXPECT_FALSE(info.Remove("k"));
  EXPECT_FALSE(info.HasInfo());
}

// ---- Numbers as text --------------------------------------------------------

TEST(MediaInfoTest, NumbersAreWrittenAsExactTextAndReadBack) {
  kiMediaInfo info;
  info.Set("i", static_cast<int>(-2147483647 - 1));
  info.Set("u", 4294967295u);
  info.Set("u64", kkiuint64_Max);
  info.Set("f", 0.1f);
  info.Set("big", 1e10f);
  info.Set("neg0", -0.0f);
  info.Set("max", FLT_MAX);  // reads above FLT_MAX as a double: must round down
  info.Set("inf", -HUGE_VALF);
  info.Set("nan", NAN);
  const Entries texts = {
      {"i", "-2147483648"}, {"u", "4294967295"}, {"u64", "18446744073709551615"}, {"f", "0.1"},
      {"big", "1e+10"},     {"neg0", "-0"},      {"max", "3.4028235e+38"},        {"inf", "-inf"},
      {"nan", "nan"}};
  ExpectEntries(info, texts);
  EXPECT_EQ(-2147483647 - 1, info.GetInt("i"));
  EXPECT_EQ(4294967295u, info.GetUInt32("u"));
  EXPECT_EQ(kkiuint64_Max, info.GetUInt64("u64"));
  EXPECT_EQ(FLT_MAX, info.GetFloat("max"));
  EXPECT_EQ(-HUGE_VALF, info.GetFloat("inf"));
  EXPECT_TRUE(std::isnan(info.GetFloat("nan")));
  EXPECT_TRUE(std::signbit(info.GetFloat("neg0")));
  // The shortest text must read back to the very same float, across the range.
  for (std::uint64_t bits = 1; bits < 0x7F800000u; bits += 40961) {
    const std::uint32_t b = static_cast<std::uint32_t>(bits);
    float value, back;
    std::memcpy(&value, &b, sizeof value);
    info.Set("f", value);
    back = info.GetFloat("f");
    ASSERT_EQ(0, std::memcmp(&value, &back, sizeof value)) << info.GetCString("f").c_str();
  }
}

TEST(MediaInfoTest, GettersConvertWhatIsThereAndDefaultOnlyWhenAbsent) {
  kiMediaInfo info;
  info.DeserializeInfo("n=12abc\nw=abc\nf=1,5\nbig=99999999999\nneg=-3");
  EXPECT_EQ(12, info.GetInt("n", 9));
  EXPECT_EQ(0, info.GetInt("w", 9));
  EXPECT_EQ(9, info.GetInt("absent", 9));
  EXPECT_EQ(2147483647, info.GetInt("big"));
  EXPECT_EQ(4294967295u, info.GetUInt32("big"));
  EXPECT_EQ(1.0f, info.GetFloat("f", 9));
  EXPECT_EQ(9.0f, info.GetFloat("absent", 9));
  EXPECT_EQ(kiuint64(99999999999ull), info.GetUInt64("big", 5));
  EXPECT_EQ(kiuint64(5), info.GetUInt64("w", 5));  // no digit: the default
  EXPECT_EQ(kiuint64(5), info.GetUInt64("neg", 5));
  // Wide text is kept as UTF-8; text that is not UTF-8 gives the default.
  info.Set("w", kiString(u"gr\u00FC\u00DF \U0001F3B5"));
  EXPECT_EQ("gr\xC3\xBC\xC3\x9F \xF0\x9F\x8E\xB5", info.GetCString("w"));
  EXPECT_TRUE(info.GetString("w") == kiString(u"gr\u00FC\u00DF \U0001F3B5"));
  info.Set("bad", "\xC3(");
  EXPECT_TRUE(info.GetString("bad", kiString(u"d")) == kiString(u"d"));
}

TEST(MediaInfoTest, NumbersIgnoreTheProcessLocale) {
  const std::string previous = std::setlocale(LC_ALL, nullptr);
  const char* set = nullptr;
  for (const char* l : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "de_DE"}) {
    if ((set = std::setlocale(LC_ALL, l)) != nullptr) break;
  }
  if (set == nullptr) GTEST_SKIP() << "no decimal-comma locale is installed";
  kiMediaInfo info;
  info.Set("f", 1.5f);
  info.DeserializeInfo("g=2.25");
  const std::string written = info.GetCString("f").c_str();
  const float read = info.GetFloat("g");
  std::setlocale(LC_ALL, previous.c_str());
  EXPECT_EQ("1.5", written);
  EXPECT_EQ(2.25f, read);
}

// ---- The text form ----------------------------------------------------------

TEST(MediaInfoTest, SerializedTextEscapesValuesAndReadsBack) {
  kiMediaInfo info;
  EXPECT_EQ("", info.GetSerializedInfo());
  info.Set("a", "1");
  info.Set("b", "x=y");
  info.Set("ti", "not written");
  EXPECT_EQ("b=x==y\na=1", info.GetSerializedInfo());  // "b" in bucket 0, "a" in bucket 10
  kiMediaInfo back;
  back.Set("a", "replaced");
  back.Set("keep", "1");
  back.DeserializeInfo(info.GetSerializedInfo());
  ExpectEntries(back, {{"a", "1"}, {"b", "x=y"}, {"keep", "1"}});
}

TEST(MediaInfoTest, ReadingTextGivesDefinedEntriesForAnyShape) {
  const struct {
    const char* text;
    Entries entries;
  } rows[] = {
      {"", {}},
      {"a=1\r\nb=2\r\n", {{"a", "1"}, {"b", "2"}}},
      {"a=1\n\rb=2\rc=3\n\nd=4", {{"a", "1"}, {"b", "2"}, {"c", "3"}, {"d", "4"}}},
      {"a=1\n\n\nb=2", {{"a", "1"}, {"\nb", "2"}}},  // a third break joins the next key
      {"junk\nb=2", {{"junk\nb", "2"}}},             // intended: no '=' ends nothing
      {"junk\r\nmore", {}},
      {"a=1\nb=", {{"a", "1"}, {"b", ""}}},
      {"=", {{"", ""}}},
      {"=v\na=1\na=2", {{"", "v"}, {"a", "2"}}},
      {"a=x==y====z", {{"a", "x=y==z"}}},
      {"a====", {{"a", "=="}}},
      {"a=x=y", {{"a", "x=y"}}},
      {"a===x", {{"a", "=x"}}},
  };
  for (const auto& r : rows) {
    SCOPED_TRACE(r.text);
    kiMediaInfo info;
    info.DeserializeInfo(r.text);
    ExpectEntries(info, r.entries);
  }
}

TEST(MediaInfoTest, PeekReadsOneKeyAtALineStart) {
  const struct {
    const char* text;
    const char* key;
    const char* expected;
  } rows[] = {
      {"ba=1\na=2", "a", "2"},    {"ba=1", "a", nullptr},
      {"ab=1\na=2", "a", "2"},    {"a=x==y===z", "a", "x=y==z"},
      {"a=1\r\nb=2", "a", "1\r"}, {"b=1\ra=2", "a", nullptr},
      {"a=1\na=2", "a", "1"},     {"a=", "a", ""},
      {"a", "a", nullptr},        {"x\n=v", "", "v"},
      {"a=1", nullptr, nullptr},  {nullptr, "a", nullptr},
  };
  for (const auto& r : rows) {
    SCOPED_TRACE(r.text != nullptr ? r.text : "(null)");
    char* value = kiMediaInfo::Peek(r.text, r.key);
    if (r.expected == nullptr) {
      EXPECT_EQ(nullptr, value);
    } else {
      EXPECT_STREQ(r.expected, value);
    }
    kiMem_Free(value);
  }
}

// ---- Copies, hooks ----------------------------------------------------------

// Runs under the sanitizers: any order of destruction must neither leak the
// shared table nor free it twice.
TEST(MediaInfoTest, CopiesShareOneTableThatOutlivesTheOriginal) {
  auto original = std::make_unique<kiMediaInfo>();
  original->Set("ti", "T");
  original->Set("k", "1");
  kiMediaInfo copy(*original);
  kiMediaInfo assigned;
  assigned.Set("own", "dropped");  // its own table is released by the assignment
  assigned = copy;
  copy.Set("k", "2");
  copy.Set("ti", "changed");
  EXPECT_EQ("2", original->GetCString("k"));
  EXPECT_EQ("T", original->GetTitle());  // fields are copied, not shared
  EXPECT_EQ("", assigned.GetCString("own"));
  original.reset();
  assigned.Set("after", "x");
  EXPECT_EQ("x", copy.GetCString("after"));
  kiMediaInfo& alias = assigned;
  assigned = alias;

  std::unique_ptr<kiMediaInfo> twin(copy.Duplicate());
  twin->Set("k", "3");
  EXPECT_EQ("2", copy.GetCString("k"));
  EXPECT_EQ("changed", twin->GetTitle());
  EXPECT_EQ(2u, twin->GetCount());
}

TEST(MediaInfoTest, FinalizeAndDescriptionUseFieldsFolderAndTable) {
  kiMediaInfo info;
  EXPECT_EQ("", info.GetMediaInfoAsString(", "));
  info.SetFolder("/media/");
  EXPECT_FALSE(info.Finalize(true));  // no title
  info.Set("ti", ".A/B:C?\x01");
  EXPECT_TRUE(info.Finalize(true));
  EXPECT_EQ("/media/_A_B_C__", info.GetCString("path"));
  info.Set("cr", "Me");
  info.SetFolder("/m");
  EXPECT_FALSE(info.Finalize(false));  // the earlier path is kept
  EXPECT_TRUE(info.Finalize(true));
  EXPECT_EQ("/m/Me - .A_B_C__", info.GetCString("path"));
  info.Set("ti", "T");
  EXPECT_EQ("ti=T; cr=Me; folder=/m; path=/m/Me - .A_B_C__", info.GetMediaInfoAsString("; "));
}

// ---- kiMediaInfoSerializer --------------------------------------------------

// A list holding the text "t", the 32-bit "n" and, when asked, two values of "pair".
kiPropertyList* SampleList(bool withPair) {
  kiPropertyList* list = kiPropertyList_New();
  kiProperty* t = kiProperty_New("t", 1);
  kiProperty_Set_charPtr(t, 0, "x\"y", 1);
  kiProperty* n = kiProperty_New("n", 1);
  kiProperty_Set_uint32(n, 0, 7);
  kiPropertyList_Add(list, t);
  kiPropertyList_Add(list, n);
  if (withPair) {
    kiProperty* pair = kiProperty_New("pair", 2);
    kiProperty_Set_uint32(pair, 0, 1);
    kiProperty_Set_charPtr(pair, 1, "b", 1);
    kiPropertyList_Add(list, pair);
  }
  return list;
}

TEST(MediaInfoSerializerTest, ListBecomesJSONAndComesBack) {
  kiTest::LogCapture log;
  EXPECT_EQ(nullptr, kiMediaInfoSerializer::Deserialize(kiCString()));
  EXPECT_EQ("{,}", kiMediaInfoSerializer::Serialize(nullptr));
  kiPropertyList* list = SampleList(false);
  const kiCString text = kiMediaInfoSerializer::Serialize(list);
  EXPECT_EQ(1, list->refs);  // the walk gives its hold back
  kiPropertyList_Release(list);
  EXPECT_EQ("{\"n\":7,\"t\":\"x\\\"y\",}", text);

  kiPropertyList* back = kiMediaInfoSerializer::Deserialize(text);
  ASSERT_NE(nullptr, back);
  EXPECT_EQ(1, back->refs);
  const kiProperty* t = kiPropertyList_Find(back, "t");
  const kiProperty* n = kiPropertyList_Find(back, "n");
  ASSERT_TRUE(t != nullptr && n != nullptr);
  EXPECT_STREQ("x\"y", t->values[0].value.text);
  EXPECT_EQ(7u, n->values[0].value.u32);
  kiPropertyList_Release(back);
  EXPECT_EQ(0u, log.Count());
}

TEST(MediaInfoSerializerTest, BadTextIsLoggedAndWhatWasBuiltIsHandedOver) {
  kiTest::LogCapture log;
  kiPropertyList* partial = kiMediaInfoSerializer::Deserialize("{\"a\":1,\"b\":");
  const std::vector<kiTest::LogRecord> records = log.Records();
  ASSERT_EQ(1u, records.size());
  EXPECT_EQ(1u, records[0].level);
  EXPECT_EQ(0u, records[0].category);
  EXPECT_EQ("serialize/MediaInfo", records[0].source);
  EXPECT_EQ("Cannot deserialize media info '{\"a\":1,\"b\":'\n", records[0].text);
  ASSERT_NE(nullptr, partial);
  EXPECT_NE(nullptr, kiPropertyList_Find(partial, "a"));
  kiPropertyList_Release(partial);

  // Several values of one property are written without separators, which
  // the reader refuses: such a text does not come back.
  log.Clear();
  kiPropertyList* list = SampleList(true);
  const kiCString text = kiMediaInfoSerializer::Serialize(list);
  kiPropertyList_Release(list);
  EXPECT_EQ("{\"pair\":[1\"b\"],\"n\":7,\"t\":\"x\\\"y\",}", text);
  kiPropertyList_Release(kiMediaInfoSerializer::Deserialize(text));
  ASSERT_EQ(1u, log.Count());
  EXPECT_EQ("Cannot deserialize media info '" + std::string(text.c_str()) + "'\n", log.Texts()[0]);
}

}  // namespace
