// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <system/graphics.h>
#include <utils/Errors.h>
#include <utils/RefBase.h>

#include <media/hardware/VideoAPI.h>
#include <media/stagefright/foundation/AMessage.h>

namespace android {

/**
 * Converts between the colour numbers of a format message ("color-range", "color-standard",
 * "color-transfer": the platform's numbering) and ColorAspects. Thread-safe.
 */
struct ColorUtils {
    enum ColorStandard : uint32_t {
        kColorStandardUnspecified = 0,
        kColorStandardBT709 = 1,
        kColorStandardBT601_625 = 2,
        kColorStandardBT601_625_Unadjusted = 3,
        kColorStandardBT601_525 = 4,
        kColorStandardBT601_525_Unadjusted = 5,
        kColorStandardBT2020 = 6,
        kColorStandardBT2020Constant = 7,
        kColorStandardBT470M = 8,
        kColorStandardFilm = 9,
        kColorStandardDCI_P3 = 10,
        /** From here on: any pair of known primaries and matrix coefficients. */
        kColorStandardExtendedStart = 64,
        /** From here on: any pair at all, one byte each. */
        kColorStandardVendorStart = 0x10000,
    };

    enum ColorTransfer : uint32_t {
        kColorTransferUnspecified = 0,
        kColorTransferLinear = 1,
        kColorTransferSRGB = 2,
        kColorTransferSMPTE_170M = 3,
        kColorTransferGamma22 = 4,
        kColorTransferGamma28 = 5,
        kColorTransferST2084 = 6,
        kColorTransferHLG = 7,
        kColorTransferGamma26 = 8,
        kColorTransferExtendedStart = 32,
        kColorTransferVendorStart = 0x10000,
    };

    enum ColorRange : uint32_t {
        kColorRangeUnspecified = 0,
        kColorRangeFull = 1,
        kColorRangeLimited = 2,
        kColorRangeExtendedStart = 8,
        kColorRangeVendorStart = 0x10000,
    };

    /** Fills all four aspects; what the message lacks counts as 0. */
    static void getColorAspectsFromFormat(const sp<AMessage>& format, ColorAspects& aspects);

    /**
     * Returns the nearest data space that the display path knows and rewrites aspects to what it
     * stands for. mayExpand is taken as false.
     */
    static android_dataspace getDataSpaceForColorAspects(ColorAspects& aspects, bool mayExpand);

    /** Writes all three results; BAD_VALUE when an aspect is above 0xff. */
    static status_t convertCodecColorAspectsToPlatformAspects(const ColorAspects& aspects,
                                                              int32_t* range, int32_t* standard,
                                                              int32_t* transfer);
};

}  // namespace android
