# What depends on the word size of the compiler's programs, for our build and for those who use the SDK.
set(CORVIX_BITS 32)
set(corvix_triple i686-w64-mingw32)
set(corvix_libgcc libgcc_s_dw2-1.dll)
set(corvix_object_format pe-i386)  # windres's name for it
set(corvix_folder .)               # in the package; what is for both lies in the same places
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    set(CORVIX_BITS 64)
    set(corvix_triple x86_64-w64-mingw32)
    set(corvix_libgcc libgcc_s_seh-1.dll)
    set(corvix_object_format pe-x86-64)
    set(corvix_folder x64)
endif()

# corvix_unsupported_target(RESULT): one sentence when Corvix cannot be built or used with this compiler; empty when it can.
# A module must share the library's layout of classes and its way to throw, so the compiler is part of the contract.
function(corvix_unsupported_target result)
    set(compilers "MinGW-w64's GCC or clang for i686-w64-mingw32 or x86_64-w64-mingw32")
    set(sentence "")
    if(MSVC)
        set(sentence "Corvix modules cannot be made with Microsoft's compiler, which lays out classes and names functions in another way: use ${compilers} (on Windows from MSYS2, package mingw-w64-x86_64-gcc).")
    elseif(NOT WIN32)
        set(sentence "Corvix is for Windows, and this compiler makes programs for ${CMAKE_SYSTEM_NAME}: add -D CMAKE_TOOLCHAIN_FILE=<Corvix>/sdk/cmake/toolchain-gcc.cmake (toolchain-gcc-x64.cmake for 64 bits; in a checkout both are in cmake/) to a fresh build folder, to cross-build with ${compilers}.")
    endif()
    set(${result} "${sentence}" PARENT_SCOPE)
endfunction()
