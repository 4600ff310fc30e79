// kiDateTextTest.cpp - kiDateText_Parse: the walk over pieces and separators,
// field ranges, the zone fields, and what the number reader lets through.
#include <array>
#include <string>

#include <gtest/gtest.h>

#include "ki/proc/kiDateText.h"
#include "support/DecimalCommaLocale.h"

namespace {

using Fields = std::array<int, kiDateText_FieldCount>;

Fields Read(const char* text, int expectedCode = 0) {
  Fields f;
  f.fill(77);
  EXPECT_EQ(expectedCode, kiDateText_Parse(text, f.data())) << (text ? text : "(null)");
  return f;
}

TEST(DateTextTest, AcceptedTextsFillTheirFields) {
  struct Row {
    const char* text;
    Fields fields;
  };
  const Row rows[] = {
      {"2024-03-05", {2024, 3, 5, 0, 0, 0, 0, 0, 0}},
      {"2024-03", {2024, 3, 0, 0, 0, 0, 0, 0, 0}},  // a short text ends anywhere
      {"2024-03-05T07", {2024, 3, 5, 7, 0, 0, 0, 0, 0}},
      {"2024-03-05T07:08:09", {2024, 3, 5, 7, 8, 9, 0, 0, 0}},
      {"2024-03-05T07:08:09.250Z", {2024, 3, 5, 7, 8, 9, 250, 0, 0}},
      {"2024-03-05T07:08:09.5", {2024, 3, 5, 7, 8, 9, 5, 0, 0}},  // a count, not a fraction
      {"2024-03-05T07:08:09Z", {2024, 3, 5, 7, 8, 9, 0, 0, 0}},
      {"2024-03-05T07:08:09+01:30", {2024, 3, 5, 7, 8, 9, 0, 1, 30}},
      {"2024-03-05T07:08:09-05:00", {2024, 3, 5, 7, 8, 9, 0, -5, 0}},
      {"2024-03-05T07:08:09.250-03:15", {2024, 3, 5, 7, 8, 9, 250, -3, 15}},
      {"2024-03-05T07:08:09.250+23", {2024, 3, 5, 7, 8, 9, 250, 23, 0}},
      {"2024-03-05T07:08:09:250", {2024, 3, 5, 7, 8, 9, 250, 0, 0}},  // any separator after seconds
      {"0000-12-31T23:59:59.999", {0, 12, 31, 23, 59, 59, 999, 0, 0}},
      {"9999-01-01", {9999, 1, 1, 0, 0, 0, 0, 0, 0}},
      {"2024- 3-\t5", {2024, 3, 5, 0, 0, 0, 0, 0, 0}},               // leading white space is read
      {"0002024-003-0005", {2024, 3, 5, 0, 0, 0, 0, 0, 0}},          // leading zeros too
      {"2024-03-05T07:08:09Zjunk", {2024, 3, 5, 7, 8, 9, 0, 0, 0}},  // 'Z' ends the walk
      {"2024-03-05T07:08:09Z::", {2024, 3, 5, 7, 8, 9, 0, 0, 0}},    // eight separators
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.text);
    EXPECT_EQ(r.fields, Read(r.text));
  }
}

TEST(DateTextTest, RefusedTextsLeaveEveryFieldZero) {
  const char* const rows[] = {
      nullptr, "", "2024", "2024-", "2024--05", "-2024-03-05", "+2024-03-05", "2024-+3-05",
      // out of range, in field order
      "10000-01-01", "2024-00-05", "2024-13-05", "2024-03-00", "2024-03-32", "2024-03-05T24",
      "2024-03-05T07:60", "2024-03-05T07:08:60", "2024-03-05T07:08:09.1000",
      "2024-03-05T07:08:09+24:00", "2024-03-05T07:08:09+01:60", "99999999999-01",
      // the wrong separator after a field
      "2024:03-05", "2024-03:05", "2024-03-05-07", "2024-03-05T07-08", "2024-03-05T07:08.09",
      "2024-03-05T07:08:09+01-00", "2024-03-05T07:08:09+01:00Z", "2024-03-05T07:08:09Z:.:",
      // not a whole number
      "2024-03-05 ", "2024-03-05t07", "2024-3x-05", "2024-0x3-05", "2024-03-05T07:08:09.25Q"};
  for (const char* text : rows) {
    SCOPED_TRACE(text ? text : "(null)");
    EXPECT_EQ(Fields{}, Read(text, -3));
  }
}

TEST(DateTextTest, NullFieldsAreRefused) { EXPECT_EQ(-3, kiDateText_Parse("2024-03-05", nullptr)); }

TEST(DateTextTest, ReadsTheSameUnderADecimalCommaLocale) {
  kiTest::DecimalCommaLocale locale;
  if (!locale.IsActive()) GTEST_SKIP() << "no decimal-comma locale installed";
  EXPECT_EQ((Fields{2024, 3, 5, 7, 8, 9, 250, 0, 0}), Read("2024-03-05T07:08:09.250Z"));
}

}  // namespace
