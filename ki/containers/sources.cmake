# containers/ - intrusive lists, the string-keyed hash map, references and
# user data.
list(APPEND KI_PUBLIC_HEADERS
  containers/List.h
  containers/StringHashMap.h)
list(APPEND KI_SOURCES
  containers/List.cpp
  containers/StringHashMap.cpp)
