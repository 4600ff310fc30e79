# core/ - strings, conversions, tokenizers, errors, byte buffers and the log
# convention.
list(APPEND KI_PUBLIC_HEADERS
  core/BitString.h
  core/CString.h
  core/Convert.h
  core/DataBuffer.h
  core/Error.h
  core/Log.h
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
  core/UInt64.cpp
  core/UTF8_p.h
  core/UTF8.cpp)
