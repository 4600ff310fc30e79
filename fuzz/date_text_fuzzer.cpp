// date_text_fuzzer.cpp - kiDateText_Parse on arbitrary text: every accepted
// text has its fields in range, reads back to the same fields from the
// canonical shape, and converts to a kiDateTime holding those fields when the
// date is plainly representable. Runs in UTC, so no summer-time change moves
// a field.
#include <cstdio>
#include <stdlib.h>
#include <string>
#include <time.h>

#include "ki/proc/kiDateText.h"
#include "ki/search/SearchExpression.h"

#include "FuzzInput.h"

namespace {

constexpr size_t kMaxInput = 256;

struct DateProbe : kiRelExpression {
  static bool Convert(const char* text, kiDateTime& out) { return ConvertToDateTime(text, out); }
};

void Check(bool ok, const char* what, const std::string& text) {
  if (!ok) kiFuzz::Fail((std::string(what) + " on \"" + text + "\"").c_str());
}

const int kLow[kiDateText_FieldCount] = {0, 1, 0, 0, 0, 0, 0, -23, 0};
const int kHigh[kiDateText_FieldCount] = {9999, 12, 31, 23, 59, 59, 999, 23, 59};

// The shape the fields came from: year and month alone when the day was not
// reached (0 is not a day), else every field.
std::string Canonical(const int* f) {
  char buffer[64];
  if (f[kiDateText_Day] == 0) {
    std::snprintf(buffer, sizeof buffer, "%04d-%02d", f[0], f[1]);
  } else {
    const int zone = f[kiDateText_ZoneHours];
    std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02dT%02d:%02d:%02d.%03d%c%02d:%02d", f[0],
                  f[1], f[2], f[3], f[4], f[5], f[6], zone < 0 ? '-' : '+', zone < 0 ? -zone : zone,
                  f[8]);
  }
  return buffer;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  setenv("TZ", "UTC0", 1);
  tzset();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > kMaxInput) return 0;
  // The text ends at the first zero byte, as a C string does.
  const std::string text(std::string(reinterpret_cast<const char*>(data), size).c_str());
  int f[kiDateText_FieldCount];
  const int code = kiDateText_Parse(text.c_str(), f);
  kiDateTime d;
  const bool converted = DateProbe::Convert(text.c_str(), d);
  Check(converted == d.IsValid(), "conversion result differs from IsValid", text);
  if (code != 0) {
    Check(code == -3, "unknown code", text);
    for (int i = 0; i < kiDateText_FieldCount; ++i) Check(f[i] == 0, "failure left a field", text);
    Check(!converted, "converted what does not read", text);
    return 0;
  }
  for (int i = 0; i < kiDateText_FieldCount; ++i) {
    Check(f[i] >= kLow[i] && f[i] <= kHigh[i], "field out of range", text);
  }
  int again[kiDateText_FieldCount];
  const std::string canonical = Canonical(f);
  Check(kiDateText_Parse(canonical.c_str(), again) == 0, "canonical shape refused", text);
  for (int i = 0; i < kiDateText_FieldCount; ++i) {
    Check(again[i] == f[i], "canonical shape reads differently", text);
  }
  if (f[kiDateText_Year] >= 1970 && f[kiDateText_Year] <= 2037 && f[kiDateText_Day] >= 1 &&
      f[kiDateText_Day] <= 28) {
    Check(converted, "plain date not converted", text);
    Check(d.GetYear() == f[0] && d.GetMonth() == f[1] && d.GetDay() == f[2] &&
              d.GetHour() == f[3] && d.GetMinute() == f[4] && d.GetSecond() == f[5],
          "converted to other fields", text);
  }
  return 0;
}
