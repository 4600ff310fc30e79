// kiDebug.h - moved to ki/proc/kiDebug.h with the other procedural interfaces; this
// forwarding header keeps old includes building for one release.
#ifndef KI_OS_KIDEBUG_H
#define KI_OS_KIDEBUG_H

#include "ki/proc/kiDebug.h"

#endif  // KI_OS_KIDEBUG_H
