# containers/ - intrusive lists, the string-keyed hash map, references and
# user data.
list(APPEND KI_PUBLIC_HEADERS
  containers/List.h
  containers/Ref.h
  containers/StringHashMap.h
  containers/UserData.h)
list(APPEND KI_SOURCES
  containers/List.cpp
  containers/Ref.cpp
  containers/StringHashMap.cpp
  containers/UserData.cpp)
