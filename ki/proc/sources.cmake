# proc/ - the procedural layer: every procedural interface (the kiOS* records,
# files, directories, paths, the platform services, memory, time, INI and
# configuration files, ...) and the portable code behind them. The platform
# folder implements the declarations that need the operating system.
list(APPEND KI_PUBLIC_HEADERS
  proc/kiArray.h
  proc/kiCommandLine.h
  proc/kiConfigFile.h
  proc/kiDateText.h
  proc/kiDebug.h
  proc/kiDir.h
  proc/kiFatalError.h
  proc/kiFile.h
  proc/kiHashTable.h
  proc/kiINIFile.h
  proc/kiLog.h
  proc/kiMem.h
  proc/kiOSThread.h
  proc/kiPath.h
  proc/kiPlatform.h
  proc/kiStr.h
  proc/kiTime.h)
list(APPEND KI_SOURCES
  proc/kiArray.cpp
  proc/kiCommandLine.cpp
  proc/kiConfigFile.cpp
  proc/kiConfigFile_p.h
  proc/kiDateText.cpp
  proc/kiFatalError.cpp
  proc/kiFatalError_p.h
  proc/kiFile.cpp
  proc/kiFile_p.h
  proc/kiHashTable.cpp
  proc/kiINIFile.cpp
  proc/kiINIFile_p.h
  proc/kiLogError.cpp
  proc/kiLogError_p.h
  proc/kiMem.cpp
  proc/kiOSCondition.cpp
  proc/kiOSFault.cpp
  proc/kiOSThread_p.h
  proc/kiPath.cpp
  proc/kiPath_p.h
  proc/kiPlatform.cpp
  proc/kiPlatform_p.h
  proc/kiStr.cpp
  proc/kiTime.cpp
  proc/kiTime_p.h
  proc/kiUTF8.cpp
  proc/kiUTF8_p.h)
