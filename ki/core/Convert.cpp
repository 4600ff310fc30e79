// Convert.cpp - the converters: kiLibCConvert over the C library's wcstombs
// and mbstowcs, kiUTF8Convert over the codec in UTF8_p.h, and kiWXCharBuffer.
#include "ki/core/Convert.h"

#include <cstddef>
#include <cstdlib>
#include <cwchar>

#include "ki/proc/kiUTF8_p.h"

// Empty classes, value-initialised: constant data, nothing runs at load time.
const kiLibCConvert kiConvLibC{};
const kiUTF8Convert kiConvUTF8{};

namespace {

// The longest results one kiMem_* block (an unsigned int of bytes) holds.
constexpr size_t kMaxNarrow = 0xFFFFFFFEu;
constexpr size_t kMaxWide = 0xFFFFFFFFu / sizeof(wchar_t) - 1;

// What kiLibCConvert answers for a null or unconvertible text: a buffer made
// for one character, both characters zero, so it reads as an empty text.
kiCharBuffer NarrowFailure() { return kiCharBuffer(static_cast<char*>(kiMem_Calloc(2)), false); }
kiWCharBuffer WideFailure() {
  return kiWCharBuffer(static_cast<kiWChar*>(kiMem_Calloc(2 * sizeof(kiWChar))), false);
}
kiWXCharBuffer NativeFailure() {
  return kiWXCharBuffer(static_cast<wchar_t*>(kiMem_Calloc(2 * sizeof(wchar_t))));
}

// wcstombs with the length asked for first; null when the text is null or
// the locale cannot encode it.
char* WideToLocale(const wchar_t* text) {
  if (text == nullptr) return nullptr;
  const size_t length = std::wcstombs(nullptr, text, 0);
  if (length > kMaxNarrow) return nullptr;  // (size_t)-1 too: unconvertible
  char* out = static_cast<char*>(kiMem_Malloc(static_cast<unsigned int>(length + 1)));
  if (std::wcstombs(out, text, length + 1) != length) {  // the locale changed under us
    kiMem_Free(out);
    return nullptr;
  }
  out[length] = '\0';
  return out;
}

// mbstowcs the same way.
wchar_t* LocaleToWide(const char* text) {
  if (text == nullptr) return nullptr;
  const size_t length = std::mbstowcs(nullptr, text, 0);
  if (length > kMaxWide) return nullptr;  // (size_t)-1 too: invalid in the locale
  wchar_t* out = static_cast<wchar_t*>(kiMem_MallocArray(length + 1, sizeof(wchar_t)));
  if (std::mbstowcs(out, text, length + 1) != length) {
    kiMem_Free(out);
    return nullptr;
  }
  out[length] = L'\0';
  return out;
}

}  // namespace

// NOLINTNEXTLINE(misc-unconventional-assign-operator): a hand-over, intended
kiWXCharBuffer& kiWXCharBuffer::operator=(kiWXCharBuffer& other) {
  if (&other != this) {
    kiMem_Free(m_text);
    m_text = other.release();
  }
  return *this;
}

// ---- kiLibCConvert -------------------------------------------------------------
// The C library converts native wchar_t, so UTF-16 goes through it on the way.

kiCharBuffer kiLibCConvert::cKI2MB(const kiWChar* text) const {
  wchar_t* wide = kiUTF16_ToWide(text);
  char* out = WideToLocale(wide);
  kiMem_Free(wide);
  return out != nullptr ? kiCharBuffer(out, false) : NarrowFailure();
}

kiCharBuffer kiLibCConvert::cWX2MB(const wchar_t* text) const {
  char* out = WideToLocale(text);
  return out != nullptr ? kiCharBuffer(out, false) : NarrowFailure();
}

kiWCharBuffer kiLibCConvert::cMB2KI(const char* text) const {
  wchar_t* wide = LocaleToWide(text);
  kiWChar* out = kiUTF16_FromWide(wide);  // null for a value past 0x10FFFF
  kiMem_Free(wide);
  return out != nullptr ? kiWCharBuffer(out, false) : WideFailure();
}

kiWXCharBuffer kiLibCConvert::cMB2WX(const char* text) const {
  wchar_t* out = LocaleToWide(text);
  return out != nullptr ? kiWXCharBuffer(out) : NativeFailure();
}

// ---- kiUTF8Convert -------------------------------------------------------------

kiCharBuffer kiUTF8Convert::ToUTF8(const kiWChar* text) const {
  return kiCharBuffer(kiUTF8_FromUTF16(text), false);
}

kiWCharBuffer kiUTF8Convert::ToString(const char* text) const {
  return kiWCharBuffer(kiUTF8_ToUTF16(text), false);
}

kiCharBuffer kiUTF8Convert::cWX2MB(const wchar_t* text) const {
  return kiCharBuffer(kiUTF8_FromWide(text), false);
}

kiWXCharBuffer kiUTF8Convert::cMB2WX(const char* text) const {
  return kiWXCharBuffer(kiUTF8_ToWide(text));
}

kiWCharBuffer kiUTF8Convert::cWX2WC(const wchar_t* text) const {
  return kiWCharBuffer(kiUTF16_FromWide(text), false);
}

kiWXCharBuffer kiUTF8Convert::cWC2WX(const kiWChar* text) const {
  return kiWXCharBuffer(kiUTF16_ToWide(text));
}
