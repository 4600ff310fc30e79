// ConvertBench.cpp - kiUTF8Convert beside ICU: ToString (UTF-8 -> UTF-16) and
// ToUTF8 (UTF-16 -> UTF-8) over 1 MB of ASCII and 1 MB of mixed Latin,
// Cyrillic, CJK and emoji text (sizes in UTF-8 bytes). Each case runs as
// BM_<Case>/ki/<text> and BM_<Case>/icu/<text> so run_ratios.py pairs them;
// without ICU only the ki side is built.
//
// Fair terms: ki answers a new block of the exact size, so the ICU side
// allocates its output too (new[], not zero-filled, like kiMem_Malloc). "icu"
// asks for the length first and then converts into a block of that size: the
// same two passes and exact size as ki. "icu_maxbuf" converts once into a
// block of the largest size the text can need, which ki's contract (count,
// then an exact block) rules out; it is shown as the bound. Both sides read
// zero-terminated input (ICU with length -1), as ki has no length to go by.
#include <cstdint>
#include <memory>
#include <string>

#include <benchmark/benchmark.h>

#include "ki/core/Convert.h"

#if defined(KI_HAVE_ICU)
#include <unicode/ustring.h>
#endif

namespace {

constexpr size_t kMB = 1 << 20;

enum kiTextKind { kAscii, kMixed };

// Pseudo-random words from a fixed seed, separated by spaces and now and
// then punctuation, up to n bytes of UTF-8 (padded with spaces to exactly n).
std::string MakeText(kiTextKind kind, size_t n) {
  // Octal escapes where a letter follows, so that it is not read as a digit.
  static const char* const kLatin[] = {
      "caf\xC3\xA9", "na\xC3\xAFve", "\303\274ber", "stra\303\237e", "text", "where", "library"};
  static const char* const kCyrillic[] = {"\xD0\xBF\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82",
                                          "\xD0\xBC\xD0\xB8\xD1\x80",
                                          "\xD1\x82\xD0\xB5\xD0\xBA\xD1\x81\xD1\x82"};
  static const char* const kCjk[] = {"\xE4\xB8\xAD\xE6\x96\x87",
                                     "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E",
                                     "\xE6\xBC\xA2\xE5\xAD\x97\xE3\x83\x86\xE3\x82\xAD"};
  static const char* const kEmoji[] = {"\xF0\x9F\x98\x80", "\xF0\x9F\x9A\x80", "\xF0\x9F\x91\x8D"};
  std::string text;
  uint32_t x = 12345;
  auto next = [&x](uint32_t range) {
    x = x * 1664525u + 1013904223u;
    return (x >> 16) % range;
  };
  while (text.size() < n) {
    std::string word;
    if (kind == kAscii) {
      for (uint32_t len = 2 + next(8); len > 0; --len) word += static_cast<char>('a' + next(26));
    } else {
      // By words: 40% Latin, 25% Cyrillic, 25% CJK, 10% emoji.
      const uint32_t pick = next(20);
      if (pick < 8) {
        word = kLatin[next(7)];
      } else if (pick < 13) {
        word = kCyrillic[next(3)];
      } else if (pick < 18) {
        word = kCjk[next(3)];
      } else {
        word = kEmoji[next(3)];
      }
    }
    word += next(10) == 0 ? ". " : " ";
    if (text.size() + word.size() > n) break;
    text += word;
  }
  text.resize(n, ' ');
  return text;
}

const char* TextName(kiTextKind kind) { return kind == kAscii ? "ascii" : "mixed"; }

// The input of ToUTF8: the same text in UTF-16.
std::u16string Units(const std::string& utf8) {
  const kiWCharBuffer units = kiConvUTF8.ToString(utf8.c_str());
  return units.data() != nullptr ? std::u16string(units.data()) : std::u16string();
}

void ToStringKi(benchmark::State& state, kiTextKind kind) {
  const std::string text = MakeText(kind, kMB);
  for (auto _ : state) {
    kiWCharBuffer units = kiConvUTF8.ToString(text.c_str());
    benchmark::DoNotOptimize(units.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void ToUTF8Ki(benchmark::State& state, kiTextKind kind) {
  const std::string text = MakeText(kind, kMB);
  const std::u16string units = Units(text);
  for (auto _ : state) {
    kiCharBuffer bytes = kiConvUTF8.ToUTF8(units.c_str());
    benchmark::DoNotOptimize(bytes.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

#if defined(KI_HAVE_ICU)

void ToStringIcu(benchmark::State& state, kiTextKind kind, bool preflight) {
  const std::string text = MakeText(kind, kMB);
  for (auto _ : state) {
    UErrorCode error = U_ZERO_ERROR;
    int32_t length = static_cast<int32_t>(text.size());  // at most one unit a byte
    if (preflight) {
      u_strFromUTF8(nullptr, 0, &length, text.c_str(), -1, &error);
      error = U_ZERO_ERROR;
    }
    std::unique_ptr<UChar[]> units(new UChar[static_cast<size_t>(length) + 1]);
    u_strFromUTF8(units.get(), length + 1, &length, text.c_str(), -1, &error);
    if (U_FAILURE(error)) state.SkipWithError("u_strFromUTF8 failed");
    benchmark::DoNotOptimize(units.get());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void ToUTF8Icu(benchmark::State& state, kiTextKind kind, bool preflight) {
  const std::string text = MakeText(kind, kMB);
  const std::u16string units = Units(text);
  for (auto _ : state) {
    UErrorCode error = U_ZERO_ERROR;
    int32_t length = static_cast<int32_t>(3 * units.size());  // at most 3 bytes a unit
    if (preflight) {
      u_strToUTF8(nullptr, 0, &length, units.c_str(), -1, &error);
      error = U_ZERO_ERROR;
    }
    std::unique_ptr<char[]> bytes(new char[static_cast<size_t>(length) + 1]);
    u_strToUTF8(bytes.get(), length + 1, &length, units.c_str(), -1, &error);
    if (U_FAILURE(error)) state.SkipWithError("u_strToUTF8 failed");
    benchmark::DoNotOptimize(bytes.get());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

#endif  // KI_HAVE_ICU

// Every side runs on both texts; times in microseconds.
[[maybe_unused]] const bool kRegistered = [] {
  for (kiTextKind kind : {kAscii, kMixed}) {
    const std::string text = std::string("/") + TextName(kind);
    benchmark::RegisterBenchmark(("BM_ToString/ki" + text).c_str(), ToStringKi, kind)
        ->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark(("BM_ToUTF8/ki" + text).c_str(), ToUTF8Ki, kind)
        ->Unit(benchmark::kMicrosecond);
#if defined(KI_HAVE_ICU)
    for (bool preflight : {true, false}) {
      const std::string side = preflight ? "/icu" : "/icu_maxbuf";
      benchmark::RegisterBenchmark(("BM_ToString" + side + text).c_str(), ToStringIcu, kind,
                                   preflight)
          ->Unit(benchmark::kMicrosecond);
      benchmark::RegisterBenchmark(("BM_ToUTF8" + side + text).c_str(), ToUTF8Icu, kind, preflight)
          ->Unit(benchmark::kMicrosecond);
    }
#endif
  }
  return true;
}();

}  // namespace
