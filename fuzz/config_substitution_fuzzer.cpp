// config_substitution_fuzzer.cpp - kiConfig's %-variable substitution and
// its file names: the substituted text matches a plain model of the rules
// (lookup first, then "env.", "%%", unpaired '%' kept, inserted text never
// scanned again), and GetValidPath always ends in the prefix and a bare name.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "ki/config/Config.h"
#include "ki/proc/kiMem.h"
#include "ki/proc/kiPlatform.h"

#include "FuzzInput.h"

namespace {

constexpr size_t kMaxInput = 4096;

using kiFuzz::Check;

// Names starting with an odd byte answer themselves reversed between '%'
// signs, so that an inserted text holds pairs that must not be scanned.
std::string Answer(const std::string& name) {
  return "%" + std::string(name.rbegin(), name.rend()) + "%";
}

char* Lookup(char* name, void* context) {
  Check(context == nullptr, "a context was passed");
  if ((static_cast<unsigned char>(name[0]) & 1) == 0) return nullptr;
  return kiMem_Strdup(Answer(name).c_str());
}

std::string Model(const std::string& value, bool withLookup) {
  std::string out;
  size_t at = 0;
  for (;;) {
    const size_t open = value.find('%', at);
    const size_t close = open == std::string::npos ? open : value.find('%', open + 1);
    if (close == std::string::npos) break;
    out += value.substr(at, open - at);
    const std::string name = value.substr(open + 1, close - open - 1);
    if (name.empty()) {
      out += '%';
    } else if (withLookup && (static_cast<unsigned char>(name[0]) & 1) != 0) {
      out += Answer(name);
    } else if (name.compare(0, 4, "env.") == 0) {
      const char* env = std::getenv(name.c_str() + 4);
      if (env != nullptr) out += env;
    }
    at = close + 1;
  }
  return out + value.substr(at);
}

kiConfig& Config() {
  static kiConfig* config = [] {
    kiPlatform_SetEnv("KIFZ", "%env.KIFZ%");
    kiPlatform_SetEnv("A", "a%%");
    return new kiConfig("/nonexistent-ki-fuzz", "", "fuzz.ini");
  }();
  return *config;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > kMaxInput) return 0;
  kiFuzz::Reader in(data, size);
  const bool withLookup = in.Flag();
  const std::string value = in.Until(0);
  const kiCString result =
      Config().GetCStringWithSubstitution("s", "k", value.c_str(), withLookup ? Lookup : nullptr);
  Check(std::string(result.c_str(), result.length()) == Model(value, withLookup),
        "substitution differs from the model");

  const std::string dir = in.Until(0);
  const std::string prefix = in.Until(0);
  const std::string file = in.Until(0);
  const kiCString path = kiConfig::GetValidPath(dir.c_str(), file.c_str(), prefix.c_str());
  std::string bare = file;
  for (char& c : bare) c = c == '\\' ? '/' : c;
  bare = bare.substr(bare.rfind('/') == std::string::npos ? 0 : bare.rfind('/') + 1);
  const std::string text(path.c_str(), path.length());
  const std::string tail = "/" + prefix + bare;
  Check(
      text.size() >= tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0,
      "the path does not end in '/', the prefix and the bare name");
  Check(text.find('\\', 0) == std::string::npos || prefix.find('\\') != std::string::npos,
        "a '\\' was left outside the prefix");
  Check(!dir.empty() || text.compare(0, 2, "./") == 0, "an empty directory is not \"./\"");
  return 0;
}
