// SearchExpressionTest.cpp - the tree: short-circuit evaluation with a test
// evaluator, tree comparison, and the diagnostic print.
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "ki/search/ExpressionParser.h"
#include "ki/search/SearchExpression.h"

namespace {

// Answers each comparison from a map of property -> truth and records the
// properties it was asked about, in order.
class MapEvaluator : public kiSearchExpressionEvaluator {
 public:
  explicit MapEvaluator(std::map<std::string, bool> truth) : m_truth(std::move(truth)) {}
  bool Evaluate(kiRelExpression* expression) override {
    const std::string property = expression->GetProperty().c_str();
    asked += property;
    return m_truth[property];
  }
  std::string asked;

 private:
  std::map<std::string, bool> m_truth;
};

TEST(SearchExpressionTest, EvaluationShortCircuitsAndFollowsPrecedence) {
  struct Row {
    const char* text;
    const char* trueProperties;
    bool expected;
    const char* asked;
  };
  const Row rows[] = {
      {"a = \"\"", "a", true, "a"},
      {"a = \"\" and b = \"\"", "a", false, "ab"},
      {"a = \"\" or b = \"\"", "b", true, "ab"},
      // a or (b and c): a settles it; else b and c decide.
      {"a = \"\" or b = \"\" and c = \"\"", "a", true, "a"},
      {"a = \"\" or b = \"\" and c = \"\"", "c", false, "ab"},
      {"a = \"\" or b = \"\" and c = \"\"", "bc", true, "abc"},
      // (a and b) or c: a false skips b, then c decides.
      {"a = \"\" and b = \"\" or c = \"\"", "c", true, "ac"},
      {"(a = \"\" or b = \"\") and c = \"\"", "b", false, "abc"},
      {"a = \"\" and (b = \"\" or c = \"\") and d = \"\"", "acd", true, "abcd"},
      {"a = \"\" and (b = \"\" or c = \"\") and d = \"\"", "ab", false, "abd"},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(std::string(r.text) + " with " + r.trueProperties);
    std::map<std::string, bool> truth;
    for (const char* p = r.trueProperties; *p != 0; ++p) truth[std::string(1, *p)] = true;
    MapEvaluator evaluator(truth);
    kiExpressionParser parser(r.text);
    ASSERT_TRUE(parser.Parse());
    EXPECT_EQ(r.expected, parser.Evaluate(&evaluator));
    EXPECT_EQ(r.asked, evaluator.asked);
  }
  kiExpressionParser all("*");
  ASSERT_TRUE(all.Parse());
  EXPECT_TRUE(all.Evaluate(nullptr));
  kiExpressionParser one("a = \"\"");
  ASSERT_TRUE(one.Parse());
  EXPECT_FALSE(one.Evaluate(nullptr));  // no evaluator: nothing matches
}

TEST(SearchExpressionTest, SameAsComparesShapeOperatorsAndComparisons) {
  struct Row {
    const char* a;
    const char* b;
    bool same;
  };
  const Row rows[] = {
      {"a = \"1\"", "a  =  \"1\" ", true},
      {"a = \"1\" or b = \"2\" and c = \"3\"", "a = \"1\"\tor\nb = \"2\" and  c = \"3\"", true},
      {"a = \"1\" or b = \"2\" and c = \"3\"", "a = \"1\" or b = \"2\" and c = \"4\"", false},
      {"a = \"1\" and b = \"2\" and c = \"3\"", "(a = \"1\" and b = \"2\") and c = \"3\"", true},
      {"a = \"1\"", "A = \"1\"", false},
      {"a = \"1\"", "a != \"1\"", false},
      {"a = \"1\" and b = \"2\"", "a = \"1\" or b = \"2\"", false},
      {"a = \"1\" and b = \"2\"", "a = \"1\"", false},
      {"a = \"1\" and b = \"2\"", "a = \"1\" and (b = \"2\")", false},
      {"(a = \"1\")", "a = \"1\"", false},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(std::string(r.a) + " vs " + r.b);
    kiExpressionParser a(r.a), b(r.b);
    ASSERT_TRUE(a.Parse());
    ASSERT_TRUE(b.Parse());
    EXPECT_EQ(r.same, a.IsSameAs(&b));
    EXPECT_EQ(r.same, b.IsSameAs(&a));
    EXPECT_TRUE(a.IsSameAs(&a));
    EXPECT_FALSE(a.GetRoot()->IsSameAs(nullptr));
  }
}

TEST(SearchExpressionTest, BareNodesHaveDefinedAnswers) {
  kiLinearExpression link;
  kiCompositeExpression group;
  EXPECT_TRUE(link.Evaluate(nullptr));
  EXPECT_TRUE(group.Evaluate(nullptr));
  EXPECT_EQ("x,", link.GetSearchCriteriaList("x,"));
  EXPECT_EQ(kiSearchExpression_Composite, group.GetType());
  EXPECT_FALSE(link.IsSameAs(&group));
  kiLinearExpression other;
  EXPECT_TRUE(link.IsSameAs(&other));
  kiRelExpression rel("p", 7, "=", kiSearchOp_Equal, "v");
  EXPECT_EQ(7, rel.GetPropertyID());
  EXPECT_EQ("q,p,", rel.GetSearchCriteriaList("q,"));
  EXPECT_EQ("xp,", rel.GetSearchCriteriaList("xp,"));  // a plain substring test (intended)
}

TEST(SearchExpressionTest, DisplayPrintsOneLinePerPiece) {
  kiExpressionParser parser("a = \"x\\\"y\" or (b exists true and c contains \"\")");
  ASSERT_TRUE(parser.Parse());
  testing::internal::CaptureStdout();
  parser.Display();
  EXPECT_EQ("a = \"x\"y\"\nor\n(\nb exists \"true\"\nand\nc contains \"\"\n)\n",
            testing::internal::GetCapturedStdout());

  kiExpressionParser all("*"), invalid("a");
  all.Parse();
  invalid.Parse();
  testing::internal::CaptureStdout();
  all.Display();
  invalid.Display();
  EXPECT_EQ("*\n", testing::internal::GetCapturedStdout());
}

}  // namespace
