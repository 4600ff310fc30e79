// kiTime.cpp - the portable part of the clock functions: the tables, the
// clock and tick seams, differences, milliseconds and the RFC 1123 date.
#include "ki/proc/kiTime.h"

#include <atomic>
#include <cstdio>

#include "ki/proc/kiLog.h"
#include "ki/proc/kiMem.h"
#include "ki/proc/kiTime_p.h"

KI_LOG_SOURCE("proc/kiTime")

const std::uint16_t kiTime_DaysInMonth[2][12] = {{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31},
                                                 {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31}};
const char* const kiTime_DayNames[7] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
const char* const kiTime_MonthNames[12] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                           "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

namespace {

std::atomic<kiTime_ClockSource> g_clockSource{nullptr};
std::atomic<kiTime_TickSource> g_tickSource{nullptr};

// a - b on 32-bit fields, wrapping instead of overflowing.
std::int32_t Minus(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

}  // namespace

void kiTime_SetClockSourceForTesting(kiTime_ClockSource source) {
  g_clockSource.store(source, std::memory_order_release);
}

void kiTime_SetTickSourceForTesting(kiTime_TickSource source) {
  g_tickSource.store(source, std::memory_order_release);
}

std::uint32_t kiTime_GetTickCount() {
  const kiTime_TickSource source = g_tickSource.load(std::memory_order_acquire);
  return source != nullptr ? source() : kiTime_SystemTickCount();
}

int kiTime_GetTimeOfDay(kitimeval* tv) {
  if (tv == nullptr) return -1;
  const kiTime_ClockSource source = g_clockSource.load(std::memory_order_acquire);
  const std::int64_t us = source != nullptr ? source() : kiTime_SystemMicroseconds();
  std::int64_t seconds = us / 1000000;
  std::int64_t micro = us % 1000000;
  if (micro < 0) {
    micro += 1000000;
    seconds -= 1;
  }
  // The record's seconds are 32-bit: they wrap in 2038.
  tv->tv_sec = static_cast<std::int32_t>(static_cast<std::uint32_t>(seconds));
  tv->tv_usec = static_cast<std::int32_t>(micro);
  return 0;
}

long kiTime_Time(long* t) {
  const kiTime_ClockSource source = g_clockSource.load(std::memory_order_acquire);
  const std::int64_t us = source != nullptr ? source() : kiTime_SystemMicroseconds();
  long seconds = static_cast<long>(us / 1000000);
  if (us % 1000000 < 0) seconds -= 1;
  if (t != nullptr) *t = seconds;
  return seconds;
}

kiuint64 kiTime_ToMilliseconds(const kitimeval& tv) {
  unsigned long long ms = 0;
  if (__builtin_mul_overflow(static_cast<unsigned long long>(tv.tv_sec), 1000ull, &ms)) {
    KI_LOG(kiLogLevel_Error, kiLogCat_Time, "kiTime: kiTime_GetLocalTimeMS overflow 1\n");
  }
  if (__builtin_add_overflow(ms, static_cast<unsigned long long>(tv.tv_usec / 1000), &ms)) {
    KI_LOG(kiLogLevel_Error, kiLogCat_Time, "kiTime: kiTime_GetLocalTimeMS overflow 2\n");
  }
  return kiuint64(ms);
}

kiuint64 kiTime_GetLocalTimeMS(kiuint64* ms) {
  kitimeval now;
  kiTime_GetTimeOfDay(&now);
  const kiuint64 value = kiTime_ToMilliseconds(now);
  if (ms != nullptr) *ms = value;
  return value;
}

int kiTime_Subtract(kitimeval* result, const kitimeval* a, kitimeval* b) {
  if (result == nullptr || a == nullptr || b == nullptr) return 0;
  // Normalise b so that a's microseconds minus b's fall in 0..1000000. The
  // sums are taken in 64 bits; the fields keep 32-bit wrapping.
  const std::int64_t aUs = a->tv_usec;
  std::int64_t bUs = b->tv_usec;
  std::int64_t bSec = b->tv_sec;
  if (aUs < bUs) {
    const std::int64_t n = (bUs - aUs) / 1000000 + 1;
    bUs -= 1000000 * n;
    bSec += n;
  }
  if (aUs - bUs > 1000000) {
    const std::int64_t n = (aUs - bUs) / 1000000;
    bUs += 1000000 * n;
    bSec -= n;
  }
  b->tv_usec = static_cast<std::int32_t>(bUs);
  b->tv_sec = static_cast<std::int32_t>(static_cast<std::uint32_t>(bSec));
  result->tv_sec = Minus(a->tv_sec, b->tv_sec);
  result->tv_usec = Minus(a->tv_usec, b->tv_usec);
  return a->tv_sec < b->tv_sec ? 1 : 0;
}

long kiTime_MSUntil(const kitimeval* deadline) {
  if (deadline == nullptr) return 0;
  kitimeval now;
  kiTime_GetTimeOfDay(&now);
  kitimeval left;
  if (kiTime_Subtract(&left, deadline, &now) != 0) return 0;
  return static_cast<long>(left.tv_sec) * 1000 + left.tv_usec / 1000;
}

char* kiTime_FormatRFC1123Date() {
  const long now = kiTime_Time(nullptr);
  kitm tm = {};
  char text[64];
  if (kiTime_GMTime(&now, &tm) == nullptr || tm.tm_wday < 0 || tm.tm_wday > 6 || tm.tm_mon < 0 ||
      tm.tm_mon > 11) {
    text[0] = '\0';
  } else {
    std::snprintf(text, sizeof text, "%s, %02d %s %04lld %02d:%02d:%02d GMT",
                  kiTime_DayNames[tm.tm_wday], tm.tm_mday, kiTime_MonthNames[tm.tm_mon],
                  tm.tm_year + 1900LL, tm.tm_hour, tm.tm_min, tm.tm_sec);
  }
  return kiMem_Strdup(text);
}
