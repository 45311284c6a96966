# The compiler's run-time libraries. They are shared, so that an exception can cross from one module into
# another, and lie beside the programs.
if(MINGW)
    set(corvix_runtime_folder "${CMAKE_BINARY_DIR}/runtime")
    file(MAKE_DIRECTORY "${corvix_runtime_folder}" "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
    set(CORVIX_RUNTIME_DLLS)
    foreach(name IN ITEMS libstdc++-6.dll ${corvix_libgcc} libwinpthread-1.dll)
        find_file(CORVIX_RUNTIME_${name} ${name} NO_CMAKE_FIND_ROOT_PATH
            PATHS /usr/lib/gcc/${corvix_triple}/12-posix /usr/${corvix_triple}/lib /usr/${corvix_triple}/bin)
        execute_process(COMMAND "${CMAKE_CXX_COMPILER}" -print-file-name=${name} OUTPUT_VARIABLE found OUTPUT_STRIP_TRAILING_WHITESPACE)
        if(NOT IS_ABSOLUTE "${found}")
            set(found "${CORVIX_RUNTIME_${name}}")
        endif()
        if(NOT EXISTS "${found}")
            message(FATAL_ERROR "The compiler's ${name} was not found beside it: is it installed whole?")
        endif()
        set(copy "${corvix_runtime_folder}/${name}")
        if(NOT EXISTS "${copy}")
            execute_process(COMMAND "${CMAKE_STRIP}" --strip-unneeded -o "${copy}" "${found}" COMMAND_ERROR_IS_FATAL ANY)
        endif()
        list(APPEND CORVIX_RUNTIME_DLLS "${copy}")
    endforeach()
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")  # clang does so by itself
        add_link_options($<$<NOT:$<STREQUAL:$<TARGET_PROPERTY:NAME>,xmlbinc>>:-shared-libgcc>)
    endif()
endif()

# Puts the run-time libraries beside a target.
function(corvix_copy_runtime target)
    if(CORVIX_RUNTIME_DLLS)
        add_custom_command(TARGET ${target} POST_BUILD
            COMMAND "${CMAKE_COMMAND}" -E copy_if_different ${CORVIX_RUNTIME_DLLS} "$<TARGET_FILE_DIR:${target}>" VERBATIM)
    endif()
endfunction()
