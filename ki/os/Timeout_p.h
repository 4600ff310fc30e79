// Timeout_p.h - the classes' time-outs in the OS layer's 32-bit form. Not
// installed.
#ifndef KI_OS_TIMEOUT_P_H
#define KI_OS_TIMEOUT_P_H

#include <cstdint>

#include "ki/proc/kiOSThread.h"

// unsigned long is 64 bits wide on LP64 systems: every value from 0xFFFFFFFF
// up (ULONG_MAX included) is a wait without limit rather than a cut one.
inline std::uint32_t kiOS_TimeoutFromLong(unsigned long ms) {
  return ms >= kiOS_Infinite ? kiOS_Infinite : static_cast<std::uint32_t>(ms);
}

#endif  // KI_OS_TIMEOUT_P_H
