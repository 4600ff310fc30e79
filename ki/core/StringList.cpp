// StringList.cpp - kiStringList: splitting into one block, the offset table,
// the single-pass removal of empty items, joining; and kiCSVStringList.
#include "ki/core/StringList.h"

#include <climits>
#include <cstddef>
#include <cstring>

#include "ki/proc/kiFatalError.h"
#include "ki/proc/kiMem.h"
#include "ki/proc/kiStr.h"

namespace {

constexpr size_t kMaxBlock = 0xFFFFFFFFu;

// A size in bytes that must fit the 32-bit fields and the heap wrappers.
unsigned int BlockBytes(size_t bytes) {
  if (bytes > kMaxBlock) kiFatalError("memory:malloc", bytes);
  return static_cast<unsigned int>(bytes);
}

std::uint32_t* NewOffsets(size_t count) {
  return static_cast<std::uint32_t*>(kiMem_MallocArray(count, sizeof(std::uint32_t)));
}

}  // namespace

kiStringList::kiStringList()
    : m_block(nullptr), m_separator(','), m_offsets(nullptr), m_count(0), m_blockSize(0) {}

kiStringList::kiStringList(const char* text, char separator, char escape) : kiStringList() {
  Set(text, separator, escape);
}

kiStringList::kiStringList(const kiStringList& other) : kiStringList() { AssignCopy(other); }

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): AssignCopy skips itself
kiStringList& kiStringList::operator=(const kiStringList& other) {
  AssignCopy(other);
  return *this;
}

kiStringList::~kiStringList() { Reset(); }

void kiStringList::AssignCopy(const kiStringList& other) {
  if (this == &other) return;
  Reset();
  m_separator = other.m_separator;
  if (other.m_block != nullptr) {
    m_block = static_cast<char*>(kiMem_Malloc(other.m_blockSize));
    std::memcpy(m_block, other.m_block, other.m_blockSize);
    m_blockSize = other.m_blockSize;
  }
  if (other.m_count > 0) {
    m_offsets = NewOffsets(other.m_count);
    std::memcpy(m_offsets, other.m_offsets, other.m_count * sizeof(std::uint32_t));
    m_count = other.m_count;
  }
}

void kiStringList::Reset() {
  kiMem_Free(m_block);
  kiMem_Free(m_offsets);
  m_block = nullptr;
  m_offsets = nullptr;
  m_count = 0;
  m_blockSize = 0;
}

void kiStringList::Set(const char* text, char separator, char escape) {
  // Copied before Reset frees the block: text may be one of our own items.
  const size_t length = text != nullptr ? std::strlen(text) : 0;
  char* block = nullptr;
  unsigned int size = 0;
  if (length > 0) {
    size = BlockBytes(length + 1);
    block = static_cast<char*>(kiMem_Malloc(size));
    std::memcpy(block, text, size);
  }
  Reset();
  m_separator = separator;
  if (block == nullptr) return;
  m_block = block;
  m_blockSize = size;

  if (escape == separator) escape = 0;  // it could never be told apart from a separator
  // A separator is escaped when the text had the escape just before it. The
  // walk below asks the same of the original text, so it records exactly
  // count offsets.
  const auto escaped = [escape](char before) { return escape != 0 && before == escape; };
  size_t count = 1;
  if (separator != 0) {
    for (size_t i = 0; i < length; ++i) {
      if (block[i] == separator && !(i > 0 && escaped(block[i - 1]))) ++count;
    }
  }
  m_offsets = NewOffsets(count);
  m_offsets[0] = 0;
  m_count = 1;
  if (separator == 0) return;

  // Compacts in place: an escaped separator takes its escape's place, any
  // other separator becomes a zero byte that ends the item.
  size_t write = 0;
  char before = 0;
  for (size_t read = 0; read < length; ++read) {
    const char c = block[read];
    if (c != separator) {
      block[write++] = c;
    } else if (escaped(before)) {
      block[write - 1] = c;
    } else {
      block[write++] = 0;
      m_offsets[m_count++] = static_cast<std::uint32_t>(write);
    }
    before = c;
  }
  std::memset(block + write, 0, size - write);
}

int kiStringList::GetAtInt32(unsigned int index, int defaultValue) const {
  const char* item = GetAt(index);
  int value = 0;
  if (item == nullptr || kiStr_ParseInt32Base(item, 10, &value) != 0) return defaultValue;
  return value;
}

int kiStringList::IndexOf(const char* text) const {
  if (text == nullptr) return -1;
  for (unsigned int i = 0; i < m_count && i <= INT_MAX; ++i) {
    if (std::strcmp(m_block + m_offsets[i], text) == 0) return static_cast<int>(i);
  }
  return -1;
}

void kiStringList::Add(const char* text) {
  const size_t length = text != nullptr ? std::strlen(text) : 0;
  const unsigned int size = BlockBytes(size_t{m_blockSize} + length + 1);
  // Inside our own block, the text moves with it.
  const auto begin = reinterpret_cast<std::uintptr_t>(m_block);
  const auto at = reinterpret_cast<std::uintptr_t>(text);
  const bool own = m_block != nullptr && at >= begin && at < begin + m_blockSize;

  m_block = static_cast<char*>(kiMem_Realloc(m_block, size));
  if (length > 0) std::memcpy(m_block + m_blockSize, own ? m_block + (at - begin) : text, length);
  m_block[m_blockSize + length] = '\0';
  m_offsets = static_cast<std::uint32_t*>(
      kiMem_ReallocArray(m_offsets, m_count + 1ull, sizeof(std::uint32_t)));
  m_offsets[m_count++] = m_blockSize;
  m_blockSize = size;
}

bool kiStringList::Remove(const char* text) {
  const int index = IndexOf(text);
  if (index < 0) return false;
  const unsigned int i = static_cast<unsigned int>(index);
  std::memmove(m_offsets + i, m_offsets + i + 1, (m_count - i - 1) * sizeof(std::uint32_t));
  --m_count;
  return true;
}

unsigned int kiStringList::RemoveEmpty() {
  // One pass that compacts the table; equal to removing at i and going on at
  // i + 1, which passes over the item that just slid into place i.
  unsigned int kept = 0;
  bool stepOver = false;
  for (unsigned int i = 0; i < m_count; ++i) {
    if (!stepOver && m_block[m_offsets[i]] == '\0') {
      stepOver = true;
    } else {
      m_offsets[kept++] = m_offsets[i];
      stepOver = false;
    }
  }
  const unsigned int removed = m_count - kept;
  m_count = kept;
  return removed;
}

kiCString kiStringList::GetString(char escape) const {
  kiCString result;
  if (m_count == 0) return result;
  const bool escaping = escape != 0 && m_separator != 0;
  size_t total = m_count - 1;
  for (unsigned int i = 0; i < m_count; ++i) {
    const char* item = m_block + m_offsets[i];
    for (; *item != '\0'; ++item) total += escaping && *item == m_separator ? 2 : 1;
  }
  if (total == 0) return result;  // empty items only: the static empty block
  if (total > kMaxBlock - 1) kiFatalError("memory:malloc", total);
  char* out = result.GetWriteBuf(static_cast<unsigned int>(total));
  for (unsigned int i = 0; i < m_count; ++i) {
    if (i > 0) *out++ = m_separator;
    for (const char* item = m_block + m_offsets[i]; *item != '\0'; ++item) {
      if (escaping && *item == m_separator) *out++ = escape;
      *out++ = *item;
    }
  }
  *out = '\0';
  result.UngetWriteBuf(static_cast<unsigned int>(total));
  return result;
}

// ---- kiCSVStringList ------------------------------------------------------------

kiCSVStringList::kiCSVStringList(char escape) : kiStringList(nullptr, ',', escape) {}

kiCSVStringList::kiCSVStringList(const char* text, char escape) : kiStringList(text, ',', escape) {}
