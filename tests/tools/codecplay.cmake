# SPDX-License-Identifier: Apache-2.0
if(TARGET codecplay)
    mcl_add_test(codecplay_test
        SOURCES CodecplayTest.h CodecplayTest.cpp CodecplayFaultTest.cpp CodecplayFormatTest.cpp
            CodecplaySessionTest.cpp CodecplayUsageTest.cpp ${CMAKE_SOURCE_DIR}/tests/support/Process.cpp
        LIBS)
    add_dependencies(codecplay_test codecplay codecloggerd)
    target_compile_definitions(codecplay_test PRIVATE
        CODECPLAY="$<TARGET_FILE:codecplay>"
        CODECLOGGERD="$<TARGET_FILE:codecloggerd>"
        CODECPLAY_CLIPS="${CMAKE_CURRENT_BINARY_DIR}/clips"
        CODECPLAY_DEMO_CLIP="${CMAKE_SOURCE_DIR}/tools/codecplay/make-demo-clip.sh")
endif()

if(TARGET codecplay AND TARGET story_test)
    add_test(NAME story.recordedByCodecplay
        COMMAND ${CMAKE_SOURCE_DIR}/tests/stories/check-recording.sh $<TARGET_FILE:codecplay>
            $<TARGET_FILE:story_test>)
    set_tests_properties(story.recordedByCodecplay PROPERTIES TIMEOUT 60)
endif()
