// ConvertTest.cpp - kiUTF8Convert and kiLibCConvert: the UTF-8 decoder on
// boundary and stress vectors, the encoder, round trips, the ASCII fast paths
// at every alignment, native wchar_t text and the locale converter.
#include <clocale>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "ki/core/Convert.h"

namespace {

// A result as hex units ("D83D DE00"), or "null".
template <typename C>
std::string Hex(const C* text) {
  if (text == nullptr) return "null";
  std::string out;
  char unit[16];
  for (; *text != 0; ++text) {
    const unsigned int value = static_cast<std::make_unsigned_t<C>>(*text);
    std::snprintf(unit, sizeof unit, out.empty() ? "%X" : " %X", value);
    out += unit;
  }
  return out;
}

// Decodes a copy in a heap block of exactly its size, so that the sanitizer
// build catches any read past the terminator.
std::string Decode(const std::string& bytes) {
  std::unique_ptr<char[]> exact(new char[bytes.size() + 1]);
  std::memcpy(exact.get(), bytes.c_str(), bytes.size() + 1);
  return Hex(kiConvUTF8.ToString(exact.get()).data());
}

// First and last values of each length, the edges of the Unicode range, and
// the classic decoder faults; any fault fails the whole text.
TEST(ConvertTest, DecodesUTF8BoundaryAndStressVectors) {
  struct Row {
    const char* what;
    std::string bytes;
    const char* units;
  };
  const Row rows[] = {
      {"empty", "", ""},
      {"overlong zero", "\xC0\x80", "null"},
      {"encoded surrogate passes", "\xED\xA0\x80", "D800"},
      {"U+110000, past the end", "\xF4\x90\x80\x80", "null"},
      {"emoji", "\xF0\x9F\x98\x80", "D83D DE00"},
      {"firsts of 1, 2, 3 bytes", "\x01\xC2\x80\xE0\xA0\x80", "1 80 800"},
      {"first of 4 bytes", "\xF0\x90\x80\x80", "D800 DC00"},
      {"first of 5 bytes", "\xF8\x88\x80\x80\x80", "null"},
      {"first of 6 bytes", "\xFC\x84\x80\x80\x80\x80", "null"},
      {"lasts of 1, 2, 3 bytes", "\x7F\xDF\xBF\xEF\xBF\xBF", "7F 7FF FFFF"},
      {"last of 4 bytes", "\xF7\xBF\xBF\xBF", "null"},
      {"last of 5 bytes", "\xFB\xBF\xBF\xBF\xBF", "null"},
      {"last of 6 bytes", "\xFD\xBF\xBF\xBF\xBF\xBF", "null"},
      {"U+D7FF, U+E000, U+FFFD", "\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBD", "D7FF E000 FFFD"},
      {"U+10FFFF", "\xF4\x8F\xBF\xBF", "DBFF DFFF"},
      {"continuation 0x80", "\x80", "null"},
      {"continuation 0xBF after text", "a\xBF", "null"},
      {"fault after good text", "abc\xC3\xA9\xFF", "null"},
      {"lone 2-byte lead, space", "\xC3 ", "null"},
      {"lone 3-byte lead, space", "\xE4 ", "null"},
      {"lone 4-byte lead, space", "\xF0 ", "null"},
      {"lone 5-byte lead, space", "\xF8 ", "null"},
      {"lone 6-byte lead, space", "\xFC ", "null"},
      {"2 bytes, last missing", "\xDF", "null"},
      {"3 bytes, last missing", "\xEF\xBF", "null"},
      {"4 bytes, last missing", "\xF4\x8F\xBF", "null"},
      {"6 bytes, last missing", "\xFD\xBF\xBF\xBF\xBF", "null"},
      {"concatenated incomplete",
       "\xC0\xE0\x80\xF0\x80\x80\xF8\x80\x80\x80\xFC\x80\x80\x80\x80\xDF\xEF\xBF\xF7\xBF\xBF",
       "null"},
      {"impossible 0xFE", "\xFE", "null"},
      {"impossible 0xFF", "\xFF", "null"},
      {"0xFE and six continuations", "\xFE\x80\x80\x80\x80\x80\x80", "null"},
      {"overlong / in 2", "\xC0\xAF", "null"},
      {"overlong / in 3", "\xE0\x80\xAF", "null"},
      {"overlong / in 4", "\xF0\x80\x80\xAF", "null"},
      {"overlong / in 5", "\xF8\x80\x80\x80\xAF", "null"},
      {"overlong / in 6", "\xFC\x80\x80\x80\x80\xAF", "null"},
      {"maximum overlong of 2", "\xC1\xBF", "null"},
      {"maximum overlong of 3", "\xE0\x9F\xBF", "null"},
      {"maximum overlong of 4", "\xF0\x8F\xBF\xBF", "null"},
      {"maximum overlong of 5", "\xF8\x87\xBF\xBF\xBF", "null"},
      {"maximum overlong of 6", "\xFC\x83\xBF\xBF\xBF\xBF", "null"},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.what);
    EXPECT_EQ(r.units, Decode(r.bytes));
  }
  EXPECT_EQ(nullptr, kiConvUTF8.ToString(nullptr).data());
}

// Pairs give one 4-byte code point; any other surrogate keeps its 3-byte form.
TEST(ConvertTest, EncodesUTF16ByCodePoint) {
  struct Row {
    const char* what;
    std::u16string units;
    const char* bytes;
  };
  const Row rows[] = {
      {"empty", u"", ""},
      {"pair", u"\U0001F600", "F0 9F 98 80"},
      {"edges of 1, 2, 3 bytes", u"\u007F\u0080\u07FF\u0800\uFFFF",
       "7F C2 80 DF BF E0 A0 80 EF BF BF"},
      {"lone high then text", u"\xD800z", "ED A0 80 7A"},
      {"high at the end", u"A\xDBFF", "41 ED AF BF"},
      {"short units close the block", u"\u00E9\u00E9\u00E9z", "C3 A9 C3 A9 C3 A9 7A"},
      {"lone low", u"\xDC00", "ED B0 80"},
      {"pair reversed", u"\xDC00\xD800", "ED B0 80 ED A0 80"},
      {"two highs then a low", u"\xD800\xD800\xDC00", "ED A0 80 F0 90 80 80"},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.what);
    const kiCharBuffer utf8 = kiConvUTF8.ToUTF8(r.units.c_str());
    EXPECT_EQ(r.bytes, Hex(utf8.data()));
    EXPECT_EQ(Hex(r.units.c_str()), Hex(kiConvUTF8.ToString(utf8).data()));  // back unchanged
  }
  EXPECT_EQ(nullptr, kiConvUTF8.ToUTF8(nullptr).data());
}

// The block-at-a-time paths must hand over wherever a sequence starts, see a
// fault whichever block boundary it straddles, and never read past the
// terminator.
TEST(ConvertTest, AsciiRunsMeetSequencesAtEveryOffset) {
  const char* sequences[] = {"\xC3\xA9", "\xE4\xB8\xAD", "\xF0\x9F\x98\x80"};
  const char16_t* units[] = {u"\u00E9", u"\u4E2D", u"\U0001F600"};
  for (int s = 0; s < 3; ++s) {
    for (size_t k = 0; k < 34; ++k) {
      SCOPED_TRACE(std::to_string(s) + " after " + std::to_string(k) + " ASCII bytes");
      const std::string run(k, 'x');
      const std::string text = run + sequences[s] + std::string(17, 'y') + sequences[s] + run;
      const std::u16string wide = std::u16string(k, u'x') + units[s] + std::u16string(17, u'y') +
                                  units[s] + std::u16string(k, u'x');
      EXPECT_EQ(Hex(wide.c_str()), Decode(text));
      std::unique_ptr<char16_t[]> exact(new char16_t[wide.size() + 1]);
      std::memcpy(exact.get(), wide.c_str(), 2 * (wide.size() + 1));
      EXPECT_EQ(Hex(text.c_str()), Hex(kiConvUTF8.ToUTF8(exact.get()).data()));
      for (const char* bad :
           {"\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80"}) {
        EXPECT_EQ("null", Decode(run + bad + std::string(20, 'y'))) << bad;
      }
      EXPECT_EQ("null", Decode(run + std::string(sequences[s], std::strlen(sequences[s]) - 1)));
    }
  }
}

// Long enough for every counter of the block-at-a-time passes to fill up.
TEST(ConvertTest, LongTextsRoundTrip) {
  std::string text;
  for (int i = 0; i < 4000; ++i) text += i % 3 == 0 ? "\xF0\x9F\x98\x80" : "\xE4\xB8\xAD\xC3\xA9";
  const kiWCharBuffer units = kiConvUTF8.ToString(text.c_str());
  ASSERT_NE(nullptr, units.data());
  EXPECT_EQ(8000u, std::u16string(units.data()).size());  // 2 units a step either way
  EXPECT_EQ(text, kiConvUTF8.ToUTF8(units).data());
}

// On this platform wchar_t holds UTF-32; values past 0x10FFFF fail.
TEST(ConvertTest, NativeWideTextIsUTF32) {
  const wchar_t wide[] = {L'a', 0xE9, 0x1F600, 0xD800, L'z', 0};
  const char16_t units[] = u"a\u00E9\U0001F600\xD800z";
  const char bytes[] = "a\xC3\xA9\xF0\x9F\x98\x80\xED\xA0\x80z";
  EXPECT_EQ(Hex(units), Hex(kiConvUTF8.cWX2WC(wide).data()));
  EXPECT_EQ(Hex(bytes), Hex(kiConvUTF8.cWX2MB(wide).data()));
  EXPECT_EQ(Hex(wide), Hex(kiConvUTF8.cWC2WX(units).data()));
  EXPECT_EQ(Hex(wide), Hex(kiConvUTF8.cMB2WX(bytes).data()));
  EXPECT_EQ(units, kiConvUTF8.cWC2KI(units));

  const wchar_t pastEnd[] = {L'a', 0x110000, 0};
  const wchar_t negative[] = {L'a', static_cast<wchar_t>(-1), 0};
  for (const wchar_t* bad : {pastEnd, negative}) {
    EXPECT_EQ(nullptr, kiConvUTF8.cWX2WC(bad).data());
    EXPECT_EQ(nullptr, kiConvUTF8.cWX2MB(bad).data());
  }
  EXPECT_EQ(nullptr, kiConvUTF8.cMB2WX("\xC0\x80").data());
  EXPECT_EQ(nullptr, kiConvUTF8.cWC2WX(nullptr).data());

  kiWXCharBuffer held = kiConvUTF8.cWC2WX(units);
  const wchar_t* text = held.data();
  kiWXCharBuffer taker;
  taker = held;  // a hand-over
  EXPECT_EQ(nullptr, held.data());
  EXPECT_EQ(text, taker.data());
}

// Sets the whole locale for one test and puts the old one back (old is
// copied before the change: members start in their order).
struct LocaleGuard {
  explicit LocaleGuard(const char* name)
      : old(std::setlocale(LC_ALL, nullptr)), ok(std::setlocale(LC_ALL, name) != nullptr) {}
  ~LocaleGuard() { std::setlocale(LC_ALL, old.c_str()); }
  const std::string old;
  const bool ok;
};

// A failure is a buffer made for one character, all zero - never null.
template <typename Buffer>
void ExpectFailureBuffer(const Buffer& b) {
  ASSERT_NE(nullptr, b.data());
  EXPECT_TRUE(b.data()[0] == 0 && b.data()[1] == 0);
}

TEST(ConvertTest, LocaleConverterFollowsLcCtype) {
  ExpectFailureBuffer(kiConvLibC.cKI2MB(nullptr));
  ExpectFailureBuffer(kiConvLibC.cWX2MB(nullptr));
  ExpectFailureBuffer(kiConvLibC.cMB2KI(nullptr));
  ExpectFailureBuffer(kiConvLibC.cMB2WX(nullptr));

  const LocaleGuard locale("C.UTF-8");
  if (!locale.ok) GTEST_SKIP() << "no C.UTF-8 locale";
  const char16_t units[] = u"a\u00E9\U0001F600";
  const char bytes[] = "a\xC3\xA9\xF0\x9F\x98\x80";
  EXPECT_EQ(Hex(bytes), Hex(kiConvLibC.cKI2MB(units).data()));
  EXPECT_EQ(Hex(units), Hex(kiConvLibC.cMB2KI(bytes).data()));
  EXPECT_EQ(Hex(L"a\u00E9\U0001F600"), Hex(kiConvLibC.cMB2WX(bytes).data()));
  EXPECT_EQ("", Hex(kiConvLibC.cWC2MB(u"").data()));
  EXPECT_EQ("", Hex(kiConvLibC.cMB2WC("").data()));

  ExpectFailureBuffer(kiConvLibC.cMB2KI("ok\xFF"));  // not UTF-8
  ExpectFailureBuffer(kiConvLibC.cMB2WX("ok\xFF"));
  ExpectFailureBuffer(kiConvLibC.cKI2MB(u"ok\xD800"));  // the C library refuses surrogates
  const wchar_t surrogate[] = {L'o', 0xDFFF, 0};
  ExpectFailureBuffer(kiConvLibC.cWX2MB(surrogate));
  // The C library reads values past 0x10FFFF, which UTF-16 cannot hold.
  ExpectFailureBuffer(kiConvLibC.cMB2KI("\xF4\x90\x80\x80"));
}

}  // namespace
