// FileHelper.cpp - kiFileHelper::LoadInBuffer over kiFile.
#include "ki/files/FileHelper.h"

#include <cstdint>
#include <cstdlib>

#include "ki/files/File.h"

namespace {

int CodeOf(const kiFile& file) { return file.GetErrorCode() != 0 ? file.GetErrorCode() : -1; }

}  // namespace

kiError kiFileHelper::LoadInBuffer(const kiPathName& path, kiDataBuffer& buffer, int flags,
                                   unsigned long maxSize) {
  const char* name = path.c_str();
  kiFile file(name, kiFileMode_Read);
  if (!file.IsOpened()) {
    return kiError(CodeOf(file), kiCString::Format("Unable to open file '%s'", name));
  }
  const long long length = file.Length();
  if (length < 0 || length > INT32_MAX || static_cast<unsigned long>(length) > maxSize) {
    return kiError(-1, kiCString::Format("File '%s' is too large to be loaded", name));
  }
  const auto size = static_cast<unsigned int>(length);
  const unsigned int total = size + ((flags & AddZero) != 0 ? 1 : 0);
  // Not kiMem_Malloc, which ends the process when memory is short: a file
  // too large for the memory left is answered, not fatal. kiMem_Free and
  // kiDataBuffer release malloc blocks.
  auto* block = static_cast<unsigned char*>(std::malloc(total > 0 ? total : 1));
  if (block == nullptr) return kiError();  // intended: no error, buffer unchanged
  if (file.Read(block, size) != static_cast<int>(size)) {
    std::free(block);
    return kiError(CodeOf(file),
                   kiCString::Format("Unable to read requested size from file '%s'", name));
  }
  if ((flags & AddZero) != 0) block[size] = 0;
  buffer.Set(block, total);
  return kiError();
}
