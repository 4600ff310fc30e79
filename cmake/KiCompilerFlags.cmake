# KiCompilerFlags.cmake - warnings, visibility and sanitizer settings shared by every ki target.

# Warnings for a target of the project; errors when KI_WERROR is on (CI).
function(ki_set_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wformat=2)
  if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    target_compile_options(${target} PRIVATE -Wthread-safety)
  endif()
  if(KI_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()

# Rules for the libraries themselves: no exceptions, hidden symbols, nothing
# run at load time, and no 64-bit value cut to 32 bits unseen (clang checks
# the last two: block sizes are 32-bit, counts and lengths often size_t).
function(ki_library_flags target)
  ki_set_warnings(${target})
  target_compile_options(${target} PRIVATE -fno-exceptions)
  set_target_properties(${target} PROPERTIES
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    POSITION_INDEPENDENT_CODE ON)
  if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    target_compile_options(${target} PRIVATE -Wglobal-constructors -Wexit-time-destructors
      -Wshorten-64-to-32)
  endif()
endfunction()

macro(ki_apply_sanitizers)
  if(KI_SANITIZE)
    set(_ki_san_flags -fsanitize=${KI_SANITIZE} -fno-omit-frame-pointer -g)
    if(KI_SANITIZE MATCHES "undefined")
      list(APPEND _ki_san_flags -fno-sanitize-recover=undefined)
    endif()
    add_compile_options(${_ki_san_flags})
    add_link_options(-fsanitize=${KI_SANITIZE})
  endif()
endmacro()
