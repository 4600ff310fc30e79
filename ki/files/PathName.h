// PathName.h - kiPathName, an absolute path split into its directory, file
// name and extension.
#ifndef KI_FILES_PATHNAME_H
#define KI_FILES_PATHNAME_H

#include "ki/Export.h"
#include "ki/core/CString.h"

// The kinds of a kiPathName (GetKind).
enum {
  kiPathKind_Invalid = 0,  // empty or invalid: every field empty
  kiPathKind_File = 1,     // a directory part and a name and/or extension
  kiPathKind_Dir = 2       // a directory part only
};

// A value of four fields: the kind, the directory part ('/'-separated and,
// when built from text, absolute and ending in '/'), the file name without
// its extension, and the extension (the text after the last '.' of the file
// name, without the dot). The kind always follows the fields: 2 when only the
// path is set, 1 when the name or the extension is set as well, and 0 when
// the path is empty, which empties the other fields too (Reset).
//
// Text goes through kiPath_MakeAbsolute: special-folder tokens are expanded,
// a relative path is anchored at the application's directory (or at the
// anchor of the anchored constructor), and '\\' becomes '/'. A text the
// builder refuses gives an empty path. Only the anchored constructor
// simplifies ("." and ".." segments); the others keep the text as it is. A
// null text counts as empty everywhere. A file name ending in '.' keeps that
// dot in its name ("a." is name "a.", no extension), so that every file name
// survives GetFullName. Copyable; not locked; nothing throws.
class KI_API kiPathName {
 public:
  kiPathName() : m_kind(kiPathKind_Invalid) {}
  // SetFullPath(path, kind).
  kiPathName(int kind, const char* path);
  // A directory dir holding the file fullName (split by SetFullName); the
  // kind follows the fields, so an empty fullName gives the directory.
  kiPathName(const char* dir, const char* fullName);
  // A directory dir holding the file name.extension; anything but a file path
  // (an invalid dir, an empty name and extension) gives an empty path.
  kiPathName(const char* dir, const char* name, const char* extension);
  // relative resolved against anchor, split as for kind (1 or 2), then
  // simplified (see kiPath_Simplify): "../x" at the directory "/a/b/" is the
  // file "/a/x". An absolute relative ignores the anchor; an anchor of kind 0
  // means the application's directory; a file anchor resolves against the
  // directory that holds it. Going above the root more than once, or a file
  // name that is "." or "..", gives an empty path.
  kiPathName(const kiPathName& anchor, const char* relative, int kind);

  // Replaces the fields with path split as kind: made absolute (stripping
  // trailing separators for a directory, which then ends in exactly one
  // '/'); a file path takes the text after the last '/' as its full name,
  // which must not be empty. Any other outcome than a path of the kind asked
  // for (kind 0 included) resets. Answers IsValid().
  bool SetFullPath(const char* path, int kind);

  // The path followed by the full name. c_str() and the conversion give the
  // same text; it stays valid until the object changes.
  const kiCString& GetFullPath() const { return m_fullPath; }
  const char* c_str() const { return m_fullPath.c_str(); }
  operator const char*() const {
    return m_fullPath.c_str();
  }  // NOLINT(google-explicit-constructor)
  // The name, then "." and the extension when there is one.
  kiCString GetFullName() const;
  const kiCString& GetPath() const { return m_path; }
  const kiCString& GetFileName() const { return m_name; }
  const kiCString& GetExtension() const { return m_extension; }

  // Each sets one field as it is (no check, no normalisation) and then
  // recomputes the kind, so emptying the path resets everything.
  void SetPath(const char* path);
  void SetFileName(const char* name);
  void SetExtension(const char* extension);
  // Splits at the last '.': "b.c.txt" is name "b.c", extension "txt"; no '.'
  // (or a final one) leaves it all name.
  void SetFullName(const char* fullName);

  // Adds a directory: an empty part does nothing; on an empty path it becomes
  // the path as it is (SetPath: no '/' is added, intended); otherwise the part
  // is appended and a '/' added when it does not end in one. Nothing is
  // normalised.
  void AppendPathPart(const char* part);

  // The number of '/' in the path.
  unsigned int GetPathCount() const;
  // Index 0 is the text before the first '/' (the volume: empty on POSIX, "C:"
  // on Windows); index i the text between the i-th '/' and the next one (or
  // the end). Past the last '/': empty.
  kiCString GetPathPart(unsigned int index) const;
  // The last directory's name, GetPathPart(GetPathCount() - 1); empty when the
  // path holds no '/'.
  kiCString GetDirName() const;
  // The text before the first '/' followed by '/' ("/" on POSIX); empty for
  // kind 0.
  kiCString GetVolume() const;
  // For a file, the directory that holds it; for a directory, the one above
  // it; kind 0 for a root ("/", "C:/") or a directory part without a '/' above
  // its last segment, and for kind 0.
  kiPathName GetParentPath() const;
  // Empties name and extension: a file path becomes the directory that held
  // the file.
  void ToDirPath();

  bool IsValid() const { return m_kind != kiPathKind_Invalid; }
  bool IsFilePath() const { return m_kind == kiPathKind_File; }
  bool IsDirPath() const { return m_kind == kiPathKind_Dir; }
  int GetKind() const { return m_kind; }

  // Whether the full path exists as a file (anything but a directory) / as a
  // directory; false for kind 0.
  bool FileExists() const;
  bool DirExists() const;

  // Kind 0, every field empty.
  void Reset();

  static kiPathName MakeFilePath(const char* path) { return kiPathName(kiPathKind_File, path); }
  static kiPathName MakeDirPath(const char* path) { return kiPathName(kiPathKind_Dir, path); }
  static kiPathName MakeFilePath(const char* dir, const char* fullName) {
    return kiPathName(dir, fullName);
  }
  static kiPathName MakeCombinedFilePath(const kiPathName& anchor, const char* relative) {
    return kiPathName(anchor, relative, kiPathKind_File);
  }
  static kiPathName MakeCombinedDirPath(const kiPathName& anchor, const char* relative) {
    return kiPathName(anchor, relative, kiPathKind_Dir);
  }
  // A file path when a file exists at path, else a directory path when a
  // directory does, else an empty path.
  static kiPathName MakeExistingPath(const kiCString& path);
  // kiPath_GetAppDataDir() as a directory path (created when missing); empty
  // when it cannot be had.
  static kiPathName MakeTempDirPath();
  // kiPath_IsAbsolute.
  static bool IsAbsolute(const char* path);
  // kiPath_GetDriveClass(path) is kiPath_DriveRemovable.
  static bool IsPathOnRemovableDrive(const char* path);
  // Existence by text (kiFile_Exists / kiDir_Exists, which log an invalid
  // name).
  static bool FileExists(const kiCString& path);
  static bool DirExists(const kiCString& path);

 private:
  // Splits built (an absolute text) as kind; false when it is no path of
  // that kind (the fields are then reset).
  bool Split(const char* text, int kind);
  // The kind from the fields, resetting when the path is empty, and the
  // full path again.
  void Update();

  int m_kind;
  kiCString m_path;
  kiCString m_name;
  kiCString m_extension;
  kiCString m_fullPath;  // m_path + GetFullName(), kept for c_str()
};

#endif  // KI_FILES_PATHNAME_H
