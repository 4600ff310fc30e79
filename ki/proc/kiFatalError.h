// kiFatalError.h - the fatal-error reporter, which never returns, and the
// process-wide callback it calls before the process ends.
#ifndef KI_PROC_KIFATALERROR_H
#define KI_PROC_KIFATALERROR_H

#include <cstdint>

#include "ki/Export.h"

// Called with the tag just before the process ends. At most one per process.
typedef void (*kiFatalErrorCallback)(const char* tag);

// Reports and ends the process with status -1 (255 on POSIX), running no exit
// handler. tag is "area:item" ("memory:malloc", "os:mutex", "assert") or null.
// For the memory tags detail and logDetail are sizes, for "assert" they are
// reason texts (a const char* passed as an integer); the console line shows
// detail and the log line logDetail.
[[noreturn]] KI_API void kiFatalError(const char* tag, std::uintptr_t detail = 0,
                                      std::uintptr_t logDetail = 0);

// Registers the callback for every module of the process (it is kept in the
// process environment). Null removes it. A failure to store it is logged and
// otherwise ignored.
KI_API void kiFatalError_SetCallback(kiFatalErrorCallback callback);

#endif  // KI_PROC_KIFATALERROR_H
