// kiTime_p.h - the platform's clock primitives behind kiTime, and the test
// seams that replace them. Not installed.
#ifndef KI_PROC_KITIME_P_H
#define KI_PROC_KITIME_P_H

#include <cstdint>

#include "ki/Export.h"
#include "ki/proc/kiTime.h"

// Implemented once per platform folder.
// Microseconds since the epoch from the system's real-time clock.
std::int64_t kiTime_SystemMicroseconds();
// Milliseconds of a monotonic clock, cut to 32 bits.
std::uint32_t kiTime_SystemTickCount();

// Replace the clock (microseconds since the epoch) and the tick counter until
// called again with null. Process-wide; for tests only.
typedef std::int64_t (*kiTime_ClockSource)();
typedef std::uint32_t (*kiTime_TickSource)();
KI_API void kiTime_SetClockSourceForTesting(kiTime_ClockSource source);
KI_API void kiTime_SetTickSourceForTesting(kiTime_TickSource source);

// tv as milliseconds since the epoch, with the two overflow messages of
// kiTime_GetLocalTimeMS. Negative seconds convert as C++ converts them.
KI_API kiuint64 kiTime_ToMilliseconds(const kitimeval& tv);

#endif  // KI_PROC_KITIME_P_H
