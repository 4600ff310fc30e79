# CheckLayers.cmake - fails when a file under LIBRARY includes a header of a
# higher layer, or when a file outside the platform folders includes a header
# that only the operating system provides. Run with
#   cmake -DLIBRARY=<the ki/ folder> -P cmake/CheckLayers.cmake
# The layers, lowest first (docs/ARCHITECTURE.md):
#   value types  ki/Export.h, ki/core/StringData.h, ki/core/UInt64.h
#   platform     posix/, win32/, multiplatform/  (may include proc/ and itself)
#   procedural   proc/                           (may include only itself)
#   classes      every other folder              (may include classes and proc/)
# Headers of the value-type row may be included from every layer.

cmake_minimum_required(VERSION 3.16)

if(NOT LIBRARY OR NOT IS_DIRECTORY "${LIBRARY}")
  message(FATAL_ERROR "CheckLayers: LIBRARY must name the library's source folder")
endif()

set(value_types "Export.h" "core/StringData.h" "core/UInt64.h")
set(platform_folders posix win32 multiplatform)
# System headers that exist only on one operating system family.
set(os_header_regex
    "^(unistd|pthread|fcntl|dirent|spawn|dlfcn|semaphore|signal|poll|netdb|pwd|grp|termios|syslog|sched|windows|winsock2|ws2tcpip|io|direct|process|shlobj|mswsock|iphlpapi)\\.h$|^(sys|netinet|arpa|linux|net)/")

# The layer of a folder under ki/: platform, proc, class or top (ki.h and
# Export.h at the root).
function(layer_of folder out)
  if(folder STREQUAL "")
    set(${out} top PARENT_SCOPE)
  elseif(folder IN_LIST platform_folders)
    set(${out} platform PARENT_SCOPE)
  elseif(folder STREQUAL "proc")
    set(${out} proc PARENT_SCOPE)
  else()
    set(${out} class PARENT_SCOPE)
  endif()
endfunction()

file(GLOB_RECURSE sources RELATIVE "${LIBRARY}" "${LIBRARY}/*.h" "${LIBRARY}/*.cpp")
list(SORT sources)
set(faults "")
foreach(source IN LISTS sources)
  get_filename_component(folder "${source}" DIRECTORY)
  layer_of("${folder}" layer)
  file(STRINGS "${LIBRARY}/${source}" includes REGEX "^[ \t]*#[ \t]*include[ \t]*[<\"]")
  foreach(line IN LISTS includes)
    if(line MATCHES "#[ \t]*include[ \t]*\"ki/([^\"]+)\"")
      set(target "${CMAKE_MATCH_1}")
      if(target IN_LIST value_types)
        continue()
      endif()
      get_filename_component(target_folder "${target}" DIRECTORY)
      layer_of("${target_folder}" target_layer)
      set(allowed FALSE)
      if(layer STREQUAL "top")
        # ki.h gathers the public headers; no platform header is public.
        if(NOT target_layer STREQUAL "platform")
          set(allowed TRUE)
        endif()
      elseif(layer STREQUAL "class")
        if(target_layer STREQUAL "class" OR target_layer STREQUAL "proc")
          set(allowed TRUE)
        endif()
      elseif(layer STREQUAL "proc")
        if(target_layer STREQUAL "proc")
          set(allowed TRUE)
        endif()
      elseif(layer STREQUAL "platform")
        if(target_layer STREQUAL "proc" OR target_folder STREQUAL folder)
          set(allowed TRUE)
        endif()
      endif()
      if(NOT allowed)
        list(APPEND faults "${source}: the ${layer} layer includes ki/${target} (${target_layer})")
      endif()
    elseif(line MATCHES "#[ \t]*include[ \t]*<([^>]+)>")
      set(header "${CMAKE_MATCH_1}")
      if(header MATCHES "${os_header_regex}" AND NOT layer STREQUAL "platform")
        list(APPEND faults "${source}: <${header}> belongs to the platform folders")
      endif()
    endif()
  endforeach()
endforeach()

if(faults)
  list(JOIN faults "\n  " text)
  message(FATAL_ERROR "Layering faults:\n  ${text}")
endif()
list(LENGTH sources count)
message(STATUS "Layering: ${count} files, no fault")
