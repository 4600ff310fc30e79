// UInt64.cpp - kiuint64's constants, decimal text out and in.
#include "ki/core/UInt64.h"

#include "ki/core/CString.h"
#include "ki/core/String.h"

constexpr kiuint64 kkiuint64_0(0u, 0u);
constexpr kiuint64 kkiuint64_Max(0xFFFFFFFFu, 0xFFFFFFFFu);

namespace {

constexpr unsigned int kMaxDigits = 20;  // 18446744073709551615

// The digits of value, most significant first, ending at out + kMaxDigits.
template <typename C>
unsigned int Digits(unsigned long long value, C* out) {
  unsigned int n = 0;
  do {
    out[kMaxDigits - 1 - n] = static_cast<C>('0' + value % 10);
    value /= 10;
    ++n;
  } while (value != 0);
  return n;
}

template <typename C>
bool IsSpace(C c) {
  return c == C(' ') || (c >= C(9) && c <= C(13));
}

template <typename C>
kiuint64 Parse(const C* text, const kiuint64& defaultValue) {
  if (text == nullptr) return defaultValue;
  while (IsSpace(*text)) ++text;
  if (*text == C('+')) ++text;
  if (*text < C('0') || *text > C('9')) return defaultValue;
  unsigned long long value = 0;
  for (; *text >= C('0') && *text <= C('9'); ++text) {
    const auto digit = static_cast<unsigned long long>(*text - C('0'));
    if (value > (~0ull - digit) / 10) {
      value = ~0ull;  // saturated; the remaining digits are read and dropped
    } else {
      value = value * 10 + digit;
    }
  }
  return value;
}

}  // namespace

kiCString kiuint64::ToCString() const {
  char digits[kMaxDigits];
  const unsigned int n = Digits(GetValue(), digits);
  return kiCString(digits + kMaxDigits - n, n);
}

kiString kiuint64::ToString() const {
  kiWChar digits[kMaxDigits];
  const unsigned int n = Digits(GetValue(), digits);
  return kiString(digits + kMaxDigits - n, n);
}

kiuint64 kiuint64::FromString(const char* text, const kiuint64& defaultValue) {
  return Parse(text, defaultValue);
}

kiuint64 kiuint64::FromString(const kiWChar* text, const kiuint64& defaultValue) {
  return Parse(text, defaultValue);
}
