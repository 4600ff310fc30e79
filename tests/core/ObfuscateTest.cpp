// ObfuscateTest.cpp - kiObfuscate and its pieces: RC4 and Base64 against
// published vectors, decoding of malformed text, round trips and the cut at
// a zero encrypted byte.
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "ki/core/Obfuscate.h"
#include "ki/core/Obfuscate_p.h"
#include "ki/proc/kiMem.h"

namespace {

std::string Hex(const std::string& bytes) {
  static const char kDigits[] = "0123456789ABCDEF";
  std::string hex;
  for (unsigned char c : bytes) hex += {kDigits[c >> 4], kDigits[c & 15]};
  return hex;
}

kiCString To(const char* text, const char* key) { return kiObfuscate::To_B64RC4(text, key); }
kiCString From(const char* text, const char* key) { return kiObfuscate::From_B64RC4(text, key); }

std::string Rc4(const std::string& key, std::string data) {
  kiRC4State state;
  kiRC4_Init(&state, reinterpret_cast<const unsigned char*>(key.data()),
             static_cast<unsigned int>(key.size()));
  kiRC4_Crypt(&state, reinterpret_cast<unsigned char*>(&data[0]),
              static_cast<unsigned int>(data.size()));
  return data;
}

TEST(ObfuscateTest, Rc4KnownAnswers) {
  // clang-format off
  const struct { const char* key; const char* plain; const char* cipher; } rows[] = {
      {"Key", "Plaintext", "BBF316E8D940AF0AD3"}, {"Wiki", "pedia", "1021BF0420"},
      {"Secret", "Attack at dawn", "45A01F645FC35B383552544B9BF5"}};
  // clang-format on
  for (const auto& r : rows) {
    SCOPED_TRACE(r.key);
    EXPECT_EQ(r.cipher, Hex(Rc4(r.key, r.plain)));
    EXPECT_EQ(r.plain, Rc4(r.key, Rc4(r.key, r.plain)));
  }
  // The stream goes on across calls: two halves equal one whole.
  kiRC4State state;
  kiRC4_Init(&state, reinterpret_cast<const unsigned char*>("Secret"), 6);
  std::string split = "Attack at dawn";
  kiRC4_Crypt(&state, reinterpret_cast<unsigned char*>(&split[0]), 5);
  kiRC4_Crypt(&state, reinterpret_cast<unsigned char*>(&split[5]), 9);
  EXPECT_EQ(Rc4("Secret", "Attack at dawn"), split);
  EXPECT_EQ(Rc4(std::string(1, '\0'), "abc"), Rc4("", "abc"));  // an empty key is {0}
  kiRC4_Init(nullptr, nullptr, 3);
  kiRC4_Crypt(&state, nullptr, 3);
}

TEST(ObfuscateTest, Base64BothWays) {
  // clang-format off
  const struct { const char* bytes; const char* text; } rows[] = {
      {"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"foob", "Zm9vYg=="},
      {"fooba", "Zm9vYmE="}, {"foobar", "Zm9vYmFy"}, {"\xFB\xFF\xBF", "+/+/"}};
  // clang-format on
  for (const auto& r : rows) {
    SCOPED_TRACE(r.text);
    const std::string bytes = r.bytes;
    unsigned int n = 99;
    char* text = kiBase64_Encode(reinterpret_cast<const unsigned char*>(bytes.data()),
                                 static_cast<unsigned int>(bytes.size()), &n);
    EXPECT_EQ(std::string(r.text) + '\0', std::string(text, n + 1));  // terminated after n
    kiMem_Free(text);
    unsigned char* back = kiBase64_Decode(r.text, n, &n);
    EXPECT_EQ(bytes + '\0', std::string(reinterpret_cast<char*>(back), n + 1));
    kiMem_Free(back);
  }
}

TEST(ObfuscateTest, Base64DecodeStopsAtTheFirstForeignCharacter) {
  // clang-format off
  const struct { const char* text; const char* expected; } rows[] = {
      {"Zm9v*Zm9v", "foo"}, {"Zm9", "fo"}, {"Zg", "f"},   {"Zm9vY", "foo"},
      {"Zg=Zm9v", "f"},     {"====", ""},  {" Zm9v", ""}, {"Zm\n9v", "f"}};
  // clang-format on
  for (const auto& r : rows) {
    SCOPED_TRACE(r.text);
    unsigned int n = 0;
    unsigned char* bytes = kiBase64_Decode(r.text, static_cast<unsigned int>(strlen(r.text)), &n);
    EXPECT_EQ(r.expected, std::string(reinterpret_cast<char*>(bytes), n));
    kiMem_Free(bytes);
  }
  unsigned char* none = kiBase64_Decode(nullptr, 10, nullptr);
  EXPECT_EQ(0, none[0]);
  kiMem_Free(none);
  char* empty = kiBase64_Encode(nullptr, 10, nullptr);
  EXPECT_STREQ("", empty);
  kiMem_Free(empty);
}

TEST(ObfuscateTest, RoundTripsAndTheZeroByteCut) {
  // clang-format off
  const struct { const char* text; const char* key; } rows[] = {
      {"", "key"}, {"a", "key"}, {"user@example.org", "k"}, {"\x7F\x80\xFF high bytes", "Secret"},
      {"no key", ""}, {"null key", nullptr}};
  // clang-format on
  for (const auto& r : rows) {
    SCOPED_TRACE(r.text);
    EXPECT_STREQ(r.text, From(To(r.text, r.key), r.key).c_str());
  }
  EXPECT_STREQ("u/MW6NlArwrT", To("Plaintext", "Key").c_str());
  // "Key" encrypts 0xEB to 0 as its first byte and 0x9F to 0 as its second.
  EXPECT_STREQ("", To("\353abc", "Key").c_str());
  EXPECT_STREQ("A", From(To("A\237bc", "Key"), "Key").c_str());
  EXPECT_STREQ("", From("AAAA", "Key").c_str());  // decodes to zero bytes
  // A wrong key can decrypt to a zero byte: the answer is text and ends there.
  const kiCString wrongKey = From("adew", "ke");
  EXPECT_EQ(std::strlen(wrongKey.c_str()), wrongKey.length());
}

}  // namespace
