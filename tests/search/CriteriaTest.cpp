// CriteriaTest.cpp - criteria as control points send them, parsed and
// evaluated over a small catalogue by an application-side evaluator: which
// items match, which texts are refused, and what every match must satisfy.
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "ki/proc/kiArray.h"
#include "ki/search/ExpressionParser.h"
#include "ki/search/SearchExpression.h"
#include "support/DecimalCommaLocale.h"

namespace {

enum Kind { kText, kNumber, kDate };
struct PropertyInfo {
  const char* name;
  Kind kind;
};
const PropertyInfo kProperties[] = {
    {"upnp:class", kText}, {"dc:title", kText},     {"upnp:artist", kText},
    {"dc:creator", kText}, {"upnp:album", kText},   {"upnp:genre", kText},
    {"@refID", kText},     {"res@duration", kText}, {"upnp:originalTrackNumber", kNumber},
    {"res@size", kNumber}, {"dc:date", kDate}};
constexpr int kPropertyCount = sizeof(kProperties) / sizeof(kProperties[0]);

int IndexOf(const char* name) {
  for (int i = 0; i < kPropertyCount; ++i) {
    if (std::strcmp(kProperties[i].name, name) == 0) return i;
  }
  return -1;
}

// An item holds one text per known property; an empty one is absent.
struct Item {
  std::string id;
  kiCString values[kPropertyCount];
};

Item MakeItem(const char* id, std::vector<std::pair<const char*, const char*>> fields) {
  Item item;
  item.id = id;
  for (const auto& f : fields) item.values[IndexOf(f.first)] = f.second;
  return item;
}

const char kClassTrack[] = "object.item.audioItem.musicTrack";
const char kClassAlbum[] = "object.container.album.musicAlbum";
const char kClassGenre[] = "object.container.genre.musicGenre";

const std::vector<Item>& Catalogue() {
  // One item a line or two reads better than one field a line.
  // clang-format off
  static const std::vector<Item> items = {
      MakeItem("t1", {{"upnp:class", kClassTrack}, {"dc:title", "So What"},
                      {"dc:creator", "Miles Davis"}, {"upnp:genre", "Jazz"},
                      {"upnp:album", "Kind of Blue"}, {"upnp:originalTrackNumber", "1"},
                      {"dc:date", "1959-08-17"}, {"res@duration", "0:09:22.000"}}),
      MakeItem("t2", {{"upnp:class", kClassTrack}, {"dc:title", "Blue in Green"},
                      {"upnp:artist", "MILES DAVIS"}, {"dc:creator", "Bill Evans"},
                      {"upnp:genre", "Jazz"}, {"upnp:album", "Kind of Blue"},
                      {"upnp:originalTrackNumber", "3"}, {"dc:date", "1959-08-17"},
                      {"res@duration", "0:05:37.000"}}),
      MakeItem("t3", {{"upnp:class", kClassTrack}, {"dc:title", "Crazy in Love"},
                      {"upnp:artist", "Beyonce"}, {"upnp:genre", "Pop"},
                      {"upnp:originalTrackNumber", "1"}, {"dc:date", "2003-06-24"},
                      {"res@duration", "0:03:56.000"}}),
      MakeItem("t4", {{"upnp:class", kClassTrack}, {"dc:title", "Love Story"},
                      {"upnp:artist", "Taylor Swift"}, {"upnp:genre", "Country"},
                      {"upnp:originalTrackNumber", "3"}, {"dc:date", "2020-11-13"}}),
      MakeItem("r4", {{"upnp:class", kClassTrack}, {"dc:title", "Love Story"},
                      {"upnp:artist", "Taylor Swift"}, {"@refID", "t4"},
                      {"dc:date", "2020-11-13"}}),
      // derivedfrom is case-sensitive: this class derives from nothing below
      MakeItem("x1", {{"upnp:class", "Object.item.audioItem.musicTrack"},
                      {"dc:title", "Love Shack"}}),
      MakeItem("b1", {{"upnp:class", "object.item.audioItem.audioBroadcast"},
                      {"dc:title", "Late Night Jazz"}, {"upnp:genre", "Jazz"}}),
      MakeItem("a1", {{"upnp:class", kClassAlbum}, {"dc:title", "Kind of Blue"},
                      {"upnp:artist", "Miles Davis"}, {"dc:date", "1959-08-17"}}),
      MakeItem("a2", {{"upnp:class", kClassAlbum}, {"dc:title", "Folklore"},
                      {"dc:date", "2020-07-24"}}),
      MakeItem("a3", {{"upnp:class", kClassAlbum}, {"dc:title", "BLUE LINES"},
                      {"upnp:artist", "Massive Attack"}, {"dc:date", "1991-04-08"}}),
      MakeItem("g1", {{"upnp:class", kClassGenre}, {"dc:title", "Jazz"}, {"upnp:genre", "jazz"}}),
      MakeItem("g2", {{"upnp:class", kClassGenre}, {"dc:title", "Jazz Fusion"},
                      {"upnp:genre", "Jazz Fusion"}}),
      MakeItem("v1", {{"upnp:class", "object.item.videoItem.movie"}, {"dc:title", "Blue Velvet"},
                      {"dc:date", "1986-09-19"}, {"res@duration", "2:00:00.000"},
                      {"res@size", "734003200"}}),
      MakeItem("v2", {{"upnp:class", "object.item.videoItem"}, {"dc:title", "Holiday clip"},
                      {"dc:date", "2020-08-02T14:30:00"}, {"res@size", "52428800"}}),
      MakeItem("p1", {{"upnp:class", "object.item.imageItem.photo"}, {"dc:title", "Beach"},
                      {"dc:date", "2020-08-01T09:12:44"}, {"res@size", "3145728"}}),
      MakeItem("p2", {{"upnp:class", "object.item.imageItem.photo"}, {"dc:title", "New Year"},
                      {"dc:date", "2021-01-01T00:00:00"}}),
  };
  // clang-format on
  return items;
}

// The application's answer for one comparison on one property of item.
bool Answer(kiRelExpression* e, int index, const Item& item) {
  if (index < 0 || item.values[index].IsEmpty()) return e->MatchString(nullptr);
  const kiCString& value = item.values[index];
  const int type = e->GetValueType();
  switch (kProperties[index].kind) {
    case kNumber:
      if (type == kiSearchValue_Integer) return e->MatchInt(value);
      if (type == kiSearchValue_Float) return e->MatchDouble(value);
      break;
    case kDate:
      if (type == kiSearchValue_Date) return e->MatchDate(value);
      break;
    case kText:
      break;
  }
  return e->MatchString(value.c_str());  // exists, text values, text properties
}

// Looks the property up by its name...
class NameEvaluator : public kiSearchExpressionEvaluator {
 public:
  const Item* item = nullptr;
  bool Evaluate(kiRelExpression* e) override { return Answer(e, IndexOf(e->GetProperty()), *item); }
};

// ...or by the number its parser gave it (0: unknown).
class NumberingParser : public kiExpressionParser {
 public:
  explicit NumberingParser(const char* text) : kiExpressionParser(kiCString(text)) {}

 protected:
  int GetPropertyID(const kiCString& property) override { return IndexOf(property) + 1; }
};

class NumberEvaluator : public kiSearchExpressionEvaluator {
 public:
  const Item* item = nullptr;
  bool Evaluate(kiRelExpression* e) override { return Answer(e, e->GetPropertyID() - 1, *item); }
};

template <typename Evaluator>
std::string Matches(kiExpressionParser& parser) {
  Evaluator evaluator;
  std::string ids;
  for (const Item& item : Catalogue()) {
    evaluator.item = &item;
    if (parser.Evaluate(&evaluator)) ids += (ids.empty() ? "" : " ") + item.id;
  }
  return ids;
}

struct Row {
  const char* criteria;
  const char* expected;  // matching ids in catalogue order
};
const Row kRows[] = {
    {"upnp:class derivedfrom \"object.item.audioItem\" and @refID exists false", "t1 t2 t3 t4 b1"},
    {"(upnp:class = \"object.container.album.musicAlbum\" and dc:title contains \"blue\")",
     "a1 a3"},
    {"upnp:class derivedfrom \"object.item.audioItem\" and (dc:creator contains \"miles\" or "
     "upnp:artist contains \"miles\")",
     "t1 t2"},
    {"dc:title contains \"love\" and upnp:class derivedfrom \"object.item\"", "t3 t4 r4"},
    {"upnp:genre = \"Jazz\" and upnp:class = \"object.container.genre.musicGenre\"", "g1"},
    {"dc:date >= \"2020-01-01\" and dc:date < \"2021-01-01\"", "t4 r4 a2 v2 p1"},
    {"upnp:class derivedfrom \"object.item.videoItem\" and res@duration exists true", "v1"},
    {"*", "t1 t2 t3 t4 r4 x1 b1 a1 a2 a3 g1 g2 v1 v2 p1 p2"},
    {"  *  ", "t1 t2 t3 t4 r4 x1 b1 a1 a2 a3 g1 g2 v1 v2 p1 p2"},
    {"upnp:class derivedfrom \"object.item.audioItem\" and upnp:originalTrackNumber > \"2\"",
     "t2 t4"},
    {"upnp:album = \"kind of blue\" and upnp:originalTrackNumber = \"3\"", "t2"},
    {"dc:title like \"Blue*\"", "t2 v1"},
    {"upnp:genre like \"J[a-z]z?\"", "t1 t2 b1"},
    {"upnp:genre like \"*azz*\"", "t1 t2 b1 g1 g2"},
    {"upnp:genre like \"[Jj]azz\"", ""},  // intended: the first character is compared as is
    {"upnp:class derivedfrom \"object.container.album\" and upnp:artist != \"miles davis\"",
     "a2 a3"},
    {"upnp:class derivedfrom \"object.item.audioItem\" and dc:title doesNotContain \"love\"",
     "t1 t2 b1"},
    // and binds tighter than or
    {"upnp:class = \"object.container.album.musicAlbum\" or upnp:class = "
     "\"object.container.genre.musicGenre\" and upnp:genre = \"jazz\"",
     "a1 a2 a3 g1"},
    {"(upnp:class derivedfrom \"object.item.audioItem\" and upnp:genre = \"jazz\") or "
     "(upnp:class derivedfrom \"object.container\" and dc:title contains \"jazz\")",
     "t1 t2 b1 g1 g2"},
    {"dc:title > \"A\"", ""},  // ordering on text never holds
    {"( upnp:class derivedfrom \"object.item.imageItem\" )", "p1 p2"},
    {"upnp:class derivedfrom \"object.item.imageItem\" and\n\tdc:date >= \"2021-01-01\"", "p2"},
    {"res@size >= \"52428800\"", "v1 v2"},
    {"res@size < \"3145728.5\"", "p1"},
};

void ExpectTableMatches() {
  for (const Row& r : kRows) {
    SCOPED_TRACE(r.criteria);
    kiExpressionParser byName{kiCString(r.criteria)};
    ASSERT_TRUE(byName.Parse());
    EXPECT_EQ(r.expected, Matches<NameEvaluator>(byName));
    NumberingParser byNumber(r.criteria);
    ASSERT_TRUE(byNumber.Parse());
    EXPECT_EQ(r.expected, Matches<NumberEvaluator>(byNumber));
    EXPECT_EQ(r.expected, Matches<NumberEvaluator>(byNumber));  // cached values give the same
  }
}

TEST(CriteriaTest, RealWorldCriteriaSelectTheExpectedItems) { ExpectTableMatches(); }

TEST(CriteriaTest, NumbersAndDatesInCriteriaIgnoreTheProcessLocale) {
  kiTest::DecimalCommaLocale locale;
  if (!locale.IsActive()) GTEST_SKIP() << "no decimal-comma locale installed";
  ExpectTableMatches();
}

TEST(CriteriaTest, MalformedCriteriaAreRefusedAndMatchNothing) {
  const char* const texts[] = {
      "",
      "upnp:class=\"object.item\"",                // no spaces around the operator
      "upnp:class derivedfrom object.item",        // unquoted value
      "  upnp:class derivedfrom \"object.item\"",  // leading blanks
      "upnp:class derivedfrom \"object.item\"and dc:title contains \"a\"",
      "upnp:class derivedfrom \"object.item\" AND dc:title contains \"a\"",
      "upnp:class derivedfrom \"object.item\" and",
      "(upnp:class derivedfrom \"object.item\"",
      "dc:title contains \"a\" )",
      "dc:title contains \"love",
      "@refID exists \"false\"",
      "upnp:class isa \"object.item\"",
      "* and dc:title contains \"a\"",
  };
  for (const char* text : texts) {
    SCOPED_TRACE(text);
    kiExpressionParser parser{kiCString(text)};
    EXPECT_FALSE(parser.Parse());
    EXPECT_EQ("", Matches<NameEvaluator>(parser));
    kiArray_t* required = parser.GetDiscriminantCriteria();
    EXPECT_EQ(0u, kiArray_GetCount(required));
    kiArray_Delete(required);
  }
}

// What an index lookup may rely on: the comparisons every match satisfies.
TEST(CriteriaTest, DiscriminantCriteriaAreTheComparisonsEveryMatchSatisfies) {
  const Row rows[] = {
      {"upnp:class derivedfrom \"object.item.audioItem\" and (dc:creator contains \"miles\" or "
       "upnp:artist contains \"miles\")",
       "upnp:class derivedfrom object.item.audioItem;"},
      {"(upnp:class = \"object.container.album.musicAlbum\" and dc:title contains \"blue\")",
       "upnp:class = object.container.album.musicAlbum;dc:title contains blue;"},
      {"dc:date >= \"2020-01-01\" and dc:date < \"2021-01-01\"",
       "dc:date >= 2020-01-01;dc:date < 2021-01-01;"},
      {"upnp:class = \"object.container.album.musicAlbum\" or upnp:class = "
       "\"object.container.genre.musicGenre\" and upnp:genre = \"jazz\"",
       ""},
      {"*", ""},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.criteria);
    kiExpressionParser parser{kiCString(r.criteria)};
    ASSERT_TRUE(parser.Parse());
    kiArray_t* required = parser.GetDiscriminantCriteria();
    std::string listed;
    for (unsigned int i = 0; i < kiArray_GetCount(required); ++i) {
      const auto* e = static_cast<const kiRelExpression*>(kiArray_Get(required, i));
      listed += std::string(e->GetProperty()) + " " + e->GetOperator().c_str() + " " +
                e->GetValue().c_str() + ";";
    }
    kiArray_Delete(required);
    EXPECT_EQ(r.expected, listed);
  }

  kiExpressionParser dates{kiCString("dc:date >= \"2020-01-01\" and dc:date < \"2021-01-01\"")};
  ASSERT_TRUE(dates.Parse());
  kiCString value;
  EXPECT_TRUE(dates.GetRelExpressionValue("dc:date", 1, value));
  EXPECT_EQ("2021-01-01", value);
  EXPECT_FALSE(dates.GetRelExpressionValue("dc:date", 2, value));
  EXPECT_FALSE(dates.GetRelExpressionValue("DC:date", 0, value));
  EXPECT_EQ("dc:date,", dates.GetSearchCriteriaList());
}

}  // namespace
