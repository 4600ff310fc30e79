// kiPath.cpp - the path builder on POSIX: '/'-rooted paths, and the running
// program's file from /proc/self/exe.
#include "ki/proc/kiPath.h"

#include <cstring>
#include <strings.h>
#include <unistd.h>

#include "ki/proc/kiLog.h"
#include "ki/proc/kiMem.h"
#include "ki/proc/kiPath_p.h"

KI_LOG_SOURCE("posix/kiPath")

namespace {

// Kept from the Windows layer: a name of 1040 bytes or more is refused.
constexpr std::size_t kApplicationNameSize = 1040;

}  // namespace

kiPathDialect kiPath_GetPlatformDialect() { return kiPathDialect_Posix; }

char* kiPath_GetApplicationFileName() {
  char buffer[kApplicationNameSize];
  const ssize_t length = readlink("/proc/self/exe", buffer, sizeof buffer);
  if (length <= 0) return nullptr;
  if (static_cast<std::size_t>(length) >= sizeof buffer) {
    KI_LOG(kiLogLevel_Error, kiLogCat_Path,
           "kiPath: Cannot get application file name (buffer too small)\n");
    return nullptr;
  }
  // '\\' is an ordinary character in a POSIX name: only '/' separates.
  return kiMem_Strndup(buffer, static_cast<unsigned int>(length));
}

char* kiPath_GetApplicationDir() {
  char* name = kiPath_GetApplicationFileName();
  if (name == nullptr) return nullptr;
  char* slash = std::strrchr(name, '/');
  if (slash == nullptr) {
    kiMem_Free(name);
    return nullptr;
  }
  slash[1] = '\0';
  return name;
}

char* kiPath_GetApplicationName(bool stripExe) {
  char* file = kiPath_GetApplicationFileName();
  if (file == nullptr) return nullptr;
  const char* slash = std::strrchr(file, '/');
  char* name = kiMem_Strdup(slash != nullptr ? slash + 1 : file);
  kiMem_Free(file);
  const std::size_t length = std::strlen(name);
  if (stripExe && length > 3 && strcasecmp(name + length - 4, ".exe") == 0) name[length - 4] = '\0';
  return name;
}
