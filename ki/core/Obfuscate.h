// Obfuscate.h - kiObfuscate, reversible scrambling of short texts with a
// caller-given key (RC4, then Base64).
#ifndef KI_CORE_OBFUSCATE_H
#define KI_CORE_OBFUSCATE_H

#include "ki/Export.h"
#include "ki/core/CString.h"

// Scrambling for short identifiers kept in configuration files; it hides
// text from a casual reader and is no protection against anyone else.
class KI_API kiObfuscate {
 public:
  kiObfuscate() = delete;

  // The text up to its first zero byte, RC4-encrypted with the key's bytes,
  // then Base64-encoded. Intended: the encoding ends at the first encrypted
  // byte that is zero, so such a text does not come back whole. A null or
  // empty key counts as the one-byte key {0}.
  static kiCString To_B64RC4(const kiCString& text, const char* key);
  // The reverse: Base64-decoded (see kiBase64_Decode), cut at the first zero
  // byte, decrypted with the key; the answer ends at its first zero byte (a
  // wrong key can decrypt to one). Text that is not Base64 gives whatever its
  // leading Base64 characters decode to, possibly nothing.
  static kiCString From_B64RC4(const kiCString& text, const char* key);
};

#endif  // KI_CORE_OBFUSCATE_H
