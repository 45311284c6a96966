# The program as a process: what its arguments, streams and exit code carry from and to its caller.
# And the manual's page: what it shows is what comes out.
#   cmake -DXMLBINC=COMMAND -DFOLDER=SCRATCH -DPAGE=MANUAL -P ProgramTest.cmake
file(REMOVE_RECURSE "${FOLDER}")
file(WRITE "${FOLDER}/good é.xml" "<a b='x\r\n'>y&#10;</a>")
file(WRITE "${FOLDER}/wrong.xml" "<a>\n</b>")

# expect(CODE OUTPUT_PATTERN ERROR_PATTERN ARGUMENT...)
function(expect code output error)
    execute_process(COMMAND ${XMLBINC} ${ARGN} WORKING_DIRECTORY "${FOLDER}"
        RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err)
    if(NOT result STREQUAL code OR NOT out MATCHES "^${output}$" OR NOT err MATCHES "^${error}$")
        message(SEND_ERROR "xmlbinc ${ARGN}: exit code ${result}\n${out}${err}")
    endif()
endfunction()

expect(0 "xmlbinc [0-9.]+[\r\n]+" "" --version)
expect(0 "" "" "good é.xml" -o "block é.bin")
expect(0 "<\\?xml .*\n<a b=\"x \">y\n</a>\n" "" -d "block é.bin" -o -)
expect(1 "" "wrong.xml:2:1: closing tag of .*" wrong.xml -o wrong.bin)
expect(2 "" ".*INPUT is required.*")

file(GLOB found RELATIVE "${FOLDER}" "${FOLDER}/*")
if(NOT found STREQUAL "block é.bin;good é.xml;wrong.xml")
    message(SEND_ERROR "unexpected files: ${found}")
endif()

# The page's first block of XML is clock.xml; the block of text behind it is what --check says of that.
file(READ "${PAGE}" page)
foreach(kind IN ITEMS xml text)
    string(FIND "${page}" "```${kind}\n" start)
    string(SUBSTRING "${page}" ${start} -1 page)
    string(REGEX REPLACE "^```${kind}\n" "" page "${page}")
    string(FIND "${page}" "```" end)
    string(SUBSTRING "${page}" 0 ${end} ${kind})
endforeach()
file(WRITE "${FOLDER}/clock.xml" "${xml}")
execute_process(COMMAND ${XMLBINC} --check clock.xml WORKING_DIRECTORY "${FOLDER}" ERROR_VARIABLE err)
string(REPLACE "\r" "" err "${err}")
if(NOT err STREQUAL text)
    message(SEND_ERROR "the page shows\n${text}\nbut --check says\n${err}")
endif()
