# Builds the library again, in a folder of its own, and compares: two builds of the same sources
# are equal, byte for byte. Run with
# -D LIBRARY=... -D SOURCE=... -D BUILD=... -D COMPILER=... -D BUILD_TYPE=... -D QT_MAJOR=5
# and, for Qt 4, -D QT_QMAKE_EXECUTABLE=...

cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE ${BUILD})
foreach(arguments
    "-G;Ninja;-S;${SOURCE};-B;${BUILD};-D;CMAKE_CXX_COMPILER=${COMPILER};-D;CMAKE_BUILD_TYPE=${BUILD_TYPE};-D;KMR_QT_MAJOR=${QT_MAJOR};-D;QT_QMAKE_EXECUTABLE=${QT_QMAKE_EXECUTABLE};-D;KMR_DRIVER_ONLY=ON;-D;KMR_TESTS=OFF"
    "--build;${BUILD};--target;ostrel_kmr")
    execute_process(COMMAND ${CMAKE_COMMAND} ${arguments} OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endforeach()
execute_process(
    COMMAND ${CMAKE_COMMAND} -E compare_files ${LIBRARY} ${BUILD}/driver/libostrel_kmr.so
    RESULT_VARIABLE differ)
if(differ)
    message(FATAL_ERROR "the second build, in ${BUILD}, differs from ${LIBRARY}")
endif()
