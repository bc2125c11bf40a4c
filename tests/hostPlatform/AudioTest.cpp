// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <media/AudioParameter.h>

namespace android {
namespace {

TEST(AudioParameterTest, getIntReadsTheLeadingNumberOrGives0) {
    const struct {
        const char* pairs;
        status_t status;
        int value;
    } cases[] = {
            {"", BAD_VALUE, 0},
            {"KEY=1", BAD_VALUE, 0},
            {"key=1", NO_ERROR, 1},
            {"key= 7x", NO_ERROR, 7},
            {"key=1;key=2", NO_ERROR, 2},
            {";;a;key=4;", NO_ERROR, 4},
            {"key=true", INVALID_OPERATION, 0},
            {"key", INVALID_OPERATION, 0},
    };
    for (const auto& c : cases) {
        int value = -99;
        const AudioParameter parameter(String8(c.pairs));
        EXPECT_EQ(parameter.getInt(String8("key"), value), c.status) << c.pairs;
        EXPECT_EQ(value, c.value) << c.pairs;
    }
}

}  // namespace
}  // namespace android
