// Obfuscate_p.h - the pieces of kiObfuscate: the RC4 key stream and Base64
// (RFC 4648 alphabet, "=" padding). Not installed.
#ifndef KI_CORE_OBFUSCATE_P_H
#define KI_CORE_OBFUSCATE_P_H

#include "ki/Export.h"

// The RC4 state: a permutation of the 256 byte values and its two indices.
struct kiRC4State {
  unsigned char s[256];
  unsigned char i;
  unsigned char j;
};

// The key schedule over keyLength bytes of key. Null key or length 0 count as
// the one-byte key {0}. Keys longer than 256 bytes use their first 256. A
// null state is ignored.
KI_API void kiRC4_Init(kiRC4State* state, const unsigned char* key, unsigned int keyLength);
// XORs length bytes of data in place with the next bytes of the key stream
// (encryption and decryption alike). Null state or data: nothing.
KI_API void kiRC4_Crypt(kiRC4State* state, unsigned char* data, unsigned int length);

// The Base64 text of length bytes, in a kiMem_* block the caller frees, with a
// terminator. The block holds 4 * length / 3 + 4 bytes; past 4 GB or when the
// heap is exhausted, kiFatalError("memory:malloc"). Null bytes count as none.
// The text length is stored through textLength unless it is null.
KI_API char* kiBase64_Encode(const unsigned char* bytes, unsigned int length,
                             unsigned int* textLength);
// The bytes of length characters of Base64 text, in a kiMem_* block of
// length + 1 bytes the caller frees, a zero byte after the data. Decoding stops
// at the first character outside the alphabet ("=" included); the characters
// of the last group say how many bytes it carries (2: one, 3: two, a lone one:
// none). Null text counts as empty. The byte count is stored through
// byteCount unless it is null.
KI_API unsigned char* kiBase64_Decode(const char* text, unsigned int length,
                                      unsigned int* byteCount);

#endif  // KI_CORE_OBFUSCATE_P_H
