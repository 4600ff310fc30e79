// String.h - kiString, the 16-bit (UTF-16) twin of kiCString with the same
// shared copy-on-write blocks, and its companions kiStringBuffer (a scoped
// write view) and kiWCharBuffer (a single-owner heap text).
#ifndef KI_CORE_STRING_H
#define KI_CORE_STRING_H

#include <cstdarg>
#include <type_traits>

#include "ki/Export.h"
#include "ki/core/CString.h"
#include "ki/core/StringData.h"

class kiWCharBuffer;

// Whether an argument of kiString::Printf is UTF-16 text, which the wide
// printf language cannot read.
template <typename T>
constexpr bool kiStringIsUTF16Text =
    std::is_pointer<std::decay_t<T>>::value &&
    std::is_same<std::remove_cv_t<std::remove_pointer_t<std::decay_t<T>>>, kiWChar>::value;

// The characters of the static empty block: strings made empty (default,
// from null or empty text, emptied by an edit) point here, so they never
// allocate. Constant-initialised and never written.
extern KI_API const kiWChar* const kiEmptyString;

// A string of UTF-16 code units (kiWChar on every platform); every rule of
// kiCString holds with each byte read as a 16-bit character. Surrogate pairs
// are two characters; nothing here checks them.
//
// Copy construction shares the block (a pointer copy and an increment);
// assignment copies the characters; every change first makes the block
// private. Counts are not atomic: hand a string to another thread as a
// private copy or under a lock. Positions are unsigned; kiNPos is "not found".
// Out-of-range positions never fault: they give empty results or kiNPos. A
// null text argument counts as empty (a null needle or set is never found).
// White space is the values 9-13 and 32; numbers are read through ToAscii, so
// only ASCII digits count. Case folding uses the C library's towupper and
// towlower, which follow the process's LC_CTYPE locale.
class KI_API kiString {
 public:
  // ---- Construction and assignment --------------------------------------
  kiString() { Init(); }
  // Empty whatever the number: kept so that a null literal (0, NULL) converts
  // to an empty string (intended, not a way to format numbers).
  kiString(int) { Init(); }       // NOLINT(google-explicit-constructor)
  kiString(long) { Init(); }      // NOLINT(google-explicit-constructor)
  kiString(const kiWChar* text);  // NOLINT(google-explicit-constructor); null: empty
  // count characters of text (kiNPos: up to the terminator); null: empty.
  kiString(const kiWChar* text, unsigned int count);
  // count characters from text + start (kiNPos: up to the terminator).
  kiString(const kiWChar* text, unsigned int start, unsigned int count);
  kiString(kiWChar c);                             // NOLINT(google-explicit-constructor)
  explicit kiString(const kiWCharBuffer& buffer);  // a copy of its text; null: empty
  // Shares the source's block.
  kiString(const kiString& other) : m_pchData(other.m_pchData) {
    kiStringData* data = GetStringData();
    if (data->refs > 0) {
      ++data->refs;
    } else if (data->refs == 0) {
      UnshareableCopy(other);  // a block lent out for writing is never shared
    }
  }
  // Takes the source's block; the source is left empty.
  kiString(kiString&& other) noexcept : m_pchData(other.m_pchData) { other.Init(); }
  ~kiString() { GetStringData()->Unlock(); }

  // Copies characters, never shares: nothing happens when both already hold
  // the same block; the target's own block is reused when it is private and
  // large enough.
  kiString& operator=(const kiString& other);
  kiString& operator=(const kiWChar* text);  // null: empty
  kiString& operator=(kiWChar c);
  // Empty whatever the number, like the constructors: `s = 0` and `s = NULL`.
  kiString& operator=(int) {
    Reinit();
    return *this;
  }
  kiString& operator=(long) {
    Reinit();
    return *this;
  }

  // A string holding a copy of text; text itself (a kiMem_* or malloc block)
  // is freed. Null gives an empty string.
  static kiString FromAllocatedString(const kiWChar* text);

  void Swap(kiString& other) {
    kiWChar* mine = m_pchData;
    m_pchData = other.m_pchData;
    other.m_pchData = mine;
  }

  // ---- Access ------------------------------------------------------------
  const kiWChar* c_str() const { return m_pchData; }     // never null
  operator const kiWChar*() const { return m_pchData; }  // NOLINT(google-explicit-constructor)
  unsigned int length() const { return GetStringData()->length; }
  bool IsEmpty() const { return length() == 0; }
  kiWChar First() const { return m_pchData[0]; }  // 0 when empty
  kiWChar Last() const { return IsEmpty() ? '\0' : m_pchData[length() - 1]; }
  kiStringData* GetStringData() const { return reinterpret_cast<kiStringData*>(m_pchData) - 1; }

  // ---- Writing in place --------------------------------------------------
  // Room for n characters and a terminator, lent out until UngetWriteBuf. The
  // old contents are not kept.
  kiWChar* GetWriteBuf(unsigned int n);
  // Ends the loan: the length becomes the text's strlen...
  void UngetWriteBuf();
  // ...or exactly n (no terminator is written; n is cut to the capacity).
  void UngetWriteBuf(unsigned int n);

  // ---- Concatenation -----------------------------------------------------
  kiString& operator+=(const kiString& other);  // its full length, zero bytes too
  kiString& operator+=(const kiWChar* text);    // up to the terminator; null: nothing
  kiString& operator+=(kiWChar c) {
    kiStringData* data = GetStringData();
    const unsigned int n = data->length;  // read once: the stores below may alias it
    if (data->refs == 1 && n < data->capacity) {
      m_pchData[n] = c;
      m_pchData[n + 1] = '\0';
      data->length = n + 1;
    } else {
      ConcatSelf(1, &c);
    }
    return *this;
  }

  // ---- Comparison --------------------------------------------------------
  // Characters as unsigned 16-bit values, over the shorter length; a common
  // prefix makes the shorter string less. The sign is the answer.
  int Compare(const kiString& other) const;
  // Characters folded with towlower; -1, 0 or +1.
  int CompareNoCase(const kiString& other) const;
  int CompareNoCase(const kiWChar* text) const;  // null counts as empty

  // ---- Search ------------------------------------------------------------
  // Each answers a position or kiNPos. An empty needle is never found.
  unsigned int FindStr(const kiWChar* text, unsigned int textLength, unsigned int start) const;
  unsigned int Find(const kiString& text, unsigned int start = 0) const;
  unsigned int FindFirstStr(const kiWChar* text, unsigned int start = 0) const;
  // The last match that ends at or before end (kiNPos: the length).
  unsigned int FindLastStr(const kiWChar* text, unsigned int end = kiNPos) const;
  unsigned int FindNoCase(const kiString& text, unsigned int start = 0) const;
  unsigned int FindFirstOf(const kiWChar* set, unsigned int start = 0) const;
  // start kiNPos means the length, so the answer is kiNPos.
  unsigned int FindFirstNotOf(const kiWChar* set, unsigned int start = 0) const;
  // Backward from start; kiNPos and kiNPos - 1 both mean the last character.
  unsigned int FindLastOf(const kiWChar* set, unsigned int start = kiNPos) const;
  // The first (or last) occurrence of c; the character 0 is never found.
  unsigned int Find(kiWChar c, bool fromEnd = false) const;
  unsigned int First(kiWChar c) const { return Find(c, false); }
  unsigned int Freq(kiWChar c) const;
  bool Contains(const kiWChar* text) const { return FindFirstStr(text) != kiNPos; }
  bool Contains(const kiString& text) const { return Find(text) != kiNPos; }
  bool HasOnlyNumbers() const;  // '0'..'9' only; true when empty

  // ---- Splitting (the separator is never part of the result) -------------
  kiString BeforeFirst(kiWChar separator) const;  // not found: the whole string
  kiString BeforeFirst(const kiString& separator) const;
  kiString AfterFirst(kiWChar separator) const;  // not found: empty
  kiString AfterFirst(const kiString& separator) const;
  kiString BeforeLast(kiWChar separator) const;  // not found: empty
  kiString BeforeLast(const kiString& separator) const;
  kiString AfterLast(kiWChar separator) const;  // not found: the whole string
  kiString AfterLast(const kiString& separator) const;

  // ---- Substrings --------------------------------------------------------
  // Empty when start passes the length; the count is cut at the end.
  kiString Mid(unsigned int start, unsigned int count = kiNPos) const;
  kiString Left(unsigned int n) const { return Mid(0, n); }
  // Mid(length - n) in unsigned arithmetic: kept for compatibility, an n above
  // the length gives the empty string, not the whole string.
  kiString Right(unsigned int n) const { return Mid(length() - n, kiNPos); }

  // ---- Editing in place (positions past the end are cut to the end) ------
  kiString& Erase(unsigned int pos = 0, unsigned int count = kiNPos);
  kiString& Empty() { return Erase(0, kiNPos); }
  kiString& clear() { return Erase(0, kiNPos); }
  kiString& Truncate(unsigned int n) { return Erase(n, kiNPos); }
  // count kiNPos: up to the terminator; null text or 0: nothing.
  kiString& Insert(unsigned int pos, const kiWChar* text, unsigned int count = kiNPos);
  // The count characters at pos become textLength characters of text
  // (kiNPos: up to the terminator).
  kiString& Replace(unsigned int pos, unsigned int count, const kiWChar* text,
                    unsigned int textLength);
  // Replaces the first (or every) occurrence of oldText, left to right, the
  // search resuming after each inserted text; answers the number replaced. An
  // empty or null oldText never matches; a null newText counts as empty.
  unsigned int Replace(const kiWChar* oldText, const kiWChar* newText, bool all = true);
  // Adds count copies of c (a count, not a width) at the end or the start.
  kiString& Pad(unsigned int count, kiWChar c = ' ', bool atEnd = true);
  kiString& Trim(bool fromRight = true);  // one end's white space
  kiString& TrimLeftRight();

  // ---- Transforming (new strings) ----------------------------------------
  // Each character mapped with towupper / towlower up to the first zero.
  kiString Upper() const;
  kiString Lower() const;
  // Every run of white space becomes one space; runs at either end too
  // (they are not removed).
  kiString TrimTo1Space() const;

  // A narrow copy of the same length: characters below 128 as they are,
  // every other one as '_'.
  kiCharBuffer ToAscii() const;

  // ---- Numbers -----------------------------------------------------------
  // True only when the whole text is one number. The value is stored in every
  // case (clamped on overflow, 0 when there is no number); a null pointer is
  // ignored. Base 0 chooses from the prefix ("0x" 16, "0" 8, else 10).
  // Values keep their 32-bit range whatever the size of long.
  bool ToInt32(int* value, int base = 10) const;
  bool ToLong(long* value, int base = 10) const;
  bool ToUInt32(unsigned int* value, int base = 10) const;
  bool ToULong(unsigned long* value, int base = 10) const;
  // The number is stored even when text follows it ("1,5" stores 1.0).
  bool ToDouble(double* value) const;

  // ---- Formatting --------------------------------------------------------
  // Replaces the contents with the formatted text and answers the new length.
  // The format is UTF-16 text in the C library's wide printf language ("%ls"
  // takes a wchar_t* argument, "%s" a narrow one). Room starts at 1024
  // characters and becomes 2 x room + 2 on each retry. The text ends at its
  // first zero character. A null format, or a text the C library cannot
  // write, gives an empty string. Arguments may point into this string.
  // A UTF-16 text (kiWChar*) is refused at compile time: no conversion reads
  // it; pass kiConvUTF8.cWC2WX(text) to "%ls" instead.
  template <typename... Args>
  int Printf(const kiWChar* format, const Args&... args) {
    static_assert(!(kiStringIsUTF16Text<Args> || ...),
                  "kiString::Printf: a UTF-16 text cannot be a printf argument (\"%ls\" reads "
                  "wchar_t); pass kiConvUTF8.cWC2WX(text)");
    return PrintfArguments(format, args...);
  }
  int PrintfV(const kiWChar* format, va_list args);
  template <typename... Args>
  static kiString Format(const kiWChar* format, const Args&... args) {
    static_assert(!(kiStringIsUTF16Text<Args> || ...),
                  "kiString::Format: a UTF-16 text cannot be a printf argument (\"%ls\" reads "
                  "wchar_t); pass kiConvUTF8.cWC2WX(text)");
    kiString result;
    result.PrintfArguments(format, args...);
    return result;
  }

 protected:
  // The operations everything above rests on, for derived classes.
  void Init() { m_pchData = const_cast<kiWChar*>(kiEmptyString); }
  void Reinit();
  void AllocBuffer(unsigned int n);  // a fresh block; the old one is not released
  void Alloc(unsigned int n);        // reserve room for n characters
  void AllocBeforeWrite(unsigned int n);
  void CopyBeforeWrite();
  void AssignCopy(unsigned int n, const kiWChar* text);
  void ConcatSelf(unsigned int n, const kiWChar* text, unsigned int limit = kiNPos);
  void InitWith(const kiWChar* text, unsigned int start, unsigned int count);
  void AllocCopy(kiString& target, unsigned int count, unsigned int start) const;

 private:
  struct kiAdoptTag {};
  kiString(kiAdoptTag, kiWChar* block) : m_pchData(block) {}
  void UnshareableCopy(const kiString& other);
  int PrintfArguments(const kiWChar* format, ...);  // Printf once its arguments are checked

  kiWChar* m_pchData;
};

KI_API kiString operator+(const kiString& a, const kiString& b);
KI_API kiString operator+(const kiString& a, const kiWChar* b);
KI_API kiString operator+(const kiWChar* a, const kiString& b);
KI_API kiString operator+(const kiString& a, kiWChar b);
KI_API kiString operator+(kiWChar a, const kiString& b);

// Equality and order by Compare, so that comparing with a literal compares
// text, not addresses. A null text counts as empty.
KI_API bool operator==(const kiString& a, const kiString& b);
KI_API bool operator==(const kiString& a, const kiWChar* b);
inline bool operator==(const kiWChar* a, const kiString& b) { return b == a; }
inline bool operator!=(const kiString& a, const kiString& b) { return !(a == b); }
inline bool operator!=(const kiString& a, const kiWChar* b) { return !(a == b); }
inline bool operator!=(const kiWChar* a, const kiString& b) { return !(b == a); }
inline bool operator<(const kiString& a, const kiString& b) { return a.Compare(b) < 0; }

// A scoped write view: GetWriteBuf(n) on construction, UngetWriteBuf() (length
// up to the terminator) on destruction.
class KI_API kiStringBuffer {
 public:
  kiStringBuffer(kiString& target, unsigned int n)
      : m_target(target), m_buffer(target.GetWriteBuf(n)) {}
  ~kiStringBuffer() { m_target.UngetWriteBuf(); }
  kiStringBuffer(const kiStringBuffer&) = delete;
  kiStringBuffer& operator=(const kiStringBuffer&) = delete;

  operator kiWChar*() { return m_buffer; }  // NOLINT(google-explicit-constructor)

 private:
  kiString& m_target;
  kiWChar* m_buffer;
};

// One owned, null-terminated heap text, or null. Copying hands the text over:
// the source is left null.
class KI_API kiWCharBuffer {
 public:
  kiWCharBuffer() : m_text(nullptr) {}
  // n + 1 characters, a zero at n; the rest is unset.
  explicit kiWCharBuffer(unsigned int n);
  // copy true duplicates text; false adopts it (a kiMem_* block). Null: null.
  kiWCharBuffer(const kiWChar* text, bool copy);
  kiWCharBuffer(kiWCharBuffer& other) : m_text(other.release()) {}
  kiWCharBuffer(kiWCharBuffer&& other) noexcept : m_text(other.release()) {}
  ~kiWCharBuffer() { kiMem_Free(m_text); }

  // Takes over (intended: a hand-over, not a copy); self-assignment: nothing.
  kiWCharBuffer& operator=(kiWCharBuffer& other);  // NOLINT(misc-unconventional-assign-operator)
  kiWCharBuffer& operator=(kiWCharBuffer&& other) noexcept { return *this = other; }
  kiWCharBuffer& operator=(const kiWChar* text);  // frees, then duplicates (null: null)

  const kiWChar* data() const { return m_text; }
  operator const kiWChar*() const { return m_text; }  // NOLINT(google-explicit-constructor)
  const kiWChar& operator[](unsigned int i) const { return m_text[i]; }
  // Gives the text up; the caller frees it with kiMem_Free.
  kiWChar* release() {
    kiWChar* text = m_text;
    m_text = nullptr;
    return text;
  }

 private:
  kiWChar* m_text;
};

#endif  // KI_CORE_STRING_H
