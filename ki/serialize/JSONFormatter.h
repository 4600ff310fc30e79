// JSONFormatter.h - kiJSONFormatter, the JSON text sink of the serialization
// interface, and its static parser, which replays a JSON text into any sink.
#ifndef KI_SERIALIZE_JSONFORMATTER_H
#define KI_SERIALIZE_JSONFORMATTER_H

#include "ki/Export.h"
#include "ki/core/CString.h"
#include "ki/serialize/Serialize.h"

// Error codes of kiJSONFormatter::Parse (3 is not used).
enum {
  kiJSON_Ok = 0,
  kiJSON_Truncated = 1,        // the text ended before a complete top-level value
  kiJSON_TooDeep = 2,          // a value would need a twenty-first level
  kiJSON_BadValue = 4,         // a value cannot start with this byte
  kiJSON_BadNull = 5,          // bad null literal
  kiJSON_BadBoolean = 6,       // bad true/false literal
  kiJSON_BadNumber = 7,        // number text not convertible
  kiJSON_BadArray = 8,         // after an array item, neither ',' nor ']'
  kiJSON_BadKey = 9,           // where a key must start, neither a quote nor '}'
  kiJSON_MissingColon = 10,    // no ':' after a key
  kiJSON_BadMap = 11,          // after a member, neither ',' nor '}'
  kiJSON_BadEscape = 12,       // bad escape (also an upper-case \u digit)
  kiJSON_BadComment = 13       // '/' followed by neither '*' nor '/'
};

// Accumulates JSON text from events; Result() hands out a copy.
//
// Output, kept for compatibility with the texts peers exchange:
// - every map ends with a comma before its brace: {"a":1,} and {,};
// - arrays stay on one line; ArrayItemSeparator writes "," (", " in human mode);
// - human mode breaks the line before each map and each key, indented once per
//   map level, so a top-level map starts with a line feed;
// - strict mode (the default) writes '/' as "\/"; other bytes below 0x20
//   without a short escape become \u00xx; bytes from 0x7F up pass unchanged;
// - numbers are written as by "%lu" "%ld" "%llu" "%lld" and "%lf" (1.5 is
//   1.500000), in the "C" locale whatever the process locale is.
// Every event answers 0. The call order is not checked.
class KI_API kiJSONFormatter : public kiISerialize {
 public:
  kiJSONFormatter();
  kiJSONFormatter(const kiJSONFormatter& other);
  kiJSONFormatter& operator=(const kiJSONFormatter& other);
  ~kiJSONFormatter() override;

  // Empties the text and the nesting; strict, human and indent are kept.
  void Reset();
  // A copy of the text so far; nothing is cleared.
  kiCString Result() const { return m_text; }
  void SetStrictMode(bool strict) { m_strict = strict; }
  // indent: the text written once per level after a line break; null gives
  // four spaces.
  void SetHumanMode(bool on, const char* indent);

  int MapBegin() override;
  int MapKey(const char* key, bool raw) override;
  int MapEnd() override;
  int ArrayBegin() override;
  int ArrayItemSeparator() override;
  int ArrayEnd() override;
  // The wide text is converted to UTF-8 and given to the narrow String (through
  // the virtual table); its answer is returned. Null texts write "".
  int String(const kiWChar* text, bool raw) override;
  int String(const char* text, bool raw) override;
  int Boolean(bool value) override;
  int U32(unsigned int value) override;
  int S32(int value) override;
  int U64(unsigned long long value) override;
  int S64(long long value) override;
  int Float(double value) override;
  int Null() override;

  // Reads text and replays it into sink; answers 0 or an error code above.
  // The reader is tolerant in the ways the writer needs: a comma before ']'
  // or '}', /* */ and // comments, single-quoted strings, literals in any
  // case. Keys reach the sink as MapKey(key, true); integers as S32 (the
  // "%d" conversion, so out-of-range texts wrap as it does), other numbers as
  // Float; ArrayItemSeparator is never called. After a complete top-level
  // value the first byte that is not white space or a comment ends the parse
  // with 0. The sink's answers are ignored. At most 20 levels of nesting. A
  // null text is error 1. Events sent before an error stay sent.
  static int Parse(const char* text, kiISerialize& sink);
  // The same; the two integers are accepted for compatibility and never
  // written.
  static int Parse(const char* text, kiISerialize& sink, int& unused1, int& unused2);

 protected:
  // In human mode: a line feed and the indent once per map level.
  void NewLine();
  // Appends the escaped form of in to out; true when a byte was escaped.
  bool Escape(const char* in, kiCString& out);

 private:
  void ClearScratch();
  // Ends the scratch string's write loan at end and appends it to the text.
  void AppendScratch(char* end);

  kiCString m_text;
  kiCString m_scratch;
  bool m_cleared;  // set by Reset; nothing reads it
  bool m_strict;
  bool m_human;
  int m_depth;
  kiCString m_indent;
  bool m_firstKey;
};

#endif  // KI_SERIALIZE_JSONFORMATTER_H
