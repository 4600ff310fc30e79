// kiPath.cpp - the portable string logic of the path builder: token expansion,
// anchoring, prefixes, separators and trailing separators, for both dialects;
// simplification; and the builder's public entry points with their seams.
#include "ki/proc/kiPath.h"

#include <cstring>
#include <string>
#include <vector>

#include "ki/proc/kiLog.h"
#include "ki/proc/kiMem.h"
#include "ki/proc/kiPath_p.h"

KI_LOG_SOURCE("os/kiPath")

const char* const kiPath_FolderNames[kiPathFolder_Count] = {
    "MyAppData",     "MyMusic",          "MyPictures",    "MyVideos",
    "AllUsersMusic", "AllUsersPictures", "AllUsersVideos"};

namespace {

// The seams' state: constant-initialised, never destroyed (tests only).
char* g_folderRoot = nullptr;
bool g_dialectSet = false;
kiPathDialect g_dialect = kiPathDialect_Posix;
char* g_defaultAnchor = nullptr;

bool IsSeparator(char c) { return c == '/' || c == '\\'; }

void Replace(char** held, const char* text) {
  kiMem_Free(*held);
  *held = kiMem_Strdup(text);
}

// Replaces every "<token>" by its folder. Folders are not searched again, so
// a folder whose name holds '<' cannot loop.
bool ExpandTokens(std::string& text, kiPath_FolderSource folders) {
  std::size_t from = 0;
  for (std::size_t open; (open = text.find('<', from)) != std::string::npos;) {
    const std::size_t close = text.find('>', open + 1);
    if (close == std::string::npos || close == open + 1) return false;
    const int index = kiPath_FindFolder(text.c_str() + open + 1, close - open - 1);
    if (index < 0 || folders == nullptr) return false;
    char* folder = folders(index);
    if (folder == nullptr) return false;
    const std::size_t length = std::strlen(folder);
    text.replace(open, close - open + 1, folder, length);
    kiMem_Free(folder);
    from = open + length;
  }
  return true;
}

kiPathDialect CurrentDialect() { return g_dialectSet ? g_dialect : kiPath_GetPlatformDialect(); }

char* DefaultAnchor() {
  if (g_defaultAnchor != nullptr) return kiMem_Strdup(g_defaultAnchor);
  return kiPath_GetApplicationDir();
}

}  // namespace

int kiPath_FindFolder(const char* token, std::size_t length) {
  if (token == nullptr || length == 0) return -1;
  for (int i = 0; i < kiPathFolder_Count; ++i) {
    const char* name = kiPath_FolderNames[i];
    if (length <= std::strlen(name) && std::strncmp(name, token, length) == 0) return i;
  }
  return -1;
}

bool kiPath_IsAbsoluteIn(const char* path, kiPathDialect dialect) {
  if (path == nullptr) return false;
  if (path[0] == '\0') return true;  // kept for compatibility: nothing to anchor
  if (dialect == kiPathDialect_Posix) return path[0] == '/';
  if (path[0] == '.') return false;
  // A single leading separator is not absolute here: it gets the anchor.
  return path[1] == ':' || (path[0] == '\\' && path[1] == '\\');
}

char* kiPath_Build(const char* path, bool stripTrailing, int flags, const char* anchor,
                   kiPathDialect dialect, kiPath_FolderSource folders,
                   kiPath_AnchorSource defaultAnchor) {
  if (path == nullptr) return nullptr;
  std::string text(path);
  if (!ExpandTokens(text, folders)) return nullptr;

  if (!kiPath_IsAbsoluteIn(text.c_str(), dialect)) {
    if (text == ".") {
      text.clear();
    } else if (text.size() >= 2 && text[0] == '.' && IsSeparator(text[1])) {
      text.erase(0, 2);
    }
    char* fallback = nullptr;
    if (anchor == nullptr && defaultAnchor != nullptr) fallback = defaultAnchor();
    const char* used = anchor != nullptr ? anchor : fallback;
    if (used == nullptr) {
      KI_LOG(kiLogLevel_Error, kiLogCat_Path,
             "kiPath: Cannot get an anchor path (or none specified) to build an absolute path for "
             "'%s'\n",
             path);
      return nullptr;
    }
    text.insert(0, used);
    kiMem_Free(fallback);
  }

  // Where separators start to be converted: after a "\\?\" prefix or the two
  // backslashes of a UNC path, which stay as they are.
  std::size_t start = 0;
  if (dialect == kiPathDialect_Windows) {
    const bool prefixed = text.compare(0, 4, "\\\\?\\") == 0;
    const bool unc = !prefixed && text.compare(0, 2, "\\\\") == 0;
    if ((flags & kiPath_LongPrefix) != 0 && !prefixed) {
      if (unc) {
        text.replace(0, 2, "\\\\?\\UNC\\");
      } else {
        text.insert(0, "\\\\?\\");
      }
      start = unc ? 8 : 4;
    } else {
      start = prefixed ? 4 : (unc ? 2 : 0);
    }
  }
  const char from = (flags & kiPath_Backslashes) != 0 ? '/' : '\\';
  const char to = (flags & kiPath_Backslashes) != 0 ? '\\' : '/';
  for (std::size_t i = start; i < text.size(); ++i) {
    if (text[i] == from) text[i] = to;
  }

  if (stripTrailing) {
    // A drive root ("C:\\") keeps its separator.
    while (text.size() > 1 && IsSeparator(text.back()) &&
           !(dialect == kiPathDialect_Windows && text.size() == 3 && text[1] == ':')) {
      text.pop_back();
    }
  }
  return kiMem_Strndup(text.data(), static_cast<unsigned int>(text.size()));
}

char* kiPath_Simplify(const char* text) {
  if (text == nullptr) return nullptr;
  std::vector<std::string> segments;
  for (const char* at = text; *at != '\0';) {
    const char* end = std::strchr(at, '/');
    if (end == nullptr) end = at + std::strlen(at);
    if (end > at) segments.emplace_back(at, end);
    at = *end == '/' ? end + 1 : end;
  }
  const bool rooted = text[0] == '/';
  const std::size_t length = std::strlen(text);
  bool trailing = length > 0 && text[length - 1] == '/';
  if (!segments.empty() && (segments.back() == "." || segments.back() == "..")) trailing = true;

  std::string result = rooted ? "/" : "";
  std::size_t first = 0;
  if (!rooted && !segments.empty() && segments[0] != "." && segments[0] != "..") {
    result = segments[0];  // the volume
    first = 1;
  }
  std::vector<std::string> kept;
  bool steppedAboveRoot = false;
  for (std::size_t i = first; i < segments.size(); ++i) {
    const std::string& segment = segments[i];
    if (segment == ".") continue;
    if (segment != "..") {
      kept.push_back(segment);
    } else if (!kept.empty()) {
      kept.pop_back();
    } else if (rooted && !steppedAboveRoot) {
      steppedAboveRoot = true;  // intended: "/.." is the root, but only once
    } else {
      return nullptr;
    }
  }
  for (const std::string& segment : kept) {
    if (!result.empty() && result.back() != '/') result += '/';
    result += segment;
  }
  if (trailing && !result.empty() && result.back() != '/') result += '/';
  if (result.empty()) result = "/";
  return kiMem_Strndup(result.data(), static_cast<unsigned int>(result.size()));
}

char* kiPath_GetFolder(int index) {
  if (index < 0 || index >= kiPathFolder_Count) return nullptr;
  if (g_folderRoot == nullptr) return kiPath_GetSpecialFolder(index);
  char* folder = kiMem_StrConcat(g_folderRoot, "/");
  kiMem_StrAppend(&folder, kiPath_FolderNames[index]);
  return folder;
}

char* kiPath_MakeAbsolute(const char* path, bool stripTrailing, int flags, const char* anchor) {
  return kiPath_Build(path, stripTrailing, flags, anchor, CurrentDialect(), kiPath_GetFolder,
                      DefaultAnchor);
}

bool kiPath_IsAbsolute(const char* path) { return kiPath_IsAbsoluteIn(path, CurrentDialect()); }

void kiPath_SetFolderRootForTesting(const char* root) { Replace(&g_folderRoot, root); }

void kiPath_SetDialectForTesting(kiPathDialect dialect, const char* defaultAnchor) {
  g_dialectSet = true;
  g_dialect = dialect;
  Replace(&g_defaultAnchor, defaultAnchor);
}

void kiPath_ResetForTesting() {
  Replace(&g_folderRoot, nullptr);
  g_dialectSet = false;
  Replace(&g_defaultAnchor, nullptr);
  kiPath_SetMountTableForTesting(nullptr);
}
