// SearchExpression.h - the tree of a parsed search criterion
// (kiSearchExpression and its three node classes) and kiSearchExpressionEvaluator,
// the application's side of an evaluation.
#ifndef KI_SEARCH_SEARCHEXPRESSION_H
#define KI_SEARCH_SEARCHEXPRESSION_H

#include "ki/Export.h"
#include "ki/core/CString.h"
#include "ki/os/DateTime.h"

class kiRelExpression;

// Operator ids stored in the tree; evaluation switches on them.
enum {
  kiSearchOp_None = 0,  // end of a chain
  kiSearchOp_Equal = 1,
  kiSearchOp_NotEqual = 2,
  kiSearchOp_LessOrEqual = 3,
  kiSearchOp_GreaterOrEqual = 4,
  kiSearchOp_Greater = 5,
  kiSearchOp_Less = 6,
  kiSearchOp_Contains = 7,
  kiSearchOp_DoesNotContain = 8,
  kiSearchOp_DerivedFrom = 9,
  kiSearchOp_Exists = 10,
  kiSearchOp_And = 11,
  kiSearchOp_Or = 12,
  kiSearchOp_Like = 13
};

// The value type a comparison's value is classified as (once, then cached).
enum {
  kiSearchValue_Unknown = 0,
  kiSearchValue_Integer = 1,
  kiSearchValue_String = 2,
  kiSearchValue_Date = 3,
  kiSearchValue_Float = 4
};

// What GetType answers.
enum {
  kiSearchExpression_Base = 0,
  kiSearchExpression_Linear = 1,
  kiSearchExpression_Composite = 2,
  kiSearchExpression_Rel = 3
};

// The application's side: called once per comparison the tree reaches, with
// the comparison node; it looks the node's property up in the candidate and
// answers with one of the node's Match primitives (true: the candidate
// satisfies the comparison). Not deleted through this class.
class KI_API kiSearchExpressionEvaluator {
 public:
  virtual bool Evaluate(kiRelExpression* expression) = 0;

 protected:
  kiSearchExpressionEvaluator() {}
  kiSearchExpressionEvaluator(const kiSearchExpressionEvaluator&) {}
  kiSearchExpressionEvaluator& operator=(const kiSearchExpressionEvaluator&) { return *this; }
  ~kiSearchExpressionEvaluator() {}
};

// A node. A node owns its children. The virtual functions keep this order.
class KI_API kiSearchExpression {
 public:
  kiSearchExpression() {}
  kiSearchExpression(const kiSearchExpression&) = delete;
  kiSearchExpression& operator=(const kiSearchExpression&) = delete;
  virtual ~kiSearchExpression();

  // Writes each comparison to standard output as: property op "value".
  virtual void Display();
  // list with the property names this node mentions appended, each followed
  // by ','; a name is added only when "name," is not already a substring of
  // the list (intended: "xtitle," hides "title").
  virtual kiCString GetSearchCriteriaList(const kiCString& list);
  // Whether the candidate behind evaluator satisfies this node; true for the
  // base class.
  virtual bool Evaluate(kiSearchExpressionEvaluator* evaluator);
  virtual bool IsComposite() { return false; }
  virtual bool IsRel() { return false; }
  virtual bool IsLinear() { return false; }
  // Same shape, operators and comparisons (property, operator id, value);
  // null is never the same.
  virtual bool IsSameAs(kiSearchExpression* other);
  virtual int GetType() { return kiSearchExpression_Base; }
};

// One comparison: property operator value.
class KI_API kiRelExpression : public kiSearchExpression {
 public:
  kiRelExpression(const kiCString& property, int propertyID, const kiCString& operatorText,
                  int operatorID, const kiCString& value);
  ~kiRelExpression() override;

  void Display() override;
  kiCString GetSearchCriteriaList(const kiCString& list) override;
  bool Evaluate(kiSearchExpressionEvaluator* evaluator) override;  // the evaluator's answer
  bool IsRel() override { return true; }
  bool IsSameAs(kiSearchExpression* other) override;
  int GetType() override { return kiSearchExpression_Rel; }

  const kiCString& GetProperty() const { return m_property; }
  int GetPropertyID() const { return m_propertyID; }
  const kiCString& GetOperator() const { return m_operator; }
  int GetOperatorID() const { return m_operatorID; }
  const kiCString& GetValue() const { return m_value; }
  // The classification of the value (kiSearchValue_*), made on first use.
  int GetValueType();

  // The matching primitives. Each first checks the value's type: a numeric or
  // date match applies only to a criterion whose value has that type, a
  // string match to every criterion. exists answers from the presence of the
  // candidate's text (non-null and non-empty) against the value "true".
  // Nothing here allocates once the value is classified.
  //
  // The candidate's text; null means absent. = and != ignore ASCII case,
  // ordering operators are always false, contains/doesNotContain ignore
  // case, derivedfrom is a case-sensitive prefix test, like a glob match
  // (* ? [set] [^set] \x) in which case counts (intended).
  bool MatchString(const char* text);
  // The candidate read as a decimal integer, a floating-point number or a
  // date; false when it does not read. Then = != <= >= > < against the value.
  bool MatchInt(const kiCString& text);
  bool MatchDouble(const kiCString& text);
  bool MatchDate(const kiCString& text);
  // exists tests the date's validity.
  bool MatchDate(const kiDateTime& date);

 protected:
  bool ValidateValue(int type, const char* text);
  // Reads an ISO 8601 style text with the date-text reader into out (the
  // zone is read, not applied); true when it reads and out is valid.
  static bool ConvertToDateTime(const char* text, kiDateTime& out);

 private:
  void Classify();

  kiCString m_property;
  int m_propertyID;
  kiCString m_operator;
  int m_operatorID;
  kiCString m_value;
  kiDateTime m_date;  // the cached value, by type
  int m_integer;
  double m_double;
  int m_valueType;  // kiSearchValue_*, 0 until classified
};

// A chain link: left operator right. right is a further link, or a composite
// when the rest began with a parenthesis; null with operator id 0 at the end.
class KI_API kiLinearExpression : public kiSearchExpression {
 public:
  kiLinearExpression();
  ~kiLinearExpression() override;

  void Display() override;
  kiCString GetSearchCriteriaList(const kiCString& list) override;
  // left, then: id 0 gives left's answer; or gives true without evaluating
  // right when left holds; any other operator (and) false without right when
  // left fails. A null left is true.
  bool Evaluate(kiSearchExpressionEvaluator* evaluator) override;
  bool IsLinear() override { return true; }
  bool IsSameAs(kiSearchExpression* other) override;
  int GetType() override { return kiSearchExpression_Linear; }

  kiSearchExpression* GetLeft() const { return m_left; }
  const kiCString& GetOperator() const { return m_operator; }
  int GetOperatorID() const { return m_operatorID; }
  kiSearchExpression* GetRight() const { return m_right; }

 private:
  friend class kiExpressionParser;  // builds and regroups the chain
  kiSearchExpression* m_left;  // owned
  kiCString m_operator;
  int m_operatorID;
  kiSearchExpression* m_right;  // owned
};

// A parenthesised sub-expression.
class KI_API kiCompositeExpression : public kiSearchExpression {
 public:
  kiCompositeExpression();
  ~kiCompositeExpression() override;

  void Display() override;
  kiCString GetSearchCriteriaList(const kiCString& list) override;
  bool Evaluate(kiSearchExpressionEvaluator* evaluator) override;  // the child's; null: true
  bool IsComposite() override { return true; }
  bool IsSameAs(kiSearchExpression* other) override;
  int GetType() override { return m_type; }

  kiSearchExpression* GetChild() const { return m_child; }

 private:
  friend class kiExpressionParser;
  int m_type;                   // kiSearchExpression_Composite
  kiSearchExpression* m_child;  // owned
};

#endif  // KI_SEARCH_SEARCHEXPRESSION_H
