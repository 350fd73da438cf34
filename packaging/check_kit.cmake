# Puts the check kit together in OUTPUT: the programs, the suites and what they use, in the folders that the suites know.
#
#   cmake -DSOURCE_DIR=... -DBUILD_DIR=... -DOUTPUT=... -DZIP=... -DTESTS=... -P check_kit.cmake
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/make_zip.cmake)

set(work ${BUILD_DIR}/check-kit-work)
file(REMOVE_RECURSE ${work} ${OUTPUT})
file(COPY ${BUILD_DIR}/SentrelConfig.exe ${BUILD_DIR}/SentrelStandin.exe ${BUILD_DIR}/CalvaneConfigLoader.exe
     ${BUILD_DIR}/CalvaneSetup.exe ${BUILD_DIR}/Arc.wav ${BUILD_DIR}/generated/check.cmd
     ${BUILD_DIR}/documents/docs/windows-check.html DESTINATION ${work})
file(COPY ${TESTS} ${BUILD_DIR}/tests/data ${BUILD_DIR}/generated/suites.txt DESTINATION ${work}/tests)
make_zip(${OUTPUT} ${work})
file(REMOVE_RECURSE ${work})
