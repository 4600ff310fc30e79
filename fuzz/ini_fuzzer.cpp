// ini_fuzzer.cpp - kiINIFile: parse -> save -> load keeps every name and
// value that the file syntax can carry, and every getter and enumeration runs
// on whatever the parser made. The input is the INI text itself.
//
// What a save cannot carry, by design of the format, and is left out of the
// comparison: a line longer than 1023 bytes (cut), a value with tab, VT or FF
// at an end written without quotes (trimmed on reading), a name cut at 127
// bytes just after white space (trimmed on reading, so it may merge with
// another name), and a first line that starts with a byte-order mark. An
// entry "s/a/b" is also key "b" of a section "s/a": such keys may be longer
// than 127 bytes or start like a comment or a header, and are left out too.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "ki/proc/kiINIFile.h"
#include <kiLog/Log.h>

#include "FuzzInput.h"

namespace {

constexpr size_t kMaxInput = 16384;

using kiFuzz::Check;

bool IsSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool EndsInSpace(const char* s) { return *s != '\0' && IsSpace(s[std::strlen(s) - 1]); }

// Whether the line written for key reads as an entry: not a comment, not a
// header (a '[' first and a ']' anywhere in the line, the value included),
// not trimmed, not split at an '=' inside the key.
bool ReadsAsKey(const char* key, const std::string& line) {
  return !IsSpace(key[0]) && key[0] != ';' && key[0] != '#' && std::strchr(key, '=') == nullptr &&
         !(key[0] == '[' && line.find(']') != std::string::npos);
}

// The line the writer makes for key=value, without its CR LF.
std::string Written(const char* key, const char* value) {
  std::string line = std::string(key) + "=";
  if (std::strpbrk(value, " \"'#;\\") == nullptr) return line + value;
  line += '"';
  for (const char* p = value; *p != '\0'; ++p) {
    if (*p == '"' || *p == '\'' || *p == '\\') line += '\\';
    line += *p;
  }
  return line + '"';
}

// Whether the written line reads back as key=value.
bool Carried(const char* value, const std::string& line) {
  if (line.size() > 1021) return false;
  const bool quoted = std::strpbrk(value, " \"'#;\\") != nullptr;
  const size_t n = std::strlen(value);
  return quoted || n == 0 || (!IsSpace(value[0]) && !IsSpace(value[n - 1]));
}

// Every getter on every entry; the results only have to exist.
void TouchAll(const kiINIFile* ini) {
  for (unsigned s = 0; s <= kiINIFile_GetSectionCount(ini); ++s) {
    const char* section = kiINIFile_GetSectionName(ini, s);
    for (unsigned k = 0; k <= kiINIFile_GetKeyCount(ini, section); ++k) {
      const char* key = kiINIFile_GetKeyName(ini, section, k);
      (void)kiINIFile_GetInt32(ini, section, key, 0);
      (void)kiINIFile_GetUInt32(ini, section, key, 0);
      (void)kiINIFile_GetDouble(ini, section, key, 0);
      (void)kiINIFile_GetBool(ini, section, key, 0);
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool quiet = (kiLog_SetLevel(0), true);  // the boolean warning would flood
  (void)quiet;
  if (size > kMaxInput) return 0;
  kiINIFile* first = kiINIFile_New(0);
  Check(
      kiINIFile_Parse(reinterpret_cast<const char*>(data), static_cast<unsigned>(size), first) == 1,
      "parse refused a text");
  TouchAll(first);
  Check(kiINIFile_Save(kiFuzz::TempPath().c_str(), first) == 1, "save failed");
  kiINIFile* second = kiINIFile_New(0);
  Check(kiINIFile_Load(kiFuzz::TempPath().c_str(), second) == 1, "load failed");
  TouchAll(second);

  // Names that a save may merge or lose make the comparison meaningless.
  bool comparable = true;
  const unsigned sections = kiINIFile_GetSectionCount(first);
  for (unsigned s = 0; s < sections && comparable; ++s) {
    const char* section = kiINIFile_GetSectionName(first, s);
    comparable = !EndsInSpace(section);
    const unsigned keys = kiINIFile_GetKeyCount(first, section);
    for (unsigned k = 0; k < keys && comparable; ++k) {
      const char* key = kiINIFile_GetKeyName(first, section, k);
      // A key of a section named with '/' also shows under the parent
      // section, longer than a key read from a file may be.
      const char* value = kiINIFile_Get(first, section, key, "", nullptr);
      comparable = !EndsInSpace(key) && std::strlen(key) <= 127 &&
                   ReadsAsKey(key, Written(key, value)) &&
                   !(s == 0 && k == 0 && std::strncmp(key, "\xEF\xBB\xBF", 3) == 0);
    }
  }
  bool everyLineCarried = comparable;
  for (unsigned s = 0; s < sections && comparable; ++s) {
    const char* section = kiINIFile_GetSectionName(first, s);
    const unsigned keys = kiINIFile_GetKeyCount(first, section);
    for (unsigned k = 0; k < keys; ++k) {
      const char* key = kiINIFile_GetKeyName(first, section, k);
      const char* value = kiINIFile_Get(first, section, key, nullptr, nullptr);
      Check(value != nullptr, "a listed key is not found");
      if (!Carried(value, Written(key, value))) {
        everyLineCarried = false;
        continue;
      }
      int found = 0;
      const char* again = kiINIFile_Get(second, section, key, nullptr, &found);
      Check(found == 1, "an entry was lost by save and load");
      Check(std::strcmp(value, again) == 0, "a value changed through save and load");
    }
  }
  if (everyLineCarried) {
    // Nothing was made up either.
    for (unsigned s = 0; s < kiINIFile_GetSectionCount(second); ++s) {
      const char* section = kiINIFile_GetSectionName(second, s);
      for (unsigned k = 0; k < kiINIFile_GetKeyCount(second, section); ++k) {
        const char* key = kiINIFile_GetKeyName(second, section, k);
        int found = 0;
        const char* before = kiINIFile_Get(first, section, key, nullptr, &found);
        Check(found == 1, "save and load made an entry");
        Check(std::strcmp(before, kiINIFile_Get(second, section, key, "", nullptr)) == 0,
              "a value differs after save and load");
      }
    }
  }
  kiINIFile_Delete(second);
  kiINIFile_Delete(first);
  return 0;
}
