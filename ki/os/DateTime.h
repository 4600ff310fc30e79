// DateTime.h - kiDateTime, a point in time with a microsecond field, built from
// and broken into calendar fields in local time.
#ifndef KI_OS_DATETIME_H
#define KI_OS_DATETIME_H

#include <cstdint>

#include "ki/Export.h"
#include "ki/core/CString.h"
#include "ki/core/UInt64.h"
#include "ki/proc/kiTime.h"

// Seconds since the epoch (signed 32-bit: 1901..2038) and microseconds. The
// value is invalid when the microsecond field is all ones; an invalid value
// also has ticks -1. Calendar fields are read and written in local time (the
// TZ variable), through kiTime_LocalTime and kiTime_MakeTime.
//
// Setters that change calendar fields keep the wall-clock time across a
// daylight-saving change: moving 10:00 in January to July gives 10:00 in July.
// Setters applied to an invalid value leave it invalid.
//
// Intended asymmetries, kept for compatibility:
//   SetYear counts from 1900 (SetYear(120) is 2020; SetYear(2020) leaves the
//   representable range and makes the value invalid), GetYear answers the full
//   year; GetMonth answers 1..12, while SetMonth, Set and GetNumberOfDays take
//   the 0-based Month; Set(long long) and Set(kiuint64) drop the sub-second
//   part; ParseISODate accepts an overlong day and ParseISOTime hour 24 (both
//   normalised into the next month or day).
//
// A value; nothing here locks.
class KI_API kiDateTime {
 public:
  enum Month {
    January = 0,
    February,
    March,
    April,
    May,
    June,
    July,
    August,
    September,
    October,
    November,
    December
  };

  // ---- Construction ------------------------------------------------------
  kiDateTime() : m_ticks(-1), m_micro(kInvalidMicro) {}  // invalid
  explicit kiDateTime(long ticks) { Set(ticks); }        // microseconds 0
  explicit kiDateTime(const kitm& tm) { Set(tm); }
  explicit kiDateTime(const kitimeval& tv) { Set(tv); }
  // Today's date at that time of day, as Set with four fields.
  kiDateTime(unsigned short hour, unsigned short minute, unsigned short second,
             unsigned short millisecond);
  kiDateTime(unsigned short day, Month month, int year, unsigned short hour, unsigned short minute,
             unsigned short second, unsigned short millisecond);
  kiDateTime(const kiDateTime&) = default;
  kiDateTime& operator=(const kiDateTime&) = default;
  kiDateTime& operator=(long ticks) {
    Set(ticks);
    return *this;
  }
  kiDateTime& operator=(const kitm& tm) {
    Set(tm);
    return *this;
  }

  // ---- Setting -------------------------------------------------------------
  // The local broken-down time, converted with its daylight-saving flag as
  // given (negative: let the conversion decide); fields out of range are
  // normalised, milliseconds from 1000 up carry into the seconds. A time that
  // cannot be represented makes the value invalid.
  void Set(const kitm& tm);
  void Set(const kitimeval& tv);  // both fields as they are (-1 microseconds: invalid)
  // Ticks, microseconds 0. Outside the 32-bit range: invalid.
  void Set(const long& ticks);
  // Milliseconds since the epoch; the sub-second part is dropped (intended).
  // Negative or past 2038: invalid.
  void Set(long long ms);
  void Set(const kiuint64& ms);
  // Invalid unless 1970 <= year <= 2037.
  void Set(unsigned short day, Month month, int year, unsigned short hour, unsigned short minute,
           unsigned short second, unsigned short millisecond);
  // The same date at another time of day.
  void Set(unsigned short hour, unsigned short minute, unsigned short second,
           unsigned short millisecond);

  void SetYear(int yearSince1900);  // counts from 1900: intended
  void SetMonth(Month month);
  void SetDay(unsigned short day);
  void SetHour(unsigned short hour);
  void SetMinute(unsigned short minute);
  void SetSecond(unsigned short second);
  void SetMillisecond(unsigned short millisecond);
  void Reset() {  // the epoch
    m_ticks = 0;
    m_micro = 0;
  }
  void ResetTime();  // local midnight of the same day

  // ---- Reading ---------------------------------------------------------------
  // Each getter answers -1 for an invalid value.
  int GetYear() const;   // full year
  int GetMonth() const;  // 1..12 (intended: not a Month)
  int GetDay() const;
  int GetHour() const;
  int GetMinute() const;
  int GetSecond() const;
  // The ticks; -1 for an invalid value.
  long GetTicks() const { return IsValid() ? m_ticks : -1; }
  // Milliseconds since the epoch; kkiuint64_Max for an invalid value.
  kiuint64 GetValue() const;
  // The local broken-down time (millisecond = microseconds / 1000); false for
  // an invalid value or a time the conversion refuses.
  bool FetchTM(kitm& tm) const;
  bool IsValid() const { return m_micro != kInvalidMicro; }

  // ---- Comparison ------------------------------------------------------------
  // Same local date (year, month, day) or time of day (hour, minute, second,
  // millisecond); false when either value is invalid.
  bool IsSameDate(const kiDateTime& other) const;
  bool IsSameTime(const kiDateTime& other) const;
  // Ticks first, then the microsecond field, both as signed 32-bit numbers;
  // two invalid values are equal.
  bool operator==(const kiDateTime& o) const {
    return m_ticks == o.m_ticks && m_micro == o.m_micro;
  }
  bool operator!=(const kiDateTime& o) const { return !(*this == o); }
  bool operator<(const kiDateTime& o) const { return Compare(o) < 0; }
  bool operator<=(const kiDateTime& o) const { return Compare(o) <= 0; }
  bool operator>(const kiDateTime& o) const { return Compare(o) > 0; }
  bool operator>=(const kiDateTime& o) const { return Compare(o) >= 0; }

  // ---- Text ------------------------------------------------------------------
  // "2024-03-05", "07:08:09", "07:08:09.010" and "2024-03-05T07:08:09", in
  // local time and in every locale; empty for an invalid value.
  kiCString FormatISODate() const;
  kiCString FormatISOTime() const;
  kiCString FormatTime() const;
  kiCString FormatISO() const;
  // Reads "yyyy-mm-dd" (as "%04d-%02d-%02d" would; text after it is ignored)
  // and sets that date, keeping the time of day; an invalid value starts from
  // the epoch. Year >= 1900, month 1..12, day >= 1 (an overlong day runs into
  // the next month). On failure the value becomes invalid. Answers IsValid().
  bool ParseISODate(const kiCString& text);
  // Reads "hh:mm:ss" the same way and sets that time of day, keeping the date.
  // Hour <= 24 (24 is midnight of the next day), minute <= 59, second 0..59;
  // like the overlong day, a negative hour or minute is left to the conversion
  // to normalise (intended).
  bool ParseISOTime(const kiCString& text);

  // Shifts the value by the local offset from UTC, so that its local fields
  // read as the UTC time of the original value.
  void ToUTC();

  // ---- Static ------------------------------------------------------------------
  static kiDateTime Now();   // current seconds, microseconds 0
  static kiDateTime UNow();  // current seconds and microseconds
  static int GetCurrentYear();
  // -32768 stands for the current year.
  static bool IsLeapYear(long year);
  // Days of month (0..11) in year (-32768: the current year); 0 for a month
  // outside 0..11.
  static int GetNumberOfDays(Month month, long year);

 private:
  static constexpr std::uint32_t kInvalidMicro = 0xFFFFFFFFu;

  void SetInvalid() {
    m_ticks = -1;
    m_micro = kInvalidMicro;
  }
  int Field(std::int32_t kitm::*field, int offset) const;
  void SetField(std::int32_t kitm::*field, std::int32_t value);
  void SetKeepingClock(kitm fields);
  int Compare(const kiDateTime& o) const;

  std::int32_t m_ticks;
  std::uint32_t m_micro;
};

#endif  // KI_OS_DATETIME_H
