// StringTokenizer.h - kiCStringTokenizer and kiStringTokenizer, which hand out
// the tokens of a narrow or a wide string one at a time under one of five modes.
#ifndef KI_CORE_STRINGTOKENIZER_H
#define KI_CORE_STRINGTOKENIZER_H

#include "ki/Export.h"
#include "ki/core/CString.h"
#include "ki/core/String.h"

// How empty tokens and delimiters are handed out. The values are fixed.
enum kiCStringTokenizerMode : int {
  kiTOKEN_INVALID = -1,  // not set up: IsOk is false
  // Resolved by SetString: kiTOKEN_RET_EMPTY when a delimiter is not white
  // space (9-13, 32), else kiTOKEN_STRTOK (an empty set too).
  kiTOKEN_DEFAULT = 0,
  // Empty tokens between adjacent delimiters are returned; a trailing empty
  // token only while nothing was consumed yet ("," gives one, "a," none).
  kiTOKEN_RET_EMPTY = 1,
  kiTOKEN_RET_EMPTY_ALL = 2,  // every empty token, the one after a final delimiter too
  // kiTOKEN_RET_EMPTY with each token keeping its delimiter, except that a
  // text of delimiters only gives no token at all.
  kiTOKEN_RET_DELIMS = 3,
  kiTOKEN_STRTOK = 4,  // empty tokens are skipped, as strtok does
};
// The wide tokenizer's modes: the same values under the same names.
typedef kiCStringTokenizerMode kiStringTokenizerMode;

template <typename Tokenizer>
struct kiTokenizerCore;  // the one implementation of both tokenizers

// Tokens of a byte string. Each byte of the delimiter set is a delimiter
// (zero bytes too). Tokens are cut from the front of the remaining text, so
// each one costs a move of the rest: for long texts with many items prefer
// kiStringList. Null texts count as empty. Nothing here logs or fails.
class KI_API kiCStringTokenizer {
 public:
  // Empty text and delimiters, mode kiTOKEN_INVALID: IsOk is false until
  // SetString. Reinit alone splits on nothing.
  kiCStringTokenizer();
  // SetString(text, delimiters, mode); the default delimiters are space, tab,
  // CR and LF.
  explicit kiCStringTokenizer(const kiCString& text, const kiCString& delimiters = " \t\r\n",
                              kiCStringTokenizerMode mode = kiTOKEN_DEFAULT);
  kiCStringTokenizer(const kiCStringTokenizer& other) = default;
  kiCStringTokenizer& operator=(const kiCStringTokenizer& other) = default;

  // Resolves kiTOKEN_DEFAULT (see the mode), keeps delimiters and mode, then
  // Reinit(text). A value outside -1..4 is kept as kiTOKEN_INVALID, under
  // which tokens still come as under kiTOKEN_RET_EMPTY, but never a lone
  // empty one.
  void SetString(const kiCString& text, const kiCString& delimiters = " \t\r\n",
                 kiCStringTokenizerMode mode = kiTOKEN_DEFAULT);
  // Starts over on text with the same delimiters and mode: position 0, and a
  // last (possibly empty) token is due when text is not empty.
  void Reinit(const kiCString& text);

  // True when the remaining text holds a byte that is not a delimiter; else
  // whether the last token is due: for kiTOKEN_RET_EMPTY_ALL always, for
  // kiTOKEN_RET_EMPTY only at position 0, never in the other modes.
  bool HasMoreTokens() const;
  // The next token, or the empty string when none is left (an empty token
  // looks the same: ask HasMoreTokens first).
  kiCString GetNextToken();
  // The tokens left. Intended: afterwards the tokenizer restarts on the
  // remaining text (Reinit), so the position is 0 again and kiTOKEN_RET_EMPTY
  // may hand out a lone empty token that was no longer due before.
  unsigned int CountTokens();

  kiCString GetString() const { return m_string; }  // the remaining text
  // Bytes consumed since Reinit, delimiters included.
  unsigned int GetPosition() const { return m_pos; }
  kiCStringTokenizerMode GetMode() const { return m_mode; }  // never kiTOKEN_DEFAULT
  bool IsOk() const { return m_mode != kiTOKEN_INVALID; }

 private:
  template <typename Tokenizer>
  friend struct kiTokenizerCore;
  typedef kiCString StringType;
  typedef char CharType;

  kiCString m_string;  // the remaining text; tokens are cut from its front
  kiCString m_delims;
  unsigned int m_pos = 0;
  kiCStringTokenizerMode m_mode = kiTOKEN_INVALID;
  bool m_hasLast = false;  // a last, possibly empty, token is still due
};

// kiCStringTokenizer over UTF-16 text: every rule above with 16-bit
// characters for bytes (a surrogate pair is two characters).
class KI_API kiStringTokenizer {
 public:
  kiStringTokenizer();
  // The default delimiters are space, tab, CR and LF.
  explicit kiStringTokenizer(const kiString& text, const kiString& delimiters = u" \t\r\n",
                             kiStringTokenizerMode mode = kiTOKEN_DEFAULT);
  kiStringTokenizer(const kiStringTokenizer& other) = default;
  kiStringTokenizer& operator=(const kiStringTokenizer& other) = default;

  void SetString(const kiString& text, const kiString& delimiters = u" \t\r\n",
                 kiStringTokenizerMode mode = kiTOKEN_DEFAULT);
  void Reinit(const kiString& text);

  bool HasMoreTokens() const;
  kiString GetNextToken();
  // Intended: restarts on the remaining text, as kiCStringTokenizer does.
  unsigned int CountTokens();

  kiString GetString() const { return m_string; }
  unsigned int GetPosition() const { return m_pos; }
  kiStringTokenizerMode GetMode() const { return m_mode; }
  bool IsOk() const { return m_mode != kiTOKEN_INVALID; }

 private:
  template <typename Tokenizer>
  friend struct kiTokenizerCore;
  typedef kiString StringType;
  typedef kiWChar CharType;

  kiString m_string;
  kiString m_delims;
  unsigned int m_pos = 0;
  kiStringTokenizerMode m_mode = kiTOKEN_INVALID;
  bool m_hasLast = false;
};

#endif  // KI_CORE_STRINGTOKENIZER_H
