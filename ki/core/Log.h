// Log.h - moved to ki/proc/kiLog.h with the other procedural interfaces; this
// forwarding header keeps old includes building for one release.
#ifndef KI_CORE_LOG_H
#define KI_CORE_LOG_H

#include "ki/proc/kiLog.h"

#endif  // KI_CORE_LOG_H
