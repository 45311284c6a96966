# What both compilers share: the target, where its libraries are, and how its programs run here. Included by
# toolchain-gcc.cmake and toolchain-clang.cmake. Those for 64 bits set corvix_triple first.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)
if(NOT corvix_triple)
    set(corvix_triple i686-w64-mingw32)
    set(CMAKE_SYSTEM_PROCESSOR x86)
endif()

set(CMAKE_RC_COMPILER ${corvix_triple}-windres)
set(CMAKE_STRIP ${corvix_triple}-strip)

# Packages are found where the caller says that they are, although that is outside of the target's own folder.
set(CMAKE_FIND_ROOT_PATH /usr/${corvix_triple} ${CMAKE_PREFIX_PATH} ${Corvix_ROOT} $ENV{Corvix_ROOT})
if(DEFINED ENV{CMAKE_PREFIX_PATH})
    cmake_path(CONVERT "$ENV{CMAKE_PREFIX_PATH}" TO_CMAKE_PATH_LIST corvix_prefixes)
    list(APPEND CMAKE_FIND_ROOT_PATH ${corvix_prefixes})
endif()
if(EXISTS "${CMAKE_CURRENT_LIST_DIR}/CorvixConfig.cmake")  # this is the SDK's copy
    get_filename_component(corvix_sdk "${CMAKE_CURRENT_LIST_DIR}" DIRECTORY)
    list(APPEND CMAKE_PREFIX_PATH "${corvix_sdk}")
    list(APPEND CMAKE_FIND_ROOT_PATH "${corvix_sdk}")
endif()
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# A checkout has a runner of its own; with the SDK it is the machine's Wine.
get_filename_component(corvix_checkout "${CMAKE_CURRENT_LIST_DIR}" DIRECTORY)
if(CMAKE_CROSSCOMPILING_EMULATOR)
    # the caller's choice
elseif(EXISTS "${corvix_checkout}/scripts/wine-run")
    set(CMAKE_CROSSCOMPILING_EMULATOR "${corvix_checkout}/scripts/wine-run")
elseif(NOT CMAKE_HOST_WIN32)
    find_program(CORVIX_WINE wine)
    if(CORVIX_WINE)
        set(CMAKE_CROSSCOMPILING_EMULATOR "${CORVIX_WINE}")
    endif()
endif()
