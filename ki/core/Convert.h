// Convert.h - the text converters: kiLibCConvert (the C library's locale
// multibyte encoding) and kiUTF8Convert (UTF-8), their exported instances
// kiConvLibC and kiConvUTF8, and kiWXCharBuffer for native wide text.
#ifndef KI_CORE_CONVERT_H
#define KI_CORE_CONVERT_H

#include "ki/Export.h"
#include "ki/core/CString.h"
#include "ki/core/String.h"
#include "ki/proc/kiMem.h"

// Method names read c<source>2<target>, where
//   MB  narrow text in the converter's encoding (locale multibyte, or UTF-8)
//   WC  UTF-16 (kiWChar), the same as
//   KI  the character of kiString
//   WX  the platform's native wchar_t: UTF-32 here, UTF-16 on Windows, so the
//       WX methods convert between UTF-32 and UTF-16 where the two differ.
// Converters hold no state and may be used from any thread.

// One owned, null-terminated heap text of native wchar_t, or null; the
// hand-over rules of kiCharBuffer.
class KI_API kiWXCharBuffer {
 public:
  kiWXCharBuffer() : m_text(nullptr) {}
  explicit kiWXCharBuffer(wchar_t* adopted) : m_text(adopted) {}  // a kiMem_* block
  kiWXCharBuffer(kiWXCharBuffer& other) : m_text(other.release()) {}
  kiWXCharBuffer(kiWXCharBuffer&& other) noexcept : m_text(other.release()) {}
  ~kiWXCharBuffer() { kiMem_Free(m_text); }
  // Takes over (intended: a hand-over, not a copy); self-assignment: nothing.
  kiWXCharBuffer& operator=(kiWXCharBuffer& other);  // NOLINT(misc-unconventional-assign-operator)
  kiWXCharBuffer& operator=(kiWXCharBuffer&& other) noexcept { return *this = other; }

  const wchar_t* data() const { return m_text; }
  operator const wchar_t*() const { return m_text; }  // NOLINT(google-explicit-constructor)
  wchar_t* release() {
    wchar_t* text = m_text;
    m_text = nullptr;
    return text;
  }

 private:
  wchar_t* m_text;
};

// The locale's multibyte encoding through wcstombs/mbstowcs: the result
// depends on the process's LC_CTYPE. A null or unconvertible text gives a
// buffer made for one character whose characters are all zero (not null).
class KI_API kiLibCConvert {
 public:
  kiCharBuffer cKI2MB(const kiWChar* text) const;
  kiCharBuffer cWC2MB(const kiWChar* text) const { return cKI2MB(text); }
  kiCharBuffer cWX2MB(const wchar_t* text) const;
  kiWCharBuffer cMB2KI(const char* text) const;
  kiWCharBuffer cMB2WC(const char* text) const { return cMB2KI(text); }
  kiWXCharBuffer cMB2WX(const char* text) const;
};

// UTF-8. Invalid input (overlong forms, values past 0x10FFFF, stray or
// missing continuation bytes) fails the whole conversion: the result is a
// null buffer, never a replacement character. Surrogate values pass: encoded
// in UTF-8 they decode to one UTF-16 unit, and a lone UTF-16 surrogate is
// written in its own 3-byte form. A null text gives a null buffer.
class KI_API kiUTF8Convert {
 public:
  kiCharBuffer ToUTF8(const kiWChar* text) const;   // UTF-16 -> UTF-8
  kiWCharBuffer ToString(const char* text) const;   // UTF-8 -> UTF-16

  kiCharBuffer cWC2MB(const kiWChar* text) const { return ToUTF8(text); }
  kiCharBuffer cKI2MB(const kiWChar* text) const { return ToUTF8(text); }
  kiCharBuffer cWX2MB(const wchar_t* text) const;   // UTF-32 -> UTF-8
  kiWCharBuffer cMB2WC(const char* text) const { return ToString(text); }
  kiWCharBuffer cMB2KI(const char* text) const { return ToString(text); }
  kiWXCharBuffer cMB2WX(const char* text) const;    // UTF-8 -> UTF-32
  // Kept for compatibility: these two read UTF-8 despite their names.
  kiWCharBuffer cWX2WC(const char* text) const { return ToString(text); }
  kiWCharBuffer cKI2WC(const char* text) const { return ToString(text); }

  kiWCharBuffer cWX2WC(const wchar_t* text) const;  // UTF-32 -> UTF-16
  kiWXCharBuffer cWC2WX(const kiWChar* text) const;  // UTF-16 -> UTF-32
  const kiWChar* cWC2KI(const kiWChar* text) const { return text; }  // the same type
  const kiWChar* cKI2WC(const kiWChar* text) const { return text; }
};

extern KI_API const kiLibCConvert kiConvLibC;
extern KI_API const kiUTF8Convert kiConvUTF8;

#endif  // KI_CORE_CONVERT_H
