// LogOutput.cpp - kivoToolsLog's output side: the capture hook, the destination
// (standard error or a file), the line format, and the environment read at load.
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <mutex>
#include <new>

#if !defined(_WIN32)
#include <pthread.h>
#endif

#include "Log_p.h"
#include "kiLog/Log.h"

namespace {

// Guards everything below and serialises the output, so lines never mix.
std::mutex g_mutex;
// Set while this thread holds g_mutex: the capture hook may log or change
// settings on its own thread without deadlocking.
thread_local bool t_holdsLock;

kiLog_CaptureHook g_hook;
void* g_hookContext;
bool g_inHook;  // the hook is running (on the thread that holds the lock)
FILE* g_file;   // owned; null means standard error
char* g_line;   // the line being written, kept between records
std::size_t g_lineCapacity;

constexpr std::size_t kKeptLineCapacity =
    std::size_t{64} * 1024;  // larger buffers are freed after use

class kiLogGuard {
 public:
  kiLogGuard() : m_locked(!t_holdsLock) {
    if (m_locked) {
      g_mutex.lock();
      t_holdsLock = true;
    }
  }
  ~kiLogGuard() {
    if (m_locked) {
      t_holdsLock = false;
      g_mutex.unlock();
    }
  }
  kiLogGuard(const kiLogGuard&) = delete;
  kiLogGuard& operator=(const kiLogGuard&) = delete;

 private:
  bool m_locked;
};

#if !defined(_WIN32)
// A forked child has only the thread that called fork(). The lock is taken
// before the fork, so no other thread is inside the output path at that moment
// and the child starts with a lock nobody holds. A thread that forks while it
// holds the lock itself (from inside the capture hook) keeps holding it in the
// child and releases it as usual.
thread_local bool t_lockedForFork;  // per thread: two threads may fork at once

void BeforeFork() {
  t_lockedForFork = !t_holdsLock;
  if (t_lockedForFork) g_mutex.lock();
}

void AfterForkInParent() {
  if (t_lockedForFork) g_mutex.unlock();
}

void AfterForkInChild() {
  if (!t_lockedForFork) return;
  // Built afresh rather than unlocked: the child's thread is not the one the
  // lock's bookkeeping may name as owner.
  new (&g_mutex) std::mutex();
  g_inHook = false;
}
#endif

// "2026-11-21 13:22:01.123" in local time.
void FormatTime(char* out, std::size_t size) {
  using std::chrono::duration_cast;
  using std::chrono::milliseconds;
  long long ms =
      duration_cast<milliseconds>(std::chrono::system_clock::now().time_since_epoch()).count();
  long long seconds = ms / 1000;
  int milli = static_cast<int>(ms % 1000);
  if (milli < 0) {
    milli += 1000;
    --seconds;
  }
  std::time_t t = static_cast<std::time_t>(seconds);
  std::tm tm{};
#if defined(_WIN32)
  localtime_s(&tm, &t);
#else
  localtime_r(&t, &tm);
#endif
  std::snprintf(out, size, "%04d-%02d-%02d %02d:%02d:%02d.%03d", tm.tm_year + 1900, tm.tm_mon + 1,
                tm.tm_mday, tm.tm_hour, tm.tm_min, tm.tm_sec, milli);
}

// Levels 0..4 are shown as F(atal), E(rror or warning), I(nfo), D(ebug) and
// T(race); higher levels as their number.
void FormatLevel(unsigned int level, char* out, std::size_t size) {
  static const char kLetters[] = "FEIDT";
  if (level < sizeof kLetters - 1) {
    out[0] = kLetters[level];
    out[1] = '\0';
  } else {
    std::snprintf(out, size, "%u", level);
  }
}

// One record, one line: "<time> <level> <category> <source>:<line> <text>",
// with "-" for a record without a source tag and "\n" added only when the text
// lacks it. Written with one fwrite and flushed, so that the line reaches the
// file in one piece. Called with the lock held.
void WriteLine(const kiLog_Entry& entry) {
  FILE* out = g_file != nullptr ? g_file : stderr;
  char stamp[64];
  FormatTime(stamp, sizeof stamp);
  char level[16];
  FormatLevel(entry.level, level, sizeof level);
  const char* text = entry.text != nullptr ? entry.text : "";
  std::size_t textLength = std::strlen(text);
  bool addNewline = textLength == 0 || text[textLength - 1] != '\n';

  char prefix[256];
  int prefixLength =
      entry.source != nullptr
          ? std::snprintf(prefix, sizeof prefix, "%s %s %u %s:%u ", stamp, level, entry.category,
                          entry.source, entry.line)
          : std::snprintf(prefix, sizeof prefix, "%s %s %u - ", stamp, level, entry.category);
  if (prefixLength < 0) return;
  std::size_t needed = static_cast<std::size_t>(prefixLength) + textLength + 2;
  if (needed > g_lineCapacity) {
    char* block = static_cast<char*>(std::realloc(g_line, needed));
    if (block != nullptr) {
      g_line = block;
      g_lineCapacity = needed;
    }
  }
  if (needed <= g_lineCapacity) {
    // A source tag too long for `prefix` is formatted again in the line buffer.
    if (static_cast<std::size_t>(prefixLength) >= sizeof prefix) {
      std::snprintf(g_line, g_lineCapacity, "%s %s %u %s:%u ", stamp, level, entry.category,
                    entry.source, entry.line);
    } else {
      std::memcpy(g_line, prefix, static_cast<std::size_t>(prefixLength));
    }
    std::size_t length = static_cast<std::size_t>(prefixLength);
    // The line is written by length and needs no terminator.
    std::memcpy(g_line + length, text, textLength);  // NOLINT(bugprone-not-null-terminated-result)
    length += textLength;
    if (addNewline) g_line[length++] = '\n';
    std::fwrite(g_line, 1, length, out);
  } else {  // out of memory: the same line in pieces, still under the lock
    std::fputs(prefix, out);
    std::fputs(text, out);
    if (addNewline) std::fputc('\n', out);
  }
  std::fflush(out);
  if (g_lineCapacity > kKeptLineCapacity) {
    std::free(g_line);
    g_line = nullptr;
    g_lineCapacity = 0;
  }
}

// A decimal number of at most `limit`, nothing else; false when malformed.
bool ParseNumber(const char* begin, const char* end, unsigned long limit, unsigned long* value) {
  if (begin == end) return false;
  unsigned long result = 0;
  for (const char* p = begin; p != end; ++p) {
    if (*p < '0' || *p > '9') return false;
    result = result * 10 + static_cast<unsigned long>(*p - '0');
    if (result > limit) return false;
  }
  *value = result;
  return true;
}

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

// "all", or numbers separated by commas (blanks around them allowed). Only a
// well-formed list changes anything; numbers above 255 are accepted and have
// no effect, since those categories are always enabled.
void ApplyCategories(const char* text) {
  if (std::strcmp(text, "all") == 0) {
    kiLog_EnableAllCategories(1);
    return;
  }
  bool enabled[256] = {};
  const char* p = text;
  for (;;) {
    const char* end = std::strchr(p, ',');
    if (end == nullptr) end = p + std::strlen(p);
    const char* first = p;
    const char* last = end;
    while (first != last && IsBlank(*first)) ++first;
    while (last != first && IsBlank(last[-1])) --last;
    unsigned long category = 0;
    if (!ParseNumber(first, last, 0xFFFFFFFFUL, &category)) return;
    if (category < 256) enabled[category] = true;
    if (*end == '\0') break;
    p = end + 1;
  }
  kiLog_EnableAllCategories(0);
  for (unsigned int c = 0; c < 256; ++c) {
    if (enabled[c]) kiLog_EnableCategory(c, 1);
  }
}

// The only work done at load (intended): the environment is read once, before
// any writer can test the threshold, and the fork handlers are installed.
// Priority 101 runs it ahead of ordinary static constructors when the library
// is linked statically.
__attribute__((constructor(101))) void ReadEnvironment() {
#if !defined(_WIN32)
  pthread_atfork(BeforeFork, AfterForkInParent, AfterForkInChild);
#endif
  const char* level = std::getenv("KIVO_LOG_LEVEL");
  unsigned long value = 0;
  if (level != nullptr && ParseNumber(level, level + std::strlen(level), 0xFFFF, &value)) {
    kiLog_SetLevel(static_cast<unsigned short>(value));
  }
  const char* categories = std::getenv("KIVO_LOG_CATEGORIES");
  if (categories != nullptr) ApplyCategories(categories);
  const char* file = std::getenv("KIVO_LOG_FILE");
  if (file != nullptr && file[0] != '\0') kiLog_SetFile(file);  // unopenable: standard error
}

}  // namespace

void kiLogInternal::Emit(const kiLog_Entry& entry) {
  kiLogGuard guard;
  if (g_hook != nullptr && !g_inHook) {
    g_inHook = true;
    int consumed = g_hook(g_hookContext, &entry);
    g_inHook = false;
    if (consumed != 0) return;
  }
  WriteLine(entry);
}

int kiLog_SetFile(const char* path) {
  FILE* file = nullptr;
  if (path != nullptr) {
    // "e": close-on-exec, so processes the application starts do not inherit the log.
#if defined(_WIN32)
    file = std::fopen(path, "a");
#else
    file = std::fopen(path, "ae");
#endif
    if (file == nullptr) return -1;
  }
  kiLogGuard guard;
  if (g_file != nullptr) std::fclose(g_file);
  g_file = file;
  return 0;
}

kiLog_CaptureHook kiLog_SetCaptureHook(kiLog_CaptureHook hook, void* context,
                                       void** previousContext) {
  kiLogGuard guard;
  kiLog_CaptureHook previous = g_hook;
  if (previousContext != nullptr) *previousContext = g_hookContext;
  g_hook = hook;
  g_hookContext = context;
  return previous;
}
