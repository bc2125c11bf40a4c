// SPDX-License-Identifier: Apache-2.0
#define LOG_TAG "ColorUtils"
#include <log/log.h>

#include <algorithm>
#include <atomic>
#include <iterator>

#include <hostplatform/ColorConversion.h>
#include <media/stagefright/foundation/ColorUtils.h>

namespace android {

namespace {

using CA = ColorAspects;
using CU = ColorUtils;

/** What a colour standard is made of, as plain numbers because any byte may occur. */
struct Pair {
    uint32_t primaries;
    uint32_t matrix;

    bool operator==(const Pair& other) const {
        return primaries == other.primaries && matrix == other.matrix;
    }
};

constexpr Pair kOtherPair = {CA::PrimariesOther, CA::MatrixOther};

/** Indexed by ColorStandard. */
constexpr Pair kStandards[] = {
        {CA::PrimariesUnspecified, CA::MatrixUnspecified},
        {CA::PrimariesBT709_5, CA::MatrixBT709_5},
        {CA::PrimariesBT601_6_625, CA::MatrixBT601_6},
        {CA::PrimariesBT601_6_625, CA::MatrixBT709_5},
        {CA::PrimariesBT601_6_525, CA::MatrixBT601_6},
        {CA::PrimariesBT601_6_525, CA::MatrixSMPTE240M},
        {CA::PrimariesBT2020, CA::MatrixBT2020},
        {CA::PrimariesBT2020, CA::MatrixBT2020Constant},
        {CA::PrimariesBT470_6M, CA::MatrixBT470_6M},
        {CA::PrimariesGenericFilm, CA::MatrixBT2020},
};

/** The nearest standard of pairs that are none, where the primaries alone do not decide. */
constexpr struct {
    Pair pair;
    uint32_t standard;
} kNearestByPair[] = {
        {{CA::PrimariesBT709_5, CA::MatrixBT470_6M}, CU::kColorStandardBT601_625},
        {{CA::PrimariesBT709_5, CA::MatrixBT601_6}, CU::kColorStandardBT601_625},
        {{CA::PrimariesBT601_6_625, CA::MatrixBT470_6M}, CU::kColorStandardBT601_625},
        {{CA::PrimariesBT709_5, CA::MatrixSMPTE240M}, CU::kColorStandardBT709},
        {{CA::PrimariesBT709_5, CA::MatrixBT2020}, CU::kColorStandardBT709},
        {{CA::PrimariesBT709_5, CA::MatrixBT2020Constant}, CU::kColorStandardBT601_525},
        {{CA::PrimariesBT601_6_625, CA::MatrixBT2020Constant}, CU::kColorStandardBT601_525},
        {{CA::PrimariesBT601_6_525, CA::MatrixBT470_6M}, CU::kColorStandardBT601_525},
        {{CA::PrimariesBT601_6_525, CA::MatrixBT2020Constant}, CU::kColorStandardBT601_525},
        {{CA::PrimariesBT470_6M, CA::MatrixBT2020Constant}, CU::kColorStandardBT2020Constant},
        {{CA::PrimariesGenericFilm, CA::MatrixBT2020Constant}, CU::kColorStandardBT2020Constant},
};

constexpr struct {
    uint32_t primaries;
    uint32_t standard;
} kNearestByPrimaries[] = {
        {CA::PrimariesGenericFilm, CU::kColorStandardFilm},
        {CA::PrimariesBT470_6M, CU::kColorStandardBT470M},
        {CA::PrimariesBT2020, CU::kColorStandardBT2020},
        {CA::PrimariesBT601_6_525, CU::kColorStandardBT601_525_Unadjusted},
        {CA::PrimariesBT601_6_625, CU::kColorStandardBT601_625_Unadjusted},
};

/** Indexed by the aspect; the display path has numbers of its own here, and here only. */
constexpr uint32_t kDataspaceTransfers[] = {
        HAL_DATASPACE_TRANSFER_UNSPECIFIED, HAL_DATASPACE_TRANSFER_LINEAR,
        HAL_DATASPACE_TRANSFER_SRGB,        HAL_DATASPACE_TRANSFER_SMPTE_170M,
        HAL_DATASPACE_TRANSFER_GAMMA2_2,    HAL_DATASPACE_TRANSFER_GAMMA2_8,
        HAL_DATASPACE_TRANSFER_ST2084,      HAL_DATASPACE_TRANSFER_HLG,
};

constexpr struct {
    android_dataspace v0;
    android_dataspace legacy;
} kLegacyDataspaces[] = {
        {HAL_DATASPACE_V0_SRGB, HAL_DATASPACE_SRGB},
        {HAL_DATASPACE_V0_SRGB_LINEAR, HAL_DATASPACE_SRGB_LINEAR},
        {HAL_DATASPACE_V0_BT709, HAL_DATASPACE_BT709},
        {HAL_DATASPACE_V0_BT601_525, HAL_DATASPACE_BT601_525},
        {HAL_DATASPACE_V0_BT601_625, HAL_DATASPACE_BT601_625},
        {HAL_DATASPACE_V0_JFIF, HAL_DATASPACE_JFIF},
};

constexpr uint32_t kVendorStart = 0x10000;
constexpr uint32_t kVendorEnd = 0x20000;
constexpr uint32_t kByte = 0x100;
/** Known primaries, and with them the extended standards, count 0 to 6; so do the matrices. */
constexpr uint32_t kKnownPrimaries = CA::PrimariesBT2020 + 1;
constexpr uint32_t kKnownMatrices = CA::MatrixBT2020Constant + 1;
constexpr uint32_t kExtendedStandards = kKnownPrimaries * kKnownMatrices;
/** Up to here the platform's ranges and transfers have the same numbers as the aspects. */
constexpr uint32_t kLastCommonRange = CA::RangeLimited;
constexpr uint32_t kLastCommonTransfer = CA::TransferHLG;
static_assert(std::size(kDataspaceTransfers) == kLastCommonTransfer + 1);

std::atomic<status_t> gForcedStatus{NO_ERROR};

Pair pairOfStandard(uint32_t standard) {
    if (standard < std::size(kStandards)) return kStandards[standard];
    const uint32_t extended = standard - CU::kColorStandardExtendedStart;
    if (extended < kExtendedStandards) {
        return {extended % kKnownPrimaries, extended / kKnownPrimaries};
    }
    const uint32_t vendor = standard - kVendorStart;
    if (vendor < kVendorEnd - kVendorStart) return {vendor % kByte, vendor / kByte};
    ALOGW("color standard %d is not known", static_cast<int32_t>(standard));
    return kOtherPair;
}

uint32_t standardOfPair(const Pair& pair) {
    const auto* const known = std::find(std::begin(kStandards), std::end(kStandards), pair);
    if (known != std::end(kStandards)) return known - std::begin(kStandards);
    if (pair.primaries < kKnownPrimaries && pair.matrix < kKnownMatrices) {
        return CU::kColorStandardExtendedStart + pair.primaries + kKnownPrimaries * pair.matrix;
    }
    return kVendorStart + pair.primaries + kByte * pair.matrix;
}

uint32_t aspectOfRange(uint32_t range) {
    if (range <= kLastCommonRange) return range;
    return range - kVendorStart < kByte ? range - kVendorStart : CA::RangeOther;
}

uint32_t rangeOfAspect(uint32_t aspect) {
    return aspect <= kLastCommonRange ? aspect : kVendorStart + aspect;
}

uint32_t aspectOfTransfer(uint32_t transfer) {
    if (transfer <= kLastCommonTransfer) return transfer;
    const uint32_t extended = transfer - CU::kColorTransferExtendedStart;
    if (extended <= CA::TransferST428) return extended;
    return transfer - kVendorStart < kByte ? transfer - kVendorStart : CA::TransferOther;
}

uint32_t transferOfAspect(uint32_t aspect) {
    if (aspect <= kLastCommonTransfer) return aspect;
    return aspect +
           (aspect <= CA::TransferST428 ? uint32_t{CU::kColorTransferExtendedStart} : kVendorStart);
}

/** The display path's choice for a pair; sets *forceFull where the choice implies full range. */
uint32_t nearestStandard(const Pair& pair, bool* forceFull) {
    *forceFull = false;
    const auto* const known = std::find(std::begin(kStandards), std::end(kStandards), pair);
    if (known != std::end(kStandards)) return known - std::begin(kStandards);
    for (const auto& entry : kNearestByPair) {
        if (entry.pair == pair) return entry.standard;
    }
    for (const auto& entry : kNearestByPrimaries) {
        if (entry.primaries == pair.primaries) return entry.standard;
    }
    *forceFull = pair.matrix == CA::MatrixBT2020Constant;
    return CU::kColorStandardBT709;
}

int32_t findColor(const sp<AMessage>& format, const char* name) {
    int32_t value = 0;
    format->findInt32(name, &value);
    return value;
}

}  // namespace

void ColorUtils::getColorAspectsFromFormat(const sp<AMessage>& format, ColorAspects& aspects) {
    const Pair pair = pairOfStandard(findColor(format, "color-standard"));
    aspects.mRange = static_cast<CA::Range>(aspectOfRange(findColor(format, "color-range")));
    aspects.mPrimaries = static_cast<CA::Primaries>(pair.primaries);
    aspects.mTransfer =
            static_cast<CA::Transfer>(aspectOfTransfer(findColor(format, "color-transfer")));
    aspects.mMatrixCoeffs = static_cast<CA::MatrixCoeffs>(pair.matrix);
}

android_dataspace ColorUtils::getDataSpaceForColorAspects(ColorAspects& aspects,
                                                          bool /*mayExpand*/) {
    bool forceFull = false;
    const uint32_t standard =
            nearestStandard({aspects.mPrimaries, aspects.mMatrixCoeffs}, &forceFull);
    if (forceFull) {
        aspects.mRange = CA::RangeFull;
    } else if (aspects.mRange > kLastCommonRange) {
        aspects.mRange = CA::RangeLimited;
    }
    if (aspects.mTransfer > kLastCommonTransfer) aspects.mTransfer = CA::TransferSMPTE170M;
    aspects.mPrimaries = static_cast<CA::Primaries>(kStandards[standard].primaries);
    aspects.mMatrixCoeffs = static_cast<CA::MatrixCoeffs>(kStandards[standard].matrix);

    const auto dataspace = static_cast<android_dataspace>(
            standard << HAL_DATASPACE_STANDARD_SHIFT | kDataspaceTransfers[aspects.mTransfer] |
            uint32_t{aspects.mRange} << HAL_DATASPACE_RANGE_SHIFT);
    for (const auto& entry : kLegacyDataspaces) {
        if (entry.v0 == dataspace) return entry.legacy;
    }
    return dataspace;
}

status_t ColorUtils::convertCodecColorAspectsToPlatformAspects(const ColorAspects& aspects,
                                                               int32_t* range, int32_t* standard,
                                                               int32_t* transfer) {
    *range = static_cast<int32_t>(rangeOfAspect(aspects.mRange));
    *standard = static_cast<int32_t>(standardOfPair({aspects.mPrimaries, aspects.mMatrixCoeffs}));
    *transfer = static_cast<int32_t>(transferOfAspect(aspects.mTransfer));
    const bool isValid = aspects.mRange < kByte && aspects.mPrimaries < kByte &&
                         aspects.mTransfer < kByte && aspects.mMatrixCoeffs < kByte;
    const status_t forced = gForcedStatus.load(std::memory_order_relaxed);
    if (forced != NO_ERROR) return forced;
    return isValid ? NO_ERROR : BAD_VALUE;
}

namespace hostplatform {

void setColorConversionFailure(status_t status) {
    gForcedStatus.store(status, std::memory_order_relaxed);
}

}  // namespace hostplatform

}  // namespace android
