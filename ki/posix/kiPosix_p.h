// kiPosix_p.h - helpers private to the POSIX platform layer.
#ifndef KI_POSIX_KIPOSIX_P_H
#define KI_POSIX_KIPOSIX_P_H

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <time.h>

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define KI_POSIX_TSAN 1
#endif
#endif
#if defined(__SANITIZE_THREAD__)
#define KI_POSIX_TSAN 1
#endif

#if defined(KI_POSIX_TSAN)
#include <sanitizer/tsan_interface.h>
#endif

// Repeats a system call while it is interrupted by a signal.
template <typename Call>
auto kiPosix_RetryOnEINTR(Call call) -> decltype(call()) {
  decltype(call()) result;
  do {
    result = call();
  } while (result == -1 && errno == EINTR);
  return result;
}

// Tells ThreadSanitizer that the calling thread has synchronised with the
// releases made on address (used after calls it does not know, such as
// sem_clockwait); nothing in other builds.
inline void kiPosix_AnnotateAcquire(void* address) {
#if defined(KI_POSIX_TSAN)
  __tsan_acquire(address);
#else
  (void)address;
#endif
}

// A zero-filled record of size bytes from the ordinary heap (freed with
// kiMem_Free), or null when memory is short or the test seam says so. Unlike
// kiMem_Malloc this never ends the process: the records' callers log and
// answer null.
void* kiPosix_AllocRecord(std::size_t size);

// The CLOCK_MONOTONIC time ms milliseconds from now.
timespec kiPosix_MonotonicDeadline(std::uint32_t ms);

// The file error code (kiFileError_*) of an errno value: EROFS and EIO -2,
// ENOENT and ENOTDIR -3, EEXIST -4, ENOSPC and EDQUOT -5, 0 for 0, else -1.
int kiPosix_FileError(int err);

// One mounted file system of the mount table: where it is mounted, its type
// and its source (device or server), escapes decoded. Answer false to stop.
typedef bool (*kiPosix_MountVisitor)(void* context, const char* point, const char* type,
                                     const char* source);
// Visits the mounts of /proc/self/mountinfo (or the table set by
// kiPath_SetMountTableForTesting) in table order; false when the table
// cannot be read (posix/kiPathFolders.cpp).
bool kiPosix_ForEachMount(kiPosix_MountVisitor visit, void* context);
// Whether type names a pseudo file system (proc, sysfs, cgroup, devtmpfs...),
// which holds no files of its own and is never a root.
bool kiPosix_IsPseudoFileSystem(const char* type);
// Whether type names a network file system (nfs, cifs, sshfs...), which is
// never examined without need: a lost server hangs every call.
bool kiPosix_IsRemoteFileSystem(const char* type);

#endif  // KI_POSIX_KIPOSIX_P_H
