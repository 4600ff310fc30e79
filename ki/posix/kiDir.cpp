// kiDir.cpp - the directory functions on POSIX: stat, mkdir, rmdir, the
// times through kiFile_GetTimes, listings through opendir/readdir with an fnmatch filter, and the
// roots from the mount table.
#include "ki/proc/kiDir.h"

#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <fnmatch.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "ki/posix/kiPosix_p.h"
#include "ki/proc/kiFile.h"
#include "ki/proc/kiLog.h"
#include "ki/proc/kiMem.h"
#include "ki/proc/kiPath.h"

KI_LOG_SOURCE("posix/kiDir")

struct kiOSDirList {
  DIR* dir;
  char* filter;  // kiMem block
};

namespace {

const char* Printable(const char* text) { return text != nullptr ? text : "(null)"; }

// The platform path of path, or null. The long-path flag is kept for the
// Windows layer; it changes nothing here.
char* Build(const char* path) {
  return kiPath_MakeAbsolute(path, false, kiPath_LongPrefix, nullptr);
}

bool IsDirectory(const char* path) {
  struct stat st;
  return stat(path, &st) == 0 && S_ISDIR(st.st_mode);
}

// The roots found so far, and the pseudo mounts whose subtrees are skipped.
struct RootSearch {
  std::string roots;  // zero-separated
  std::string pseudo;
};

bool Below(const std::string& list, const char* point) {
  const std::size_t length = std::strlen(point);
  for (std::size_t at = 0; at < list.size(); at = list.find('\0', at) + 1) {
    const char* entry = list.c_str() + at;
    const std::size_t entryLength = std::strlen(entry);
    if (entryLength == length && std::strcmp(entry, point) == 0) return true;
    if (entryLength < length && std::strncmp(entry, point, entryLength) == 0 &&
        (point[entryLength] == '/' || entry[entryLength - 1] == '/')) {
      return true;
    }
  }
  return false;
}

bool ContainsExactly(const std::string& list, const char* point) {
  for (std::size_t at = 0; at < list.size(); at = list.find('\0', at) + 1) {
    if (std::strcmp(list.c_str() + at, point) == 0) return true;
  }
  return false;
}

bool VisitForRoots(void* context, const char* point, const char* type, const char*) {
  RootSearch& search = *static_cast<RootSearch*>(context);
  if (kiPosix_IsPseudoFileSystem(type)) {
    search.pseudo.append(point).push_back('\0');
  } else if (!Below(search.pseudo, point) && !ContainsExactly(search.roots, point) &&
             (kiPosix_IsRemoteFileSystem(type) || IsDirectory(point))) {
    search.roots.append(point).push_back('\0');
  }
  return true;
}

}  // namespace

int kiDir_Exists(const char* path) {
  char* built = Build(path);
  if (built == nullptr) {
    KI_LOG(kiLogLevel_Error, kiLogCat_Dir,
           "kiDir: Cannot check directory '%s' exists (invalid name)\n", Printable(path));
    return 0;
  }
  const bool exists = IsDirectory(built);
  kiMem_Free(built);
  return exists ? 1 : 0;
}

int kiDir_Create(const char* path) {
  char* built = Build(path);
  if (built == nullptr) {
    KI_LOG(kiLogLevel_Error, kiLogCat_Dir, "kiDir: Cannot create directory: '%s' (invalid name)\n",
           Printable(path));
    return -1;
  }
  const int err = mkdir(built, 0777) == 0 ? 0 : errno;
  kiMem_Free(built);
  if (err != 0) {
    KI_LOG(kiLogLevel_Error, kiLogCat_Dir, "kiDir: Cannot create directory '%s' (error = %ld)\n",
           path, static_cast<long>(err));
  }
  return err;
}

int kiDir_CreateRecursively(const char* path) {
  char* built = Build(path);
  if (built == nullptr) {
    KI_LOG(kiLogLevel_Error, kiLogCat_Dir,
           "kiDir: Cannot create directory path: '%s' (invalid path)\n", Printable(path));
    return -1;
  }
  // No drive or server to skip here: the walk starts at the leading '/'.
  if (built[0] != '/') {
    KI_LOG(kiLogLevel_Error, kiLogCat_Dir,
           "kiDir: Cannot analyze directory path: '%s' (invalid path)\n", path);
    kiMem_Free(built);
    return -1;
  }
  const std::string text(built);
  kiMem_Free(built);
  for (std::size_t end = 1; end <= text.size(); ++end) {
    if (end < text.size() && text[end] != '/') continue;
    if (text[end - 1] == '/') continue;  // an empty part: "//" or the trailing '/'
    const std::string part = text.substr(0, end);
    if (IsDirectory(part.c_str())) continue;
    // EEXIST with a directory there: made meanwhile by someone else.
    if (mkdir(part.c_str(), 0777) != 0 && !(errno == EEXIST && IsDirectory(part.c_str()))) {
      KI_LOG(kiLogLevel_Error, kiLogCat_Dir,
             "kiDir: Cannot create directory path part: '%s' (path size = %d)\n", part.c_str(),
             static_cast<int>(part.size()));
      return -1;
    }
  }
  return 0;
}

int kiDir_Remove(const char* path) {
  char* built = Build(path);
  if (built == nullptr) {
    KI_LOG(kiLogLevel_Error, kiLogCat_Dir, "kiDir: Cannot remove directory: '%s' (invalid name)\n",
           Printable(path));
    return -1;
  }
  const int err = rmdir(built) == 0 ? 0 : errno;
  kiMem_Free(built);
  if (err != 0) {
    KI_LOG(kiLogLevel_Error, kiLogCat_Dir, "kiDir: Cannot remove directory '%s' (errno = %ld)\n",
           path, static_cast<long>(err));
  }
  return err;
}

int kiDir_Sync(const char* path) {
  char* built = Build(path);
  if (built == nullptr) {
    KI_LOG(kiLogLevel_Error, kiLogCat_Dir, "kiDir: Cannot sync directory: '%s' (invalid name)\n",
           Printable(path));
    return -1;
  }
  const int h = kiPosix_RetryOnEINTR(
      [&] { return open(built, O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOCTTY); });
  kiMem_Free(built);
  int err = h < 0 ? errno : 0;
  if (h >= 0) {
    if (kiPosix_RetryOnEINTR([&] { return fsync(h); }) != 0) err = errno;
    close(h);
  }
  if (err != 0) {
    KI_LOG(kiLogLevel_Error, kiLogCat_Dir, "kiDir: Cannot sync directory '%s' (error = %ld)\n",
           path, static_cast<long>(err));
  }
  return err;
}

int kiDir_GetTimes(const char* path, kitimeval* access, kitimeval* modification,
                   kitimeval* creation) {
  char* built = Build(path);
  if (built == nullptr) {
    KI_LOG(kiLogLevel_Error, kiLogCat_Dir,
           "kiDir: Cannot get modification time for directory: '%s' (invalid name)\n",
           Printable(path));
    return -1;
  }
  const int result = kiFile_GetTimes(built, access, modification, creation);
  kiMem_Free(built);
  return result;
}

int kiDir_OpenList(const char* dir, const char* filter, kiOSDirList** list) {
  if (list == nullptr) return -1;
  *list = nullptr;
  const char* pattern = filter != nullptr && filter[0] != '\0' ? filter : "*";
  char* built = std::strchr(pattern, '/') == nullptr ? Build(dir) : nullptr;
  if (built == nullptr) {
    KI_LOG(kiLogLevel_Error, kiLogCat_Dir,
           "kiDir: Cannot enumerate files in directory '%s' using specified '%s'\n", Printable(dir),
           Printable(filter));
    return -1;
  }
  const int fd =
      kiPosix_RetryOnEINTR([&] { return open(built, O_RDONLY | O_DIRECTORY | O_CLOEXEC); });
  kiMem_Free(built);
  DIR* opened = fd >= 0 ? fdopendir(fd) : nullptr;
  if (opened == nullptr) {
    const int err = errno;
    if (fd >= 0) close(fd);
    KI_LOG(kiLogLevel_Error, kiLogCat_Dir,
           "kiFile: Cannot enumerate files in directory '%s' (error = %d)\n", dir, err);
    return err;
  }
  kiOSDirList* made = static_cast<kiOSDirList*>(kiMem_Calloc(sizeof(kiOSDirList)));
  made->dir = opened;
  made->filter = kiMem_Strdup(pattern);
  *list = made;
  return 0;
}

int kiDir_ReadList(kiOSDirList* list, kiDirEntry* entry) {
  if (list == nullptr || entry == nullptr) return -1;
  for (;;) {
    errno = 0;
    const dirent* found = readdir(list->dir);
    if (found == nullptr) {
      if (errno == 0) return 0;
      KI_LOG(kiLogLevel_Error, kiLogCat_Dir,
             "kiDir: Cannot continue enumerating files in directory (error = %d)\n", errno);
      return -1;
    }
    const char* name = found->d_name;
    if (fnmatch(list->filter, name, 0) != 0) continue;
    bool isDirectory = found->d_type == DT_DIR;
    if (found->d_type == DT_UNKNOWN) {
      struct stat st;
      isDirectory =
          fstatat(dirfd(list->dir), name, &st, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(st.st_mode);
    }
    const bool dots = std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
    entry->name = name;
    entry->isDirectory = isDirectory;
    entry->isHidden = name[0] == '.' && !dots;
    return 1;
  }
}

void kiDir_RewindList(kiOSDirList* list) {
  if (list != nullptr) rewinddir(list->dir);
}

void kiDir_CloseList(kiOSDirList* list) {
  if (list == nullptr) return;
  closedir(list->dir);
  kiMem_Free(list->filter);
  kiMem_Free(list);
}

char* kiDir_GetRootDirs() {
  RootSearch search;
  if (!kiPosix_ForEachMount(VisitForRoots, &search) || search.roots.empty()) {
    search.roots.assign("/", 2);
  }
  search.roots.push_back('\0');
  return kiMem_Strndup(search.roots.data(), static_cast<unsigned int>(search.roots.size()));
}
