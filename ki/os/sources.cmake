# os/ - the operating-system classes: locks, conditions, semaphores, threads,
# time-outs and dates, over the kiOS* records of the procedural layer.
list(APPEND KI_PUBLIC_HEADERS
  os/Condition.h
  os/CriticalSection.h
  os/DateTime.h
  os/Mutex.h
  os/Semaphore.h
  os/SingleInstanceChecker.h
  os/StoppableThread.h
  os/Timeout.h)
# Forwarding headers of the procedural interfaces that moved to proc/; kept
# for one release.
list(APPEND KI_PUBLIC_HEADERS
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
  os/Timeout_p.h)
