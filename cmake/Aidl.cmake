# SPDX-License-Identifier: Apache-2.0
# aidl_library(<name> <root> <file...>): a static library of what the platform's interface generator
# makes of .aidl files, which are named relative to <root>.
find_program(AIDL aidl REQUIRED)

function(aidl_library name root)
    set(out ${CMAKE_CURRENT_BINARY_DIR}/${name})
    foreach(file ${ARGN})
        list(APPEND inputs ${root}/${file})
        string(REGEX REPLACE "\\.aidl$" ".cpp" source ${out}/${file})
        list(APPEND sources ${source})
    endforeach()
    add_custom_command(OUTPUT ${sources}
        COMMAND ${AIDL} --lang=cpp -I ${root} -h ${out}/include -o ${out} ${inputs}
        DEPENDS ${inputs} VERBATIM)
    add_library(${name} STATIC ${sources})
    target_include_directories(${name} SYSTEM PUBLIC ${out}/include)
    target_link_libraries(${name} PUBLIC hostPlatform)
    # The interfaces are not among those that the platform lists as written by hand.
    target_compile_definitions(${name} PRIVATE DO_NOT_CHECK_MANUAL_BINDER_INTERFACES)
    # Parcel.h, which the generated headers include, leans on headers that it does not include.
    target_compile_options(${name} PUBLIC "SHELL:-include memory" "SHELL:-include limits")
    # The generator leans on a platform that clears what it does not initialise.
    target_compile_options(${name} PRIVATE -ftrivial-auto-var-init=zero
        $<$<CXX_COMPILER_ID:Clang>:-enable-trivial-auto-var-init-zero-knowing-it-will-be-removed-from-clang>)
endfunction()
