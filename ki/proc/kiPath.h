// kiPath.h - the path builder of the platform layer: special-folder tokens,
// anchoring of relative paths, separators, and the application's own file.
// Library paths are UTF-8 with '/' separators; only this layer and the file
// functions below it turn them into platform paths. Every text result is a
// new block owned by the caller (kiMem_Free), or null on failure.
#ifndef KI_PROC_KIPATH_H
#define KI_PROC_KIPATH_H

#include "ki/Export.h"

// Flags of kiPath_MakeAbsolute.
enum {
  kiPath_Backslashes = 0x01,  // '\\' separators (else '/')
  kiPath_LongPrefix = 0x02    // the "\\?\" prefix of long Windows paths (none on POSIX)
};

// Results of kiPath_GetDriveClass.
enum {
  kiPath_DriveUnknown = 0,
  kiPath_DriveRemote = 1,
  kiPath_DriveFixed = 2,
  kiPath_DriveRemovable = 3  // removable media, optical discs and RAM disks
};

// path made absolute:
//  1. special-folder tokens are expanded: "<MyMusic>/a.mp3" is the user's
//     music folder followed by "/a.mp3"; a token may be abbreviated ("<My>"
//     is the first folder whose name begins so, "<MyAppData>"). An unclosed
//     '<', "<>", an unknown name or a folder that cannot be had fails
//     (silently: the callers name the path);
//  2. a relative path loses a leading ".", "./" or ".\" and gets the anchor
//     in front: the one given, or the application's directory when anchor is
//     null (never the working directory). When no anchor can be had the
//     failure is logged. On POSIX a path is absolute when it starts with '/';
//  3. separators become '/' ('\' too, so a '\' never reaches a POSIX name),
//     or '\' with kiPath_Backslashes. kiPath_LongPrefix does nothing on
//     POSIX;
//  4. with stripTrailing, trailing separators go, but never the last
//     character.
// Nothing is simplified: "." and ".." segments stay. Null path: null.
KI_API char* kiPath_MakeAbsolute(const char* path, bool stripTrailing, int flags,
                                 const char* anchor);

// Whether path is absolute (starts with '/' on POSIX). Null is not; the empty
// text is (kept for compatibility: it is left as it is).
KI_API bool kiPath_IsAbsolute(const char* path);

// The running program's file, '/'-separated (POSIX: /proc/self/exe); null when
// it cannot be read, or, logged, when it is 1040 bytes or longer.
KI_API char* kiPath_GetApplicationFileName();
// Its directory, ending in '/'; null when the file name cannot be had.
KI_API char* kiPath_GetApplicationDir();
// The part after the last '/'; with stripExe a final ".exe" (any case) goes
// when the name is longer than 3 characters. Null when the file name cannot
// be had.
KI_API char* kiPath_GetApplicationName(bool stripExe);
// The user's application-data folder (the "<MyAppData>" token: POSIX
// $XDG_DATA_HOME, else ~/.local/share), without a trailing '/', created with
// its missing parents (mode 0700) when missing. Null, logged, when it cannot
// be named or created.
KI_API char* kiPath_GetAppDataDir();
// The kind of storage that holds path (kiPath_Drive*). POSIX: the file system
// mounted where the path (or, when it does not exist, its nearest existing
// parent) lies: network file systems are remote, tmpfs/ramfs and optical
// file systems removable, a block device flagged removable removable, other
// stored file systems fixed; pseudo file systems (proc, sysfs...), a null or
// relative path and an unreadable mount table give unknown.
KI_API int kiPath_GetDriveClass(const char* path);

#endif  // KI_PROC_KIPATH_H
