// kiLogError_p.h - kiLog_Error, the library's one-line log routine for messages
// with no source position of their own. Not exported.
#ifndef KI_PROC_KILOGERROR_P_H
#define KI_PROC_KILOGERROR_P_H

#include "ki/Export.h"

// A level-1, category-0 record tagged "kiLog/Log", line 449, holding the
// formatted message (which ends with "\n" itself).
void kiLog_Error(const char* format, ...) KI_PRINTF(1, 2);

#endif  // KI_PROC_KILOGERROR_P_H
