// PathTestSupport.h - what the path, path-name and directory tests share: a
// fixture that restores the builder's seams and the environment, and small
// file helpers.
#ifndef KI_TESTS_FILES_PATHTESTSUPPORT_H
#define KI_TESTS_FILES_PATHTESTSUPPORT_H

#include <cstdlib>
#include <fstream>
#include <map>
#include <string>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include "ki/proc/kiMem.h"
#include "ki/proc/kiPath_p.h"
#include "support/LogCapture.h"
#include "support/TempDir.h"

namespace kiTest {

// A builder result as a string ("(null)" for null); the block is freed.
inline std::string Taken(char* text) {
  const std::string taken = text != nullptr ? text : "(null)";
  kiMem_Free(text);
  return taken;
}

inline std::string RealPath(const char* path) { return Taken(realpath(path, nullptr)); }

inline bool IsDir(const std::string& path) {
  struct stat st;
  return stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

// Writes text to path, making its missing parent directories first.
inline void WriteFile(const std::string& path, const std::string& text) {
  for (std::size_t at = path.find('/', 1); at != std::string::npos; at = path.find('/', at + 1)) {
    mkdir(path.substr(0, at).c_str(), 0700);
  }
  std::ofstream(path) << text;
}

// One line of a mount table: point mounted with type from source.
inline std::string MountLine(const std::string& point, const char* type, const char* source) {
  return "1 0 0:1 / " + point + " rw shared:1 - " + type + " " + source + " rw\n";
}

// Exactly one record was captured: level 1, with this category, tag and text.
inline void ExpectOnlyLog(const LogCapture& log, unsigned category, const char* source,
                          const std::string& text) {
  const std::vector<LogRecord> records = log.Records();
  ASSERT_EQ(1u, records.size()) << (records.empty() ? "" : records[0].text);
  EXPECT_EQ(1u, records[0].level);
  EXPECT_EQ(category, records[0].category);
  EXPECT_EQ(source, records[0].source);
  EXPECT_EQ(text, records[0].text);
}

// Environment variables set for one test (null: unset), restored afterwards.
class EnvGuard {
 public:
  ~EnvGuard() {
    for (const auto& saved : m_saved)
      Put(saved.first.c_str(), saved.second.first ? saved.second.second.c_str() : nullptr);
  }
  void Set(const char* name, const char* value) {
    const char* old = std::getenv(name);
    m_saved.emplace(name, std::make_pair(old != nullptr, std::string(old != nullptr ? old : "")));
    Put(name, value);
  }

 private:
  static void Put(const char* name, const char* value) {
    if (value != nullptr) {
      setenv(name, value, 1);
    } else {
      unsetenv(name);
    }
  }

  std::map<std::string, std::pair<bool, std::string>> m_saved;  // the first value seen
};

class PathFixture : public ::testing::Test {
 protected:
  ~PathFixture() override { kiPath_ResetForTesting(); }

  TempDir dir_;
  EnvGuard env_;
};

}  // namespace kiTest

#endif  // KI_TESTS_FILES_PATHTESTSUPPORT_H
