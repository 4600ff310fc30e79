// kiFile.cpp - the file functions on POSIX: open(2) under the portable mode rules,
// sharing as advisory flock locks, errno mapped to the file codes, statx
// times and a rename that never replaces.
#include "ki/proc/kiFile.h"

#include <climits>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "ki/posix/kiPosix_p.h"
#include "ki/proc/kiFile_p.h"
#include "ki/proc/kiLog.h"
#include "ki/proc/kiMem.h"
#include "ki/proc/kiPath.h"
#include "ki/proc/kiUTF8_p.h"

KI_LOG_SOURCE("posix/kiFile")

namespace {

const char* Shown(const char* path) { return path != nullptr ? path : "(null)"; }

// The int a descriptor holds; -1 (refused by every call with EBADF) for a
// pointer that holds none.
int FdOf(void* fd) {
  const std::intptr_t value = reinterpret_cast<std::intptr_t>(fd);
  return value >= 0 && value <= INT_MAX ? static_cast<int>(value) : -1;
}

void* HandleOf(int fd) { return reinterpret_cast<void*>(static_cast<std::intptr_t>(fd)); }

// The system path of a library path, or null for an invalid name: null, not
// UTF-8 (the Windows layer could not convert it), or refused by the path
// builder. '/' separators, trailing separators kept, the default anchor.
class NativePath {
 public:
  explicit NativePath(const char* path) : m_path(Convert(path)) {}
  ~NativePath() { kiMem_Free(m_path); }
  NativePath(const NativePath&) = delete;
  NativePath& operator=(const NativePath&) = delete;

  bool IsValid() const { return m_path != nullptr; }
  const char* c_str() const { return m_path; }

 private:
  static char* Convert(const char* path) {
    if (!kiUTF8_IsValid(path)) return nullptr;
    return kiPath_MakeAbsolute(path, false, 0, nullptr);
  }

  char* m_path;
};

// How a mode opens a file, once its rules are met.
struct OpenPlan {
  int flags;      // open(2) flags
  int lock;       // flock operation
  bool truncate;  // cut to 0 once the lock is held
};

// The plan for mode (Append already turned into Write), or the reason it can
// never open a file.
const char* PlanOpen(int mode, OpenPlan* plan) {
  if (const char* reason = kiFile_OpenModeRefusal(mode)) return reason;
  const bool read = (mode & kiFileMode_Read) != 0;
  const bool write = (mode & kiFileMode_Write) != 0;
  const bool exclusive = (mode & kiFileMode_Exclusive) != 0;
  plan->flags = read && write ? O_RDWR : write ? O_WRONLY : O_RDONLY;
  if ((mode & kiFileMode_Create) != 0) plan->flags |= exclusive ? O_CREAT | O_EXCL : O_CREAT;
  // Opening never waits (a FIFO without a writer); the flag goes once open.
  plan->flags |= O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
  plan->lock = (exclusive ? LOCK_EX : LOCK_SH) | LOCK_NB;
  plan->truncate = (mode & kiFileMode_Truncate) != 0;
  return nullptr;
}

// The checks and steps after open(2): 0 or the errno that refuses the file.
// Truncation waits for the lock, so a refused open leaves the data intact.
int Prepare(int fd, const OpenPlan& plan) {
  struct stat info;
  if (fstat(fd, &info) != 0) return errno;
  if (S_ISDIR(info.st_mode)) return EISDIR;  // a directory is not a file, as on Windows
  // Only a lock held elsewhere refuses the open; a file system without
  // locks opens unlocked.
  if (kiPosix_RetryOnEINTR([&] { return flock(fd, plan.lock); }) != 0 && errno == EWOULDBLOCK) {
    return EWOULDBLOCK;
  }
  const int status = fcntl(fd, F_GETFL);
  if (status != -1) fcntl(fd, F_SETFL, status & ~O_NONBLOCK);
  // Devices and FIFOs have nothing to cut.
  if (plan.truncate && S_ISREG(info.st_mode) &&
      kiPosix_RetryOnEINTR([&] { return ftruncate(fd, 0); }) != 0) {
    return errno;
  }
  return 0;
}

bool FitsSeconds(long long seconds) { return seconds >= INT32_MIN && seconds <= INT32_MAX; }

// One time of a file in milliseconds precision, or false when the seconds
// leave the 32-bit range.
bool ToTimeval(const statx_timestamp& t, kitimeval* out) {
  if (!FitsSeconds(t.tv_sec)) return false;
  out->tv_sec = static_cast<std::int32_t>(t.tv_sec);
  out->tv_usec = static_cast<std::int32_t>(t.tv_nsec / 1000000 * 1000);
  return true;
}

statx_timestamp FromTimespec(const timespec& t) {
  statx_timestamp s = {};
  s.tv_sec = t.tv_sec;
  s.tv_nsec = static_cast<std::uint32_t>(t.tv_nsec);
  return s;
}

// The access, modification and creation times of path (links followed), or
// false with errno set. Kernels without statx fall back to stat.
bool ReadTimes(const char* path, statx_timestamp times[3]) {
  struct statx sx;
  if (statx(AT_FDCWD, path, 0, STATX_BASIC_STATS | STATX_BTIME, &sx) == 0) {
    times[0] = sx.stx_atime;
    times[1] = sx.stx_mtime;
    times[2] = (sx.stx_mask & STATX_BTIME) != 0 ? sx.stx_btime : sx.stx_ctime;
    return true;
  }
  if (errno != ENOSYS && errno != EPERM) return false;
  struct stat st;
  if (stat(path, &st) != 0) return false;
  times[0] = FromTimespec(st.st_atim);
  times[1] = FromTimespec(st.st_mtim);
  times[2] = FromTimespec(st.st_ctim);
  return true;
}

// renameat2 with RENAME_NOREPLACE; file systems that lack it get a check for
// the target followed by rename(2), which a racing writer can defeat.
int RenameNoReplace(const char* from, const char* to) {
  if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL && errno != ENOSYS && errno != EOPNOTSUPP) return errno;
  struct stat info;
  if (lstat(to, &info) == 0) return EEXIST;
  return rename(from, to) == 0 ? 0 : errno;
}

}  // namespace

int kiFile_Open(const char* path, int mode, int permissions, void** fd) {
  if (fd == nullptr) {
    // Intended: the message names the null descriptor pointer, not the path.
    KI_LOG(kiLogLevel_Error, kiLogCat_File,
           "kiFile: Cannot open file: '%s' (invalid file descriptor pointer)\n", "(null)");
    return -1;
  }
  const NativePath native(path);
  if (!native.IsValid()) {
    KI_LOG(kiLogLevel_Error, kiLogCat_File, "kiFile: Cannot open file: '%s' (invalid name)\n",
           Shown(path));
    return -1;
  }
  if ((mode & kiFileMode_Append) != 0) mode |= kiFileMode_Write;
  OpenPlan plan;
  if (const char* reason = PlanOpen(mode, &plan)) {
    KI_LOG(kiLogLevel_Error, kiLogCat_File, "kiFile: Cannot open file: '%s' because %s\n",
           Shown(path), reason);
    return -1;
  }
  const mode_t bits = permissions == 0 ? 0666 : static_cast<mode_t>(permissions & 07777);
  const int h = kiPosix_RetryOnEINTR([&] { return open(native.c_str(), plan.flags, bits); });
  int err = h < 0 ? errno : Prepare(h, plan);
  if (err != 0) {
    if (h >= 0) close(h);
    KI_LOG(kiLogLevel_Error, kiLogCat_File,
           "kiFile: Cannot open file: '%s' (OpenMode = 0x%02x) (error = %d)\n", Shown(path), mode,
           err);
    return kiPosix_FileError(err);
  }
  if ((mode & kiFileMode_Append) != 0 && lseek(h, 0, SEEK_END) < 0) {
    err = errno;
    close(h);
    KI_LOG(kiLogLevel_Error, kiLogCat_File,
           "kiFile: Cannot seek at end of file: '%s' (OpenMode = 0x%02x) (error = %d)\n",
           Shown(path), mode, err);
    return kiPosix_FileError(err);
  }
  *fd = HandleOf(h);
  return 0;
}

int kiFile_Close(void* fd) {
  // Linux releases the descriptor even when close is interrupted.
  if (close(FdOf(fd)) == 0 || errno == EINTR) return 0;
  const int err = errno;
  KI_LOG(kiLogLevel_Error, kiLogCat_File, "kiFile: Cannot close file (fd = %p) (error = %d)\n", fd,
         err);
  return kiPosix_FileError(err);
}

int kiFile_Read(void* fd, void* buffer, unsigned int count) {
  ssize_t n = -1;
  if (buffer == nullptr && count > 0) {
    errno = EFAULT;
  } else {
    n = kiPosix_RetryOnEINTR([&] { return read(FdOf(fd), buffer, count); });
  }
  if (n < 0) {
    const int err = errno;
    KI_LOG(kiLogLevel_Error, kiLogCat_File,
           "kiFile: cannot read %lu bytes (fd = %p) (error = %d)\n",
           static_cast<unsigned long>(count), fd, err);
    return kiPosix_FileError(err);
  }
  return static_cast<int>(n);  // Linux reads at most 0x7ffff000 bytes a call
}

int kiFile_Write(void* fd, const void* buffer, unsigned int count) {
  const std::size_t total = count > INT_MAX ? INT_MAX : count;
  const char* bytes = static_cast<const char*>(buffer);
  std::size_t done = 0;
  int err = 0;
  if (bytes == nullptr && total > 0) {
    err = EFAULT;
  } else {
    // Windows writes a disk file whole or fails; a short write here goes on.
    do {
      const ssize_t n =
          kiPosix_RetryOnEINTR([&] { return write(FdOf(fd), bytes + done, total - done); });
      if (n < 0) {
        err = errno;
        break;
      }
      if (n == 0) break;
      done += static_cast<std::size_t>(n);
    } while (done < total);
  }
  if (err != 0 && done == 0) {
    KI_LOG(kiLogLevel_Error, kiLogCat_File, "kiFile: Write (fd = %p) (error = %d)\n", fd, err);
    return kiPosix_FileError(err);
  }
  return static_cast<int>(done);
}

int kiFile_Seek(void* fd, long long offset, int origin) {
  const int whence = origin == 1 ? SEEK_CUR : (origin == 2 ? SEEK_END : SEEK_SET);
  if (lseek(FdOf(fd), static_cast<off_t>(offset), whence) >= 0) return 0;
  const int err = errno;
  KI_LOG(kiLogLevel_Error, kiLogCat_File, "kiFile: Cannot seek (fd = %p) (error = %d)\n", fd, err);
  return kiPosix_FileError(err);
}

int kiFile_Tell(void* fd, long long* position) {
  const off_t at = position != nullptr ? lseek(FdOf(fd), 0, SEEK_CUR) : -1;
  if (position == nullptr) errno = EFAULT;
  if (at >= 0) {
    *position = at;
    return 0;
  }
  const int err = errno;
  KI_LOG(kiLogLevel_Error, kiLogCat_File, "kiFile: Cannot tell (fd = %p) (error = %d)\n", fd, err);
  return kiPosix_FileError(err);
}

int kiFile_ChangeSize(void* fd, long long size) {
  const int h = FdOf(fd);
  const off_t original = lseek(h, 0, SEEK_CUR);
  if (original < 0) {
    const int err = errno;
    KI_LOG(kiLogLevel_Error, kiLogCat_File,
           "kiFile: ChangeSize: Cannot tell (fd = %p) (error = %d)\n", fd, err);
    return -1;
  }
  if (lseek(h, static_cast<off_t>(size), SEEK_SET) < 0) {
    const int err = errno;
    KI_LOG(kiLogLevel_Error, kiLogCat_File,
           "kiFile: ChangeSize: Cannot move pointer (fd = %p) (error = %d)\n", fd, err);
    return -1;
  }
  if (kiPosix_RetryOnEINTR([&] { return ftruncate(h, static_cast<off_t>(size)); }) != 0) {
    const int err = errno;
    KI_LOG(kiLogLevel_Error, kiLogCat_File,
           "kiFile: ChangeSize: Cannot truncate/extend (fd = %p) (error = %d)\n", fd, err);
    if (lseek(h, original, SEEK_SET) < 0) {
      const int restoreErr = errno;
      KI_LOG(kiLogLevel_Error, kiLogCat_File,
             "kiFile: ChangeSize: Cannot restore file pointer (fd = %p) (error = %d)\n", fd,
             restoreErr);
    }
    return -1;
  }
  return 0;  // intended: the position stays at the new size
}

int kiFile_IsEOF(void* fd) {
  const int h = FdOf(fd);
  const off_t position = lseek(h, 0, SEEK_CUR);
  if (position < 0) {
    const int err = errno;
    KI_LOG(kiLogLevel_Error, kiLogCat_File,
           "kiFile: Cannot check EOF (fd = %p) (error = %d) (getting original position)\n", fd,
           err);
    return kiPosix_FileError(err);
  }
  const off_t end = lseek(h, 0, SEEK_END);
  if (end < 0) {
    const int err = errno;
    KI_LOG(kiLogLevel_Error, kiLogCat_File,
           "kiFile: Cannot check EOF (fd = %p) (error = %d) (seeking to end)\n", fd, err);
    return kiPosix_FileError(err);
  }
  // Intended: low words only, and never for 4 GiB and more.
  const auto endBits = static_cast<std::uint64_t>(end);
  if ((endBits >> 32) == 0 &&
      static_cast<std::uint32_t>(position) == static_cast<std::uint32_t>(endBits)) {
    return 1;
  }
  if (lseek(h, position, SEEK_SET) < 0) {
    const int err = errno;
    KI_LOG(kiLogLevel_Error, kiLogCat_File,
           "kiFile: Cannot check EOF (fd = %p) (error = %d) (restoring original position)\n", fd,
           err);
    return kiPosix_FileError(err);
  }
  return 0;
}

int kiFile_Flush(void*) { return 0; }

int kiFile_Sync(void* fd) {
  if (kiPosix_RetryOnEINTR([&] { return fsync(FdOf(fd)); }) == 0) return 0;
  const int err = errno;
  KI_LOG(kiLogLevel_Error, kiLogCat_File, "kiFile: Cannot sync file (fd = %p) (error = %d)\n", fd,
         err);
  return kiPosix_FileError(err);
}

int kiFile_Remove(const char* path) {
  const NativePath native(path);
  if (!native.IsValid()) {
    KI_LOG(kiLogLevel_Error, kiLogCat_File, "kiFile: Cannot remove file: '%s' (invalid name)\n",
           Shown(path));
    return -1;
  }
  if (unlink(native.c_str()) == 0 || errno == ENOENT || errno == ENOTDIR) return 0;
  const int err = errno;
  KI_LOG(kiLogLevel_Error, kiLogCat_File, "kiFile: Cannot remove file '%s' (error = %d)\n", path,
         err);
  return kiPosix_FileError(err);
}

int kiFile_Exists(const char* path) {
  const NativePath native(path);
  if (!native.IsValid()) {
    KI_LOG(kiLogLevel_Error, kiLogCat_File,
           "kiFile: Cannot check if file '%s' exists, (invalid name)\n", Shown(path));
    return 0;
  }
  struct stat info;
  return stat(native.c_str(), &info) == 0 && !S_ISDIR(info.st_mode) ? 1 : 0;
}

int kiFile_GetTimes(const char* path, kitimeval* access, kitimeval* modification,
                    kitimeval* creation) {
  const NativePath native(path);
  if (!native.IsValid()) {
    KI_LOG(kiLogLevel_Error, kiLogCat_File,
           "kiFile_GetTimes: Cannot get modification time for file '%s', (invalid name)\n",
           Shown(path));
    return -1;
  }
  statx_timestamp times[3];
  if (!ReadTimes(native.c_str(), times)) {
    const int err = errno;
    KI_LOG(kiLogLevel_Error, kiLogCat_File,
           "kiFile_GetTimes: Could not get attributes for file: %s\n", native.c_str());
    return kiPosix_FileError(err);
  }
  // Creation, modification, access: the first that does not convert stops.
  kitimeval* outputs[3] = {creation, modification, access};
  const statx_timestamp* sources[3] = {&times[2], &times[1], &times[0]};
  for (int i = 0; i < 3; ++i) {
    if (outputs[i] != nullptr && !ToTimeval(*sources[i], outputs[i])) {
      KI_LOG(kiLogLevel_Error, kiLogCat_File,
             "kiFile_GetTimes: Could not get all creation/modification/access times for file: "
             "%s\n",
             native.c_str());
      return -1;
    }
  }
  return 0;
}

int kiFile_Rename(const char* oldPath, const char* newPath) {
  const NativePath from(oldPath);
  const NativePath to(newPath);
  if (!from.IsValid() || !to.IsValid()) {
    KI_LOG(kiLogLevel_Error, kiLogCat_File,
           "kiFile: Cannot rename file '%s' to '%s' (invalid file name)\n", Shown(oldPath),
           Shown(newPath));
    return -1;
  }
  const int err = RenameNoReplace(from.c_str(), to.c_str());
  if (err == 0) return 0;
  KI_LOG(kiLogLevel_Error, kiLogCat_File, "kiFile: Cannot rename file: '%s' to '%s' (error = %d)\n",
         oldPath, newPath, err);
  return kiPosix_FileError(err);
}

int kiFile_SetSize(const char* path, long long size) {
  const NativePath native(path);
  if (!native.IsValid()) {
    KI_LOG(kiLogLevel_Error, kiLogCat_File,
           "kiFile: Cannot set size of file '%s', (invalid name)\n", Shown(path));
    return -1;
  }
  const int h = kiPosix_RetryOnEINTR([&] {
    return open(native.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0666);
  });
  // Intended: a refused open is not reported here; the move below then fails
  // on the missing descriptor (EBADF) and reports it.
  if (lseek(h, static_cast<off_t>(size), SEEK_SET) < 0) {
    const int err = errno;
    KI_LOG(kiLogLevel_Error, kiLogCat_File,
           "kiFile: Cannot set size of file '%s', cannot move pointer (error = %d)\n", path, err);
    if (h >= 0) close(h);
    return err;
  }
  if (kiPosix_RetryOnEINTR([&] { return ftruncate(h, static_cast<off_t>(size)); }) != 0) {
    const int err = errno;
    KI_LOG(kiLogLevel_Error, kiLogCat_File,
           "kiFile: Cannot set size of file '%s', cannot set EOF (error = %d)\n", path, err);
    close(h);
    return err;
  }
  close(h);
  return 0;
}

int kiFile_Access(const char* path, int mode) {
  const NativePath native(path);
  if (!native.IsValid()) {
    KI_LOG(kiLogLevel_Error, kiLogCat_File,
           "kiFile: Cannot check access for file: '%s' (invalid name)\n", Shown(path));
    return 0;
  }
  static const int kAccess[4] = {O_PATH, O_RDONLY, O_WRONLY, O_RDWR};
  errno = 0;
  const int h = kiPosix_RetryOnEINTR(
      [&] { return open(native.c_str(), kAccess[mode & 3] | O_CLOEXEC | O_NOCTTY | O_NONBLOCK); });
  if (h < 0) return 0;
  const int err = errno;
  struct stat info;
  const bool directory = fstat(h, &info) == 0 && S_ISDIR(info.st_mode);
  close(h);
  if (directory) return 0;
  // Intended: the message is written when the check succeeds.
  KI_LOG(kiLogLevel_Error, kiLogCat_File,
         "kiFile: Cannot check access for file: '%s' (error = %d)\n", path, err);
  return 1;
}
