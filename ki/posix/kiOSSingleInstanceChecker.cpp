// kiOSSingleInstanceChecker.cpp - the single-instance mark on Linux: a local
// socket bound to the abstract name "Global\<name>". The name lives as long as
// the socket, which the kernel closes when the process ends, even by SIGKILL;
// no file is left behind and no permission is involved.
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "ki/posix/kiPosix_p.h"
#include "ki/proc/kiLog.h"
#include "ki/proc/kiMem.h"
#include "ki/proc/kiOSThread.h"
#include "ki/proc/kiOSThread_p.h"
#include "ki/proc/kiUTF8_p.h"

KI_LOG_SOURCE("posix/kiOSSingleInstanceChecker")

struct kiOSSingleInstanceChecker {
  int socket;          // -1 when no mark is held
  int anotherRunning;  // 0 or 1
  int error;           // 0 or 1
};

namespace {

constexpr char kNamespace[] = "Global\\";

// The abstract address: a zero byte, then the name. A name longer than the
// address allows keeps its head and gets a hash of the whole.
socklen_t MakeAddress(const char* name, sockaddr_un* address) {
  std::memset(address, 0, sizeof *address);
  address->sun_family = AF_UNIX;
  // The name is not terminated: its length is the address length.
  const std::size_t room = sizeof address->sun_path - 1;
  char text[sizeof address->sun_path];
  int used = std::snprintf(text, sizeof text, "%s%s", kNamespace, name);
  if (used < 0 || static_cast<std::size_t>(used) > room) {
    std::uint64_t hash = 14695981039346656037ull;  // FNV-1a over the full name
    for (const char* c = name; *c != 0; ++c) {
      hash = (hash ^ static_cast<unsigned char>(*c)) * 1099511628211ull;
    }
    const int head = static_cast<int>(room - std::strlen(kNamespace) - 17);
    used = std::snprintf(text, sizeof text, "%s%.*s#%016llx", kNamespace, head, name,
                         static_cast<unsigned long long>(hash));
  }
  std::memcpy(address->sun_path + 1, text, static_cast<std::size_t>(used));
  return static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 +
                                static_cast<std::size_t>(used));
}

}  // namespace

kiOSSingleInstanceChecker* kiOSSingleInstanceChecker_New(const char* name) {
  auto* c = static_cast<kiOSSingleInstanceChecker*>(
      name != nullptr && *name != 0 ? kiPosix_AllocRecord(sizeof(kiOSSingleInstanceChecker))
                                    : nullptr);
  if (c == nullptr) {
    KI_LOG(kiLogLevel_Error, kiLogCat_OS,
           "kiOSSingleInstanceChecker: Cannot create checker: name '%s' may be invalid\n",
           name != nullptr ? name : "(null)");
    // Reported through a record with both flags up, when memory allows.
    c = static_cast<kiOSSingleInstanceChecker*>(
        kiPosix_AllocRecord(sizeof(kiOSSingleInstanceChecker)));
    if (c == nullptr) return nullptr;
    c->socket = -1;
    c->anotherRunning = 1;
    c->error = 1;
    return c;
  }
  c->socket = -1;
  // The name must be text the system can carry: valid UTF-8.
  if (!kiUTF8_IsValid(name)) {
    KI_LOG(kiLogLevel_Error, kiLogCat_OS,
           "kiOSSingleInstanceChecker: Cannot create wide char name '%s'\n", name);
    c->anotherRunning = 1;
    c->error = 1;
    return c;
  }
  sockaddr_un address;
  const socklen_t length = MakeAddress(name, &address);
  int error = 0;
  if (kiOS_ShouldFail(kiOSFault_CheckerCreate)) {
    error = EACCES;
  } else {
    c->socket = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (c->socket < 0) {
      error = errno;
    } else if (bind(c->socket, reinterpret_cast<sockaddr*>(&address), length) != 0) {
      error = errno;
    }
  }
  if (error == EADDRINUSE) {
    // Another process (or record) holds the name. Unlike a second handle to a
    // named mutex, this record does not keep the name alive.
    close(c->socket);
    c->socket = -1;
    c->anotherRunning = 1;
    return c;
  }
  if (error != 0) {
    KI_LOG(kiLogLevel_Error, kiLogCat_OS,
           "kiOSSingleInstanceChecker: CreateMutex failed (error = %d)\n", error);
    if (c->socket >= 0) close(c->socket);
    c->socket = -1;
    c->anotherRunning = 1;
    c->error = 1;
  }
  return c;
}

int kiOSSingleInstanceChecker_IsAnotherRunning(const kiOSSingleInstanceChecker* checker) {
  return checker != nullptr ? checker->anotherRunning : 1;
}

int kiOSSingleInstanceChecker_Error(const kiOSSingleInstanceChecker* checker) {
  return checker != nullptr ? checker->error : 1;
}

void kiOSSingleInstanceChecker_Delete(kiOSSingleInstanceChecker* checker) {
  if (checker == nullptr) return;
  if (checker->socket >= 0 && close(checker->socket) != 0) {
    KI_LOG(kiLogLevel_Error, kiLogCat_OS,
           "kiOSSingleInstanceChecker: CloseHandle failed (error = %d)\n", errno);
  }
  kiMem_Free(checker);
}
