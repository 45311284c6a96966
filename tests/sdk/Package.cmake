# Packs the build, unpacks it into another folder, builds the templates from it and nothing else, and runs what came out.
# The folders' names have what build tools like to stumble over.
cmake_policy(VERSION 3.24)

function(run)
    execute_process(COMMAND ${ARGV} RESULT_VARIABLE code OUTPUT_VARIABLE said ERROR_VARIABLE said)
    set(said "${said}" PARENT_SCOPE)
    if(NOT code EQUAL 0)
        message(FATAL_ERROR "${ARGV}\nended with ${code}:\n${said}")
    endif()
endfunction()

# expect(PATTERN COMMAND...)
function(expect pattern)
    run(${ARGN})
    if(NOT said MATCHES "${pattern}")
        message(FATAL_ERROR "${ARGN}\ndid not say ${pattern} but:\n${said}")
    endif()
endfunction()

file(REMOVE_RECURSE "${FOLDER}")
set(mine "${FOLDER}/my (own) & 'new' $work")
run("${CPACK}" --config "${BUILD}/CPackConfig.cmake" -B "${FOLDER}/zips")
foreach(component IN ITEMS Runtime SDK Symbols)
    file(GLOB zip "${FOLDER}/zips/*-${component}.zip")
    file(ARCHIVE_EXTRACT INPUT "${zip}" DESTINATION "${FOLDER}/a & b's ($1)")
endforeach()
file(GLOB corvix "${FOLDER}/a & b's ($1)/*")  # all three have gone into one folder
run("${PYTHON}" "${CMAKE_CURRENT_LIST_DIR}/check_binaries.py" "${corvix}")
foreach(file IN ITEMS README.md LICENSE THIRD_PARTY.md licenses/zlib.txt docs/plugins.md sdk/include/corvix/shell/Plugin.h)
    if(NOT EXISTS "${corvix}/${file}")
        message(FATAL_ERROR "${file} is not in the packages")
    endif()
endforeach()

# The newcomer's way: both templates with the SDK's own toolchain file.
file(COPY "${corvix}/sdk/template" "${corvix}/sdk/host-template" DESTINATION "${mine}")
run("${CMAKE_COMMAND}" -G Ninja -S "${mine}/host-template" -B "${mine}/build"
    -D "CMAKE_TOOLCHAIN_FILE=${corvix}/sdk/cmake/toolchain-gcc.cmake" -D "CMAKE_CROSSCOMPILING_EMULATOR=${EMULATOR}")
run("${CMAKE_COMMAND}" --build "${mine}/build")
expect("My.Interface, from My plug-in.*Twice 21 is 42" ${EMULATOR} "${mine}/build/my_host.exe")
expect("my_plugin.check .* Passed" "${CTEST}" --test-dir "${mine}/build")
file(COPY "${mine}/build/plugins/my_plugin.dll" DESTINATION "${corvix}/plugins")
expect("my_plugin.dll +My plug-in +1.0 +Me +described.*My.Interface" ${EMULATOR} "${corvix}/corvix-host.exe" list)

# The other ways to find it, each with a toolchain file that looks for packages in the target's folder alone.
foreach(where IN ITEMS "CMAKE_PREFIX_PATH=${corvix}" "CMAKE_PREFIX_PATH=${corvix}/sdk" "Corvix_ROOT=${corvix}" "Corvix_DIR=${corvix}/sdk/cmake")
    run("${CMAKE_COMMAND}" --fresh -G Ninja -S "${mine}/template" -B "${mine}/found" -D "CMAKE_TOOLCHAIN_FILE=${TOOLCHAIN}" -D "${where}")
endforeach()

# What cannot work is refused with a sentence: a project that says what its compiler is, and no compiler at work.
function(refused pattern request)
    list(JOIN ARGN ")\nset(" settings)
    file(WRITE "${FOLDER}/refused/CMakeLists.txt" "cmake_minimum_required(VERSION 3.24)\nproject(Refused LANGUAGES NONE)
set(${settings})\nfind_package(Corvix ${request} REQUIRED)\n")
    execute_process(COMMAND "${CMAKE_COMMAND}" --fresh -S "${FOLDER}/refused" -B "${FOLDER}/refused/build" -D "Corvix_ROOT=${corvix}"
        RESULT_VARIABLE code OUTPUT_QUIET ERROR_VARIABLE said)
    string(REGEX REPLACE "[ \n]+" " " said "${said}")
    if(code EQUAL 0 OR NOT said MATCHES "${pattern}")
        message(FATAL_ERROR "${request} with ${ARGN}: exit code ${code}, not ${pattern} but:\n${said}")
    endif()
endfunction()
refused("cannot be made with Microsoft's compiler" "" "MSVC TRUE" "WIN32 TRUE")
refused("32-bit Windows only, and this compiler makes 64-bit" "" "WIN32 TRUE" "CMAKE_SIZEOF_VOID_P 8")
refused("makes programs for Linux: add -D CMAKE_TOOLCHAIN_FILE" "" "CMAKE_SYSTEM_NAME Linux")
refused("install Wine" "" "WIN32 TRUE" "CMAKE_CROSSCOMPILING TRUE")
refused("compatible with requested version \"0.2\"" 0.2 "WIN32 TRUE")
file(REMOVE "${corvix}/corvix.dll")
refused("unpack the package Runtime" "" "WIN32 TRUE")
