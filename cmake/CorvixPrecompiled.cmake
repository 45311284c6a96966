# corvix_precompile(TARGET HEADER...|REUSE_FROM TARGET): system headers that most sources of the target include, compiled once. GCC forgets
# where they came from, and warns of what it inlined from them. Presets without it (release, clang) keep those warnings, and show
# that every source includes what it needs.
function(corvix_precompile target)
    if(NOT CMAKE_DISABLE_PRECOMPILE_HEADERS)
        set(whose PRIVATE)
        if(ARGV1 STREQUAL "REUSE_FROM")
            set(whose)
        endif()
        target_precompile_headers(${target} ${whose} ${ARGN})
        target_compile_options(${target} PRIVATE "$<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds;-Wno-stringop-overflow;-Wno-stringop-overread>")
    endif()
endfunction()
