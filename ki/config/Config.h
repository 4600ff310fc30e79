// Config.h - kiConfig, an application's settings by section and key over one
// kiConfigFile (read-only defaults, read-write changes), and kiConfigConfig,
// the bootstrap file that says where the real configuration lives.
#ifndef KI_CONFIG_CONFIG_H
#define KI_CONFIG_CONFIG_H

#include "ki/Export.h"
#include "ki/core/CString.h"
#include "ki/core/String.h"

struct kiConfigFile;

// The settings of one configuration: a read-only file of defaults and, when a
// write directory is given, a read-write file of changes named like it with
// "_" in front. Getters look in the read-write file first, then in the
// read-only one, then answer the caller's default; setters, deletions and
// Reset touch only the read-write file and fail without one. Nothing reaches
// the disk before Save.
//
// Section and key names are narrow (UTF-8) and case-insensitive; a null or
// empty section is the default section. A null key finds nothing: getters
// answer the default, setters and DeleteKey answer false. Integers keep
// their 32-bit meaning whatever the size of long. Not copyable; not locked;
// nothing throws.
class KI_API kiConfig {
 public:
  // The read-only file is GetValidPath(readDir, fileName, ""); the read-write
  // file GetValidPath(writeDir, fileName, "_") when writeDir is not empty,
  // else there is none. Relative directories are anchored at the
  // application's directory, as every path in ki. Missing files read as
  // empty; how the files are read and written is kiConfigFile's business.
  kiConfig(const kiCString& readDir, const kiCString& writeDir, const kiCString& fileName);
  virtual ~kiConfig();
  kiConfig(const kiConfig&) = delete;
  kiConfig& operator=(const kiConfig&) = delete;

  // dir ("./" when empty) and the bare name of file (what follows its last
  // separator) joined by one '/', with prefix (null: none) before the name.
  // Every '\\' becomes '/' first, so "C:\cfg", "sub\app.ini" and "_" give
  // "C:/cfg/_app.ini". An empty file gives the directory followed by the
  // prefix. Pure text: nothing is checked on the disk.
  static kiCString GetValidPath(const kiCString& dir, const kiCString& file, const char* prefix);

  // ---- Getters ------------------------------------------------------------
  kiCString GetCString(const char* section, const char* key, const kiCString& def);
  // The value read as UTF-8; a value that is not valid UTF-8 is read byte by
  // byte as Latin-1 (intended: older files were written in a code page, and
  // their text should not turn into the default).
  kiString GetString(const char* section, const char* key, const kiString& def);

  // The value (or def) with its %-variables replaced, left to right: the
  // text between two '%' is a name, given to lookup (when not null) as a
  // writable copy with a null context; lookup answers a new kiMem_* block
  // (freed here with kiMem_Free) or null. When it answers null and the name
  // starts with "env." (exactly so), the environment variable named by the
  // rest is used. The pair of '%' and the name become the answer, or nothing
  // when there is none; "%%" becomes "%". Inserted text is not scanned again;
  // an unpaired '%' stays as it is.
  kiCString GetCStringWithSubstitution(const char* section, const char* key, const kiCString& def,
                                       char* (*lookup)(char* name, void* context));

  // The number as kiConfigFile reads it (32-bit range), or def.
  long GetInt32(const char* section, const char* key, long def);
  unsigned long GetUInt32(const char* section, const char* key, unsigned long def);
  // GetInt32 with the default 0x7fffffff, kept when it lies in the type's
  // range, else def: an absent key, a value out of range and a stored
  // 2147483647 all give def.
  short GetInt16(const char* section, const char* key, short def);
  signed char GetInt8(const char* section, const char* key, signed char def);
  unsigned short GetUInt16(const char* section, const char* key, unsigned short def);
  unsigned char GetUInt8(const char* section, const char* key, unsigned char def);
  // A boolean value as kiConfigFile reads it, or def.
  bool OptionIsSet(const char* section, const char* key, bool def);

  // ---- Changes (read-write file only; false without one) -------------------
  bool SetString(const char* section, const char* key, const kiCString& value);
  bool SetString(const char* section, const char* key, const kiString& value);  // as UTF-8
  bool SetInt32(const char* section, const char* key, long value);              // "%ld"
  bool SetUInt32(const char* section, const char* key, unsigned long value);    // "%lu"
  // True also when there was nothing to remove.
  bool DeleteKey(const char* section, const char* key);
  bool DeleteSection(const char* section);
  // Throws away every change held in memory: the read-write table becomes
  // empty, so the read-only values show again (and an empty read-write file
  // is written by the next Save). Nothing without a read-write file.
  void Reset();
  // Commits the read-write file (kiConfigFile_Save); false on failure and,
  // silently, without a read-write file.
  bool Save();

  // ---- Enumeration of one file (readOnly true: the read-only one) ----------
  // Without a read-write file its count is 0. Names past the end are empty;
  // the default section is named "". Key names are read like GetString.
  unsigned GetSectionCount(bool readOnly);
  kiCString GetSectionName(unsigned index, bool readOnly);
  unsigned GetKeyCount(const char* section, bool readOnly);
  kiString GetKeyName(const char* section, unsigned index, bool readOnly);
  kiCString GetKeyNameCString(const char* section, unsigned index, bool readOnly);

  // The owned record; never null, valid as long as this object.
  kiConfigFile* GetConfigFile() { return m_configFile; }

 private:
  kiConfigFile* m_configFile;  // owned
};

// A read-only kiConfig over a small bootstrap file in the application's
// directory that names the configuration's directories in its default
// section ("ReadPath", "WritePath") and holds branding values in section
// "Brand". Its messages are logged at level 1, category kiLogCat_ConfigFile.
class KI_API kiConfigConfig : public kiConfig {
 public:
  // kiConfig("./", "", fileName): only the bare name of fileName counts; null
  // or empty is "ConfigPath.ini".
  explicit kiConfigConfig(const char* fileName = "ConfigPath.ini");

  // "ReadPath" and "WritePath" (default empty) into the arguments, in every
  // case. False when either is empty, logged as
  // "kiConfigConfig: Cannot get paths (RO = '%s', RW = '%s')\n".
  bool GetPaths(kiCString& readPath, kiCString& writePath);
  // The same keys with the default "./" (the application's directory), into
  // the arguments in every case; both directories are then created with
  // their missing parents (kiDir_CreateRecursively, which logs its own
  // failure; the second is tried even when the first fails). False when
  // either cannot be made, logged as
  // "kiConfigConfig: Cannot get checked paths (RO = '%s', RW = '%s')\n".
  bool GetAndCheckPaths(kiCString& readPath, kiCString& writePath);

  // kiConfigConfig(fileName).GetAndCheckPaths(readPath, writePath).
  static bool GetConfigPaths(kiCString& readPath, kiCString& writePath,
                             const char* fileName = "ConfigPath.ini");
  // A branding value of section "Brand" of the file: item "Tarn" (default
  // "kivo") or "AppSet" (default the product family's reverse-domain
  // application-identifier prefix, ending in '.': KI_BRAND_APPSET when ki is
  // built, else "org.ki.app."). Items are matched ignoring case; any other
  // item, and null, gives the empty string without reading the file.
  static kiCString GetBrandInfo(const char* item, const char* fileName = "ConfigPath.ini");
};

#endif  // KI_CONFIG_CONFIG_H
