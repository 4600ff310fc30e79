// packed_data_fuzzer.cpp - the text form of packed data on arbitrary input:
// any text reads back without fault, the writer's text is plain ASCII with
// well-formed escapes, and bytes come back whole through it.
#include <cstring>
#include <string>

#include "ki/serialize/PackedData.h"
#include <kiLog/Log.h>

#include "FuzzInput.h"

namespace {

constexpr size_t kMaxInput = 4096;

bool IsUpperHex(char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F'); }

bool IsHex(char c) { return IsUpperHex(c) || (c >= 'a' && c <= 'f'); }

std::string Bytes(const kiDataBuffer& buffer) {
  return std::string(reinterpret_cast<const char*>(buffer.data()), buffer.size());
}

// Any text: the answer says whether every '%' began an escape, and the bytes
// never outnumber the characters.
void CheckReader(const std::string& input) {
  const char* text = input.c_str();  // up to the first zero byte
  const size_t length = std::strlen(text);
  bool wellFormed = true;
  size_t escapes = 0;
  for (size_t i = 0; i < length; ++i) {
    if (text[i] != '%') continue;
    if (IsHex(text[i + 1]) && IsHex(text[i + 2])) {
      ++escapes;
      i += 2;
    } else {
      wellFormed = false;
    }
  }
  kiDataBuffer out;
  const bool clean = kiPackedData_FromText(text, out);
  kiFuzz::Check(clean == wellFormed, "answer matches the escapes");
  kiFuzz::Check(out.size() == length - 2 * escapes, "one byte per escape or character");
  kiFuzz::Check((out.size() == 0) == (out.data() == nullptr), "empty means no block");

  kiDataBuffer again;
  kiFuzz::Check(kiPackedData_FromText(kiPackedData_ToText(out.data(), out.size()), again),
                "the writer's text reads cleanly");
  kiFuzz::Check(Bytes(again) == Bytes(out), "bytes read come back through the writer");
}

void CheckWriter(const std::string& bytes) {
  const kiCString text = kiPackedData_ToText(bytes.data(), static_cast<unsigned int>(bytes.size()));
  kiFuzz::Check(std::strlen(text.c_str()) == text.length(), "text has no zero byte");
  for (unsigned int i = 0; i < text.length(); ++i) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    kiFuzz::Check(c >= 0x20 && c <= 0x7E && c != '"' && c != '\\', "printable ASCII only");
    if (c == '%') {
      kiFuzz::Check(i + 2 < text.length() && IsUpperHex(text[i + 1]) && IsUpperHex(text[i + 2]),
                    "escape of two upper-case digits");
      i += 2;
    }
  }
  kiDataBuffer back;
  kiFuzz::Check(kiPackedData_FromText(text, back), "own text reads cleanly");
  kiFuzz::Check(Bytes(back) == bytes, "round trip");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  kiLog_SetLevel(0);  // every bad escape would be logged
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > kMaxInput) return 0;
  const std::string input(reinterpret_cast<const char*>(data), size);
  CheckReader(input);
  CheckWriter(input);
  return 0;
}
