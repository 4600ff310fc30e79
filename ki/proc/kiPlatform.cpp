// kiPlatform.cpp - the portable rules of the platform services: how a host
// name is shortened.
#include "ki/proc/kiPlatform_p.h"

void kiPlatform_ShortenHostName(char* name) {
  if (name == nullptr) return;
  int dots = 0;
  bool address = true;
  for (const char* p = name; *p != '\0'; ++p) {
    if (*p == '.') {
      ++dots;
    } else if (*p < '0' || *p > '9') {
      address = false;
    }
  }
  if (address && dots == 3) return;
  for (char* p = name; *p != '\0'; ++p) {
    if (*p == '.') {
      *p = '\0';
      return;
    }
  }
}
