# posix/ - the platform layer for POSIX systems.
find_package(Threads REQUIRED)
list(APPEND KI_SOURCES
  posix/kiDebug.cpp
  posix/kiDir.cpp
  posix/kiFile.cpp
  posix/kiOSMutex.cpp
  posix/kiOSSemaphore.cpp
  posix/kiOSSingleInstanceChecker.cpp
  posix/kiOSThread.cpp
  posix/kiPath.cpp
  posix/kiPathFolders.cpp
  posix/kiPlatform.cpp
  posix/kiPosix.cpp
  posix/kiPosix_p.h
  posix/kiTime.cpp)
set(KI_PLATFORM_LIBRARIES Threads::Threads ${CMAKE_DL_LIBS})
