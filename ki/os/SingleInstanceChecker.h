// SingleInstanceChecker.h - kiSingleInstanceChecker: tells whether another
// process (or another checker) already holds a name.
#ifndef KI_OS_SINGLEINSTANCECHECKER_H
#define KI_OS_SINGLEINSTANCECHECKER_H

#include "ki/Export.h"

struct kiOSSingleInstanceChecker;  // opaque; defined by the platform layer

// Holds the name "<name>" or "<name>-<suffix>" (a null suffix adds nothing)
// for the checker's lifetime, system-wide; the system releases it when the
// process ends, however it ends. A null or empty name, a name that is not
// valid UTF-8, or a system failure is logged and answered as an error with
// another instance running. Not copyable.
class KI_API kiSingleInstanceChecker {
 public:
  kiSingleInstanceChecker(const char* name, const char* suffix);
  ~kiSingleInstanceChecker();
  kiSingleInstanceChecker(const kiSingleInstanceChecker&) = delete;
  kiSingleInstanceChecker& operator=(const kiSingleInstanceChecker&) = delete;

  // True when the name was held already when this checker was made (or on
  // error).
  bool IsAnotherRunning() const;
  bool Error() const;

 private:
  kiOSSingleInstanceChecker* m_os;  // owned; null when memory was short
};

#endif  // KI_OS_SINGLEINSTANCECHECKER_H
