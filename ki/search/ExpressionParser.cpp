// ExpressionParser.cpp - kiExpressionParser: the recursive-descent parser of
// search criteria over a cursor position, the regrouping that gives and
// precedence over or, and the walks over the finished tree.
#include "ki/search/ExpressionParser.h"

#include <cstdio>
#include <cstring>

const kiExpressionOperand kiExpressionParser_LogicOperands[] = {
    {"and", kiSearchOp_And, kiOperand_Nothing},
    {"or", kiSearchOp_Or, kiOperand_Nothing},
    {nullptr, 0, 0}};

// Row order is the matching order: "<=" before "<" and ">=" before ">".
const kiExpressionOperand kiExpressionParser_BinaryOperands[] = {
    {"=", kiSearchOp_Equal, kiOperand_QuotedValue},
    {"!=", kiSearchOp_NotEqual, kiOperand_QuotedValue},
    {"<=", kiSearchOp_LessOrEqual, kiOperand_QuotedValue},
    {">=", kiSearchOp_GreaterOrEqual, kiOperand_QuotedValue},
    {">", kiSearchOp_Greater, kiOperand_QuotedValue},
    {"<", kiSearchOp_Less, kiOperand_QuotedValue},
    {"contains", kiSearchOp_Contains, kiOperand_QuotedValue},
    {"doesNotContain", kiSearchOp_DoesNotContain, kiOperand_QuotedValue},
    {"derivedfrom", kiSearchOp_DerivedFrom, kiOperand_QuotedValue},
    {"exists", kiSearchOp_Exists, kiOperand_BoolValue},
    {"like", kiSearchOp_Like, kiOperand_QuotedValue},
    {nullptr, 0, 0}};

namespace {

bool IsSpace(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

// Counts one open search-exp for as long as it lives.
class NestingScope {
 public:
  explicit NestingScope(int& nesting) : m_nesting(++nesting) {}
  ~NestingScope() { --m_nesting; }
  NestingScope(const NestingScope&) = delete;
  NestingScope& operator=(const NestingScope&) = delete;

 private:
  int& m_nesting;
};

}  // namespace

// ---- Construction ---------------------------------------------------------

kiExpressionParser::kiExpressionParser(const kiCString& text)
    : m_valid(false),
      m_cursor(text),
      m_root(nullptr),
      m_logicOperands(kiExpressionParser_LogicOperands),
      m_binaryOperands(kiExpressionParser_BinaryOperands),
      m_position(0),
      m_nesting(0) {}

kiExpressionParser::kiExpressionParser(const kiExpressionParser& other)
    : m_valid(other.m_valid),
      m_cursor(other.m_cursor),
      m_root(Clone(other.m_root)),
      m_logicOperands(other.m_logicOperands),
      m_binaryOperands(other.m_binaryOperands),
      m_position(other.m_position),
      m_nesting(0) {}

kiExpressionParser& kiExpressionParser::operator=(const kiExpressionParser& other) {
  if (this == &other) return *this;
  kiSearchExpression* root = Clone(other.m_root);
  delete m_root;
  m_root = root;
  m_valid = other.m_valid;
  m_cursor = other.m_cursor;
  m_logicOperands = other.m_logicOperands;
  m_binaryOperands = other.m_binaryOperands;
  m_position = other.m_position;
  return *this;
}

kiExpressionParser::~kiExpressionParser() { delete m_root; }

void kiExpressionParser::SetLogicOperands(const kiExpressionOperand* table) {
  m_logicOperands = table != nullptr ? table : kiExpressionParser_LogicOperands;
}

void kiExpressionParser::SetBinaryOperands(const kiExpressionOperand* table) {
  m_binaryOperands = table != nullptr ? table : kiExpressionParser_BinaryOperands;
}

int kiExpressionParser::GetPropertyID(const kiCString&) { return 0; }

bool kiExpressionParser::OperandSupported(const char*) { return true; }

kiSearchExpression* kiExpressionParser::Clone(kiSearchExpression* node) {
  if (node == nullptr) return nullptr;
  switch (node->GetType()) {
    case kiSearchExpression_Rel: {
      kiRelExpression* rel = static_cast<kiRelExpression*>(node);
      return new kiRelExpression(rel->GetProperty(), rel->GetPropertyID(), rel->GetOperator(),
                                 rel->GetOperatorID(), rel->GetValue());
    }
    case kiSearchExpression_Linear: {
      // Along the chain by a loop, into lefts by recursion (bounded by the nesting).
      kiLinearExpression* copy = new kiLinearExpression();
      kiLinearExpression* target = copy;
      kiLinearExpression* source = static_cast<kiLinearExpression*>(node);
      for (;;) {
        target->m_left = Clone(source->m_left);
        target->m_operator = source->m_operator;
        target->m_operatorID = source->m_operatorID;
        kiSearchExpression* next = source->m_right;
        if (next == nullptr || next->GetType() != kiSearchExpression_Linear) {
          target->m_right = Clone(next);
          return copy;
        }
        kiLinearExpression* link = new kiLinearExpression();
        target->m_right = link;
        target = link;
        source = static_cast<kiLinearExpression*>(next);
      }
    }
    case kiSearchExpression_Composite: {
      kiCompositeExpression* copy = new kiCompositeExpression();
      copy->m_child = Clone(static_cast<kiCompositeExpression*>(node)->m_child);
      return copy;
    }
    default:
      return new kiSearchExpression();
  }
}

// ---- Parsing ---------------------------------------------------------------

bool kiExpressionParser::Parse() {
  delete m_root;
  m_root = nullptr;
  m_position = 0;
  m_nesting = 0;
  m_valid = ParseExpression();
  if (m_valid) ManagePrecedence();
  return m_valid;
}

bool kiExpressionParser::ParseExpression() {
  const unsigned int start = m_position;
  // "*" alone matches everything and leaves the tree empty.
  ParseSpaces();
  if (ParseKeyword("*")) {
    ParseSpaces();
    if (ParseEOI()) return true;
  }
  m_position = start;

  kiSearchExpression* node = nullptr;
  if (ParseSearchExp(&node) && ParseEOI()) {
    m_root = node;
    return true;
  }
  delete node;
  m_position = start;
  return false;
}

bool kiExpressionParser::ParseSearchExp(kiSearchExpression** node) {
  if (node == nullptr) return false;
  *node = nullptr;
  const unsigned int start = m_position;
  NestingScope scope(m_nesting);
  if (m_nesting > kMaxNesting) return false;

  kiCString operatorText;
  int operatorID = 0;
  kiCString value;
  kiLinearExpression* link = nullptr;
  // A '(' here always opens a group: there is no second try as a comparison
  // (a property cannot start with '('), which keeps the parse linear.
  if (ParseSpacesCharSpaces('(')) {
    kiCompositeExpression* composite = new kiCompositeExpression();
    if (!ParseSearchExp(&composite->m_child) || !ParseSpacesChar(')')) {
      delete composite;
      m_position = start;
      return false;
    }
    if (!ParseOperand(m_logicOperands, operatorText, operatorID, value)) {
      *node = composite;
      return true;
    }
    link = new kiLinearExpression();
    link->m_left = composite;
  } else {
    link = new kiLinearExpression();
    if (!ParseRelExp(&link->m_left)) {
      delete link;
      m_position = start;
      return false;
    }
    if (!ParseOperand(m_logicOperands, operatorText, operatorID, value)) {
      *node = link;  // the end of the chain: operator id 0, no right
      return true;
    }
  }
  link->m_operator = operatorText;
  link->m_operatorID = operatorID;
  if (!ParseSearchExp(&link->m_right)) {
    delete link;
    m_position = start;
    return false;
  }
  *node = link;
  return true;
}

bool kiExpressionParser::ParseRelExp(kiSearchExpression** node) {
  if (node == nullptr) return false;
  *node = nullptr;
  const unsigned int start = m_position;
  kiCString property;
  if (!ParseWord(property)) return false;
  const int propertyID = GetPropertyID(property);
  kiCString operatorText;
  int operatorID = 0;
  kiCString value;
  if (propertyID == -1 || !ParseOperand(m_binaryOperands, operatorText, operatorID, value)) {
    m_position = start;
    return false;
  }
  *node = new kiRelExpression(property, propertyID, operatorText, operatorID, value);
  return true;
}

bool kiExpressionParser::ParseOperand(const kiExpressionOperand* table, kiCString& operatorText,
                                      int& operatorID, kiCString& value) {
  if (table == nullptr) return false;
  const unsigned int start = m_position;
  if (!ParseSpaces()) return false;
  const kiExpressionOperand* row = table;
  for (; row->text != nullptr; ++row) {
    // Only the first prefix counts: no later row is tried after it.
    if (OperandSupported(row->text) && ParseKeyword(row->text)) break;
  }
  bool ok = row->text != nullptr && ParseSpaces();
  kiCString parsed;
  if (ok) {
    switch (row->kind) {
      case kiOperand_QuotedValue:
        ok = ParseQuotedValue(parsed);
        break;
      case kiOperand_BoolValue:
        ok = ParseBoolValue(parsed);
        break;
      case kiOperand_Nothing:
        break;
      default:
        ok = false;  // a row of an unknown kind cannot be completed
        break;
    }
  }
  if (!ok) {
    m_position = start;
    return false;
  }
  operatorText = row->text;
  operatorID = row->id;
  value = parsed;
  return true;
}

bool kiExpressionParser::ParseWord(kiCString& word) {
  const char* text = m_cursor.c_str();
  const unsigned int length = m_cursor.length();
  unsigned int end = m_position;
  while (end < length && !IsSpace(text[end]) && text[end] != ')') ++end;
  if (end == m_position) return false;
  word = kiCString(text, m_position, end - m_position);
  m_position = end;
  return true;
}

bool kiExpressionParser::ParseQuotedValue(kiCString& value) {
  const char* text = m_cursor.c_str();
  const unsigned int length = m_cursor.length();
  unsigned int at = m_position;
  if (at >= length || text[at] != '"') return false;
  ++at;
  kiCString parsed;
  unsigned int runStart = at;  // copied in runs between escapes
  while (at < length && text[at] != '"') {
    if (text[at] == '\\') {
      parsed.Append(text + runStart, at - runStart);
      if (++at >= length) return false;  // a backslash cannot end the text
      runStart = at;                     // the escaped character starts the next run
    }
    ++at;
  }
  if (at >= length) return false;
  parsed.Append(text + runStart, at - runStart);
  value = parsed;
  m_position = at + 1;
  return true;
}

bool kiExpressionParser::ParseBoolValue(kiCString& value) {
  if (ParseKeyword("true")) {
    value = "true";
    return true;
  }
  if (ParseKeyword("false")) {
    value = "false";
    return true;
  }
  return false;
}

bool kiExpressionParser::ParseKeyword(const char* word) {
  if (word == nullptr) return false;
  const size_t n = std::strlen(word);
  const unsigned int left = m_cursor.length() - m_position;
  if (n > left || std::memcmp(m_cursor.c_str() + m_position, word, n) != 0) return false;
  m_position += static_cast<unsigned int>(n);
  return true;
}

bool kiExpressionParser::ParseSpaces() {
  const char* text = m_cursor.c_str();
  const unsigned int length = m_cursor.length();
  const unsigned int start = m_position;
  while (m_position < length && IsSpace(text[m_position])) ++m_position;
  return m_position != start;
}

bool kiExpressionParser::ParseSpacesChar(char c) {
  const unsigned int start = m_position;
  ParseSpaces();
  if (m_position < m_cursor.length() && m_cursor.c_str()[m_position] == c) {
    ++m_position;
    return true;
  }
  m_position = start;
  return false;
}

bool kiExpressionParser::ParseSpacesCharSpaces(char c) {
  if (!ParseSpacesChar(c)) return false;
  ParseSpaces();
  return true;
}

bool kiExpressionParser::ParseEOI() {
  const unsigned int start = m_position;
  ParseSpaces();
  if (m_position == m_cursor.length()) return true;
  m_position = start;
  return false;
}

// ---- Precedence -----------------------------------------------------------

void kiExpressionParser::ManagePrecedence() {
  // Each false answer is one regrouping, and each regrouping shortens a chain
  // by one link, so both loops end.
  while (!ManagePrecedence(m_root, kiSearchOp_And, true)) {
  }
  while (!ManagePrecedence(m_root, kiSearchOp_Or, true)) {
  }
}

bool kiExpressionParser::ManagePrecedence(kiSearchExpression* node, int operatorID, bool first) {
  while (node != nullptr) {
    if (node->IsComposite()) {
      node = static_cast<kiCompositeExpression*>(node)->m_child;
      first = true;
      continue;
    }
    if (!node->IsLinear()) return true;
    kiLinearExpression* link = static_cast<kiLinearExpression*>(node);
    kiSearchExpression* right = link->m_right;
    if (link->m_operatorID == operatorID && right != nullptr && right->IsLinear() &&
        (!first || static_cast<kiLinearExpression*>(right)->m_operatorID != kiSearchOp_None)) {
      MakeComposite(link);
      return false;
    }
    // A group the user wrote on the left is regrouped inside as well.
    if (link->m_left != nullptr && link->m_left->IsComposite() &&
        !ManagePrecedence(link->m_left, operatorID, true)) {
      return false;
    }
    node = right;
    first = false;
  }
  return true;
}

// (L op1 (RL op2 RR)) becomes ((L op1 RL) op2 RR): the first two terms go into
// a new group, the right link is cut down to RL, and link takes its operator.
void kiExpressionParser::MakeComposite(kiLinearExpression* link) {
  kiLinearExpression* right = static_cast<kiLinearExpression*>(link->m_right);
  kiLinearExpression* inner = new kiLinearExpression();
  inner->m_left = link->m_left;
  inner->m_operator = link->m_operator;
  inner->m_operatorID = link->m_operatorID;
  inner->m_right = right;
  kiCompositeExpression* group = new kiCompositeExpression();
  group->m_child = inner;

  link->m_left = group;
  link->m_operator = right->m_operator;
  link->m_operatorID = right->m_operatorID;
  link->m_right = right->m_right;

  right->m_operator = kiCString();
  right->m_operatorID = kiSearchOp_None;
  right->m_right = nullptr;
}

// ---- The finished tree ----------------------------------------------------

bool kiExpressionParser::Evaluate(kiSearchExpressionEvaluator* evaluator) {
  if (!m_valid) return false;
  if (m_root == nullptr) return true;  // "*"
  return m_root->Evaluate(evaluator);
}

bool kiExpressionParser::IsSameAs(kiExpressionParser* other) {
  if (other == nullptr || !m_valid || !other->m_valid || m_root == nullptr) return false;
  return m_root->IsSameAs(other->m_root);
}

kiCString kiExpressionParser::GetSearchCriteriaList() {
  if (m_root == nullptr) return kiCString();
  return m_root->GetSearchCriteriaList(kiCString());
}

kiArray_t* kiExpressionParser::GetDiscriminantCriteria() {
  kiArray_t* array = kiArray_New(0);
  if (m_valid) GetDiscriminantCriteria(array, m_root);
  return array;
}

void kiExpressionParser::GetDiscriminantCriteria(kiArray_t* array, kiSearchExpression* node) {
  if (array == nullptr) return;
  while (node != nullptr) {
    if (node->IsComposite()) {
      node = static_cast<kiCompositeExpression*>(node)->m_child;
      continue;
    }
    if (node->IsRel()) {  // not built by the parser, but a lone comparison is required
      kiArray_Add(array, node);
      return;
    }
    if (!node->IsLinear()) return;
    kiLinearExpression* link = static_cast<kiLinearExpression*>(node);
    // An or on the chain: no single comparison is required any more.
    if (link->m_operatorID != kiSearchOp_And && link->m_operatorID != kiSearchOp_None) return;
    kiSearchExpression* left = link->m_left;
    if (left != nullptr && left->IsRel()) {
      kiArray_Add(array, left);
    } else {
      GetDiscriminantCriteria(array, left);
    }
    node = link->m_right;
  }
}

bool kiExpressionParser::GetRelExpressionValue(const char* property, unsigned int index,
                                               kiCString& value) {
  if (property == nullptr) return false;
  kiArray_t* criteria = GetDiscriminantCriteria();
  bool found = false;
  const unsigned int count = kiArray_GetCount(criteria);
  for (unsigned int i = 0; i < count; ++i) {
    kiRelExpression* rel = static_cast<kiRelExpression*>(kiArray_Get(criteria, i));
    if (rel->GetProperty() != property) continue;
    if (index == 0) {
      value = rel->GetValue();
      found = true;
      break;
    }
    --index;
  }
  kiArray_Delete(criteria);
  return found;
}

void kiExpressionParser::Display() {
  if (!m_valid) return;
  if (m_root == nullptr) {
    std::fputs("*\n", stdout);
    return;
  }
  m_root->Display();
}
