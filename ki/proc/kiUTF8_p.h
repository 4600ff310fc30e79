// kiUTF8_p.h - the Unicode codec behind the converters: UTF-8 and UTF-32 to and
// from UTF-16. Private to ki, not installed.
#ifndef KI_PROC_KIUTF8_P_H
#define KI_PROC_KIUTF8_P_H

#include "ki/core/StringData.h"

// Each function reads a zero-terminated text, never past its terminator, and
// answers a new zero-terminated kiMem_* block sized exactly for the result, or
// null: for a null text, for invalid input (the whole conversion fails, no
// replacement character), or for a result too large for one block. The text
// must not change during the call.
//
// Surrogate values are code points like any other here: a UTF-8 sequence or a
// UTF-32 value in 0xD800..0xDFFF gives that single UTF-16 unit, and a UTF-16
// surrogate outside a valid pair is written in its own 3-byte UTF-8 form or
// as its own UTF-32 value. So UTF-16 -> UTF-8 -> UTF-16 is the identity on
// every UTF-16 text.

// UTF-8 -> UTF-16. A lead byte with n leading one bits is followed by n - 1
// bytes 10xxxxxx; the value must exceed the overlong limit of its length and
// stay below 0x110000. Values from 0x10000 up give a surrogate pair.
kiWChar* kiUTF8_ToUTF16(const char* text);

// Whether kiUTF8_ToUTF16 would convert text: false for null and for invalid
// UTF-8. The platform layer checks names with it.
bool kiUTF8_IsValid(const char* text);

// UTF-16 -> UTF-8 in 1 to 4 bytes a code point. Never fails for a text.
char* kiUTF8_FromUTF16(const kiWChar* text);

// UTF-16 -> native wchar_t: a valid pair becomes one value where wchar_t is 32
// bits wide, a copy where it is 16. Never fails for a text.
wchar_t* kiUTF16_ToWide(const kiWChar* text);

// Native wchar_t -> UTF-16: values from 0x10000 become a pair; a value past
// 0x10FFFF (a negative wchar_t included) fails.
kiWChar* kiUTF16_FromWide(const wchar_t* text);

// UTF-8 <-> native wchar_t, defined as the trip through UTF-16 so that every
// path between two forms gives the same text (a UTF-8 or UTF-32 high
// surrogate followed by a low one meets as a pair).
wchar_t* kiUTF8_ToWide(const char* text);
char* kiUTF8_FromWide(const wchar_t* text);

#endif  // KI_PROC_KIUTF8_P_H
