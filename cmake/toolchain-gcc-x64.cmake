# Cross build for 64-bit Windows: as toolchain-gcc.cmake.
set(corvix_triple x86_64-w64-mingw32)
include("${CMAKE_CURRENT_LIST_DIR}/toolchain-gcc.cmake")
