// CString.cpp - kiCString over the shared string algorithms, its narrow
// formatting and numbers, kiCharBuffer, and the static empty block.
#include "ki/core/CString.h"

#include <cstddef>
#include <cstdio>
#include <cstring>

#include "ki/core/StringCore_p.h"
#include "ki/proc/kiStr.h"

namespace {

// Byte rules of the "C" locale, whatever the process locale is.
struct kiNarrowRules {
  // Kept for compatibility: the case-blind comparison orders bytes as signed
  // chars, so bytes above 127 sort before every letter.
  static int Fold(char c) {
    const int v = static_cast<signed char>(c);  // NOLINT(bugprone-signed-char-misuse)
    return v >= 'A' && v <= 'Z' ? v + ('a' - 'A') : v;
  }
  static char Upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; }
  static char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }
  static bool IsSpace(char c) { return c == ' ' || (c >= 9 && c <= 13); }
};

using Core = kiStringCore<char, kiNarrowRules>;

// Constant-initialised and placed in read-only memory: any write would fault.
constexpr kiStaticEmptyBlock<char> kEmptyBlock = {{-1, 0, 0}, {0, 0}};
static_assert(offsetof(kiStaticEmptyBlock<char>, zero) == sizeof(kiCStringData),
              "the characters follow the header directly");

constexpr unsigned int kPrintfStartRoom = 1024;

}  // namespace

const char* const kiEmptyCString = kEmptyBlock.zero;

// ---- Construction and assignment ------------------------------------------

kiCString::kiCString(const char* text) { InitWith(text, 0, kiNPos); }

kiCString::kiCString(const char* text, unsigned int count) { InitWith(text, 0, count); }

kiCString::kiCString(const char* text, unsigned int start, unsigned int count) {
  InitWith(text, start, count);
}

kiCString::kiCString(char c) { InitWith(&c, 0, 1); }

kiCString::kiCString(const kiCharBuffer& buffer) { InitWith(buffer.data(), 0, kiNPos); }

void kiCString::UnshareableCopy(const kiCString& other) {
  InitWith(other.m_pchData, 0, other.length());
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): the same block covers self
kiCString& kiCString::operator=(const kiCString& other) {
  if (m_pchData == other.m_pchData) return *this;
  if (other.GetStringData()->IsEmpty()) {
    Reinit();
  } else {
    AssignCopy(other.length(), other.m_pchData);
  }
  return *this;
}

kiCString& kiCString::operator=(const char* text) {
  AssignCopy(Core::Clamp(Core::TextLength(text)), text);
  return *this;
}

kiCString& kiCString::operator=(char c) {
  AssignCopy(1, &c);
  return *this;
}

kiCString kiCString::FromAllocatedString(const char* text) {
  kiCString result(text);
  kiMem_Free(const_cast<char*>(text));
  return result;
}

// ---- Internal operations ----------------------------------------------------

void kiCString::Reinit() { Core::Release(m_pchData, kiEmptyCString); }

void kiCString::AllocBuffer(unsigned int n) { m_pchData = Core::AllocBuffer(n); }

void kiCString::Alloc(unsigned int n) { Core::Alloc(m_pchData, n); }

void kiCString::AllocBeforeWrite(unsigned int n) { Core::AllocBeforeWrite(m_pchData, n); }

void kiCString::CopyBeforeWrite() { Core::CopyBeforeWrite(m_pchData); }

void kiCString::AssignCopy(unsigned int n, const char* text) {
  Core::AssignCopy(m_pchData, n, text, kiEmptyCString);
}

void kiCString::ConcatSelf(unsigned int n, const char* text, unsigned int limit) {
  Core::ConcatSelf(m_pchData, n, text, limit);
}

void kiCString::InitWith(const char* text, unsigned int start, unsigned int count) {
  m_pchData = Core::InitWith(text, start, count, kiEmptyCString);
}

void kiCString::AllocCopy(kiCString& target, unsigned int count, unsigned int start) const {
  target.Reinit();
  target.m_pchData = Core::AllocCopy(m_pchData, count, start, kiEmptyCString);
}

// ---- Buffers ------------------------------------------------------------------

char* kiCString::GetWriteBuf(unsigned int n) { return Core::GetWriteBuf(m_pchData, n); }

void kiCString::UngetWriteBuf() { Core::UngetWriteBuf(m_pchData); }

void kiCString::UngetWriteBuf(unsigned int n) { Core::UngetWriteBuf(m_pchData, n); }

// ---- Concatenation --------------------------------------------------------------

kiCString& kiCString::operator+=(const kiCString& other) {
  ConcatSelf(other.length(), other.m_pchData);
  return *this;
}

void kiCString::Reserve(unsigned int n) { Core::MakeRoom(m_pchData, n); }

kiCString& kiCString::operator+=(const char* text) {
  ConcatSelf(Core::Clamp(Core::TextLength(text)), text);
  return *this;
}

kiCString operator+(const kiCString& a, const kiCString& b) {
  kiCString result(a);
  result += b;
  return result;
}

kiCString operator+(const kiCString& a, const char* b) {
  kiCString result(a);
  result += b;
  return result;
}

kiCString operator+(const char* a, const kiCString& b) {
  kiCString result(a);
  result += b;
  return result;
}

kiCString operator+(const kiCString& a, char b) {
  kiCString result(a);
  result += b;
  return result;
}

kiCString operator+(char a, const kiCString& b) {
  kiCString result(a);
  result += b;
  return result;
}

// ---- Comparison -------------------------------------------------------------------

int kiCString::Compare(const kiCString& other) const {
  return Core::Compare(m_pchData, length(), other.m_pchData, other.length());
}

int kiCString::CompareNoCase(const kiCString& other) const {
  return Core::CompareNoCase(m_pchData, length(), other.m_pchData, other.length());
}

int kiCString::CompareNoCase(const char* text) const {
  const char* other = text != nullptr ? text : kiEmptyCString;
  return Core::CompareNoCase(m_pchData, length(), other, Core::Clamp(std::strlen(other)));
}

bool operator==(const kiCString& a, const kiCString& b) {
  return a.length() == b.length() && std::memcmp(a.c_str(), b.c_str(), a.length()) == 0;
}

bool operator==(const kiCString& a, const char* b) {
  const size_t n = b != nullptr ? std::strlen(b) : 0;
  return a.length() == n && std::memcmp(a.c_str(), b != nullptr ? b : "", n) == 0;
}

// ---- Search -------------------------------------------------------------------------

unsigned int kiCString::FindStr(const char* text, unsigned int textLength,
                                unsigned int start) const {
  return Core::FindStr(m_pchData, text, textLength, start);
}

unsigned int kiCString::Find(const kiCString& text, unsigned int start) const {
  return Core::FindStr(m_pchData, text.m_pchData, text.length(), start);
}

unsigned int kiCString::FindFirstStr(const char* text, unsigned int start) const {
  return Core::FindStr(m_pchData, text, Core::Clamp(Core::TextLength(text)), start);
}

unsigned int kiCString::FindLastStr(const char* text, unsigned int end) const {
  return Core::FindLast(m_pchData, text, Core::Clamp(Core::TextLength(text)), end);
}

unsigned int kiCString::FindNoCase(const kiCString& text, unsigned int start) const {
  return Core::FindNoCase(m_pchData, text.m_pchData, text.length(), start);
}

unsigned int kiCString::FindFirstOf(const char* set, unsigned int start) const {
  return Core::FindFirstOf(m_pchData, set, start, true);
}

unsigned int kiCString::FindFirstNotOf(const char* set, unsigned int start) const {
  return Core::FindFirstOf(m_pchData, set, start, false);
}

unsigned int kiCString::FindLastOf(const char* set, unsigned int start) const {
  return Core::FindLastOf(m_pchData, set, start);
}

unsigned int kiCString::Find(char c, bool fromEnd) const {
  return Core::FindChar(m_pchData, c, fromEnd);
}

unsigned int kiCString::Freq(char c) const { return Core::Freq(m_pchData, c); }

bool kiCString::HasOnlyNumbers() const { return Core::HasOnlyNumbers(m_pchData); }

// ---- Splitting --------------------------------------------------------------------------

kiCString kiCString::BeforeFirst(char separator) const {
  const unsigned int pos = Find(separator, false);
  return pos == kiNPos ? *this : Left(pos);
}

kiCString kiCString::BeforeFirst(const kiCString& separator) const {
  const unsigned int pos = Find(separator);
  return pos == kiNPos ? *this : Left(pos);
}

kiCString kiCString::AfterFirst(char separator) const {
  const unsigned int pos = Find(separator, false);
  return pos == kiNPos ? kiCString() : Mid(pos + 1);
}

kiCString kiCString::AfterFirst(const kiCString& separator) const {
  const unsigned int pos = Find(separator);
  return pos == kiNPos ? kiCString() : Mid(pos + separator.length());
}

kiCString kiCString::BeforeLast(char separator) const {
  const unsigned int pos = Find(separator, true);
  return pos == kiNPos ? kiCString() : Left(pos);
}

kiCString kiCString::BeforeLast(const kiCString& separator) const {
  const unsigned int pos =
      Core::FindLast(m_pchData, separator.m_pchData, separator.length(), kiNPos);
  return pos == kiNPos ? kiCString() : Left(pos);
}

kiCString kiCString::AfterLast(char separator) const {
  const unsigned int pos = Find(separator, true);
  return pos == kiNPos ? *this : Mid(pos + 1);
}

kiCString kiCString::AfterLast(const kiCString& separator) const {
  const unsigned int pos =
      Core::FindLast(m_pchData, separator.m_pchData, separator.length(), kiNPos);
  return pos == kiNPos ? *this : Mid(pos + separator.length());
}

kiCString kiCString::Mid(unsigned int start, unsigned int count) const {
  return kiCString(kiAdoptTag(), Core::Mid(m_pchData, start, count, kiEmptyCString));
}

// ---- Editing --------------------------------------------------------------------------------

kiCString& kiCString::Erase(unsigned int pos, unsigned int count) {
  Core::Erase(m_pchData, pos, count, kiEmptyCString);
  return *this;
}

kiCString& kiCString::Insert(unsigned int pos, const char* text, unsigned int count) {
  Core::Insert(m_pchData, pos, text, count);
  return *this;
}

kiCString& kiCString::Replace(unsigned int pos, unsigned int count, const char* text,
                              unsigned int textLength) {
  Core::Replace(m_pchData, pos, count, text, textLength, kiEmptyCString);
  return *this;
}

unsigned int kiCString::Replace(const char* oldText, const char* newText, bool all) {
  return Core::ReplaceAll(m_pchData, oldText, newText, all, kiEmptyCString);
}

kiCString& kiCString::Pad(unsigned int count, char c, bool atEnd) {
  Core::Pad(m_pchData, count, c, atEnd);
  return *this;
}

kiCString& kiCString::Trim(bool fromRight) {
  Core::Trim(m_pchData, fromRight, kiEmptyCString);
  return *this;
}

kiCString& kiCString::TrimLeftRight() {
  Trim(false);
  return Trim(true);
}

// ---- Transforming ---------------------------------------------------------------------------

kiCString kiCString::Upper() const {
  return kiCString(kiAdoptTag(), Core::Mapped(m_pchData, kiNarrowRules::Upper, kiEmptyCString));
}

kiCString kiCString::Lower() const {
  return kiCString(kiAdoptTag(), Core::Mapped(m_pchData, kiNarrowRules::Lower, kiEmptyCString));
}

kiCString kiCString::TrimTo1Space() const {
  return kiCString(kiAdoptTag(), Core::TrimTo1Space(m_pchData, kiEmptyCString));
}

// ---- Numbers ----------------------------------------------------------------------------------

bool kiCString::ToInt32(int* value, int base) const {
  int v;
  const int code = kiStr_ParseInt32Base(m_pchData, base, &v);
  if (value != nullptr) *value = v;
  return code == 0;
}

bool kiCString::ToLong(long* value, int base) const {
  int v;
  const int code = kiStr_ParseInt32Base(m_pchData, base, &v);
  if (value != nullptr) *value = v;
  return code == 0;
}

bool kiCString::ToUInt32(unsigned int* value, int base) const {
  unsigned int v;
  const int code = kiStr_ParseUInt32Base(m_pchData, base, &v);
  if (value != nullptr) *value = v;
  return code == 0;
}

bool kiCString::ToULong(unsigned long* value, int base) const {
  unsigned int v;
  const int code = kiStr_ParseUInt32Base(m_pchData, base, &v);
  if (value != nullptr) *value = v;
  return code == 0;
}

bool kiCString::ToDouble(double* value) const { return kiStr_ParseDouble(m_pchData, value) == 0; }

// ---- Formatting --------------------------------------------------------------------------------

int kiCString::PrintfV(const char* format, va_list args) {
  if (format == nullptr) {
    Reinit();
    return 0;
  }
  // Formatted into a block of its own, so that arguments pointing into this
  // string stay readable until the end.
  unsigned int room = kPrintfStartRoom;
  char* block = Core::AllocBuffer(room);
  // Empty should the C library fail before writing: not every one terminates
  // its output on an error.
  block[0] = '\0';
  for (;;) {
    va_list attempt;
    va_copy(attempt, args);
    const int needed = std::vsnprintf(block, room + 1, format, attempt);
    va_end(attempt);
    block[room] = '\0';
    if (needed < 0 || static_cast<unsigned int>(needed) <= room) break;
    ++room;  // intended: one more character per retry
    if (room > Core::Header(block)->capacity) block = Core::Grow(block, room);
  }
  const auto n = static_cast<unsigned int>(std::strlen(block));
  GetStringData()->Unlock();
  if (n == 0) {
    Core::Header(block)->Unlock();
    Init();
    return 0;
  }
  Core::Header(block)->length = n;
  m_pchData = block;
  return static_cast<int>(n);
}

int kiCString::Printf(const char* format, ...) {
  va_list args;
  va_start(args, format);
  const int n = PrintfV(format, args);
  va_end(args);
  return n;
}

kiCString kiCString::Format(const char* format, ...) {
  kiCString result;
  va_list args;
  va_start(args, format);
  result.PrintfV(format, args);
  va_end(args);
  return result;
}

// ---- kiCharBuffer -------------------------------------------------------------------------------

kiCharBuffer::kiCharBuffer(unsigned int n) : m_text(nullptr) {
  if (n == kiNPos) kiFatalError("memory:malloc", n);  // n + 1 bytes cannot be asked for
  m_text = static_cast<char*>(kiMem_Malloc(n + 1));
  m_text[n] = '\0';
}

kiCharBuffer::kiCharBuffer(const char* text, bool copy)
    : m_text(copy ? kiMem_Strdup(text) : const_cast<char*>(text)) {}

// NOLINTNEXTLINE(misc-unconventional-assign-operator): a hand-over, intended
kiCharBuffer& kiCharBuffer::operator=(kiCharBuffer& other) {
  if (&other != this) {
    kiMem_Free(m_text);
    m_text = other.release();
  }
  return *this;
}

kiCharBuffer& kiCharBuffer::operator=(const char* text) {
  if (text == m_text) return *this;
  char* copy = kiMem_Strdup(text);  // before the free: text may be our own
  kiMem_Free(m_text);
  m_text = copy;
  return *this;
}
