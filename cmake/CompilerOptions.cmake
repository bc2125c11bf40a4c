# SPDX-License-Identifier: Apache-2.0
# Language level, warnings and sanitizers of every target, as an Android 11 tree builds them.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)

add_compile_options(-fno-exceptions -fno-rtti -Wall -Wextra -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    add_compile_options(-Wthread-safety)
endif()

if(MCL_SANITIZE)
    # A report names functions, files and lines, for which the smallest debug information is enough.
    add_compile_options(-g1)
endif()
if(MCL_SANITIZE STREQUAL "address")
    add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all
                        -fno-omit-frame-pointer)
    add_link_options(-fsanitize=address,undefined)
elseif(MCL_SANITIZE STREQUAL "thread")
    add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
    add_link_options(-fsanitize=thread)
elseif(MCL_SANITIZE)
    message(FATAL_ERROR "MCL_SANITIZE is '${MCL_SANITIZE}'; it takes address, thread or nothing")
else()
    add_link_options(-Wl,--no-undefined)
endif()

if(MCL_FUZZ)
    if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        message(FATAL_ERROR "Fuzzers are clang's: use the preset asan")
    endif()
    # Everywhere, so that the fuzzer sees which code of the libraries an input reaches.
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()
