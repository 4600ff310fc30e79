# config/ - configuration and the command line: the classes that read what a
# program is told at start-up.
list(APPEND KI_PUBLIC_HEADERS
  config/CommandLineParser.h
  config/Config.h)
list(APPEND KI_SOURCES
  config/CommandLineParser.cpp
  config/Config.cpp)
