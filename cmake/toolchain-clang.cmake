# Cross build for Windows with clang, on GCC's headers and run-time libraries, 32 bits unless toolchain-clang-x64.cmake
# says otherwise.
include("${CMAKE_CURRENT_LIST_DIR}/toolchain-windows.cmake")

set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_C_COMPILER_TARGET ${corvix_triple})
set(CMAKE_CXX_COMPILER_TARGET ${corvix_triple})
# LLVM's, if there are any, refuse GCC's run-time libraries and what its linker has made.
set(CMAKE_STRIP ${corvix_triple}-strip)
set(CMAKE_OBJCOPY ${corvix_triple}-objcopy)

# clang finds GCC's folder by its version number, but Debian names it "12-posix": give it a root of links where the name
# is a number.
set(corvix_sysroot "${corvix_checkout}/build/clang-sysroot")
file(GLOB corvix_gcc LIST_DIRECTORIES true "/usr/lib/gcc/${corvix_triple}/*-posix")
list(LENGTH corvix_gcc corvix_gcc_count)
if(NOT corvix_gcc_count EQUAL 1)
    message(FATAL_ERROR "Expected one /usr/lib/gcc/${corvix_triple}/*-posix, found: '${corvix_gcc}'. Run `make setup`.")
endif()
string(REGEX REPLACE "^.*/([0-9]+)-posix$" "\\1" corvix_gcc_version "${corvix_gcc}")
file(MAKE_DIRECTORY "${corvix_sysroot}/lib/gcc/${corvix_triple}")
file(CREATE_LINK "/usr/${corvix_triple}" "${corvix_sysroot}/${corvix_triple}" SYMBOLIC)
file(CREATE_LINK "${corvix_gcc}" "${corvix_sysroot}/lib/gcc/${corvix_triple}/${corvix_gcc_version}.0.0" SYMBOLIC)
set(CMAKE_SYSROOT "${corvix_sysroot}")
set(CMAKE_C_FLAGS_INIT -pthread)
set(CMAKE_CXX_FLAGS_INIT -pthread)
