// Obfuscate.cpp - kiObfuscate and its pieces: the RC4 key stream and Base64.
#include "ki/core/Obfuscate.h"

#include <cstdint>
#include <cstring>

#include "ki/core/Obfuscate_p.h"
#include "ki/proc/kiFatalError.h"
#include "ki/proc/kiMem.h"

namespace {

const char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// The value of a Base64 character, or -1.
int Sextet(char c) {
  if (c >= 'A' && c <= 'Z') return c - 'A';
  if (c >= 'a' && c <= 'z') return c - 'a' + 26;
  if (c >= '0' && c <= '9') return c - '0' + 52;
  if (c == '+') return 62;
  if (c == '/') return 63;
  return -1;
}

unsigned int Length(const char* text) {
  const size_t n = text != nullptr ? std::strlen(text) : 0;
  if (n > 0xFFFFFFFFu) kiFatalError("memory:malloc", n);
  return static_cast<unsigned int>(n);
}

void InitKey(kiRC4State* state, const char* key) {
  kiRC4_Init(state, reinterpret_cast<const unsigned char*>(key), Length(key));
}

}  // namespace

// ---- RC4 -----------------------------------------------------------------------

void kiRC4_Init(kiRC4State* state, const unsigned char* key, unsigned int keyLength) {
  if (state == nullptr) return;
  static const unsigned char kZeroKey[1] = {0};
  if (key == nullptr || keyLength == 0) {
    key = kZeroKey;
    keyLength = 1;
  }
  for (unsigned int i = 0; i < 256; ++i) state->s[i] = static_cast<unsigned char>(i);
  unsigned char j = 0;
  for (unsigned int i = 0; i < 256; ++i) {
    j = static_cast<unsigned char>(j + state->s[i] + key[i % keyLength]);
    const unsigned char t = state->s[i];
    state->s[i] = state->s[j];
    state->s[j] = t;
  }
  state->i = 0;
  state->j = 0;
}

void kiRC4_Crypt(kiRC4State* state, unsigned char* data, unsigned int length) {
  if (state == nullptr || data == nullptr) return;
  unsigned char i = state->i;
  unsigned char j = state->j;
  unsigned char* s = state->s;
  for (unsigned int n = 0; n < length; ++n) {
    i = static_cast<unsigned char>(i + 1);
    j = static_cast<unsigned char>(j + s[i]);
    const unsigned char t = s[i];
    s[i] = s[j];
    s[j] = t;
    data[n] ^= s[static_cast<unsigned char>(s[i] + s[j])];
  }
  state->i = i;
  state->j = j;
}

// ---- Base64 --------------------------------------------------------------------

char* kiBase64_Encode(const unsigned char* bytes, unsigned int length, unsigned int* textLength) {
  if (bytes == nullptr) length = 0;
  const unsigned long long blockSize = 4ull * length / 3 + 4;
  if (blockSize > 0xFFFFFFFFu)
    kiFatalError("memory:malloc", static_cast<std::uintptr_t>(blockSize));
  char* text = static_cast<char*>(kiMem_Malloc(static_cast<unsigned int>(blockSize)));
  char* out = text;
  unsigned int at = 0;
  for (; length - at >= 3; at += 3) {
    const unsigned int v = bytes[at] << 16 | bytes[at + 1] << 8 | bytes[at + 2];
    *out++ = kAlphabet[v >> 18];
    *out++ = kAlphabet[(v >> 12) & 63];
    *out++ = kAlphabet[(v >> 6) & 63];
    *out++ = kAlphabet[v & 63];
  }
  if (length - at == 1) {
    const unsigned int v = bytes[at] << 16;
    *out++ = kAlphabet[v >> 18];
    *out++ = kAlphabet[(v >> 12) & 63];
    *out++ = '=';
    *out++ = '=';
  } else if (length - at == 2) {
    const unsigned int v = bytes[at] << 16 | bytes[at + 1] << 8;
    *out++ = kAlphabet[v >> 18];
    *out++ = kAlphabet[(v >> 12) & 63];
    *out++ = kAlphabet[(v >> 6) & 63];
    *out++ = '=';
  }
  *out = 0;
  if (textLength != nullptr) *textLength = static_cast<unsigned int>(out - text);
  return text;
}

unsigned char* kiBase64_Decode(const char* text, unsigned int length, unsigned int* byteCount) {
  if (text == nullptr) length = 0;
  if (length == 0xFFFFFFFFu) kiFatalError("memory:malloc", length);
  auto* bytes = static_cast<unsigned char*>(kiMem_Malloc(length + 1));
  unsigned char* out = bytes;
  unsigned int v = 0;
  unsigned int pending = 0;  // characters of the current group
  for (unsigned int at = 0; at < length; ++at) {
    const int sextet = Sextet(text[at]);
    if (sextet < 0) break;
    v = v << 6 | static_cast<unsigned int>(sextet);
    if (++pending == 4) {
      *out++ = static_cast<unsigned char>(v >> 16);
      *out++ = static_cast<unsigned char>(v >> 8);
      *out++ = static_cast<unsigned char>(v);
      v = 0;
      pending = 0;
    }
  }
  if (pending >= 2) {
    v <<= 6 * (4 - pending);
    *out++ = static_cast<unsigned char>(v >> 16);
    if (pending == 3) *out++ = static_cast<unsigned char>(v >> 8);
  }
  *out = 0;
  if (byteCount != nullptr) *byteCount = static_cast<unsigned int>(out - bytes);
  return bytes;
}

// ---- kiObfuscate ---------------------------------------------------------------

kiCString kiObfuscate::To_B64RC4(const kiCString& text, const char* key) {
  char* copy = kiMem_Strdup(text.c_str());
  kiRC4State state;
  InitKey(&state, key);
  kiRC4_Crypt(&state, reinterpret_cast<unsigned char*>(copy), Length(copy));
  // Intended: measured again after encryption, so the text ends at the first
  // encrypted byte that is zero.
  unsigned int n = 0;
  char* encoded = kiBase64_Encode(reinterpret_cast<const unsigned char*>(copy), Length(copy), &n);
  kiCString result(encoded, n);
  kiMem_Free(encoded);
  kiMem_Free(copy);
  return result;
}

kiCString kiObfuscate::From_B64RC4(const kiCString& text, const char* key) {
  unsigned char* bytes = kiBase64_Decode(text.c_str(), text.length(), nullptr);
  // A decoded zero byte ends the data, as it ends the text when scrambling.
  char* plain = reinterpret_cast<char*>(bytes);
  const unsigned int n = Length(plain);
  kiRC4State state;
  InitKey(&state, key);
  kiRC4_Crypt(&state, bytes, n);
  bytes[n] = 0;
  // The text ends at its terminator: a wrong key can decrypt to a zero byte,
  // and the answer is text, as the input to To_B64RC4 is.
  kiCString result(plain);
  kiMem_Free(bytes);
  return result;
}
