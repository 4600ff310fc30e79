// StringTokenizer_p.h - the tokenizer written once over the string type; the
// narrow and the wide tokenizer classes forward to it. Not installed.
#ifndef KI_CORE_STRINGTOKENIZER_P_H
#define KI_CORE_STRINGTOKENIZER_P_H

#include <string>

#include "ki/core/StringTokenizer.h"

// Tokenizer is kiCStringTokenizer or kiStringTokenizer: both have the same
// fields and name their string and character types.
template <typename Tokenizer>
struct kiTokenizerCore {
  using S = typename Tokenizer::StringType;
  using C = typename Tokenizer::CharType;
  using Traits = std::char_traits<C>;

  static bool IsSpace(C c) { return c == ' ' || (c >= 9 && c <= 13); }

  static bool IsDelimiter(const Tokenizer& t, C c) {
    return Traits::find(t.m_delims.c_str(), t.m_delims.length(), c) != nullptr;
  }

  static kiCStringTokenizerMode Resolve(const S& delimiters, kiCStringTokenizerMode mode) {
    if (mode < kiTOKEN_INVALID || mode > kiTOKEN_STRTOK) return kiTOKEN_INVALID;
    if (mode != kiTOKEN_DEFAULT) return mode;
    const C* d = delimiters.c_str();
    for (unsigned int i = 0; i < delimiters.length(); ++i) {
      if (!IsSpace(d[i])) return kiTOKEN_RET_EMPTY;
    }
    return kiTOKEN_STRTOK;
  }

  static void SetString(Tokenizer& t, const S& text, const S& delimiters,
                        kiCStringTokenizerMode mode) {
    t.m_mode = Resolve(delimiters, mode);
    t.m_delims = delimiters;
    Reinit(t, text);
  }

  static void Reinit(Tokenizer& t, const S& text) {
    t.m_string = text;
    t.m_pos = 0;
    t.m_hasLast = !t.m_string.IsEmpty();
  }

  static bool HasMoreTokens(const Tokenizer& t) {
    const C* s = t.m_string.c_str();
    for (unsigned int i = 0; i < t.m_string.length(); ++i) {
      if (!IsDelimiter(t, s[i])) return true;
    }
    switch (t.m_mode) {
      case kiTOKEN_RET_EMPTY_ALL:
        return t.m_hasLast;
      case kiTOKEN_RET_EMPTY:
        return t.m_hasLast && t.m_pos == 0;
      default:
        return false;
    }
  }

  static S GetNextToken(Tokenizer& t) {
    while (HasMoreTokens(t)) {
      const C* s = t.m_string.c_str();
      const unsigned int n = t.m_string.length();
      unsigned int p = 0;
      while (p < n && !IsDelimiter(t, s[p])) ++p;
      S token;
      if (p < n) {
        token = t.m_string.Left(t.m_mode == kiTOKEN_RET_DELIMS ? p + 1 : p);
        t.m_string.Erase(0, p + 1);
        t.m_pos += p + 1;
      } else {
        token.Swap(t.m_string);  // the whole rest; the remaining text is left empty
        t.m_pos += n;
        t.m_hasLast = false;
      }
      if (t.m_mode != kiTOKEN_STRTOK || !token.IsEmpty()) return token;
    }
    return S();
  }

  static unsigned int CountTokens(Tokenizer& t) {
    const S rest = t.m_string;
    unsigned int count = 0;
    while (HasMoreTokens(t)) {
      GetNextToken(t);
      ++count;
    }
    Reinit(t, rest);  // intended: the position starts over at 0
    return count;
  }
};

#endif  // KI_CORE_STRINGTOKENIZER_P_H
