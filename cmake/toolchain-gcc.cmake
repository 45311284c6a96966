# Cross build for 32-bit Windows with GCC. The posix variant: the win32 one has no std::mutex.
include("${CMAKE_CURRENT_LIST_DIR}/toolchain-windows.cmake")

set(CMAKE_C_COMPILER i686-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER i686-w64-mingw32-g++-posix)
