# proc/ - the portable procedural modules.
list(APPEND KI_PUBLIC_HEADERS
  proc/kiArray.h
  proc/kiCommandLine.h
  proc/kiConfigFile.h
  proc/kiDateText.h
  proc/kiFatalError.h
  proc/kiHashTable.h
  proc/kiINIFile.h
  proc/kiMem.h
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
  proc/kiHashTable.cpp
  proc/kiINIFile.cpp
  proc/kiINIFile_p.h
  proc/kiLogError.cpp
  proc/kiLogError_p.h
  proc/kiMem.cpp
  proc/kiStr.cpp
  proc/kiTime.cpp
  proc/kiTime_p.h)
