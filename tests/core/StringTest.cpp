// StringTest.cpp - kiString where it differs from kiCString: 16-bit units,
// wide case mapping, numbers through ToAscii, the wide Printf; and that the
// shared rules hold for 16-bit characters.
#include <clocale>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "ki/core/String.h"

namespace {

std::u16string Units(const kiString& s) { return std::u16string(s.c_str(), s.length()); }

// Sets LC_CTYPE for one test and puts the old one back.
class CtypeLocale {
 public:
  explicit CtypeLocale(const char* name) : m_old(std::setlocale(LC_CTYPE, nullptr)) {
    m_ok = std::setlocale(LC_CTYPE, name) != nullptr;
  }
  ~CtypeLocale() { std::setlocale(LC_CTYPE, m_old.c_str()); }
  bool ok() const { return m_ok; }

 private:
  std::string m_old;
  bool m_ok = false;
};

TEST(StringTest, SharesBlocksAndKeepsTheCapacityRule) {
  kiString empty;
  EXPECT_EQ(kiEmptyString, empty.c_str());
  const kiString a(u"h\u00e9llo \U0001F600");
  kiString b(a);
  EXPECT_EQ(a.c_str(), b.c_str());
  b += u'!';
  EXPECT_EQ(u"h\u00e9llo \U0001F600", Units(a));
  EXPECT_EQ(u"h\u00e9llo \U0001F600!", Units(b));
  EXPECT_EQ(8u, a.length());  // the emoji is two units
  EXPECT_EQ(19u, a.GetStringData()->capacity);
  EXPECT_EQ(35u, kiString(std::u16string(16, u'x').c_str()).GetStringData()->capacity);
  b.Insert(0, b.c_str() + 1, 2);  // its own text
  EXPECT_EQ(u"\u00e9lh\u00e9llo \U0001F600!", Units(b));
}

// Units compare as unsigned 16-bit values; white space is 9-13 and 32 only.
TEST(StringTest, CompareTrimAndSearchUseSixteenBitUnits) {
  EXPECT_GT(kiString(u"\uffff").Compare(kiString(u"a")), 0);
  EXPECT_LT(kiString(u"ab").Compare(kiString(u"abc")), 0);
  EXPECT_EQ(u"\u00a0x\u3000", Units(kiString(u" \u00a0x\u3000\t").TrimLeftRight()));
  EXPECT_EQ(u" a b ", Units(kiString(u"  a \t b\n").TrimTo1Space()));
  const kiString s(u"a\u4e2d/b\u4e2d");
  EXPECT_EQ(4u, s.Find(u'\u4e2d', true));
  EXPECT_EQ(u"b\u4e2d", Units(s.AfterLast(u'/')));
  EXPECT_EQ(1u, kiString(u"xAbC").FindNoCase(kiString(u"abc")));
  EXPECT_TRUE(kiString(u"0123").HasOnlyNumbers());
  EXPECT_FALSE(kiString(u"\u0661").HasOnlyNumbers());
}

TEST(StringTest, CaseMappingFollowsTheWideLocale) {
  CtypeLocale utf8("C.UTF-8");
  if (!utf8.ok()) GTEST_SKIP() << "no C.UTF-8 locale";
  EXPECT_EQ(u"\u00c9T\u00c9 \u0416", Units(kiString(u"\u00e9t\u00e9 \u0436").Upper()));
  EXPECT_EQ(u"abc\u00e9", Units(kiString(u"ABC\u00c9").Lower()));
  EXPECT_EQ(0, kiString(u"\u00c9t\u00e9").CompareNoCase(u"\u00e9T\u00c9"));
  EXPECT_EQ(-1, kiString(u"ab").CompareNoCase(u"ABC"));
  EXPECT_EQ(1, kiString(u"abd").CompareNoCase(u"ABC"));
  // A surrogate pair is two units that map to themselves.
  EXPECT_EQ(u"\U0001F600A", Units(kiString(u"\U0001F600a").Upper()));
}

TEST(StringTest, NumbersReadOnlyAsciiDigits) {
  EXPECT_STREQ("caf_ __", kiString(u"caf\u00e9 \U0001F600").ToAscii().data());
  long l = 0;
  EXPECT_TRUE(kiString(u"  -2147483647").ToLong(&l));
  EXPECT_EQ(-2147483647L - 1, l);
  EXPECT_FALSE(kiString(u"\u0661\u0662").ToLong(&l));  // Arabic-Indic digits
  EXPECT_FALSE(kiString(u"4\u00b2").ToLong(&l));
  EXPECT_EQ(4, l);
  unsigned long u = 0;
  EXPECT_TRUE(kiString(u"0x1F").ToULong(&u, 0));
  EXPECT_EQ(31u, u);
  double d = 0;
  EXPECT_FALSE(kiString(u"1,5").ToDouble(&d));
  EXPECT_EQ(1.0, d);
}

TEST(StringTest, PrintfFormatsWideAndNarrowArgumentsAtAnyLength) {
  CtypeLocale utf8("C.UTF-8");
  kiString s(u"old");
  EXPECT_EQ(9, s.Printf(u"%ls-%d-%s", L"\u00e9\U0001F600", 42, "ab"));
  EXPECT_EQ(u"\u00e9\U0001F600-42-ab", Units(s));
  for (size_t n : {1023u, 1024u, 1025u, 3000u, 5000u}) {  // 1024, 2050, 4102 and beyond
    SCOPED_TRACE(n);
    const std::wstring big(n, L'x');
    EXPECT_EQ(static_cast<int>(n), s.Printf(u"%ls", big.c_str()));
    EXPECT_EQ(std::u16string(n, u'x'), Units(s));
  }
  EXPECT_EQ(u"7/x", Units(kiString::Format(u"%u/%lc", 7u, static_cast<wint_t>(L'x'))));
  s = u"keep";
  EXPECT_EQ(10, s.Printf(u"%ls%ls", L"ab", L"cdefghij"));
  EXPECT_EQ(0, s.Printf(nullptr));
  EXPECT_EQ(kiEmptyString, s.c_str());
}

// A narrow argument the locale cannot convert is an error of its own: it must
// end the retries, not grow the room forever.
TEST(StringTest, PrintfGivesUpOnUnconvertibleText) {
  CtypeLocale plain("C");
  kiString s(u"old");
  s.Printf(u"%s", "\xff\xfe");
  EXPECT_TRUE(s.IsEmpty());
}

TEST(StringTest, BuffersHandOverAndTerminate) {
  kiString s;
  std::memcpy(kiStringBuffer(s, 4), u"wide", 10);
  EXPECT_EQ(u"wide", Units(s));
  kiWCharBuffer a(u"text", true);
  kiWCharBuffer b(a);
  EXPECT_EQ(nullptr, a.data());
  EXPECT_EQ(u"text", std::u16string(b.data()));
  b = b.data() + 1;  // its own text
  EXPECT_EQ(u"ext", std::u16string(b.data()));
  kiWCharBuffer sized(3);
  EXPECT_EQ(0, sized[3]);
  EXPECT_EQ(u"ext", Units(kiString(b)));
}

}  // namespace
