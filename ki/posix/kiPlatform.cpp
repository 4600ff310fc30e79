// kiPlatform.cpp - the process environment on POSIX.
#include "ki/os/kiPlatform.h"

#include <stdlib.h>

#include "ki/proc/kiMem.h"

char* kiPlatform_GetEnv(const char* name) {
  if (name == nullptr) return nullptr;
  return kiMem_Strdup(getenv(name));
}

int kiPlatform_SetEnv(const char* name, const char* value) {
  if (name == nullptr) return -1;
  const int result = value != nullptr ? setenv(name, value, 1) : unsetenv(name);
  return result == 0 ? 0 : -1;
}
