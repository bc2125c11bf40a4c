// SPDX-License-Identifier: Apache-2.0
// What the library takes for granted of the platform's small libraries.
#include <cutils/properties.h>
#include <gtest/gtest.h>
#include <stdint.h>

#include <media/stagefright/foundation/AMessage.h>
#include <media/stagefright/foundation/ColorUtils.h>
#include <tests/support/LogCapture.h>
#include <tests/support/ScopedProperties.h>

namespace android {
namespace {

TEST(PropertiesTest, valuesAreReadAsOnADevice) {
    constexpr int64_t kDefault = -77;
    const struct {
        const char* value;
        int asBool;  // 2: the default
        int64_t as32;
        int64_t as64;
    } kCases[] = {{"1", 1, 1, 1},
                  {"on", 1, kDefault, kDefault},
                  {"true", 1, kDefault, kDefault},
                  {"0", 0, 0, 0},
                  {"TRUE", 2, kDefault, kDefault},
                  {"", 2, kDefault, kDefault},
                  {"0x10", 2, 16, 16},
                  {"12abc", 2, 12, 12},
                  {"2147483648", 2, kDefault, 2147483648},
                  {"9223372036854775808", 2, kDefault, kDefault}};
    test::ScopedProperties properties;
    for (const auto& [value, asBool, as32, as64] : kCases) {
        properties.set("key", value);
        EXPECT_EQ(property_get_bool("key", 2), asBool) << value;
        EXPECT_EQ(property_get_int32("key", kDefault), as32) << value;
        EXPECT_EQ(property_get_int64("key", kDefault), as64) << value;
    }
}

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

TEST(ColorUtilsTest, everyStandardBecomesTheNearestPlainOne) {
    /** Rows are matrix coefficients, columns primaries. */
    constexpr const char* kNearestStandard[7] = {"0183596", "1183596", "1282496", "1282496",
                                                 "1183596", "1183596", "1474477"};
    const test::LogCapture log;
    for (int32_t plain = 0; plain <= 9; ++plain) EXPECT_EQ(displayed(plain), plain);
    for (int32_t m = 0; m < 7; ++m) {
        for (int32_t p = 0; p < 7; ++p) {
            const int32_t nearest = kNearestStandard[m][p] - '0';
            EXPECT_EQ(displayed(64 + p + 7 * m), nearest) << p << ", " << m;
            EXPECT_EQ(displayed(0x10000 + p + 256 * m), nearest) << p << ", " << m;
        }
    }
    for (const int32_t unknown : {10, 63, 113, 0x20000, -1}) EXPECT_EQ(displayed(unknown), 1);
}

}  // namespace
}  // namespace android
