# Clang for 32-bit x86 Windows, with the headers, libraries and linker of the MinGW-w64 that GCC brings. Clang does not
# look for them in a folder that is named for GCC's version and its threads ("14-posix"), as Debian's is.
include(${CMAKE_CURRENT_LIST_DIR}/mingw-i686.cmake)

find_program(_clang NAMES clang++ REQUIRED)
execute_process(COMMAND ${_cxx} -print-libgcc-file-name OUTPUT_VARIABLE _libgcc OUTPUT_STRIP_TRAILING_WHITESPACE
                COMMAND_ERROR_IS_FATAL ANY)
cmake_path(GET _libgcc PARENT_PATH _gcc)

set(CMAKE_CXX_COMPILER ${_clang})
set(CMAKE_CXX_COMPILER_TARGET ${_target})
# For this target GCC passes an argument of an empty class and Clang does not, so the members of a string must not come
# from both: with its assertions the library leaves all of them to the program.
set(CMAKE_CXX_FLAGS_INIT "-nostdinc++ -D_GLIBCXX_ASSERTIONS")
foreach(_folder c++ c++/${_target} c++/backward)
  string(APPEND CMAKE_CXX_FLAGS_INIT " -isystem ${_gcc}/include/${_folder}")
endforeach()
# GCC's driver links the threads that its libraries are built on by itself.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-B ${_gcc} -L ${_gcc} -pthread")
set(CMAKE_SHARED_LINKER_FLAGS_INIT ${CMAKE_EXE_LINKER_FLAGS_INIT})
