# SPDX-License-Identifier: Apache-2.0
if(NOT TARGET codecreport)
    return()
endif()

find_package(LibArchive REQUIRED)

add_library(codecreport_synthetic_log OBJECT codecreport/SyntheticLog.cpp)
target_link_libraries(codecreport_synthetic_log PUBLIC codecreport_parts android::base)

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
    LIBRARY_SOURCES="${CMAKE_SOURCE_DIR}/mediaCodecLogger" STORIES="${CMAKE_SOURCE_DIR}/tests/stories")

add_executable(codecreport_make_log codecreport/makeLog.cpp)
target_link_libraries(codecreport_make_log PRIVATE codecreport_synthetic_log)

# The documents' tables are those that the program answers from.
add_test(NAME Codecreport.documentsAreUpToDate
    COMMAND ${CMAKE_SOURCE_DIR}/scripts/docs.sh --check $<TARGET_FILE:codecreport>)

# Programs in JavaScript that read what codecreport writes: the page in a browser, the rows in an
# engine of columns. They come with large packages, so scripts/packages-ci.txt; of those built per
# system the lock file names the one for Linux on x86-64 only.
find_program(MCL_CHROMIUM chromium)
find_program(MCL_NODE node)
if(MCL_CHROMIUM AND MCL_NODE)
    set(nodeDir ${CMAKE_CURRENT_BINARY_DIR}/codecreport-node)
    set(nodeFiles package.json package-lock.json .npmrc pageTest.mjs rowsTest.mjs)
    list(TRANSFORM nodeFiles PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/codecreport/node/)
    set(nodeStamp ${nodeDir}/node_modules/.package-lock.json)
    file(MAKE_DIRECTORY ${nodeDir})
    add_custom_command(
        OUTPUT ${nodeStamp}
        COMMAND ${CMAKE_COMMAND} -E copy_if_different ${nodeFiles} ${nodeDir}
        COMMAND ${CMAKE_COMMAND} -E chdir ${nodeDir}
                ${NPM} ci --ignore-scripts --no-audit --no-fund --loglevel=error
        COMMAND ${CMAKE_COMMAND} -E touch ${nodeStamp}
        DEPENDS ${nodeFiles}
        COMMENT "npm ci: what codecreport's tests in JavaScript need"
        VERBATIM)
    add_custom_target(codecreport_node_tests ALL DEPENDS ${nodeStamp})
    add_test(NAME Codecreport.pageInABrowser
        COMMAND ${MCL_NODE} ${nodeDir}/pageTest.mjs $<TARGET_FILE:codecreport>
                $<TARGET_FILE:codecreport_make_log> ${MCL_CHROMIUM})
    add_test(NAME Codecreport.rowsInAnEngineOfColumns
        COMMAND ${MCL_NODE} ${nodeDir}/rowsTest.mjs $<TARGET_FILE:codecreport>
                $<TARGET_FILE:codecreport_make_log>)
    set_tests_properties(Codecreport.pageInABrowser Codecreport.rowsInAnEngineOfColumns
        PROPERTIES TIMEOUT 120)
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
        CODECPLAY_CLIPS="${CMAKE_CURRENT_BINARY_DIR}/codecreport-clips")
endif()
