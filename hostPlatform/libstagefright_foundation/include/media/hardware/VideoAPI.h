// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

namespace android {

/** How the samples of a picture are to be read; the codecs' own numbering. */
struct __attribute__((__packed__)) ColorAspects {
    enum Range : uint32_t {
        RangeUnspecified,
        RangeFull,
        RangeLimited,
        RangeOther = 0xff,
    };

    enum Primaries : uint32_t {
        PrimariesUnspecified,
        PrimariesBT709_5,
        PrimariesBT470_6M,
        PrimariesBT601_6_625,
        PrimariesBT601_6_525,
        PrimariesGenericFilm,
        PrimariesBT2020,
        PrimariesOther = 0xff,
    };

    enum Transfer : uint32_t {
        TransferUnspecified,
        TransferLinear,
        TransferSRGB,
        TransferSMPTE170M,
        TransferGamma22,
        TransferGamma28,
        TransferST2084,
        TransferHLG,
        TransferSMPTE240M = 0x40,
        TransferXvYCC,
        TransferBT1361,
        TransferST428,
        TransferOther = 0xff,
    };

    enum MatrixCoeffs : uint32_t {
        MatrixUnspecified,
        MatrixBT709_5,
        MatrixBT470_6M,
        MatrixBT601_6,
        MatrixSMPTE240M,
        MatrixBT2020,
        MatrixBT2020Constant,
        MatrixOther = 0xff,
    };

    Range mRange;
    Primaries mPrimaries;
    Transfer mTransfer;
    MatrixCoeffs mMatrixCoeffs;
};

static_assert(sizeof(ColorAspects) == 16, "shared with components");

}  // namespace android
