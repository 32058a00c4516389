# cmake -DROOT=... -DSOURCE=... -DOBJECT=... -P compileforwindows.cmake
# Compiles one source with mingw-w64, with our warnings as errors; says so when there is no such compiler.
find_program(MINGW_CXX NAMES x86_64-w64-mingw32-g++-posix x86_64-w64-mingw32-g++)
if(NOT MINGW_CXX)
    message("no compiler for Windows is installed (Debian: g++-mingw-w64-x86-64-posix)")
    return()
endif()
file(REMOVE ${OBJECT})
execute_process(
    COMMAND ${MINGW_CXX} -std=c++20 -Wall -Wextra -Wshadow -Wconversion -Werror -I${ROOT} -c ${SOURCE} -o ${OBJECT}
    RESULT_VARIABLE result)
if(NOT result EQUAL 0 OR NOT EXISTS ${OBJECT})
    message(FATAL_ERROR "${SOURCE} does not compile for Windows")
endif()
