# Puts together what is published, in OUTPUT: the installer, the programs and documents to be used without it, the symbols, the
# check kit where there is one, and the checksums. The same files make the same bytes at any time, in any folder.
#
#   cmake -DVERSION=... -DSOURCE_DIR=... -DBUILD_DIR=... -DOUTPUT=... -DZIP=... [-DCHECK_KIT=...] -P dist.cmake
cmake_minimum_required(VERSION 3.25)

include(${CMAKE_CURRENT_LIST_DIR}/make_zip.cmake)

file(REMOVE_RECURSE ${OUTPUT})
file(MAKE_DIRECTORY ${OUTPUT})
file(COPY_FILE ${BUILD_DIR}/CalvaneSetup.exe ${OUTPUT}/CalvaneSetup-${VERSION}.exe)
if(CHECK_KIT)
  file(COPY ${CHECK_KIT} DESTINATION ${OUTPUT})
endif()

set(work ${BUILD_DIR}/dist-work)
file(REMOVE_RECURSE ${work})
file(COPY ${BUILD_DIR}/SentrelConfig.exe ${BUILD_DIR}/CalvaneConfigLoader.exe ${BUILD_DIR}/Arc.wav
     DESTINATION ${work}/portable)
file(COPY ${BUILD_DIR}/documents/ DESTINATION ${work}/portable)
file(GLOB pictures ${SOURCE_DIR}/docs/pictures/*.png)
file(COPY ${pictures} DESTINATION ${work}/portable/docs/pictures)
file(COPY ${SOURCE_DIR}/packaging/policy/ DESTINATION ${work}/portable/policy FILES_MATCHING PATTERN *.adm?)
make_zip(${OUTPUT}/Calvane-${VERSION}-portable.zip ${work}/portable)
file(COPY ${BUILD_DIR}/symbols/SentrelConfig.exe.debug ${BUILD_DIR}/symbols/CalvaneConfigLoader.exe.debug
     DESTINATION ${work}/symbols)
make_zip(${OUTPUT}/Calvane-${VERSION}-symbols.zip ${work}/symbols)
file(REMOVE_RECURSE ${work})

file(GLOB files RELATIVE ${OUTPUT} ${OUTPUT}/*)
list(SORT files)
set(sums "")
foreach(file ${files})
  file(SHA256 ${OUTPUT}/${file} sum)
  string(APPEND sums "${sum}  ${file}\n")
endforeach()
file(WRITE ${OUTPUT}/SHA256SUMS "${sums}")
