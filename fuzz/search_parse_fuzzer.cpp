// search_parse_fuzzer.cpp - kiExpressionParser on any text, alone and in a
// derived parser that rejects the property "x" and hides "like". For every
// accepted text the tree is walked here and checked against the parser: the
// cursor, the shape rules, the criteria list, the discriminant criteria (also
// by forcing each to fail), GetRelExpressionValue, IsSameAs of copies, and
// evaluation against a reference walk with pseudo-random answers.
//
// Input: the text itself (capped); its hash seeds the answers.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "ki/search/ExpressionParser.h"

#include "FuzzInput.h"

namespace {

constexpr size_t kMaxInput = 4096;

using kiFuzz::Check;
using Nodes = std::vector<kiSearchExpression*>;

class DerivedParser final : public kiExpressionParser {
 public:
  using kiExpressionParser::GetPosition;
  using kiExpressionParser::GetText;
  using kiExpressionParser::kiExpressionParser;

 protected:
  int GetPropertyID(const kiCString& property) override {
    return property == "x" ? -1 : static_cast<int>(property.length() % 1000);
  }
  bool OperandSupported(const char* text) override { return std::string(text) != "like"; }
};

// The plain parser, with the protected cursor readable.
class PlainParser final : public kiExpressionParser {
 public:
  using kiExpressionParser::GetPosition;
  using kiExpressionParser::GetText;
  using kiExpressionParser::kiExpressionParser;
};

kiLinearExpression* AsLink(kiSearchExpression* node) {
  return static_cast<kiLinearExpression*>(node);
}
kiCompositeExpression* AsGroup(kiSearchExpression* node) {
  return static_cast<kiCompositeExpression*>(node);
}

// The shapes the parser builds: a link's left is a comparison or a group, its
// right a link or a group, present exactly when it has an operator; a group
// holds a link or a group.
void CheckShape(kiSearchExpression* node, bool atLeft) {
  Check(node != nullptr, "missing node");
  if (node->IsRel()) {
    Check(atLeft, "comparison outside a left");
    return;
  }
  if (node->IsComposite()) {
    Check(node->GetType() == kiSearchExpression_Composite, "group type");
    kiSearchExpression* child = AsGroup(node)->GetChild();
    Check(child != nullptr && !child->IsRel(), "group child");
    CheckShape(child, false);
    return;
  }
  Check(node->IsLinear() && !atLeft, "link at a left");
  kiLinearExpression* link = AsLink(node);
  Check(link->GetLeft() != nullptr && !link->GetLeft()->IsLinear(), "link left");
  CheckShape(link->GetLeft(), true);
  const int id = link->GetOperatorID();
  Check(id == kiSearchOp_None || id == kiSearchOp_And || id == kiSearchOp_Or, "link operator");
  Check((id == kiSearchOp_None) == (link->GetRight() == nullptr), "right and operator");
  if (link->GetRight() != nullptr) CheckShape(link->GetRight(), false);
}

// Every comparison in order (lefts before rights); required ones are those
// with no or-link among their ancestors.
void Collect(kiSearchExpression* node, bool required, Nodes& all, Nodes& needed) {
  if (node == nullptr) return;
  if (node->IsRel()) {
    all.push_back(node);
    if (required) needed.push_back(node);
  } else if (node->IsComposite()) {
    Collect(AsGroup(node)->GetChild(), required, all, needed);
  } else {
    kiLinearExpression* link = AsLink(node);
    required = required && link->GetOperatorID() != kiSearchOp_Or;
    Collect(link->GetLeft(), required, all, needed);
    Collect(link->GetRight(), required, all, needed);
  }
}

std::string Text(const kiCString& s) { return std::string(s.c_str(), s.length()); }

// Answers from a hash of the comparison and the seed; one node can be forced
// false. Records the comparisons asked, in order.
class RandomEvaluator : public kiSearchExpressionEvaluator {
 public:
  RandomEvaluator(uint64_t seed, kiSearchExpression* forcedFalse)
      : m_seed(seed), m_forcedFalse(forcedFalse) {}
  bool Answer(kiRelExpression* node) {
    if (node == m_forcedFalse) return false;
    uint64_t h = m_seed ^ static_cast<uint64_t>(node->GetOperatorID());
    for (const std::string& s : {Text(node->GetProperty()), Text(node->GetValue())}) {
      for (unsigned char c : s) h = (h ^ c) * 1099511628211ull;
      h = (h ^ 0xff) * 1099511628211ull;
    }
    return ((h >> 29) & 1) != 0;
  }
  bool Evaluate(kiRelExpression* node) override {
    asked.push_back(node);
    return Answer(node);
  }
  Nodes asked;

 private:
  uint64_t m_seed;
  kiSearchExpression* m_forcedFalse;
};

bool Reference(kiSearchExpression* node, RandomEvaluator& answers, Nodes& asked) {
  if (node == nullptr) return true;
  if (node->IsRel()) {
    asked.push_back(node);
    return answers.Answer(static_cast<kiRelExpression*>(node));
  }
  if (node->IsComposite()) return Reference(AsGroup(node)->GetChild(), answers, asked);
  kiLinearExpression* link = AsLink(node);
  if (link->GetLeft() == nullptr) return true;
  const bool left = Reference(link->GetLeft(), answers, asked);
  switch (link->GetOperatorID()) {
    case kiSearchOp_None:
      return left;
    case kiSearchOp_Or:
      return left || Reference(link->GetRight(), answers, asked);
    default:
      return left && Reference(link->GetRight(), answers, asked);
  }
}

template <class Parser>
void CheckAccepted(Parser& parser, uint64_t seed) {
  Check(parser.GetPosition() == parser.GetText().length(), "rest after success");
  kiSearchExpression* root = parser.GetRoot();
  if (root == nullptr) {  // "*"
    Check(parser.Evaluate(nullptr), "* matches");
    Check(parser.GetSearchCriteriaList().IsEmpty(), "* lists nothing");
    kiArray_t* none = parser.GetDiscriminantCriteria();
    Check(kiArray_GetCount(none) == 0, "* requires nothing");
    kiArray_Delete(none);
    return;
  }
  CheckShape(root, false);

  Nodes all, needed;
  Collect(root, true, all, needed);
  std::string list;
  for (kiSearchExpression* node : all) {
    const std::string entry = Text(static_cast<kiRelExpression*>(node)->GetProperty()) + ",";
    if (list.find(entry) == std::string::npos) list += entry;
  }
  Check(Text(parser.GetSearchCriteriaList()) == list, "criteria list");

  kiArray_t* criteria = parser.GetDiscriminantCriteria();
  Check(kiArray_GetCount(criteria) == needed.size(), "discriminant count");
  for (unsigned int i = 0; i < needed.size(); ++i) {
    Check(kiArray_Get(criteria, i) == needed[i], "discriminant node");
    kiRelExpression* rel = static_cast<kiRelExpression*>(needed[i]);
    unsigned int index = 0;  // among the earlier ones on the same property
    for (unsigned int j = 0; j < i; ++j) {
      index += static_cast<kiRelExpression*>(needed[j])->GetProperty() == rel->GetProperty();
    }
    kiCString value;
    const kiCString& property = rel->GetProperty();
    if (property.length() == std::strlen(property.c_str())) {  // a zero byte cuts the lookup
      Check(
          parser.GetRelExpressionValue(property.c_str(), index, value) && value == rel->GetValue(),
          "value of a discriminant criterion");
    }
    // A required comparison that fails makes the whole tree fail.
    RandomEvaluator forced(seed, rel);
    Check(!parser.Evaluate(&forced), "required comparison ignored");
  }
  kiArray_Delete(criteria);

  Check(root->IsSameAs(root), "same as itself");
  Parser copy(parser);
  Check(copy.IsSameAs(&parser) && parser.IsSameAs(&copy), "copy differs");
  Parser assigned("*");
  assigned = parser;
  Check(assigned.IsSameAs(&parser), "assignment differs");

  RandomEvaluator evaluator(seed, nullptr);
  RandomEvaluator answers(seed, nullptr);
  Nodes asked;
  Check(parser.Evaluate(&evaluator) == Reference(root, answers, asked), "evaluation");
  Check(evaluator.asked == asked, "evaluation order");
}

template <class Parser>
bool Run(const kiCString& text, uint64_t seed, Parser*& kept) {
  Parser* parser = new Parser(text);
  const bool ok = parser->Parse();
  Check(ok == parser->IsValid(), "validity");
  if (!ok) {
    Check(parser->GetPosition() == 0 && parser->GetRoot() == nullptr, "state after failure");
    Check(!parser->Evaluate(nullptr), "invalid matches");
  } else {
    CheckAccepted(*parser, seed);
    // Parsing again answers the same.
    Parser before(*parser);
    Check(parser->Parse(), "second parse");
    Check(parser->GetRoot() == nullptr || parser->IsSameAs(&before), "second tree");
  }
  kept = parser;
  return ok;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > kMaxInput) return 0;
  const kiCString text(reinterpret_cast<const char*>(data), static_cast<unsigned int>(size));
  uint64_t seed = 14695981039346656037ull;
  for (size_t i = 0; i < size; ++i) seed = (seed ^ data[i]) * 1099511628211ull;

  PlainParser* plain = nullptr;
  DerivedParser* derived = nullptr;
  const bool plainOk = Run(text, seed, plain);
  const bool derivedOk = Run(text, seed, derived);
  if (derivedOk) {
    // The derived parser only refuses more, so the plain one agrees.
    Check(plainOk, "derived accepted more");
    Check(derived->GetRoot() == nullptr || derived->IsSameAs(plain), "derived tree");
    Nodes all, needed;
    Collect(derived->GetRoot(), true, all, needed);
    for (kiSearchExpression* node : all) {
      kiRelExpression* rel = static_cast<kiRelExpression*>(node);
      Check(rel->GetProperty() != "x" && rel->GetOperatorID() != kiSearchOp_Like, "hook ignored");
      Check(rel->GetPropertyID() == static_cast<int>(rel->GetProperty().length() % 1000),
            "property id");
    }
  }
  delete plain;
  delete derived;
  return 0;
}
