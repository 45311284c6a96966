# corvix.dll. Its sources are compiled once, as objects: the tests that look inside link those directly.
add_library(corvix-objects OBJECT)

# corvix_set_wide_options(TARGET SOURCE...): sources of the target with wide registers in them. Callers align the stack to 4
# bytes, those of 64 bits to 16: registers of 32 bytes that have to be put there want more. GCC does not align it for them in
# 64 bits, so its assembler takes moves that need no alignment.
function(corvix_set_wide_options target)
    if(CMAKE_SIZEOF_VOID_P EQUAL 4)
        set_property(SOURCE ${ARGN} TARGET_DIRECTORY ${target} APPEND PROPERTY COMPILE_OPTIONS -mstackrealign)
    elseif(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        set_property(SOURCE ${ARGN} TARGET_DIRECTORY ${target} APPEND PROPERTY COMPILE_OPTIONS -Wa,-muse-unaligned-vector-move)
    endif()
endfunction()

# corvix_room([HEADERS HEADER...] [SOURCES SOURCE...] [DRAWING SOURCE...] [WIDE SOURCE...]): what the calling folder gives to
# the library. Its public headers are all but those called X_p.h. DRAWING are sources that plug-ins with contexts of their own
# are made of as well (corvix_add_drawing), WIDE those of them with wide registers.
function(corvix_room)
    cmake_parse_arguments(PARSE_ARGV 0 room "" "" "HEADERS;SOURCES;DRAWING;WIDE")
    list(TRANSFORM room_SOURCES PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/")
    list(TRANSFORM room_DRAWING PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/")
    list(TRANSFORM room_WIDE PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/")
    set_property(GLOBAL APPEND PROPERTY corvix_drawing ${room_DRAWING} ${room_WIDE})
    set_property(GLOBAL APPEND PROPERTY corvix_wide_drawing ${room_WIDE})
    list(APPEND room_SOURCES ${room_DRAWING} ${room_WIDE})
    target_sources(corvix-objects PRIVATE ${room_SOURCES})
    file(RELATIVE_PATH folder "${PROJECT_SOURCE_DIR}" "${CMAKE_CURRENT_SOURCE_DIR}")
    list(TRANSFORM room_HEADERS PREPEND "${folder}/")
    set_property(GLOBAL APPEND PROPERTY corvix_public_headers ${room_HEADERS})

    # Coordinates and colours are worked out in doubles: with SSE2, which 32-bit Windows itself demands since version 8,
    # that is several times faster than on the x87 stack.
    if(folder MATCHES "^graphics" AND room_SOURCES AND NOT MSVC)
        set_property(SOURCE ${room_SOURCES} TARGET_DIRECTORY corvix-objects APPEND PROPERTY COMPILE_OPTIONS -msse2 -mfpmath=sse)
        set_property(SOURCE ${room_SOURCES} TARGET_DIRECTORY corvix-objects PROPERTY SKIP_PRECOMPILE_HEADERS ON) # which have not these options
    endif()
    if(room_WIDE)
        corvix_set_wide_options(corvix-objects ${room_WIDE})
    endif()
endfunction()

# corvix_add_drawing(TARGET): a plug-in of ours gets what the library's own contexts are made of. Nothing of that is exported,
# and what it exports otherwise it imports here, so each module compiles it for itself.
function(corvix_add_drawing target)
    get_property(sources GLOBAL PROPERTY corvix_drawing)
    get_property(wide GLOBAL PROPERTY corvix_wide_drawing)
    target_sources(${target} PRIVATE ${sources})
    target_compile_definitions(${target} PRIVATE UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0601)
    target_compile_options(${target} PRIVATE -msse2 -mfpmath=sse)
    target_link_libraries(${target} PRIVATE gdi32)
    corvix_set_wide_options(${target} ${wide})
endfunction()

# From the ground up.
foreach(room IN ITEMS
    core/baselib
    core/baselib/heap
    core/baselib/text
    core/baselib/identity
    core/baselib/system
    core/baselib/objects
    core/baselib/threads
    core/baselib/streams
    core/baselib/memory
    core/xml
    core/settings
    core/suppliers
    core/suppliers/decoding
    graphics
    graphics/contexts
    graphics/creators
    graphics/fonts
    graphics/gdi
    graphics/gdiplus
    graphics/images
    graphics/path
    graphics/quality
    graphics/text
    shell
    shell/actions
    shell/documents
    shell/documents/manager
    shell/guard
    shell/gui
    shell/history
    shell/instance
    shell/language
    shell/menus
    shell/modules
    shell/services
    library)
    add_subdirectory(${room})
endforeach()
get_property(CORVIX_PUBLIC_HEADERS GLOBAL PROPERTY corvix_public_headers)

target_compile_definitions(corvix-objects PUBLIC CORVIX_BUILDING PRIVATE UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0601)
target_include_directories(corvix-objects PUBLIC "${PROJECT_SOURCE_DIR}")
corvix_precompile(corvix-objects <algorithm> <atomic> <memory> <string> <string_view> <vector> <windows.h>)

# zlib goes into the library, so that no further file has to be shipped.
find_library(CORVIX_ZLIB NAMES libz.a REQUIRED)
target_link_libraries(corvix-objects PUBLIC gdi32 PRIVATE corvix-warnings INTERFACE "${CORVIX_ZLIB}")

add_library(corvix SHARED shell/instance/LibraryEntry.cpp)
target_link_libraries(corvix PRIVATE corvix-objects corvix-warnings)
target_compile_definitions(corvix PRIVATE WIN32_LEAN_AND_MEAN NOMINMAX)
target_sources(corvix PUBLIC FILE_SET HEADERS BASE_DIRS "${PROJECT_SOURCE_DIR}" FILES ${CORVIX_PUBLIC_HEADERS})
target_compile_features(corvix PUBLIC cxx_std_17)
corvix_set_module_options(corvix)
corvix_add_descriptor(corvix resources/plugin.xml)
add_library(Corvix::corvix ALIAS corvix)
corvix_copy_runtime(corvix)
