# find_package(Corvix) for authors of plug-ins: the library as Corvix::corvix, the descriptor compiler as
# Corvix::xmlbinc, and corvix_add_plugin(). Lies in sdk/cmake of a Corvix folder.
get_filename_component(corvix_sdk "${CMAKE_CURRENT_LIST_DIR}/.." ABSOLUTE)
get_filename_component(corvix_root "${corvix_sdk}/.." ABSOLUTE)

if(NOT TARGET Corvix::corvix)
    add_library(Corvix::corvix SHARED IMPORTED)
    set_target_properties(Corvix::corvix PROPERTIES
        IMPORTED_LOCATION "${corvix_root}/corvix.dll"
        IMPORTED_IMPLIB "${corvix_sdk}/lib/libcorvix.dll.a"
        INTERFACE_INCLUDE_DIRECTORIES "${corvix_sdk}/include"
        INTERFACE_COMPILE_FEATURES cxx_std_17)
    add_executable(Corvix::xmlbinc IMPORTED)
    set_target_properties(Corvix::xmlbinc PROPERTIES IMPORTED_LOCATION "${corvix_root}/xmlbinc.exe")
endif()

enable_language(RC)
include("${CMAKE_CURRENT_LIST_DIR}/CorvixPlugin.cmake")
