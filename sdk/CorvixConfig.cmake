# find_package(Corvix): the library as Corvix::corvix, the descriptor compiler as Corvix::xmlbinc, `corvix` as
# Corvix::tool, corvix_add_plugin() and corvix_add_host(). Lies in sdk/cmake of a Corvix folder; CMAKE_PREFIX_PATH or Corvix_ROOT name that folder.
get_filename_component(corvix_sdk "${CMAKE_CURRENT_LIST_DIR}/.." ABSOLUTE)
get_filename_component(corvix_root "${corvix_sdk}/.." ABSOLUTE)

include("${CMAKE_CURRENT_LIST_DIR}/CorvixTarget.cmake")
corvix_unsupported_target(Corvix_NOT_FOUND_MESSAGE)
get_filename_component(corvix_programs "${corvix_root}/${corvix_folder}" ABSOLUTE)  # those of the word size
if(Corvix_NOT_FOUND_MESSAGE)
    # that is the reason
elseif(NOT EXISTS "${corvix_root}/corvix.dll" AND NOT EXISTS "${corvix_root}/x64/corvix.dll")
    set(Corvix_NOT_FOUND_MESSAGE "corvix.dll is not in ${corvix_root}: unpack the package Runtime into the same folder as the package SDK.")
elseif(NOT EXISTS "${corvix_programs}/corvix.dll" OR NOT EXISTS "${corvix_sdk}/lib/${corvix_folder}/libcorvix.dll.a")
    math(EXPR corvix_other "96 - ${CORVIX_BITS}")
    set(Corvix_NOT_FOUND_MESSAGE "Corvix is in ${corvix_root} for ${corvix_other} bits only, and this compiler makes programs of ${CORVIX_BITS}: unpack packages that hold both (in a checkout, run make x64-stage and make stage), or use a compiler for ${corvix_other} bits.")
endif()
if(NOT Corvix_NOT_FOUND_MESSAGE AND CMAKE_CROSSCOMPILING AND NOT CMAKE_HOST_WIN32 AND NOT CMAKE_CROSSCOMPILING_EMULATOR)
    set(Corvix_NOT_FOUND_MESSAGE "Descriptors are compiled by xmlbinc.exe, which this machine cannot run: install a Wine that runs programs of ${CORVIX_BITS} bits, or set CMAKE_CROSSCOMPILING_EMULATOR to what runs them.")
endif()
if(Corvix_NOT_FOUND_MESSAGE)
    set(Corvix_FOUND FALSE)
    return()
endif()

if(NOT TARGET Corvix::corvix)
    add_library(Corvix::corvix SHARED IMPORTED)
    set_target_properties(Corvix::corvix PROPERTIES
        IMPORTED_LOCATION "${corvix_programs}/corvix.dll"
        IMPORTED_IMPLIB "${corvix_sdk}/lib/${corvix_folder}/libcorvix.dll.a"
        INTERFACE_INCLUDE_DIRECTORIES "${corvix_sdk}/include/corvix"
        INTERFACE_COMPILE_FEATURES cxx_std_17)
    add_executable(Corvix::xmlbinc IMPORTED)
    set_target_properties(Corvix::xmlbinc PROPERTIES IMPORTED_LOCATION "${corvix_programs}/xmlbinc.exe")
    add_executable(Corvix::tool IMPORTED)
    set_target_properties(Corvix::tool PROPERTIES IMPORTED_LOCATION "${corvix_programs}/corvix.exe")
endif()
set(CORVIX_SDK_VERSION "${Corvix_VERSION}")
file(GLOB CORVIX_RUNTIME_DLLS "${corvix_programs}/lib*.dll")

include("${CMAKE_CURRENT_LIST_DIR}/CorvixPlugin.cmake")
include("${CMAKE_CURRENT_LIST_DIR}/CorvixHost.cmake")
