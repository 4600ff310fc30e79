// Dir.h - kiDir, a directory with its filtered listing, and the directory
// operations by path (existence, creation, removal, times, the mounted roots).
#ifndef KI_FILES_DIR_H
#define KI_FILES_DIR_H

#include "ki/Export.h"
#include "ki/containers/List.h"
#include "ki/core/CString.h"
#include "ki/files/PathName.h"
#include "ki/os/DateTime.h"

struct kiOSDirList;

// Which entries a listing reports (GetFirst, GetCount).
enum {
  kiDirFlag_Files = 0x01,   // entries that are not directories (links included)
  kiDirFlag_Dirs = 0x02,    // directories
  kiDirFlag_Hidden = 0x04,  // hidden entries too (POSIX: a name starting with '.')
  kiDirFlag_Dots = 0x08     // the entries "." and ".." too (they are never hidden)
};

// A directory and at most one listing of it. The listing reports, among the
// names that match the filter (shell wildcards, see kiDir_OpenList; empty:
// "*"), each directory when kiDirFlag_Dirs is set and each other entry when
// kiDirFlag_Files is, hidden ones only with kiDirFlag_Hidden, "." and ".."
// only with kiDirFlag_Dots. Entries come in the system's order, each as a
// kiPathName under the directory: a directory path for a directory, a file
// path otherwise, its fields set from the name as it is (not through the
// path builder). Names holding '\\' or '<' mean something else once passed
// back to a function that takes a path (POSIX allows them; Windows does not).
//
// Messages come from the kiDir_* layer (category kiLogCat_Dir). Not copyable;
// not locked; nothing throws.
class KI_API kiDir {
 public:
  kiDir() : m_list(nullptr), m_error(false), m_flags(0) {}
  // Open(path).
  explicit kiDir(const char* path);
  ~kiDir() { Close(); }
  kiDir(const kiDir&) = delete;
  kiDir& operator=(const kiDir&) = delete;

  // Ends any listing and takes path (built like every path) as the directory
  // when a directory exists there; otherwise the path stays empty. Clears the
  // error flag. Answers IsOpened().
  bool Open(const char* path);
  // Ends any listing and forgets the directory.
  void Close();
  bool IsOpened() const { return m_pathName.IsValid(); }
  // Whether the last listing (or count) could not be opened or read.
  bool Error() const { return m_error; }
  // The directory as a directory path; empty when none is open.
  const kiPathName& GetPathName() const { return m_pathName; }

  // Starts a new listing with filter and flags (kiDirFlag_*) and hands out
  // its first entry. False when no entry is reported, entry then being
  // reset; also when no directory is open or the listing fails (Error()).
  bool GetFirst(kiPathName& entry, const kiCString& filter, int flags);
  // The next entry of the listing; false (entry reset) at its end, after a
  // read error (Error()), and when none was started.
  bool GetNext(kiPathName& entry);
  // The listing starts again: the next GetNext hands out its first entry.
  // False when no listing was started.
  bool Rewind();

  // The number of entries a listing with filter and flags reports; 0, with
  // Error(), when it cannot be listed. The current listing is not disturbed.
  int GetCount(const kiCString& filter, int flags);
  // Whether a listing of visible files (kiDirFlag_Files) / visible
  // directories (kiDirFlag_Dirs; "." and ".." do not count) reports anything.
  bool HasFiles(const kiCString& filter = kiCString());
  bool HasDirs(const kiCString& filter = kiCString());

  // kiDir_Exists / kiDir_Create / kiDir_CreateRecursively / kiDir_Remove as
  // booleans.
  static bool Exists(const char* path);
  static bool Create(const char* path);
  static bool CreateRecursively(const char* path);
  static bool Remove(const char* path);
  // Up to attempts passes, while the directory exists: each lists it with
  // "*" and files, directories and hidden entries, removes each directory
  // with RemoveRecursively(sub, 1) and everything else with kiFile::Remove,
  // stopping at the first failure, and then the directory itself. True when
  // no directory is left at path before a pass (so for a missing directory,
  // and, intended, for a path naming a file, which is left alone), else the
  // outcome of the last pass (false for 0 attempts). Links are removed, never
  // followed. An entry whose name holds '\\' or '<' is not removed: it fails
  // the pass, logged as "RemoveRecursively: Cannot remove '%s' (the name is
  // not a usable path)\n".
  static bool RemoveRecursively(const char* path, unsigned int attempts = 1);
  // kiDir_GetTimes into each non-null kiDateTime (as kiFile::GetTimes); on
  // failure they are left unchanged.
  static bool GetTimes(const char* path, kiDateTime* access, kiDateTime* modification,
                       kiDateTime* creation);
  // The roots of the mounted file systems (kiDir_GetRootDirs) as directory
  // paths ending in '/', in a new list owned by the caller (delete). Never
  // null, never empty.
  static kiList<kiPathName>* GetRootDirList();

 private:
  // The next entry of list that flags report, into entry: 1, 0 at the end,
  // -1 after an error.
  int ReadWanted(kiOSDirList* list, int flags, kiPathName* entry) const;
  // How many entries a fresh listing reports, stopping at limit.
  int Count(const kiCString& filter, int flags, int limit);
  void EndList();
  static bool RemoveOnePass(const char* path);

  kiPathName m_pathName;
  kiOSDirList* m_list;  // owned; null when no listing runs
  bool m_error;
  int m_flags;
};

#endif  // KI_FILES_DIR_H
