// kiPlatform.h - moved to ki/proc/kiPlatform.h with the other procedural interfaces; this
// forwarding header keeps old includes building for one release.
#ifndef KI_OS_KIPLATFORM_H
#define KI_OS_KIPLATFORM_H

#include "ki/proc/kiPlatform.h"

#endif  // KI_OS_KIPLATFORM_H
