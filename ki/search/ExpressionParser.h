// ExpressionParser.h - kiExpressionParser, the parser of content-directory
// search criteria, and kiExpressionOperand, the rows of its operator tables.
#ifndef KI_SEARCH_EXPRESSIONPARSER_H
#define KI_SEARCH_EXPRESSIONPARSER_H

#include "ki/Export.h"
#include "ki/core/CString.h"
#include "ki/proc/kiArray.h"
#include "ki/search/SearchExpression.h"

// What follows an operator.
enum {
  kiOperand_QuotedValue = 1,  // a value in double quotes
  kiOperand_BoolValue = 2,    // true or false, bare
  kiOperand_Nothing = 3       // a logical operator
};

// One operator: its text, its id (kiSearchOp_*) and what follows it. Tables
// end with a row whose text is null; rows are tried in table order and the
// first whose text is a prefix of the input wins (so "<=" stands before "<").
struct kiExpressionOperand {
  const char* text;
  int id;
  int kind;
};

// The default tables: and (11), or (12); = != <= >= > < contains
// doesNotContain derivedfrom exists like (1..10, 13).
extern KI_API const kiExpressionOperand kiExpressionParser_LogicOperands[];
extern KI_API const kiExpressionOperand kiExpressionParser_BinaryOperands[];

// Parses a criterion such as
//   upnp:class derivedfrom "object.item.audioItem" and (dc:title contains "x" or upnp:artist = "y")
// into a tree, applies the precedence of and over or (both grouping from the
// left), and evaluates, compares, lists and prints it. "*" parses to an empty
// tree that matches everything.
//
// The grammar, kept for compatibility with control points: white space is
// required around every operator; a comparison cannot start with white space
// (white space is accepted after '(' and after a logical operator); values
// are double-quoted, with '\' making the next character literal; exists
// takes a bare true or false; nothing but white space may follow.
//
// Nesting (parentheses and chained terms) is bounded: a text deeper than
// kMaxNesting (256: each '(' and each term of a chain counts one) fails like
// any other bad text, so no input can exhaust the stack. Nothing is logged.
// The text is the whole kiCString: a zero byte inside is an ordinary
// character (never white space, so it cannot end the input).
//
// The destructor is not virtual (kept for compatibility: the virtual
// functions keep their order): do not delete a derived parser through a
// pointer to this class.
class KI_API kiExpressionParser {
 public:
  explicit kiExpressionParser(const kiCString& text);
  kiExpressionParser(const kiExpressionParser& other);  // copies the text, state and tree
  kiExpressionParser& operator=(const kiExpressionParser& other);
  ~kiExpressionParser();

  // Tables are not owned and must outlive the parser; null restores the default.
  void SetLogicOperands(const kiExpressionOperand* table);
  void SetBinaryOperands(const kiExpressionOperand* table);

  // Parses the text from its start (so a second call answers the same),
  // replacing an earlier tree, and applies the precedence; answers IsValid().
  virtual bool Parse();
  bool IsValid() const { return m_valid; }

  // false when not valid; true for "*"; else the tree's answer.
  bool Evaluate(kiSearchExpressionEvaluator* evaluator);
  // false when either is not valid or this tree is empty.
  bool IsSameAs(kiExpressionParser* other);
  // The properties the tree mentions, each followed by ',' ("a,b,").
  kiCString GetSearchCriteriaList();
  // A new array (the caller deletes it with kiArray_Delete; the nodes stay
  // the parser's) of the comparisons every match must satisfy: those joined
  // by and along the main chain, composites entered; empty as soon as an or
  // stands on that chain, and when not valid.
  kiArray_t* GetDiscriminantCriteria();
  // The value of the index-th (from 0) discriminant comparison on property
  // (case-sensitive); true when there is one.
  bool GetRelExpressionValue(const char* property, unsigned int index, kiCString& value);
  // Prints the tree to standard output.
  void Display();

  kiSearchExpression* GetRoot() const { return m_root; }  // null for "*" or before Parse

 protected:
  // Hooks for derived parsers. The id is stored in the comparison; -1
  // rejects the property, and the text fails.
  virtual int GetPropertyID(const kiCString& property);
  // false hides that operator row from matching.
  virtual bool OperandSupported(const char* operatorText);

  // The sub-parsers: each works at the cursor and answers true when it
  // consumed its piece, or false with the cursor where it was. A sub-parser
  // that builds a node stores it in *node on success and leaves *node null on
  // failure (the partial node is destroyed).
  bool ParseExpression();  // "*" alone, or a search-exp; then the end of input
  // A '(' where a search-exp starts always opens a group: a failed group is
  // not read again as a comparison (so a property never starts with '(').
  bool ParseSearchExp(kiSearchExpression** node);
  bool ParseRelExp(kiSearchExpression** node);
  // White space, the first supported row of table that prefixes the cursor,
  // white space, then what the row's kind asks for. A null table, or a row
  // of an unknown kind, fails.
  bool ParseOperand(const kiExpressionOperand* table, kiCString& operatorText, int& operatorID,
                    kiCString& value);
  bool ParseWord(kiCString& word);          // up to white space, ')' or the end; not empty
  bool ParseQuotedValue(kiCString& value);  // "...", '\' makes the next character literal
  bool ParseBoolValue(kiCString& value);    // true or false, case-sensitive
  bool ParseKeyword(const char* word);      // a case-sensitive prefix test; null: false
  bool ParseSpaces();                       // one or more of space, \t \n \v \f \r
  bool ParseSpacesChar(char c);             // optional white space, then c
  bool ParseSpacesCharSpaces(char c);       // the same, then optional white space
  bool ParseEOI();                          // only white space remains (consumed)

  // Regroups the whole tree: and first, then or, each until a walk changes
  // nothing. A walk also enters groups standing at the left of a link, so
  // parentheses are regrouped inside wherever they stand.
  void ManagePrecedence();
  // One walk down the chain from node for operatorID: false when it regrouped
  // one link (call again), true when nothing was left to regroup.
  bool ManagePrecedence(kiSearchExpression* node, int operatorID, bool first);
  // Appends to array the comparisons every match of node must satisfy.
  void GetDiscriminantCriteria(kiArray_t* array, kiSearchExpression* node);

  // The text and where its unparsed rest starts: the end after a successful
  // Parse (trailing white space is consumed), 0 after a failed one.
  const kiCString& GetText() const { return m_cursor; }
  unsigned int GetPosition() const { return m_position; }

  // Parentheses and chained terms counted together: a text nested deeper
  // fails to parse.
  static constexpr int kMaxNesting = 256;

 private:
  static kiSearchExpression* Clone(kiSearchExpression* node);  // a deep copy; null: null
  static void MakeComposite(kiLinearExpression* link);

  bool m_valid;
  kiCString m_cursor;  // the text; m_position marks the unparsed rest
  kiSearchExpression* m_root;
  const kiExpressionOperand* m_logicOperands;
  const kiExpressionOperand* m_binaryOperands;
  unsigned int m_position;  // in m_cursor: the rest is never copied or erased
  int m_nesting;            // search-exps open during a parse
};

#endif  // KI_SEARCH_EXPRESSIONPARSER_H
