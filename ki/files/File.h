// File.h - kiFile, the owner of one file descriptor with the error code of
// its last operation, over the kiFile_* functions.
#ifndef KI_FILES_FILE_H
#define KI_FILES_FILE_H

#include "ki/Export.h"
#include "ki/os/DateTime.h"
#include "ki/proc/kiFile.h"

// Holds a descriptor (kiFile_NoFD() when none) and the code of the last
// operation (0, a kiFileError_* code, or 1 after EndOfFile at the end). It
// owns the descriptor: destruction and Attach close it, Detach hands it out.
// Failures are logged twice: by kiFile_* with the system's error, then here
// with a short line (category 42, source "files/File"). Operations on a file
// that is not open fail like those on a closed descriptor. Nothing throws.
// Not copyable; not locked.
class KI_API kiFile {
 public:
  kiFile() : m_fd(kiFile_NoFD()), m_error(0) {}
  // Open(name, mode, 0).
  kiFile(const char* name, int mode);
  // Takes fd as it is (kiFile_NoFD() for none).
  explicit kiFile(void* fd) : m_fd(fd), m_error(0) {}
  ~kiFile() { Close(); }
  kiFile(const kiFile&) = delete;
  kiFile& operator=(const kiFile&) = delete;

  // kiFile_Open (see there for modes and permissions); its result becomes the
  // error code. On failure logs "Open: Cannot open file '%s'" and keeps the
  // current descriptor; on success closes it and holds the new one.
  bool Open(const char* name, int mode, int permissions = 0);
  // Read, write and create; with overwrite the file is emptied, without it
  // an existing file fails with -4. "Create: Cannot create file '%s'".
  bool Create(const char* name, bool overwrite, int permissions = 0);
  // True at once when nothing is held. Otherwise the descriptor is forgotten
  // whether or not the close succeeds.
  bool Close();

  // Bytes read (0 at the end), or -1 on failure.
  int Read(void* buffer, unsigned int count);
  // Bytes written, or 0 on failure (intended: not -1 as Read answers).
  unsigned int Write(const void* buffer, unsigned int count);
  // The new position, or -1. origin 0 start, 1 current, 2 end (else start).
  long long Seek(long long offset, int origin);
  long long Tell() const;  // -1 on failure
  // The size, with the position restored; -1 on failure. The code is that of
  // the first failing step, else that of the restoring seek.
  long long Length() const;
  // Sets the size; the position is left at the new size.
  bool ChangeSize(long long size);
  // The result of kiFile_IsEOF becomes the error code: intended, so at the
  // end Error() is true and GetErrorCode() 1. Files of 4 GiB and more never
  // report their end (see kiFile_IsEOF).
  bool EndOfFile() const;
  bool Flush();  // nothing is buffered: error 0, true

  // Closes the current descriptor, then holds fd; error 0.
  void Attach(void* fd);
  // Hands the descriptor out without closing it; error 0.
  void* Detach();
  void* GetFD() const { return m_fd; }
  bool IsOpened() const { return m_fd != kiFile_NoFD(); }
  bool Error() const { return m_error != 0; }
  int GetErrorCode() const { return m_error; }

  // The kiFile_* functions of the same names, as booleans.
  static bool Exists(const char* path);
  static bool Rename(const char* from, const char* to);
  static bool Remove(const char* path);
  static bool ChangeSize(const char* path, long long size);
  // On success sets each non-null kiDateTime (seconds and microseconds);
  // on failure leaves them all unchanged.
  static bool GetTimes(const char* path, kiDateTime* access, kiDateTime* modification,
                       kiDateTime* creation);
  static bool Access(const char* path, int mode);

 private:
  void* m_fd;
  mutable int m_error;  // const queries record their result too
};

#endif  // KI_FILES_FILE_H
