// StringCore_p.h - the algorithms of the counted strings, written once over the
// character type; the narrow and the wide string classes are thin shells over
// them. Not installed.
#ifndef KI_CORE_STRINGCORE_P_H
#define KI_CORE_STRINGCORE_P_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "ki/core/StringData.h"
#include "ki/proc/kiFatalError.h"
#include "ki/proc/kiMem.h"

// The static empty block of one character type: header then a zero character,
// laid out exactly as a heap block.
template <typename C>
struct kiStaticEmptyBlock {
  kiStringDataT<C> header;
  C zero[2];
};

// Rules is a struct with
//   static int Fold(C c);   the value compared by the case-blind operations
//   static C Upper(C c);    static C Lower(C c);
//   static bool IsSpace(C c);
// Every function works on the string's character pointer d; results are
// blocks (or the empty block, passed in as empty) that the class adopts.
template <typename C, typename Rules>
struct kiStringCore {
  using Data = kiStringDataT<C>;
  using Traits = std::char_traits<C>;

  // Largest length whose block size fits in 32 bits.
  static constexpr unsigned int kMaxLength =
      static_cast<unsigned int>((0xFFFFFFFFu - 64u) / sizeof(C)) - 32u;

  static Data* Header(const C* d) { return reinterpret_cast<Data*>(const_cast<C*>(d)) - 1; }
  static unsigned int Length(const C* d) { return Header(d)->length; }
  static size_t TextLength(const C* text) { return text != nullptr ? Traits::length(text) : 0; }
  // A length from a text, cut to what a block can hold.
  static unsigned int Clamp(size_t n) {
    return n > kMaxLength ? kMaxLength + 1 : static_cast<unsigned int>(n);
  }

  // The capacity rule: (n rounded down to a multiple of 16) + 19, so every
  // block has room for at least four more characters.
  static unsigned int CapacityFor(unsigned int n) {
    if (n > kMaxLength) kiFatalError("memory:malloc", n);  // no block can hold it
    return (n & ~15u) + 19u;
  }

  // True when p lies inside d's block (text handed in may be our own).
  static bool Inside(const C* d, const C* p) {
    const auto begin = reinterpret_cast<std::uintptr_t>(d);
    const auto at = reinterpret_cast<std::uintptr_t>(p);
    return at >= begin && at <= begin + Header(d)->capacity * sizeof(C);
  }

  // ---- Blocks ------------------------------------------------------------

  // A fresh block for n characters: count 1, length n, terminated at n.
  static C* AllocBuffer(unsigned int n) {
    const unsigned int capacity = CapacityFor(n);
    // The header, then capacity characters and the terminator.
    Data* h = static_cast<Data*>(kiMem_MallocArray(capacity + 1ull, sizeof(C), sizeof(Data)));
    h->refs = 1;
    h->length = n;
    h->capacity = capacity;
    h->data()[n] = 0;
    return h->data();
  }

  // A private block of a sole owner grown to the capacity rule for n.
  static C* Grow(C* d, unsigned int n) {
    const unsigned int capacity = CapacityFor(n);
    Data* h =
        static_cast<Data*>(kiMem_ReallocArray(Header(d), capacity + 1ull, sizeof(C), sizeof(Data)));
    h->capacity = capacity;
    return h->data();
  }

  static void Init(C*& d, const C* empty) { d = const_cast<C*>(empty); }
  static void Release(C*& d, const C* empty) {
    Header(d)->Unlock();
    d = const_cast<C*>(empty);
  }

  // A private copy of count characters from text.
  static C* NewCopy(const C* text, unsigned int count) {
    C* block = AllocBuffer(count);
    Traits::copy(block, text, count);
    return block;
  }

  // Reserve: nothing unless capacity <= n (intended: equal also grows).
  static void Alloc(C*& d, unsigned int n) {
    Data* h = Header(d);
    if (h->capacity > n) return;
    if (h->IsEmpty()) {
      d = AllocBuffer(n);
      Header(d)->length = 0;
      d[0] = 0;
    } else if (h->IsShared()) {
      C* block = AllocBuffer(n);
      Traits::copy(block, d, h->length + 1);
      Header(block)->length = h->length;
      h->Unlock();
      d = block;
    } else {
      d = Grow(d, n);
    }
  }

  // Ready to be overwritten with n characters; the length becomes 0. The
  // characters are left as they are: AssignCopy may be copying from them.
  static void AllocBeforeWrite(C*& d, unsigned int n) {
    Data* h = Header(d);
    if (h->IsEmpty() || h->IsShared()) {
      h->Unlock();
      d = AllocBuffer(n);
    } else if (h->capacity < n) {
      d = Grow(d, n);
    }
    Header(d)->length = 0;
  }

  // Room for n characters in a private block, the text kept: a shared block
  // is copied into a block sized for n, anything else reserved in place.
  static void MakeRoom(C*& d, unsigned int n) {
    Data* h = Header(d);
    if (!h->IsShared()) {
      Alloc(d, n);
      return;
    }
    C* block = AllocBuffer(n > h->length ? n : h->length);
    Traits::copy(block, d, h->length + 1);
    Header(block)->length = h->length;
    h->Unlock();
    d = block;
  }

  static void CopyBeforeWrite(C*& d) {
    Data* h = Header(d);
    if (!h->IsShared()) return;
    C* block = NewCopy(d, h->length);
    h->Unlock();
    d = block;
  }

  // n characters of text (which may lie in d's own block) replace d's.
  static void AssignCopy(C*& d, unsigned int n, const C* text, const C* empty) {
    if (n == 0) {
      Release(d, empty);
      return;
    }
    // A shared block stays alive through its other owners, and a private one
    // is only reused when it is large enough, so text stays readable.
    AllocBeforeWrite(d, n);
    Traits::move(d, text, n);
    Header(d)->length = n;
    d[n] = 0;
  }

  // Appends min(n, limit) characters of text (which may lie in d's block).
  static void ConcatSelf(C*& d, unsigned int n, const C* text, unsigned int limit) {
    const unsigned int count = n < limit ? n : limit;
    if (count == 0 || text == nullptr) return;
    Data* h = Header(d);
    const unsigned int oldLength = h->length;
    if (count > kMaxLength - oldLength) kiFatalError("memory:malloc", kMaxLength);
    const unsigned int newLength = oldLength + count;
    if (h->IsShared()) {
      C* block = AllocBuffer(newLength);
      Traits::copy(block, d, oldLength);
      Traits::copy(block + oldLength, text, count);  // before the old block may go
      h->Unlock();
      d = block;
    } else {
      if (newLength > h->capacity) {
        const bool own = !h->IsEmpty() && Inside(d, text);
        const size_t offset = own ? static_cast<size_t>(text - d) : 0;
        Alloc(d, newLength);
        if (own) text = d + offset;
      }
      Traits::move(d + oldLength, text, count);
    }
    Header(d)->length = newLength;
    d[newLength] = 0;
  }

  // count characters from text + start (kiNPos: to the terminator); null
  // text or a count of 0 give the empty block.
  static C* InitWith(const C* text, unsigned int start, unsigned int count, const C* empty) {
    if (text == nullptr) return const_cast<C*>(empty);
    if (count == kiNPos) count = Clamp(Traits::length(text + start));
    if (count == 0) return const_cast<C*>(empty);
    return NewCopy(text + start, count);
  }

  // A new block (or the empty one) with count characters of d from start.
  static C* AllocCopy(const C* d, unsigned int count, unsigned int start, const C* empty) {
    if (count == 0) return const_cast<C*>(empty);
    return NewCopy(d + start, count);
  }

  // ---- Lending out -------------------------------------------------------

  static C* GetWriteBuf(C*& d, unsigned int n) {
    AllocBeforeWrite(d, n);
    d[0] = 0;  // the old contents are not kept
    Header(d)->Validate(false);
    return d;
  }
  static void UngetWriteBuf(C*& d, unsigned int n) {
    Data* h = Header(d);
    if (h->IsEmpty()) return;  // never lent out: the static block stays unwritten
    h->length = n < h->capacity ? n : h->capacity;
    h->Validate(true);
  }
  static void UngetWriteBuf(C*& d) {
    Data* h = Header(d);
    if (h->IsEmpty()) return;
    d[h->capacity] = 0;  // a text that filled the room still ends in the block
    UngetWriteBuf(d, static_cast<unsigned int>(Traits::length(d)));
  }

  // ---- Comparison --------------------------------------------------------

  static int Compare(const C* a, unsigned int la, const C* b, unsigned int lb) {
    const int r = Traits::compare(a, b, la < lb ? la : lb);
    if (r != 0) return r;
    return la < lb ? -1 : (la > lb ? 1 : 0);
  }

  static int CompareNoCase(const C* a, unsigned int la, const C* b, unsigned int lb) {
    const unsigned int n = la < lb ? la : lb;
    for (unsigned int i = 0; i < n; ++i) {
      const int x = Rules::Fold(a[i]);
      const int y = Rules::Fold(b[i]);
      if (x != y) return x > y ? 1 : -1;
    }
    return la < lb ? -1 : (la > lb ? 1 : 0);
  }

  // ---- Search ------------------------------------------------------------

  static unsigned int FindStr(const C* d, const C* text, unsigned int textLength,
                              unsigned int start) {
    const unsigned int length = Length(d);
    if (start >= length || text == nullptr || textLength == 0) return kiNPos;
    const C* end = d + length;
    for (const C* p = d + start;; ++p) {
      p = Traits::find(p, static_cast<size_t>(end - p), text[0]);
      if (p == nullptr || static_cast<size_t>(end - p) < textLength) return kiNPos;
      if (Traits::compare(p, text, textLength) == 0) return static_cast<unsigned int>(p - d);
    }
  }

  // The last match ending at or before end.
  static unsigned int FindLast(const C* d, const C* text, unsigned int textLength,
                               unsigned int end) {
    const unsigned int length = Length(d);
    if (end == kiNPos || end > length) end = length;
    if (text == nullptr || textLength == 0 || end == 0 || end < textLength) return kiNPos;
    for (unsigned int pos = end - textLength;; --pos) {
      if (Traits::compare(d + pos, text, textLength) == 0) return pos;
      if (pos == 0) return kiNPos;
    }
  }

  static unsigned int FindNoCase(const C* d, const C* text, unsigned int textLength,
                                 unsigned int start) {
    const unsigned int length = Length(d);
    if (start > length || textLength == 0 || textLength > length - start) return kiNPos;
    for (unsigned int pos = start; pos <= length - textLength; ++pos) {
      unsigned int i = 0;
      while (i < textLength && Rules::Fold(d[pos + i]) == Rules::Fold(text[i])) ++i;
      if (i == textLength) return pos;
    }
    return kiNPos;
  }

  static bool InSet(const C* set, size_t setLength, C c) {
    return Traits::find(set, setLength, c) != nullptr;
  }

  static unsigned int FindFirstOf(const C* d, const C* set, unsigned int start, bool inSet) {
    const unsigned int length = Length(d);
    const size_t setLength = TextLength(set);
    for (unsigned int pos = start; pos < length; ++pos) {
      if (InSet(set, setLength, d[pos]) == inSet) return pos;
    }
    return kiNPos;
  }

  static unsigned int FindLastOf(const C* d, const C* set, unsigned int start) {
    const unsigned int length = Length(d);
    if (length == 0) return kiNPos;
    // Kept for compatibility: kiNPos - 1 also means "from the last character".
    if (start >= length) start = length - 1;
    const size_t setLength = TextLength(set);
    for (unsigned int pos = start;; --pos) {
      if (InSet(set, setLength, d[pos])) return pos;
      if (pos == 0) return kiNPos;
    }
  }

  static unsigned int FindChar(const C* d, C c, bool fromEnd) {
    if (c == 0) return kiNPos;
    const C set[2] = {c, 0};
    return fromEnd ? FindLastOf(d, set, kiNPos) : FindFirstOf(d, set, 0, true);
  }

  static unsigned int Freq(const C* d, C c) {
    const unsigned int length = Length(d);
    unsigned int n = 0;
    for (unsigned int i = 0; i < length; ++i) n += d[i] == c ? 1u : 0u;
    return n;
  }

  static bool HasOnlyNumbers(const C* d) {
    const unsigned int length = Length(d);
    for (unsigned int i = 0; i < length; ++i) {
      if (d[i] < C('0') || d[i] > C('9')) return false;
    }
    return true;
  }

  // ---- Substrings --------------------------------------------------------

  static C* Mid(const C* d, unsigned int start, unsigned int count, const C* empty) {
    const unsigned int length = Length(d);
    if (start > length) return const_cast<C*>(empty);
    if (count > length - start) count = length - start;
    return AllocCopy(d, count, start, empty);
  }

  // ---- Editing -----------------------------------------------------------

  static void Erase(C*& d, unsigned int pos, unsigned int count, const C* empty) {
    const unsigned int length = Length(d);
    if (pos > length) pos = length;
    if (count > length - pos) count = length - pos;
    if (count == 0) return;
    const unsigned int newLength = length - count;
    if (newLength == 0) {
      Release(d, empty);
    } else if (Header(d)->IsShared()) {
      C* block = AllocBuffer(newLength);
      Traits::copy(block, d, pos);
      Traits::copy(block + pos, d + pos + count, newLength - pos);
      Header(d)->Unlock();
      d = block;
    } else {
      Traits::move(d + pos, d + pos + count, newLength - pos);
      Header(d)->length = newLength;
      d[newLength] = 0;
    }
  }

  static void Insert(C*& d, unsigned int pos, const C* text, unsigned int count) {
    if (text == nullptr) return;
    if (count == kiNPos) count = Clamp(Traits::length(text));
    if (count == 0) return;
    const unsigned int length = Length(d);
    if (pos > length) pos = length;
    if (!Header(d)->IsEmpty() && Inside(d, text)) {
      // Our own characters: keep a copy, since the block moves and shifts.
      C* copy = NewCopy(text, count);
      Insert(d, pos, copy, count);
      Header(copy)->Unlock();
      return;
    }
    if (count > kMaxLength - length) kiFatalError("memory:malloc", kMaxLength);
    MakeRoom(d, length + count);
    Traits::move(d + pos + count, d + pos, length - pos);
    Traits::copy(d + pos, text, count);
    Header(d)->length = length + count;
    d[length + count] = 0;
  }

  // d becomes its first pos characters, then text, then what followed
  // pos + count. Built in a new block, so text may be our own.
  static void Replace(C*& d, unsigned int pos, unsigned int count, const C* text,
                      unsigned int textLength, const C* empty) {
    if (text == nullptr) textLength = 0;
    if (textLength == kiNPos) textLength = Clamp(Traits::length(text));
    const unsigned int length = Length(d);
    if (pos > length) pos = length;
    if (count > length - pos) count = length - pos;
    const unsigned int tail = length - pos - count;
    if (textLength > kMaxLength - pos - tail) kiFatalError("memory:malloc", kMaxLength);
    const unsigned int newLength = pos + textLength + tail;
    C* block = newLength == 0 ? const_cast<C*>(empty) : AllocBuffer(newLength);
    if (newLength != 0) {
      Traits::copy(block, d, pos);
      if (textLength != 0) Traits::copy(block + pos, text, textLength);
      Traits::copy(block + pos + textLength, d + pos + count, tail);
    }
    Header(d)->Unlock();
    d = block;
  }

  // Every (or the first) occurrence, left to right, searching on after each
  // replacement. Built in one pass: the search after an inserted text runs
  // over the untouched rest, so this equals replacing one at a time.
  static unsigned int ReplaceAll(C*& d, const C* oldText, const C* newText, bool all,
                                 const C* empty) {
    const size_t oldSize = TextLength(oldText);
    const unsigned int length = Length(d);
    if (oldSize == 0 || length == 0 || oldSize > length) return 0;
    const auto oldLength = static_cast<unsigned int>(oldSize);
    const unsigned int newLength = Clamp(TextLength(newText));

    unsigned int found = 0;
    for (unsigned int pos = FindStr(d, oldText, oldLength, 0); pos != kiNPos;
         pos = FindStr(d, oldText, oldLength, pos + oldLength)) {
      ++found;
      if (!all) break;
    }
    if (found == 0) return 0;
    const unsigned long long resultLength = length +
                                            static_cast<unsigned long long>(found) * newLength -
                                            static_cast<unsigned long long>(found) * oldLength;
    if (resultLength > kMaxLength) kiFatalError("memory:malloc", kMaxLength);

    if (resultLength == 0) {  // everything was replaced by nothing
      Release(d, empty);
      return found;
    }
    C* block = AllocBuffer(static_cast<unsigned int>(resultLength));
    C* out = block;
    unsigned int from = 0;
    for (unsigned int pos = FindStr(d, oldText, oldLength, 0), left = found; left != 0;
         pos = FindStr(d, oldText, oldLength, pos + oldLength), --left) {
      Traits::copy(out, d + from, pos - from);
      out += pos - from;
      if (newLength != 0) Traits::copy(out, newText, newLength);
      out += newLength;
      from = pos + oldLength;
    }
    Traits::copy(out, d + from, length - from);
    Header(d)->Unlock();
    d = block;
    return found;
  }

  static void Pad(C*& d, unsigned int count, C c, bool atEnd) {
    if (count == 0) return;
    const unsigned int length = Length(d);
    if (count > kMaxLength - length) kiFatalError("memory:malloc", kMaxLength);
    MakeRoom(d, length + count);
    if (!atEnd) Traits::move(d + count, d, length);
    Traits::assign(atEnd ? d + length : d, count, c);
    Header(d)->length = length + count;
    d[length + count] = 0;
  }

  static void Trim(C*& d, bool fromRight, const C* empty) {
    const unsigned int length = Length(d);
    unsigned int n = 0;
    if (fromRight) {
      while (n < length && Rules::IsSpace(d[length - 1 - n])) ++n;
      Erase(d, length - n, n, empty);
    } else {
      while (n < length && Rules::IsSpace(d[n])) ++n;
      Erase(d, 0, n, empty);
    }
  }

  // ---- Transforming ------------------------------------------------------

  // A copy with the characters up to the first zero mapped.
  template <typename Map>
  static C* Mapped(const C* d, Map map, const C* empty) {
    const unsigned int length = Length(d);
    if (length == 0) return const_cast<C*>(empty);
    C* block = NewCopy(d, length);
    for (C* p = block; *p != 0; ++p) *p = map(*p);
    return block;
  }

  static C* TrimTo1Space(const C* d, const C* empty) {
    const unsigned int length = Length(d);
    if (length == 0) return const_cast<C*>(empty);
    C* block = AllocBuffer(length);
    unsigned int out = 0;
    for (unsigned int i = 0; i < length; ++i) {
      if (!Rules::IsSpace(d[i])) {
        block[out++] = d[i];
      } else if (i == 0 || !Rules::IsSpace(d[i - 1])) {
        block[out++] = C(' ');
      }
    }
    Header(block)->length = out;
    block[out] = 0;
    return block;
  }
};

#endif  // KI_CORE_STRINGCORE_P_H
