// kiLogError.cpp - kiLog_Error: a record with the log facade's own position.
#include <cstdarg>

#include "ki/proc/kiLog.h"
#include "ki/proc/kiLogError_p.h"

void kiLog_Error(const char* format, ...) {
  if (kiLogLevel_Error < _kiLog_Level.load(std::memory_order_relaxed)) {
    kiLog_Record* record = kiLog_Begin(kiLogLevel_Error, kiLogCat_General);
    if (record != nullptr) {
      // Intended: these records carry the facade header's tag and line, not
      // the caller's, so that they read the same in every module.
      record->source = "kiLog/Log";
      record->line = 449;
      va_list args;
      va_start(args, format);
      kiLog_Append_VF(format, args);
      va_end(args);
      kiLog_End(record);
    }
  }
}
