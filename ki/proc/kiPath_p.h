// kiPath_p.h - the string logic of the path builder, kept apart from the
// platform so that both path dialects can be tested anywhere, the platform's
// special folders behind it, and the builder's test seams. Not installed.
#ifndef KI_PROC_KIPATH_P_H
#define KI_PROC_KIPATH_P_H

#include <cstddef>

#include "ki/Export.h"

enum kiPathDialect {
  kiPathDialect_Posix,   // absolute: a leading '/'
  kiPathDialect_Windows  // absolute: a drive ("C:") or a UNC path ("\\server"); "\\?\" prefixes
};

// The special-folder tokens, in the order an abbreviation is matched:
// "MyAppData", "MyMusic", "MyPictures", "MyVideos", "AllUsersMusic",
// "AllUsersPictures", "AllUsersVideos".
enum { kiPathFolder_AppData = 0, kiPathFolder_Count = 7 };
extern KI_API const char* const kiPath_FolderNames[kiPathFolder_Count];

// The first folder whose name begins with the length bytes of token, or -1
// (also for a null token and a length of 0).
KI_API int kiPath_FindFolder(const char* token, std::size_t length);

// A folder of the table as a new block, or null when it cannot be had.
typedef char* (*kiPath_FolderSource)(int index);
// The default anchor (the application's directory) as a new block, or null.
typedef char* (*kiPath_AnchorSource)();

// kiPath_MakeAbsolute for a dialect, with the platform's pieces passed in.
// anchor null: defaultAnchor() when a relative path needs one; when none can
// be had the failure is logged. A null folder source fails every token.
// Null path: null.
KI_API char* kiPath_Build(const char* path, bool stripTrailing, int flags, const char* anchor,
                          kiPathDialect dialect, kiPath_FolderSource folders,
                          kiPath_AnchorSource defaultAnchor);

KI_API bool kiPath_IsAbsoluteIn(const char* path, kiPathDialect dialect);

// text simplified, as a new block: runs of '/' become one, "." segments go,
// and each ".." removes the segment before it. A text that does not start
// with '/' keeps its first segment (the volume: "C:", "\\server"), which no
// ".." removes. A ".." with nothing before it fails (null), except once right
// at the root of a text that starts with '/'. A trailing '/' is kept, and a
// final "." or ".." leaves one; a text left empty becomes "/". Null: null.
KI_API char* kiPath_Simplify(const char* text);

// ---- Implemented once per platform folder ---------------------------------

// The dialect of the platform's paths.
kiPathDialect kiPath_GetPlatformDialect();
// A folder of the table from the platform (no seam), or null.
char* kiPath_GetSpecialFolder(int index);

// ---- Used by the platform folder ------------------------------------------

// The folder of index: the seam's root + "/" + the token name when one is
// set, else kiPath_GetSpecialFolder. A new block, or null.
char* kiPath_GetFolder(int index);

// ---- Test seams (tests only: not synchronised, set them before the code
// under test runs). kiPath_ResetForTesting restores the platform's behaviour.

// Every special folder becomes root + "/" + its token name ("/t/MyMusic");
// null: the platform's folders.
KI_API void kiPath_SetFolderRootForTesting(const char* root);
// kiPath_MakeAbsolute and kiPath_IsAbsolute follow dialect, and relative
// paths without an anchor get defaultAnchor (null: the application's
// directory). kiPathName and kiDir then see the dialect's paths too.
KI_API void kiPath_SetDialectForTesting(kiPathDialect dialect, const char* defaultAnchor);
// The mount table is read from file instead of the system's (POSIX:
// /proc/self/mountinfo; null: that one again). Used by kiPath_GetDriveClass
// and kiDir::GetRootDirList.
KI_API void kiPath_SetMountTableForTesting(const char* file);
// Clears the three seams above.
KI_API void kiPath_ResetForTesting();

#endif  // KI_PROC_KIPATH_P_H
