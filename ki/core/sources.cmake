# core/ - memory, strings and the log convention.
list(APPEND KI_PUBLIC_HEADERS
  core/CString.h
  core/Log.h
  core/StringData.h)
list(APPEND KI_SOURCES
  core/CString.cpp
  core/StringCore_p.h)
