# corvix_add_plugin(NAME SOURCE... [DESCRIPTOR plugin.xml] [MENU menu.xml] [VIEWS views.xml])
#
# A plug-in module NAME.dll from its sources and its descriptor (by default plugin.xml beside the calling
# CMakeLists.txt), which is checked, compiled and put into the module together with version information from it, and with
# the templates of its menus and views. Its code
# includes "descriptor.h", in which xmlbinc says what the descriptor declares. It is
# built into the folder "plugins" beside the programs unless its LIBRARY_OUTPUT_DIRECTORY says otherwise. Where tests are
# enabled, the test NAME.check puts it through `corvix check`.

# What turns resources into objects. Names and contents go to it as data: no shell and no preprocessor sees them.
if(NOT CORVIX_WINDRES)
    get_filename_component(corvix_compiler_folder "${CMAKE_CXX_COMPILER}" DIRECTORY)
    find_program(CORVIX_WINDRES NAMES "${CMAKE_RC_COMPILER}" ${corvix_triple}-windres windres HINTS "${corvix_compiler_folder}"
        DOC "The resource compiler of MinGW-w64's binutils")
    if(NOT CORVIX_WINDRES)
        message(FATAL_ERROR "windres was not found: it comes with MinGW-w64's binutils; set CORVIX_WINDRES to it.")
    endif()
endif()

# Compiles an XML file, and templates as NAME=FILE, into a target of this folder; with HEADER there is a "descriptor.h" for
# its code.
function(corvix_add_resource target xml)
    cmake_parse_arguments(PARSE_ARGV 2 resource "HEADER" "" "OPTIONS;TEMPLATES")
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
    set(header)
    set(headerOption)
    if(resource_HEADER)
        set(header "${folder}/descriptor.h")
        set(headerOption --header "${header}")
    endif()
    set(templateFiles "${resource_TEMPLATES}")
    list(TRANSFORM templateFiles REPLACE "^[^=]*=" "")
    set(templates "${resource_TEMPLATES}")
    list(TRANSFORM templates PREPEND "--template=")
    add_custom_command(OUTPUT "${folder}/descriptor.o" ${header} BYPRODUCTS "${folder}/descriptor.res"
        COMMAND ${run} "${xml}" -o "${folder}/descriptor.res" --resource-for "$<TARGET_FILE_NAME:${target}>" ${headerOption} ${resource_OPTIONS} ${templates}
        COMMAND "${CORVIX_WINDRES}" -F ${corvix_object_format} -J res -O coff -i "${folder}/descriptor.res" -o "${folder}/descriptor.o"
        DEPENDS "${xml}" ${templateFiles} "$<TARGET_FILE:${compiler}>" COMMENT "Compiling descriptor ${xml}" VERBATIM)
    set_source_files_properties("${folder}/descriptor.o" PROPERTIES EXTERNAL_OBJECT ON GENERATED ON)
    target_sources(${target} PRIVATE "${folder}/descriptor.o" ${header})
    target_include_directories(${target} PRIVATE "${folder}")
endfunction()

# Gives a target of this folder a descriptor, as its resource PLUGININFO, and version information.
# With UNCHECKED the author's mistakes are let through, with UNSTAMPED it does not say which SDK it was made with. MENU and
# VIEWS are templates that go into the module, too.
function(corvix_add_descriptor target xml)
    cmake_parse_arguments(PARSE_ARGV 2 descriptor "UNCHECKED;UNSTAMPED" "MENU;VIEWS" "")
    set(check --check --warnings-as-errors)
    if(descriptor_UNCHECKED)
        set(check)
    endif()
    # Which contract the module is made for, so that another one's is refused before its code is loaded.
    set(stamp --set SdkVersion=${CORVIX_SDK_VERSION} --set SdkCompiler=gnu --set SdkBits=${CORVIX_BITS})
    if(descriptor_UNSTAMPED)
        set(stamp)
    endif()
    set(templates)
    foreach(kind IN ITEMS MENU=MENUTEMPL VIEWS=VIEWTEMPLATES)
        string(REPLACE "=" ";" kind "${kind}")
        list(GET kind 0 argument)
        list(GET kind 1 resource)
        if(descriptor_${argument})
            get_filename_component(file "${descriptor_${argument}}" ABSOLUTE)
            list(APPEND templates "${resource}=${file}")
        endif()
    endforeach()
    corvix_add_resource(${target} "${xml}" HEADER OPTIONS ${check} ${stamp} TEMPLATES ${templates})
endfunction()

# What every module of ours and of an author has in common.
function(corvix_set_module_options target)
    set_target_properties(${target} PROPERTIES PREFIX "")
    if(MINGW)
        # A build identifier ties a crash report to the symbols. The run-time is one for all modules, so that an exception
        # can cross from one into another (clang does so by itself).
        target_link_options(${target} PRIVATE -Wl,--build-id $<$<CXX_COMPILER_ID:GNU>:-shared-libgcc>)
    endif()
endfunction()

function(corvix_add_plugin target)
    cmake_parse_arguments(PARSE_ARGV 1 plugin "" "DESCRIPTOR;MENU;VIEWS" "")
    if(NOT plugin_DESCRIPTOR)
        set(plugin_DESCRIPTOR plugin.xml)
    endif()
    add_library(${target} MODULE ${plugin_UNPARSED_ARGUMENTS})
    target_link_libraries(${target} PRIVATE Corvix::corvix)
    corvix_set_module_options(${target})
    corvix_add_descriptor(${target} "${plugin_DESCRIPTOR}" MENU "${plugin_MENU}" VIEWS "${plugin_VIEWS}")
    if(CMAKE_RUNTIME_OUTPUT_DIRECTORY)
        set_target_properties(${target} PROPERTIES LIBRARY_OUTPUT_DIRECTORY "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/plugins")
    endif()
    if(TARGET Corvix::tool)  # Corvix's own build checks all its plug-ins in one test
        add_test(NAME ${target}.check COMMAND ${CMAKE_CROSSCOMPILING_EMULATOR} "$<TARGET_FILE:Corvix::tool>" check "$<TARGET_FILE:${target}>")
    endif()
endfunction()

# corvix_add_language(CODE [texts.xml])
#
# The file brisvaneres.CODE beside the programs, from a file of texts, which is checked. It holds no code. The target is
# called brisvaneres.CODE as well.
function(corvix_add_language code)
    set(texts texts.xml)
    if(ARGC GREATER 1)
        set(texts "${ARGV1}")
    endif()
    set(target brisvaneres.${code})
    add_library(${target} MODULE)
    set_target_properties(${target} PROPERTIES PREFIX "" OUTPUT_NAME brisvaneres SUFFIX ".${code}" LINKER_LANGUAGE CXX)
    target_link_options(${target} PRIVATE -nostdlib -Wl,--entry=0)
    corvix_add_resource(${target} "${texts}" OPTIONS --check --warnings-as-errors)
    if(CMAKE_RUNTIME_OUTPUT_DIRECTORY)
        set_target_properties(${target} PROPERTIES LIBRARY_OUTPUT_DIRECTORY "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
    endif()
endfunction()
