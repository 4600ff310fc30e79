// kiFile.h - moved to ki/proc/kiFile.h with the other procedural interfaces; this
// forwarding header keeps old includes building for one release.
#ifndef KI_OS_KIFILE_H
#define KI_OS_KIFILE_H

#include "ki/proc/kiFile.h"

#endif  // KI_OS_KIFILE_H
