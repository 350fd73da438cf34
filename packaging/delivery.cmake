# What is done to the programs that users get: they are signed, and their symbols are kept in files of their own.

set(SIGN_COMMAND "" CACHE STRING "Command that signs the file given to it as the last argument, in place; a list")

# The linker leaves it out of the program: with it or without, the program's bytes are the same. Paths begin at the source
# folder wherever that lies.
function(add_debug_information target)
  set(options -g -ffile-prefix-map=${CMAKE_SOURCE_DIR}=. -ffile-prefix-map=${CMAKE_BINARY_DIR}=build)
  target_compile_options(${target} PRIVATE "$<$<AND:$<CONFIG:MinSizeRel>,$<COMPILE_LANGUAGE:CXX>>:${options}>")
endfunction()

# deliver(PROGRAM [OBJECT_LIBRARY...]): signs the program as it is built, and adds the target PROGRAM_symbols, which makes
# symbols/PROGRAM.exe.debug for gdb -s: the same objects linked once more, since stripping a linked program would neither
# give the same bytes nor the same ones twice. The time in the header is the program's own, which is none.
function(deliver program)
  add_debug_information(${program})
  if(SIGN_COMMAND)
    add_custom_command(TARGET ${program} POST_BUILD COMMAND ${SIGN_COMMAND} $<TARGET_FILE:${program}> VERBATIM)
  endif()
  set(objects $<TARGET_OBJECTS:${program}>)
  foreach(library ${ARGN})
    list(APPEND objects $<TARGET_OBJECTS:${library}>)
  endforeach()
  set(symbols ${program}_symbols)
  add_executable(${symbols} WIN32 EXCLUDE_FROM_ALL ${objects})
  target_link_libraries(${symbols} PRIVATE $<TARGET_PROPERTY:${program},LINK_LIBRARIES>)
  set_target_properties(${symbols} PROPERTIES LINKER_LANGUAGE CXX KEEPS_SYMBOLS ON OUTPUT_NAME ${program}
                        RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/symbols)
  add_custom_command(TARGET ${symbols} POST_BUILD
    COMMAND ${CMAKE_OBJCOPY} --only-keep-debug --preserve-dates $<TARGET_FILE:${symbols}> $<TARGET_FILE:${symbols}>.debug VERBATIM)
endfunction()
