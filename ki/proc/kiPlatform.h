// kiPlatform.h - process services of the platform layer: the environment,
// launching programs, and the host name.
#ifndef KI_PROC_KIPLATFORM_H
#define KI_PROC_KIPLATFORM_H

#include "ki/Export.h"

// A new copy of the variable's value, owned by the caller (kiMem_Free), or
// null when it is not set or name is null.
KI_API char* kiPlatform_GetEnv(const char* name);

// Sets (or with a null value, removes) a variable of the process environment.
// Returns 0, or -1 when the name is refused or the environment is full.
KI_API int kiPlatform_SetEnv(const char* name, const char* value);

// Starts program (a UTF-8 path; without '/' it is searched in PATH) with the
// arguments of the text arguments (null or empty for none), split by the rules
// of kiCommandLine_Split, and does not wait for it to end. The program gets
// this process's environment and standard descriptors, default signal
// handling and an empty signal mask; other descriptors are closed where the
// system allows. It is reaped when it ends, so it never stays a zombie.
// Answers 0 once the program is running; -1 when it cannot be started
// ("Unable to launch '%s' (Error = %d)", a null program is error 22), or when
// it was not ready within 5 seconds ("The application '%s' has not started
// before the %d seconds timeout (Error = %d, %d)"; the program keeps running).
// The messages name "\"program\" arguments", or the program alone when there
// are no arguments; category 7.
KI_API int kiPlatform_Launch(const char* program, const char* arguments);

// The value of a named host property in a new block (kiMem_Free). Only
// "hostname" is known (exactly so): the computer's name up to its first '.',
// or whole when it is a dotted IPv4 address. Null for any other name, a null
// name, or when the system cannot tell (a name of 64 bytes or more included).
KI_API char* kiPlatform_GetHostName(const char* name);

#endif  // KI_PROC_KIPLATFORM_H
