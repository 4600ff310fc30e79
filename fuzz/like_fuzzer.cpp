// like_fuzzer.cpp - kiSearch_Like against a plain recursive matcher written
// from the same rules. The input is pattern, a zero byte, then the text; short
// pairs are compared with the reference, longer ones only have to finish.
#include <cstring>
#include <string>

#include "ki/search/Like_p.h"

#include "FuzzInput.h"

namespace {

constexpr size_t kMaxInput = 4096;
constexpr size_t kMaxReferencePattern = 12;
constexpr size_t kMaxReferenceText = 24;

// The set opening at p ('['), read into a table of the 256 bytes; answers the
// byte after its closing ']', or null when it never closes.
const char* ReadSet(const char* p, bool table[256]) {
  const char* q = p + 1;
  const bool negated = *q == '^';
  if (negated) ++q;
  bool member[256] = {};
  bool first = true;
  for (;;) {
    if (*q == 0) return nullptr;
    if (*q == ']' && !first) break;
    first = false;
    if (*q == '\\' && *++q == 0) return nullptr;
    const unsigned char low = static_cast<unsigned char>(*q++);
    unsigned high = low;
    if (q[0] == '-' && q[1] != ']' && q[1] != 0) {
      ++q;
      if (*q == '\\' && *++q == 0) return nullptr;
      high = static_cast<unsigned char>(*q++);
    }
    for (unsigned c = low; c <= high; ++c) member[c] = true;
  }
  for (int c = 0; c < 256; ++c) table[c] = member[c] != negated;
  return q + 1;
}

bool Glob(const char* p, const char* t) {
  if (*p == 0) return *t == 0;
  if (*p == '*') {
    while (*p == '*') ++p;
    for (;; ++t) {
      if (Glob(p, t)) return true;
      if (*t == 0) return false;
    }
  }
  if (*t == 0) return false;
  const unsigned char c = static_cast<unsigned char>(*t);
  if (*p == '?') return Glob(p + 1, t + 1);
  if (*p == '[') {
    bool table[256];
    const char* after = ReadSet(p, table);
    if (after != nullptr) return table[c] && Glob(after, t + 1);
    return c == '[' && Glob(p + 1, t + 1);
  }
  if (*p == '\\' && p[1] != 0) return c == static_cast<unsigned char>(p[1]) && Glob(p + 2, t + 1);
  return c == static_cast<unsigned char>(*p) && Glob(p + 1, t + 1);
}

bool Reference(const char* pattern, const char* text) {
  if (std::strcmp(pattern, "*") == 0) return true;
  if (pattern[0] != '*' && pattern[0] != '?' && pattern[0] != text[0]) return false;
  return Glob(pattern, text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > kMaxInput) return 0;
  kiFuzz::Reader in(data, size);
  const std::string pattern = in.Until(0);
  const std::string text = in.Until(0);
  const bool got = kiSearch_Like(pattern.c_str(), text.c_str());
  if (pattern.size() <= kMaxReferencePattern && text.size() <= kMaxReferenceText) {
    if (got != Reference(pattern.c_str(), text.c_str())) {
      kiFuzz::Fail(("differs from the reference: '" + pattern + "' on '" + text + "'").c_str());
    }
  }
  kiFuzz::Check(!kiSearch_Like(nullptr, text.c_str()) && !kiSearch_Like(pattern.c_str(), nullptr),
                "null matched");
  return 0;
}
