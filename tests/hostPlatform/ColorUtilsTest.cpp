// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <stdint.h>

#include <media/stagefright/foundation/ColorUtils.h>
#include <tests/support/LogCapture.h>

namespace android {
namespace {

struct Colors {
    int32_t range = 0;
    int32_t standard = 0;
    int32_t transfer = 0;
};

bool operator==(const Colors& a, const Colors& b) {
    return a.range == b.range && a.standard == b.standard && a.transfer == b.transfer;
}

std::ostream& operator<<(std::ostream& out, const Colors& colors) {
    return out << "{" << colors.range << ", " << colors.standard << ", " << colors.transfer << "}";
}

sp<AMessage> formatOf(const Colors& colors) {
    const sp<AMessage> format = new AMessage;
    format->setInt32("color-range", colors.range);
    format->setInt32("color-standard", colors.standard);
    format->setInt32("color-transfer", colors.transfer);
    return format;
}

status_t converted(const ColorAspects& aspects, Colors* result) {
    return ColorUtils::convertCodecColorAspectsToPlatformAspects(
            aspects, &result->range, &result->standard, &result->transfer);
}

/** What a decoder's colours become on their way to the display. */
Colors normalized(const Colors& colors) {
    ColorAspects aspects;
    ColorUtils::getColorAspectsFromFormat(formatOf(colors), aspects);
    ColorUtils::getDataSpaceForColorAspects(aspects, true);
    Colors result;
    EXPECT_EQ(converted(aspects, &result), NO_ERROR);
    return result;
}

/** Rows are matrix coefficients, columns primaries. */
constexpr int32_t kNearestStandard[7][7] = {
        {0, 1, 8, 3, 5, 9, 6}, {1, 1, 8, 3, 5, 9, 6}, {1, 2, 8, 2, 4, 9, 6}, {1, 2, 8, 2, 4, 9, 6},
        {1, 1, 8, 3, 5, 9, 6}, {1, 1, 8, 3, 5, 9, 6}, {1, 4, 7, 4, 4, 7, 7},
};

TEST(ColorUtilsTest, extendedStandardsBecomeTheNearestPlainOne) {
    for (int32_t m = 0; m < 7; ++m) {
        for (int32_t p = 0; p < 7; ++p) {
            const int32_t range = m == 6 && p == 0 ? 1 : 2;
            const Colors expected{range, kNearestStandard[m][p], 3};
            EXPECT_EQ(normalized({2, 64 + p + 7 * m, 3}), expected) << p << ", " << m;
            EXPECT_EQ(normalized({2, 0x10000 + p + 256 * m, 3}), expected) << p << ", " << m;
        }
    }
    // Of a vendor's matrix only the primaries count.
    constexpr int32_t kByPrimaries[] = {1, 1, 8, 3, 5, 9, 6, 1, 1};
    for (int32_t p = 0; p < 9; ++p) {
        for (const int32_t m : {7, 100, 255}) {
            EXPECT_EQ(normalized({2, 0x10000 + p + 256 * m, 3}).standard, kByPrimaries[p]) << p;
        }
    }
}

TEST(ColorUtilsTest, plainValuesStayAndOthersBecomeDefaults) {
    const test::LogCapture log;
    for (const int32_t standard : {10, 63, 113, 0xffff, 0x20000, INT32_MAX, -1, INT32_MIN}) {
        EXPECT_EQ(normalized({2, standard, 3}), (Colors{2, 1, 3})) << standard;
    }
    for (const int32_t range : {3, 8, 0xffff, 0x10003, 0x10100, -1, INT32_MIN}) {
        EXPECT_EQ(normalized({range, 1, 3}), (Colors{2, 1, 3})) << range;
    }
    for (const int32_t transfer : {8, 31, 40, 99, 100, 0x10008, 0x10100, -1, INT32_MIN}) {
        EXPECT_EQ(normalized({2, 1, transfer}), (Colors{2, 1, 3})) << transfer;
    }
    EXPECT_EQ(normalized({0x10001, 1, 32 + 7}), (Colors{1, 1, 7}));
    EXPECT_EQ(normalized({0, 0, 0x10006}), (Colors{0, 0, 6}));
    for (int32_t standard = 0; standard <= 9; ++standard) {
        EXPECT_EQ(normalized({1, standard, 6}), (Colors{1, standard, 6}));
    }
}

TEST(ColorUtilsTest, chainNeverFailsAndGivesPlainStandards) {
    const test::LogCapture log;
    for (int32_t standard = -2; standard < 0x20002; ++standard) {
        const Colors result = normalized({standard % 10, standard, standard % 101});
        ASSERT_TRUE(result.standard >= 0 && result.standard <= 9) << standard;
        ASSERT_TRUE(result.range >= 0 && result.range <= 2) << standard;
        ASSERT_TRUE(result.transfer >= 0 && result.transfer <= 7) << standard;
    }
}

TEST(ColorUtilsTest, withoutTheDisplayStep_conversionGivesBackWhatCame) {
    for (const Colors colors :
         {Colors{0x10005, 65, 7}, Colors{2, 112, 32 + 0x40}, Colors{0, 0x10000 + 7, 0x10044}}) {
        ColorAspects aspects;
        Colors result;
        ColorUtils::getColorAspectsFromFormat(formatOf(colors), aspects);
        EXPECT_EQ(converted(aspects, &result), NO_ERROR);
        const int32_t standard = colors.standard == 112 ? 7 : colors.standard;
        EXPECT_EQ(result, (Colors{colors.range, standard, colors.transfer}));
    }
}

TEST(ColorUtilsTest, dataspaceIsALegacyOneWhereThereIs) {
    const struct {
        Colors colors;
        android_dataspace expected;
    } cases[] = {
            {{2, 1, 3}, HAL_DATASPACE_BT709},
            {{1, 1, 2}, HAL_DATASPACE_SRGB},
            {{1, 2, 3}, HAL_DATASPACE_JFIF},
            {{2, 4, 3}, HAL_DATASPACE_BT601_525},
            {{1, 6, 6}, HAL_DATASPACE_BT2020_PQ},
            {{2, 6, 6},
             static_cast<android_dataspace>(HAL_DATASPACE_STANDARD_BT2020 |
                                            HAL_DATASPACE_TRANSFER_ST2084 |
                                            HAL_DATASPACE_RANGE_LIMITED)},
    };
    for (const auto& c : cases) {
        ColorAspects aspects;
        ColorUtils::getColorAspectsFromFormat(formatOf(c.colors), aspects);
        EXPECT_EQ(ColorUtils::getDataSpaceForColorAspects(aspects, false), c.expected) << c.colors;
    }
}

TEST(ColorUtilsTest, whenAspectsAreWide_conversionFails) {
    ColorAspects aspects = {};
    Colors result{-1, -1, -1};
    aspects.mTransfer = static_cast<ColorAspects::Transfer>(0x100);
    EXPECT_EQ(converted(aspects, &result), BAD_VALUE);
    EXPECT_EQ(result.range, 0);
    EXPECT_EQ(result.standard, 0);
    EXPECT_NE(result.transfer, -1);
}

}  // namespace
}  // namespace android
