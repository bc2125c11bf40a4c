# SPDX-License-Identifier: Apache-2.0
if(NOT TARGET codecreport)
    return()
endif()

find_package(LibArchive REQUIRED)

add_library(codecreport_synthetic_log OBJECT codecreport/SyntheticLog.cpp)
target_link_libraries(codecreport_synthetic_log PUBLIC codecreport_parts)

mcl_add_test(codecreport_test
    SOURCES codecreport/CommandTest.cpp codecreport/DatabaseTest.cpp codecreport/InputTest.cpp codecreport/LibraryTextTest.cpp
        codecreport/LogcatParserTest.cpp
        codecreport/OutputTest.cpp codecreport/ReferenceTest.cpp codecreport/ReportSupport.cpp
        codecreport/SessionTest.cpp
        codecreport/SetCompareTest.cpp codecreport/StatisticsTest.cpp codecreport/TraceTest.cpp
        ${CMAKE_SOURCE_DIR}/tests/support/Process.cpp
    LIBS codecreport_synthetic_log codecreport_parts codecreport_trace_proto LibArchive::LibArchive)
add_dependencies(codecreport_test codecreport)
target_compile_definitions(codecreport_test PRIVATE CODECREPORT="$<TARGET_FILE:codecreport>"
    LIBRARY_SOURCES="${CMAKE_SOURCE_DIR}/mediaCodecLogger")

add_executable(codecreport_make_log codecreport/makeLog.cpp)
target_link_libraries(codecreport_make_log PRIVATE codecreport_synthetic_log)

# The documents' tables are those that the program answers from.
add_test(NAME Codecreport.documentsAreUpToDate
    COMMAND ${CMAKE_SOURCE_DIR}/scripts/docs.sh --check $<TARGET_FILE:codecreport>)

# One of the programs in JavaScript that read what codecreport writes, with the packages of its
# folder, brought by `npm <NPM_COMMAND>`: packages that are large, so scripts/packages-ci.txt.
function(codecreport_add_node_test NAME FOLDER NPM_COMMAND)
    set(from ${CMAKE_CURRENT_SOURCE_DIR}/codecreport/${FOLDER})
    set(to ${CMAKE_CURRENT_BINARY_DIR}/codecreport-${FOLDER})
    set(files package.json package-lock.json .npmrc ${FOLDER}Test.mjs)
    list(TRANSFORM files PREPEND ${from}/ OUTPUT_VARIABLE sources)
    set(stamp ${to}/node_modules/.package-lock.json)
    file(MAKE_DIRECTORY ${to})
    add_custom_command(
        OUTPUT ${stamp}
        COMMAND ${CMAKE_COMMAND} -E copy_if_different ${sources} ${to}
        COMMAND ${CMAKE_COMMAND} -E chdir ${to}
                ${NPM} ${NPM_COMMAND} --ignore-scripts --no-audit --no-fund --loglevel=error
        COMMAND ${CMAKE_COMMAND} -E touch ${stamp}
        DEPENDS ${sources}
        COMMENT "npm ${NPM_COMMAND}: codecreport's ${FOLDER}Test"
        VERBATIM)
    add_custom_target(codecreport_${FOLDER}_test ALL DEPENDS ${stamp})
    add_test(NAME ${NAME}
        COMMAND ${MCL_NODE} ${to}/${FOLDER}Test.mjs $<TARGET_FILE:codecreport>
                $<TARGET_FILE:codecreport_make_log> ${ARGN})
    set_tests_properties(${NAME} PROPERTIES TIMEOUT 120)
endfunction()

find_program(MCL_CHROMIUM chromium)
find_program(MCL_NODE node)
if(MCL_CHROMIUM AND MCL_NODE)
    codecreport_add_node_test(Codecreport.pageInABrowser page ci ${MCL_CHROMIUM})
    # Its lock file names the engine's build for Linux on x86-64 only.
    codecreport_add_node_test(Codecreport.rowsInAnEngineOfColumns rows install)
else()
    message(STATUS "No test of codecreport's page in a browser, nor of its rows in another engine: "
                   "they need scripts/packages-ci.txt")
endif()

if(TARGET codecplay)
    mcl_add_test(codecreport_played_test
        SOURCES codecreport/PlayedTest.cpp CodecplayTest.cpp ${CMAKE_SOURCE_DIR}/tests/support/Process.cpp
        LIBS)
    add_dependencies(codecreport_played_test codecplay codecreport)
    target_compile_definitions(codecreport_played_test PRIVATE
        CODECREPORT="$<TARGET_FILE:codecreport>"
        CODECPLAY="$<TARGET_FILE:codecplay>"
        CODECPLAY_CLIPS="${CMAKE_CURRENT_BINARY_DIR}/codecreport-clips"
        CODECPLAY_DEMO_CLIP="${CMAKE_SOURCE_DIR}/tools/codecplay/make-demo-clip.sh")
endif()
