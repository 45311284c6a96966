# corvix_add_host(NAME SOURCE... [PLUGINS PLUGIN...] [DESCRIPTION TEXT])
#
# A program NAME.exe with the library, the compiler's run-time libraries and the plug-ins beside it, so that it runs where
# it was built: the plug-ins, targets of this project or files, are copied into the folder "plugins". It gets version
# information (the project's version and DESCRIPTION) and a manifest: texts of the system are UTF-8, and windows are
# drawn in the screen's own resolution.

set(corvix_manifest "${CMAKE_CURRENT_LIST_DIR}/program.manifest")
set(corvix_program_rc "${CMAKE_CURRENT_LIST_DIR}/program.rc.in")

# Gives a program of this folder its manifest and version information.
function(corvix_add_program_resources target description)
    set(folder "${CMAKE_CURRENT_BINARY_DIR}/${target}.program")
    set(version "${PROJECT_VERSION}")
    if(NOT version)
        set(version 0)
    endif()
    string(REGEX MATCHALL "[0-9]+" numbers "${version}.0.0.0")
    list(SUBLIST numbers 0 4 numbers)
    list(JOIN numbers "," numbers)
    string(REGEX REPLACE "([\"\\\\])" "" description "${description}")
    configure_file("${corvix_program_rc}" "${folder}/program.rc" @ONLY)
    configure_file("${corvix_manifest}" "${folder}/program.manifest" COPYONLY)
    # In its own folder and with plain names: the resource compiler hands them to a shell.
    add_custom_command(OUTPUT "${folder}/program.o"
        COMMAND "${CORVIX_WINDRES}" -F ${corvix_object_format} -c 65001 -J rc -O coff -i program.rc -o program.o
        DEPENDS "${folder}/program.rc" "${folder}/program.manifest" WORKING_DIRECTORY "${folder}"
        COMMENT "Compiling the resources of ${target}" VERBATIM)
    set_source_files_properties("${folder}/program.o" PROPERTIES EXTERNAL_OBJECT ON GENERATED ON)
    target_sources(${target} PRIVATE "${folder}/program.o")
endfunction()

function(corvix_add_host target)
    cmake_parse_arguments(PARSE_ARGV 1 host "" "DESCRIPTION" "PLUGINS")
    if(NOT host_DESCRIPTION)
        set(host_DESCRIPTION "${target}")
    endif()
    add_executable(${target} ${host_UNPARSED_ARGUMENTS})
    target_link_libraries(${target} PRIVATE Corvix::corvix)
    corvix_add_program_resources(${target} "${host_DESCRIPTION}")
    if(MINGW)
        target_link_options(${target} PRIVATE -Wl,--build-id $<$<CXX_COMPILER_ID:GNU>:-shared-libgcc>)
    endif()

    set(plugins)
    foreach(plugin IN LISTS host_PLUGINS)
        if(TARGET ${plugin})
            list(APPEND plugins "$<TARGET_FILE:${plugin}>")
            add_dependencies(${target} ${plugin})
        else()
            get_filename_component(plugin "${plugin}" ABSOLUTE)
            list(APPEND plugins "${plugin}")
        endif()
    endforeach()
    set(beside "$<TARGET_FILE:Corvix::corvix>" ${CORVIX_RUNTIME_DLLS})
    set(folder "$<TARGET_FILE_DIR:${target}>")
    set(copies COMMAND "${CMAKE_COMMAND}" -E copy_if_different ${beside} "${folder}")
    if(plugins)
        list(APPEND copies COMMAND "${CMAKE_COMMAND}" -E make_directory "${folder}/plugins"
            COMMAND "${CMAKE_COMMAND}" -E copy_if_different ${plugins} "${folder}/plugins")
    endif()
    set(stamp "${CMAKE_CURRENT_BINARY_DIR}/${target}.program/copied")
    add_custom_command(OUTPUT "${stamp}" ${copies} COMMAND "${CMAKE_COMMAND}" -E touch "${stamp}"
        DEPENDS ${target} ${beside} ${plugins} COMMENT "Putting beside ${target} what it needs" VERBATIM)
    add_custom_target(${target}-runs ALL DEPENDS "${stamp}")
endfunction()
