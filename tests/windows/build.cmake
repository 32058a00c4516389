# cmake -DTOOLCHAIN=... -DBUILD=... [-DLAUNCHER=...] -P build.cmake
# Cross-compiles the project in program/; says so when there is no compiler for Windows.
find_program(MINGW_CXX x86_64-w64-mingw32-g++-posix)
if(NOT MINGW_CXX)
    message("no compiler for Windows is installed (Debian: g++-mingw-w64-x86-64-posix)")
    return()
endif()
execute_process(
    COMMAND ${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/program -B ${BUILD} --toolchain ${TOOLCHAIN}
        -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER_LAUNCHER=${LAUNCHER}
    COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} --build ${BUILD} COMMAND_ERROR_IS_FATAL ANY)
