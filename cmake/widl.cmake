# One IDL file gives a header, a GUID definition file and, where it has a library block, a type library.

if(CMAKE_HOST_UNIX)
  # oaidl.idl comes with libwine-dev; stdole2.tlb with either of Wine's library folders.
  set(WIDL_FLAGS -I /usr/include/wine/wine/windows)
  foreach(folder /usr/lib/i386-linux-gnu/wine/i386-windows /usr/lib/x86_64-linux-gnu/wine/x86_64-windows)
    if(EXISTS ${folder}/stdole2.tlb)
      list(APPEND WIDL_FLAGS -L ${folder})
      break()
    endif()
  endforeach()
endif()

# Type libraries are finished by a script.
find_program(PERL perl REQUIRED)

# add_idl(NAME path/to/name.idl [TYPELIB] [DEPENDS other.idl ...])
# Makes the library NAME_idl: its GUIDs, and the generated name.h on the include path of whoever links it. With TYPELIB
# also name.tlb, in IDL_OUT beside the header.
set(IDL_OUT ${CMAKE_BINARY_DIR}/idl)
file(MAKE_DIRECTORY ${IDL_OUT})

function(add_idl name source)
  cmake_parse_arguments(arg "TYPELIB" "" "DEPENDS" ${ARGN})
  cmake_path(GET source STEM stem)
  set(command ${WIDL} ${WIDL_FLAGS} -I ${CMAKE_BINARY_DIR}/generated -m32)
  set(outputs ${IDL_OUT}/${stem}.h ${IDL_OUT}/${stem}_i.c)
  set(calls COMMAND ${command} -h -o ${IDL_OUT}/${stem}.h ${source}
            COMMAND ${command} -u -o ${IDL_OUT}/${stem}_i.c ${source})
  if(arg_TYPELIB)
    list(APPEND outputs ${IDL_OUT}/${stem}.tlb)
    list(APPEND calls COMMAND ${command} -t -o ${IDL_OUT}/${stem}.tlb ${source}
                      COMMAND ${PERL} ${CMAKE_SOURCE_DIR}/cmake/finish_typelib.pl ${IDL_OUT}/${stem}.tlb)
  endif()
  list(TRANSFORM arg_DEPENDS PREPEND ${CMAKE_SOURCE_DIR}/)
  add_custom_command(OUTPUT ${outputs} ${calls} DEPENDS ${CMAKE_SOURCE_DIR}/${source} ${arg_DEPENDS}
                     ${CMAKE_BINARY_DIR}/generated/version.h
                     ${CMAKE_SOURCE_DIR}/cmake/finish_typelib.pl
                     # widl finds an import by path only from the folder it runs in.
                     WORKING_DIRECTORY ${CMAKE_SOURCE_DIR} VERBATIM)
  add_library(${name}_idl STATIC ${outputs})
  set_source_files_properties(${IDL_OUT}/${stem}_i.c PROPERTIES LANGUAGE CXX COMPILE_OPTIONS "-w")
  target_include_directories(${name}_idl SYSTEM INTERFACE ${IDL_OUT})
endfunction()
