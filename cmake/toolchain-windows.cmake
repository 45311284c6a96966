# What both compilers share: the target, where its libraries are, and how its programs run here. Included by
# toolchain-gcc.cmake and toolchain-clang.cmake.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86)

set(CMAKE_RC_COMPILER i686-w64-mingw32-windres)
set(CMAKE_STRIP i686-w64-mingw32-strip)

set(CMAKE_FIND_ROOT_PATH /usr/i686-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

get_filename_component(corvix_checkout "${CMAKE_CURRENT_LIST_DIR}" DIRECTORY)
set(CMAKE_CROSSCOMPILING_EMULATOR "${corvix_checkout}/scripts/wine-run")
