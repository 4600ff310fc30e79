// PathName.cpp - kiPathName: splitting built paths, the anchored constructor
// with its simplification, and the path parts.
#include "ki/files/PathName.h"

#include "ki/files/File.h"
#include "ki/proc/kiDir.h"
#include "ki/proc/kiMem.h"
#include "ki/proc/kiPath.h"
#include "ki/proc/kiPath_p.h"

namespace {

// fullName split at its last '.'; a final '.' stays in the name.
void SplitFullName(const kiCString& fullName, kiCString& name, kiCString& extension) {
  const unsigned int dot = fullName.Find('.', true);
  if (dot == kiNPos || dot + 1 == fullName.length()) {
    name = fullName;
    extension.Empty();
  } else {
    name = fullName.Left(dot);
    extension = fullName.Mid(dot + 1);
  }
}

}  // namespace

kiPathName::kiPathName(int kind, const char* path) : m_kind(kiPathKind_Invalid) {
  SetFullPath(path, kind);
}

kiPathName::kiPathName(const char* dir, const char* fullName) : m_kind(kiPathKind_Invalid) {
  SetFullPath(dir, kiPathKind_Dir);
  SetFullName(fullName);
}

kiPathName::kiPathName(const char* dir, const char* name, const char* extension)
    : m_kind(kiPathKind_Invalid) {
  if (SetFullPath(dir, kiPathKind_Dir)) {
    SetFileName(name);
    SetExtension(extension);
  }
  if (!IsFilePath()) Reset();
}

kiPathName::kiPathName(const kiPathName& anchor, const char* relative, int kind)
    : m_kind(kiPathKind_Invalid) {
  if (kind != kiPathKind_File && kind != kiPathKind_Dir) return;
  const kiCString base = anchor.IsValid() ? anchor.m_path : kiCString();
  char* built = kiPath_MakeAbsolute(relative, kind == kiPathKind_Dir, 0,
                                    base.IsEmpty() ? nullptr : base.c_str());
  const bool split = Split(built, kind);
  kiMem_Free(built);
  if (!split) return;
  char* simple = kiPath_Simplify(m_path);
  const bool dots = m_extension.IsEmpty() && (m_name == "." || m_name == "..");
  if (simple == nullptr || dots) {
    Reset();
  } else {
    m_path = simple;
    Update();
  }
  kiMem_Free(simple);
}

bool kiPathName::SetFullPath(const char* path, int kind) {
  if (kind != kiPathKind_File && kind != kiPathKind_Dir) {
    Reset();
    return false;
  }
  char* built = kiPath_MakeAbsolute(path, kind == kiPathKind_Dir, 0, nullptr);
  const bool split = Split(built, kind);
  kiMem_Free(built);
  return split;
}

bool kiPathName::Split(const char* text, int kind) {
  Reset();
  if (text == nullptr) return false;
  kiCString whole(text);
  if (kind == kiPathKind_Dir) {
    if (!whole.IsEmpty() && whole.Last() != '/') whole += '/';
    m_path = whole;
  } else {
    const unsigned int slash = whole.Find('/', true);
    if (slash == kiNPos) return false;
    m_path = whole.Left(slash + 1);
    SplitFullName(whole.Mid(slash + 1), m_name, m_extension);
  }
  Update();
  if (m_kind == kind) return true;
  Reset();
  return false;
}

void kiPathName::Update() {
  if (m_path.IsEmpty()) {
    Reset();
    return;
  }
  m_kind = m_name.IsEmpty() && m_extension.IsEmpty() ? kiPathKind_Dir : kiPathKind_File;
  m_fullPath = m_path + GetFullName();
}

void kiPathName::Reset() {
  m_kind = kiPathKind_Invalid;
  m_path.Empty();
  m_name.Empty();
  m_extension.Empty();
  m_fullPath.Empty();
}

kiCString kiPathName::GetFullName() const {
  if (m_extension.IsEmpty()) return m_name;
  return m_name + '.' + m_extension;
}

void kiPathName::SetPath(const char* path) {
  m_path = path;
  Update();
}

void kiPathName::SetFileName(const char* name) {
  m_name = name;
  Update();
}

void kiPathName::SetExtension(const char* extension) {
  m_extension = extension;
  Update();
}

void kiPathName::SetFullName(const char* fullName) {
  SplitFullName(kiCString(fullName), m_name, m_extension);
  Update();
}

void kiPathName::AppendPathPart(const char* part) {
  if (part == nullptr || part[0] == '\0') return;
  if (m_path.IsEmpty()) {
    SetPath(part);
    return;
  }
  m_path += part;
  if (m_path.Last() != '/') m_path += '/';
  Update();
}

unsigned int kiPathName::GetPathCount() const { return m_path.Freq('/'); }

kiCString kiPathName::GetPathPart(unsigned int index) const {
  unsigned int begin = 0;
  for (unsigned int i = 0; i < index; ++i) {
    const unsigned int slash = m_path.FindFirstOf("/", begin);
    if (slash == kiNPos) return kiCString();
    begin = slash + 1;
  }
  const unsigned int end = m_path.FindFirstOf("/", begin);
  return m_path.Mid(begin, end == kiNPos ? kiNPos : end - begin);
}

kiCString kiPathName::GetDirName() const {
  const unsigned int count = GetPathCount();
  return count == 0 ? kiCString() : GetPathPart(count - 1);
}

kiCString kiPathName::GetVolume() const {
  if (!IsValid()) return kiCString();
  return m_path.BeforeFirst('/') + '/';
}

kiPathName kiPathName::GetParentPath() const {
  kiPathName parent;
  if (IsFilePath()) {
    parent = *this;
    parent.ToDirPath();
  } else if (IsDirPath()) {
    unsigned int length = m_path.length();
    while (length > 0 && m_path.c_str()[length - 1] == '/') --length;
    const unsigned int slash = length == 0 ? kiNPos : m_path.Left(length).Find('/', true);
    if (slash != kiNPos) parent.SetPath(m_path.Left(slash + 1));
  }
  return parent;
}

void kiPathName::ToDirPath() {
  m_name.Empty();
  m_extension.Empty();
  Update();
}

bool kiPathName::FileExists() const { return IsValid() && kiFile::Exists(m_fullPath); }

bool kiPathName::DirExists() const { return IsValid() && kiDir_Exists(m_fullPath) == 1; }

kiPathName kiPathName::MakeExistingPath(const kiCString& path) {
  if (FileExists(path)) return kiPathName(kiPathKind_File, path);
  if (DirExists(path)) return kiPathName(kiPathKind_Dir, path);
  return kiPathName();
}

kiPathName kiPathName::MakeTempDirPath() {
  char* dir = kiPath_GetAppDataDir();
  const kiPathName path(kiPathKind_Dir, dir);
  kiMem_Free(dir);
  return path;
}

bool kiPathName::IsAbsolute(const char* path) { return kiPath_IsAbsolute(path); }

bool kiPathName::IsPathOnRemovableDrive(const char* path) {
  return kiPath_GetDriveClass(path) == kiPath_DriveRemovable;
}

bool kiPathName::FileExists(const kiCString& path) { return kiFile::Exists(path); }

bool kiPathName::DirExists(const kiCString& path) { return kiDir_Exists(path) == 1; }
