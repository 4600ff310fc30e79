// RelExpressionMatchTest.cpp - the matching primitives of kiRelExpression: the
// classification of the value, the operator rules per type, exists, the like
// glob and ConvertToDateTime.
#include <cstddef>
#include <string>

#include <gtest/gtest.h>

#include "ki/search/Like_p.h"
#include "ki/search/SearchExpression.h"
#include "support/DecimalCommaLocale.h"
#include "support/TimeZone.h"

namespace {

enum Primitive { kString, kInt, kDouble, kDate };

struct Row {
  int op;
  const char* value;
  const char* candidate;  // null: absent
  bool expected;
};

template <std::size_t N>
void ExpectRows(Primitive primitive, const Row (&rows)[N]) {
  for (const Row& r : rows) {
    SCOPED_TRACE(::testing::Message() << "op " << r.op << " value \"" << r.value << "\" on "
                                      << (r.candidate ? r.candidate : "(null)"));
    kiRelExpression e("p", 0, "op", r.op, r.value);
    const bool got = primitive == kString   ? e.MatchString(r.candidate)
                     : primitive == kInt    ? e.MatchInt(r.candidate)
                     : primitive == kDouble ? e.MatchDouble(r.candidate)
                                            : e.MatchDate(r.candidate);
    EXPECT_EQ(r.expected, got);
  }
}

// Exposes the protected converter.
struct DateProbe : kiRelExpression {
  static bool Convert(const char* text, kiDateTime& out) { return ConvertToDateTime(text, out); }
};

class RelExpressionMatchTest : public ::testing::Test {
 protected:
  kiTest::TimeZone zone_{kiTest::kUTC};
  kiTest::DecimalCommaLocale locale_;  // the readers ignore it when it is present
};

TEST_F(RelExpressionMatchTest, ValueIsClassifiedIntegerThenFloatThenDateElseString) {
  struct Case {
    int op;
    const char* value;
    int type;
  };
  // clang-format off
  const Case cases[] = {
      {kiSearchOp_Equal, " -7", kiSearchValue_Integer}, {kiSearchOp_Equal, "1.5", kiSearchValue_Float},
      {kiSearchOp_Equal, "2147483648", kiSearchValue_Float},  // past 32 bits
      {kiSearchOp_Equal, "1,5", kiSearchValue_String}, {kiSearchOp_Equal, "12 ", kiSearchValue_String},
      {kiSearchOp_Equal, "2024-03-05T07:08:09+01:00", kiSearchValue_Date},
      {kiSearchOp_Equal, "0000-01-01", kiSearchValue_String},  // reads, does not convert
      {kiSearchOp_Equal, "", kiSearchValue_String}, {kiSearchOp_Exists, "42", kiSearchValue_String},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.value);
    kiRelExpression e("p", 0, "op", c.op, c.value);
    EXPECT_EQ(c.type, e.GetValueType());
  }
}

TEST_F(RelExpressionMatchTest, StringOperatorsFoldAsciiCaseOnly) {
  // clang-format off
  const Row rows[] = {
      {kiSearchOp_Equal, "Rock", "rOCK", true}, {kiSearchOp_Equal, "Rock", "Rocks", false},
      {kiSearchOp_Equal, "", nullptr, true},  // absent reads as empty
      {kiSearchOp_Equal, "\xC3\x89t\xC3\xA9", "\xC3\xA9t\xC3\xA9", false},
      {kiSearchOp_NotEqual, "x", nullptr, true}, {kiSearchOp_NotEqual, "ABC", "abc", false},
      {kiSearchOp_Contains, "BEAT", "the beatles", true}, {kiSearchOp_Contains, "aab", "aaab", true},
      {kiSearchOp_Contains, "beatx", "the beat", false}, {kiSearchOp_Contains, "", nullptr, true},
      {kiSearchOp_DoesNotContain, "BEAT", "the beatles", false},
      {kiSearchOp_DerivedFrom, "object.item", "object.item.audioItem", true},
      {kiSearchOp_DerivedFrom, "object.item", "object.ITEM.audioItem", false},
      {kiSearchOp_Like, "Ab*", "Abba", true}, {kiSearchOp_Like, "ab*", "Abba", false},
      // ordering and other ids never hold for strings; every value type is matched as a string
      {kiSearchOp_Less, "b", "a", false}, {kiSearchOp_GreaterOrEqual, "5", "5", false},
      {kiSearchOp_And, "a", "a", false}, {99, "a", "a", false},
      {kiSearchOp_Equal, "5", "5", true}, {kiSearchOp_Contains, "2024-03", "2024-03-05", true},
  };
  // clang-format on
  ExpectRows(kString, rows);
}

TEST_F(RelExpressionMatchTest, ExistsAnswersFromPresenceThroughMatchStringOnly) {
  // clang-format off
  const Row rows[] = {
      {kiSearchOp_Exists, "true", "x", true}, {kiSearchOp_Exists, "true", "", false},
      {kiSearchOp_Exists, "false", nullptr, true}, {kiSearchOp_Exists, "false", "x", false},
      {kiSearchOp_Exists, "TRUE", "x", false},
  };
  // clang-format on
  ExpectRows(kString, rows);
  // The value of exists is a string, so the typed primitives refuse it.
  const Row typed[] = {{kiSearchOp_Exists, "true", "5", false},
                       {kiSearchOp_Exists, "false", "", false}};
  ExpectRows(kInt, typed);
  ExpectRows(kDouble, typed);
  ExpectRows(kDate, typed);
  kiRelExpression e("p", 0, "exists", kiSearchOp_Exists, "true");
  EXPECT_FALSE(e.MatchDate(kiDateTime(0L)));
}

TEST_F(RelExpressionMatchTest, NumbersReadTheWholeCandidate) {
  // clang-format off
  const Row ints[] = {
      {kiSearchOp_Equal, "10", " +10", true}, {kiSearchOp_Less, "10", "-11", true},
      {kiSearchOp_LessOrEqual, "10", "10", true}, {kiSearchOp_Greater, "10", "10", false},
      {kiSearchOp_GreaterOrEqual, "10", "11", true}, {kiSearchOp_NotEqual, "10", "9", true},
      {kiSearchOp_Contains, "10", "10", false},
      // an unreadable candidate fails every operator, != included
      {kiSearchOp_NotEqual, "10", "10 ", false}, {kiSearchOp_NotEqual, "10", "10.0", false},
      {kiSearchOp_NotEqual, "10", "0xA", false}, {kiSearchOp_NotEqual, "10", "2147483648", false},
      {kiSearchOp_NotEqual, "10", "", false},
      {kiSearchOp_Equal, "1.0", "1", false},  // the value is not an integer
  };
  const Row doubles[] = {
      {kiSearchOp_Equal, "1.5", "15e-1", true}, {kiSearchOp_Less, "1.5", "1.25", true},
      {kiSearchOp_GreaterOrEqual, "1.5", "2147483648", true},
      {kiSearchOp_NotEqual, "1.5", "1,5", false}, {kiSearchOp_NotEqual, "1.5", "1.5x", false},
      {kiSearchOp_Equal, "2", "2", false},  // "2" is an integer value
  };
  // clang-format on
  ExpectRows(kInt, ints);
  ExpectRows(kDouble, doubles);
}

TEST_F(RelExpressionMatchTest, DatesCompareInLocalTimeWithoutTheZone) {
  const char* k = "2024-03-05T10:00:00";
  // clang-format off
  const Row rows[] = {
      {kiSearchOp_Equal, k, "2024-03-05T10:00:00+05:00", true},
      {kiSearchOp_Equal, k, "2024-03-05T10:00:00.000Z", true},
      {kiSearchOp_Greater, k, "2024-03-05T10:00:00.001", true},
      {kiSearchOp_Less, k, "2024-03-05", true}, {kiSearchOp_LessOrEqual, k, "2024-03-06", false},
      {kiSearchOp_Equal, "2024-03-01", "2024-02-30", true},  // normalised
      {kiSearchOp_NotEqual, k, "garbage", false}, {kiSearchOp_NotEqual, k, "0000-01-01", false},
      {kiSearchOp_Equal, "10", "10", false},  // an integer value is no date
  };
  // clang-format on
  ExpectRows(kDate, rows);

  kiRelExpression e("p", 0, ">=", kiSearchOp_GreaterOrEqual, k);
  EXPECT_TRUE(e.MatchDate(kiDateTime(1709632800L)));  // 10:00 UTC
  EXPECT_FALSE(e.MatchDate(kiDateTime(1709632799L)));
  kiRelExpression ne("p", 0, "!=", kiSearchOp_NotEqual, k);
  EXPECT_FALSE(ne.MatchDate(kiDateTime()));  // an invalid date compares with nothing
}

TEST_F(RelExpressionMatchTest, ConvertToDateTimeNeedsAReadableRepresentableText) {
  kiDateTime d;
  EXPECT_TRUE(DateProbe::Convert("2024-03-05T07:08:09.250-11:00", d));
  EXPECT_STREQ("2024-03-05T07:08:09", d.FormatISO().c_str());  // the zone is not applied
  EXPECT_STREQ("07:08:09.250", d.FormatTime().c_str());
  EXPECT_TRUE(DateProbe::Convert("2037-12-31T23:59:59", d));
  EXPECT_TRUE(DateProbe::Convert("1970-01-01", d));
  EXPECT_EQ(0, d.GetTicks());
  for (const char* text : {"2038-02-01", "1969-12-31", "0000-01-01", "2024", "", "x-y",
                           static_cast<const char*>(nullptr)}) {
    SCOPED_TRACE(text ? text : "(null)");
    EXPECT_FALSE(DateProbe::Convert(text, d));
    EXPECT_FALSE(d.IsValid());
  }
}

// Glob rules, the quick first-byte test and the case behaviour in one table.
TEST(LikeTest, GlobRules) {
  struct Case {
    const char* pattern;
    const char* text;
    bool expected;
  };
  // clang-format off
  const Case cases[] = {
      {"*", "", true}, {"", "", true}, {"", "a", false}, {"?", "", false}, {"abc", "abcd", false},
      {"abc", "ABC", false}, {"a?c", "ac", false}, {"a*", "a", true}, {"**a***c", "ac", true},
      {"a*b*c", "axbybzc", true}, {"a*b*c", "axbyz", false}, {"*ab", "aab", true},
      {"?", "\xC3\xA9", false},  // bytes, not characters
      // sets, negated sets, ranges, literal ] and -
      {"x[abc]", "xb", true}, {"x[^abc]", "xb", false}, {"x[^abc]", "xd", true},
      {"x[a-c]", "xc", true}, {"x[A-C]", "xc", false}, {"x[c-a]", "xb", false},
      {"x[]a]", "x]", true}, {"x[^]a]", "x]", false}, {"x[-a]", "x-", true}, {"x[a-]", "x-", true},
      {"x[\\]]", "x]", true}, {"x[\x80-\xFF]", "x\xE9", true},
      // a '[' without a closing ']', and escapes
      {"x[ab", "x[ab", true}, {"a\\*", "a*", true}, {"a\\*", "ab", false}, {"a\\", "a\\", true},
      // the quick test compares the first bytes literally
      {"[ab]c", "ac", false}, {"[[]c", "[c", true}, {"\\a", "a", false}, {"Ab*", "ab", false},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::Message() << "'" << c.pattern << "' on '" << c.text << "'");
    EXPECT_EQ(c.expected, kiSearch_Like(c.pattern, c.text));
  }
  EXPECT_FALSE(kiSearch_Like(nullptr, ""));
  EXPECT_FALSE(kiSearch_Like("*", nullptr));
}

// Backtracking to the last star only: a long text against many stars stays
// quick (an exponential matcher would never finish).
TEST(LikeTest, ManyStarsOnALongTextStayLinear) {
  const std::string text(20000, 'a');
  EXPECT_FALSE(kiSearch_Like("*a*a*a*a*a*a*a*a*a*a*a*a*b", text.c_str()));
  EXPECT_TRUE(kiSearch_Like("*a*a*a*a*a*a*a*a*a*a*a*a", (text + "b" + text).c_str()));
}

}  // namespace
