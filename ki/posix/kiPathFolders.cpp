// kiPathFolders.cpp - special folders (the XDG user directories and fixed
// system-wide folders), the application-data folder, the mount table and the
// drive class on POSIX.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <pwd.h>
#include <string>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>
#include <vector>

#include "ki/posix/kiPosix_p.h"
#include "ki/proc/kiLog.h"
#include "ki/proc/kiMem.h"
#include "ki/proc/kiPath.h"
#include "ki/proc/kiPath_p.h"

KI_LOG_SOURCE("posix/kiPathFolders")

namespace {

// The mount table the seam names instead of the system's; never destroyed.
char* g_mountTable = nullptr;

// The fixed folders of the AllUsers tokens.
const char* const kAllUsersFolders[] = {"/srv/media/music", "/srv/media/pictures",
                                        "/srv/media/videos"};

// The whole of a small file; false when it cannot be read or exceeds limit
// bytes (/proc files report no size, so the file is read to its end). A FIFO
// never blocks: it reads as empty or fails.
bool ReadWholeFile(const char* path, std::string& text, std::size_t limit) {
  const int fd =
      kiPosix_RetryOnEINTR([&] { return open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK); });
  if (fd < 0) return false;
  text.clear();
  char buffer[4096];
  bool ok = true;
  for (;;) {
    const ssize_t n = kiPosix_RetryOnEINTR([&] { return read(fd, buffer, sizeof buffer); });
    if (n < 0 || text.size() + static_cast<std::size_t>(n) > limit) {
      ok = false;
      break;
    }
    if (n == 0) break;
    text.append(buffer, static_cast<std::size_t>(n));
  }
  close(fd);
  return ok;
}

std::string HomeDir() {
  const char* home = std::getenv("HOME");
  if (home != nullptr && home[0] == '/') return home;
  passwd entry;
  passwd* found = nullptr;
  char buffer[4096];
  if (getpwuid_r(getuid(), &entry, buffer, sizeof buffer, &found) == 0 && found != nullptr &&
      found->pw_dir != nullptr && found->pw_dir[0] == '/') {
    return found->pw_dir;
  }
  return std::string();
}

// An XDG base directory: the variable when it holds an absolute path, else
// home + fallback; empty when neither can be had.
std::string BaseDir(const char* variable, const char* fallback) {
  const char* value = std::getenv(variable);
  if (value != nullptr && value[0] == '/') return value;
  const std::string home = HomeDir();
  return home.empty() ? home : home + fallback;
}

// The last assignment to key in a user-dirs.dirs text: KEY="$HOME/Music" or
// KEY="/absolute", '\\' escaping the next character. Other values (relative
// paths) are ignored, as the format prescribes. Empty when there is none.
std::string UserDirFromConfig(const std::string& config, const std::string& key,
                              const std::string& home) {
  std::string found;
  std::size_t at = 0;
  while (at < config.size()) {
    std::size_t end = config.find('\n', at);
    if (end == std::string::npos) end = config.size();
    std::size_t i = config.find_first_not_of(" \t", at);
    if (i != std::string::npos && i < end && config.compare(i, key.size(), key) == 0 &&
        i + key.size() + 1 < end && config[i + key.size()] == '=' &&
        config[i + key.size() + 1] == '"') {
      std::string value;
      bool closed = false;
      for (i += key.size() + 2; i < end; ++i) {
        if (config[i] == '"') {
          closed = true;
          break;
        }
        if (config[i] == '\\' && i + 1 < end) ++i;
        value += config[i];
      }
      if (closed && value.compare(0, 5, "$HOME") == 0 && (value.size() == 5 || value[5] == '/')) {
        found = home.empty() ? std::string() : home + value.substr(5);
      } else if (closed && !value.empty() && value[0] == '/') {
        found = value;
      }
    }
    at = end + 1;
  }
  return found;
}

std::string UserDir(const char* key, const char* fallback) {
  const std::string home = HomeDir();
  std::string config;
  const std::string configDir = BaseDir("XDG_CONFIG_HOME", "/.config");
  if (!configDir.empty() &&
      ReadWholeFile((configDir + "/user-dirs.dirs").c_str(), config, 1 << 16)) {
    const std::string dir = UserDirFromConfig(config, key, home);
    if (!dir.empty()) return dir;
  }
  return home.empty() ? home : home + fallback;
}

// dir and its missing parents, each made with mode; 0 or the errno value.
int MakeDirs(const std::string& dir, mode_t mode) {
  for (std::size_t at = 1; at <= dir.size(); ++at) {
    if (at < dir.size() && dir[at] != '/') continue;
    const std::string part = dir.substr(0, at);
    struct stat st;
    if (stat(part.c_str(), &st) == 0 && S_ISDIR(st.st_mode)) continue;
    if (mkdir(part.c_str(), mode) != 0) {
      const int err = errno;
      if (err != EEXIST) return err;
      // Made meanwhile by someone else: fine; a file in the way: not a directory.
      if (stat(part.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) return ENOTDIR;
    }
  }
  return 0;
}

// Decodes the octal escapes (\040 and the like) of a mount table field.
std::string Unescape(const std::string& field) {
  std::string text;
  for (std::size_t i = 0; i < field.size(); ++i) {
    if (field[i] == '\\' && i + 3 < field.size() && field[i + 1] >= '0' && field[i + 1] <= '3' &&
        field[i + 2] >= '0' && field[i + 2] <= '7' && field[i + 3] >= '0' && field[i + 3] <= '7') {
      text += static_cast<char>((field[i + 1] - '0') * 64 + (field[i + 2] - '0') * 8 +
                                (field[i + 3] - '0'));
      i += 3;
    } else {
      text += field[i];
    }
  }
  return text;
}

bool IsOneOf(const char* type, const char* const* names) {
  for (; *names != nullptr; ++names) {
    if (std::strcmp(type, *names) == 0) return true;
  }
  return false;
}

// Where path lies: the mount whose point is the longest prefix (at a '/'
// boundary) of the resolved path; a later mount on the same point hides an
// earlier one.
struct MountSearch {
  std::string path;
  std::size_t best = 0;
  bool found = false;
  std::string type;
  std::string source;
};

bool VisitForPath(void* context, const char* point, const char* type, const char* source) {
  MountSearch& search = *static_cast<MountSearch*>(context);
  const std::size_t length = std::strlen(point);
  const bool covers = std::strcmp(point, "/") == 0 ||
                      (search.path.compare(0, length, point) == 0 &&
                       (search.path.size() == length || search.path[length] == '/'));
  if (covers && (!search.found || length >= search.best)) {
    search.found = true;
    search.best = length;
    search.type = type;
    search.source = source;
  }
  return true;
}

// Whether the block device holding a file system from source is flagged
// removable, or is an optical or RAM disk.
bool IsRemovableDevice(const std::string& source) {
  struct stat st;
  if (source.compare(0, 5, "/dev/") != 0 || stat(source.c_str(), &st) != 0 ||
      !S_ISBLK(st.st_mode)) {
    return false;
  }
  char sys[64];
  std::snprintf(sys, sizeof sys, "/sys/dev/block/%u:%u", major(st.st_rdev), minor(st.st_rdev));
  const std::string device = sys;
  char target[512];
  const ssize_t n = readlink(device.c_str(), target, sizeof target - 1);
  if (n > 0) {
    target[n] = '\0';
    const char* slash = std::strrchr(target, '/');
    const char* name = slash != nullptr ? slash + 1 : target;
    if (std::strncmp(name, "sr", 2) == 0 || std::strncmp(name, "ram", 3) == 0 ||
        std::strncmp(name, "zram", 4) == 0) {
      return true;
    }
  }
  // A partition carries no flag of its own: its disk's counts.
  const bool partition = access((device + "/partition").c_str(), F_OK) == 0;
  std::string flag;
  return ReadWholeFile((device + (partition ? "/../removable" : "/removable")).c_str(), flag, 64) &&
         !flag.empty() && flag[0] == '1';
}

}  // namespace

char* kiPath_GetSpecialFolder(int index) {
  std::string folder;
  switch (index) {
    case kiPathFolder_AppData:
      folder = BaseDir("XDG_DATA_HOME", "/.local/share");
      break;
    case 1:
      folder = UserDir("XDG_MUSIC_DIR", "/Music");
      break;
    case 2:
      folder = UserDir("XDG_PICTURES_DIR", "/Pictures");
      break;
    case 3:
      folder = UserDir("XDG_VIDEOS_DIR", "/Videos");
      break;
    case 4:
    case 5:
    case 6:
      folder = kAllUsersFolders[index - 4];
      break;
    default:
      break;
  }
  while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
  if (folder.empty()) return nullptr;
  return kiMem_Strndup(folder.data(), static_cast<unsigned int>(folder.size()));
}

char* kiPath_GetAppDataDir() {
  char* folder = kiPath_GetFolder(kiPathFolder_AppData);
  const int err = folder != nullptr ? MakeDirs(folder, 0700) : ENOENT;
  if (err != 0) {
    KI_LOG(kiLogLevel_Error, kiLogCat_Path,
           "kiPath: Cannot get application specific data directory name (error = '%d')\n", err);
    kiMem_Free(folder);
    return nullptr;
  }
  return folder;
}

int kiPath_GetDriveClass(const char* path) {
  if (path == nullptr || path[0] != '/') return kiPath_DriveUnknown;
  // The nearest part of the path that exists, with its links resolved.
  std::string probe(path);
  char* resolved = nullptr;
  while ((resolved = realpath(probe.c_str(), nullptr)) == nullptr) {
    if (probe == "/") return kiPath_DriveUnknown;
    while (probe.size() > 1 && probe.back() == '/') probe.pop_back();
    probe.erase(probe.rfind('/') + 1);
  }
  MountSearch search;
  search.path = resolved;
  std::free(resolved);
  if (!kiPosix_ForEachMount(VisitForPath, &search) || !search.found) return kiPath_DriveUnknown;

  static const char* const kRemovable[] = {"tmpfs", "ramfs", "iso9660", "udf", nullptr};
  const char* type = search.type.c_str();
  if (kiPosix_IsPseudoFileSystem(type)) return kiPath_DriveUnknown;
  if (kiPosix_IsRemoteFileSystem(type)) return kiPath_DriveRemote;
  if (IsOneOf(type, kRemovable) || IsRemovableDevice(search.source)) return kiPath_DriveRemovable;
  return kiPath_DriveFixed;
}

bool kiPosix_IsPseudoFileSystem(const char* type) {
  static const char* const kPseudo[] = {
      "proc",       "sysfs",   "cgroup",      "cgroup2",    "devtmpfs", "devpts",
      "mqueue",     "debugfs", "tracefs",     "securityfs", "pstore",   "bpf",
      "configfs",   "fusectl", "binfmt_misc", "autofs",     "efivarfs", "hugetlbfs",
      "rpc_pipefs", "nsfs",    "selinuxfs",   "nfsd",       "rootfs",   nullptr};
  return type == nullptr || IsOneOf(type, kPseudo);
}

bool kiPosix_IsRemoteFileSystem(const char* type) {
  static const char* const kRemote[] = {
      "nfs",         "nfs4",       "cifs",        "smb3",
      "smbfs",       "ncpfs",      "coda",        "afs",
      "ceph",        "9p",         "davfs",       "glusterfs",
      "lustre",      "fuse.sshfs", "fuse.davfs2", "fuse.glusterfs",
      "fuse.rclone", "fuse.s3fs",  nullptr};
  return type != nullptr && IsOneOf(type, kRemote);
}

bool kiPosix_ForEachMount(kiPosix_MountVisitor visit, void* context) {
  std::string table;
  if (visit == nullptr ||
      !ReadWholeFile(g_mountTable != nullptr ? g_mountTable : "/proc/self/mountinfo", table,
                     std::size_t(16) << 20)) {
    return false;
  }
  // id parent major:minor root point options [optional...] - type source options
  std::vector<std::string> fields;
  for (std::size_t at = 0; at < table.size();) {
    std::size_t end = table.find('\n', at);
    if (end == std::string::npos) end = table.size();
    fields.clear();
    for (std::size_t i = at; i <= end;) {
      const std::size_t stop = std::min(table.find(' ', i), end);
      fields.push_back(table.substr(i, stop - i));
      i = stop + 1;
    }
    at = end + 1;
    std::size_t dash = 6;
    while (dash < fields.size() && fields[dash] != "-") ++dash;
    if (dash + 2 >= fields.size()) continue;  // not a mount line
    const std::string point = Unescape(fields[4]);
    const std::string source = Unescape(fields[dash + 2]);
    if (point.empty() || point[0] != '/') continue;
    if (!visit(context, point.c_str(), fields[dash + 1].c_str(), source.c_str())) break;
  }
  return true;
}

void kiPath_SetMountTableForTesting(const char* file) {
  kiMem_Free(g_mountTable);
  g_mountTable = kiMem_Strdup(file);
}
