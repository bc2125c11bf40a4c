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

# The page in a browser, which is large: scripts/packages-ci.txt brings it.
find_program(MCL_CHROMIUM chromium)
find_program(MCL_NODE node)
if(MCL_CHROMIUM AND MCL_NODE)
    set(pageDir ${CMAKE_CURRENT_BINARY_DIR}/codecreport-page)
    set(playwright ${pageDir}/node_modules/playwright-core/package.json)
    file(MAKE_DIRECTORY ${pageDir})
    add_custom_command(
        OUTPUT ${playwright} ${pageDir}/pageTest.mjs
        COMMAND ${CMAKE_COMMAND} -E copy_if_different package.json package-lock.json .npmrc
                pageTest.mjs ${pageDir}
        COMMAND ${CMAKE_COMMAND} -E chdir ${pageDir}
                ${NPM} ci --ignore-scripts --no-audit --no-fund --loglevel=error
        COMMAND ${CMAKE_COMMAND} -E touch ${playwright} ${pageDir}/pageTest.mjs
        DEPENDS codecreport/page/package.json codecreport/page/package-lock.json
                codecreport/page/.npmrc codecreport/page/pageTest.mjs
        WORKING_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}/codecreport/page
        COMMENT "npm ci: the page test's browser driver"
        VERBATIM)
    add_custom_target(codecreport_page_test ALL DEPENDS ${playwright} ${pageDir}/pageTest.mjs)
    add_test(NAME Codecreport.pageInABrowser
        COMMAND ${MCL_NODE} ${pageDir}/pageTest.mjs ${MCL_CHROMIUM} $<TARGET_FILE:codecreport>
                $<TARGET_FILE:codecreport_make_log>)
    set_tests_properties(Codecreport.pageInABrowser PROPERTIES TIMEOUT 120)

    # The rows in an engine of columns. Its lock file names the engine's build for Linux on x86-64.
    set(rowsDir ${CMAKE_CURRENT_BINARY_DIR}/codecreport-rows)
    set(duckdb ${rowsDir}/node_modules/@duckdb/node-api/package.json)
    file(MAKE_DIRECTORY ${rowsDir})
    add_custom_command(
        OUTPUT ${duckdb} ${rowsDir}/rowsTest.mjs
        COMMAND ${CMAKE_COMMAND} -E copy_if_different package.json package-lock.json .npmrc
                rowsTest.mjs ${rowsDir}
        COMMAND ${CMAKE_COMMAND} -E chdir ${rowsDir}
                ${NPM} install --ignore-scripts --no-audit --no-fund --loglevel=error
        COMMAND ${CMAKE_COMMAND} -E touch ${duckdb} ${rowsDir}/rowsTest.mjs
        DEPENDS codecreport/rows/package.json codecreport/rows/package-lock.json
                codecreport/rows/.npmrc codecreport/rows/rowsTest.mjs
        WORKING_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}/codecreport/rows
        COMMENT "npm install: the rows test's engine"
        VERBATIM)
    add_custom_target(codecreport_rows_test ALL DEPENDS ${duckdb} ${rowsDir}/rowsTest.mjs)
    add_test(NAME Codecreport.rowsInAnEngineOfColumns
        COMMAND ${MCL_NODE} ${rowsDir}/rowsTest.mjs $<TARGET_FILE:codecreport>
                $<TARGET_FILE:codecreport_make_log>)
    set_tests_properties(Codecreport.rowsInAnEngineOfColumns PROPERTIES TIMEOUT 120)
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
