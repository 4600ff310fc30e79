# files/ - files, text files, path names and directories: the classes over the
# kiFile_*, kiPath_* and kiDir_* functions of the platform layer.
list(APPEND KI_PUBLIC_HEADERS
  files/Dir.h
  files/File.h
  files/FileHelper.h
  files/PathName.h
  files/TextFile.h)
list(APPEND KI_SOURCES
  files/Dir.cpp
  files/File.cpp
  files/FileHelper.cpp
  files/PathName.cpp
  files/TextFile.cpp
  files/Times_p.h)
