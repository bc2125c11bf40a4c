# SPDX-License-Identifier: Apache-2.0
if(TARGET codecplay)
    mcl_add_test(codecplay_test
        SOURCES CodecplayTest.h CodecplayTest.cpp CodecplayFaultTest.cpp CodecplayFormatTest.cpp
            CodecplaySessionTest.cpp CodecplayUsageTest.cpp ${CMAKE_SOURCE_DIR}/tests/support/Process.cpp
        LIBS)
    add_dependencies(codecplay_test codecplay)
    target_compile_definitions(codecplay_test PRIVATE
        CODECPLAY="$<TARGET_FILE:codecplay>"
        CODECPLAY_CLIPS="${CMAKE_CURRENT_BINARY_DIR}/clips"
        CODECPLAY_DEMO_CLIP="${CMAKE_SOURCE_DIR}/tools/codecplay/make-demo-clip.sh")
endif()
