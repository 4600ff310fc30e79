// Like.cpp - the glob matcher of the search operator like: one pass over the
// text that goes back only to the last star.
#include "ki/search/Like_p.h"

namespace {

// The element at p (not '*', not the end): whether it matches the byte c, and
// where the next element starts.
struct Element {
  bool matches;
  const char* next;
};

// The end of the set that opens at p ('['): the closing ']', or null when
// there is none.
const char* SetEnd(const char* p) {
  const char* q = p + 1;
  if (*q == '^') ++q;
  if (*q == ']') ++q;  // literal directly after the opening
  for (; *q != 0; ++q) {
    if (*q == '\\') {
      if (q[1] == 0) return nullptr;
      ++q;
    } else if (*q == ']') {
      return q;
    }
  }
  return nullptr;
}

// Whether c is in the set between p ('[') and close (its ']'). Each item is
// a byte (the one after a '\' taken as it is), or a range when a '-' and a
// further byte follow it before the closing ']'. So a '-' directly after the
// opening, or directly before the closing, is literal.
bool InSet(const char* p, const char* close, unsigned char c) {
  const char* q = p + 1;
  const bool negated = *q == '^';
  if (negated) ++q;
  bool found = false;
  while (q < close) {
    if (*q == '\\') ++q;
    const unsigned char low = static_cast<unsigned char>(*q++);
    unsigned char high = low;
    if (*q == '-' && q + 1 < close) {
      ++q;
      if (*q == '\\') ++q;
      high = static_cast<unsigned char>(*q++);
    }
    if (c >= low && c <= high) found = true;
  }
  return found != negated;
}

Element MatchElement(const char* p, unsigned char c) {
  switch (*p) {
    case '?':
      return {true, p + 1};
    case '[': {
      const char* close = SetEnd(p);
      if (close == nullptr) return {c == '[', p + 1};
      return {InSet(p, close, c), close + 1};
    }
    case '\\':
      if (p[1] == 0) return {c == '\\', p + 1};
      return {c == static_cast<unsigned char>(p[1]), p + 2};
    default:
      return {c == static_cast<unsigned char>(*p), p + 1};
  }
}

}  // namespace

bool kiSearch_Like(const char* pattern, const char* text) {
  if (pattern == nullptr || text == nullptr) return false;
  // Intended: the quick test compares the first bytes literally, even when
  // the pattern starts with '[' or '\'.
  if (*pattern != '*' && *pattern != '?' && *pattern != *text) return false;
  if (pattern[0] == '*' && pattern[1] == 0) return true;

  const char* p = pattern;
  const char* t = text;
  const char* starPattern = nullptr;  // the element after the last star
  const char* starText = nullptr;     // where that star's run ends for now
  while (*t != 0) {
    if (*p == '*') {
      while (*p == '*') ++p;
      if (*p == 0) return true;  // a trailing star takes the rest
      starPattern = p;
      starText = t;
      continue;
    }
    if (*p != 0) {
      const Element e = MatchElement(p, static_cast<unsigned char>(*t));
      if (e.matches) {
        p = e.next;
        ++t;
        continue;
      }
    }
    if (starPattern == nullptr) return false;
    // Let the last star take one more byte and try again after it.
    p = starPattern;
    t = ++starText;
  }
  while (*p == '*') ++p;
  return *p == 0;
}
