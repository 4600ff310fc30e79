// kiDebug.h - debugger output for the platform layer.
#ifndef KI_PROC_KIDEBUG_H
#define KI_PROC_KIDEBUG_H

#include "ki/Export.h"

// Writes at most 254 bytes of message and a line feed to the debugger's
// channel (standard error on POSIX), then breaks into the debugger when one is
// attached (SIGTRAP on POSIX); without a debugger nothing else happens. Null
// writes an empty line.
KI_API void kiDebug_Output(const char* message);

#endif  // KI_PROC_KIDEBUG_H
