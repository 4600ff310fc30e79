// Tests of the JSON writer (output rules, escaping, numbers, human mode) and
// the JSON reader (events, tolerances, every error code, limits).
#include "ki/serialize/JSONFormatter.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "support/DecimalCommaLocale.h"

namespace {

// Writes each event as a short token, so a whole stream compares as one string.
class Recorder : public kiISerialize {
 public:
  std::string events;
  int MapBegin() override { return Add("{"); }
  int MapKey(const char* key, bool raw) override { return Add(std::string(raw ? "k:" : "K:") + key); }
  int MapEnd() override { return Add("}"); }
  int ArrayBegin() override { return Add("["); }
  int ArrayItemSeparator() override { return Add(","); }
  int ArrayEnd() override { return Add("]"); }
  int String(const kiWChar*, bool) override { return Add("wide"); }
  int String(const char* text, bool) override { return Add(std::string("s:") + text); }
  int Boolean(bool v) override { return Add(v ? "true" : "false"); }
  int U32(unsigned int v) override { return Add("u:" + std::to_string(v)); }
  int S32(int v) override { return Add("i:" + std::to_string(v)); }
  int U64(unsigned long long v) override { return Add("U:" + std::to_string(v)); }
  int S64(long long v) override { return Add("I:" + std::to_string(v)); }
  int Float(double v) override {
    char text[64] = "f:";
    *std::to_chars(text + 2, text + sizeof text - 1, v).ptr = 0;  // locale-free
    return Add(text);
  }
  int Null() override { return Add("null"); }

 private:
  int Add(const std::string& e) {
    if (!events.empty()) events += ' ';
    events += e;
    return 99;  // ignored by the reader
  }
};

struct Parsed {
  int result;
  std::string events;
};

Parsed ParseText(const char* text) {
  Recorder r;
  const int result = kiJSONFormatter::Parse(text, r);
  return {result, r.events};
}

// The example stream: {"a":1,"b":[true,null]}
void WriteExample(kiISerialize& s) {
  s.MapBegin();
  s.MapKey("a", false);
  s.S32(1);
  s.MapKey("b", false);
  s.ArrayBegin();
  s.Boolean(true);
  s.ArrayItemSeparator();
  s.Null();
  s.ArrayEnd();
  s.MapEnd();
}

std::string Text(const kiJSONFormatter& f) { return f.Result().c_str(); }

// ---- Writing ------------------------------------------------------------------

TEST(JSONFormatterTest, CompactOutputPutsACommaBeforeEveryClosingBrace) {
  kiJSONFormatter f;
  WriteExample(f);
  EXPECT_EQ(R"({"a":1,"b":[true,null],})", Text(f));

  f.Reset();
  f.MapBegin();
  f.MapEnd();
  EXPECT_EQ("{,}", Text(f));

  f.Reset();  // a map inside an array inside a map; raw key and raw string
  f.MapBegin();
  f.MapKey("k", true);
  f.ArrayBegin();
  f.MapBegin();
  f.MapKey("x", false);
  f.String("v", true);
  f.MapEnd();
  f.ArrayItemSeparator();
  f.Identifier("id");
  f.ArrayEnd();
  f.MapEnd();
  EXPECT_EQ(R"({k:[{"x":v,},"id"],})", Text(f));
}

TEST(JSONFormatterTest, HumanModeBreaksLinesBeforeMapsAndKeysOnly) {
  kiJSONFormatter f;
  f.SetHumanMode(true, nullptr);
  WriteExample(f);
  EXPECT_EQ("\n{\n    \"a\": 1,\n    \"b\": [true, null],\n}", Text(f));

  // A map as a member value starts on its own line at the member's depth.
  f.Reset();
  f.SetHumanMode(true, "\t");
  f.MapBegin();
  f.MapKey("m", false);
  f.MapBegin();
  f.MapKey("x", false);
  f.Boolean(false);
  f.MapEnd();
  f.MapEnd();
  EXPECT_EQ("\n{\n\t\"m\": \n\t{\n\t\t\"x\": false,\n\t},\n}", Text(f));

  // Settings survive Reset; events out of order still write text.
  f.Reset();
  f.MapEnd();
  EXPECT_EQ(",\n}", Text(f));  // a negative depth writes no indentation
}

TEST(JSONFormatterTest, ResultCopiesAndResetEmpties) {
  kiJSONFormatter f;
  f.S32(1);
  const kiCString first = f.Result();
  f.ArrayItemSeparator();
  f.S32(2);
  EXPECT_STREQ("1", first.c_str());
  EXPECT_EQ("1,2", Text(f));
  kiJSONFormatter copy(f);
  f.Reset();
  EXPECT_EQ("", Text(f));
  EXPECT_EQ("1,2", Text(copy));
  copy = f;
  EXPECT_EQ("", Text(copy));
}

class EscapeProbe : public kiJSONFormatter {
 public:
  using kiJSONFormatter::Escape;
};

TEST(JSONFormatterTest, EscapesEveryByteByTheTable) {
  // Each byte 1..255 on its own, against the table written out by hand.
  EscapeProbe f;
  for (int c = 1; c < 256; ++c) {
    std::string expected;
    switch (c) {
      case '"': expected = "\\\""; break;
      case '\\': expected = "\\\\"; break;
      case '/': expected = "\\/"; break;
      case 8: expected = "\\b"; break;
      case 9: expected = "\\t"; break;
      case 10: expected = "\\n"; break;
      case 12: expected = "\\f"; break;
      case 13: expected = "\\r"; break;
      default:
        if (c < 0x20) {
          char u[8];
          std::snprintf(u, sizeof u, "\\u%04x", c);
          expected = u;
        } else {
          expected = std::string(1, static_cast<char>(c));  // 0x7F and UTF-8 bytes pass
        }
    }
    const char in[2] = {static_cast<char>(c), 0};
    kiCString out("<");
    const bool escaped = f.Escape(in, out);
    EXPECT_EQ("<" + expected, out.c_str()) << "byte " << c;
    EXPECT_EQ(expected.size() > 1, escaped) << "byte " << c;
  }
  kiCString out;
  EXPECT_TRUE(f.Escape("a/b\x1b", out));
  EXPECT_STREQ("a\\/b\\u001b", out.c_str());
  f.SetStrictMode(false);
  out.Empty();
  EXPECT_FALSE(f.Escape("a/b \xc3\xa9", out));
  EXPECT_STREQ("a/b \xc3\xa9", out.c_str());
  EXPECT_FALSE(f.Escape(nullptr, out));

  // Keys go through the same escaping; long runs are copied whole.
  kiJSONFormatter g;
  const std::string run(5000, 'x');
  g.MapBegin();
  g.MapKey("q\"", false);
  g.String((run + "\n" + run).c_str(), false);
  g.MapEnd();
  EXPECT_EQ("{\"q\\\"\":\"" + run + "\\n" + run + "\",}", Text(g));
}

TEST(JSONFormatterTest, WideStringsAreConvertedAndGoThroughTheNarrowSlot) {
  struct Narrow : kiJSONFormatter {
    int calls = 0;
    int String(const char* text, bool raw) override {
      ++calls;
      kiJSONFormatter::String(text, raw);
      return 5;
    }
    using kiJSONFormatter::String;
  } f;
  const kiWChar wide[] = {u'\u00e9', u'/', 0xD83D, 0xDE00, 0};  // e-acute, '/', U+1F600
  EXPECT_EQ(5, f.String(wide, false));
  EXPECT_EQ(1, f.calls);
  EXPECT_EQ("\"\xc3\xa9\\/\xf0\x9f\x98\x80\"", Text(f));
  f.Reset();
  f.String(static_cast<const kiWChar*>(nullptr), true);
  f.String(static_cast<const char*>(nullptr), false);
  EXPECT_EQ("\"\"", Text(f));
}

TEST(JSONFormatterTest, NumbersMatchThePrintfFormatsInEveryLocale) {
  const double doubles[] = {0.0,     -0.0,         1.5,     -2.25,   1e-7,         0.0000005,
                            2.5e-6,  123456.789,   1e15,    1e22,    DBL_MAX,      -DBL_MAX,
                            DBL_MIN, 1.0 / 3.0,    0.125,   999999.9999995, 4.35,  HUGE_VAL,
                            -HUGE_VAL, std::nan(""), -std::nan("")};
  const auto check = [&doubles] {
    for (double d : doubles) {
      kiJSONFormatter f;
      f.Float(d);
      char expected[400];
      std::snprintf(expected, sizeof expected, "%lf", d);
      EXPECT_EQ(expected, Text(f)) << d;
    }
    kiJSONFormatter f;
    f.U32(4294967295u);
    f.S32(-2147483647 - 1);
    f.U64(18446744073709551615ull);
    f.S64(-9223372036854775807ll - 1);
    f.S32(0);
    EXPECT_EQ("4294967295-214748364818446744073709551615-92233720368547758080", Text(f));
  };
  check();  // the "C" locale: the reference
  kiTest::DecimalCommaLocale comma;
  if (!comma.IsActive()) GTEST_SKIP() << "no decimal-comma locale is installed";
  kiJSONFormatter f;
  f.Float(1.5);
  EXPECT_EQ("1.500000", Text(f));
  EXPECT_EQ((Parsed{0, "f:2.5"}), ParseText("2.5 ")) << "read back in the same locale";
}

// ---- Reading ------------------------------------------------------------------

bool operator==(const Parsed& a, const Parsed& b) { return a.result == b.result && a.events == b.events; }
void PrintTo(const Parsed& p, std::ostream* os) { *os << p.result << " [" << p.events << "]"; }

TEST(JSONFormatterTest, ReadsTheTolerantSyntaxIntoEvents) {
  const struct {
    const char* text;
    Parsed expected;
  } rows[] = {
      {"{'a':[1,2.5,],}", {0, "{ k:a [ i:1 f:2.5 ] }"}},
      {R"({"a":1,"b":[true,null],})", {0, "{ k:a i:1 k:b [ true null ] }"}},
      {"{,}", {0, "{ }"}},                   // the writer's empty map
      {"{ , /**/ }x", {0, "{ }"}},
      {"{}", {0, "{ }"}},
      {"[]", {0, "[ ]"}},
      {" [ 1 , 'x' ] ", {0, "[ i:1 s:x ]"}},
      {"\"s\"", {0, "s:s"}},                 // strings, arrays and maps may end the text
      {"1 ", {0, "i:1"}},
      {"NULL ", {0, "null"}},
      {"[tRuE,False,nUlL]", {0, "[ true false null ]"}},
      {"truex", {0, "true"}},                // the byte after a literal is not tested
      {"[1]x", {0, "[ i:1 ]"}},              // trailing text is ignored
      {"[1] /* c */ ", {0, "[ i:1 ]"}},
      {"[1]// c\n", {0, "[ i:1 ]"}},
      {"/**/1 ", {0, "i:1"}},
      {"/* * / **/ 1 ", {1, ""}},            // "**/" does not close a comment
      {"/* a **/ 1 ", {1, ""}},
      {"// line\n[/*in*/1//x\n,2]", {0, "[ i:1 i:2 ]"}},
      {"'a\"b' ", {0, "s:a\"b"}},
      {R"("\"\\\/\b\n\r\t" )", {0, "s:\"\\/\b\n\r\t"}},
      {R"("\u00e9\u0041\u20ac")", {0, "s:\xc3\xa9" "A\xe2\x82\xac"}},
      {R"("\ud83d\ude00")", {0, "s:\xed\xa0\xbd\xed\xb8\x80"}},  // each escape alone
      {"1.5e3 ", {0, "f:1500"}},
      {"1e ", {0, "f:1"}},                   // read as "%lf" reads it
      {"1E5 ", {0, "i:1"}},                  // 'E' ends the number...
      {"[1E5]", {8, "[ i:1"}},               // ...and is no separator
      {"1-2 ", {0, "i:1"}},
      {"-0 ", {0, "i:0"}},
      {"1e999 ", {0, "f:inf"}},
  };
  for (const auto& row : rows) EXPECT_EQ(row.expected, ParseText(row.text)) << row.text;
}

TEST(JSONFormatterTest, IntegersReadAsTheCLibraryPercentDReadsThem) {
  // glibc's "%d" reads a 64-bit long, saturated at its limits as strtol is, and
  // cuts it to 32 bits; a text it cannot convert is error 7. The texts sit
  // around both 64-bit limits, where one digit decides between the value and
  // saturation.
  const std::string zeros(24, '0');
  const std::string texts[] = {
      "2147483647", "2147483648", "-2147483648", "-2147483649", "4294967297",
      "922337203685477580", "9223372036854775799", "9223372036854775800",
      "9223372036854775806", "9223372036854775807", "9223372036854775808",
      "9223372036854775809", "9223372036854775810", "18446744073709551617",
      "-9223372036854775799", "-9223372036854775800", "-9223372036854775807",
      "-9223372036854775808", "-9223372036854775809", "-9223372036854775810",
      "99999999999999999999", "-99999999999999999999", "1" + zeros + zeros,
      zeros + "9223372036854775807", zeros + "9223372036854775809",
      "-" + zeros + "9223372036854775808", "-" + zeros + "9223372036854775801",
      "9223372036854775800+7", "-9223372036854775807-1",  // the number's prefix
      "-", "-+1", "--1",  // a '+' cannot start a value (error 4), so only after '-'
  };
  for (const std::string& text : texts) {
    int expected = 0;
    const bool converted = std::sscanf(text.c_str(), "%d", &expected) == 1;
    const Parsed want = converted ? Parsed{0, "i:" + std::to_string(expected)} : Parsed{7, ""};
    EXPECT_EQ(want, ParseText((text + " ").c_str())) << text;
  }
}

TEST(JSONFormatterTest, ReportsEachErrorWithTheEventsSentBeforeIt) {
  const struct {
    const char* text;
    Parsed expected;
  } rows[] = {
      {"", {1, ""}},
      {" \t\r\n", {1, ""}},
      {"1", {1, ""}},                        // a number is reported when the next byte arrives
      {"true", {1, ""}},
      {"[1", {1, "["}},
      {"{\"a\":", {1, "{ k:a"}},
      {"\"abc", {1, ""}},
      {"\"a\\", {1, ""}},
      {"\"\\u00", {1, ""}},
      {"[1] /* open", {1, "[ i:1 ]"}},
      {"[1] // no line feed", {1, "[ i:1 ]"}},
      {"[1] /", {1, "[ i:1 ]"}},
      {"+1 ", {4, ""}},
      {"[,1]", {4, "["}},
      {"x", {4, ""}},
      {"nul ", {5, ""}},
      {"nil ", {5, ""}},
      {"tru ", {6, ""}},
      {"fals3 ", {6, ""}},
      {"- ", {7, ""}},
      {"-.e ", {7, ""}},
      {"[1 2]", {8, "[ i:1"}},
      {"{1:2}", {9, "{"}},
      {"{,\"a\":1}", {9, "{"}},
      {"{\"a\" 1}", {10, "{ k:a"}},
      {"{\"a\":1 \"b\"}", {11, "{ k:a i:1"}},
      {R"("\u00E9")", {12, ""}},             // lower-case hex digits only
      {R"("\f")", {12, ""}},                 // although the writer writes it
      {R"('\'')", {12, ""}},
      {R"("\x")", {12, ""}},
      {"/x", {13, ""}},
      {"[1]/x", {13, "[ i:1 ]"}},
  };
  for (const auto& row : rows) EXPECT_EQ(row.expected, ParseText(row.text)) << row.text;
  Recorder r;
  int a = -5, b = -6;
  EXPECT_EQ(1, kiJSONFormatter::Parse(nullptr, r));
  EXPECT_EQ(0, kiJSONFormatter::Parse("[] ", r, a, b));
  EXPECT_EQ(-5, a);  // never written
  EXPECT_EQ(-6, b);
}

TEST(JSONFormatterTest, DecimalsReadExactlyAsTheCLibraryReadsThem) {
  // Short decimals take a fast path; it must round as strtod does ("C" locale).
  struct Last : kiEmptySerialize {
    double value = -1;
    int Float(double v) override { return value = v, 0; }
  } sink;
  unsigned int seed = 12345;
  const auto next = [&seed] { return seed = seed * 1103515245u + 12345u, seed >> 8; };
  for (int i = 0; i < 20000; ++i) {
    std::string text = next() % 2 ? "-" : "";
    text += std::to_string(next() % 100000000) + "." + std::to_string(next() % 10000000);
    if (i % 7 == 0) text.insert(text.size() - 1, std::string(next() % 12, '0'));  // long ones too
    if (i % 11 == 0) text += "-1";  // read as a prefix, like "%lf"
    ASSERT_EQ(0, kiJSONFormatter::Parse((text + " ").c_str(), sink)) << text;
    EXPECT_EQ(std::strtod(text.c_str(), nullptr), sink.value) << text;
  }
}

TEST(JSONFormatterTest, NestingStopsAtTwentyLevelsWithoutRecursion) {
  const auto nested = [](int n, const char* inner) {
    return std::string(static_cast<size_t>(n), '[') + inner + std::string(static_cast<size_t>(n), ']');
  };
  kiEmptySerialize sink;
  EXPECT_EQ(0, kiJSONFormatter::Parse(nested(19, "1").c_str(), sink));
  EXPECT_EQ(2, kiJSONFormatter::Parse(nested(20, "1").c_str(), sink));
  EXPECT_EQ(0, kiJSONFormatter::Parse(nested(20, "").c_str(), sink));  // empty: no new level
  std::string maps;
  for (int i = 0; i < 19; ++i) maps += "{'k':";
  EXPECT_EQ(0, kiJSONFormatter::Parse((maps + "1" + std::string(19, '}')).c_str(), sink));
  EXPECT_EQ(2, kiJSONFormatter::Parse((maps + "{'k':1}" + std::string(19, '}')).c_str(), sink));
  EXPECT_EQ(2, kiJSONFormatter::Parse(std::string(100000, '[').c_str(), sink));
}

TEST(JSONFormatterTest, WrittenTextReadsBackToTheSameEvents) {
  // Everything the writer makes is read back, except what the reader refuses
  // by design (\f, "raw" keys without quotes) and what "%lf" rounds.
  kiJSONFormatter f;
  f.MapBegin();
  f.MapKey("text", false);
  f.String("q\" \\ / \x01 \t \xc3\xa9", false);
  f.MapKey("list", false);
  f.ArrayBegin();
  f.S32(-7);
  f.ArrayItemSeparator();
  f.Float(0.25);
  f.ArrayItemSeparator();
  f.MapBegin();
  f.MapEnd();
  f.ArrayEnd();
  f.MapKey("none", false);
  f.Null();
  f.MapEnd();
  EXPECT_EQ((Parsed{0, "{ k:text s:q\" \\ / \x01 \t \xc3\xa9 k:list [ i:-7 f:0.25 { } ] k:none null }"}),
            ParseText(f.Result()));
  f.Reset();
  f.SetHumanMode(true, "  ");
  WriteExample(f);
  EXPECT_EQ((Parsed{0, "{ k:a i:1 k:b [ true null ] }"}), ParseText(f.Result()));
}

}  // namespace
