// kiLog.h - KI_LOG, the one shape of every log statement in ki, and
// KI_LOG_SOURCE, the tag a source file logs under.
#ifndef KI_PROC_KILOG_H
#define KI_PROC_KILOG_H

#include <atomic>

#include <kiLog/Log.h>

// Log levels and the categories ki writes with. The numbers are shared with
// every other user of the log library, so they never change.
enum {
  kiLogLevel_Error = 1,  // errors and warnings
  kiLogLevel_Trace = 4   // data traces, also gated by kiLog_WillLog
};

enum {
  kiLogCat_General = 0,
  kiLogCat_OS = 7,
  kiLogCat_Socket = 21,
  kiLogCat_INIFile = 23,
  kiLogCat_Select = 25,
  kiLogCat_ConfigFile = 26,
  kiLogCat_Plugin = 29,
  kiLogCat_FileCache = 36,
  kiLogCat_File = 42,
  kiLogCat_Dir = 43,
  kiLogCat_Thread = 44,
  kiLogCat_CommandLine = 47,
  kiLogCat_SocketTrace = 53,
  kiLogCat_SocketLog = 55,
  kiLogCat_Path = 57,
  kiLogCat_Time = 58,
  kiLogCat_Telnet = 92,
  kiLogCat_PackedData = 99
};

// Names the file's source tag: the path below ki/ without extension, e.g.
// KI_LOG_SOURCE("posix/kiFile"). Once per source file that logs, at file scope.
#define KI_LOG_SOURCE(tag)                     \
  namespace {                                  \
  constexpr const char kiLogSourceTag[] = tag; \
  }

// Holds a record opened by KI_LOG and closes it when the statement ends, also
// when an argument of the message throws (in an application built with
// exceptions): such a record is written without its text rather than left
// open, which would silence the thread's logging after four of them.
class kiLogRecordScope {
 public:
  explicit kiLogRecordScope(kiLog_Record* opened) noexcept : record(opened) {}
  ~kiLogRecordScope() {
    if (record != nullptr) kiLog_End(record);
  }
  kiLogRecordScope(const kiLogRecordScope&) = delete;
  kiLogRecordScope& operator=(const kiLogRecordScope&) = delete;

  kiLog_Record* const record;
};

// Writes one record: the level is tested first (traces of level 4 and above
// also ask kiLog_WillLog), so no argument of the message is evaluated when the
// record is not wanted; then the record is opened, its source tag and line set,
// the message appended in one call, and the record closed. Messages end with
// "\n" themselves.
#define KI_LOG(level, category, ...)                                               \
  do {                                                                             \
    if (static_cast<unsigned>(level) <                                             \
            static_cast<unsigned>(_kiLog_Level.load(std::memory_order_relaxed)) && \
        (static_cast<unsigned>(level) < kiLogLevel_Trace ||                        \
         kiLog_WillLog((level), (category)) != 0)) {                               \
      const kiLogRecordScope kiLogScope_(kiLog_Begin((level), (category)));        \
      if (kiLogScope_.record != nullptr) {                                         \
        kiLogScope_.record->source = kiLogSourceTag;                               \
        kiLogScope_.record->line = __LINE__;                                       \
        kiLog_Append_F(__VA_ARGS__);                                               \
      }                                                                            \
    }                                                                              \
  } while (0)

#endif  // KI_PROC_KILOG_H
