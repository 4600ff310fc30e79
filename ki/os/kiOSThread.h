// kiOSThread.h - moved to ki/proc/kiOSThread.h with the other procedural interfaces; this
// forwarding header keeps old includes building for one release.
#ifndef KI_OS_KIOSTHREAD_H
#define KI_OS_KIOSTHREAD_H

#include "ki/proc/kiOSThread.h"

#endif  // KI_OS_KIOSTHREAD_H
