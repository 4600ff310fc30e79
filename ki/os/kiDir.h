// kiDir.h - moved to ki/proc/kiDir.h with the other procedural interfaces; this
// forwarding header keeps old includes building for one release.
#ifndef KI_OS_KIDIR_H
#define KI_OS_KIDIR_H

#include "ki/proc/kiDir.h"

#endif  // KI_OS_KIDIR_H
