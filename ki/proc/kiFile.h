// kiFile.h - the file functions of the platform layer: open modes, error
// codes, and kiFile_* over a platform descriptor. Paths are UTF-8 and go
// through kiPath_MakeAbsolute first, so a relative path is anchored at the
// application's directory, never at the working directory.
#ifndef KI_PROC_KIFILE_H
#define KI_PROC_KIFILE_H

#include <cstdint>

#include "ki/Export.h"
#include "ki/proc/kiTime.h"

// Open-mode bits; every other bit of a mode is ignored.
enum {
  kiFileMode_Read = 0x01,
  kiFileMode_Write = 0x02,
  kiFileMode_Exclusive = 0x04,  // share nothing; with Create: the file must not exist yet
  kiFileMode_Append = 0x08,     // position at the end after opening; implies Write
  kiFileMode_Create = 0x10,     // create the file when it does not exist
  kiFileMode_Truncate = 0x20    // cut the file to length 0 on opening
};

// The results of the functions below: 0, or one of these negative codes.
enum {
  kiFileError_None = 0,
  kiFileError_Failed = -1,    // any other failure
  kiFileError_ReadOnly = -2,  // medium not writable (EROFS, EIO)
  kiFileError_NotFound = -3,  // ENOENT, ENOTDIR
  kiFileError_Exists = -4,    // EEXIST
  kiFileError_DiskFull = -5   // ENOSPC, EDQUOT
};

// A descriptor is the platform handle as a pointer: on POSIX the int file
// descriptor. kiFile_NoFD() (all bits set, -1) means that no file is held.
// Descriptors are compared with it, never with null: null is descriptor 0.
// A pointer that does not hold a descriptor (outside 0..INT_MAX) is refused
// like a closed one (EBADF).
inline void* kiFile_NoFD() { return reinterpret_cast<void*>(static_cast<std::intptr_t>(-1)); }

// Every function logs its failures itself (category 42, "kiFile:" prefix);
// "error = %d" in a message is the errno value. A null path prints as "(null)"
// and fails as an invalid name, as does a path that is not valid UTF-8 or
// holds an unknown special-folder token. Nothing here throws.

// Opens path with mode (kiFileMode_*) and writes the descriptor to *fd, only on
// success. Refused before any system call, each with its own message: a null
// fd; an invalid name; no read or write bit; Truncate without write; Create
// with Append; Create with Truncate and Exclusive; Exclusive without Create.
// Append adds Write. A directory never opens (EISDIR). permissions: 0 creates
// a new file with mode 0666, anything else with its bits 07777, the umask
// applying in both cases (Windows ignores the argument). Sharing is an
// advisory flock taken without waiting: Exclusive takes it exclusive, every
// other open shared; when it is refused (error 11) the open fails. Truncation
// happens only once the lock is held, so a refused open never loses data.
// Opening never blocks: a FIFO without a reader refuses writers (ENXIO).
// The descriptor is close-on-exec.
KI_API int kiFile_Open(const char* path, int mode, int permissions, void** fd);
// 0 or an error code; the descriptor is released in every case.
KI_API int kiFile_Close(void* fd);
// One read of up to count bytes: the number read (0 at the end of the file,
// a short count is no error) or an error code. A null buffer with a count
// fails with error 14.
KI_API int kiFile_Read(void* fd, void* buffer, unsigned int count);
// Writes count bytes (at most 2^31 - 1 a call): the number written or an
// error code. A failure after some of the bytes went out answers their number;
// the next call reports the error. A null buffer with a count fails (14).
KI_API int kiFile_Write(void* fd, const void* buffer, unsigned int count);
// origin 0 from the start, 1 from the current position, 2 from the end; any
// other value counts as 0.
KI_API int kiFile_Seek(void* fd, long long offset, int origin);
// The current position into *position (left alone on failure); a null
// position fails with error 14.
KI_API int kiFile_Tell(void* fd, long long* position);
// The file's size becomes size (extended with zeros or cut); on success the
// position is left at size. 0 or -1.
KI_API int kiFile_ChangeSize(void* fd, long long size);
// 1 at the end of the file, 0 elsewhere (the position is kept), or an error
// code. Intended: positions are compared on their low 32 bits and only when
// the size is below 4 GiB, so a file of 4 GiB or more never reports its end;
// at the end the position stays there.
KI_API int kiFile_IsEOF(void* fd);
// 0: nothing is buffered here.
KI_API int kiFile_Flush(void* fd);
// Makes the file's data and size durable (POSIX: fsync), so that a power loss
// after the call cannot lose them. 0, or an error code logged as "kiFile:
// Cannot sync file (fd = %p) (error = %d)\n" (a pipe or a closed descriptor
// fails).
KI_API int kiFile_Sync(void* fd);

// Removes a file (not a directory). A missing file or path is success, and
// is not logged.
KI_API int kiFile_Remove(const char* path);
// 1 when something other than a directory exists at path (links followed),
// else 0.
KI_API int kiFile_Exists(const char* path);
// The times of path (links followed) as seconds since the epoch and
// microseconds, truncated to milliseconds; each output may be null. Creation
// is the birth time where the file system records it, else the time of the
// last status change. A time outside the 32-bit seconds range fails with -1.
KI_API int kiFile_GetTimes(const char* path, kitimeval* access, kitimeval* modification,
                           kitimeval* creation);
// Renames a file or directory; never replaces an existing target (error 17,
// -4). Both must be on the same file system (else error 18, -1).
KI_API int kiFile_Rename(const char* oldPath, const char* newPath);
// Sets the size of path, creating it when missing. Answers 0, -1 for an
// invalid name, else the raw errno value (not a code). Intended: a refused
// open is not reported as such; the next step then fails on the missing
// descriptor and reports "cannot move pointer" with error 9 (EBADF).
KI_API int kiFile_SetSize(const char* path, long long size);
// 1 when the existing file at path can be opened for mode (0x01 read, 0x02
// write, both, or 0 for neither), else 0; directories answer 0. Intended: the
// message "Cannot check access" is logged when the check succeeds (with the
// errno of that moment, normally 0), and nothing when it fails.
KI_API int kiFile_Access(const char* path, int mode);

#endif  // KI_PROC_KIFILE_H
