// utf8_roundtrip_fuzzer.cpp - kiUTF8Convert beside a reference decoder and
// encoder written plainly from the rules, and the round trips between UTF-8,
// UTF-16 and native wchar_t.
//
// The input is read three ways, each cut at its first zero and copied into a
// heap block of exactly its size (so a read past the terminator is caught):
// as UTF-8 bytes, as UTF-16 units, and as wchar_t values.
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "ki/core/Convert.h"

#include "FuzzInput.h"

namespace {

constexpr size_t kMaxInput = 4096;

using kiFuzz::Check;

// data read as C items, up to the first zero, in a heap block of exactly that
// size with a terminator.
template <typename C>
std::unique_ptr<C[]> Exact(const uint8_t* data, size_t size) {
  const size_t count = size / sizeof(C);
  std::vector<C> items(count);
  if (count != 0) std::memcpy(items.data(), data, count * sizeof(C));
  size_t n = 0;
  while (n < count && items[n] != 0) ++n;
  std::unique_ptr<C[]> text(new C[n + 1]);
  for (size_t i = 0; i < n; ++i) text[i] = items[i];
  text[n] = 0;
  return text;
}

template <typename C>
bool Same(const C* a, const std::basic_string<C>& b) {
  return a != nullptr && std::basic_string<C>(a) == b;
}

// The decoding rule, one byte at a time with no shortcut: n leading ones, n - 1
// continuation bytes, the overlong limit of the length, nothing past 0x10FFFF.
// 0xFF (n = 8) gets the largest 7-byte value as its limit; it fails either way.
bool ReferenceDecode(const std::string& bytes, std::u16string* units, bool* surrogate) {
  static const uint64_t kLimit[9] = {0,        0,         0x7F,       0x7FF,      0xFFFF,
                                     0x1FFFFF, 0x3FFFFFF, 0x7FFFFFFF, 0xFFFFFFFFF};
  for (size_t i = 0; i < bytes.size();) {
    const unsigned int lead = static_cast<uint8_t>(bytes[i]);
    int n = 0;
    while (n < 8 && (lead & (0x80u >> n)) != 0) ++n;
    if (n == 0) {
      units->push_back(static_cast<char16_t>(lead));
      ++i;
      continue;
    }
    if (n == 1) return false;
    uint64_t value = lead & (0x3Fu >> (n - 1));
    for (int k = 1; k < n; ++k) {
      if (i + k >= bytes.size()) return false;
      const unsigned int b = static_cast<uint8_t>(bytes[i + k]);
      if ((b & 0xC0) != 0x80) return false;
      value = (value << 6) | (b & 0x3F);
    }
    if (value <= kLimit[n] || value >= 0x110000) return false;
    if (value >= 0xD800 && value <= 0xDFFF) *surrogate = true;
    if (value < 0x10000) {
      units->push_back(static_cast<char16_t>(value));
    } else {
      units->push_back(static_cast<char16_t>(0xD800 + ((value - 0x10000) >> 10)));
      units->push_back(static_cast<char16_t>(0xDC00 + (value & 0x3FF)));
    }
    i += n;
  }
  return true;
}

void AppendUTF8(uint32_t cp, std::string* out) {
  if (cp < 0x80) {
    out->push_back(static_cast<char>(cp));
  } else if (cp < 0x800) {
    out->push_back(static_cast<char>(0xC0 | (cp >> 6)));
    out->push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else if (cp < 0x10000) {
    out->push_back(static_cast<char>(0xE0 | (cp >> 12)));
    out->push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else {
    out->push_back(static_cast<char>(0xF0 | (cp >> 18)));
    out->push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  }
}

// UTF-16 as code points: valid pairs joined, any other unit as it is.
std::vector<uint32_t> CodePoints(const std::u16string& units) {
  std::vector<uint32_t> cps;
  for (size_t i = 0; i < units.size(); ++i) {
    const uint32_t u = units[i];
    if (u >= 0xD800 && u < 0xDC00 && i + 1 < units.size() && units[i + 1] >= 0xDC00 &&
        units[i + 1] < 0xE000) {
      cps.push_back(0x10000 + ((u - 0xD800) << 10) + (units[i + 1] - 0xDC00u));
      ++i;
    } else {
      cps.push_back(u);
    }
  }
  return cps;
}

void CheckUTF8(const uint8_t* data, size_t size) {
  const std::unique_ptr<char[]> text = Exact<char>(data, size);
  const std::string bytes(text.get());
  std::u16string expected;
  bool surrogate = false;
  const bool valid = ReferenceDecode(bytes, &expected, &surrogate);
  const kiWCharBuffer units = kiConvUTF8.ToString(text.get());
  Check(valid == (units.data() != nullptr), "the decoder and the reference disagree on validity");
  const kiWXCharBuffer wide = kiConvUTF8.cMB2WX(text.get());
  Check(valid == (wide.data() != nullptr), "cMB2WX and ToString disagree on validity");
  if (!valid) return;
  Check(Same(units.data(), expected), "the decoder and the reference give different units");
  const kiCharBuffer back = kiConvUTF8.ToUTF8(units);
  // Without surrogate values every accepted sequence is the shortest form.
  if (!surrogate) Check(Same(back.data(), bytes), "UTF-8 -> UTF-16 -> UTF-8 changed the text");
  const kiWXCharBuffer viaUnits = kiConvUTF8.cWC2WX(units);
  Check(Same(wide.data(), std::wstring(viaUnits.data())), "cMB2WX is not cWC2WX of ToString");
}

void CheckUTF16(const uint8_t* data, size_t size) {
  const std::unique_ptr<char16_t[]> text = Exact<char16_t>(data, size);
  const std::u16string units(text.get());
  std::string expected;
  std::wstring wideExpected;
  for (uint32_t cp : CodePoints(units)) {
    AppendUTF8(cp, &expected);
    wideExpected.push_back(static_cast<wchar_t>(cp));
  }
  const kiCharBuffer utf8 = kiConvUTF8.ToUTF8(text.get());
  Check(Same(utf8.data(), expected), "the encoder and the reference give different bytes");
  Check(Same(kiConvUTF8.ToString(utf8).data(), units),
        "UTF-16 -> UTF-8 -> UTF-16 changed the text");
  const kiWXCharBuffer wide = kiConvUTF8.cWC2WX(text.get());
  Check(Same(wide.data(), wideExpected), "cWC2WX joined the wrong units");
  Check(Same(kiConvUTF8.cWX2WC(wide).data(), units),
        "UTF-16 -> wchar_t -> UTF-16 changed the text");
  Check(Same(kiConvUTF8.cWX2MB(wide).data(), expected), "cWX2MB differs from ToUTF8");
}

void CheckWide(const uint8_t* data, size_t size) {
  const std::unique_ptr<wchar_t[]> text = Exact<wchar_t>(data, size);
  bool valid = true;
  std::u16string expected;
  for (const wchar_t* p = text.get(); *p != 0; ++p) {
    // A negative wchar_t reads as past 0x7FFFFFFF, so it is invalid too.
    const uint32_t v = static_cast<uint32_t>(*p);  // NOLINT(bugprone-signed-char-misuse)
    if (v >= 0x110000) {
      valid = false;
    } else if (v >= 0x10000) {
      expected.push_back(static_cast<char16_t>(0xD800 + ((v - 0x10000) >> 10)));
      expected.push_back(static_cast<char16_t>(0xDC00 + (v & 0x3FF)));
    } else {
      expected.push_back(static_cast<char16_t>(v));
    }
  }
  const kiWCharBuffer units = kiConvUTF8.cWX2WC(text.get());
  const kiCharBuffer utf8 = kiConvUTF8.cWX2MB(text.get());
  Check(valid == (units.data() != nullptr), "cWX2WC accepted a value past 0x10FFFF or refused one");
  Check(valid == (utf8.data() != nullptr), "cWX2MB and cWX2WC disagree on validity");
  if (!valid) return;
  Check(Same(units.data(), expected), "cWX2WC gives the wrong units");
  Check(Same(utf8.data(), std::string(kiConvUTF8.ToUTF8(units).data())),
        "cWX2MB is not ToUTF8 of cWX2WC");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > kMaxInput) return 0;
  CheckUTF8(data, size);
  CheckUTF16(data, size);
  CheckWide(data, size);
  return 0;
}
