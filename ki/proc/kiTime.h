// kiTime.h - the clock and calendar functions of the procedural layer: current
// time with microseconds, broken-down local and universal time, differences of
// time values, the RFC 1123 date, and the system's millisecond tick counter.
#ifndef KI_PROC_KITIME_H
#define KI_PROC_KITIME_H

#include <cstdint>

#include "ki/Export.h"
#include "ki/core/UInt64.h"

// Seconds since 1970-01-01 00:00:00 UTC and microseconds (0..999999 when
// normalised). Both are signed 32-bit: the seconds cover 1901..2038.
struct kitimeval {
  std::int32_t tv_sec;
  std::int32_t tv_usec;
};

// A broken-down time. Unlike the C library's struct tm, the daylight-saving
// flag stands before the day of week and the day of year, and a millisecond
// field ends the record.
struct kitm {
  std::int32_t tm_sec;    // 0..59
  std::int32_t tm_min;    // 0..59
  std::int32_t tm_hour;   // 0..23
  std::int32_t tm_mday;   // 1..31
  std::int32_t tm_mon;    // 0..11
  std::int32_t tm_year;   // year - 1900
  std::int32_t tm_isdst;  // > 0 in effect, 0 not, < 0 unknown (let the conversion decide)
  std::int32_t tm_wday;   // 0 = Sunday
  std::int32_t tm_yday;   // 0..365
  std::int32_t tm_msec;   // 0..999
};

// Days per month: row 0 a common year, row 1 a leap year; months 0..11.
extern KI_API const std::uint16_t kiTime_DaysInMonth[2][12];
// "Sun".."Sat" by day of week, and "Jan".."Dec" by month 0..11.
extern KI_API const char* const kiTime_DayNames[7];
extern KI_API const char* const kiTime_MonthNames[12];

// The current UTC time from the system clock, with microseconds. Answers 0,
// or -1 (nothing written) when tv is null.
KI_API int kiTime_GetTimeOfDay(kitimeval* tv);

// The current seconds since the epoch, also stored through t when it is not
// null. The full 64-bit count: it does not end in 2038.
KI_API long kiTime_Time(long* t);

// Milliseconds since the epoch (UTC, despite the name) into *ms, when ms is
// not null; also the result. A 64-bit overflow is logged (category 58) and the
// value computed so far is kept.
KI_API kiuint64 kiTime_GetLocalTimeMS(kiuint64* ms);

// Seconds since the epoch for the local broken-down time *tm, which is
// normalised in place (out-of-range fields carry over, the millisecond field
// included, and the day of week and of year are filled in). -1 when the time
// cannot be represented in 32-bit seconds; *tm is then left unchanged.
KI_API long kiTime_MakeTime(kitm* tm);

// The local broken-down time of *t into *tm (millisecond 0); answers tm, or
// null when t or tm is null or the time cannot be converted. A change of the
// TZ variable takes effect at the next call.
KI_API kitm* kiTime_LocalTime(const long* t, kitm* tm);

// The universal broken-down time of *t into *tm; the millisecond field is left
// as it is. Answers tm, or null as kiTime_LocalTime does.
KI_API kitm* kiTime_GMTime(const long* t, kitm* tm);

// *result = *a - *b, after normalising *b in place against *a. Answers 1 when
// a is earlier than b (by whole seconds), else 0. Null pointers answer 0 and
// change nothing.
KI_API int kiTime_Subtract(kitimeval* result, const kitimeval* a, kitimeval* b);

// Milliseconds from now until *deadline; 0 when it lies in the past or
// deadline is null.
KI_API long kiTime_MSUntil(const kitimeval* deadline);

// The current time as "Sun, 06 Nov 1994 08:49:37 GMT" (RFC 1123), in a new
// block owned by the caller (kiMem_Free).
KI_API char* kiTime_FormatRFC1123Date();

// The system's millisecond tick counter: monotonic, unrelated to the wall
// clock, and cut to 32 bits, so it wraps after about 49.7 days. Differences
// taken in unsigned 32-bit arithmetic stay right across the wrap.
KI_API std::uint32_t kiTime_GetTickCount();

#endif  // KI_PROC_KITIME_H
