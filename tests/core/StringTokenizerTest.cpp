// StringTokenizerTest.cpp - both tokenizers on one table of modes, then the
// position, CountTokens' restart and the set-up rules.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ki/core/StringTokenizer.h"

namespace {

using Tokens = std::vector<std::string>;

struct Row {
  const char* what;
  std::string text, delims;
  kiCStringTokenizerMode mode, resolved;
  Tokens tokens;
};

// clang-format off
const Row kRows[] = {
    {"comma resolves to RET_EMPTY", "a,,b", ",", kiTOKEN_DEFAULT, kiTOKEN_RET_EMPTY, {"a", "", "b"}},
    {"STRTOK skips empties", "a,,b", ",", kiTOKEN_STRTOK, kiTOKEN_STRTOK, {"a", "b"}},
    {"trailing empty, ALL", "a,b,", ",", kiTOKEN_RET_EMPTY_ALL, kiTOKEN_RET_EMPTY_ALL, {"a", "b", ""}},
    {"trailing empty, EMPTY", "a,b,", ",", kiTOKEN_RET_EMPTY, kiTOKEN_RET_EMPTY, {"a", "b"}},
    {"two trailing, ALL", "a,,", ",", kiTOKEN_RET_EMPTY_ALL, kiTOKEN_RET_EMPTY_ALL, {"a", "", ""}},
    {"lone empty at position 0", ",,", ",", kiTOKEN_RET_EMPTY, kiTOKEN_RET_EMPTY, {""}},
    {"delimiters only, DELIMS", ",,", ",", kiTOKEN_RET_DELIMS, kiTOKEN_RET_DELIMS, {}},
    {"DELIMS keeps each", ";a,b;;c", ",;", kiTOKEN_RET_DELIMS, kiTOKEN_RET_DELIMS,
     {";", "a,", "b;", ";", "c"}},
    {"white space resolves to STRTOK", " \ta  \r\nb ", " \t\r\n", kiTOKEN_DEFAULT, kiTOKEN_STRTOK,
     {"a", "b"}},
    {"one non-space delimiter", "a b,", " ,", kiTOKEN_DEFAULT, kiTOKEN_RET_EMPTY, {"a", "b"}},
    {"empty set", "a b", "", kiTOKEN_DEFAULT, kiTOKEN_STRTOK, {"a b"}},
    {"empty text, ALL", "", ",", kiTOKEN_RET_EMPTY_ALL, kiTOKEN_RET_EMPTY_ALL, {}},
    {"zero byte delimiter", std::string("a\0b", 3), std::string("\0", 1), kiTOKEN_DEFAULT,
     kiTOKEN_RET_EMPTY, {"a", "b"}},
};
// clang-format on

std::u16string Wide(const std::string& s) { return std::u16string(s.begin(), s.end()); }

template <typename Tokenizer, typename Str, typename Conv>
void CheckRows(Conv conv) {
  using Std = decltype(conv(std::string()));
  for (const Row& r : kRows) {
    SCOPED_TRACE(r.what);
    const auto text = conv(r.text), delims = conv(r.delims);
    Tokenizer t(Str(text.data(), static_cast<unsigned int>(text.size())),
                Str(delims.data(), static_cast<unsigned int>(delims.size())), r.mode);
    EXPECT_EQ(r.resolved, t.GetMode());
    EXPECT_EQ(r.tokens.size(), t.CountTokens());
    std::vector<Std> got;
    while (t.HasMoreTokens()) {
      const Str token = t.GetNextToken();
      got.emplace_back(token.c_str(), token.length());
      EXPECT_EQ(text.size(), t.GetPosition() + t.GetString().length());  // consumed + left
    }
    std::vector<Std> expected;
    for (const std::string& token : r.tokens) expected.push_back(conv(token));
    EXPECT_EQ(expected, got);
    EXPECT_TRUE(t.GetNextToken().IsEmpty());
  }
}

TEST(StringTokenizerTest, NarrowModes) {
  CheckRows<kiCStringTokenizer, kiCString>([](const std::string& s) { return s; });
}

TEST(StringTokenizerTest, WideModes) { CheckRows<kiStringTokenizer, kiString>(Wide); }

// A 16-bit delimiter must not match the byte it would be cut to.
TEST(StringTokenizerTest, WideDelimitersAreWholeCharacters) {
  kiStringTokenizer t(u"a,b\u012Cc", u"\u012C");
  EXPECT_EQ(kiTOKEN_RET_EMPTY, t.GetMode());
  EXPECT_TRUE(t.GetNextToken() == u"a,b");
  EXPECT_TRUE(t.GetNextToken() == u"c");
}

TEST(StringTokenizerTest, CountTokensRestartsOnTheRest) {
  kiCStringTokenizer t("a b  c d");
  EXPECT_EQ("a", t.GetNextToken());
  EXPECT_EQ(3u, t.CountTokens());
  EXPECT_EQ(0u, t.GetPosition());
  EXPECT_EQ("b  c d", t.GetString());
  EXPECT_EQ("b", t.GetNextToken());

  // Intended: after the restart the lone empty token is due again.
  kiCStringTokenizer e("a,,", ",", kiTOKEN_RET_EMPTY);
  e.GetNextToken();
  EXPECT_FALSE(e.HasMoreTokens());
  EXPECT_EQ(0u, e.CountTokens());
  EXPECT_TRUE(e.HasMoreTokens());
}

TEST(StringTokenizerTest, SetUp) {
  kiCStringTokenizer t;
  EXPECT_FALSE(t.IsOk());
  t.SetString("x y", " ", static_cast<kiCStringTokenizerMode>(9));
  EXPECT_EQ(kiTOKEN_INVALID, t.GetMode());
  t.SetString(nullptr, ",", kiTOKEN_RET_EMPTY_ALL);
  EXPECT_TRUE(t.IsOk());
  EXPECT_FALSE(t.HasMoreTokens());
}

}  // namespace
