// FileHelper.h - kiFileHelper: a whole file loaded into a kiDataBuffer.
#ifndef KI_FILES_FILEHELPER_H
#define KI_FILES_FILEHELPER_H

#include "ki/Export.h"
#include "ki/core/DataBuffer.h"
#include "ki/core/Error.h"
#include "ki/files/PathName.h"

class KI_API kiFileHelper {
 public:
  // Flags of LoadInBuffer.
  enum {
    AddZero = 0x01  // a zero byte after the content (counted in the buffer's size)
  };

  // Reads the file at path's full path whole into buffer, which it replaces
  // (the previous block is freed). Errors leave buffer unchanged:
  //  - "Unable to open file '%s'": the open's code (kiFileError_*, -1 when 0);
  //  - "File '%s' is too large to be loaded" (-1): the length cannot be had,
  //    passes 2^31 - 1, or passes maxSize;
  //  - "Unable to read requested size from file '%s'": fewer bytes than the
  //    length (the file shrank), the read's code or -1.
  // Intended: when the memory cannot be had, the result is success and buffer
  // is left unchanged. The failed open is also logged by kiFile; the other
  // errors are only returned. The file is closed before the call returns.
  static kiError LoadInBuffer(const kiPathName& path, kiDataBuffer& buffer, int flags,
                              unsigned long maxSize);
};

#endif  // KI_FILES_FILEHELPER_H
