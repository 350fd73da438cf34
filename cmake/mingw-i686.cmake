# MinGW-w64 for 32-bit x86. On Linux the tools carry the target's prefix; on Windows itself (for example an
# MSYS2 "MINGW32" shell) they are found on the path under their plain names.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86)

set(_target i686-w64-mingw32)
find_program(_cxx NAMES ${_target}-g++-posix ${_target}-g++ g++ REQUIRED)
find_program(_rc NAMES ${_target}-windres windres REQUIRED)

set(CMAKE_CXX_COMPILER ${_cxx})
set(CMAKE_RC_COMPILER ${_rc})
find_program(WIDL NAMES ${_target}-widl widl REQUIRED)

if(CMAKE_HOST_UNIX)
  set(CMAKE_FIND_ROOT_PATH /usr/${_target})
  set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
  set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
  set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
endif()
