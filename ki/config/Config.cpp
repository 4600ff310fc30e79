// Config.cpp - kiConfig over the kiConfigFile record: file names, typed
// getters and setters, %-variable substitution; and kiConfigConfig, the
// bootstrap file with the configuration's paths and the branding values.
#include "ki/config/Config.h"

#include <cstring>

#include "ki/core/Convert.h"
#include "ki/proc/kiConfigFile.h"
#include "ki/proc/kiDir.h"
#include "ki/proc/kiLog.h"
#include "ki/proc/kiMem.h"
#include "ki/proc/kiPlatform.h"

KI_LOG_SOURCE("config/Config")

// The product family's application-identifier prefix is branding: the
// integrator defines it when building ki (-DKI_BRAND_APPSET="com.example.").
#ifndef KI_BRAND_APPSET
#define KI_BRAND_APPSET "org.ki.app."
#endif

namespace {

constexpr long kNoNarrowValue = 0x7fffffff;

// UTF-8 when the text is valid UTF-8, else one character per byte (Latin-1).
kiString Widen(const char* text) {
  if (text == nullptr || *text == '\0') return kiString();
  const kiWCharBuffer utf16 = kiConvUTF8.ToString(text);
  if (utf16.data() != nullptr) return kiString(utf16.data());
  const unsigned int n = static_cast<unsigned int>(std::strlen(text));
  kiString wide;
  kiWChar* out = wide.GetWriteBuf(n);
  for (unsigned int i = 0; i < n; ++i) out[i] = static_cast<unsigned char>(text[i]);
  out[n] = 0;
  wide.UngetWriteBuf(n);
  return wide;
}

// The value of name from lookup, else from the environment for "env.*";
// a new kiMem_* block or null.
char* LookUp(const char* name, char* (*lookup)(char*, void*)) {
  char* value = nullptr;
  if (lookup != nullptr) {
    char* copy = kiMem_Strdup(name);  // writable: the signature allows the lookup to use it
    value = lookup(copy, nullptr);
    if (value != copy) kiMem_Free(copy);  // a lookup answering its argument hands it back
  }
  if (value == nullptr && std::strncmp(name, "env.", 4) == 0) value = kiPlatform_GetEnv(name + 4);
  return value;
}

}  // namespace

// ---- kiConfig ---------------------------------------------------------------

kiConfig::kiConfig(const kiCString& readDir, const kiCString& writeDir, const kiCString& fileName) {
  const kiCString readOnly = GetValidPath(readDir, fileName, "");
  const kiCString readWrite =
      writeDir.IsEmpty() ? kiCString() : GetValidPath(writeDir, fileName, "_");
  m_configFile = kiConfigFile_Open(readOnly, readWrite.IsEmpty() ? nullptr : readWrite.c_str());
}

kiConfig::~kiConfig() { kiConfigFile_Close(m_configFile); }

kiCString kiConfig::GetValidPath(const kiCString& dir, const kiCString& file, const char* prefix) {
  kiCString path = dir.IsEmpty() ? kiCString("./") : dir;
  kiCString name = file;
  path.Replace("\\", "/");
  name.Replace("\\", "/");
  if (path.Last() != '/') path += '/';
  path += prefix;  // null adds nothing
  path += name.AfterLast('/');
  return path;
}

kiCString kiConfig::GetCString(const char* section, const char* key, const kiCString& def) {
  if (key == nullptr) return def;
  int found = 0;
  return kiCString(kiConfigFile_Get(m_configFile, section, key, def.c_str(), &found));
}

kiString kiConfig::GetString(const char* section, const char* key, const kiString& def) {
  if (key == nullptr) return def;
  int found = 0;
  const char* value = kiConfigFile_Get(m_configFile, section, key, "", &found);
  return found != 0 && value != nullptr ? Widen(value) : def;
}

kiCString kiConfig::GetCStringWithSubstitution(const char* section, const char* key,
                                               const kiCString& def,
                                               char* (*lookup)(char* name, void* context)) {
  const kiCString value = GetCString(section, key, def);
  kiCString result;
  unsigned int at = 0;
  while (at < value.length()) {
    const unsigned int open = value.FindFirstOf("%", at);
    const unsigned int close = open == kiNPos ? kiNPos : value.FindFirstOf("%", open + 1);
    if (close == kiNPos) break;  // an unpaired '%' stays with the rest
    result += value.Mid(at, open - at);
    if (close == open + 1) {
      result += '%';
    } else {
      char* found = LookUp(value.Mid(open + 1, close - open - 1), lookup);
      result += found;  // null adds nothing: the variable is removed
      kiMem_Free(found);
    }
    at = close + 1;
  }
  result += value.Mid(at);
  return result;
}

long kiConfig::GetInt32(const char* section, const char* key, long def) {
  if (key == nullptr) return def;
  return kiConfigFile_GetInt32(m_configFile, section, key, def);
}

unsigned long kiConfig::GetUInt32(const char* section, const char* key, unsigned long def) {
  if (key == nullptr) return def;
  return kiConfigFile_GetUInt32(m_configFile, section, key, def);
}

short kiConfig::GetInt16(const char* section, const char* key, short def) {
  const long value = GetInt32(section, key, kNoNarrowValue);
  return value >= -32768 && value <= 32767 ? static_cast<short>(value) : def;
}

signed char kiConfig::GetInt8(const char* section, const char* key, signed char def) {
  const long value = GetInt32(section, key, kNoNarrowValue);
  return value >= -128 && value <= 127 ? static_cast<signed char>(value) : def;
}

unsigned short kiConfig::GetUInt16(const char* section, const char* key, unsigned short def) {
  const long value = GetInt32(section, key, kNoNarrowValue);
  return value >= 0 && value <= 65535 ? static_cast<unsigned short>(value) : def;
}

unsigned char kiConfig::GetUInt8(const char* section, const char* key, unsigned char def) {
  const long value = GetInt32(section, key, kNoNarrowValue);
  return value >= 0 && value <= 255 ? static_cast<unsigned char>(value) : def;
}

bool kiConfig::OptionIsSet(const char* section, const char* key, bool def) {
  if (key == nullptr) return def;
  return kiConfigFile_GetBool(m_configFile, section, key, def ? 1 : 0) != 0;
}

bool kiConfig::SetString(const char* section, const char* key, const kiCString& value) {
  return key != nullptr && kiConfigFile_Set(m_configFile, section, key, value.c_str()) == 1;
}

bool kiConfig::SetString(const char* section, const char* key, const kiString& value) {
  const kiCharBuffer utf8 = kiConvUTF8.ToUTF8(value.c_str());
  return key != nullptr && utf8.data() != nullptr &&
         kiConfigFile_Set(m_configFile, section, key, utf8.data()) == 1;
}

bool kiConfig::SetInt32(const char* section, const char* key, long value) {
  return key != nullptr && kiConfigFile_SetInt32(m_configFile, section, key, value) == 1;
}

bool kiConfig::SetUInt32(const char* section, const char* key, unsigned long value) {
  return key != nullptr && kiConfigFile_SetUInt32(m_configFile, section, key, value) == 1;
}

bool kiConfig::DeleteKey(const char* section, const char* key) {
  return key != nullptr && kiConfigFile_DeleteKey(m_configFile, section, key) == 1;
}

bool kiConfig::DeleteSection(const char* section) {
  return kiConfigFile_DeleteSection(m_configFile, section) == 1;
}

void kiConfig::Reset() { kiConfigFile_ClearReadWrite(m_configFile); }

bool kiConfig::Save() { return kiConfigFile_Save(m_configFile) == 1; }

unsigned kiConfig::GetSectionCount(bool readOnly) {
  return kiConfigFile_GetSectionCount(m_configFile, readOnly ? 1 : 0);
}

kiCString kiConfig::GetSectionName(unsigned index, bool readOnly) {
  return kiCString(kiConfigFile_GetSectionName(m_configFile, index, readOnly ? 1 : 0));
}

unsigned kiConfig::GetKeyCount(const char* section, bool readOnly) {
  return kiConfigFile_GetKeyCount(m_configFile, section, readOnly ? 1 : 0);
}

kiString kiConfig::GetKeyName(const char* section, unsigned index, bool readOnly) {
  return Widen(kiConfigFile_GetKeyName(m_configFile, section, index, readOnly ? 1 : 0));
}

kiCString kiConfig::GetKeyNameCString(const char* section, unsigned index, bool readOnly) {
  return kiCString(kiConfigFile_GetKeyName(m_configFile, section, index, readOnly ? 1 : 0));
}

// ---- kiConfigConfig ---------------------------------------------------------

kiConfigConfig::kiConfigConfig(const char* fileName)
    : kiConfig("./", "", fileName != nullptr && *fileName != '\0' ? fileName : "ConfigPath.ini") {}

bool kiConfigConfig::GetPaths(kiCString& readPath, kiCString& writePath) {
  readPath = GetCString(nullptr, "ReadPath", kiCString());
  writePath = GetCString(nullptr, "WritePath", kiCString());
  if (!readPath.IsEmpty() && !writePath.IsEmpty()) return true;
  KI_LOG(kiLogLevel_Error, kiLogCat_ConfigFile,
         "kiConfigConfig: Cannot get paths (RO = '%s', RW = '%s')\n", readPath.c_str(),
         writePath.c_str());
  return false;
}

bool kiConfigConfig::GetAndCheckPaths(kiCString& readPath, kiCString& writePath) {
  readPath = GetCString(nullptr, "ReadPath", "./");
  writePath = GetCString(nullptr, "WritePath", "./");
  const bool readMade = kiDir_CreateRecursively(readPath) == 0;
  const bool writeMade = kiDir_CreateRecursively(writePath) == 0;
  if (readMade && writeMade) return true;
  KI_LOG(kiLogLevel_Error, kiLogCat_ConfigFile,
         "kiConfigConfig: Cannot get checked paths (RO = '%s', RW = '%s')\n", readPath.c_str(),
         writePath.c_str());
  return false;
}

bool kiConfigConfig::GetConfigPaths(kiCString& readPath, kiCString& writePath,
                                    const char* fileName) {
  kiConfigConfig config(fileName);
  return config.GetAndCheckPaths(readPath, writePath);
}

kiCString kiConfigConfig::GetBrandInfo(const char* item, const char* fileName) {
  const kiCString name(item);
  const char* def = nullptr;
  if (name.CompareNoCase("Tarn") == 0) {
    def = "kivo";
  } else if (name.CompareNoCase("AppSet") == 0) {
    def = KI_BRAND_APPSET;
  } else {
    return kiCString();
  }
  kiConfigConfig config(fileName);
  return config.GetCString("Brand", item, def);
}
