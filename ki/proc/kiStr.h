// kiStr.h - number parsing shared by the strings, the fatal-error path and the
// text parsers. Every parser reads the "C" locale's syntax whatever the
// process locale is.
#ifndef KI_PROC_KISTR_H
#define KI_PROC_KISTR_H

#include <cstdint>

#include "ki/Export.h"

// Result codes of the parsers:
//   0    the whole text was one number
//   > 0  a number was read and the text goes on: the count of bytes consumed
//        (leading white space included)
//   -1   overflow (positive); the value is clamped
//   -2   overflow of a negative number; the value is clamped
//   -3   no number: null or empty text, no digit, or a base outside 2..36
// White space is the bytes 9 to 13 and space.
enum { kiStr_Overflow = -1, kiStr_NegativeOverflow = -2, kiStr_NoNumber = -3 };

// Unsigned 32-bit in base 16 when the text (after white space and one '+')
// starts with "0x"/"0X" and a hexadecimal digit, else in base 10 ("017" is 17).
// Overflow gives 4294967295 and -1. value may be null.
KI_API int kiStr_ParseUInt32(const char* text, unsigned int* value);

// Unsigned 32-bit in the given base: 2..36, or 0 to choose ("0x" + hex digit:
// 16, another leading "0": 8, else 10). Base 16 skips a "0x" prefix followed
// by a hex digit. '-' is refused (-3). value may be null; it is 0 for -3.
KI_API int kiStr_ParseUInt32Base(const char* text, int base, unsigned int* value);

// Signed 32-bit in the given base, clamped to -2147483648..2147483647 with -1
// (too large) or -2 (too small). A '-' is a sign only before a letter or digit.
// Kept for compatibility: "-2147483647" reads as -2147483648 without error.
KI_API int kiStr_ParseInt32Base(const char* text, int base, int* value);

// Decimal floating point: [ws][+|-]digits[.digits][(e|E)[+|-]digits], '.' as
// the separator in every locale, correctly rounded; overflow gives infinity.
// The value is 0 for -3.
KI_API int kiStr_ParseDouble(const char* text, double* value);

// kiStr_ParseUInt32 for a pointer-sized number, with the same rules; used for
// addresses kept as text ("0x7f..."). Overflow gives all ones and -1.
KI_API int kiStr_ParseUIntPtr(const char* text, std::uintptr_t* value);

#endif  // KI_PROC_KISTR_H
