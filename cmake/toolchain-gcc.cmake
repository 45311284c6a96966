# Cross build for Windows with GCC, 32 bits unless toolchain-gcc-x64.cmake says otherwise. The posix variant: the win32
# one has no std::mutex.
include("${CMAKE_CURRENT_LIST_DIR}/toolchain-windows.cmake")

set(CMAKE_C_COMPILER ${corvix_triple}-gcc-posix)
set(CMAKE_CXX_COMPILER ${corvix_triple}-g++-posix)
