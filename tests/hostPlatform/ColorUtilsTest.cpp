// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <stdint.h>

#include <media/stagefright/foundation/ColorUtils.h>
#include <tests/support/LogCapture.h>

namespace android {
namespace {

/** The standard that a decoder's becomes on its way to the display. */
int32_t displayed(int32_t standard) {
    const sp<AMessage> format = new AMessage;
    format->setInt32("color-standard", standard);
    ColorAspects aspects;
    ColorUtils::getColorAspectsFromFormat(format, aspects);
    ColorUtils::getDataSpaceForColorAspects(aspects, true);
    int32_t range, result, transfer;
    EXPECT_EQ(ColorUtils::convertCodecColorAspectsToPlatformAspects(aspects, &range, &result,
                                                                    &transfer),
              NO_ERROR);
    return result;
}

/** Rows are matrix coefficients, columns primaries. */
constexpr int32_t kNearestStandard[7][7] = {
        {0, 1, 8, 3, 5, 9, 6}, {1, 1, 8, 3, 5, 9, 6}, {1, 2, 8, 2, 4, 9, 6}, {1, 2, 8, 2, 4, 9, 6},
        {1, 1, 8, 3, 5, 9, 6}, {1, 1, 8, 3, 5, 9, 6}, {1, 4, 7, 4, 4, 7, 7},
};

TEST(ColorUtilsTest, everyStandardBecomesTheNearestPlainOne) {
    const test::LogCapture log;
    for (int32_t plain = 0; plain <= 9; ++plain) EXPECT_EQ(displayed(plain), plain);
    for (int32_t m = 0; m < 7; ++m) {
        for (int32_t p = 0; p < 7; ++p) {
            EXPECT_EQ(displayed(64 + p + 7 * m), kNearestStandard[m][p]) << p << ", " << m;
            EXPECT_EQ(displayed(0x10000 + p + 256 * m), kNearestStandard[m][p]) << p << ", " << m;
        }
    }
    for (const int32_t unknown : {10, 63, 113, 0x20000, -1}) EXPECT_EQ(displayed(unknown), 1);
}

}  // namespace
}  // namespace android
