// number_parsers_fuzzer.cpp - the kiStr_Parse* functions, the kiCString To*
// wrappers and kiuint64::FromString on arbitrary text, checked against the C
// library's strto* functions (the process stays in the "C" locale) wherever
// both read the same syntax.
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "ki/core/CString.h"
#include "ki/core/UInt64.h"
#include "ki/proc/kiStr.h"

#include "FuzzInput.h"

namespace {

constexpr size_t kMaxInput = 4096;

// kiFuzz::Check with the text that broke it.
void Check(bool ok, const char* what, const char* text) {
  if (!ok) kiFuzz::Fail((std::string(what) + " on \"" + text + "\"").c_str());
}

bool IsSpace(char c) { return c == ' ' || (c >= 9 && c <= 13); }
bool IsHexDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}
const char* SkipSpace(const char* p) {
  while (IsSpace(*p)) ++p;
  return p;
}

// The code a parser gives for a number that ended at end.
int EndCode(const char* text, const char* end) {
  return *end == 0 ? 0 : static_cast<int>(end - text);
}

// Every code is -3..-1, 0, or a count of consumed bytes that stops short of
// the end of the text.
void CheckCode(int code, const char* text, size_t length) {
  Check(code >= -3 && (code <= 0 || (static_cast<size_t>(code) < length && text[code] != 0)),
        "code range", text);
}

struct Expected {
  int code;
  unsigned long long value;
};

// Unsigned parse in base 0 or 2..36 with strtoull, clamped to max. strtoull
// also takes a '-', which the ki parsers refuse.
Expected UnsignedModel(const char* text, int base, unsigned long long max) {
  if (*SkipSpace(text) == '-') return {kiStr_NoNumber, 0};
  char* end = nullptr;
  errno = 0;
  const unsigned long long v = std::strtoull(text, &end, base);
  if (end == text) return {kiStr_NoNumber, 0};
  if (errno == ERANGE || v > max) return {kiStr_Overflow, max};
  return {EndCode(text, end), v};
}

// "0x" and a hexadecimal digit after white space and one '+' choose base 16.
int AutoBase(const char* text) {
  const char* p = SkipSpace(text);
  if (*p == '+') ++p;
  return p[0] == '0' && (p[1] == 'x' || p[1] == 'X') && IsHexDigit(p[2]) ? 16 : 10;
}

// Signed parse with strtoll, clamped to 32 bits; -2147483647 reads as
// -2147483648 (kept for compatibility).
Expected SignedModel(const char* text, int base) {
  char* end = nullptr;
  errno = 0;
  const long long v = std::strtoll(text, &end, base);
  if (end == text) return {kiStr_NoNumber, 0};
  if ((errno == ERANGE && v > 0) || v > INT_MAX) return {kiStr_Overflow, INT_MAX};
  if ((errno == ERANGE && v < 0) || v < INT_MIN) {
    return {kiStr_NegativeOverflow, static_cast<unsigned long long>(INT_MIN)};
  }
  const long long clamped = v == -2147483647LL ? INT_MIN : v;
  return {EndCode(text, end), static_cast<unsigned long long>(clamped)};
}

bool SameBits(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }

// Where strtod reads the same syntax as ParseDouble: a decimal mantissa.
// strtod also reads "inf", "nan" and hexadecimal numbers; of "0x..." the ki
// parser reads only the "0". zeroEnd is set to the byte after that "0".
enum Syntax { kDecimal, kHexPrefix, kOther };
Syntax SyntaxOf(const char* text, const char** zeroEnd) {
  const char* p = SkipSpace(text);
  if (*p == '+' || *p == '-') ++p;
  if (p[0] == '0' && (p[1] == 'x' || p[1] == 'X')) {
    *zeroEnd = p + 1;
    return kHexPrefix;
  }
  const bool digit = (*p >= '0' && *p <= '9') || (*p == '.' && p[1] >= '0' && p[1] <= '9');
  return digit ? kDecimal : kOther;
}

void CheckUnsigned(const char* text, size_t length) {
  unsigned int value = 1;
  int code = kiStr_ParseUInt32(text, &value);
  CheckCode(code, text, length);
  Expected e = UnsignedModel(text, AutoBase(text), UINT_MAX);
  Check(code == e.code && value == e.value, "ParseUInt32 against strtoull", text);
  Check(kiStr_ParseUInt32(text, nullptr) == code, "ParseUInt32 without a value", text);

  std::uintptr_t address = 1;
  code = kiStr_ParseUIntPtr(text, &address);
  CheckCode(code, text, length);
  e = UnsignedModel(text, AutoBase(text), UINTPTR_MAX);
  Check(code == e.code && address == e.value, "ParseUIntPtr against strtoull", text);

  const kiCString s(text);
  for (int base = -1; base <= 37; ++base) {
    value = 1;
    code = kiStr_ParseUInt32Base(text, base, &value);
    CheckCode(code, text, length);
    if (base == 1 || base < 0 || base > 36) {
      Check(code == kiStr_NoNumber && value == 0, "ParseUInt32Base refuses a bad base", text);
    } else {
      e = UnsignedModel(text, base, UINT_MAX);
      Check(code == e.code && value == e.value, "ParseUInt32Base against strtoull", text);
    }
    unsigned int u = 1;
    unsigned long ul = 1;
    Check(s.ToUInt32(&u, base) == (code == 0) && u == value, "ToUInt32", text);
    Check(s.ToULong(&ul, base) == (code == 0) && ul == value, "ToULong", text);
  }
}

void CheckSigned(const char* text, size_t length) {
  const kiCString s(text);
  for (int base = -1; base <= 37; ++base) {
    int value = 1;
    const int code = kiStr_ParseInt32Base(text, base, &value);
    CheckCode(code, text, length);
    if (base == 1 || base < 0 || base > 36) {
      Check(code == kiStr_NoNumber && value == 0, "ParseInt32Base refuses a bad base", text);
    } else {
      const Expected e = SignedModel(text, base);
      Check(code == e.code && value == static_cast<int>(e.value), "ParseInt32Base against strtoll",
            text);
    }
    int i = 1;
    long l = 1;
    Check(s.ToInt32(&i, base) == (code == 0) && i == value, "ToInt32", text);
    Check(s.ToLong(&l, base) == (code == 0) && l == value, "ToLong", text);
  }
  Check(kiStr_ParseInt32Base(text, 10, nullptr) >= -3, "ParseInt32Base without a value", text);
}

void CheckDouble(const char* text, size_t length) {
  double value = 1;
  const int code = kiStr_ParseDouble(text, &value);
  CheckCode(code, text, length);
  Check(code != kiStr_Overflow && code != kiStr_NegativeOverflow, "ParseDouble never overflows",
        text);
  if (code == kiStr_NoNumber) Check(SameBits(value, 0.0), "ParseDouble gives 0 for -3", text);
  const char* zeroEnd = nullptr;
  switch (SyntaxOf(text, &zeroEnd)) {
    case kDecimal: {
      char* end = nullptr;
      const double expected = std::strtod(text, &end);
      Check(code == EndCode(text, end), "ParseDouble stops where strtod stops", text);
      Check(SameBits(value, expected), "ParseDouble against strtod", text);
      break;
    }
    case kHexPrefix:
      Check(code == EndCode(text, zeroEnd) && value == 0, "ParseDouble reads the 0 of 0x", text);
      break;
    case kOther:
      Check(code == kiStr_NoNumber, "ParseDouble refuses what is not a decimal number", text);
      break;
  }
  double d = 1;
  Check(kiCString(text).ToDouble(&d) == (code == 0) && SameBits(d, value), "ToDouble", text);
  Check(kiStr_ParseDouble(text, nullptr) == code, "ParseDouble without a value", text);
}

// kiuint64::FromString: white space, an optional '+', decimal digits, the
// rest ignored; saturating at the maximum; the default for a '-' or no digit.
// The same text widened to UTF-16 gives the same answer.
void CheckUInt64(const char* text, size_t length) {
  const kiuint64 fallback(0xDEADBEEFu, 0x12345678u);
  unsigned long long expected = fallback.GetValue();
  if (*SkipSpace(text) != '-') {
    char* end = nullptr;
    errno = 0;
    const unsigned long long v = std::strtoull(text, &end, 10);
    if (end != text) expected = errno == ERANGE ? ~0ULL : v;
  }
  Check(kiuint64::FromString(text, fallback).GetValue() == expected,
        "kiuint64::FromString against strtoull", text);
  std::u16string wide(text, text + length);
  Check(kiuint64::FromString(wide.c_str(), fallback).GetValue() == expected,
        "kiuint64::FromString on UTF-16", text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > kMaxInput) return 0;
  const std::string input(reinterpret_cast<const char*>(data), size);
  const char* text = input.c_str();  // the parsers read up to the first zero byte
  const size_t length = std::strlen(text);
  CheckUnsigned(text, length);
  CheckSigned(text, length);
  CheckDouble(text, length);
  CheckUInt64(text, length);
  return 0;
}
