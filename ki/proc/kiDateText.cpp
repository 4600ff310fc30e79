// kiDateText.cpp - the date-text reader: a walk over the pieces of the text,
// one state per field, with the library's locale-free number reader.
#include "ki/proc/kiDateText.h"

#include <climits>
#include <cstddef>

#include "ki/proc/kiStr.h"

namespace {

// Where the walk stands: the field the next piece fills, or the end.
constexpr int kEndState = kiDateText_FieldCount;

constexpr int kMaxSeparators = 8;  // nine or more fail

bool IsSeparator(char c) {
  return c == '-' || c == ':' || c == '.' || c == 'T' || c == 'Z' || c == '+';
}

struct Range {
  int low;
  int high;
};

constexpr Range kRanges[kiDateText_FieldCount] = {{0, 9999}, {1, 12},  {1, 31}, {0, 23}, {0, 59},
                                                  {0, 59},   {0, 999}, {0, 23}, {0, 59}};

// Reads the piece [begin, begin + length) as a whole decimal number, in place:
// the reader stops at the separator (never a decimal digit), so the piece is
// one number exactly when the bytes consumed are the piece. A piece ended by
// the end of the text answers 0 instead of its length.
bool ReadPiece(const char* begin, std::size_t length, bool atEnd, int* value) {
  const int code = kiStr_ParseInt32Base(begin, 10, value);
  if (atEnd) return code == 0;
  const std::size_t clamped = length > INT_MAX ? INT_MAX : length;
  return code > 0 && static_cast<std::size_t>(code) == clamped;
}

int Fail(int fields[kiDateText_FieldCount]) {
  for (int i = 0; i < kiDateText_FieldCount; ++i) fields[i] = 0;
  return kiStr_NoNumber;
}

}  // namespace

int kiDateText_Parse(const char* text, int fields[kiDateText_FieldCount]) {
  if (fields == nullptr) return kiStr_NoNumber;
  for (int i = 0; i < kiDateText_FieldCount; ++i) fields[i] = 0;
  if (text == nullptr) return kiStr_NoNumber;

  // The pieces are one more than the separators: fewer than two pieces means
  // no separator at all.
  int separators = 0;
  for (const char* p = text; *p != 0; ++p) {
    if (IsSeparator(*p) && ++separators > kMaxSeparators) return Fail(fields);
  }
  if (separators == 0) return Fail(fields);

  int state = kiDateText_Year;
  char before = 0;  // the separator that ended the previous piece
  const char* piece = text;
  // Intended: once 'Z' has ended the walk, what follows it is not read.
  while (state != kEndState) {
    const char* end = piece;
    while (*end != 0 && !IsSeparator(*end)) ++end;
    const char separator = *end;  // 0: the end of the text
    if (end == piece) return Fail(fields);

    int value = 0;
    if (!ReadPiece(piece, static_cast<std::size_t>(end - piece), separator == 0, &value) ||
        value < kRanges[state].low || value > kRanges[state].high) {
      return Fail(fields);
    }
    fields[state] = state == kiDateText_ZoneHours && before == '-' ? -value : value;
    if (separator == 0) return 0;

    switch (state) {
      case kiDateText_Year:
      case kiDateText_Month:
        if (separator != '-') return Fail(fields);
        ++state;
        break;
      case kiDateText_Day:
        if (separator != 'T') return Fail(fields);
        ++state;
        break;
      case kiDateText_Hour:
      case kiDateText_Minute:
        if (separator != ':') return Fail(fields);
        ++state;
        break;
      case kiDateText_Second:
        if (separator == 'Z') {
          state = kEndState;
        } else if (separator == '+' || separator == '-') {
          state = kiDateText_ZoneHours;
        } else {
          state = kiDateText_Millisecond;  // normally after '.'
        }
        break;
      case kiDateText_Millisecond:
        state = separator == 'Z' ? kEndState : kiDateText_ZoneHours;
        break;
      case kiDateText_ZoneHours:
        if (separator != ':') return Fail(fields);
        ++state;
        break;
      default:  // the zone minutes end the text
        return Fail(fields);
    }
    before = separator;
    piece = end + 1;
  }
  return 0;
}
