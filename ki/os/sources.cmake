# os/ - the operating-system services: declarations here, one implementation
# per platform folder.
list(APPEND KI_PUBLIC_HEADERS
  os/kiDebug.h
  os/kiPlatform.h)
