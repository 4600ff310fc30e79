// SearchExpression.cpp - the tree of a search criterion: construction and
// destruction, evaluation with short-circuit and/or, comparison of two trees,
// the criteria list and the diagnostic print. (The matching primitives of
// kiRelExpression live in RelExpressionMatch.cpp.)
#include "ki/search/SearchExpression.h"

#include <cstdio>

namespace {

// One line of Display: the text as it is, zero bytes included.
void PutText(const kiCString& text) { std::fwrite(text.c_str(), 1, text.length(), stdout); }

bool SameNode(kiSearchExpression* a, kiSearchExpression* b) {
  if (a == nullptr || b == nullptr) return a == b;  // two missing children agree
  return a->IsSameAs(b);
}

}  // namespace

// ---- kiSearchExpression ---------------------------------------------------

kiSearchExpression::~kiSearchExpression() {}

void kiSearchExpression::Display() {}

kiCString kiSearchExpression::GetSearchCriteriaList(const kiCString& list) { return list; }

bool kiSearchExpression::Evaluate(kiSearchExpressionEvaluator*) { return true; }

bool kiSearchExpression::IsSameAs(kiSearchExpression* other) {
  return other != nullptr && other->GetType() == GetType();
}

// ---- kiRelExpression ------------------------------------------------------

kiRelExpression::kiRelExpression(const kiCString& property, int propertyID,
                                 const kiCString& operatorText, int operatorID,
                                 const kiCString& value)
    : m_property(property),
      m_propertyID(propertyID),
      m_operator(operatorText),
      m_operatorID(operatorID),
      m_value(value),
      m_integer(0),
      m_double(0),
      m_valueType(kiSearchValue_Unknown) {}

kiRelExpression::~kiRelExpression() {}

void kiRelExpression::Display() {
  // property op "value", one line; the value is printed raw, escapes are not restored.
  PutText(m_property);
  std::fputc(' ', stdout);
  PutText(m_operator);
  std::fputs(" \"", stdout);
  PutText(m_value);
  std::fputs("\"\n", stdout);
}

kiCString kiRelExpression::GetSearchCriteriaList(const kiCString& list) {
  kiCString entry = m_property;
  entry += ',';
  if (list.Contains(entry)) return list;  // a plain substring test (intended)
  return list + entry;
}

bool kiRelExpression::Evaluate(kiSearchExpressionEvaluator* evaluator) {
  return evaluator != nullptr && evaluator->Evaluate(this);
}

bool kiRelExpression::IsSameAs(kiSearchExpression* other) {
  if (other == nullptr || !other->IsRel()) return false;
  kiRelExpression* rel = static_cast<kiRelExpression*>(other);
  return m_operatorID == rel->m_operatorID && m_property == rel->m_property &&
         m_value == rel->m_value;
}

// ---- kiLinearExpression ---------------------------------------------------
// The walks follow the chain (the right side) with a loop, so only lefts and
// groups recurse, and those are bounded by the parser's nesting limit.

kiLinearExpression::kiLinearExpression()
    : m_left(nullptr), m_operatorID(kiSearchOp_None), m_right(nullptr) {}

kiLinearExpression::~kiLinearExpression() {
  delete m_left;
  kiSearchExpression* next = m_right;
  while (next != nullptr && next->IsLinear()) {
    kiLinearExpression* link = static_cast<kiLinearExpression*>(next);
    next = link->m_right;
    link->m_right = nullptr;  // detached first, so its destructor does not recurse
    delete link;
  }
  delete next;
}

void kiLinearExpression::Display() {
  for (kiLinearExpression* link = this;;) {
    if (link->m_left != nullptr) link->m_left->Display();
    if (link->m_operatorID == kiSearchOp_None) return;
    PutText(link->m_operator);
    std::fputc('\n', stdout);
    kiSearchExpression* next = link->m_right;
    if (next == nullptr) return;
    if (!next->IsLinear()) {
      next->Display();
      return;
    }
    link = static_cast<kiLinearExpression*>(next);
  }
}

kiCString kiLinearExpression::GetSearchCriteriaList(const kiCString& list) {
  kiCString result = list;
  for (kiLinearExpression* link = this;;) {
    if (link->m_left != nullptr) result = link->m_left->GetSearchCriteriaList(result);
    kiSearchExpression* next = link->m_right;
    if (next == nullptr) return result;
    if (!next->IsLinear()) return next->GetSearchCriteriaList(result);
    link = static_cast<kiLinearExpression*>(next);
  }
}

bool kiLinearExpression::Evaluate(kiSearchExpressionEvaluator* evaluator) {
  for (kiLinearExpression* link = this;;) {
    if (link->m_left == nullptr) return true;
    const bool result = link->m_left->Evaluate(evaluator);
    if (link->m_operatorID == kiSearchOp_None) return result;
    if (link->m_operatorID == kiSearchOp_Or) {
      if (result) return true;
    } else if (!result) {
      return false;
    }
    kiSearchExpression* next = link->m_right;
    if (next == nullptr) return true;  // a missing right counts as an empty tree
    if (!next->IsLinear()) return next->Evaluate(evaluator);
    link = static_cast<kiLinearExpression*>(next);
  }
}

bool kiLinearExpression::IsSameAs(kiSearchExpression* other) {
  for (kiLinearExpression* link = this;;) {
    if (other == nullptr || !other->IsLinear()) return false;
    kiLinearExpression* that = static_cast<kiLinearExpression*>(other);
    if (link->m_operatorID != that->m_operatorID || !SameNode(link->m_left, that->m_left)) {
      return false;
    }
    kiSearchExpression* next = link->m_right;
    if (next == nullptr || !next->IsLinear()) return SameNode(next, that->m_right);
    link = static_cast<kiLinearExpression*>(next);
    other = that->m_right;
  }
}

// ---- kiCompositeExpression ------------------------------------------------

kiCompositeExpression::kiCompositeExpression()
    : m_type(kiSearchExpression_Composite), m_child(nullptr) {}

kiCompositeExpression::~kiCompositeExpression() { delete m_child; }

void kiCompositeExpression::Display() {
  std::fputs("(\n", stdout);
  if (m_child != nullptr) m_child->Display();
  std::fputs(")\n", stdout);
}

kiCString kiCompositeExpression::GetSearchCriteriaList(const kiCString& list) {
  return m_child != nullptr ? m_child->GetSearchCriteriaList(list) : list;
}

bool kiCompositeExpression::Evaluate(kiSearchExpressionEvaluator* evaluator) {
  return m_child == nullptr || m_child->Evaluate(evaluator);
}

bool kiCompositeExpression::IsSameAs(kiSearchExpression* other) {
  if (other == nullptr || !other->IsComposite()) return false;
  return SameNode(m_child, static_cast<kiCompositeExpression*>(other)->m_child);
}
