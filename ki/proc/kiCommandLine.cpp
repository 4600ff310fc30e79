// kiCommandLine.cpp - splitting an argument text and joining arguments. Each
// direction makes two passes over the same code: one to measure, one to write
// into a block of exactly that size.
#include "ki/proc/kiCommandLine.h"

#include <climits>
#include <cstddef>

#include "ki/proc/kiMem.h"

namespace {

bool IsSpace(char c) { return c == ' ' || (c >= 9 && c <= 13); }

// Bytes written so far; writes only when out is not null.
class Writer {
 public:
  explicit Writer(char* out) : m_out(out) {}
  void Put(char c) {
    if (m_out != nullptr) m_out[m_size] = c;
    ++m_size;
  }
  void Repeat(char c, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) Put(c);
  }
  std::size_t Size() const { return m_size; }
  char* At(std::size_t offset) const { return m_out != nullptr ? m_out + offset : nullptr; }

 private:
  char* m_out;
  std::size_t m_size = 0;
};

// Splits text into out, each argument terminated; when slots is not null, the
// start of argument i goes to slots[i]. Answers the count of arguments.
std::size_t Scan(const char* text, char** slots, Writer& out) {
  std::size_t count = 0;
  const char* p = text;
  for (;;) {
    while (IsSpace(*p)) ++p;
    if (*p == '\0') return count;
    if (slots != nullptr) slots[count] = out.At(out.Size());
    bool quoted = false;
    while (*p != '\0' && (quoted || !IsSpace(*p))) {
      if (*p == '\\') {
        std::size_t n = 0;
        while (p[n] == '\\') ++n;
        if (p[n] != '"') {
          out.Repeat('\\', n);
        } else {
          out.Repeat('\\', n / 2);
          if (n % 2 != 0) {
            out.Put('"');
            ++p;  // the quote is taken as a character
          }
        }
        p += n;
        continue;
      }
      if (*p == '"') {
        quoted = !quoted;
      } else {
        out.Put(*p);
      }
      ++p;
    }
    out.Put('\0');
    ++count;
  }
}

bool NeedsQuotes(const char* arg) {
  if (*arg == '\0') return true;
  for (; *arg != '\0'; ++arg) {
    if (IsSpace(*arg) || *arg == '"') return true;
  }
  return false;
}

void Quote(const char* arg, Writer& out) {
  if (!NeedsQuotes(arg)) {
    for (; *arg != '\0'; ++arg) out.Put(*arg);
    return;
  }
  out.Put('"');
  const char* p = arg;
  while (*p != '\0') {
    if (*p == '\\') {
      std::size_t n = 0;
      while (p[n] == '\\') ++n;
      // Before a quote, escaped or closing, a run is read back halved.
      const bool beforeQuote = p[n] == '"' || p[n] == '\0';
      out.Repeat('\\', beforeQuote ? 2 * n : n);
      p += n;
      continue;
    }
    if (*p == '"') out.Put('\\');
    out.Put(*p);
    ++p;
  }
  out.Put('"');
}

void JoinInto(const char* const* args, unsigned int count, Writer& out) {
  for (unsigned int i = 0; i < count; ++i) {
    if (i > 0) out.Put(' ');
    Quote(args[i] != nullptr ? args[i] : "", out);
  }
  out.Put('\0');
}

}  // namespace

unsigned int kiCommandLine_Split(const char* text, char*** argv) {
  std::size_t count = 0;
  std::size_t bytes = 0;
  if (text != nullptr) {
    Writer measure(nullptr);
    count = Scan(text, nullptr, measure);
    bytes = measure.Size();
  }
  std::size_t slotBytes = (count + 1) * sizeof(char*);
  if (slotBytes + bytes > UINT_MAX) {  // intended: too large for one block, so no argument
    count = 0;
    bytes = 0;
    slotBytes = sizeof(char*);
  }
  if (argv != nullptr) {
    char* block = static_cast<char*>(kiMem_MallocArray(count + 1, sizeof(char*), bytes));
    char** slots = reinterpret_cast<char**>(block);
    if (count > 0) {
      Writer write(block + slotBytes);
      Scan(text, slots, write);
    }
    slots[count] = nullptr;
    *argv = slots;
  }
  return static_cast<unsigned int>(count);
}

char* kiCommandLine_Join(const char* const* args, unsigned int count) {
  if (args == nullptr) count = 0;
  Writer measure(nullptr);
  JoinInto(args, count, measure);
  if (measure.Size() > UINT_MAX) return nullptr;
  char* text = static_cast<char*>(kiMem_Malloc(static_cast<unsigned int>(measure.Size())));
  Writer write(text);
  JoinInto(args, count, write);
  return text;
}
