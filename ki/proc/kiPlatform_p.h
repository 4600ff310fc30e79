// kiPlatform_p.h - the portable rules behind the platform services, shared by
// the platform folders and the tests. Not installed.
#ifndef KI_PROC_KIPLATFORM_P_H
#define KI_PROC_KIPLATFORM_P_H

#include "ki/Export.h"

// Cuts a host name at its first '.', in place, unless it is made of digits and
// dots only and holds exactly three dots (a dotted IPv4 address), which stays
// whole. Null is ignored.
KI_API void kiPlatform_ShortenHostName(char* name);

#endif  // KI_PROC_KIPLATFORM_P_H
