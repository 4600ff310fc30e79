// TimeZone.h - kiTest::TimeZone: runs a test in a fixed time zone, given as a
// POSIX TZ rule so that no zone database is needed, and restores the previous
// zone afterwards. Header-only, like FakeClock.h.
#ifndef KI_TESTS_SUPPORT_TIMEZONE_H
#define KI_TESTS_SUPPORT_TIMEZONE_H

#include <stdlib.h>
#include <string>
#include <time.h>

namespace kiTest {

// Central Europe: UTC+1, summer time UTC+2 from the last Sunday of March
// 02:00 to the last Sunday of October 03:00.
constexpr const char kCentralEurope[] = "CET-1CEST,M3.5.0,M10.5.0/3";
constexpr const char kUTC[] = "UTC0";

class TimeZone {
 public:
  explicit TimeZone(const char* rule) {
    const char* old = getenv("TZ");
    m_hadOld = old != nullptr;
    if (m_hadOld) m_old = old;
    setenv("TZ", rule, 1);
    tzset();
  }
  ~TimeZone() {
    if (m_hadOld) {
      setenv("TZ", m_old.c_str(), 1);
    } else {
      unsetenv("TZ");
    }
    tzset();
  }
  TimeZone(const TimeZone&) = delete;
  TimeZone& operator=(const TimeZone&) = delete;

 private:
  bool m_hadOld;
  std::string m_old;
};

}  // namespace kiTest

#endif  // KI_TESTS_SUPPORT_TIMEZONE_H
