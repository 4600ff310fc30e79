// File.cpp - kiFile over the kiFile_* functions of the platform layer.
#include "ki/files/File.h"

#include <cstdint>

#include "ki/files/Times_p.h"
#include "ki/proc/kiLog.h"

KI_LOG_SOURCE("files/File")

namespace {

const char* Shown(const char* name) { return name != nullptr ? name : "(null)"; }

// The descriptor as the number the messages print.
int Number(void* fd) { return static_cast<int>(reinterpret_cast<std::intptr_t>(fd)); }

}  // namespace

kiFile::kiFile(const char* name, int mode) : m_fd(kiFile_NoFD()), m_error(0) {
  Open(name, mode, 0);
}

bool kiFile::Open(const char* name, int mode, int permissions) {
  void* fd = kiFile_NoFD();
  m_error = kiFile_Open(name, mode, permissions, &fd);
  if (m_error != 0) {
    KI_LOG(kiLogLevel_Error, kiLogCat_File, "Open: Cannot open file '%s'\n", Shown(name));
    return false;
  }
  Attach(fd);
  return true;
}

bool kiFile::Create(const char* name, bool overwrite, int permissions) {
  const int mode =
      overwrite ? kiFileMode_Read | kiFileMode_Write | kiFileMode_Create | kiFileMode_Truncate
                : kiFileMode_Read | kiFileMode_Write | kiFileMode_Exclusive | kiFileMode_Create;
  void* fd = kiFile_NoFD();
  m_error = kiFile_Open(name, mode, permissions, &fd);
  if (m_error != 0) {
    KI_LOG(kiLogLevel_Error, kiLogCat_File, "Create: Cannot create file '%s'\n", Shown(name));
    return false;
  }
  Attach(fd);
  return true;
}

bool kiFile::Close() {
  if (!IsOpened()) {
    m_error = 0;
    return true;
  }
  void* fd = m_fd;
  m_fd = kiFile_NoFD();  // forgotten whatever the result
  m_error = kiFile_Close(fd);
  if (m_error != 0) {
    KI_LOG(kiLogLevel_Error, kiLogCat_File, "Close: Cannot close file descriptor %d\n", Number(fd));
    return false;
  }
  return true;
}

int kiFile::Read(void* buffer, unsigned int count) {
  const int n = kiFile_Read(m_fd, buffer, count);
  if (n < 0) {
    m_error = n;
    KI_LOG(kiLogLevel_Error, kiLogCat_File, "Read: Cannot read from file descriptor %d\n",
           Number(m_fd));
    return -1;
  }
  m_error = 0;
  return n;
}

unsigned int kiFile::Write(const void* buffer, unsigned int count) {
  const int n = kiFile_Write(m_fd, buffer, count);
  if (n < 0) {
    m_error = n;
    KI_LOG(kiLogLevel_Error, kiLogCat_File, "Write: Cannot write to file descriptor %d\n",
           Number(m_fd));
    return 0;  // intended: not -1
  }
  m_error = 0;
  return static_cast<unsigned int>(n);
}

long long kiFile::Seek(long long offset, int origin) {
  m_error = kiFile_Seek(m_fd, offset, origin);
  if (m_error != 0) {
    KI_LOG(kiLogLevel_Error, kiLogCat_File, "Seek: Cannot seek on file descriptor %d\n",
           Number(m_fd));
    return -1;
  }
  return Tell();
}

long long kiFile::Tell() const {
  long long position = -1;
  m_error = kiFile_Tell(m_fd, &position);
  if (m_error != 0) {
    KI_LOG(kiLogLevel_Error, kiLogCat_File, "Tell: Cannot get position\n");
    return -1;
  }
  return position;
}

long long kiFile::Length() const {
  long long start = 0;
  m_error = kiFile_Tell(m_fd, &start);
  if (m_error != 0) {
    KI_LOG(kiLogLevel_Error, kiLogCat_File, "Length: Cannot get initial position\n");
    return -1;
  }
  m_error = kiFile_Seek(m_fd, 0, 2);
  if (m_error != 0) {
    KI_LOG(kiLogLevel_Error, kiLogCat_File, "Length: Cannot seek to end of file\n");
    return -1;
  }
  long long length = -1;
  const int tellError = kiFile_Tell(m_fd, &length);
  if (tellError != 0) {
    KI_LOG(kiLogLevel_Error, kiLogCat_File, "Length: Cannot get file length\n");
    length = -1;
  }
  m_error = kiFile_Seek(m_fd, start, 0);
  if (m_error != 0) {
    KI_LOG(kiLogLevel_Error, kiLogCat_File, "Length: Cannot restore initial position\n");
  }
  if (tellError != 0) m_error = tellError;  // the first failure wins
  return length;
}

bool kiFile::ChangeSize(long long size) {
  m_error = kiFile_ChangeSize(m_fd, size);
  if (m_error != 0) {
    KI_LOG(kiLogLevel_Error, kiLogCat_File, "ChangeSize: Cannot truncate/extend file\n");
    return false;
  }
  return true;
}

bool kiFile::EndOfFile() const {
  m_error = kiFile_IsEOF(m_fd);
  return m_error == 1;
}

bool kiFile::Flush() {
  m_error = 0;
  return true;
}

void kiFile::Attach(void* fd) {
  Close();
  m_error = 0;
  m_fd = fd;
}

void* kiFile::Detach() {
  void* fd = m_fd;
  m_fd = kiFile_NoFD();
  m_error = 0;
  return fd;
}

bool kiFile::Exists(const char* path) { return kiFile_Exists(path) == 1; }

bool kiFile::Rename(const char* from, const char* to) { return kiFile_Rename(from, to) == 0; }

bool kiFile::Remove(const char* path) { return kiFile_Remove(path) == 0; }

bool kiFile::ChangeSize(const char* path, long long size) {
  return kiFile_SetSize(path, size) == 0;
}

bool kiFiles_GetTimes(kiFiles_TimesQuery query, const char* path, kiDateTime* access,
                      kiDateTime* modification, kiDateTime* creation) {
  kitimeval times[3];
  if (query(path, access != nullptr ? &times[0] : nullptr,
            modification != nullptr ? &times[1] : nullptr,
            creation != nullptr ? &times[2] : nullptr) != 0) {
    return false;
  }
  if (access != nullptr) access->Set(times[0]);
  if (modification != nullptr) modification->Set(times[1]);
  if (creation != nullptr) creation->Set(times[2]);
  return true;
}

bool kiFile::GetTimes(const char* path, kiDateTime* access, kiDateTime* modification,
                      kiDateTime* creation) {
  return kiFiles_GetTimes(kiFile_GetTimes, path, access, modification, creation);
}

bool kiFile::Access(const char* path, int mode) { return kiFile_Access(path, mode) != 0; }
