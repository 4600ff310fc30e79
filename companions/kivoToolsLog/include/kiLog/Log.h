// Log.h - kivoToolsLog, the log facade: the level threshold, records opened per
// thread, formatted appends, and the settings an application (or a test) uses.
// Thread-safe, and fork-safe on POSIX: a fork waits for the output lock, so a
// child may log at once whatever the other threads were doing.
#ifndef KILOG_LOG_H
#define KILOG_LOG_H

#include <atomic>
#include <cstdarg>

#if defined(KIVO_LOG_STATIC)
#define KIVO_LOG_API
#elif defined(_WIN32)
#if defined(KIVO_LOG_BUILDING)
#define KIVO_LOG_API __declspec(dllexport)
#else
#define KIVO_LOG_API __declspec(dllimport)
#endif
#else
#define KIVO_LOG_API __attribute__((visibility("default")))
#endif

#if defined(__GNUC__)
#define KIVO_LOG_PRINTF(fmt, args) __attribute__((format(printf, fmt, args)))
#else
#define KIVO_LOG_PRINTF(fmt, args)
#endif

// The part of an open record that the writer fills in. Field order is fixed:
// word 0 belongs to the log library, then the source tag and the line.
struct kiLog_Record {
  unsigned int reserved;  // the log library's own; writers never touch it
  const char* source;     // static text naming the source file; kept by pointer
  unsigned int line;      // line number within that source
};

// The threshold: a record of level L is wanted only when L < _kiLog_Level.
// Writers read it directly before every statement (relaxed load). Smaller
// levels are more severe: 1 errors and warnings, 4 data traces. Default 2.
extern KIVO_LOG_API std::atomic<unsigned short> _kiLog_Level;

// Non-zero when a record of this level and category would be written.
KIVO_LOG_API int kiLog_WillLog(unsigned int level, unsigned int category);

// Opens a record on the calling thread; null when it is not wanted (level at
// or above the threshold, category disabled, or records nested too deeply:
// a thread keeps at most four open records, so that a message argument may
// itself log).
KIVO_LOG_API kiLog_Record* kiLog_Begin(unsigned int level, unsigned int category);

// Appends formatted text to the record the calling thread opened last; does
// nothing when the thread has no open record. A null "%s" prints "(null)".
KIVO_LOG_API void kiLog_Append_F(const char* format, ...) KIVO_LOG_PRINTF(1, 2);
KIVO_LOG_API void kiLog_Append_VF(const char* format, va_list args) KIVO_LOG_PRINTF(1, 0);

// Closes the record and emits it; a record that is not the thread's open one
// (or null) is ignored. Each record becomes one line of the destination:
//   2026-11-21 13:22:01.123 E 42 files/File:120 kiFile: Cannot open ...
// local time with milliseconds, the level (F E I D T for 0..4, else its
// number), the category, source tag:line ("-" without a tag), then the text;
// "\n" is added only when the text does not end with one.
KIVO_LOG_API void kiLog_End(kiLog_Record* record);

// ---- Settings, for applications and tests -------------------------------
//
// At load the library reads the environment once:
//   KIVO_LOG_LEVEL       the threshold (a decimal number; "5" shows traces)
//   KIVO_LOG_CATEGORIES  "all" or a comma-separated list of enabled categories
//   KIVO_LOG_FILE        a file to append records to instead of standard error
// Malformed values are ignored; KIVO_LOG_CATEGORIES enables only the listed
// categories.

// A finished record as the capture hook sees it. Pointers are valid only for
// the duration of the call.
struct kiLog_Entry {
  unsigned int level;
  unsigned int category;
  const char* source;  // null when the writer set none
  unsigned int line;
  const char* text;  // the appended text, exactly as formatted
};

// Called for every emitted record, under the library's lock. A non-zero
// answer means the record is consumed and not written to the destination.
// The hook may log and change settings on its own thread; records it writes
// skip the hook and go to the destination.
typedef int (*kiLog_CaptureHook)(void* context, const kiLog_Entry* entry);

// Sets the threshold (see _kiLog_Level).
KIVO_LOG_API void kiLog_SetLevel(unsigned short level);

// Enables or disables one category (0..255); all are enabled at start.
// Categories above 255 have no switch: they are always enabled.
KIVO_LOG_API void kiLog_EnableCategory(unsigned int category, int enabled);
KIVO_LOG_API void kiLog_EnableAllCategories(int enabled);

// Sends records to a file (appended), or back to standard error for null.
// Returns 0, or -1 when the file cannot be opened (the destination is kept).
KIVO_LOG_API int kiLog_SetFile(const char* path);

// Installs the capture hook (null removes it) and returns the previous one;
// the previous context is stored through previousContext when it is not null.
KIVO_LOG_API kiLog_CaptureHook kiLog_SetCaptureHook(kiLog_CaptureHook hook, void* context,
                                                    void** previousContext);

#endif  // KILOG_LOG_H
