// CStringTest.cpp - kiCString: sharing and copy on write, the capacity rule, the
// search/split/edit tables, edits fed with the string's own text, numbers,
// locale independence and formatting.
#include <climits>
#include <clocale>
#include <cstring>
#include <initializer_list>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "ki/core/CString.h"
#include "ki/proc/kiMem.h"

// Failure messages show the text, not the pointer.
static void PrintTo(const kiCString& s, std::ostream* os) {
  *os << ::testing::PrintToString(std::string(s.c_str(), s.length()));
}

namespace {

// All of a string's bytes, zero bytes included.
std::string Bytes(const kiCString& s) { return std::string(s.c_str(), s.length()); }

using Edit = void (*)(kiCString&);

kiCString Edited(kiCString s, Edit edit) {
  edit(s);
  return s;
}

struct Row {
  const char* what;
  kiCString got;
  std::string expected;
};

void ExpectRows(std::initializer_list<Row> rows) {
  for (const Row& r : rows) {
    SCOPED_TRACE(r.what);
    EXPECT_EQ(r.expected, Bytes(r.got));
  }
}

// Restores the process locale at the end of a test.
struct LocaleGuard {
  std::string saved = std::setlocale(LC_ALL, nullptr);
  ~LocaleGuard() { std::setlocale(LC_ALL, saved.c_str()); }
};

// ---- Construction, sharing, capacity -----------------------------------------

TEST(CStringTest, EmptyResultsPointAtTheStaticBlock) {
  const Row rows[] = {
      {"default", kiCString(), ""},
      {"null text", kiCString(static_cast<const char*>(nullptr)), ""},
      {"null buffer", kiCString(kiCharBuffer()), ""},
      {"assigned null", Edited("abc", [](kiCString& s) { s = static_cast<char*>(nullptr); }), ""},
      {"erased", Edited("abc", [](kiCString& s) { s.Erase(0, 2).Erase(); }), ""},
      {"trimmed blanks", Edited(" \t\r\n", [](kiCString& s) { s.Trim(); }), ""},
      {"replaced by nothing", Edited("abab", [](kiCString& s) { s.Replace("ab", ""); }), ""},
      {"Right past length", kiCString("abc").Right(5), ""},
      {"a number", kiCString(65), ""},
      {"assigned 0", Edited("abc", [](kiCString& s) { s = 0; }), ""},
      {"empty Printf", Edited("abc", [](kiCString& s) { s.Printf("%s", ""); }), ""},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.what);
    EXPECT_EQ(kiEmptyCString, r.got.c_str());
    EXPECT_TRUE(r.got.GetStringData()->IsEmpty());
  }
}

// Zero bytes inside a string are kept; a plain text ends at its terminator.
TEST(CStringTest, ResultsHoldTheRequestedBytes) {
  const kiCString a("ab");
  const char* null = nullptr;
  // clang-format off
  ExpectRows({
      {"count", kiCString("abcdef", 3u), "abc"},  {"count kiNPos", kiCString("abc", kiNPos), "abc"},
      {"count over zero bytes", kiCString("a\0b", 3u), std::string("a\0b", 3)},
      {"start and count", kiCString("abcdef", 2, 3), "cde"},
      {"start to the end", kiCString("abcdef", 2, kiNPos), "cdef"},
      {"char buffer", kiCString(kiCharBuffer("buf", true)), "buf"},
      {"allocated text", kiCString::FromAllocatedString(kiMem_Strdup("heap")), "heap"},
      {"allocated null", kiCString::FromAllocatedString(nullptr), ""},
      {"+= string", Edited(kiCString("a\0", 2u), [](kiCString& s) { s += kiCString("\0c", 2u); }),
       std::string("a\0\0c", 4)},
      {"+= text", Edited(kiCString("a\0", 2u), [](kiCString& s) { s += "c\0d"; }),
       std::string("a\0c", 3)},
      {"Mid over zero bytes", kiCString("a\0b\0c", 5u).Mid(1, 3), std::string("\0b\0", 3)},
      {"Upper up to a zero byte", kiCString("a\0b", 3u).Upper(), std::string("A\0b", 3)},
      {"string + string", a + kiCString("\0z", 2u), std::string("ab\0z", 4)},
      {"string + text", a + "cd", "abcd"},  {"text + string", "cd" + a, "cdab"},
      {"string + char", a + 'c', "abc"},    {"char + string", 'c' + a, "cab"},
      {"string + null", a + null, "ab"},    {"left operand", a, "ab"}});
  // clang-format on
  EXPECT_TRUE(a == "ab" && a == kiCString(std::string("ab").c_str()) && kiCString() == null);
  EXPECT_TRUE(a != "abc" && a != kiCString("ac") && a != null);
}

TEST(CStringTest, CopyConstructionSharesAndAssignmentCopies) {
  kiCString s("abc");
  kiCString shared(s);
  EXPECT_EQ(s.c_str(), shared.c_str());
  s = shared;  // already the same block: nothing happens
  kiCString t("a longer text than abc, long enough for a second block");
  const char* own = t.c_str();
  t = s;
  EXPECT_EQ(own, t.c_str());  // a private block large enough is reused
  EXPECT_EQ(2, s.GetStringData()->refs);
  EXPECT_EQ("abc", Bytes(t));
}

TEST(CStringTest, CapacityIsLengthRoundedDownTo16Plus19) {
  const unsigned int rows[][2] = {{0, 19},  {1, 19},  {15, 19},  {16, 35},
                                  {31, 35}, {32, 51}, {100, 115}};
  for (const auto& r : rows) {
    SCOPED_TRACE(r[0]);
    kiCString s;
    s.GetWriteBuf(r[0]);
    s.UngetWriteBuf(0);
    EXPECT_EQ(r[1], s.GetStringData()->capacity);
  }
  kiCString grown(std::string(35, 'a').c_str(), 19u);
  EXPECT_EQ(35u, grown.GetStringData()->capacity);
  grown += std::string(17, 'b').c_str();  // 36 characters: reallocated by the same rule
  EXPECT_EQ(51u, grown.GetStringData()->capacity);
}

// Every change makes a shared block private first. A private block keeps its
// room when the text shrinks, so a copy can share a block far larger than its
// length needs; growing within that room must still copy.
TEST(CStringTest, ChangingASharedBlockLeavesTheOtherCopy) {
  const std::string x30(30, 'x');
  // clang-format off
  const struct { const char* what; Edit edit; std::string expected; } rows[] = {
      {"+= text", [](kiCString& s) { s += std::string(30, 'x').c_str(); }, "ab" + x30},
      {"+= char", [](kiCString& s) { s += 'c'; }, "abc"},
      {"Append", [](kiCString& s) { s.Append("c\0d", 3); }, std::string("abc\0d", 5)},
      {"Reserve", [](kiCString& s) { s.Reserve(1000); }, "ab"},
      {"Insert", [](kiCString& s) { s.Insert(2, std::string(30, 'x').c_str()); }, "ab" + x30},
      {"Pad", [](kiCString& s) { s.Pad(30, 'x'); }, "ab" + x30},
      {"assign", [](kiCString& s) { s = "zz"; }, "zz"},
      {"write buffer", [](kiCString& s) { std::strcpy(kiCStringBuffer(s, 4), "w"); }, "w"}};
  // clang-format on
  for (const auto& r : rows) {
    for (const char* start : {"ab", "a text that leaves a block with spare room"}) {
      SCOPED_TRACE(std::string(r.what) + " from " + start);
      kiCString s(start);
      s = "ab";  // keeps the block
      const kiCString copy(s);
      r.edit(s);
      EXPECT_EQ(r.expected, Bytes(s));
      EXPECT_EQ("ab", Bytes(copy));
      EXPECT_EQ(1, copy.GetStringData()->refs);
    }
  }
}

// Released with a length, the text is cut there; without, at its terminator,
// which stays inside the block even when the text fills all the room.
TEST(CStringTest, WriteBufferLengthIsExactOrEndsInTheBlock) {
  kiCString s;
  std::memcpy(s.GetWriteBuf(4), "abcd", 4);
  s.UngetWriteBuf(2);
  EXPECT_EQ("ab", Bytes(s));
  char* p = s.GetWriteBuf(3);
  const unsigned int room = s.GetStringData()->capacity;
  std::memset(p, 'x', room + 1);
  s.UngetWriteBuf();
  EXPECT_EQ(std::string(room, 'x'), Bytes(s));
  s = "scoped";  // a reused block must not show its old text
  s.GetWriteBuf(4);
  s.UngetWriteBuf();
  EXPECT_EQ("", Bytes(s));
}

// ---- Comparison and search ------------------------------------------------------

TEST(CStringTest, CompareNoCaseFoldsAsciiAndAnswersOnlyTheSign) {
  // clang-format off
  const struct { const char *a, *b; int expected; } rows[] = {
      {"abd", "ABC", 1}, {"ab", "ABC", -1}, {"ABC", "abc", 0}, {"zzz", "Zz", 1},
      {"[", "A", -1},     // folded to lower case: '[' sorts before 'a'
      {"\x80", "a", -1},  // bytes above 127 count as negative
      {"", "", 0},       {"a", nullptr, 1}, {"", nullptr, 0}};
  // clang-format on
  for (const auto& r : rows) {
    SCOPED_TRACE(std::string(r.a) + " vs " + (r.b != nullptr ? r.b : "null"));
    EXPECT_EQ(r.expected, kiCString(r.a).CompareNoCase(r.b));
    EXPECT_EQ(r.expected, kiCString(r.a).CompareNoCase(kiCString(r.b)));
  }
  EXPECT_GT(kiCString("\x80").Compare("a"), 0);  // plain Compare: bytes unsigned
  EXPECT_GT(kiCString("a\0b\0", 4u).Compare(kiCString("a\0b", 3u)), 0);  // a prefix is less
}

TEST(CStringTest, SearchAnswersPositionsOrNotFound) {
  const kiCString s("abcabc"), path("/usr/lib/x");
  // clang-format off
  const struct { const char* what; unsigned int got, expected; } rows[] = {
      {"first from 2", s.FindFirstStr("bc", 2), 4},  {"empty needle", s.FindFirstStr(""), kiNPos},
      {"candidate runs past the end", kiCString("abcab").FindFirstStr("abc", 1), kiNPos},
      {"past zero bytes", kiCString("a\0\0cd", 5u).FindFirstStr("cd"), 3},
      {"last", s.FindLastStr("abc"), 3},  {"last ending by 5", s.FindLastStr("abc", 5), 0},
      {"last, end before a match", s.FindLastStr("abc", 2), kiNPos},
      {"no case", kiCString("abcABC").FindNoCase("BC", 2), 4},
      {"first not of", kiCString("  \tx").FindFirstNotOf(" \t"), 3},
      {"first not of from kiNPos", path.FindFirstNotOf("/", kiNPos), kiNPos},
      {"last of from kiNPos - 1", path.FindLastOf("/", kiNPos - 1), 8},
      {"last of from 7", path.FindLastOf("/", 7), 4}, {"char from end", path.Find('/', true), 8},
      {"zero char", path.Find('\0', true), kiNPos},
      {"only digits when empty", kiCString().HasOnlyNumbers(), 1}};
  // clang-format on
  for (const auto& r : rows) {
    SCOPED_TRACE(r.what);
    EXPECT_EQ(r.expected, r.got);
  }
}

TEST(CStringTest, SplittingNeverKeepsTheSeparator) {
  // pieces: BeforeFirst, AfterFirst, BeforeLast, AfterLast
  // clang-format off
  const struct { const char* text; const char* pieces[4]; } rows[] = {
      {"a/b/c", {"a", "b/c", "a/b", "c"}},     {"abc", {"abc", "", "", "abc"}},
      {"/abc", {"", "abc", "", "abc"}},        {"abc/", {"abc", "", "abc", ""}},
      {"a::b::c", {"a", "b::c", "a::b", "c"}}, {"::abc", {"", "abc", "", "abc"}}};
  // clang-format on
  for (const auto& r : rows) {
    SCOPED_TRACE(r.text);
    const kiCString s(r.text);
    const bool byString = std::strchr(r.text, ':') != nullptr;
    const kiCString sep(byString ? "::" : "/");
    EXPECT_EQ(r.pieces[0], byString ? s.BeforeFirst(sep) : s.BeforeFirst('/'));
    EXPECT_EQ(r.pieces[1], byString ? s.AfterFirst(sep) : s.AfterFirst('/'));
    EXPECT_EQ(r.pieces[2], byString ? s.BeforeLast(sep) : s.BeforeLast('/'));
    EXPECT_EQ(r.pieces[3], byString ? s.AfterLast(sep) : s.AfterLast('/'));
  }
}

// ---- Editing and transforming -------------------------------------------------------

TEST(CStringTest, EditsAndSubstringsCutPositionsAtTheEnd) {
  ExpectRows({
      {"Erase count cut", Edited("abc", [](kiCString& s) { s.Erase(1, 100); }), "a"},
      {"Insert past end", Edited("abc", [](kiCString& s) { s.Insert(10, "Z"); }), "abcZ"},
      {"Insert count", Edited("abc", [](kiCString& s) { s.Insert(0, "XYZ", 2); }), "XYabc"},
      {"Replace range", Edited("abc", [](kiCString& s) { s.Replace(1, 1, "XYZ", kiNPos); }),
       "aXYZc"},
      {"Replace cut", Edited("abc", [](kiCString& s) { s.Replace(1, 9, "Q", 1); }), "aQ"},
      {"Replace past end", Edited("abc", [](kiCString& s) { s.Replace(7, 1, "Q", 1); }), "abcQ"},
      {"Pad at start", Edited("7", [](kiCString& s) { s.Pad(3, '0', false); }), "0007"},
      {"Trim right", Edited(" \ta\v ", [](kiCString& s) { s.Trim(); }), " \ta"},
      {"Trim left", Edited(" \ta\v ", [](kiCString& s) { s.Trim(false); }), "a\v "},
      {"TrimLeftRight", Edited("\r\n a\f", [](kiCString& s) { s.TrimLeftRight(); }), "a"},
      {"Mid count past end", kiCString("abc").Mid(1, 9), "bc"},
      {"Mid(3, 1)", kiCString("abc").Mid(3, 1), ""},
      {"Mid(4, 1)", kiCString("abc").Mid(4, 1), ""},
      {"Right(3)", kiCString("abc").Right(3), "abc"},
      {"TrimTo1Space", kiCString("  a \t b  ").TrimTo1Space(), " a b "},
  });
}

// The search resumes after each inserted text, so "b" -> "bb" ends.
TEST(CStringTest, ReplaceTextCountsReplacements) {
  // clang-format off
  const struct {
    const char *text, *old_text, *new_text;
    bool all;
    const char* expected;
    unsigned int count;
  } rows[] = {
      {"aaaa", "aa", "a", true, "aa", 2},     {"aaaa", "aa", "a", false, "aaa", 1},
      {"abc", "b", "bb", true, "abbc", 1},    {"aXbXc", "X", nullptr, true, "abc", 2},
      {"a.b.", ".", "::", true, "a::b::", 2}, {"abc", "abcd", "x", true, "abc", 0},
      {"abc", "", "x", true, "abc", 0},       {"abc", nullptr, "x", true, "abc", 0},
      {"", "a", "b", true, "", 0}};
  // clang-format on
  for (const auto& r : rows) {
    SCOPED_TRACE(std::string(r.text) + " / " + (r.old_text != nullptr ? r.old_text : "null"));
    kiCString s(r.text);
    EXPECT_EQ(r.count, s.Replace(r.old_text, r.new_text, r.all));
    EXPECT_EQ(r.expected, Bytes(s));
  }
}

// Text handed in that lies in the string's own block.
TEST(CStringTest, EditsAcceptTheirOwnText) {
  const char* fifteen = "0123456789abcde";  // a full first block: these edits grow it
  ExpectRows({
      {"s += s", Edited(fifteen, [](kiCString& s) { s += s; }), "0123456789abcde0123456789abcde"},
      {"+= a tail", Edited(fifteen, [](kiCString& s) { s += s.c_str() + 10; }),
       "0123456789abcdeabcde"},
      {"Append a tail", Edited(fifteen, [](kiCString& s) { s.Append(s.c_str() + 10, 5); }),
       "0123456789abcdeabcde"},
      {"Append in room", Edited("ab", [](kiCString& s) { s.Reserve(64), s.Append(s.c_str(), 2); }),
       "abab"},
      {"Insert a tail", Edited("abc", [](kiCString& s) { s.Insert(0, s.c_str() + 1); }), "bcabc"},
      {"Insert, growing", Edited(fifteen, [](kiCString& s) { s.Insert(5, s.c_str()); }),
       "012340123456789abcde56789abcde"},
      {"Replace all of it", Edited("abc", [](kiCString& s) { s.Replace(s.c_str(), "x"); }), "x"},
      {"Replace by itself", Edited("abc", [](kiCString& s) { s.Replace("b", s.c_str()); }),
       "aabcc"},
      {"Replace range", Edited("abc", [](kiCString& s) { s.Replace(0, 1, s.c_str(), kiNPos); }),
       "abcbc"},
      {"assign a tail", Edited("abc", [](kiCString& s) { s = s.c_str() + 1; }), "bc"},
      {"assign itself", Edited("abc", [](kiCString& s) { s = s.c_str(); }), "abc"},
      {"assign itself as a string", Edited("abc", [](kiCString& s) { s = *&s; }), "abc"},
      {"Printf", Edited("abc", [](kiCString& s) { s.Printf("%s-%s", s.c_str(), s.c_str()); }),
       "abc-abc"},
  });
}

// ---- Numbers and locale ---------------------------------------------------------------

// The parsing rules are kiStr's; these check the wrappers. long is wider than
// the values it receives: 2147483648 is still out of range.
TEST(CStringTest, ConversionsStoreTheValueAndAnswerWholeText) {
  // clang-format off
  const struct { const char* text; int base; bool ok; long value; } rows[] = {
      {"  42", 10, true, 42},             {"42 ", 10, false, 42},
      {"-2147483647", 10, true, INT_MIN}, {"2147483648", 10, false, INT_MAX},
      {"0x1F", 0, true, 31},              {"017", 0, true, 15},  {"5", 1, false, 0}};
  // clang-format on
  for (const auto& r : rows) {
    SCOPED_TRACE(r.text);
    long l = 99;
    int i = 99;
    EXPECT_EQ(r.ok, kiCString(r.text).ToLong(&l, r.base));
    EXPECT_EQ(r.value, l);
    EXPECT_EQ(r.ok, kiCString(r.text).ToInt32(&i, r.base));
    EXPECT_EQ(r.value, i);
  }
  unsigned long ul = 0;
  unsigned int u = 9;
  EXPECT_FALSE(kiCString("4294967296").ToULong(&ul));
  EXPECT_EQ(4294967295UL, ul);
  EXPECT_FALSE(kiCString("-8").ToUInt32(&u, 0));
  EXPECT_EQ(0u, u);
  EXPECT_TRUE(kiCString("1").ToLong(nullptr) && kiCString("1").ToDouble(nullptr));
}

// Whatever the process locale: ASCII-only case rules, '.' as the decimal point.
TEST(CStringTest, CaseRulesAndNumbersIgnoreTheLocale) {
  for (const char* name :
       {"C", "C.UTF-8", "de_DE.UTF-8", "fr_FR.UTF-8", "tr_TR.ISO-8859-9", "de_DE.ISO-8859-1"}) {
    const LocaleGuard guard;
    if (std::setlocale(LC_ALL, name) == nullptr) continue;
    SCOPED_TRACE(name);
    const kiCString mixed("i\xC3\xA9\xC9\xE9\xFFI");
    EXPECT_EQ("I\xC3\xA9\xC9\xE9\xFFI", mixed.Upper());  // 'i' and 'I' map as in ASCII
    EXPECT_EQ("i\xC3\xA9\xC9\xE9\xFFi", mixed.Lower());
    EXPECT_EQ(1, kiCString("\xC3\xA9").CompareNoCase("\xC3\x89"));  // not folded
    EXPECT_EQ(-1, kiCString("\xE9").CompareNoCase("a"));
    EXPECT_EQ(kiNPos, kiCString("\xC9").FindNoCase(kiCString("\xE9")));
    EXPECT_EQ("\xA0x\xA0", kiCString("\xA0x\xA0").TrimTo1Space());
    double d = 0;
    EXPECT_TRUE(kiCString("1.5").ToDouble(&d));
    EXPECT_EQ(1.5, d);
    EXPECT_FALSE(kiCString("1,5").ToDouble(&d));  // stored although text follows
    EXPECT_EQ(1.0, d);
  }
}

// ---- Formatting --------------------------------------------------------------

TEST(CStringTest, PrintfReplacesTheTextWhateverItsLength) {
  kiCString s("old");
  for (size_t n : {1024u, 1025u, 3000u}) {
    SCOPED_TRACE(n);
    const std::string big(n, 'x');
    EXPECT_EQ(static_cast<int>(n), s.Printf("%s", big.c_str()));
    EXPECT_EQ(big, Bytes(s));
  }
  EXPECT_EQ(1, s.Printf("a%cb", '\0'));  // the text ends at its first zero byte
  EXPECT_EQ("7/x", kiCString::Format("%u/%c", 7u, 'x'));
  // The "C" locale cannot write this character: the C library fails before
  // writing anything, and the result is empty, not the block's old bytes.
  EXPECT_EQ(0, s.Printf("%ls", L"\u00e9"));
  EXPECT_EQ(kiEmptyCString, s.c_str());
}

}  // namespace
