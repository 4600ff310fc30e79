// kiDebug.cpp - debugger output on POSIX: standard error, and SIGTRAP only
// while a tracer is attached (a trap without one would end the process).
#include "ki/proc/kiDebug.h"

#include <cstring>
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include "ki/posix/kiPosix_p.h"

namespace {

constexpr size_t kMaxMessage = 254;

// Linux reports the tracer in /proc/self/status as "TracerPid:\t<pid>".
bool DebuggerAttached() {
  const int fd =
      kiPosix_RetryOnEINTR([] { return open("/proc/self/status", O_RDONLY | O_CLOEXEC); });
  if (fd < 0) return false;
  char text[4096];
  const ssize_t n = kiPosix_RetryOnEINTR([&] { return read(fd, text, sizeof text - 1); });
  close(fd);
  if (n <= 0) return false;
  text[n] = 0;
  const char* field = std::strstr(text, "TracerPid:");
  if (field == nullptr) return false;
  field += std::strlen("TracerPid:");
  while (*field == ' ' || *field == '\t') ++field;
  return *field >= '1' && *field <= '9';
}

}  // namespace

void kiDebug_Output(const char* message) {
  char line[kMaxMessage + 1];
  size_t n = 0;
  if (message != nullptr) {
    while (n < kMaxMessage && message[n] != 0) ++n;
    std::memcpy(line, message, n);
  }
  line[n++] = '\n';
  size_t written = 0;
  while (written < n) {
    const ssize_t w =
        kiPosix_RetryOnEINTR([&] { return write(STDERR_FILENO, line + written, n - written); });
    if (w <= 0) break;
    written += static_cast<size_t>(w);
  }
  if (DebuggerAttached()) raise(SIGTRAP);
}
