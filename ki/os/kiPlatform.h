// kiPlatform.h - process environment access of the platform layer.
#ifndef KI_OS_KIPLATFORM_H
#define KI_OS_KIPLATFORM_H

#include "ki/Export.h"

// A new copy of the variable's value, owned by the caller (kiMem_Free), or
// null when it is not set or name is null.
KI_API char* kiPlatform_GetEnv(const char* name);

// Sets (or with a null value, removes) a variable of the process environment.
// Returns 0, or -1 when the name is refused or the environment is full.
KI_API int kiPlatform_SetEnv(const char* name, const char* value);

#endif  // KI_OS_KIPLATFORM_H
