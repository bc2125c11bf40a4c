# SPDX-License-Identifier: Apache-2.0
mcl_add_test(host_binder_test
    SOURCES libbinder/ParcelTest.cpp
    LIBS test_support hostPlatform)
