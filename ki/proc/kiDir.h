// kiDir.h - the directory functions of the platform layer: existence,
// creation, removal, times, the mounted roots, and listings filtered by a
// wildcard pattern. kiDir (ki/files/Dir.h) is built on them.
//
// Every path goes through kiPath_MakeAbsolute (with kiPath_LongPrefix), so
// tokens and relative paths work as everywhere in ki. A path the builder
// refuses (null, a bad token, no anchor) is an "invalid name": logged, -1.
// Errors are errno values (positive). Messages print a null path as "(null)"
// and are logged at level 1, category kiLogCat_Dir.
#ifndef KI_PROC_KIDIR_H
#define KI_PROC_KIDIR_H

#include "ki/Export.h"
#include "ki/proc/kiTime.h"

struct kiOSDirList;  // an open listing; defined by the platform layer

// One entry of a listing; name points into the listing and is valid until the
// next read, rewind or close.
struct kiDirEntry {
  const char* name;
  bool isDirectory;  // a directory (POSIX: a symbolic link never is one)
  bool isHidden;     // POSIX: the name starts with '.' ("." and ".." are not hidden)
};

// 1 when a directory exists at path (links followed), else 0. An invalid name
// logs "kiDir: Cannot check directory '%s' exists (invalid name)\n".
KI_API int kiDir_Exists(const char* path);

// Makes one directory (mode 0777 less the umask). 0, or the errno value logged
// as "kiDir: Cannot create directory '%s' (error = %ld)\n" (an existing
// directory gives EEXIST: intended, the call creates); -1 for an invalid name.
KI_API int kiDir_Create(const char* path);

// Makes the directory and every missing parent; existing parts are left
// alone, so an existing tree succeeds. 0, or -1 after one of
// "kiDir: Cannot create directory path: '%s' (invalid path)\n" (the builder
// refused the path), "kiDir: Cannot analyze directory path: '%s' (invalid
// path)\n" (the result is not rooted at '/', e.g. the empty path) and
// "kiDir: Cannot create directory path part: '%s' (path size = %d)\n" (the
// first part that could not be made, and its length in bytes).
KI_API int kiDir_CreateRecursively(const char* path);

// Removes an empty directory. 0, or the errno value logged as "kiDir: Cannot
// remove directory '%s' (errno = %ld)\n" (a missing one gives ENOENT); -1 for
// an invalid name.
KI_API int kiDir_Remove(const char* path);

// Makes the entries of the directory durable (POSIX: opens it, fsync, closes
// it), so that a file created, renamed or removed in it stays so after a power
// loss. 0, or the errno value logged as "kiDir: Cannot sync directory '%s'
// (error = %ld)\n" (a missing one gives ENOENT); -1 for an invalid name,
// logged as "kiDir: Cannot sync directory: '%s' (invalid name)\n".
KI_API int kiDir_Sync(const char* path);

// The times of path as kiFile_GetTimes gives them (any output may be null),
// with its codes and messages, once the name is checked here: -1 for an
// invalid name, logged as "kiDir: Cannot get modification time for
// directory: '%s' (invalid name)\n".
KI_API int kiDir_GetTimes(const char* path, kitimeval* access, kitimeval* modification,
                          kitimeval* creation);

// Opens a listing of the entries of dir whose names match filter (shell
// wildcards as fnmatch takes them, case-sensitive, '*' matching a leading
// '.'); a null or empty filter is "*". Stores the listing in *list (null on
// failure) and answers 0. A filter holding '/' or an invalid dir logs
// "kiDir: Cannot enumerate files in directory '%s' using specified '%s'\n"
// and answers -1; a directory that cannot be opened logs "kiFile: Cannot
// enumerate files in directory '%s' (error = %d)\n" (kept for compatibility:
// the file module's prefix) and answers the errno value. Null list: -1.
KI_API int kiDir_OpenList(const char* dir, const char* filter, kiOSDirList** list);

// The next matching entry: 1 with *entry filled, 0 at the end of the listing,
// -1 after a read error, logged as "kiDir: Cannot continue enumerating files
// in directory (error = %d)\n". "." and ".." are listed when they match.
// Null list or entry: -1, nothing logged.
KI_API int kiDir_ReadList(kiOSDirList* list, kiDirEntry* entry);

// Starts the listing again from its first entry. Null: nothing.
KI_API void kiDir_RewindList(kiOSDirList* list);

// Ends a listing. Null: nothing.
KI_API void kiDir_CloseList(kiOSDirList* list);

// The roots of the mounted file systems that hold files, as one new block of
// zero-terminated paths ending with an empty one ("/\0/home\0\0"), owned by
// the caller (kiMem_Free). POSIX: the mount points of the mount table in its
// order, each once, that are directories (network mounts are not examined,
// so that a lost server cannot hang the call), skipping pseudo file systems
// (proc, sysfs, cgroup, devtmpfs...) and what is mounted below them; "/"
// alone when the table cannot be read. Never null.
KI_API char* kiDir_GetRootDirs();

#endif  // KI_PROC_KIDIR_H
