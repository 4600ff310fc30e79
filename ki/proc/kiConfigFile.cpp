// kiConfigFile.cpp - the read-only/read-write pair of INI tables and the
// crash-safe commit of the read-write file through ".tmp" and ".ok".
#include "ki/proc/kiConfigFile.h"

#include <atomic>
#include <cstring>

#include "ki/proc/kiConfigFile_p.h"
#include "ki/proc/kiDir.h"
#include "ki/proc/kiFile.h"
#include "ki/proc/kiINIFile.h"
#include "ki/proc/kiINIFile_p.h"
#include "ki/proc/kiLog.h"
#include "ki/proc/kiMem.h"
#include "ki/proc/kiPath.h"

KI_LOG_SOURCE("proc/kiConfigFile")

struct kiConfigFile {
  char* readOnlyPath;    // absolute, or null
  char* readWritePath;   // absolute, or null
  char* givenPath;       // the read-write path as given, for messages; null without one
  kiINIFile* readOnly;   // always there
  kiINIFile* readWrite;  // null without a read-write file
};

namespace {

std::atomic<kiConfigFile_SaveHook> g_saveHook{nullptr};

void Reached(int point) {
  const kiConfigFile_SaveHook hook = g_saveHook.load(std::memory_order_relaxed);
  if (hook != nullptr) hook(point);
}

// path followed by suffix, in a new block.
struct Sibling {
  Sibling(const char* path, const char* suffix) : m_path(kiMem_StrConcat(path, suffix)) {}
  ~Sibling() { kiMem_Free(m_path); }
  Sibling(const Sibling&) = delete;
  Sibling& operator=(const Sibling&) = delete;
  const char* c_str() const { return m_path; }

 private:
  char* m_path;
};

// Makes the renames and removals in path's directory durable. A failure is
// logged by kiDir_Sync and changes nothing else: the file operations
// themselves succeeded.
void SyncDirectoryOf(const char* path) {
  const char* slash = std::strrchr(path, '/');
  if (slash == nullptr) return;
  char* dir = kiMem_Strndup(path, slash == path ? 1u : static_cast<unsigned>(slash - path));
  kiDir_Sync(dir);
  kiMem_Free(dir);
}

// Finishes or undoes an interrupted save of path before it is loaded.
void Recover(const char* path) {
  const Sibling temp(path, ".tmp");
  const Sibling ok(path, ".ok");
  bool changed = false;
  if (kiFile_Exists(temp.c_str()) != 0) {
    // An unfinished save: never used.
    if (kiFile_Remove(temp.c_str()) != 0) {
      KI_LOG(kiLogLevel_Error, kiLogCat_ConfigFile, "Cannot remove temporary file '%s'\n",
             temp.c_str());
    }
    changed = true;
  }
  if (kiFile_Exists(ok.c_str()) != 0) {
    // A finished save whose last step did not happen.
    if (kiFile_Exists(path) != 0 && kiFile_Remove(path) != 0) {
      KI_LOG(kiLogLevel_Error, kiLogCat_ConfigFile,
             "Cannot remove previous valid file '%s', aborting commit\n", path);
      return;
    }
    if (kiFile_Rename(ok.c_str(), path) != 0) {
      KI_LOG(kiLogLevel_Error, kiLogCat_ConfigFile, "Cannot commit file '%s'\n", ok.c_str());
    }
    changed = true;
  }
  if (changed) SyncDirectoryOf(path);
}

kiINIFile* Table(kiConfigFile* cf, int readOnly) {
  if (cf == nullptr) return nullptr;
  return readOnly != 0 ? cf->readOnly : cf->readWrite;
}

// The table that answers for section/key: the read-write one when it holds
// the entry, else the read-only one.
const kiINIFile* Answering(const kiConfigFile* cf, const char* section, const char* key) {
  if (cf == nullptr) return nullptr;
  int found = 0;
  kiINIFile_Get(cf->readWrite, section, key, nullptr, &found);
  return found != 0 ? cf->readWrite : cf->readOnly;
}

}  // namespace

void kiConfigFile_SetSaveHookForTesting(kiConfigFile_SaveHook hook) {
  g_saveHook.store(hook, std::memory_order_relaxed);
}

kiConfigFile* kiConfigFile_Open(const char* readOnlyPath, const char* readWritePath) {
  kiConfigFile* cf = static_cast<kiConfigFile*>(kiMem_Calloc(sizeof(kiConfigFile)));
  cf->readOnlyPath = kiPath_MakeAbsolute(readOnlyPath, false, 0, nullptr);
  cf->readOnly = kiINIFile_New(0);
  if (readWritePath != nullptr) {
    cf->readWritePath = kiPath_MakeAbsolute(readWritePath, false, 0, nullptr);
    cf->givenPath = kiMem_Strdup(readWritePath);
    cf->readWrite = kiINIFile_New(0);
  }
  if (readOnlyPath != nullptr && cf->readOnlyPath == nullptr) {
    KI_LOG(kiLogLevel_Error, kiLogCat_ConfigFile,
           "Cannot resolve read-only config file path for '%s'\n", readOnlyPath);
  } else if (cf->readOnlyPath != nullptr && kiINIFile_Load(cf->readOnlyPath, cf->readOnly) == 0) {
    KI_LOG(kiLogLevel_Error, kiLogCat_ConfigFile, "Cannot load read-only config file '%s'\n",
           cf->readOnlyPath);
  }
  if (readWritePath != nullptr && cf->readWritePath == nullptr) {
    KI_LOG(kiLogLevel_Error, kiLogCat_ConfigFile,
           "Cannot resolve read-write config file path for '%s'\n", readWritePath);
  } else if (cf->readWritePath != nullptr) {
    Recover(cf->readWritePath);
    // A missing file is the usual first use: not an error, and not handed to
    // the file layer, which would log it.
    if (kiFile_Exists(cf->readWritePath) != 0) kiINIFile_Load(cf->readWritePath, cf->readWrite);
  }
  return cf;
}

void kiConfigFile_Close(kiConfigFile* cf) {
  if (cf == nullptr) return;
  kiINIFile_Delete(cf->readOnly);
  kiINIFile_Delete(cf->readWrite);
  kiMem_Free(cf->readOnlyPath);
  kiMem_Free(cf->readWritePath);
  kiMem_Free(cf->givenPath);
  kiMem_Free(cf);
}

int kiConfigFile_Save(kiConfigFile* cf) {
  if (cf == nullptr || cf->readWrite == nullptr) return 0;
  if (cf->readWritePath == nullptr) {
    KI_LOG(kiLogLevel_Error, kiLogCat_ConfigFile, "Cannot save file '%s'\n", cf->givenPath);
    return 0;
  }
  const char* path = cf->readWritePath;
  const Sibling temp(path, ".tmp");
  const Sibling ok(path, ".ok");
  // K without P is an earlier save that failed at its last step: K holds the
  // only complete table. That commit is finished first, as the next opening
  // would finish it, since removing K below with no P beside it would leave
  // only T, which recovery deletes. Should K not become P, nothing is touched.
  if (kiFile_Exists(path) == 0 && kiFile_Exists(ok.c_str()) != 0) {
    if (kiFile_Rename(ok.c_str(), path) != 0) {
      KI_LOG(kiLogLevel_Error, kiLogCat_ConfigFile, "Cannot save file: cannot commit file '%s'\n",
             ok.c_str());
      return 0;
    }
    SyncDirectoryOf(path);
  }
  const bool okExisted = kiFile_Exists(ok.c_str()) != 0;
  Reached(kiConfigFileSave_Noted);
  if (kiINIFile_SaveDurably(temp.c_str(), cf->readWrite) == 0) {
    KI_LOG(kiLogLevel_Error, kiLogCat_ConfigFile, "Cannot save file '%s'\n", temp.c_str());
    return 0;
  }
  Reached(kiConfigFileSave_TempWritten);
  const bool okRemoved = kiFile_Remove(ok.c_str()) == 0;
  Reached(kiConfigFileSave_OkRemoved);
  if (kiFile_Rename(temp.c_str(), ok.c_str()) != 0) {
    KI_LOG(kiLogLevel_Error, kiLogCat_ConfigFile,
           "Cannot save file: cannot rename temporary file '%s'\n", temp.c_str());
    if (!okRemoved && okExisted) {
      KI_LOG(kiLogLevel_Error, kiLogCat_ConfigFile,
             "Cannot save file: Was not able to remove previous valid file '%s'\n", ok.c_str());
    }
    return 0;
  }
  // K must be on the disk before P goes.
  SyncDirectoryOf(path);
  Reached(kiConfigFileSave_TempRenamed);
  kiFile_Remove(path);
  Reached(kiConfigFileSave_FileRemoved);
  if (kiFile_Rename(ok.c_str(), path) != 0) {
    KI_LOG(kiLogLevel_Error, kiLogCat_ConfigFile, "Cannot save file: cannot commit file '%s'\n",
           ok.c_str());
    if (!okRemoved && okExisted) {
      // Intended: this message names P, the one after step 4 names K.
      KI_LOG(kiLogLevel_Error, kiLogCat_ConfigFile,
             "Cannot save file: Was not able to remove previous valid file '%s'\n", path);
    }
    return 0;
  }
  SyncDirectoryOf(path);
  Reached(kiConfigFileSave_Committed);
  return 1;
}

int kiConfigFile_HasReadWrite(const kiConfigFile* cf) {
  return cf != nullptr && cf->readWrite != nullptr ? 1 : 0;
}

void kiConfigFile_ClearReadWrite(kiConfigFile* cf) {
  if (cf == nullptr || cf->readWrite == nullptr) return;
  kiINIFile_Delete(cf->readWrite);
  cf->readWrite = kiINIFile_New(0);
}

const char* kiConfigFile_Get(kiConfigFile* cf, const char* section, const char* key,
                             const char* def, int* found) {
  return kiINIFile_Get(Answering(cf, section, key), section, key, def, found);
}

long kiConfigFile_GetInt32(kiConfigFile* cf, const char* section, const char* key, long def) {
  return kiINIFile_GetInt32(Answering(cf, section, key), section, key, def);
}

unsigned long kiConfigFile_GetUInt32(kiConfigFile* cf, const char* section, const char* key,
                                     unsigned long def) {
  return kiINIFile_GetUInt32(Answering(cf, section, key), section, key, def);
}

double kiConfigFile_GetDouble(kiConfigFile* cf, const char* section, const char* key, double def) {
  return kiINIFile_GetDouble(Answering(cf, section, key), section, key, def);
}

int kiConfigFile_GetBool(kiConfigFile* cf, const char* section, const char* key, int def) {
  return kiINIFile_GetBool(Answering(cf, section, key), section, key, def);
}

int kiConfigFile_Set(kiConfigFile* cf, const char* section, const char* key, const char* value) {
  return kiINIFile_Set(Table(cf, 0), section, key, value);
}

int kiConfigFile_SetInt32(kiConfigFile* cf, const char* section, const char* key, long value) {
  return kiINIFile_SetInt32(Table(cf, 0), section, key, value);
}

int kiConfigFile_SetUInt32(kiConfigFile* cf, const char* section, const char* key,
                           unsigned long value) {
  return kiINIFile_SetUInt32(Table(cf, 0), section, key, value);
}

int kiConfigFile_SetDouble(kiConfigFile* cf, const char* section, const char* key, double value) {
  return kiINIFile_SetDouble(Table(cf, 0), section, key, value);
}

int kiConfigFile_DeleteKey(kiConfigFile* cf, const char* section, const char* key) {
  kiINIFile* table = Table(cf, 0);
  if (table == nullptr) return 0;
  kiINIFile_DeleteKey(table, section, key);
  return 1;
}

int kiConfigFile_DeleteSection(kiConfigFile* cf, const char* section) {
  kiINIFile* table = Table(cf, 0);
  if (table == nullptr) return 0;
  kiINIFile_DeleteSection(table, section);
  return 1;
}

unsigned int kiConfigFile_GetSectionCount(kiConfigFile* cf, int readOnly) {
  return kiINIFile_GetSectionCount(Table(cf, readOnly));
}

const char* kiConfigFile_GetSectionName(kiConfigFile* cf, unsigned int index, int readOnly) {
  return kiINIFile_GetSectionName(Table(cf, readOnly), index);
}

unsigned int kiConfigFile_GetKeyCount(kiConfigFile* cf, const char* section, int readOnly) {
  return kiINIFile_GetKeyCount(Table(cf, readOnly), section);
}

const char* kiConfigFile_GetKeyName(kiConfigFile* cf, const char* section, unsigned int index,
                                    int readOnly) {
  return kiINIFile_GetKeyName(Table(cf, readOnly), section, index);
}
