// datetime_parse_fuzzer.cpp - kiDateTime::ParseISODate and ParseISOTime on
// arbitrary text, in a fixed time zone with summer time. The C library's
// sscanf (the process stays in the "C" locale) is the reference for what the
// three numbers are; a parsed value must format and parse back to itself.
#include <cstdio>
#include <stdlib.h>
#include <string>
#include <time.h>

#include "ki/os/DateTime.h"

#include "FuzzInput.h"

namespace {

constexpr size_t kMaxInput = 256;

void Check(bool ok, const char* what, const std::string& text) {
  if (!ok) kiFuzz::Fail((std::string(what) + " on \"" + text + "\"").c_str());
}

// A start value from the first byte: the epoch, an invalid value, or a winter
// or summer noon of 2020.
kiDateTime Start(unsigned char b) {
  switch (b % 4) {
    case 0:
      return kiDateTime(0L);
    case 1:
      return kiDateTime();
    case 2:
      return kiDateTime(1579176000L);  // 2020-01-16 12:00 UTC
    default:
      return kiDateTime(1594900800L);  // 2020-07-16 12:00 UTC
  }
}

void FuzzDate(const kiDateTime& start, const std::string& text) {
  kiDateTime d = start;
  const bool ok = d.ParseISODate(text.c_str());
  Check(ok == d.IsValid(), "result differs from IsValid", text);
  int y = 0, m = 0, day = 0;
  const bool syntax = std::sscanf(text.c_str(), "%4d-%2d-%2d", &y, &m, &day) == 3;
  const bool inRange = syntax && y >= 1900 && m >= 1 && m <= 12 && day >= 1;
  Check(!ok || inRange, "accepted what the reference refuses", text);
  // Dates well inside the 32-bit range, with a day every month has, are read
  // exactly.
  if (inRange && y >= 1902 && y <= 2037 && day <= 28) {
    Check(ok, "refused a plain date", text);
    Check(d.GetYear() == y && d.GetMonth() == m && d.GetDay() == day, "wrong date", text);
  }
  if (ok) {
    kiDateTime again = start;
    Check(again.ParseISODate(d.FormatISODate()) && again == d, "date does not read back", text);
  }
}

void FuzzTime(const kiDateTime& start, const std::string& text) {
  kiDateTime d = start;
  const bool ok = d.ParseISOTime(text.c_str());
  Check(ok == d.IsValid(), "result differs from IsValid", text);
  int h = 0, mi = 0, s = 0;
  const bool syntax = std::sscanf(text.c_str(), "%2d:%2d:%2d", &h, &mi, &s) == 3;
  const bool inRange = syntax && h <= 24 && mi <= 59 && s >= 0 && s <= 59;
  // Every start lies far from the ends of the range, so the reference decides.
  Check(ok == inRange, "differs from the reference", text);
  if (ok && h >= 0 && h <= 23 && mi >= 0) {
    // No start lies on a day of a summer-time change.
    Check(d.GetHour() == h && d.GetMinute() == mi && d.GetSecond() == s, "wrong time", text);
  }
  if (ok) {
    kiDateTime again = d;
    Check(again.ParseISOTime(d.FormatISOTime()) && again == d, "time does not read back", text);
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
  tzset();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0 || size > kMaxInput) return 0;
  const kiDateTime start = Start(data[0]);
  // The text ends at the first zero byte, as a C string does.
  const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
  const std::string cText(text.c_str());
  FuzzDate(start, cText);
  FuzzTime(start, cText);
  return 0;
}
