# corvix_add_plugin(NAME SOURCE... [DESCRIPTOR plugin.xml])
#
# A plug-in module NAME.dll from its sources and its descriptor (by default plugin.xml beside the calling
# CMakeLists.txt), which is checked, compiled and put into the module. It is built into the folder "plugins"
# beside the programs unless its LIBRARY_OUTPUT_DIRECTORY says otherwise.

# A library target that brings a descriptor, as the resource PLUGININFO, into what links it.
# With UNCHECKED the author's mistakes are let through.
function(corvix_add_descriptor target xml)
    cmake_parse_arguments(PARSE_ARGV 2 descriptor "UNCHECKED" "" "")
    set(check --check --warnings-as-errors)
    if(descriptor_UNCHECKED)
        set(check)
    endif()
    get_filename_component(xml "${xml}" ABSOLUTE)
    set(folder "${CMAKE_CURRENT_BINARY_DIR}/${target}.descriptor")
    file(MAKE_DIRECTORY "${folder}")
    if(TARGET xmlbinc)
        set(compiler xmlbinc)
        set(run xmlbinc)
    else()
        set(compiler Corvix::xmlbinc)
        set(run ${CMAKE_CROSSCOMPILING_EMULATOR} "$<TARGET_FILE:Corvix::xmlbinc>")
    endif()
    add_custom_command(OUTPUT "${folder}/descriptor.bin"
        COMMAND ${run} ${check} "${xml}" -o "${folder}/descriptor.bin"
        DEPENDS "${xml}" "$<TARGET_FILE:${compiler}>" COMMENT "Compiling descriptor ${xml}" VERBATIM)
    file(CONFIGURE OUTPUT "${folder}/descriptor.rc" CONTENT "PLUGININFO PLUGININFO \"descriptor.bin\"\n" @ONLY)
    set_source_files_properties("${folder}/descriptor.rc" PROPERTIES
        OBJECT_DEPENDS "${folder}/descriptor.bin" INCLUDE_DIRECTORIES "${folder}")
    add_library(${target} OBJECT "${folder}/descriptor.rc")
    set_target_properties(${target} PROPERTIES LINKER_LANGUAGE CXX)
endfunction()

function(corvix_add_plugin target)
    cmake_parse_arguments(PARSE_ARGV 1 plugin "" "DESCRIPTOR" "")
    if(NOT plugin_DESCRIPTOR)
        set(plugin_DESCRIPTOR plugin.xml)
    endif()
    corvix_add_descriptor(${target}-descriptor "${plugin_DESCRIPTOR}")
    add_library(${target} MODULE ${plugin_UNPARSED_ARGUMENTS})
    target_link_libraries(${target} PRIVATE Corvix::corvix ${target}-descriptor)
    set_target_properties(${target} PROPERTIES PREFIX "")
    if(CMAKE_RUNTIME_OUTPUT_DIRECTORY)
        set_target_properties(${target} PROPERTIES LIBRARY_OUTPUT_DIRECTORY "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/plugins")
    endif()
    if(MINGW AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # The library's and every plug-in's run-time is one, so that an exception can cross from one into another.
        target_link_options(${target} PRIVATE -shared-libgcc)
    endif()
endfunction()
