# The host in a folder without plug-ins: it must say what is missing and where, and fail.
file(REMOVE_RECURSE "${FOLDER}")
file(GLOB needed "${LIBRARY_FOLDER}/corvix.dll" "${LIBRARY_FOLDER}/lib*.dll")
file(COPY "${HOST}" ${needed} DESTINATION "${FOLDER}")
execute_process(COMMAND ${EMULATOR} "${FOLDER}/corvix-host.exe" RESULT_VARIABLE code ERROR_VARIABLE said OUTPUT_QUIET)
if(NOT code EQUAL 1 OR NOT said MATCHES "no module declares .Example.Witness.*plugins")
    message(FATAL_ERROR "exit code ${code}, said: ${said}")
endif()
