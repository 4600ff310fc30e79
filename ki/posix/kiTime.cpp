// kiTime.cpp - the clocks and the calendar conversions on POSIX: the real-time
// clock in microseconds, CLOCK_MONOTONIC as the tick counter, and the C
// library's conversions with the fields reordered.
#include "ki/proc/kiTime.h"

#include <cerrno>
#include <cstdint>
#include <time.h>

#include "ki/proc/kiTime_p.h"

namespace {

// The fields both records hold, copied by name: their order differs. The
// millisecond field is the caller's business.
template <typename From, typename To>
void CopyFields(const From& in, To* out) {
  out->tm_sec = in.tm_sec;
  out->tm_min = in.tm_min;
  out->tm_hour = in.tm_hour;
  out->tm_mday = in.tm_mday;
  out->tm_mon = in.tm_mon;
  out->tm_year = in.tm_year;
  out->tm_isdst = in.tm_isdst;
  out->tm_wday = in.tm_wday;
  out->tm_yday = in.tm_yday;
}

void ToPlatform(const kitm& in, struct tm* out) {
  *out = {};
  CopyFields(in, out);
}

void FromPlatform(const struct tm& in, kitm* out) { CopyFields(in, out); }

}  // namespace

std::int64_t kiTime_SystemMicroseconds() {
  timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  return static_cast<std::int64_t>(now.tv_sec) * 1000000 + now.tv_nsec / 1000;
}

std::uint32_t kiTime_SystemTickCount() {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  const std::uint64_t ms = static_cast<std::uint64_t>(now.tv_sec) * 1000u +
                           static_cast<std::uint64_t>(now.tv_nsec) / 1000000u;
  return static_cast<std::uint32_t>(ms);
}

long kiTime_MakeTime(kitm* tm) {
  if (tm == nullptr) return -1;
  // Whole seconds of the millisecond field carry into the seconds.
  std::int64_t carry = tm->tm_msec / 1000;
  std::int64_t msec = tm->tm_msec % 1000;
  if (msec < 0) {
    msec += 1000;
    carry -= 1;
  }
  const std::int64_t seconds = tm->tm_sec + carry;
  if (seconds < INT32_MIN || seconds > INT32_MAX) return -1;
  struct tm fields;
  ToPlatform(*tm, &fields);
  fields.tm_sec = static_cast<int>(seconds);
  errno = 0;
  const time_t result = mktime(&fields);
  if ((result == static_cast<time_t>(-1) && errno != 0) || result < INT32_MIN ||
      result > INT32_MAX) {
    return -1;
  }
  FromPlatform(fields, tm);
  tm->tm_msec = static_cast<std::int32_t>(msec);
  return static_cast<long>(result);
}

kitm* kiTime_LocalTime(const long* t, kitm* tm) {
  if (t == nullptr || tm == nullptr) return nullptr;
  tzset();  // localtime_r alone may keep a zone read before TZ changed
  const time_t value = static_cast<time_t>(*t);
  struct tm fields;
  if (localtime_r(&value, &fields) == nullptr) return nullptr;
  FromPlatform(fields, tm);
  tm->tm_msec = 0;
  return tm;
}

kitm* kiTime_GMTime(const long* t, kitm* tm) {
  if (t == nullptr || tm == nullptr) return nullptr;
  const time_t value = static_cast<time_t>(*t);
  struct tm fields;
  if (gmtime_r(&value, &fields) == nullptr) return nullptr;
  FromPlatform(fields, tm);
  return tm;
}
