# What a user gets, in three components that unpack into one folder: Runtime, the programs with the library, the run-time
# libraries and the plug-ins; SDK, what authors of plug-ins and hosts need, below sdk/; Symbols, for debuggers. What has a word
# size is for 32 bits at the top and for 64 in x64/ and sdk/lib/x64; the rest is the same file for both.
include(CMakePackageConfigHelpers)

# corvix_ship(COMPONENT DESTINATION TARGET...): modules and programs without their symbols, which go into a file beside
# each that debuggers find by themselves.
function(corvix_ship component destination)
    set(folder "${CMAKE_BINARY_DIR}/shipped")
    foreach(target IN LISTS ARGN)
        get_target_property(type ${target} TYPE)
        get_target_property(name ${target} OUTPUT_NAME)
        if(NOT name)
            set(name ${target})
        endif()
        if(type STREQUAL "EXECUTABLE")
            string(APPEND name .exe)
        else()
            string(APPEND name .dll)
        endif()
        add_custom_command(OUTPUT "${folder}/${name}" "${folder}/${name}.debug"
            COMMAND "${CMAKE_OBJCOPY}" --only-keep-debug "$<TARGET_FILE:${target}>" "${name}.debug"
            COMMAND "${CMAKE_OBJCOPY}" --strip-all --add-gnu-debuglink=${name}.debug "$<TARGET_FILE:${target}>" "${name}"
            DEPENDS ${target} WORKING_DIRECTORY "${folder}" COMMENT "Taking the symbols out of ${name}" VERBATIM)
        add_custom_target(${target}-shipped ALL DEPENDS "${folder}/${name}")
        install(PROGRAMS "${folder}/${name}" DESTINATION "${destination}" COMPONENT ${component})
        install(FILES "${folder}/${name}.debug" DESTINATION "${destination}" COMPONENT Symbols)
    endforeach()
endfunction()

file(MAKE_DIRECTORY "${CMAKE_BINARY_DIR}/shipped")
get_property(example_plugins GLOBAL PROPERTY corvix_example_plugins)
get_property(plugins GLOBAL PROPERTY corvix_plugins)
corvix_ship(Runtime ${corvix_folder} corvix corvix-host)
corvix_ship(Runtime ${corvix_folder}/plugins ${plugins} ${example_plugins})
corvix_ship(SDK ${corvix_folder} xmlbinc corvix-tool)
get_property(languages GLOBAL PROPERTY corvix_languages)
foreach(language IN LISTS languages)
    install(FILES "$<TARGET_FILE:${language}>" DESTINATION ${corvix_folder} COMPONENT Runtime)
endforeach()
install(FILES ${CORVIX_RUNTIME_DLLS} DESTINATION ${corvix_folder} COMPONENT Runtime)
install(FILES LICENSE THIRD_PARTY.md CHANGELOG.md DESTINATION . COMPONENT Runtime)
install(DIRECTORY licenses DESTINATION . COMPONENT Runtime)

install(TARGETS corvix RUNTIME DESTINATION . COMPONENT NotInstalled EXCLUDE_FROM_ALL ARCHIVE DESTINATION sdk/lib/${corvix_folder} COMPONENT SDK
    FILE_SET HEADERS DESTINATION sdk/include/corvix COMPONENT SDK)
write_basic_package_version_file("${CMAKE_BINARY_DIR}/CorvixConfigVersion.cmake" COMPATIBILITY SameMinorVersion ARCH_INDEPENDENT)
install(FILES sdk/CorvixConfig.cmake "${CMAKE_BINARY_DIR}/CorvixConfigVersion.cmake" cmake/CorvixTarget.cmake cmake/CorvixPlugin.cmake
    cmake/CorvixHost.cmake cmake/program.manifest cmake/program.rc.in cmake/toolchain-windows.cmake cmake/toolchain-gcc.cmake
    cmake/toolchain-gcc-x64.cmake
    DESTINATION sdk/cmake COMPONENT SDK)
install(FILES sdk/PrefixConfig.cmake DESTINATION cmake COMPONENT SDK RENAME CorvixConfig.cmake)
install(FILES "${CMAKE_BINARY_DIR}/CorvixConfigVersion.cmake" DESTINATION cmake COMPONENT SDK)
install(DIRECTORY sdk/template sdk/host-template sdk/gdb DESTINATION sdk COMPONENT SDK)
install(DIRECTORY docs DESTINATION . COMPONENT SDK)
install(FILES sdk/README.md DESTINATION . COMPONENT SDK)

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_NAME Corvix)
set(CPACK_PACKAGE_VENDOR "The Corvix authors")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_FILE_NAME "Corvix-${PROJECT_VERSION}")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_SOURCE_DIR}/build/packages")
set(CPACK_COMPONENTS_ALL Runtime SDK Symbols)
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_PACKAGING_INSTALL_PREFIX "/Corvix-${PROJECT_VERSION}")  # all three unpack into one folder
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)
