// kiFatalError_p.h - what the rest of the library and the tests see of the
// fatal-error reporter. Not installed.
#ifndef KI_PROC_KIFATALERROR_P_H
#define KI_PROC_KIFATALERROR_P_H

#include "ki/Export.h"

// The name of the environment variable that carries the callback address;
// null restores the real one. Lets a test make the store fail.
KI_API void kiFatalError_SetVariableNameForTesting(const char* name);
// The name in use: the launcher keeps it out of the programs it starts, and
// tests plant a value under it by hand.
KI_API const char* kiFatalError_VariableName();

#endif  // KI_PROC_KIFATALERROR_P_H
