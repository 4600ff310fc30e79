// Dir.cpp - kiDir: listings filtered by kind, hidden state and the dot
// entries, counts, recursive removal, and the static operations over kiDir_*.
#include "ki/files/Dir.h"

#include <cstring>

#include "ki/files/File.h"
#include "ki/files/Times_p.h"
#include "ki/proc/kiDir.h"
#include "ki/proc/kiLog.h"
#include "ki/proc/kiMem.h"

KI_LOG_SOURCE("files/Dir")

namespace {

bool Wanted(const kiDirEntry& entry, int flags) {
  const int kind = entry.isDirectory ? kiDirFlag_Dirs : kiDirFlag_Files;
  if ((flags & kind) == 0) return false;
  if (entry.isHidden && (flags & kiDirFlag_Hidden) == 0) return false;
  const bool dots = std::strcmp(entry.name, ".") == 0 || std::strcmp(entry.name, "..") == 0;
  return !dots || (flags & kiDirFlag_Dots) != 0;
}

}  // namespace

kiDir::kiDir(const char* path) : m_list(nullptr), m_error(false), m_flags(0) { Open(path); }

bool kiDir::Open(const char* path) {
  Close();
  m_error = false;
  m_pathName = kiPathName(kiPathKind_Dir, path);
  if (!m_pathName.DirExists()) m_pathName.Reset();
  return IsOpened();
}

void kiDir::Close() {
  EndList();
  m_pathName.Reset();
}

void kiDir::EndList() {
  kiDir_CloseList(m_list);
  m_list = nullptr;
}

int kiDir::ReadWanted(kiOSDirList* list, int flags, kiPathName* entry) const {
  kiDirEntry found;
  int result;
  while ((result = kiDir_ReadList(list, &found)) > 0) {
    if (!Wanted(found, flags)) continue;
    if (entry != nullptr) {
      // Set from the name as it is: the path builder would read tokens and
      // '\\' in it.
      if (found.isDirectory) {
        entry->SetPath(m_pathName.GetPath() + found.name + '/');
      } else {
        entry->SetPath(m_pathName.GetPath());
        entry->SetFullName(found.name);
      }
    }
    return 1;
  }
  return result;
}

bool kiDir::GetFirst(kiPathName& entry, const kiCString& filter, int flags) {
  entry.Reset();
  EndList();
  m_flags = flags;
  m_error = !IsOpened() || kiDir_OpenList(m_pathName.GetPath(), filter, &m_list) != 0;
  return !m_error && GetNext(entry);
}

bool kiDir::GetNext(kiPathName& entry) {
  entry.Reset();
  if (m_list == nullptr) return false;
  const int result = ReadWanted(m_list, m_flags, &entry);
  if (result < 0) m_error = true;
  return result > 0;
}

bool kiDir::Rewind() {
  if (m_list == nullptr) return false;
  kiDir_RewindList(m_list);
  m_error = false;
  return true;
}

int kiDir::Count(const kiCString& filter, int flags, int limit) {
  kiOSDirList* list = nullptr;
  m_error = !IsOpened() || kiDir_OpenList(m_pathName.GetPath(), filter, &list) != 0;
  int count = 0;
  int result = 0;
  while (!m_error && count < limit && (result = ReadWanted(list, flags, nullptr)) > 0) ++count;
  if (result < 0) m_error = true;
  kiDir_CloseList(list);
  return m_error ? 0 : count;
}

int kiDir::GetCount(const kiCString& filter, int flags) { return Count(filter, flags, 0x7FFFFFFF); }

bool kiDir::HasFiles(const kiCString& filter) { return Count(filter, kiDirFlag_Files, 1) > 0; }

bool kiDir::HasDirs(const kiCString& filter) { return Count(filter, kiDirFlag_Dirs, 1) > 0; }

bool kiDir::Exists(const char* path) { return kiDir_Exists(path) == 1; }

bool kiDir::Create(const char* path) { return kiDir_Create(path) == 0; }

bool kiDir::CreateRecursively(const char* path) { return kiDir_CreateRecursively(path) == 0; }

bool kiDir::Remove(const char* path) { return kiDir_Remove(path) == 0; }

bool kiDir::RemoveOnePass(const char* path) {
  kiDir dir(path);
  kiPathName entry;
  bool ok = dir.IsOpened();
  for (bool more =
           ok && dir.GetFirst(entry, "*", kiDirFlag_Files | kiDirFlag_Dirs | kiDirFlag_Hidden);
       more; more = dir.GetNext(entry)) {
    const kiCString name = entry.IsDirPath() ? entry.GetDirName() : entry.GetFullName();
    if (name.FindFirstOf("\\<") != kiNPos) {
      // Built again, such a name would name another file: never touch that.
      KI_LOG(kiLogLevel_Error, kiLogCat_Dir,
             "RemoveRecursively: Cannot remove '%s' (the name is not a usable path)\n",
             entry.c_str());
      ok = false;
    } else {
      ok = entry.IsDirPath() ? RemoveRecursively(entry, 1) : kiFile::Remove(entry);
    }
    if (!ok) break;
  }
  ok = ok && !dir.Error();
  dir.Close();
  return ok && Remove(path);
}

bool kiDir::RemoveRecursively(const char* path, unsigned int attempts) {
  bool result = false;
  for (unsigned int pass = 0;; ++pass) {
    if (!Exists(path)) return true;
    if (pass >= attempts) return result;
    result = RemoveOnePass(path);
  }
}

bool kiDir::GetTimes(const char* path, kiDateTime* access, kiDateTime* modification,
                     kiDateTime* creation) {
  return kiFiles_GetTimes(kiDir_GetTimes, path, access, modification, creation);
}

kiList<kiPathName>* kiDir::GetRootDirList() {
  kiList<kiPathName>* list = new kiList<kiPathName>;
  char* roots = kiDir_GetRootDirs();
  for (const char* at = roots; *at != '\0'; at += std::strlen(at) + 1) {
    kiPathName root;
    kiCString path(at);
    if (path.Last() != '/') path += '/';
    root.SetPath(path);  // as it is: a mount point may hold any character
    list->push_back(root);
  }
  kiMem_Free(roots);
  return list;
}
