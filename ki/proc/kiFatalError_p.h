// kiFatalError_p.h - test seam of the fatal-error reporter. Not installed.
#ifndef KI_PROC_KIFATALERROR_P_H
#define KI_PROC_KIFATALERROR_P_H

#include "ki/Export.h"

// The name of the environment variable that carries the callback address;
// null restores the real one. Lets a test make the store fail.
KI_API void kiFatalError_SetVariableNameForTesting(const char* name);
// The real name, for tests that plant a value by hand.
KI_API const char* kiFatalError_VariableNameForTesting();

#endif  // KI_PROC_KIFATALERROR_P_H
