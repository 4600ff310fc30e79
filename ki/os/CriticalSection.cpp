// CriticalSection.cpp - kiCriticalSection and its locker over kiOSCriticalSection.
#include "ki/os/CriticalSection.h"

#include "ki/proc/kiFatalError.h"
#include "ki/proc/kiOSThread.h"

kiCriticalSection::kiCriticalSection() : m_os(kiOSCriticalSection_New()) {
  if (m_os == nullptr) kiFatalError("os:criticalsection");
}

kiCriticalSection::~kiCriticalSection() { kiOSCriticalSection_Delete(m_os); }

int kiCriticalSection::Enter() { return kiOSCriticalSection_Enter(m_os); }

int kiCriticalSection::Leave() { return kiOSCriticalSection_Leave(m_os); }

kiCriticalSectionLocker::kiCriticalSectionLocker(kiCriticalSection* section) : m_section(section) {
  if (m_section != nullptr) m_section->Enter();
}

kiCriticalSectionLocker::~kiCriticalSectionLocker() {
  if (m_section != nullptr) m_section->Leave();
}
