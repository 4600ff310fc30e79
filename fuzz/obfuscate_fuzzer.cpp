// obfuscate_fuzzer.cpp - kiObfuscate and its Base64 pieces on arbitrary input:
// decoding any text is safe, encoding then decoding gives the bytes back, and
// a scrambled text comes back whole unless its key stream hit a zero byte.
#include <cstring>
#include <string>

#include "ki/core/Obfuscate.h"
#include "ki/core/Obfuscate_p.h"
#include "ki/proc/kiMem.h"

#include "FuzzInput.h"

namespace {

constexpr size_t kMaxInput = 4096;

// The input splits at its first zero byte into a key and a text.
void CheckObfuscation(const std::string& key, const std::string& text) {
  // Whatever the stored value is, decoding it must neither fault nor run
  // past what it decoded.
  const kiCString decoded = kiObfuscate::From_B64RC4(text.c_str(), key.c_str());
  kiFuzz::Check(std::strlen(decoded.c_str()) == decoded.length(), "decoded text has no zero byte");

  const kiCString scrambled = kiObfuscate::To_B64RC4(text.c_str(), key.c_str());
  const kiCString back = kiObfuscate::From_B64RC4(scrambled, key.c_str());
  // The text as far as the first encrypted zero byte (intended cut).
  kiRC4State state;
  kiRC4_Init(&state, reinterpret_cast<const unsigned char*>(key.data()),
             static_cast<unsigned int>(key.size()));
  std::string cipher = text.substr(0, std::strlen(text.c_str()));
  kiRC4_Crypt(&state, reinterpret_cast<unsigned char*>(&cipher[0]),
              static_cast<unsigned int>(cipher.size()));
  const size_t kept = std::strlen(cipher.c_str());
  kiFuzz::Check(std::string(back.c_str(), back.length()) == text.substr(0, kept),
                "round trip up to the first zero encrypted byte");
}

void CheckBase64(const std::string& bytes) {
  unsigned int textLength = 0;
  char* text = kiBase64_Encode(reinterpret_cast<const unsigned char*>(bytes.data()),
                               static_cast<unsigned int>(bytes.size()), &textLength);
  kiFuzz::Check(textLength == (bytes.size() + 2) / 3 * 4, "Base64 length");
  kiFuzz::Check(std::strlen(text) == textLength, "Base64 terminator");
  unsigned int count = 0;
  unsigned char* decoded = kiBase64_Decode(text, textLength, &count);
  kiFuzz::Check(count == bytes.size() && std::memcmp(decoded, bytes.data(), count) == 0,
                "Base64 round trip");
  kiMem_Free(decoded);
  kiMem_Free(text);

  // Any text decodes to at most three bytes per four characters.
  decoded = kiBase64_Decode(bytes.c_str(), static_cast<unsigned int>(bytes.size()), &count);
  kiFuzz::Check(count <= bytes.size() / 4 * 3 + 2, "Base64 decodes no more than it reads");
  kiMem_Free(decoded);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > kMaxInput) return 0;
  const std::string input(reinterpret_cast<const char*>(data), size);
  const size_t split = input.find('\0');
  const std::string key = split == std::string::npos ? std::string() : input.substr(0, split);
  const std::string text = split == std::string::npos ? input : input.substr(split + 1);
  CheckObfuscation(key, text);
  CheckBase64(input);
  return 0;
}
