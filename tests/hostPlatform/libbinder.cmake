# SPDX-License-Identifier: Apache-2.0
mcl_add_test(host_binder_test
    SOURCES libbinder/CrossProcessTest.cpp
        libbinder/TransportTest.cpp ../support/Process.cpp
    LIBS test_support hostPlatform)

# The other process, which the tests start.
add_executable(binder_test_peer libbinder/TestPeer.cpp)
target_include_directories(binder_test_peer PRIVATE ${CMAKE_SOURCE_DIR})
target_link_libraries(binder_test_peer PRIVATE binder)
add_dependencies(host_binder_test binder_test_peer)
target_compile_definitions(host_binder_test PRIVATE TEST_PEER="$<TARGET_FILE:binder_test_peer>")
