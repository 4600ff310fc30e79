// TempDir.cpp - kiTest::TempDir: mkdtemp, and a removal that survives what
// tests do to their files.
#include "support/TempDir.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace kiTest {

namespace {

void RemoveTree(const std::string& path) {
  struct stat st;
  if (lstat(path.c_str(), &st) != 0) return;
  if (!S_ISDIR(st.st_mode)) {
    unlink(path.c_str());
    return;
  }
  // A test may have made the directory unreadable or read-only.
  chmod(path.c_str(), S_IRWXU);
  std::vector<std::string> names;
  if (DIR* dir = opendir(path.c_str())) {
    while (const dirent* entry = readdir(dir)) {
      if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0) {
        names.emplace_back(entry->d_name);
      }
    }
    closedir(dir);
  }
  for (const std::string& name : names) RemoveTree(std::string(path).append("/").append(name));
  rmdir(path.c_str());
}

}  // namespace

TempDir::TempDir() {
  const char* base = std::getenv("TMPDIR");
  std::string pattern = base != nullptr && base[0] != '\0' ? base : "/tmp";
  while (pattern.size() > 1 && pattern.back() == '/') pattern.pop_back();
  if (pattern[0] != '/') {  // a relative $TMPDIR: Path() stays valid after a chdir
    char cwd[4096];
    if (getcwd(cwd, sizeof cwd) != nullptr) pattern = std::string(cwd) + "/" + pattern;
  }
  pattern += "/kiTest-XXXXXX";
  std::vector<char> buffer(pattern.begin(), pattern.end());
  buffer.push_back('\0');
  if (mkdtemp(buffer.data()) == nullptr) {
    std::fprintf(stderr, "kiTest::TempDir: cannot create '%s': %s\n", pattern.c_str(),
                 std::strerror(errno));
    std::abort();  // every path the test would use is meaningless now
  }
  m_path = buffer.data();
}

TempDir::~TempDir() { RemoveTree(m_path); }

std::string TempDir::Path() const { return m_path; }

std::string TempDir::Path(const std::string& name) const { return m_path + "/" + name; }

}  // namespace kiTest
