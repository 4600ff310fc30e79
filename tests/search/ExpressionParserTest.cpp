// ExpressionParserTest.cpp - kiExpressionParser: what the grammar accepts and
// refuses, the shapes after the and/or regrouping, the hooks and tables, the
// discriminant criteria, copies, and nesting far past the limit.
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "ki/search/ExpressionParser.h"

namespace {

// The tree as text: a comparison "p<id>v", a link "left op right" (the
// operator by its id: & for and, | for or), a group "(...)".
std::string Render(kiSearchExpression* node) {
  if (node == nullptr) return "null";
  if (node->IsRel()) {
    kiRelExpression* rel = static_cast<kiRelExpression*>(node);
    return std::string(rel->GetProperty().c_str()) + "<" + std::to_string(rel->GetOperatorID()) +
           ">" + rel->GetValue().c_str();
  }
  if (node->IsComposite()) {
    return "(" + Render(static_cast<kiCompositeExpression*>(node)->GetChild()) + ")";
  }
  kiLinearExpression* link = static_cast<kiLinearExpression*>(node);
  const int id = link->GetOperatorID();
  std::string out = Render(link->GetLeft());
  if (id == 0) return link->GetRight() == nullptr ? out : out + " ?" + Render(link->GetRight());
  return out +
         (id == kiSearchOp_And  ? " & "
          : id == kiSearchOp_Or ? " | "
                                : " ? ") +
         Render(link->GetRight());
}

std::string ParseAndRender(const char* text) {
  kiExpressionParser parser(text);
  if (!parser.Parse()) return parser.GetRoot() == nullptr ? "invalid" : "tree left behind";
  return Render(parser.GetRoot());
}

// Accepted texts by their tree after the regrouping; refused ones as "invalid".
TEST(ExpressionParserTest, GrammarAndPrecedence) {
  struct Row {
    const char* text;
    const char* shape;
  };
  const Row rows[] = {
      {" \t*\r\n ", "null"},
      {"up:x@id != \"\" \n", "up:x@id<2>"},
      {"a <= \"1\"", "a<3>1"},
      {"a < \"1\"", "a<6>1"},
      {"a doesNotContain \"1\"", "a<8>1"},
      {"x exists true", "x<10>true"},
      {"a like \"*\"", "a<13>*"},
      {"t =\t\"a\\\"b\\\\)(\"", "t<1>a\"b\\)("},
      {"a = \"1\" or b = \"2\" and c = \"3\"", "a<1>1 | (b<1>2 & c<1>3)"},
      {"a = \"1\" and b = \"2\" or c = \"3\"", "(a<1>1 & b<1>2) | c<1>3"},
      {"a = \"1\" and b = \"2\" and c = \"3\"", "(a<1>1 & b<1>2) & c<1>3"},
      {"a = \"1\" or b = \"2\" and c = \"3\" or d = \"4\"", "(a<1>1 | (b<1>2 & c<1>3)) | d<1>4"},
      {"  ( a = \"1\" )", "(a<1>1)"},
      {"a = \"1\" and  (b = \"2\" or c = \"3\")", "a<1>1 & (b<1>2 | c<1>3)"},
      // A group on the left is regrouped inside too.
      {"(a = \"1\" and b = \"2\" or c = \"3\") and d = \"4\"", "((a<1>1 & b<1>2) | c<1>3) & d<1>4"},
      {"", "invalid"},
      {"  a = \"b\"", "invalid"},  // a comparison cannot start with white space
      {"a=\"b\"", "invalid"},
      {"a = \"b\"and", "invalid"},
      {"a = \"b\" and ", "invalid"},
      {"a = \"b\" andx c = \"d\"", "invalid"},
      {"a = \"b\" or(c = \"d\")", "invalid"},
      {"(a = \"b\")and c = \"d\"", "invalid"},
      {"a = 1", "invalid"},
      {"a = \"b\\", "invalid"},
      {"x exists \"true\"", "invalid"},
      {"a = \"b\")", "invalid"},
      {"(x = \"b\"", "invalid"},  // not read again as a property "(x"
      {"* *", "invalid"},
      {"a = \"b\"\x01", "invalid"},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.text);
    EXPECT_EQ(r.shape, ParseAndRender(r.text));
  }
  // A zero byte is an ordinary character: it cannot end the input.
  kiExpressionParser withZero(kiCString("a = \"b\"\0", 8));
  EXPECT_FALSE(withZero.Parse());
  EXPECT_FALSE(withZero.Evaluate(nullptr));
}

class HookedParser : public kiExpressionParser {
 public:
  using kiExpressionParser::GetPosition;
  using kiExpressionParser::GetText;
  using kiExpressionParser::kiExpressionParser;
  using kiExpressionParser::kMaxNesting;
  int calls = 0;

 protected:
  int GetPropertyID(const kiCString& property) override {
    ++calls;
    return property == "secret" ? -1 : static_cast<int>(property.length());
  }
  bool OperandSupported(const char* text) override {
    return std::string(text) != "like" && std::string(text) != "<=";
  }
};

TEST(ExpressionParserTest, HooksAndReplacedTables) {
  // With "<=" hidden, "<" takes the prefix of "<=" and then wants white space.
  for (const char* text : {"a = \"1\" or secret = \"1\"", "(a = \"1\" and (secret exists true))",
                           "a like \"x\"", "a <= \"1\""}) {
    SCOPED_TRACE(text);
    HookedParser parser(text);
    EXPECT_FALSE(parser.Parse());
    EXPECT_EQ(0u, parser.GetPosition());  // a failed parse leaves the cursor at the start
  }
  HookedParser parser("abc < \"1\" and secrets = \"2\" ");
  ASSERT_TRUE(parser.Parse());
  EXPECT_EQ(parser.GetText().length(), parser.GetPosition());
  kiLinearExpression* link = static_cast<kiLinearExpression*>(parser.GetRoot());
  EXPECT_EQ(3, static_cast<kiRelExpression*>(link->GetLeft())->GetPropertyID());
  EXPECT_EQ(2, parser.calls);

  static const kiExpressionOperand logic[] = {{"AND", kiSearchOp_And, kiOperand_Nothing},
                                              {nullptr, 0, 0}};
  static const kiExpressionOperand binary[] = {{"is", kiSearchOp_Equal, kiOperand_QuotedValue},
                                               {"has", kiSearchOp_Exists, kiOperand_BoolValue},
                                               {"odd", 42, 9},  // an unknown kind never completes
                                               {nullptr, 0, 0}};
  kiExpressionParser custom("a is \"1\" AND b has true");
  custom.SetLogicOperands(logic);
  custom.SetBinaryOperands(binary);
  ASSERT_TRUE(custom.Parse());
  EXPECT_EQ("a<1>1 & b<10>true", Render(custom.GetRoot()));
  kiExpressionParser restored("a odd \"1\"");
  restored.SetBinaryOperands(binary);
  EXPECT_FALSE(restored.Parse());
  restored.SetBinaryOperands(nullptr);
  EXPECT_FALSE(restored.Parse());
  restored = kiExpressionParser("a = \"1\" and b = \"2\"");
  restored.SetLogicOperands(logic);
  EXPECT_FALSE(restored.Parse());
  restored.SetLogicOperands(nullptr);
  EXPECT_TRUE(restored.Parse());
}

TEST(ExpressionParserTest, DiscriminantCriteriaValuesAndList) {
  struct Row {
    const char* text;
    const char* criteria;  // the comparisons every match needs, in order
  };
  const Row rows[] = {
      {"*", ""},
      {"a = \"1\" or b = \"2\" and c = \"3\"", ""},
      {"a = \"1\" and b = \"2\" or c = \"3\"", ""},
      {"a = \"1\" and (b = \"2\" or c = \"3\")", "a<1>1 "},
      {"(b = \"2\" or c = \"3\") and a = \"1\"", "a<1>1 "},
      {"a = \"1\" and (b = \"2\" and a = \"3\") and c exists true", "a<1>1 b<1>2 a<1>3 c<10>true "},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.text);
    kiExpressionParser parser(r.text);
    ASSERT_TRUE(parser.Parse());
    kiArray_t* criteria = parser.GetDiscriminantCriteria();
    std::string listed;
    for (unsigned int i = 0; i < kiArray_GetCount(criteria); ++i) {
      listed += Render(static_cast<kiSearchExpression*>(kiArray_Get(criteria, i))) + " ";
    }
    kiArray_Delete(criteria);
    EXPECT_EQ(r.criteria, listed);
  }
  kiExpressionParser parser("a = \"1\" and (b = \"2\" and a = \"3\") and B = \"4\"");
  ASSERT_TRUE(parser.Parse());
  kiCString value("untouched");
  EXPECT_TRUE(parser.GetRelExpressionValue("a", 1, value));
  EXPECT_EQ("3", value);
  EXPECT_FALSE(parser.GetRelExpressionValue("a", 2, value) ||
               parser.GetRelExpressionValue("A", 0, value) ||
               parser.GetRelExpressionValue(nullptr, 0, value));
  EXPECT_EQ("3", value);

  kiExpressionParser invalid("a = ");
  EXPECT_FALSE(invalid.Parse());
  kiArray_t* none = invalid.GetDiscriminantCriteria();
  EXPECT_EQ(0u, kiArray_GetCount(none));
  kiArray_Delete(none);

  kiExpressionParser listed(
      "a = \"1\" and (b = \"2\" or a = \"3\") or xtitle = \"\" or title = \"\"");
  ASSERT_TRUE(listed.Parse());
  EXPECT_EQ("a,b,xtitle,", listed.GetSearchCriteriaList());  // "xtitle," hides "title" (intended)
}

TEST(ExpressionParserTest, CopiesAreDeepAndComparisonsNeedValidTrees) {
  // final, so that the original can be destroyed before its copies
  class OriginalParser final : public kiExpressionParser {
   public:
    using kiExpressionParser::kiExpressionParser;
  };
  std::optional<OriginalParser> original;
  original.emplace("a = \"1\" or (b = \"2\" and c = \"3\")");
  ASSERT_TRUE(original->Parse());
  kiExpressionParser copy(*original);
  kiExpressionParser assigned("x = \"y\"");
  ASSERT_TRUE(assigned.Parse());
  assigned = *original;
  const kiExpressionParser& self = assigned;
  assigned = self;
  original.reset();
  const std::string shape = "a<1>1 | (b<1>2 & c<1>3)";
  EXPECT_EQ(shape, Render(copy.GetRoot()));
  EXPECT_EQ(shape, Render(assigned.GetRoot()));
  EXPECT_TRUE(copy.IsSameAs(&assigned));
  EXPECT_TRUE(copy.Parse());  // parsing again answers the same
  EXPECT_EQ(shape, Render(copy.GetRoot()));

  kiExpressionParser star("*"), invalid("a"), other("a = \"1\"");
  EXPECT_TRUE(star.Parse() && other.Parse());
  invalid.Parse();
  EXPECT_FALSE(star.IsSameAs(&star));  // an empty tree is never the same
  EXPECT_FALSE(other.IsSameAs(&invalid) || invalid.IsSameAs(&other) || other.IsSameAs(&star));
  EXPECT_FALSE(other.IsSameAs(nullptr) || other.IsSameAs(&copy));
}

// Each '(' and each chained term counts one; past kMaxNesting the text fails.
TEST(ExpressionParserTest, NestingIsBoundedWithoutCrashing) {
  auto chain = [](int terms) {
    std::string text = "a = \"1\"";
    for (int i = 1; i < terms; ++i) text += " and a = \"1\"";
    return kiExpressionParser(text.c_str()).Parse();
  };
  auto parens = [](int depth) {
    const std::string text = std::string(depth, '(') + "a = \"1\"" + std::string(depth, ')');
    return kiExpressionParser(text.c_str()).Parse();
  };
  const int limit = HookedParser::kMaxNesting;
  EXPECT_TRUE(chain(limit) && parens(limit - 1));
  EXPECT_FALSE(chain(limit + 1) || parens(limit));
  EXPECT_FALSE(chain(100000) || parens(100000));
  EXPECT_FALSE(kiExpressionParser(std::string(100000, '(').c_str()).Parse());
}

}  // namespace
