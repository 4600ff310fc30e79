// kiOSFault.cpp - the failure switch behind kiOS_FailForTesting; portable, as
// it only counts calls.
#include <atomic>

#include "ki/proc/kiOSThread_p.h"

namespace {

// 0: disarmed; n > 0: the n-th call from now fails. Zero-initialised, so no
// constructor runs at load time.
std::atomic<int> g_armed[kiOSFault_Count];

}  // namespace

void kiOS_FailForTesting(kiOSFault fault, int skip) {
  if (fault < 0 || fault >= kiOSFault_Count) return;
  g_armed[fault].store(skip < 0 ? 0 : skip + 1, std::memory_order_relaxed);
}

bool kiOS_ShouldFail(kiOSFault fault) {
  std::atomic<int>& armed = g_armed[fault];
  int n = armed.load(std::memory_order_relaxed);
  while (n > 0) {
    if (armed.compare_exchange_weak(n, n - 1, std::memory_order_relaxed)) return n == 1;
  }
  return false;
}
