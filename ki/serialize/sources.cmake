# serialize/ - the serialization interface, JSON text, property lists, media
# info and the DLNA profile table.
list(APPEND KI_PUBLIC_HEADERS
  serialize/DLNAInfoMatcher.h
  serialize/JSONFormatter.h
  serialize/MediaInfo.h
  serialize/PackedData.h
  serialize/PropertyList.h
  serialize/Serialize.h)
list(APPEND KI_SOURCES
  serialize/DLNAInfoMatcher.cpp
  serialize/DLNAInfoMatcher_p.h
  serialize/JSONFormatter.cpp
  serialize/JSONParse.cpp
  serialize/MediaInfo.cpp
  serialize/PackedData.cpp
  serialize/PropertyList.cpp
  serialize/Serialize.cpp)
