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
    set(machine "${CMAKE_CXX_COMPILER_TARGET}")
    if(NOT machine AND CMAKE_CXX_COMPILER)
        # It knows best: the system's processor says what the machine is, and toolchain files say what they like.
        separate_arguments(flags NATIVE_COMMAND "${CMAKE_CXX_COMPILER_ARG1} ${CMAKE_CXX_FLAGS}")
        execute_process(COMMAND "${CMAKE_CXX_COMPILER}" ${flags} -dumpmachine
            OUTPUT_VARIABLE machine ERROR_QUIET OUTPUT_STRIP_TRAILING_WHITESPACE)
    endif()
    set(compilers "MinGW-w64's GCC or clang for i686-w64-mingw32 or x86_64-w64-mingw32")
    set(sentence "")
    if(MSVC OR CMAKE_CXX_SIMULATE_ID STREQUAL "MSVC" OR machine MATCHES "-msvc")
        set(sentence "Corvix modules cannot be made with Microsoft's compiler or one that makes the same, which lays out classes and names functions in another way: use ${compilers} (on Windows from MSYS2, package mingw-w64-x86_64-gcc).")
    elseif(NOT WIN32)
        set(sentence "Corvix is for Windows, and this compiler makes programs for ${CMAKE_SYSTEM_NAME}: add -D CMAKE_TOOLCHAIN_FILE=<Corvix>/sdk/cmake/toolchain-gcc.cmake (toolchain-gcc-x64.cmake for 64 bits; in a checkout both are in cmake/) to a fresh build folder, to cross-build with ${compilers}.")
    elseif(machine MATCHES "-" AND NOT machine MATCHES "^(i[3-6]86|x86_64)-")
        set(sentence "Corvix modules are made for x86, and this compiler makes programs for ${machine}: use ${compilers}.")
    endif()
    set(${result} "${sentence}" PARENT_SCOPE)
endfunction()
