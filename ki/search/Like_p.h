// Like_p.h - the glob matcher behind the search operator like. Not installed;
// exported so that tests and fuzz targets reach it.
#ifndef KI_SEARCH_LIKE_P_H
#define KI_SEARCH_LIKE_P_H

#include "ki/Export.h"

// Whether text matches pattern, byte by byte and case-sensitively:
//   *       any run of bytes, the empty run included (consecutive stars are one)
//   ?       any one byte
//   [set]   one byte of the set, [^set] one byte not in it; a-z is a range of
//           byte values (a reversed range holds nothing); ']' or '-' directly
//           after '[' or "[^" is literal, '-' before the closing ']' too; '\'
//           inside a set makes the next byte literal; a '[' with no closing ']'
//           is an ordinary byte
//   \x      the byte x; a '\' at the end of the pattern is an ordinary byte
//   other   that exact byte (case counts: intended)
// The whole text must be consumed. Before the glob a quick test runs: unless
// the pattern starts with '*', its first byte must be the text's first byte
// or '?' (intended: so a pattern starting with '[' or '\' matches only a text
// starting with that same byte). Both texts end at their first zero byte;
// a null pattern or text matches nothing. O(pattern x text) at worst; nothing
// is allocated.
KI_API bool kiSearch_Like(const char* pattern, const char* text);

#endif  // KI_SEARCH_LIKE_P_H
