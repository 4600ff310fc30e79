// CString.h - kiCString, the 8-bit string with shared copy-on-write blocks,
// and its companions kiCStringBuffer (a scoped write view) and kiCharBuffer
// (a single-owner heap text).
#ifndef KI_CORE_CSTRING_H
#define KI_CORE_CSTRING_H

#include <cstdarg>
#include <cstring>

#include "ki/Export.h"
#include "ki/core/StringData.h"

class kiCharBuffer;

// The characters of the static empty block: strings made empty (default,
// from null or empty text, emptied by an edit) point here, so they never
// allocate. Constant-initialised and never written.
extern KI_API const char* const kiEmptyCString;

// A byte string: UTF-8 or locale text alike, all rules are byte rules, and zero
// bytes inside are kept. One pointer to the characters of a counted block.
//
// Copy construction shares the block (a pointer copy and an increment);
// assignment copies the characters; every change first makes the block
// private. Counts are not atomic: hand a string to another thread as a
// private copy or under a lock. Positions are unsigned; kiNPos is "not found".
// Out-of-range positions never fault: they give empty results or kiNPos. A
// null text argument counts as empty (a null needle or set is never found).
// Case folding, white space (bytes 9-13 and space) and numbers follow the "C"
// locale whatever the process locale is.
class KI_API kiCString {
 public:
  // ---- Construction and assignment --------------------------------------
  kiCString() { Init(); }
  // Empty whatever the number: kept so that a null literal (0, NULL) converts
  // to an empty string (intended, not a way to format numbers).
  kiCString(int) { Init(); }    // NOLINT(google-explicit-constructor)
  kiCString(long) { Init(); }   // NOLINT(google-explicit-constructor)
  kiCString(const char* text);  // NOLINT(google-explicit-constructor); null: empty
  // count bytes of text (kiNPos: up to the terminator); null text: empty.
  kiCString(const char* text, unsigned int count);
  // count bytes from text + start (kiNPos: up to the terminator).
  kiCString(const char* text, unsigned int start, unsigned int count);
  kiCString(char c);                               // NOLINT(google-explicit-constructor)
  explicit kiCString(const kiCharBuffer& buffer);  // a copy of its text; null: empty
  // Shares the source's block.
  kiCString(const kiCString& other) : m_pchData(other.m_pchData) {
    kiCStringData* data = GetStringData();
    if (data->refs > 0) {
      ++data->refs;
    } else if (data->refs == 0) {
      UnshareableCopy(other);  // a block lent out for writing is never shared
    }
  }
  // Takes the source's block; the source is left empty.
  kiCString(kiCString&& other) noexcept : m_pchData(other.m_pchData) { other.Init(); }
  ~kiCString() { GetStringData()->Unlock(); }

  // Copies characters, never shares: nothing happens when both already hold
  // the same block; the target's own block is reused when it is private and
  // large enough.
  kiCString& operator=(const kiCString& other);
  kiCString& operator=(const char* text);  // null: empty
  kiCString& operator=(char c);
  // Empty whatever the number, like the constructors: `s = 0` and `s = NULL`.
  kiCString& operator=(int) {
    Reinit();
    return *this;
  }
  kiCString& operator=(long) {
    Reinit();
    return *this;
  }

  // A string holding a copy of text; text itself (a kiMem_* or malloc block)
  // is freed. Null gives an empty string.
  static kiCString FromAllocatedString(const char* text);

  void Swap(kiCString& other) {
    char* mine = m_pchData;
    m_pchData = other.m_pchData;
    other.m_pchData = mine;
  }

  // ---- Access ------------------------------------------------------------
  const char* c_str() const { return m_pchData; }     // never null
  operator const char*() const { return m_pchData; }  // NOLINT(google-explicit-constructor)
  unsigned int length() const { return GetStringData()->length; }
  bool IsEmpty() const { return length() == 0; }
  char First() const { return m_pchData[0]; }  // 0 when empty
  char Last() const { return IsEmpty() ? '\0' : m_pchData[length() - 1]; }
  kiCStringData* GetStringData() const { return reinterpret_cast<kiCStringData*>(m_pchData) - 1; }

  // ---- Writing in place --------------------------------------------------
  // Room for n characters and a terminator, lent out until UngetWriteBuf. The
  // old contents are not kept.
  char* GetWriteBuf(unsigned int n);
  // Ends the loan: the length becomes the text's strlen...
  void UngetWriteBuf();
  // ...or exactly n (no terminator is written; n is cut to the capacity).
  void UngetWriteBuf(unsigned int n);

  // ---- Concatenation -----------------------------------------------------
  kiCString& operator+=(const kiCString& other);  // its full length, zero bytes too
  kiCString& operator+=(const char* text);        // up to the terminator; null: nothing
  // count bytes of text, zero bytes included; null text or 0: nothing. The
  // common case (a private block with room) stays inline for writers that
  // append many small pieces.
  kiCString& Append(const char* text, unsigned int count) {
    kiCStringData* data = GetStringData();
    const unsigned int n = data->length;
    if (count == 0 || text == nullptr) return *this;
    if (data->refs == 1 && count <= data->capacity - n) {
      std::memmove(m_pchData + n, text, count);
      m_pchData[n + count] = '\0';
      data->length = n + count;
    } else {
      ConcatSelf(count, text);
    }
    return *this;
  }
  // Room for at least n characters without another allocation; the text is
  // kept (a shared block becomes a private copy).
  void Reserve(unsigned int n);
  unsigned int capacity() const { return GetStringData()->capacity; }
  kiCString& operator+=(char c) {
    kiCStringData* data = GetStringData();
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
  // Bytes as unsigned, over the shorter length; a common prefix makes the
  // shorter string less. The sign is the answer, not the size.
  int Compare(const kiCString& other) const;
  // ASCII letters folded, bytes compared as signed chars (kept for
  // compatibility: bytes above 127 sort before letters); -1, 0 or +1.
  int CompareNoCase(const kiCString& other) const;
  int CompareNoCase(const char* text) const;  // null counts as empty

  // ---- Search ------------------------------------------------------------
  // Each answers a position or kiNPos. An empty needle is never found.
  unsigned int FindStr(const char* text, unsigned int textLength, unsigned int start) const;
  unsigned int Find(const kiCString& text, unsigned int start = 0) const;
  unsigned int FindFirstStr(const char* text, unsigned int start = 0) const;
  // The last match that ends at or before end (kiNPos: the length).
  unsigned int FindLastStr(const char* text, unsigned int end = kiNPos) const;
  unsigned int FindNoCase(const kiCString& text, unsigned int start = 0) const;
  unsigned int FindFirstOf(const char* set, unsigned int start = 0) const;
  // start kiNPos means the length, so the answer is kiNPos.
  unsigned int FindFirstNotOf(const char* set, unsigned int start = 0) const;
  // Backward from start; kiNPos and kiNPos - 1 both mean the last character.
  unsigned int FindLastOf(const char* set, unsigned int start = kiNPos) const;
  // The first (or last) occurrence of c; the character 0 is never found.
  unsigned int Find(char c, bool fromEnd = false) const;
  unsigned int First(char c) const { return Find(c, false); }
  unsigned int Freq(char c) const;
  bool Contains(const char* text) const { return FindFirstStr(text) != kiNPos; }
  bool Contains(const kiCString& text) const { return Find(text) != kiNPos; }
  bool HasOnlyNumbers() const;  // '0'..'9' only; true when empty

  // ---- Splitting (the separator is never part of the result) -------------
  kiCString BeforeFirst(char separator) const;  // not found: the whole string
  kiCString BeforeFirst(const kiCString& separator) const;
  kiCString AfterFirst(char separator) const;  // not found: empty
  kiCString AfterFirst(const kiCString& separator) const;
  kiCString BeforeLast(char separator) const;  // not found: empty
  kiCString BeforeLast(const kiCString& separator) const;
  kiCString AfterLast(char separator) const;  // not found: the whole string
  kiCString AfterLast(const kiCString& separator) const;

  // ---- Substrings --------------------------------------------------------
  // Empty when start passes the length; the count is cut at the end.
  kiCString Mid(unsigned int start, unsigned int count = kiNPos) const;
  kiCString Left(unsigned int n) const { return Mid(0, n); }
  // Mid(length - n) in unsigned arithmetic: kept for compatibility, an n above
  // the length gives the empty string, not the whole string.
  kiCString Right(unsigned int n) const { return Mid(length() - n, kiNPos); }

  // ---- Editing in place (positions past the end are cut to the end) ------
  kiCString& Erase(unsigned int pos = 0, unsigned int count = kiNPos);
  kiCString& Empty() { return Erase(0, kiNPos); }
  kiCString& clear() { return Erase(0, kiNPos); }
  kiCString& Truncate(unsigned int n) { return Erase(n, kiNPos); }
  // count kiNPos: up to the terminator; null text or 0: nothing.
  kiCString& Insert(unsigned int pos, const char* text, unsigned int count = kiNPos);
  // The count characters at pos become textLength bytes of text (kiNPos: up
  // to the terminator).
  kiCString& Replace(unsigned int pos, unsigned int count, const char* text,
                     unsigned int textLength);
  // Replaces the first (or every) occurrence of oldText, left to right, the
  // search resuming after each inserted text; answers the number replaced. An
  // empty or null oldText never matches; a null newText counts as empty.
  unsigned int Replace(const char* oldText, const char* newText, bool all = true);
  // Adds count copies of c (a count, not a width) at the end or the start.
  kiCString& Pad(unsigned int count, char c = ' ', bool atEnd = true);
  kiCString& Trim(bool fromRight = true);  // one end's white space
  kiCString& TrimLeftRight();

  // ---- Transforming (new strings) ----------------------------------------
  // ASCII letters mapped up to the first zero byte; other bytes unchanged.
  kiCString Upper() const;
  kiCString Lower() const;
  // Every run of white space becomes one space; runs at either end too
  // (they are not removed).
  kiCString TrimTo1Space() const;

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
  // Room starts at 1024 characters and grows by one per retry (intended: the
  // cost of longer results is quadratic). The text ends at its first zero
  // byte. A null format gives an empty string. Arguments may point into this
  // string.
  int Printf(const char* format, ...) KI_PRINTF(2, 3);
  int PrintfV(const char* format, va_list args) KI_PRINTF(2, 0);
  static kiCString Format(const char* format, ...) KI_PRINTF(1, 2);

 protected:
  // The operations everything above rests on, for derived classes.
  void Init() { m_pchData = const_cast<char*>(kiEmptyCString); }
  void Reinit();
  void AllocBuffer(unsigned int n);  // a fresh block; the old one is not released
  void Alloc(unsigned int n);        // reserve room for n characters
  void AllocBeforeWrite(unsigned int n);
  void CopyBeforeWrite();
  void AssignCopy(unsigned int n, const char* text);
  void ConcatSelf(unsigned int n, const char* text, unsigned int limit = kiNPos);
  void InitWith(const char* text, unsigned int start, unsigned int count);
  void AllocCopy(kiCString& target, unsigned int count, unsigned int start) const;

 private:
  struct kiAdoptTag {};
  kiCString(kiAdoptTag, char* block) : m_pchData(block) {}
  void UnshareableCopy(const kiCString& other);

  char* m_pchData;
};

KI_API kiCString operator+(const kiCString& a, const kiCString& b);
KI_API kiCString operator+(const kiCString& a, const char* b);
KI_API kiCString operator+(const char* a, const kiCString& b);
KI_API kiCString operator+(const kiCString& a, char b);
KI_API kiCString operator+(char a, const kiCString& b);

// Equality and order by Compare, so that comparing with a literal compares
// text, not addresses. A null text counts as empty.
KI_API bool operator==(const kiCString& a, const kiCString& b);
KI_API bool operator==(const kiCString& a, const char* b);
inline bool operator==(const char* a, const kiCString& b) { return b == a; }
inline bool operator!=(const kiCString& a, const kiCString& b) { return !(a == b); }
inline bool operator!=(const kiCString& a, const char* b) { return !(a == b); }
inline bool operator!=(const char* a, const kiCString& b) { return !(b == a); }
inline bool operator<(const kiCString& a, const kiCString& b) { return a.Compare(b) < 0; }

// A scoped write view: GetWriteBuf(n) on construction, UngetWriteBuf() (length
// by strlen) on destruction.
class KI_API kiCStringBuffer {
 public:
  kiCStringBuffer(kiCString& target, unsigned int n)
      : m_target(target), m_buffer(target.GetWriteBuf(n)) {}
  ~kiCStringBuffer() { m_target.UngetWriteBuf(); }
  kiCStringBuffer(const kiCStringBuffer&) = delete;
  kiCStringBuffer& operator=(const kiCStringBuffer&) = delete;

  operator char*() { return m_buffer; }  // NOLINT(google-explicit-constructor)

 private:
  kiCString& m_target;
  char* m_buffer;
};

// One owned, null-terminated heap text, or null. Copying hands the text over:
// the source is left null.
class KI_API kiCharBuffer {
 public:
  kiCharBuffer() : m_text(nullptr) {}
  // n + 1 bytes, a zero byte at n; the rest is unset.
  explicit kiCharBuffer(unsigned int n);
  // copy true duplicates text; false adopts it (a kiMem_* block). Null: null.
  kiCharBuffer(const char* text, bool copy);
  kiCharBuffer(kiCharBuffer& other) : m_text(other.release()) {}
  kiCharBuffer(kiCharBuffer&& other) noexcept : m_text(other.release()) {}
  ~kiCharBuffer() { kiMem_Free(m_text); }

  // Takes over (intended: a hand-over, not a copy); self-assignment: nothing.
  kiCharBuffer& operator=(kiCharBuffer& other);  // NOLINT(misc-unconventional-assign-operator)
  kiCharBuffer& operator=(kiCharBuffer&& other) noexcept { return *this = other; }
  kiCharBuffer& operator=(const char* text);  // frees, then duplicates (null: null)

  const char* data() const { return m_text; }
  operator const char*() const { return m_text; }  // NOLINT(google-explicit-constructor)
  const char& operator[](unsigned int i) const { return m_text[i]; }
  // Gives the text up; the caller frees it with kiMem_Free.
  char* release() {
    char* text = m_text;
    m_text = nullptr;
    return text;
  }

 private:
  char* m_text;
};

#endif  // KI_CORE_CSTRING_H
