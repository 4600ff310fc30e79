# os/ - the operating-system services and threads: the kiOS* declarations
# (implemented once per platform folder), the classes over them, and the parts
# built only from other kiOS records (the condition), which are portable.
list(APPEND KI_PUBLIC_HEADERS
  os/Condition.h
  os/CriticalSection.h
  os/DateTime.h
  os/Mutex.h
  os/Semaphore.h
  os/SingleInstanceChecker.h
  os/StoppableThread.h
  os/Timeout.h
  os/kiDebug.h
  os/kiDir.h
  os/kiFile.h
  os/kiOSThread.h
  os/kiPath.h
  os/kiPlatform.h)
list(APPEND KI_SOURCES
  os/Condition.cpp
  os/CriticalSection.cpp
  os/DateTime.cpp
  os/Mutex.cpp
  os/Semaphore.cpp
  os/SingleInstanceChecker.cpp
  os/StoppableThread.cpp
  os/Timeout.cpp
  os/Timeout_p.h
  os/kiOSCondition.cpp
  os/kiOSFault.cpp
  os/kiOSThread_p.h
  os/kiPath.cpp
  os/kiPath_p.h
  os/kiPlatform.cpp
  os/kiPlatform_p.h)
