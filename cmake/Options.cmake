# Compiler options that every target of the project shares: target vspsc_options.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)

add_library(vspsc_options INTERFACE)
target_compile_options(vspsc_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion)
if(VSPSC_WERROR)
    target_compile_options(vspsc_options INTERFACE -Werror)
endif()
if(VSPSC_SANITIZE)
    # Everything is instrumented but the dispatcher, which runs before the sanitizers do (Library.cmake).
    target_compile_options(vspsc_options INTERFACE -fsanitize=${VSPSC_SANITIZE} -fno-sanitize-recover=all
                                                   -fno-omit-frame-pointer)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # g++ 12 warns of its own library when it instruments it.
        target_compile_options(vspsc_options INTERFACE -Wno-maybe-uninitialized)
    endif()
    target_link_options(vspsc_options INTERFACE -fsanitize=${VSPSC_SANITIZE})
    if(CMAKE_CXX_COMPILER_ID MATCHES "Clang" AND VSPSC_SANITIZE MATCHES "undefined")
        target_link_options(vspsc_options INTERFACE -fsanitize-link-c++-runtime)  # of programs in C, too
        target_link_libraries(vspsc_options INTERFACE stdc++)
    endif()
endif()
# A coverage build counts what runs of the targets with the property VSPSC_COUNTED; all others are as in a usual build. Nothing
# is inlined there, not even what asks for it, or each copy's branches would count.
if(VSPSC_COVERAGE)
    target_compile_options(vspsc_options INTERFACE "$<$<BOOL:$<TARGET_PROPERTY:VSPSC_COUNTED>>:--coverage;-fprofile-update=atomic;-fno-inline;-Dalways_inline=noinline>")
    target_link_options(vspsc_options INTERFACE --coverage)
endif()

# Sanitizer builds read what most sources of a target include only once; other builds see that each includes what it needs.
function(vspsc_precompile target)
    if(VSPSC_SANITIZE)
        target_precompile_headers(${target} PRIVATE ${ARGN})
    endif()
endfunction()
function(vspsc_precompile_as target other)
    if(VSPSC_SANITIZE)
        target_precompile_headers(${target} REUSE_FROM ${other})
    endif()
endfunction()
