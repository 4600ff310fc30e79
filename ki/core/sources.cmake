# core/ - memory, strings, conversions, tokenizers and the log convention.
list(APPEND KI_PUBLIC_HEADERS
  core/CString.h
  core/Log.h
  core/String.h
  core/StringData.h)
list(APPEND KI_SOURCES
  core/CString.cpp
  core/String.cpp
  core/StringCore_p.h)
