// mediainfo_text_fuzzer.cpp - kiMediaInfo's text form. The whole input is read
// as text by DeserializeInfo and Peek (keys taken from the text's own lines)
// and checked against a plain model of the reading rules; then the same bytes
// drive Set calls, and a table whose keys and values the text form can carry
// must survive GetSerializedInfo -> DeserializeInfo, and Peek must agree with
// GetCString on the written text. Every getter and hook runs on the way.
//
// Set calls: one byte per call (kind and overwrite flag), then a key and a
// value, each a length byte (low 2 or 3 bits) and letters from a small
// alphabet holding '=', CR and LF, so carried and uncarried keys both occur.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <string>

#include "ki/proc/kiMem.h"
#include "ki/serialize/MediaInfo.h"

#include "FuzzInput.h"

namespace {

constexpr size_t kMaxInput = 4096;

using kiFuzz::Check;
using Model = std::map<std::string, std::string>;

bool IsBreak(char c) { return c == '\r' || c == '\n'; }

std::string Unescape(const std::string& value) {
  std::string out;
  for (size_t i = 0; i < value.size(); ++i) {
    out += value[i];
    if (value[i] == '=' && i + 1 < value.size() && value[i + 1] == '=') ++i;
  }
  return out;
}

// The reading rules, written for clarity rather than speed.
Model ReadModel(const std::string& text) {
  Model model;
  size_t lineStart = 0;
  size_t i = 0;
  while (i < text.size()) {
    const size_t eq = text.find('=', lineStart);
    if (eq == std::string::npos) break;  // a last line without '=' is dropped
    size_t end = eq + 1;
    while (end < text.size() && !IsBreak(text[end])) ++end;
    model[text.substr(lineStart, eq - lineStart)] = Unescape(text.substr(eq + 1, end - eq - 1));
    i = end + 1;
    if (i < text.size() && IsBreak(text[i])) ++i;
    lineStart = i;
  }
  return model;
}

// Peek's rule: the first line (split at "\n") that starts with key and '='.
bool PeekModel(const std::string& text, const std::string& key, std::string* value) {
  size_t start = 0;
  for (;;) {
    size_t end = text.find('\n', start);
    const std::string line = text.substr(start, end == std::string::npos ? end : end - start);
    if (line.compare(0, key.size() + 1, key + "=") == 0) {
      *value = Unescape(line.substr(key.size() + 1));
      return true;
    }
    if (end == std::string::npos) return false;
    start = end + 1;
  }
}

void CheckEntries(const kiMediaInfo& info, const Model& model, const char* what) {
  Check(info.GetCount() == model.size(), what);
  for (const auto& entry : model) {
    Check(info.GetCString(entry.first.c_str(),
                          "\x01"
                          "absent") == entry.second.c_str(),
          what);
  }
}

void TouchAll(kiMediaInfo& info, const char* key) {
  (void)info.GetCString(key, "d");
  (void)info.GetString(key, kiString());
  (void)info.GetInt(key, 1);
  (void)info.GetUInt32(key, 1);
  (void)info.GetFloat(key, 1.0f);
  (void)info.GetUInt64(key, kiuint64(1));
  (void)info.GetFixedField(key);
}

void TouchHooks(kiMediaInfo& info) {
  (void)info.HasInfo();
  (void)info.Validate();
  (void)info.GetMediaInfoAsString(", ");
  std::unique_ptr<kiMediaInfo> twin(info.Duplicate());
  Check(twin->GetCount() == info.GetCount(), "Duplicate lost entries");
  const kiCString before = info.GetCString("twin", "\x01");
  twin->Set("twin", "\x02");
  Check(info.GetCString("twin", "\x01") == before, "Duplicate shares the table");
  kiMediaInfo shared(info);
  shared.SetFolder("/f");
  (void)shared.Finalize(true);
  Check(info.GetCount() == shared.GetCount(), "copies do not share the table");
}

class Reader : public kiFuzz::Reader {
 public:
  using kiFuzz::Reader::Reader;
  std::string Word(int mask) {
    static const char kAlphabet[] = "abtircgen=\r\n==xy";  // "ti", "cr", "ge", "an" occur
    std::string word;
    for (int n = Byte() & mask; n > 0; --n) word += kAlphabet[Byte() & 15];
    return word;
  }
};

bool Carried(const std::string& key, const std::string& value) {
  static const char* const kFixed[] = {"ti", "cr", "ge", "an"};
  for (const char* fixed : kFixed) {
    if (key == fixed) return false;
  }
  return key.find_first_of("=\r\n") == std::string::npos &&
         value.find_first_of("\r\n") == std::string::npos;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > kMaxInput) return 0;
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  const std::string text = bytes.c_str();  // what a C string of the input holds

  // ---- The input as text ----
  kiMediaInfo read;
  read.DeserializeInfo(text.c_str());
  CheckEntries(read, ReadModel(text), "DeserializeInfo differs from the reading rules");
  size_t start = 0;
  for (int keys = 0; keys < 64 && start <= text.size(); ++keys) {
    size_t end = text.find_first_of("=\n", start);
    if (end == std::string::npos) end = text.size();
    const std::string key = text.substr(start, end - start);
    TouchAll(read, key.c_str());
    std::string expected;
    const bool found = PeekModel(text, key, &expected);
    char* peeked = kiMediaInfo::Peek(text.c_str(), key.c_str());
    Check(found == (peeked != nullptr), "Peek finds what the rule does not, or misses it");
    Check(!found || expected == peeked, "Peek reads another value");
    kiMem_Free(peeked);
    start = end + 1;
  }
  TouchHooks(read);

  // ---- Set calls and the round trip ----
  Reader in(data, size);
  kiMediaInfo built;
  Model model;
  bool carried = true;
  while (!in.AtEnd()) {
    const uint8_t op = in.Byte();
    const bool overwrite = (op & 8) != 0;
    const std::string key = in.Word(3);
    std::string value = in.Word(7);
    switch (op & 7) {
      case 1: {
        const int n = static_cast<int>(in.Byte()) - 128;
        value = std::to_string(n);
        built.Set(key.c_str(), n, overwrite);
        break;
      }
      case 2: {
        float f;
        uint32_t b = static_cast<uint32_t>(in.Byte()) << 24;
        b |= static_cast<uint32_t>(in.Byte()) << 16;
        b |= in.Byte();
        std::memcpy(&f, &b, sizeof f);
        built.Set(key.c_str(), f, overwrite);
        value = built.GetCString(key.c_str(), value.c_str()).c_str();
        if (overwrite && Carried(key, value)) {
          const float back = built.GetFloat(key.c_str());
          Check(std::memcmp(&back, &f, sizeof f) == 0 || std::isnan(f),
                "a float does not read back");
        }
        break;
      }
      case 3:
        built.Remove(key.c_str());
        model.erase(key);
        continue;
      default:
        built.Set(key.c_str(), value.c_str(), overwrite);
        break;
    }
    if (!Carried(key, value)) {
      carried = carried && (key == "ti" || key == "cr" || key == "ge" || key == "an");
      if (!carried) break;
      continue;
    }
    auto it = model.find(key);
    if (overwrite || it == model.end() || it->second.empty()) model[key] = value;
    TouchAll(built, key.c_str());
  }
  if (!carried) return 0;
  CheckEntries(built, model, "Set stored another value");
  const kiCString written = built.GetSerializedInfo();
  kiMediaInfo back;
  back.DeserializeInfo(written);
  CheckEntries(back, model, "the text form lost or changed an entry");
  for (const auto& entry : model) {
    char* peeked = kiMediaInfo::Peek(written, entry.first.c_str());
    Check(peeked != nullptr && entry.second == peeked, "Peek disagrees with GetCString");
    kiMem_Free(peeked);
  }
  TouchHooks(built);
  return 0;
}
