// kiPosix.cpp - the shared helpers of the POSIX platform layer.
#include <cstdlib>

#include "ki/posix/kiPosix_p.h"
#include "ki/proc/kiOSThread_p.h"

void* kiPosix_AllocRecord(std::size_t size) {
  if (kiOS_ShouldFail(kiOSFault_Allocate)) return nullptr;
  return std::calloc(1, size);
}

timespec kiPosix_MonotonicDeadline(std::uint32_t ms) {
  timespec t;
  clock_gettime(CLOCK_MONOTONIC, &t);
  t.tv_sec += static_cast<time_t>(ms / 1000);
  t.tv_nsec += static_cast<long>(ms % 1000) * 1000000L;
  if (t.tv_nsec >= 1000000000L) {
    t.tv_sec += 1;
    t.tv_nsec -= 1000000000L;
  }
  return t;
}

int kiPosix_FileError(int err) {
  switch (err) {
    case 0:
      return 0;
    case EROFS:
    case EIO:
      return -2;
    case ENOENT:
    case ENOTDIR:
      return -3;
    case EEXIST:
      return -4;
    case ENOSPC:
    case EDQUOT:
      return -5;
    default:
      return -1;
  }
}
