// ErrorTest.cpp - kiError: rendering, the cause chain, copy and assignment rules.
#include <climits>
#include <string>

#include <gtest/gtest.h>

#include "ki/core/Error.h"

namespace {

std::string Str(const kiCString& s) { return std::string(s.c_str(), s.length()); }

int ChainLength(const kiError& e) {
  int n = 0;
  for (const kiError::kiErrorInfo* link = e.GetCause(); link != nullptr; link = link->cause) ++n;
  return n;
}

// 5 'x' <- 3 <- 7 'first'
kiError ChainOfThree() {
  kiError e(7, "first");
  e.ConvertTo(3, nullptr);
  e.ConvertTo(5, "x");
  return e;
}

TEST(ErrorTest, SuccessRendersAsNothing) {
  kiError ok;
  EXPECT_TRUE(ok == 0);
  EXPECT_FALSE(ok != 0);
  EXPECT_EQ("", Str(ok.ToString()));
  EXPECT_EQ("", Str(ok.ToShortString()));
  // A message does not make a success value render.
  kiError quiet(0, "ignored");
  EXPECT_EQ("", Str(quiet.ToString()));
  EXPECT_EQ("", Str(quiet.ToShortString()));
}

TEST(ErrorTest, Rendering) {
  struct Row {
    const char* what;
    kiError error;
    const char* full;
    const char* shortText;
  };
  kiError wrappedSuccess;  // success pushed as a cause: renders as nothing
  wrappedSuccess.ConvertTo(9, "outer");
  kiError nullMessage(-1, nullptr);
  const Row rows[] = {
      {"code only", kiError(3, ""), " (error: 3)", "3"},
      {"code and message", kiError(5, "x"), " (error: 5 'x')", "5: x"},
      {"negative code", kiError(-2, "not writable"), " (error: -2 'not writable')",
       "-2: not writable"},
      {"most negative code", kiError(INT_MIN, nullptr), " (error: -2147483648)", "-2147483648"},
      {"null message", nullMessage, " (error: -1)", "-1"},
      {"chain, newest first", ChainOfThree(), " (error: 5 'x') (error: 3) (error: 7 'first')",
       "5: x"},
      {"success as a cause", wrappedSuccess, " (error: 9 'outer')", "9: outer"},
      {"format characters are text", kiError(1, "%s%n"), " (error: 1 '%s%n')", "1: %s%n"},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.what);
    EXPECT_EQ(r.full, Str(r.error.ToString()));
    EXPECT_EQ(r.shortText, Str(r.error.ToShortString()));
  }
}

TEST(ErrorTest, ZeroBytesInTheMessageAreKept) {
  kiError e(4, nullptr);
  e = kiCString("a\0b", 3).c_str();  // assignment from text stops at the zero
  EXPECT_EQ("a", Str(e.GetErrorStr()));
  kiError::kiErrorInfo info(4, nullptr);
  info.message = kiCString("a\0b", 3);
  EXPECT_EQ(std::string(" (error: 4 'a\0b')", 17), Str(info.ToString()));
}

TEST(ErrorTest, ConvertToBuildsAChainNewestFirst) {
  kiError e = ChainOfThree();
  EXPECT_EQ(5, e.GetErrorCode());
  EXPECT_EQ("x", Str(e.GetErrorStr()));
  ASSERT_EQ(2, ChainLength(e));
  EXPECT_EQ(3, e.GetCause()->code);
  EXPECT_EQ(7, e.GetCause()->cause->code);
  EXPECT_EQ("first", Str(e.GetCause()->cause->message));

  // The new message may be the current one.
  kiError self(2, "same text");
  self.ConvertTo(6, self.GetErrorStr());
  EXPECT_EQ(" (error: 6 'same text') (error: 2 'same text')", Str(self.ToString()));
}

TEST(ErrorTest, CopiesOwnTheirWholeChain) {
  kiError* source = new kiError(ChainOfThree());
  kiError copy(*source);
  kiError assigned;
  assigned = *source;
  // Copy construction shares the message block; assignment copies characters.
  EXPECT_EQ(source->GetErrorStr().c_str(), copy.GetErrorStr().c_str());
  EXPECT_NE(source->GetErrorStr().c_str(), assigned.GetErrorStr().c_str());
  EXPECT_NE(source->GetCause(), copy.GetCause());
  delete source;
  EXPECT_EQ(" (error: 5 'x') (error: 3) (error: 7 'first')", Str(copy.ToString()));
  EXPECT_EQ(" (error: 5 'x') (error: 3) (error: 7 'first')", Str(assigned.ToString()));
}

TEST(ErrorTest, AssignmentKeepsTheChainUnlessTheSourceBringsOne) {
  kiError e = ChainOfThree();

  e = 8;  // code set, message emptied, chain kept
  EXPECT_EQ(" (error: 8) (error: 3) (error: 7 'first')", Str(e.ToString()));

  e = "now";  // message set, code kept
  EXPECT_EQ(" (error: 8 'now') (error: 3) (error: 7 'first')", Str(e.ToString()));

  e = kiError(1, "plain");  // a source without a cause leaves the chain (intended)
  EXPECT_EQ(" (error: 1 'plain') (error: 3) (error: 7 'first')", Str(e.ToString()));

  kiError other(2, "other");
  other.ConvertTo(4, "wrapper");
  e = other;  // a source with a cause replaces the chain
  EXPECT_EQ(" (error: 4 'wrapper') (error: 2 'other')", Str(e.ToString()));

  const kiError& alias = e;
  e = alias;  // self-assignment changes nothing
  EXPECT_EQ(" (error: 4 'wrapper') (error: 2 'other')", Str(e.ToString()));

  e = static_cast<const char*>(nullptr);
  EXPECT_EQ(4, e.GetErrorCode());
  EXPECT_TRUE(e.GetErrorStr().IsEmpty());
}

TEST(ErrorTest, RecordAssignedFromALinkOfItsOwnChain) {
  kiError e = ChainOfThree();
  e.ConvertTo(11, "top");
  kiError::kiErrorInfo head(*e.GetCause());  // 5 'x' <- 3 <- 7 'first'
  head = *head.cause;  // the source (3 <- 7) is freed with the chain it replaces
  EXPECT_EQ(" (error: 3) (error: 7 'first')", Str(head.ToString()));
  head = *head.cause;  // 7 has no cause: the record keeps its chain
  EXPECT_EQ(" (error: 7 'first') (error: 7 'first')", Str(head.ToString()));
}

// A recursive walk would overflow the stack long before this length.
TEST(ErrorTest, LongChainsNeedNoRecursion) {
  const int links = 200000;
  kiError e(1, nullptr);
  for (int i = 2; i <= links; ++i) e.ConvertTo(i, nullptr);
  kiError copy(e);
  EXPECT_EQ(links - 1, ChainLength(copy));
  kiCString text = copy.ToString();
  EXPECT_EQ(0, Str(text).rfind(" (error: 200000) (error: 199999)", 0));
  EXPECT_EQ(" (error: 2) (error: 1)", Str(text).substr(text.length() - 22));
}

}  // namespace
