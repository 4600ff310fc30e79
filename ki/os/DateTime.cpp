// DateTime.cpp - kiDateTime over the kiTime conversions.
#include "ki/os/DateTime.h"

namespace {

bool IsSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// Reads one "%<width>d" conversion the way scanf does, in every locale: white
// space is skipped, then at most `width` characters, a sign included, of which
// at least one digit.
bool ScanInt(const char*& p, int width, int* value) {
  while (IsSpace(*p)) ++p;
  const char* q = p;
  bool negative = false;
  if (*q == '+' || *q == '-') {
    negative = *q == '-';
    ++q;
    --width;
  }
  int result = 0;
  int digits = 0;
  for (; digits < width && *q >= '0' && *q <= '9'; ++digits, ++q) result = result * 10 + (*q - '0');
  if (digits == 0) return false;
  *value = negative ? -result : result;
  p = q;
  return true;
}

// "%0<firstWidth>d<sep>%02d<sep>%02d": the count of numbers read (0..3).
int ScanThree(const char* p, int firstWidth, char separator, int* first, int* second, int* third) {
  if (!ScanInt(p, firstWidth, first)) return 0;
  if (*p++ != separator || !ScanInt(p, 2, second)) return 1;
  if (*p++ != separator || !ScanInt(p, 2, third)) return 2;
  return 3;
}

}  // namespace

kiDateTime::kiDateTime(unsigned short hour, unsigned short minute, unsigned short second,
                       unsigned short millisecond)
    : kiDateTime(Now()) {
  Set(hour, minute, second, millisecond);
}

kiDateTime::kiDateTime(unsigned short day, Month month, int year, unsigned short hour,
                       unsigned short minute, unsigned short second, unsigned short millisecond) {
  Set(day, month, year, hour, minute, second, millisecond);
}

// ---- Setting -----------------------------------------------------------------

void kiDateTime::Set(const kitm& tm) {
  kitm fields = tm;
  const long ticks = kiTime_MakeTime(&fields);
  if (ticks == -1) {
    SetInvalid();
    return;
  }
  m_ticks = static_cast<std::int32_t>(ticks);
  m_micro = static_cast<std::uint32_t>(fields.tm_msec) * 1000u;
}

void kiDateTime::Set(const kitimeval& tv) {
  m_ticks = tv.tv_sec;
  m_micro = static_cast<std::uint32_t>(tv.tv_usec);
  if (m_micro == kInvalidMicro) m_ticks = -1;  // an invalid value always has ticks -1
}

void kiDateTime::Set(const long& ticks) {
  if (ticks < INT32_MIN || ticks > INT32_MAX) {
    SetInvalid();
    return;
  }
  m_ticks = static_cast<std::int32_t>(ticks);
  m_micro = 0;
}

void kiDateTime::Set(long long ms) {
  const unsigned long long seconds = static_cast<unsigned long long>(ms) / 1000u;
  if (seconds > 2147483647u) {
    SetInvalid();
    return;
  }
  m_ticks = static_cast<std::int32_t>(seconds);
  // Always 0: the sub-second part is dropped on purpose, kept for compatibility.
  m_micro =
      static_cast<std::uint32_t>((static_cast<unsigned long long>(ms) - seconds * 1000u) / 1000u);
}

void kiDateTime::Set(const kiuint64& ms) {
  const unsigned long long value = ms.GetValue();
  const unsigned long long seconds = value / 1000u;
  if (seconds > 2147483647u) {
    SetInvalid();
    return;
  }
  m_ticks = static_cast<std::int32_t>(seconds);
  m_micro = static_cast<std::uint32_t>((value - seconds * 1000u) / 1000u);  // 0, as above
}

void kiDateTime::Set(unsigned short day, Month month, int year, unsigned short hour,
                     unsigned short minute, unsigned short second, unsigned short millisecond) {
  if (year < 1970 || year > 2037) {
    SetInvalid();
    return;
  }
  kitm fields = {};
  fields.tm_sec = second;
  fields.tm_min = minute;
  fields.tm_hour = hour;
  fields.tm_mday = day;
  fields.tm_mon = month;
  fields.tm_year = year - 1900;
  fields.tm_isdst = -1;
  fields.tm_msec = millisecond;
  Set(fields);
}

void kiDateTime::Set(unsigned short hour, unsigned short minute, unsigned short second,
                     unsigned short millisecond) {
  kitm fields;
  if (!FetchTM(fields)) return;
  fields.tm_hour = hour;
  fields.tm_min = minute;
  fields.tm_sec = second;
  fields.tm_msec = millisecond;
  SetKeepingClock(fields);
}

// Converts a copy once to learn whether daylight saving is in effect at the
// new fields, takes that flag when it differs, then converts for real: the
// fields keep their wall-clock meaning across a change of the flag.
void kiDateTime::SetKeepingClock(kitm fields) {
  kitm probe = fields;
  if (kiTime_MakeTime(&probe) != -1 && probe.tm_isdst != fields.tm_isdst) {
    fields.tm_isdst = probe.tm_isdst;
  }
  Set(fields);
}

void kiDateTime::SetField(std::int32_t kitm::*field, std::int32_t value) {
  kitm fields;
  if (!FetchTM(fields)) return;
  fields.*field = value;
  SetKeepingClock(fields);
}

void kiDateTime::SetYear(int yearSince1900) { SetField(&kitm::tm_year, yearSince1900); }
void kiDateTime::SetMonth(Month month) { SetField(&kitm::tm_mon, month); }
void kiDateTime::SetDay(unsigned short day) { SetField(&kitm::tm_mday, day); }
void kiDateTime::SetHour(unsigned short hour) { SetField(&kitm::tm_hour, hour); }
void kiDateTime::SetMinute(unsigned short minute) { SetField(&kitm::tm_min, minute); }
void kiDateTime::SetSecond(unsigned short second) { SetField(&kitm::tm_sec, second); }
void kiDateTime::SetMillisecond(unsigned short millisecond) {
  SetField(&kitm::tm_msec, millisecond);
}

void kiDateTime::ResetTime() {
  kitm fields;
  if (!FetchTM(fields)) return;
  fields.tm_hour = 0;
  fields.tm_min = 0;
  fields.tm_sec = 0;
  fields.tm_msec = 0;
  SetKeepingClock(fields);
}

// ---- Reading -----------------------------------------------------------------

bool kiDateTime::FetchTM(kitm& tm) const {
  if (!IsValid()) return false;
  const long ticks = m_ticks;
  kitm fields;
  if (kiTime_LocalTime(&ticks, &fields) == nullptr) return false;
  fields.tm_msec = static_cast<std::int32_t>(m_micro / 1000u);
  tm = fields;
  return true;
}

int kiDateTime::Field(std::int32_t kitm::*field, int offset) const {
  kitm fields;
  return FetchTM(fields) ? fields.*field + offset : -1;
}

int kiDateTime::GetYear() const { return Field(&kitm::tm_year, 1900); }
int kiDateTime::GetMonth() const { return Field(&kitm::tm_mon, 1); }
int kiDateTime::GetDay() const { return Field(&kitm::tm_mday, 0); }
int kiDateTime::GetHour() const { return Field(&kitm::tm_hour, 0); }
int kiDateTime::GetMinute() const { return Field(&kitm::tm_min, 0); }
int kiDateTime::GetSecond() const { return Field(&kitm::tm_sec, 0); }

kiuint64 kiDateTime::GetValue() const {
  if (!IsValid()) return kkiuint64_Max;
  return kiuint64(static_cast<long long>(m_ticks) * 1000 + m_micro / 1000u);
}

// ---- Comparison --------------------------------------------------------------

int kiDateTime::Compare(const kiDateTime& o) const {
  if (m_ticks != o.m_ticks) return m_ticks < o.m_ticks ? -1 : 1;
  const std::int32_t a = static_cast<std::int32_t>(m_micro);
  const std::int32_t b = static_cast<std::int32_t>(o.m_micro);
  return a < b ? -1 : (a > b ? 1 : 0);
}

bool kiDateTime::IsSameDate(const kiDateTime& other) const {
  kitm a;
  kitm b;
  if (!FetchTM(a) || !other.FetchTM(b)) return false;
  return a.tm_year == b.tm_year && a.tm_mon == b.tm_mon && a.tm_mday == b.tm_mday;
}

bool kiDateTime::IsSameTime(const kiDateTime& other) const {
  kitm a;
  kitm b;
  if (!FetchTM(a) || !other.FetchTM(b)) return false;
  return a.tm_hour == b.tm_hour && a.tm_min == b.tm_min && a.tm_sec == b.tm_sec &&
         a.tm_msec == b.tm_msec;
}

// ---- Text --------------------------------------------------------------------

kiCString kiDateTime::FormatISODate() const {
  kitm f;
  if (!FetchTM(f)) return kiCString();
  return kiCString::Format("%04d-%02d-%02d", f.tm_year + 1900, f.tm_mon + 1, f.tm_mday);
}

kiCString kiDateTime::FormatISOTime() const {
  kitm f;
  if (!FetchTM(f)) return kiCString();
  return kiCString::Format("%02d:%02d:%02d", f.tm_hour, f.tm_min, f.tm_sec);
}

kiCString kiDateTime::FormatTime() const {
  kitm f;
  if (!FetchTM(f)) return kiCString();
  return kiCString::Format("%02d:%02d:%02d.%03d", f.tm_hour, f.tm_min, f.tm_sec, f.tm_msec);
}

kiCString kiDateTime::FormatISO() const {
  if (!IsValid()) return kiCString();
  return FormatISODate() + "T" + FormatISOTime();
}

bool kiDateTime::ParseISODate(const kiCString& text) {
  if (!IsValid()) Reset();
  kitm fields;
  int year = 0;
  int month = 0;
  int day = 0;
  if (!FetchTM(fields) || ScanThree(text.c_str(), 4, '-', &year, &month, &day) != 3 ||
      year < 1900 || month < 1 || month > 12 || day < 1) {
    SetInvalid();
    return false;
  }
  // No upper bound for the day: the conversion runs it into the next month
  // (intended).
  fields.tm_year = year - 1900;
  fields.tm_mon = month - 1;
  fields.tm_mday = day;
  SetKeepingClock(fields);
  return IsValid();
}

bool kiDateTime::ParseISOTime(const kiCString& text) {
  if (!IsValid()) Reset();
  kitm fields;
  int hour = 0;
  int minute = 0;
  int second = 0;
  // Hour 24 is midnight of the next day (intended).
  if (!FetchTM(fields) || ScanThree(text.c_str(), 2, ':', &hour, &minute, &second) != 3 ||
      hour > 24 || minute > 59 || second < 0 || second > 59) {
    SetInvalid();
    return false;
  }
  fields.tm_hour = hour;
  fields.tm_min = minute;
  fields.tm_sec = second;
  SetKeepingClock(fields);
  return IsValid();
}

void kiDateTime::ToUTC() {
  kitm local;
  if (!FetchTM(local)) return;
  long ticks = m_ticks;
  if (local.tm_isdst > 0) ticks -= 3600;
  kitm utc;
  if (kiTime_GMTime(&ticks, &utc) == nullptr) {
    SetInvalid();
    return;
  }
  utc.tm_msec = local.tm_msec;
  Set(utc);  // the UTC fields read back as local time
}

// ---- Static ------------------------------------------------------------------

kiDateTime kiDateTime::Now() { return kiDateTime(kiTime_Time(nullptr)); }

kiDateTime kiDateTime::UNow() {
  kitimeval now;
  kiTime_GetTimeOfDay(&now);
  return kiDateTime(now);
}

int kiDateTime::GetCurrentYear() { return Now().GetYear(); }

bool kiDateTime::IsLeapYear(long year) {
  if (year == -32768) year = GetCurrentYear();
  return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int kiDateTime::GetNumberOfDays(Month month, long year) {
  if (month < January || month > December) return 0;
  return kiTime_DaysInMonth[IsLeapYear(year) ? 1 : 0][month];
}
