// FakeClock.h - kiTest::FakeClock and kiTest::FakeTicks: replace the wall
// clock and the millisecond tick counter of ki while they live, so that time
// is tested without sleeping. One of each at a time; header-only because the
// seams belong to ki, which the support library does not link.
#ifndef KI_TESTS_SUPPORT_FAKECLOCK_H
#define KI_TESTS_SUPPORT_FAKECLOCK_H

#include <atomic>
#include <cstdint>

#include "ki/proc/kiTime_p.h"

namespace kiTest {

// The wall clock, in microseconds since the epoch.
class FakeClock {
 public:
  explicit FakeClock(std::int64_t microseconds) {
    Now().store(microseconds);
    kiTime_SetClockSourceForTesting(&Read);
  }
  ~FakeClock() { kiTime_SetClockSourceForTesting(nullptr); }
  FakeClock(const FakeClock&) = delete;
  FakeClock& operator=(const FakeClock&) = delete;

  void Set(std::int64_t microseconds) { Now().store(microseconds); }
  void Advance(std::int64_t microseconds) { Now().fetch_add(microseconds); }

 private:
  static std::atomic<std::int64_t>& Now() {
    static std::atomic<std::int64_t> now{0};
    return now;
  }
  static std::int64_t Read() { return Now().load(); }
};

// The 32-bit tick counter; Advance wraps like the real one.
class FakeTicks {
 public:
  explicit FakeTicks(std::uint32_t start) {
    Now().store(start);
    kiTime_SetTickSourceForTesting(&Read);
  }
  ~FakeTicks() { kiTime_SetTickSourceForTesting(nullptr); }
  FakeTicks(const FakeTicks&) = delete;
  FakeTicks& operator=(const FakeTicks&) = delete;

  void Advance(std::uint32_t ms) { Now().fetch_add(ms); }

 private:
  static std::atomic<std::uint32_t>& Now() {
    static std::atomic<std::uint32_t> now{0};
    return now;
  }
  static std::uint32_t Read() { return Now().load(); }
};

}  // namespace kiTest

#endif  // KI_TESTS_SUPPORT_FAKECLOCK_H
