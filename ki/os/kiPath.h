// kiPath.h - moved to ki/proc/kiPath.h with the other procedural interfaces; this
// forwarding header keeps old includes building for one release.
#ifndef KI_OS_KIPATH_H
#define KI_OS_KIPATH_H

#include "ki/proc/kiPath.h"

#endif  // KI_OS_KIPATH_H
