// DateTimeTest.cpp - kiDateTime: validity, the setters and their intended
// asymmetries, daylight-saving changes, comparison, formats and parsing, all in
// fixed time zones.
#include <gtest/gtest.h>

#include "ki/os/DateTime.h"
#include "support/FakeClock.h"
#include "support/TimeZone.h"

namespace {

class DateTimeTest : public ::testing::Test {
 protected:
  kiTest::TimeZone m_zone{kiTest::kCentralEurope};
};

// 2024-01-15 10:00 and 2024-07-01 12:00, local time in Central Europe.
constexpr long kWinter = 1705309200;
constexpr long kSummer = 1719828000;

kiDateTime At(long ticks) { return kiDateTime(ticks); }

TEST_F(DateTimeTest, InvalidValue) {
  const kiDateTime invalid;
  EXPECT_FALSE(invalid.IsValid());
  EXPECT_EQ(-1, invalid.GetTicks());
  EXPECT_EQ(kkiuint64_Max, invalid.GetValue());
  EXPECT_EQ(-1, invalid.GetYear());
  EXPECT_EQ(-1, invalid.GetHour());
  EXPECT_TRUE(invalid.FormatISO().IsEmpty());
  kitm tm;
  EXPECT_FALSE(invalid.FetchTM(tm));
  EXPECT_FALSE(invalid.IsSameDate(invalid));
  EXPECT_TRUE(invalid == kiDateTime());

  // Setters leave an invalid value invalid; a microsecond field of all ones
  // always comes with ticks -1.
  kiDateTime d;
  d.SetDay(3);
  d.ResetTime();
  EXPECT_FALSE(d.IsValid());
  d.Set(kitimeval{1234, -1});
  EXPECT_FALSE(d.IsValid());
  EXPECT_TRUE(d == invalid);

  d.Reset();
  EXPECT_TRUE(d.IsValid());
  EXPECT_EQ(0, d.GetTicks());
}

TEST_F(DateTimeTest, MillisecondSettersDropTheSubSecondPart) {
  kiDateTime d;
  d.Set(1577880000123LL);
  EXPECT_EQ(1577880000, d.GetTicks());
  EXPECT_EQ(1577880000000ull, d.GetValue().GetValue());  // intended: .123 is dropped
  d.Set(kiuint64(1577880000999ull));
  EXPECT_EQ(1577880000000ull, d.GetValue().GetValue());

  d.Set(-1LL);  // unsigned division: far past 2038
  EXPECT_FALSE(d.IsValid());
  d.Set(2147483648000LL);
  EXPECT_FALSE(d.IsValid());
  d.Set(2147483647999LL);
  EXPECT_EQ(2147483647, d.GetTicks());
  d.Set(kiuint64(2147483648000ull));
  EXPECT_FALSE(d.IsValid());

  d.Set(4294967296L);  // ticks beyond 32 bits
  EXPECT_FALSE(d.IsValid());
  d.Set(kitimeval{100, 250000});
  EXPECT_EQ(100250ull, d.GetValue().GetValue());
}

TEST_F(DateTimeTest, FieldSettersAndTheirAsymmetries) {
  kiDateTime d(15, kiDateTime::January, 2024, 10, 0, 0, 0);
  ASSERT_EQ(kWinter, d.GetTicks());
  EXPECT_EQ(1, d.GetMonth());  // 1-based, while Set and SetMonth take 0-based
  EXPECT_EQ(2024, d.GetYear());

  d.SetYear(120);  // counts from 1900
  EXPECT_EQ(2020, d.GetYear());
  d.SetDay(32);  // normalised into February
  EXPECT_EQ(2, d.GetMonth());
  EXPECT_EQ(1, d.GetDay());
  d.SetMonth(kiDateTime::March);
  d.SetHour(25);
  EXPECT_EQ("2020-03-02T01:00:00", kiCString(d.FormatISO()));
  d.SetMillisecond(1500);  // carries into the seconds
  EXPECT_EQ("01:00:01.500", kiCString(d.FormatTime()));
  d.SetYear(2020);  // the 39th century: out of range
  EXPECT_FALSE(d.IsValid());

  // The seven-field form takes 1970..2037 only.
  EXPECT_FALSE(kiDateTime(1, kiDateTime::January, 1969, 12, 0, 0, 0).IsValid());
  EXPECT_FALSE(kiDateTime(1, kiDateTime::January, 2038, 0, 0, 0, 0).IsValid());
  EXPECT_TRUE(kiDateTime(31, kiDateTime::December, 2037, 23, 59, 59, 999).IsValid());
}

TEST_F(DateTimeTest, SettersKeepTheWallClockAcrossSummerTime) {
  kiDateTime d = At(kWinter);
  d.SetMonth(kiDateTime::July);
  EXPECT_EQ(10, d.GetHour());
  EXPECT_EQ(kWinter + 182 * 86400 - 3600, d.GetTicks());

  // Midnight of the day summer time begins is still standard time.
  kiDateTime spring(31, kiDateTime::March, 2024, 12, 0, 0, 0);
  spring.ResetTime();
  EXPECT_EQ(1711839600, spring.GetTicks());  // 2024-03-30 23:00 UTC
  EXPECT_EQ(31, spring.GetDay());

  // 01:00 on that day, moved to 12:00: summer time by then.
  kiDateTime early(31, kiDateTime::March, 2024, 1, 0, 0, 0);
  early.Set(12, 0, 0, 0);
  EXPECT_EQ(1711879200, early.GetTicks());  // 10:00 UTC

  // In the hour that occurs twice in autumn, a setter keeps the side it is on.
  kiDateTime second = At(1729991400);  // 02:10 standard time
  second.SetMinute(30);
  EXPECT_EQ(1729991400 + 20 * 60, second.GetTicks());
  kiDateTime first = At(1729987800);  // 02:10 summer time
  first.SetMinute(30);
  EXPECT_EQ(1729987800 + 20 * 60, first.GetTicks());

  kiDateTime parsed = At(kWinter);
  ASSERT_TRUE(parsed.ParseISODate("2024-07-01"));
  EXPECT_EQ("2024-07-01T10:00:00", kiCString(parsed.FormatISO()));
}

TEST_F(DateTimeTest, ParseISODate) {
  kiDateTime fromInvalid;
  ASSERT_TRUE(fromInvalid.ParseISODate("2020-02-03"));
  EXPECT_EQ("2020-02-03T01:00:00", kiCString(fromInvalid.FormatISO()));  // the epoch's time of day

  struct Case {
    const char* text;
    const char* date;  // null: invalid
  };
  const Case cases[] = {
      {"2020-02-31", "2020-03-02"},  // an overlong day runs on: intended
      {"2020-2-3", "2020-02-03"},
      {" 2020- 02- 03", "2020-02-03"},  // white space before each number, as scanf reads
      {"2020-02-03T23:00 and more", "2020-02-03"},
      {"1899-01-01", nullptr},
      {"2020-13-01", nullptr},
      {"2020-00-10", nullptr},
      {"2020-01-00", nullptr},
      {"20200-01-01", nullptr},  // five digits: the fifth is not a '-'
      {"2020/01/01", nullptr},
      {"2020-01", nullptr},
      {"", nullptr},
      {"+2020-01-01", nullptr},  // the sign counts in the width: year 202
      {"2100-01-01", nullptr},   // past 2038
  };
  for (const Case& c : cases) {
    kiDateTime d = At(kWinter);
    EXPECT_EQ(c.date != nullptr, d.ParseISODate(c.text)) << c.text;
    if (c.date != nullptr) {
      EXPECT_EQ(c.date, kiCString(d.FormatISODate())) << c.text;
      EXPECT_EQ("10:00:00", kiCString(d.FormatISOTime())) << c.text;
    } else {
      EXPECT_FALSE(d.IsValid()) << c.text;
    }
  }
}

TEST_F(DateTimeTest, ParseISOTime) {
  struct Case {
    const char* text;
    const char* iso;  // null: invalid
  };
  const Case cases[] = {
      {"07:08:09", "2024-01-15T07:08:09"},
      {"24:00:00", "2024-01-16T00:00:00"},  // hour 24: midnight of the next day
      {"-1:00:00", "2024-01-14T23:00:00"},  // a negative hour is normalised: intended
      {"23:60:00", nullptr},
      {"10:00:60", nullptr},
      {"10:00:-1", nullptr},
      {"25:00:00", nullptr},
      {"10:00", nullptr},
      {"-50:50:07", nullptr},  // two characters for the hour, the sign included
  };
  for (const Case& c : cases) {
    kiDateTime d = At(kWinter);
    EXPECT_EQ(c.iso != nullptr, d.ParseISOTime(c.text)) << c.text;
    EXPECT_EQ(c.iso != nullptr ? c.iso : "", kiCString(d.FormatISO())) << c.text;
  }
}

TEST_F(DateTimeTest, ComparisonAndSameness) {
  const kiDateTime a(kitimeval{100, 5});
  const kiDateTime b(kitimeval{100, 6});
  const kiDateTime c(kitimeval{101, 0});
  EXPECT_TRUE(a < b && b < c && a <= a && c > a && c >= b && a != b);
  EXPECT_FALSE(a == b);
  // Invalid is (-1, -1) as signed numbers: before the epoch's first second.
  EXPECT_TRUE(kiDateTime() < kiDateTime(kitimeval{-1, 0}));

  kiDateTime morning(15, kiDateTime::January, 2024, 8, 0, 0, 250);
  kiDateTime evening(15, kiDateTime::January, 2024, 20, 0, 0, 250);
  kiDateTime nextMorning(16, kiDateTime::January, 2024, 8, 0, 0, 250);
  EXPECT_TRUE(morning.IsSameDate(evening));
  EXPECT_FALSE(morning.IsSameDate(nextMorning));
  EXPECT_TRUE(morning.IsSameTime(nextMorning));
  EXPECT_FALSE(morning.IsSameTime(evening));
}

TEST_F(DateTimeTest, ToUTCShiftsByTheLocalOffset) {
  kiDateTime summer = At(kSummer);
  summer.ToUTC();
  EXPECT_EQ("2024-07-01T10:00:00", kiCString(summer.FormatISO()));
  kiDateTime winter(kitimeval{kWinter, 42000});
  winter.ToUTC();
  EXPECT_EQ("09:00:00.042", kiCString(winter.FormatTime()));
  kiDateTime invalid;
  invalid.ToUTC();
  EXPECT_FALSE(invalid.IsValid());
}

TEST_F(DateTimeTest, CurrentTimeAndCalendar) {
  kiTest::FakeClock clock(1719828000654321);  // 2024-07-01 12:00:00.654321 local
  EXPECT_EQ(kiDateTime(kitimeval{1719828000, 0}), kiDateTime::Now());
  EXPECT_EQ(kiDateTime(kitimeval{1719828000, 654321}), kiDateTime::UNow());
  EXPECT_EQ(2024, kiDateTime::GetCurrentYear());
  const kiDateTime today(9, 30, 0, 0);
  EXPECT_EQ("2024-07-01T09:30:00", kiCString(today.FormatISO()));

  EXPECT_FALSE(kiDateTime::IsLeapYear(1900));
  EXPECT_TRUE(kiDateTime::IsLeapYear(2000));
  EXPECT_TRUE(kiDateTime::IsLeapYear(-32768));  // the current year, 2024
  EXPECT_EQ(29, kiDateTime::GetNumberOfDays(kiDateTime::February, 2024));
  EXPECT_EQ(28, kiDateTime::GetNumberOfDays(kiDateTime::February, 2100));
  EXPECT_EQ(29, kiDateTime::GetNumberOfDays(kiDateTime::February, -32768));
  EXPECT_EQ(0, kiDateTime::GetNumberOfDays(static_cast<kiDateTime::Month>(12), 2024));
}

}  // namespace
