// TempDir.h - kiTest::TempDir: a fresh directory for one test, removed with
// everything in it when the test ends.
#ifndef KI_TESTS_SUPPORT_TEMPDIR_H
#define KI_TESTS_SUPPORT_TEMPDIR_H

#include <string>

namespace kiTest {

// Creates a new, unique directory under $TMPDIR (or /tmp when it is unset or
// empty); aborts the test program when that fails. The destructor removes the
// whole tree, including directories whose permissions were taken away, and
// never follows symbolic links out of it.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  std::string Path() const;                         // absolute, without a trailing '/'
  std::string Path(const std::string& name) const;  // Path() + "/" + name

 private:
  std::string m_path;
};

}  // namespace kiTest

#endif  // KI_TESTS_SUPPORT_TEMPDIR_H
