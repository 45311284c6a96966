# corvix_unsupported_target(RESULT): one sentence when Corvix cannot be built or used with this compiler; empty when it can.
# A module must share the library's layout of classes and its way to throw, so the compiler is part of the contract.
function(corvix_unsupported_target result)
    set(compilers "MinGW-w64's GCC or clang for i686-w64-mingw32")
    set(sentence "")
    if(MSVC)
        set(sentence "Corvix modules cannot be made with Microsoft's compiler, which lays out classes and names functions in another way: use ${compilers} (on Windows from MSYS2, package mingw-w64-i686-gcc).")
    elseif(NOT WIN32)
        set(sentence "Corvix is for Windows, and this compiler makes programs for ${CMAKE_SYSTEM_NAME}: add -D CMAKE_TOOLCHAIN_FILE=<Corvix>/sdk/cmake/toolchain-gcc.cmake (in a checkout cmake/toolchain-gcc.cmake) to a fresh build folder, to cross-build with ${compilers}.")
    elseif(CMAKE_SIZEOF_VOID_P AND NOT CMAKE_SIZEOF_VOID_P EQUAL 4)
        set(sentence "Corvix is offered for 32-bit Windows only, and this compiler makes 64-bit programs: use ${compilers}, or add -m32 to one that has the 32-bit libraries.")
    endif()
    set(${result} "${sentence}" PARENT_SCOPE)
endfunction()
