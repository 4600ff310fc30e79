// Log_p.h - what the record side (Log.cpp) and the output side (LogOutput.cpp)
// of kivoToolsLog share. Not installed.
#ifndef KILOG_LOG_P_H
#define KILOG_LOG_P_H

#include "kiLog/Log.h"

namespace kiLogInternal {

// Hands a finished record to the capture hook and, unless the hook consumes
// it, writes it to the destination as one line. Takes the library's lock; a
// record written from inside the capture hook (same thread) goes straight to
// the destination.
void Emit(const kiLog_Entry& entry);

}  // namespace kiLogInternal

#endif  // KILOG_LOG_P_H
