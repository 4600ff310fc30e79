// Log.cpp - kivoToolsLog's record side: the threshold, the category switches,
// the per-thread stack of open records and the formatted appends.
#include "kiLog/Log.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "Log_p.h"

// Constant-initialised: writers may test it before any constructor has run.
std::atomic<unsigned short> _kiLog_Level{2};

namespace {

constexpr unsigned int kSwitchedCategories = 256;
constexpr std::uint64_t kAllOn = ~std::uint64_t{0};

// One bit per category 0..255, all on at start. Categories above 255 have no
// switch and are always enabled.
std::atomic<std::uint64_t> g_categories[kSwitchedCategories / 64] = {kAllOn, kAllOn, kAllOn,
                                                                     kAllOn};

// A record may be opened while the message of another one is being built (an
// argument that logs), so each thread keeps a small stack of open records.
constexpr unsigned int kMaxDepth = 4;
constexpr std::size_t kInlineText = 256;

struct kiLogOpenRecord {
  kiLog_Record record;  // the part handed to the writer
  unsigned int level;
  unsigned int category;
  std::size_t length;    // bytes of text, without the terminator
  std::size_t capacity;  // bytes available at Text(), terminator included
  char* heap;            // owned; null while the text fits in inlineText
  bool emitting;         // being handed out: further appends and ends are ignored
  char inlineText[kInlineText];

  char* Text() { return heap != nullptr ? heap : inlineText; }
};

struct kiLogThreadRecords {
  unsigned int depth;
  kiLogOpenRecord slots[kMaxDepth];
};

// Zero-initialised and trivially destructible, so no thread pays for a
// constructor or an exit-time destructor. A heap text lives only while its
// record is open; a thread that ends with a record still open leaks it.
thread_local kiLogThreadRecords t_records;

bool CategoryEnabled(unsigned int category) {
  if (category >= kSwitchedCategories) return true;
  std::uint64_t word = g_categories[category / 64].load(std::memory_order_relaxed);
  return ((word >> (category % 64)) & 1U) != 0;
}

// Makes room for `needed` bytes (terminator included); false when the heap
// refuses, in which case the record is unchanged.
bool Reserve(kiLogOpenRecord& r, std::size_t needed) {
  if (needed <= r.capacity) return true;
  std::size_t capacity = r.capacity;
  while (capacity < needed) {
    capacity = capacity > SIZE_MAX / 2 ? needed : capacity * 2;
  }
  char* block = static_cast<char*>(std::realloc(r.heap, capacity));
  if (block == nullptr) return false;
  if (r.heap == nullptr) std::memcpy(block, r.inlineText, r.length + 1);
  r.heap = block;
  r.capacity = capacity;
  return true;
}

KIVO_LOG_PRINTF(2, 0)
void AppendV(kiLogOpenRecord& r, const char* format, va_list args) {
  va_list copy;
  va_copy(copy, args);
  int written = std::vsnprintf(r.Text() + r.length, r.capacity - r.length, format, copy);
  va_end(copy);
  if (written < 0) {  // an encoding error: the append is dropped
    r.Text()[r.length] = '\0';
    return;
  }
  std::size_t added = static_cast<std::size_t>(written);
  if (added >= r.capacity - r.length) {
    if (!Reserve(r, r.length + added + 1)) {
      r.length = r.capacity - 1;  // out of memory: keep what fitted
      return;
    }
    va_copy(copy, args);
    std::vsnprintf(r.Text() + r.length, r.capacity - r.length, format, copy);
    va_end(copy);
  }
  r.length += added;
}

}  // namespace

int kiLog_WillLog(unsigned int level, unsigned int category) {
  if (level >= _kiLog_Level.load(std::memory_order_relaxed)) return 0;
  return CategoryEnabled(category) ? 1 : 0;
}

kiLog_Record* kiLog_Begin(unsigned int level, unsigned int category) {
  if (kiLog_WillLog(level, category) == 0) return nullptr;
  kiLogThreadRecords& t = t_records;
  if (t.depth >= kMaxDepth) return nullptr;
  kiLogOpenRecord& r = t.slots[t.depth];
  r.record.reserved = t.depth;
  r.record.source = nullptr;
  r.record.line = 0;
  r.level = level;
  r.category = category;
  r.length = 0;
  r.capacity = kInlineText;
  r.heap = nullptr;
  r.inlineText[0] = '\0';
  r.emitting = false;
  ++t.depth;
  return &r.record;
}

void kiLog_Append_F(const char* format, ...) {
  va_list args;
  va_start(args, format);
  kiLog_Append_VF(format, args);
  va_end(args);
}

void kiLog_Append_VF(const char* format, va_list args) {
  kiLogThreadRecords& t = t_records;
  if (format == nullptr || t.depth == 0) return;
  kiLogOpenRecord& r = t.slots[t.depth - 1];
  if (!r.emitting) AppendV(r, format, args);
}

void kiLog_End(kiLog_Record* record) {
  kiLogThreadRecords& t = t_records;
  if (record == nullptr || t.depth == 0) return;
  unsigned int index = t.depth - 1;
  kiLogOpenRecord& r = t.slots[index];
  if (record != &r.record || r.emitting) return;
  // A capture hook that appends to or ends this record (it is still on top)
  // would free the text it is reading; both are ignored until it returns.
  r.emitting = true;
  kiLog_Entry entry = {r.level, r.category, r.record.source, r.record.line, r.Text()};
  kiLogInternal::Emit(entry);
  // Popped only after emission, so a record written by the capture hook opens
  // above this one instead of overwriting the text being emitted; records the
  // hook left open go with it.
  for (unsigned int i = index; i < t.depth; ++i) {
    std::free(t.slots[i].heap);
    t.slots[i].heap = nullptr;
  }
  t.depth = index;
}

void kiLog_SetLevel(unsigned short level) { _kiLog_Level.store(level, std::memory_order_relaxed); }

void kiLog_EnableCategory(unsigned int category, int enabled) {
  if (category >= kSwitchedCategories) return;  // always enabled; intended
  std::uint64_t bit = std::uint64_t{1} << (category % 64);
  if (enabled != 0) {
    g_categories[category / 64].fetch_or(bit, std::memory_order_relaxed);
  } else {
    g_categories[category / 64].fetch_and(~bit, std::memory_order_relaxed);
  }
}

void kiLog_EnableAllCategories(int enabled) {
  for (std::atomic<std::uint64_t>& word : g_categories) {
    word.store(enabled != 0 ? kAllOn : 0, std::memory_order_relaxed);
  }
}
