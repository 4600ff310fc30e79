// CriticalSection.h - kiCriticalSection, a recursive lock without
// bookkeeping, and kiCriticalSectionLocker, its scope guard.
#ifndef KI_OS_CRITICALSECTION_H
#define KI_OS_CRITICALSECTION_H

#include "ki/Export.h"

struct kiOSCriticalSection;  // opaque; defined by the platform layer

// Recursive for the thread that holds it. Construction never fails: when the
// system cannot make it, kiFatalError("os:criticalsection") ends the process.
// Not copyable.
class KI_API kiCriticalSection {
 public:
  kiCriticalSection();
  ~kiCriticalSection();
  kiCriticalSection(const kiCriticalSection&) = delete;
  kiCriticalSection& operator=(const kiCriticalSection&) = delete;

  int Enter();  // 0
  int Leave();  // 0; 1 when the calling thread does not hold it (POSIX)

 private:
  kiOSCriticalSection* m_os;  // owned
};

// Enters the section for its own lifetime.
class KI_API kiCriticalSectionLocker {
 public:
  explicit kiCriticalSectionLocker(kiCriticalSection* section);
  ~kiCriticalSectionLocker();
  kiCriticalSectionLocker(const kiCriticalSectionLocker&) = delete;
  kiCriticalSectionLocker& operator=(const kiCriticalSectionLocker&) = delete;

 private:
  kiCriticalSection* m_section;
};

#endif  // KI_OS_CRITICALSECTION_H
