// String.cpp - kiString over the shared string algorithms, its wide
// formatting, case folding and numbers, kiWCharBuffer, and the static empty
// block.
#include "ki/core/String.h"

#include <cerrno>
#include <cstddef>
#include <cwchar>
#include <cwctype>

#include "ki/core/StringCore_p.h"
#include "ki/proc/kiUTF8_p.h"

namespace {

// Case through the C library's wide mappings (the LC_CTYPE locale); white
// space is the values 9-13 and 32 only.
struct kiWideRules {
  static kiWChar Upper(kiWChar c) { return Mapped(c, std::towupper(c)); }
  static kiWChar Lower(kiWChar c) { return Mapped(c, std::towlower(c)); }
  static int Fold(kiWChar c) { return Lower(c); }
  static bool IsSpace(kiWChar c) { return c == ' ' || (c >= 9 && c <= 13); }

  // A mapping that leaves the 16-bit range keeps the character.
  static kiWChar Mapped(kiWChar c, std::wint_t to) {
    return to <= 0xFFFF ? static_cast<kiWChar>(to) : c;
  }
};

using Core = kiStringCore<kiWChar, kiWideRules>;

// Constant-initialised and placed in read-only memory: any write would fault.
constexpr kiStaticEmptyBlock<kiWChar> kEmptyBlock = {{-1, 0, 0}, {0, 0}};
static_assert(offsetof(kiStaticEmptyBlock<kiWChar>, zero) == sizeof(kiStringData),
              "the characters follow the header directly");

constexpr unsigned int kPrintfStartRoom = 1024;
// Past this room a text that still does not fit is given up (64 MB of
// wchar_t), so a broken format cannot take the whole heap.
constexpr unsigned int kPrintfMaxRoom = 1u << 24;

}  // namespace

const kiWChar* const kiEmptyString = kEmptyBlock.zero;

// ---- Construction and assignment ------------------------------------------

kiString::kiString(const kiWChar* text) { InitWith(text, 0, kiNPos); }

kiString::kiString(const kiWChar* text, unsigned int count) { InitWith(text, 0, count); }

kiString::kiString(const kiWChar* text, unsigned int start, unsigned int count) {
  InitWith(text, start, count);
}

kiString::kiString(kiWChar c) { InitWith(&c, 0, 1); }

kiString::kiString(const kiWCharBuffer& buffer) { InitWith(buffer.data(), 0, kiNPos); }

void kiString::UnshareableCopy(const kiString& other) {
  InitWith(other.m_pchData, 0, other.length());
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): the same block covers self
kiString& kiString::operator=(const kiString& other) {
  if (m_pchData == other.m_pchData) return *this;
  if (other.GetStringData()->IsEmpty()) {
    Reinit();
  } else {
    AssignCopy(other.length(), other.m_pchData);
  }
  return *this;
}

kiString& kiString::operator=(const kiWChar* text) {
  AssignCopy(Core::Clamp(Core::TextLength(text)), text);
  return *this;
}

kiString& kiString::operator=(kiWChar c) {
  AssignCopy(1, &c);
  return *this;
}

kiString kiString::FromAllocatedString(const kiWChar* text) {
  kiString result(text);
  kiMem_Free(const_cast<kiWChar*>(text));
  return result;
}

// ---- Internal operations ----------------------------------------------------

void kiString::Reinit() { Core::Release(m_pchData, kiEmptyString); }

void kiString::AllocBuffer(unsigned int n) { m_pchData = Core::AllocBuffer(n); }

void kiString::Alloc(unsigned int n) { Core::Alloc(m_pchData, n); }

void kiString::AllocBeforeWrite(unsigned int n) { Core::AllocBeforeWrite(m_pchData, n); }

void kiString::CopyBeforeWrite() { Core::CopyBeforeWrite(m_pchData); }

void kiString::AssignCopy(unsigned int n, const kiWChar* text) {
  Core::AssignCopy(m_pchData, n, text, kiEmptyString);
}

void kiString::ConcatSelf(unsigned int n, const kiWChar* text, unsigned int limit) {
  Core::ConcatSelf(m_pchData, n, text, limit);
}

void kiString::InitWith(const kiWChar* text, unsigned int start, unsigned int count) {
  m_pchData = Core::InitWith(text, start, count, kiEmptyString);
}

void kiString::AllocCopy(kiString& target, unsigned int count, unsigned int start) const {
  target.Reinit();
  target.m_pchData = Core::AllocCopy(m_pchData, count, start, kiEmptyString);
}

// ---- Buffers ------------------------------------------------------------------

kiWChar* kiString::GetWriteBuf(unsigned int n) { return Core::GetWriteBuf(m_pchData, n); }

void kiString::UngetWriteBuf() { Core::UngetWriteBuf(m_pchData); }

void kiString::UngetWriteBuf(unsigned int n) { Core::UngetWriteBuf(m_pchData, n); }

// ---- Concatenation --------------------------------------------------------------

kiString& kiString::operator+=(const kiString& other) {
  ConcatSelf(other.length(), other.m_pchData);
  return *this;
}

kiString& kiString::operator+=(const kiWChar* text) {
  ConcatSelf(Core::Clamp(Core::TextLength(text)), text);
  return *this;
}

kiString operator+(const kiString& a, const kiString& b) {
  kiString result(a);
  result += b;
  return result;
}

kiString operator+(const kiString& a, const kiWChar* b) {
  kiString result(a);
  result += b;
  return result;
}

kiString operator+(const kiWChar* a, const kiString& b) {
  kiString result(a);
  result += b;
  return result;
}

kiString operator+(const kiString& a, kiWChar b) {
  kiString result(a);
  result += b;
  return result;
}

kiString operator+(kiWChar a, const kiString& b) {
  kiString result(a);
  result += b;
  return result;
}

// ---- Comparison -------------------------------------------------------------------

int kiString::Compare(const kiString& other) const {
  return Core::Compare(m_pchData, length(), other.m_pchData, other.length());
}

int kiString::CompareNoCase(const kiString& other) const {
  return Core::CompareNoCase(m_pchData, length(), other.m_pchData, other.length());
}

int kiString::CompareNoCase(const kiWChar* text) const {
  const kiWChar* other = text != nullptr ? text : kiEmptyString;
  return Core::CompareNoCase(m_pchData, length(), other, Core::Clamp(Core::TextLength(other)));
}

bool operator==(const kiString& a, const kiString& b) {
  return a.length() == b.length() &&
         std::char_traits<kiWChar>::compare(a.c_str(), b.c_str(), a.length()) == 0;
}

bool operator==(const kiString& a, const kiWChar* b) {
  const size_t n = Core::TextLength(b);
  return a.length() == n && (n == 0 || std::char_traits<kiWChar>::compare(a.c_str(), b, n) == 0);
}

// ---- Search -------------------------------------------------------------------------

unsigned int kiString::FindStr(const kiWChar* text, unsigned int textLength,
                               unsigned int start) const {
  return Core::FindStr(m_pchData, text, textLength, start);
}

unsigned int kiString::Find(const kiString& text, unsigned int start) const {
  return Core::FindStr(m_pchData, text.m_pchData, text.length(), start);
}

unsigned int kiString::FindFirstStr(const kiWChar* text, unsigned int start) const {
  return Core::FindStr(m_pchData, text, Core::Clamp(Core::TextLength(text)), start);
}

unsigned int kiString::FindLastStr(const kiWChar* text, unsigned int end) const {
  return Core::FindLast(m_pchData, text, Core::Clamp(Core::TextLength(text)), end);
}

unsigned int kiString::FindNoCase(const kiString& text, unsigned int start) const {
  return Core::FindNoCase(m_pchData, text.m_pchData, text.length(), start);
}

unsigned int kiString::FindFirstOf(const kiWChar* set, unsigned int start) const {
  return Core::FindFirstOf(m_pchData, set, start, true);
}

unsigned int kiString::FindFirstNotOf(const kiWChar* set, unsigned int start) const {
  return Core::FindFirstOf(m_pchData, set, start, false);
}

unsigned int kiString::FindLastOf(const kiWChar* set, unsigned int start) const {
  return Core::FindLastOf(m_pchData, set, start);
}

unsigned int kiString::Find(kiWChar c, bool fromEnd) const {
  return Core::FindChar(m_pchData, c, fromEnd);
}

unsigned int kiString::Freq(kiWChar c) const { return Core::Freq(m_pchData, c); }

bool kiString::HasOnlyNumbers() const { return Core::HasOnlyNumbers(m_pchData); }

// ---- Splitting --------------------------------------------------------------------------

kiString kiString::BeforeFirst(kiWChar separator) const {
  const unsigned int pos = Find(separator, false);
  return pos == kiNPos ? *this : Left(pos);
}

kiString kiString::BeforeFirst(const kiString& separator) const {
  const unsigned int pos = Find(separator);
  return pos == kiNPos ? *this : Left(pos);
}

kiString kiString::AfterFirst(kiWChar separator) const {
  const unsigned int pos = Find(separator, false);
  return pos == kiNPos ? kiString() : Mid(pos + 1);
}

kiString kiString::AfterFirst(const kiString& separator) const {
  const unsigned int pos = Find(separator);
  return pos == kiNPos ? kiString() : Mid(pos + separator.length());
}

kiString kiString::BeforeLast(kiWChar separator) const {
  const unsigned int pos = Find(separator, true);
  return pos == kiNPos ? kiString() : Left(pos);
}

kiString kiString::BeforeLast(const kiString& separator) const {
  const unsigned int pos =
      Core::FindLast(m_pchData, separator.m_pchData, separator.length(), kiNPos);
  return pos == kiNPos ? kiString() : Left(pos);
}

kiString kiString::AfterLast(kiWChar separator) const {
  const unsigned int pos = Find(separator, true);
  return pos == kiNPos ? *this : Mid(pos + 1);
}

kiString kiString::AfterLast(const kiString& separator) const {
  const unsigned int pos =
      Core::FindLast(m_pchData, separator.m_pchData, separator.length(), kiNPos);
  return pos == kiNPos ? *this : Mid(pos + separator.length());
}

kiString kiString::Mid(unsigned int start, unsigned int count) const {
  return kiString(kiAdoptTag(), Core::Mid(m_pchData, start, count, kiEmptyString));
}

// ---- Editing --------------------------------------------------------------------------------

kiString& kiString::Erase(unsigned int pos, unsigned int count) {
  Core::Erase(m_pchData, pos, count, kiEmptyString);
  return *this;
}

kiString& kiString::Insert(unsigned int pos, const kiWChar* text, unsigned int count) {
  Core::Insert(m_pchData, pos, text, count);
  return *this;
}

kiString& kiString::Replace(unsigned int pos, unsigned int count, const kiWChar* text,
                            unsigned int textLength) {
  Core::Replace(m_pchData, pos, count, text, textLength, kiEmptyString);
  return *this;
}

unsigned int kiString::Replace(const kiWChar* oldText, const kiWChar* newText, bool all) {
  return Core::ReplaceAll(m_pchData, oldText, newText, all, kiEmptyString);
}

kiString& kiString::Pad(unsigned int count, kiWChar c, bool atEnd) {
  Core::Pad(m_pchData, count, c, atEnd);
  return *this;
}

kiString& kiString::Trim(bool fromRight) {
  Core::Trim(m_pchData, fromRight, kiEmptyString);
  return *this;
}

kiString& kiString::TrimLeftRight() {
  Trim(false);
  return Trim(true);
}

// ---- Transforming ---------------------------------------------------------------------------

kiString kiString::Upper() const {
  return kiString(kiAdoptTag(), Core::Mapped(m_pchData, kiWideRules::Upper, kiEmptyString));
}

kiString kiString::Lower() const {
  return kiString(kiAdoptTag(), Core::Mapped(m_pchData, kiWideRules::Lower, kiEmptyString));
}

kiString kiString::TrimTo1Space() const {
  return kiString(kiAdoptTag(), Core::TrimTo1Space(m_pchData, kiEmptyString));
}

// ---- Numbers ----------------------------------------------------------------------------------

kiCharBuffer kiString::ToAscii() const {
  const unsigned int n = length();
  kiCharBuffer ascii(n);
  char* out = const_cast<char*>(ascii.data());
  for (unsigned int i = 0; i < n; ++i) {
    out[i] = m_pchData[i] < 128 ? static_cast<char>(m_pchData[i]) : '_';
  }
  return ascii;
}

// Through ToAscii and the narrow parsers, so only ASCII digits are digits.
bool kiString::ToInt32(int* value, int base) const {
  return kiCString(ToAscii()).ToInt32(value, base);
}

bool kiString::ToLong(long* value, int base) const {
  return kiCString(ToAscii()).ToLong(value, base);
}

bool kiString::ToUInt32(unsigned int* value, int base) const {
  return kiCString(ToAscii()).ToUInt32(value, base);
}

bool kiString::ToULong(unsigned long* value, int base) const {
  return kiCString(ToAscii()).ToULong(value, base);
}

bool kiString::ToDouble(double* value) const { return kiCString(ToAscii()).ToDouble(value); }

// ---- Formatting --------------------------------------------------------------------------------

int kiString::PrintfV(const kiWChar* format, va_list args) {
  if (format == nullptr) {
    Reinit();
    return 0;
  }
  // The C library formats native wchar_t; the result is converted to UTF-16
  // in a block of its own, so arguments pointing into this string stay
  // readable until the end.
  wchar_t* native = kiUTF16_ToWide(format);
  unsigned int room = kPrintfStartRoom;
  auto* text = static_cast<wchar_t*>(kiMem_MallocArray(room + 1ull, sizeof(wchar_t)));
  bool written = false;
  for (;;) {
    va_list attempt;
    va_copy(attempt, args);
    errno = 0;
    const int needed = std::vswprintf(text, room + 1, native, attempt);
    va_end(attempt);
    text[room] = 0;
    if (needed >= 0) {
      written = true;
      break;
    }
    // -1 also means "does not fit"; only an error of its own (a text that
    // cannot be converted) ends the retries.
    if ((errno != 0 && errno != EOVERFLOW) || room >= kPrintfMaxRoom) break;
    room = 2 * room + 2;  // intended growth rule of the wide string
    text = static_cast<wchar_t*>(kiMem_ReallocArray(text, room + 1ull, sizeof(wchar_t)));
  }
  // A value no UTF-16 text can hold (past 0x10FFFF) also gives up.
  kiWChar* units = written ? kiUTF16_FromWide(text) : nullptr;
  kiMem_Free(text);
  kiMem_Free(native);
  kiString result(units);
  kiMem_Free(units);
  Swap(result);
  return static_cast<int>(length());
}

int kiString::PrintfArguments(const kiWChar* format, ...) {
  va_list args;
  va_start(args, format);
  const int n = PrintfV(format, args);
  va_end(args);
  return n;
}

// ---- kiWCharBuffer
// -------------------------------------------------------------------------------

kiWCharBuffer::kiWCharBuffer(unsigned int n) : m_text(nullptr) {
  m_text = static_cast<kiWChar*>(kiMem_MallocArray(n + 1ull, sizeof(kiWChar)));
  m_text[n] = 0;
}

kiWCharBuffer::kiWCharBuffer(const kiWChar* text, bool copy)
    : m_text(copy ? kiMem_Wcsdup(text) : const_cast<kiWChar*>(text)) {}

// NOLINTNEXTLINE(misc-unconventional-assign-operator): a hand-over, intended
kiWCharBuffer& kiWCharBuffer::operator=(kiWCharBuffer& other) {
  if (&other != this) {
    kiMem_Free(m_text);
    m_text = other.release();
  }
  return *this;
}

kiWCharBuffer& kiWCharBuffer::operator=(const kiWChar* text) {
  if (text == m_text) return *this;
  kiWChar* copy = kiMem_Wcsdup(text);  // before the free: text may be our own
  kiMem_Free(m_text);
  m_text = copy;
  return *this;
}
