// kiPosix_p.h - helpers private to the POSIX platform layer.
#ifndef KI_POSIX_KIPOSIX_P_H
#define KI_POSIX_KIPOSIX_P_H

#include <cerrno>

// Repeats a system call while it is interrupted by a signal.
template <typename Call>
auto kiPosix_RetryOnEINTR(Call call) -> decltype(call()) {
  decltype(call()) result;
  do {
    result = call();
  } while (result == -1 && errno == EINTR);
  return result;
}

#endif  // KI_POSIX_KIPOSIX_P_H
