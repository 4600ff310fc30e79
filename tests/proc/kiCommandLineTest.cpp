// kiCommandLineTest.cpp - argument texts: the quoting rules when splitting,
// the minimal quoting when joining, and the single block Split answers.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ki/proc/kiCommandLine.h"
#include "ki/proc/kiMem.h"
#include "support/CommandLineText.h"

namespace {

using Args = std::vector<std::string>;

Args Split(const char* text) {
  char** argv = nullptr;
  const unsigned int count = kiCommandLine_Split(text, &argv);
  Args args(argv, argv + count);
  EXPECT_EQ(nullptr, argv[count]);
  EXPECT_EQ(count, kiCommandLine_Split(text, nullptr));
  kiMem_Free(argv);
  return args;
}

TEST(CommandLineTest, SplitFollowsTheQuotingRules) {
  struct Row {
    const char* text;
    Args expected;
  };
  const Row rows[] = {
      {"", {}},
      {" \t\r\n\v\f ", {}},
      {"  one two\tthree\n", {"one", "two", "three"}},
      {"a\"b c\"d", {"ab cd"}},
      {"\"\"", {""}},
      {"x \"\" y", {"x", "", "y"}},
      {"\"a\"\"b\"", {"ab"}},  // a closed section and a new one, no escaped quote
      {"\"open to the end  ", {"open to the end  "}},
      {"\\\"quote\\\"", {"\"quote\""}},
      {"a\\\\\"b c\"", {"a\\b c"}},       // 2 backslashes + quote: one, section opens
      {"a\\\\\\\"b c", {"a\\\"b", "c"}},  // 3 backslashes + quote: one and a quote
      {"\"\\\\\"", {"\\"}},               // a trailing backslash inside quotes
      {"C:\\tools\\app.exe \\\\server\\share", {"C:\\tools\\app.exe", "\\\\server\\share"}},
      {"end\\\\", {"end\\\\"}},  // not followed by a quote: literal
      {"caf\xC3\xA9 \"na\xC3\xAFve x\"", {"caf\xC3\xA9", "na\xC3\xAFve x"}},
      {"'single quotes' are bytes", {"'single", "quotes'", "are", "bytes"}},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.text);
    EXPECT_EQ(r.expected, Split(r.text));
  }
  EXPECT_EQ(Args(), Split(nullptr));
}

TEST(CommandLineTest, JoinQuotesOnlyWhatNeedsIt) {
  struct Row {
    Args args;
    const char* expected;
  };
  const Row rows[] = {
      {{}, ""},
      {{"plain", "C:\\dir\\", "\\\\server\\share"}, "plain C:\\dir\\ \\\\server\\share"},
      {{""}, "\"\""},
      {{"two words", "tab\there"}, "\"two words\" \"tab\there\""},
      {{"say \"hi\""}, "\"say \\\"hi\\\"\""},
      {{"back\\\"slash"}, "\"back\\\\\\\"slash\""},      // the run before a quote doubles
      {{"dir with space\\"}, "\"dir with space\\\\\""},  // and before the closing quote
      {{"mid\\dle x"}, "\"mid\\dle x\""},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.expected);
    EXPECT_EQ(r.expected, kiTest::JoinArguments(r.args));
    EXPECT_EQ(r.args, Split(r.expected));
  }

  const char* withNull[] = {"a", nullptr, "b"};
  char* text = kiCommandLine_Join(withNull, 3);
  EXPECT_STREQ("a \"\" b", text);
  kiMem_Free(text);
  text = kiCommandLine_Join(nullptr, 5);
  EXPECT_STREQ("", text);
  kiMem_Free(text);
}

TEST(CommandLineTest, SplitAnswersOneBlockEvenWhenEmpty) {
  char** argv = nullptr;
  EXPECT_EQ(0u, kiCommandLine_Split("   ", &argv));
  ASSERT_NE(nullptr, argv);
  EXPECT_EQ(nullptr, argv[0]);
  kiMem_Free(argv);

  EXPECT_EQ(2u, kiCommandLine_Split("ab \"c d\"", &argv));
  // The texts follow the pointer array inside the same block.
  const char* blockEnd = reinterpret_cast<const char*>(argv + 3);
  EXPECT_EQ(blockEnd, argv[0]);
  EXPECT_EQ(blockEnd + 3, argv[1]);
  EXPECT_STREQ("c d", argv[1]);
  kiMem_Free(argv);  // the only free: the sanitizer build sees no leak
}

}  // namespace
