// cstring_ops_fuzzer.cpp - kiCString driven by a stream of operations beside a
// std::string model of each one. A second kiCString that shares the block
// (copy construction) is taken when an opcode asks for it and must keep its
// own text through every later change. After each operation both strings are
// compared with their models: length, bytes and terminator.
//
// Input: opcode byte (bit 7: share the string into the copy first), then the
// operation's arguments; reads past the end give zeros.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

#include "ki/core/CString.h"

#include "FuzzInput.h"

namespace {

constexpr size_t kMaxInput = 4096;
constexpr size_t kMaxLength = 8192;      // longer strings are cut back to half
constexpr size_t kMaxPrintfLength = 1300;  // Printf is quadratic past 1024

const char* g_op = "";  // the operation under way, for the failure report

// kiFuzz::Fail with the operation under way.
[[noreturn]] void Fail(const char* what) {
  kiFuzz::Fail((std::string(what) + " (operation " + g_op + ")").c_str());
}

void Check(bool ok, const char* what) {
  if (!ok) Fail(what);
}

void Same(const kiCString& s, const std::string& m, const char* what) {
  Check(s.c_str() != nullptr && s.length() == m.size() &&
            std::memcmp(s.c_str(), m.c_str(), m.size() + 1) == 0,
        what);
  Check(s.IsEmpty() == m.empty() && s.First() == (m.empty() ? '\0' : m.front()) &&
            s.Last() == (m.empty() ? '\0' : m.back()),
        what);
}

unsigned int Pos(size_t p) { return p == std::string::npos ? kiNPos : static_cast<unsigned int>(p); }

// The text a C string argument stands for: up to its first zero byte.
std::string CPart(const char* text) { return text != nullptr ? std::string(text) : std::string(); }

bool IsSpace(char c) { return c == ' ' || (c >= 9 && c <= 13); }

// A text argument: bytes (zero bytes included), or null.
struct Text {
  std::string bytes;
  bool null = false;
  const char* Ptr() const { return null ? nullptr : bytes.c_str(); }
  unsigned int Size() const { return static_cast<unsigned int>(bytes.size()); }
  std::string C() const { return CPart(Ptr()); }
};

class Reader : public kiFuzz::Reader {
 public:
  using kiFuzz::Reader::Reader;

  // A position or count near the edges of a string of length n: small, n
  // minus or plus a little (wrapping below zero), or kiNPos minus a little.
  unsigned int Number(unsigned int n) {
    const uint8_t b = Byte();
    const unsigned int small = b & 63u;
    switch (b >> 6) {
      case 0: return small;
      case 1: return n - small;
      case 2: return n + small;
      default: return kiNPos - small;
    }
  }
  // An offset into a text of length n, at most n.
  unsigned int Offset(unsigned int n) { return std::min(Number(n), n); }
  // A count of bytes of a text of size n: kiNPos ("up to the terminator") or
  // at most n.
  unsigned int CountWithin(size_t n) {
    const uint8_t b = Byte();
    return b >= 0xF0 ? kiNPos : static_cast<unsigned int>(b % (n + 1));
  }

  // Up to 31 bytes from the input, or a piece of own (so that searches and
  // replacements find something), or null where that is allowed.
  Text ReadText(const std::string& own, bool mayBeNull) {
    Text t;
    const uint8_t b = Byte();
    const size_t n = b & 31u;
    if ((b & 0x80) != 0) {
      const size_t start = ((size_t{Byte()} << 8) | Byte()) % (own.size() + 1);
      t.bytes = own.substr(start, n);
    } else if (mayBeNull && (b & 0x60) == 0x60) {
      t.null = true;
    } else {
      for (size_t i = 0; i < n && !AtEnd(); ++i) t.bytes += static_cast<char>(Byte());
    }
    return t;
  }
};

// ---- Models --------------------------------------------------------------------

std::string Mid(const std::string& m, unsigned int start, unsigned int count) {
  if (start > m.size()) return std::string();
  return m.substr(start, std::min<size_t>(count, m.size() - start));
}

unsigned int FindStr(const std::string& m, const std::string& text, unsigned int start) {
  if (start >= m.size() || text.empty()) return kiNPos;
  return Pos(m.find(text, start));
}

unsigned int FindLast(const std::string& m, const std::string& text, unsigned int end) {
  if (end == kiNPos || end > m.size()) end = static_cast<unsigned int>(m.size());
  if (text.empty() || end < text.size()) return kiNPos;
  return Pos(m.rfind(text, end - text.size()));
}

int FoldNoCase(char c) {
  const int v = static_cast<signed char>(c);
  return v >= 'A' && v <= 'Z' ? v + 32 : v;
}

unsigned int FindNoCase(const std::string& m, const std::string& text, unsigned int start) {
  if (start > m.size() || text.empty() || text.size() > m.size() - start) return kiNPos;
  for (size_t pos = start; pos + text.size() <= m.size(); ++pos) {
    size_t i = 0;
    while (i < text.size() && FoldNoCase(m[pos + i]) == FoldNoCase(text[i])) ++i;
    if (i == text.size()) return static_cast<unsigned int>(pos);
  }
  return kiNPos;
}

int Sign(int v) { return v < 0 ? -1 : (v > 0 ? 1 : 0); }

int Compare(const std::string& a, const std::string& b) {
  const int r = std::memcmp(a.data(), b.data(), std::min(a.size(), b.size()));
  if (r != 0) return Sign(r);
  return a.size() < b.size() ? -1 : (a.size() > b.size() ? 1 : 0);
}

int CompareNoCase(const std::string& a, const std::string& b) {
  for (size_t i = 0; i < a.size() && i < b.size(); ++i) {
    const int x = FoldNoCase(a[i]);
    const int y = FoldNoCase(b[i]);
    if (x != y) return x > y ? 1 : -1;
  }
  return a.size() < b.size() ? -1 : (a.size() > b.size() ? 1 : 0);
}

unsigned int FindChar(const std::string& m, char c, bool fromEnd) {
  if (c == 0) return kiNPos;
  return Pos(fromEnd ? m.rfind(c) : m.find(c));
}

void Erase(std::string& m, unsigned int pos, unsigned int count) {
  pos = std::min<unsigned int>(pos, static_cast<unsigned int>(m.size()));
  m.erase(pos, std::min<size_t>(count, m.size() - pos));
}

// count bytes of text at pos; text is already the bytes the count selects.
void Insert(std::string& m, unsigned int pos, const std::string& text) {
  m.insert(std::min<size_t>(pos, m.size()), text);
}

void ReplaceRange(std::string& m, unsigned int pos, unsigned int count, const std::string& text) {
  pos = std::min<unsigned int>(pos, static_cast<unsigned int>(m.size()));
  m.replace(pos, std::min<size_t>(count, m.size() - pos), text);
}

// Find, replace, resume after the inserted text; an empty old never matches.
unsigned int ReplaceAll(std::string& m, const std::string& oldText, const std::string& newText,
                        bool all) {
  if (oldText.empty()) return 0;
  unsigned int count = 0;
  for (size_t pos = m.find(oldText); pos != std::string::npos;
       pos = m.find(oldText, pos + newText.size())) {
    m.replace(pos, oldText.size(), newText);
    ++count;
    if (!all) break;
  }
  return count;
}

std::string Mapped(std::string m, bool upper) {
  for (char& c : m) {
    if (c == 0) break;
    if (upper && c >= 'a' && c <= 'z') c = static_cast<char>(c - 32);
    if (!upper && c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
  }
  return m;
}

std::string TrimTo1Space(const std::string& m) {
  std::string out;
  for (size_t i = 0; i < m.size(); ++i) {
    if (!IsSpace(m[i])) {
      out += m[i];
    } else if (i == 0 || !IsSpace(m[i - 1])) {
      out += ' ';
    }
  }
  return out;
}

// The bytes Insert and Replace take from text with a count (kiNPos: up to
// the terminator; a null text: none).
std::string Selected(const Text& t, unsigned int count) {
  if (t.null) return std::string();
  return count == kiNPos ? t.C() : t.bytes.substr(0, count);
}

// ---- The operations -------------------------------------------------------------

struct State {
  kiCString s;
  std::string m;
  kiCString copy;  // shares s's block from the moment it is taken
  std::string copyModel;
};

enum Op {
  kAppendString, kAppendText, kAppendChar, kAppendSelf, kInsert, kErase, kReplaceRange,
  kReplaceAll, kSubstrings, kFindText, kFindSet, kCompare, kTrim, kTransform, kPad, kTruncate,
  kAssign, kPrintf, kWriteBuf, kDropCopy, kSplit, kOpCount
};

const char* const kOpNames[kOpCount] = {
    "+= kiCString", "+= text", "+= char", "+= self", "Insert", "Erase", "Replace(pos)",
    "Replace(old, new)", "Mid/Left/Right", "Find text", "Find in set", "Compare", "Trim",
    "Upper/Lower/TrimTo1Space", "Pad", "Truncate", "assignment", "Printf", "GetWriteBuf",
    "drop the copy", "Before/After"};

void AppendSelf(Reader& in, State& st) {
  const unsigned int len = st.s.length();
  switch (in.Byte() % 3) {
    case 0:
      st.s += st.s;
      st.m += std::string(st.m);
      break;
    case 1:
      st.s += st.s.c_str();
      st.m += CPart(st.m.c_str());
      break;
    default: {
      const unsigned int k = in.Offset(len);
      st.s += st.s.c_str() + k;
      st.m += CPart(st.m.c_str() + k);
    }
  }
}

void InsertOrReplace(Reader& in, State& st, bool insert) {
  const unsigned int len = st.s.length();
  const unsigned int pos = in.Number(len);
  const unsigned int count = insert ? 0 : in.Number(len);
  const char* text = nullptr;
  unsigned int textCount = 0;
  std::string bytes;
  Text t;
  if (in.Flag()) {  // our own characters
    const unsigned int k = in.Offset(len);
    text = st.s.c_str() + k;
    textCount = in.CountWithin(len - k);
    bytes = textCount == kiNPos ? CPart(st.m.c_str() + k) : st.m.substr(k, textCount);
  } else {
    t = in.ReadText(st.m, true);
    text = t.Ptr();
    textCount = in.CountWithin(t.bytes.size());
    bytes = Selected(t, textCount);
  }
  if (insert) {
    st.s.Insert(pos, text, textCount);
    Insert(st.m, pos, bytes);
  } else {
    st.s.Replace(pos, count, text, textCount);
    ReplaceRange(st.m, pos, count, bytes);
  }
}

void ReplaceAllOp(Reader& in, State& st) {
  const Text oldText = in.ReadText(st.m, true);
  const Text newText = in.ReadText(st.m, true);
  const bool all = in.Flag();
  const char* oldPtr = oldText.Ptr();
  std::string oldModel = oldText.C();
  if (in.Flag()) {  // the old text lies in the string itself
    const unsigned int k = in.Offset(st.s.length());
    oldPtr = st.s.c_str() + k;
    oldModel = CPart(st.m.c_str() + k);
  }
  const unsigned int n = st.s.Replace(oldPtr, newText.Ptr(), all);
  Check(n == ReplaceAll(st.m, oldModel, newText.C(), all), "Replace(old, new) count");
}

void Substrings(Reader& in, State& st) {
  const unsigned int len = st.s.length();
  const unsigned int start = in.Number(len);
  const unsigned int count = in.Number(len);
  const kiCString mid = st.s.Mid(start, count);
  Same(mid, Mid(st.m, start, count), "Mid");
  Same(st.s.Left(count), Mid(st.m, 0, count), "Left");
  Same(st.s.Right(count), Mid(st.m, len - count, kiNPos), "Right");
  if (in.Flag()) {
    st.s = mid;
    st.m = Mid(st.m, start, count);
  }
}

void FindText(Reader& in, State& st) {
  const std::string& m = st.m;
  const Text t = in.ReadText(m, false);
  const unsigned int start = in.Number(st.s.length());
  const kiCString needle(t.bytes.c_str(), t.Size());
  Check(st.s.FindStr(t.bytes.c_str(), t.Size(), start) == FindStr(m, t.bytes, start), "FindStr");
  Check(st.s.Find(needle, start) == FindStr(m, t.bytes, start), "Find");
  Check(st.s.FindFirstStr(t.Ptr(), start) == FindStr(m, t.C(), start), "FindFirstStr");
  Check(st.s.Contains(t.Ptr()) == (FindStr(m, t.C(), 0) != kiNPos), "Contains");
  Check(st.s.FindLastStr(t.Ptr(), start) == FindLast(m, t.C(), start), "FindLastStr");
  Check(st.s.FindNoCase(needle, start) == FindNoCase(m, t.bytes, start), "FindNoCase");
}

void FindSet(Reader& in, State& st) {
  const std::string& m = st.m;
  const Text set = in.ReadText(m, false);
  const unsigned int start = in.Number(st.s.length());
  const char c = static_cast<char>(in.Byte());
  const std::string s = set.C();
  Check(st.s.FindFirstOf(set.Ptr(), start) == Pos(m.find_first_of(s, start)), "FindFirstOf");
  Check(st.s.FindFirstNotOf(set.Ptr(), start) == Pos(m.find_first_not_of(s, start)),
        "FindFirstNotOf");
  Check(st.s.FindLastOf(set.Ptr(), start) == Pos(m.find_last_of(s, start)), "FindLastOf");
  Check(st.s.Find(c, false) == FindChar(m, c, false), "Find(char)");
  Check(st.s.Find(c, true) == FindChar(m, c, true), "Find(char, from the end)");
  Check(st.s.Freq(c) == static_cast<unsigned int>(std::count(m.begin(), m.end(), c)), "Freq");
}

void CompareOp(Reader& in, State& st) {
  const Text t = in.ReadText(st.m, true);
  const kiCString other(t.bytes.c_str(), t.Size());
  Check(Sign(st.s.Compare(other)) == Compare(st.m, t.bytes), "Compare");
  Check(st.s.CompareNoCase(other) == CompareNoCase(st.m, t.bytes), "CompareNoCase");
  Check(st.s.CompareNoCase(t.Ptr()) == CompareNoCase(st.m, t.C()), "CompareNoCase(text)");
  Check((st.s == other) == (st.m == t.bytes), "==");
  Check((st.s == t.Ptr()) == (st.m == t.C()), "== text");
}

void TrimOp(Reader& in, State& st) {
  std::string& m = st.m;
  const uint8_t how = in.Byte() % 3;
  if (how != 1) {  // from the right
    while (!m.empty() && IsSpace(m.back())) m.pop_back();
  }
  if (how != 0) {  // from the left
    size_t n = 0;
    while (n < m.size() && IsSpace(m[n])) ++n;
    m.erase(0, n);
  }
  if (how == 2) {
    st.s.TrimLeftRight();
  } else {
    st.s.Trim(how == 0);
  }
}

void Transform(Reader& in, State& st) {
  const kiCString upper = st.s.Upper();
  const kiCString lower = st.s.Lower();
  const kiCString spaced = st.s.TrimTo1Space();
  Same(upper, Mapped(st.m, true), "Upper");
  Same(lower, Mapped(st.m, false), "Lower");
  Same(spaced, TrimTo1Space(st.m), "TrimTo1Space");
  switch (in.Byte() % 4) {
    case 0: st.s = upper; st.m = Mapped(st.m, true); break;
    case 1: st.s = lower; st.m = Mapped(st.m, false); break;
    case 2: st.s = spaced; st.m = TrimTo1Space(st.m); break;
    default: break;
  }
}

void Assign(Reader& in, State& st) {
  const unsigned int len = st.s.length();
  switch (in.Byte() % 6) {
    case 0: {
      const kiCString& self = st.s;
      st.s = self;
      break;
    }
    case 1: {
      const unsigned int k = in.Offset(len);
      st.s = st.s.c_str() + k;
      st.m = CPart(st.m.c_str() + k);
      break;
    }
    case 2:
      st.s = st.copy;
      st.m = st.copyModel;
      break;
    case 3: {
      const char c = static_cast<char>(in.Byte());
      st.s = c;
      st.m = std::string(1, c);
      break;
    }
    case 4: {
      const Text t = in.ReadText(st.m, true);
      st.s = t.Ptr();
      st.m = t.C();
      break;
    }
    default: {  // the (text, start, count) constructor
      const Text t = in.ReadText(st.m, false);
      const unsigned int start = in.Offset(t.Size());
      const unsigned int count = in.CountWithin(t.Size() - start);
      st.s = kiCString(t.bytes.c_str(), start, count);
      st.m = count == kiNPos ? CPart(t.bytes.c_str() + start) : t.bytes.substr(start, count);
    }
  }
}

void PrintfOp(Reader& in, State& st) {
  const unsigned int k = in.Offset(st.s.length());
  const std::string expected = CPart(st.m.c_str() + k);
  if (expected.size() > kMaxPrintfLength) return;
  const int n = st.s.Printf("%s", st.s.c_str() + k);
  st.m = expected;
  Check(n == static_cast<int>(expected.size()), "Printf answer");
}

void WriteBuf(Reader& in, State& st) {
  const unsigned int n = ((unsigned{in.Byte()} << 8) | in.Byte()) % 4096u;
  const unsigned int k = std::min(in.Number(n), n);
  const uint8_t seed = in.Byte();
  const bool byLength = in.Flag();
  char* buffer = st.s.GetWriteBuf(n);
  Check(buffer == st.s.c_str(), "GetWriteBuf gives the characters");
  const kiCString during(st.s);  // a block lent out is copied, never shared
  std::string written;
  for (unsigned int i = 0; i < n; ++i) {
    // Zero bytes only where the length is given, not found by strlen.
    char c = static_cast<char>(seed + i * 7u);
    if (!byLength && c == 0) c = 'z';
    buffer[i] = c;
    if (i < k) written += c;
  }
  buffer[k] = '\0';
  if (byLength) {
    st.s.UngetWriteBuf(k);
  } else {
    st.s.UngetWriteBuf();
  }
  st.m = written;
  Check(during.c_str() != st.s.c_str(), "a block lent out was shared");
  Same(during, std::string(during.c_str(), during.length()), "the copy made during the loan");
}

void Split(Reader& in, State& st) {
  const std::string& m = st.m;
  const char c = static_cast<char>(in.Byte());
  const Text t = in.ReadText(m, false);
  const kiCString sep(t.bytes.c_str(), t.Size());
  const unsigned int first = FindChar(m, c, false);
  const unsigned int last = FindChar(m, c, true);
  Same(st.s.BeforeFirst(c), first == kiNPos ? m : m.substr(0, first), "BeforeFirst(char)");
  Same(st.s.AfterFirst(c), first == kiNPos ? "" : m.substr(first + 1), "AfterFirst(char)");
  Same(st.s.BeforeLast(c), last == kiNPos ? "" : m.substr(0, last), "BeforeLast(char)");
  Same(st.s.AfterLast(c), last == kiNPos ? m : m.substr(last + 1), "AfterLast(char)");
  const unsigned int firstSep = FindStr(m, t.bytes, 0);
  const unsigned int lastSep = FindLast(m, t.bytes, kiNPos);
  const size_t n = t.bytes.size();
  Same(st.s.BeforeFirst(sep), firstSep == kiNPos ? m : m.substr(0, firstSep), "BeforeFirst");
  Same(st.s.AfterFirst(sep), firstSep == kiNPos ? "" : m.substr(firstSep + n), "AfterFirst");
  Same(st.s.BeforeLast(sep), lastSep == kiNPos ? "" : m.substr(0, lastSep), "BeforeLast");
  Same(st.s.AfterLast(sep), lastSep == kiNPos ? m : m.substr(lastSep + n), "AfterLast");
}

void Run(Reader& in, State& st, int op) {
  const unsigned int len = st.s.length();
  switch (op) {
    case kAppendString: {
      const Text t = in.ReadText(st.m, false);
      st.s += kiCString(t.bytes.c_str(), t.Size());
      st.m += t.bytes;
      break;
    }
    case kAppendText: {
      const Text t = in.ReadText(st.m, true);
      st.s += t.Ptr();
      st.m += t.C();
      break;
    }
    case kAppendChar: {
      const char c = static_cast<char>(in.Byte());
      st.s += c;
      st.m += c;
      break;
    }
    case kAppendSelf: AppendSelf(in, st); break;
    case kInsert: InsertOrReplace(in, st, true); break;
    case kErase: {
      const unsigned int pos = in.Number(len);
      const unsigned int count = in.Number(len);
      st.s.Erase(pos, count);
      Erase(st.m, pos, count);
      break;
    }
    case kReplaceRange: InsertOrReplace(in, st, false); break;
    case kReplaceAll: ReplaceAllOp(in, st); break;
    case kSubstrings: Substrings(in, st); break;
    case kFindText: FindText(in, st); break;
    case kFindSet: FindSet(in, st); break;
    case kCompare: CompareOp(in, st); break;
    case kTrim: TrimOp(in, st); break;
    case kTransform: Transform(in, st); break;
    case kPad: {
      const unsigned int count = in.Byte();
      const char c = static_cast<char>(in.Byte());
      const bool atEnd = in.Flag();
      st.s.Pad(count, c, atEnd);
      st.m.insert(atEnd ? st.m.size() : 0, count, c);
      break;
    }
    case kTruncate: {
      const unsigned int n = in.Number(len);
      if (n == 0 && in.Flag()) {
        st.s.Empty();
      } else {
        st.s.Truncate(n);
      }
      Erase(st.m, n, kiNPos);
      break;
    }
    case kAssign: Assign(in, st); break;
    case kPrintf: PrintfOp(in, st); break;
    case kWriteBuf: WriteBuf(in, st); break;
    case kDropCopy:
      st.copy = kiCString();
      st.copyModel.clear();
      break;
    case kSplit: Split(in, st); break;
    default: break;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > kMaxInput) return 0;
  Reader in(data, size);
  State st;
  while (!in.AtEnd()) {
    const uint8_t code = in.Byte();
    const int op = (code & 0x7F) % kOpCount;
    g_op = kOpNames[op];
    if ((code & 0x80) != 0) {
      kiCString shared(st.s);
      st.copy.Swap(shared);
      st.copyModel = st.m;
      Check(st.copy.c_str() == st.s.c_str(), "a copy shares the block");
    }
    Run(in, st, op);
    Same(st.s, st.m, "the string against its model");
    Same(st.copy, st.copyModel, "the shared copy against its model");
    if (st.m.size() > kMaxLength) {
      st.s.Truncate(kMaxLength / 2);
      st.m.resize(kMaxLength / 2);
      Same(st.s, st.m, "Truncate after growth");
    }
  }
  return 0;
}
