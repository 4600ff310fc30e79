// kiFile.cpp - the portable part of the file functions: which combinations of
// open modes are refused, and why.
#include "ki/proc/kiFile.h"

#include "ki/proc/kiFile_p.h"

const char* kiFile_OpenModeRefusal(int mode) {
  const bool read = (mode & kiFileMode_Read) != 0;
  const bool write = (mode & kiFileMode_Write) != 0;
  const bool exclusive = (mode & kiFileMode_Exclusive) != 0;
  const bool truncate = (mode & kiFileMode_Truncate) != 0;
  if (!read && !write) return "no mode is specified";
  if (!write && truncate) return "truncate mode can only be used on a file open for writing";
  if ((mode & kiFileMode_Create) != 0) {
    if ((mode & kiFileMode_Append) != 0) return "append and create modes cannot be used together";
    if (truncate && exclusive) return "truncate and exclusive modes cannot be used together";
  } else if (exclusive) {
    return "exclusive modes can only be used with the create mode";
  }
  return nullptr;
}
