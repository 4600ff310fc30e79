# core/ - strings, conversions, tokenizers, errors, byte buffers and 64-bit
# values.
list(APPEND KI_PUBLIC_HEADERS
  core/BitString.h
  core/CString.h
  core/Convert.h
  core/Log.h  # forwards to proc/kiLog.h; kept for one release
  core/DataBuffer.h
  core/Error.h
  core/Obfuscate.h
  core/String.h
  core/StringData.h
  core/StringList.h
  core/StringTokenizer.h
  core/UInt64.h)
list(APPEND KI_SOURCES
  core/BitString.cpp
  core/CString.cpp
  core/Convert.cpp
  core/DataBuffer.cpp
  core/Error.cpp
  core/Obfuscate.cpp
  core/Obfuscate_p.h
  core/String.cpp
  core/StringCore_p.h
  core/StringList.cpp
  core/StringTokenizer.cpp
  core/StringTokenizer_p.h
  core/UInt64.cpp)
