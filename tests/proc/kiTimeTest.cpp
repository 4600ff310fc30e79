// kiTimeTest.cpp - the clock and calendar functions: the clock split into
// seconds and microseconds, its overflow messages, the conversions in fixed
// time zones, differences, the RFC 1123 date and the tick counter.
#include <chrono>
#include <cstdint>
#include <cstring>
#include <string>
#include <time.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ki/proc/kiMem.h"
#include "ki/proc/kiTime.h"
#include "ki/proc/kiTime_p.h"
#include "support/FakeClock.h"
#include "support/LogCapture.h"
#include "support/TimeZone.h"

namespace {

using ::testing::ElementsAre;

kitm Fields(int year, int month0, int day, int hour, int minute, int second, int isdst = -1,
            int ms = 0) {
  kitm tm = {};
  tm.tm_year = year - 1900;
  tm.tm_mon = month0;
  tm.tm_mday = day;
  tm.tm_hour = hour;
  tm.tm_min = minute;
  tm.tm_sec = second;
  tm.tm_isdst = isdst;
  tm.tm_msec = ms;
  return tm;
}

TEST(kiTimeTest, ClockSplitsIntoSecondsAndMicroseconds) {
  kiTest::FakeClock clock(1577880000123456);
  kitimeval tv = {};
  EXPECT_EQ(0, kiTime_GetTimeOfDay(&tv));
  EXPECT_EQ(1577880000, tv.tv_sec);
  EXPECT_EQ(123456, tv.tv_usec);
  long stored = 0;
  EXPECT_EQ(1577880000, kiTime_Time(&stored));
  EXPECT_EQ(1577880000, stored);
  kiuint64 ms;
  EXPECT_EQ(1577880000123ull, kiTime_GetLocalTimeMS(&ms).GetValue());
  EXPECT_EQ(1577880000123ull, ms.GetValue());

  // Before the epoch the microseconds stay in 0..999999.
  clock.Set(-1);
  kiTime_GetTimeOfDay(&tv);
  EXPECT_EQ(-1, tv.tv_sec);
  EXPECT_EQ(999999, tv.tv_usec);
  EXPECT_EQ(-1, kiTime_Time(nullptr));
  EXPECT_EQ(-1, kiTime_GetTimeOfDay(nullptr));
}

TEST(kiTimeTest, RealClockFollowsTheSystemClock) {
  kitimeval tv = {};
  kiTime_GetTimeOfDay(&tv);
  const auto system = std::chrono::duration_cast<std::chrono::seconds>(
                          std::chrono::system_clock::now().time_since_epoch())
                          .count();
  EXPECT_NEAR(static_cast<double>(system), tv.tv_sec, 2.0);
  EXPECT_GE(tv.tv_usec, 0);
  EXPECT_LT(tv.tv_usec, 1000000);
}

TEST(kiTimeTest, MillisecondOverflowsAreLoggedAndTheValueKept) {
  kiTest::LogCapture log;
  {
    kiTest::FakeClock clock(-1000000);  // a clock before 1970: seconds -1
    kiTime_GetLocalTimeMS(nullptr);
  }
  // The microsecond part only overflows when it is out of range.
  const kiuint64 value = kiTime_ToMilliseconds(kitimeval{-1, 2147483647});
  EXPECT_EQ(static_cast<unsigned long long>(-1000LL) + 2147483ull, value.GetValue());
  ASSERT_EQ(3u, log.Count());
  const auto records = log.Records();
  EXPECT_EQ(1u, records[0].level);
  EXPECT_EQ(58u, records[0].category);
  EXPECT_EQ("proc/kiTime", records[0].source);
  EXPECT_THAT(log.Texts(), ElementsAre("kiTime: kiTime_GetLocalTimeMS overflow 1\n",
                                       "kiTime: kiTime_GetLocalTimeMS overflow 1\n",
                                       "kiTime: kiTime_GetLocalTimeMS overflow 2\n"));
}

TEST(kiTimeTest, ConversionsFollowTheTimeZoneAndItsSummerTime) {
  kiTest::TimeZone zone(kiTest::kCentralEurope);
  kitm tm = {};
  long summer = 1719828000;  // 2024-07-01 10:00 UTC
  ASSERT_EQ(&tm, kiTime_LocalTime(&summer, &tm));
  EXPECT_EQ(12, tm.tm_hour);
  EXPECT_EQ(1, tm.tm_isdst);
  EXPECT_EQ(1, tm.tm_wday);  // a Monday
  EXPECT_EQ(182, tm.tm_yday);
  EXPECT_EQ(0, tm.tm_msec);

  tm.tm_msec = 777;
  ASSERT_EQ(&tm, kiTime_GMTime(&summer, &tm));
  EXPECT_EQ(10, tm.tm_hour);
  EXPECT_EQ(0, tm.tm_isdst);
  EXPECT_EQ(777, tm.tm_msec);  // left as it was

  kitm winter = Fields(2024, 0, 15, 10, 0, 0);
  EXPECT_EQ(1705309200, kiTime_MakeTime(&winter));
  EXPECT_EQ(0, winter.tm_isdst);
  kitm july = Fields(2024, 6, 1, 12, 0, 0);
  EXPECT_EQ(summer, kiTime_MakeTime(&july));
  EXPECT_EQ(1, july.tm_isdst);
  // A summer date given with the flag "not in effect" reads as standard time.
  kitm forced = Fields(2024, 6, 1, 12, 0, 0, 0);
  EXPECT_EQ(summer + 3600, kiTime_MakeTime(&forced));
  EXPECT_EQ(13, forced.tm_hour);

  // A change of TZ is seen by the next conversion.
  kiTest::TimeZone utc(kiTest::kUTC);
  ASSERT_NE(nullptr, kiTime_LocalTime(&summer, &tm));
  EXPECT_EQ(10, tm.tm_hour);
}

TEST(kiTimeTest, MakeTimeNormalisesOrLeavesTheFieldsAlone) {
  kiTest::TimeZone zone(kiTest::kUTC);
  kitm tm = Fields(2020, 0, 32, 11, 59, 59, 0, 1500);  // 32 January, 1.5 s past
  EXPECT_EQ(1580558400, kiTime_MakeTime(&tm));         // 2020-02-01 12:00:00
  EXPECT_EQ(1, tm.tm_mon);
  EXPECT_EQ(1, tm.tm_mday);
  EXPECT_EQ(0, tm.tm_sec);
  EXPECT_EQ(500, tm.tm_msec);
  EXPECT_EQ(6, tm.tm_wday);
  EXPECT_EQ(31, tm.tm_yday);

  kitm negative = Fields(2020, 0, 1, 0, 0, 0, 0, -1);
  EXPECT_EQ(1577836799, kiTime_MakeTime(&negative));
  EXPECT_EQ(999, negative.tm_msec);

  // Past 2038 the seconds no longer fit 32 bits.
  const kitm late = Fields(2100, 0, 1, 0, 0, 0);
  kitm copy = late;
  EXPECT_EQ(-1, kiTime_MakeTime(&copy));
  EXPECT_EQ(0, std::memcmp(&late, &copy, sizeof copy));
  EXPECT_EQ(-1, kiTime_MakeTime(nullptr));
  EXPECT_EQ(nullptr, kiTime_LocalTime(nullptr, &copy));
  EXPECT_EQ(nullptr, kiTime_GMTime(nullptr, &copy));
  long t = 0;
  EXPECT_EQ(nullptr, kiTime_LocalTime(&t, nullptr));
}

TEST(kiTimeTest, SubtractNormalisesTheSecondOperand) {
  struct Case {
    kitimeval a, b;
    kitimeval result, bAfter;
    int earlier;
  };
  const Case cases[] = {
      {{5, 100}, {3, 200}, {1, 999900}, {4, -999800}, 0},
      {{5, 300}, {3, 200}, {2, 100}, {3, 200}, 0},
      {{3, 200}, {5, 100}, {-2, 100}, {5, 100}, 1},
      {{5, 0}, {3, 2500000}, {-1, 500000}, {6, -500000}, 1},  // b's microseconds run over
      {{5, 3500000}, {3, 0}, {5, 500000}, {0, 3000000}, 0},   // a's do: the excess moves to b
  };
  for (const Case& c : cases) {
    kitimeval b = c.b;
    kitimeval result = {};
    EXPECT_EQ(c.earlier, kiTime_Subtract(&result, &c.a, &b));
    EXPECT_EQ(c.result.tv_sec, result.tv_sec);
    EXPECT_EQ(c.result.tv_usec, result.tv_usec);
    EXPECT_EQ(c.bAfter.tv_sec, b.tv_sec);
    EXPECT_EQ(c.bAfter.tv_usec, b.tv_usec);
  }
  kitimeval x = {1, 1};
  EXPECT_EQ(0, kiTime_Subtract(nullptr, &x, &x));
}

TEST(kiTimeTest, MillisecondsUntilADeadline) {
  kiTest::FakeClock clock(1000000000250000);  // 1000000000 s + 250 ms
  const kitimeval ahead = {1000000001, 750000};
  EXPECT_EQ(1500, kiTime_MSUntil(&ahead));
  const kitimeval sameSecondEarlier = {1000000000, 100000};
  EXPECT_EQ(0, kiTime_MSUntil(&sameSecondEarlier));
  const kitimeval past = {999999999, 900000};
  EXPECT_EQ(0, kiTime_MSUntil(&past));
  EXPECT_EQ(0, kiTime_MSUntil(nullptr));
}

TEST(kiTimeTest, RFC1123DateOfTheCurrentTime) {
  kiTest::TimeZone zone(kiTest::kCentralEurope);  // the date is universal time
  kiTest::FakeClock clock(784111777000000);
  char* date = kiTime_FormatRFC1123Date();
  EXPECT_STREQ("Sun, 06 Nov 1994 08:49:37 GMT", date);
  kiMem_Free(date);
}

TEST(kiTimeTest, Tables) {
  for (int leap = 0; leap < 2; ++leap) {
    int days = 0;
    for (int m = 0; m < 12; ++m) days += kiTime_DaysInMonth[leap][m];
    EXPECT_EQ(365 + leap, days);
  }
  EXPECT_STREQ("Sat", kiTime_DayNames[6]);
  EXPECT_STREQ("Dec", kiTime_MonthNames[11]);
}

TEST(kiTimeTest, TickCounterIsMonotonicAndReplaceable) {
  timespec mono;
  clock_gettime(CLOCK_MONOTONIC, &mono);
  const std::uint32_t expected = static_cast<std::uint32_t>(
      static_cast<std::uint64_t>(mono.tv_sec) * 1000u + mono.tv_nsec / 1000000);
  const std::uint32_t first = kiTime_GetTickCount();
  EXPECT_LT(first - expected, 1000u);  // unsigned: also across a wrap
  EXPECT_LT(kiTime_GetTickCount() - first, 1000u);
  {
    kiTest::FakeTicks ticks(0xFFFFFFF0u);
    EXPECT_EQ(0xFFFFFFF0u, kiTime_GetTickCount());
    ticks.Advance(0x20);
    EXPECT_EQ(0x10u, kiTime_GetTickCount());
  }
  EXPECT_LT(kiTime_GetTickCount() - first, 1000u);
}

}  // namespace
