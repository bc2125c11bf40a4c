// SPDX-License-Identifier: Apache-2.0
#include <mediaCodecLogger/logger/StreamFormat.h>

#include <cutils/properties.h>
#include <media/stagefright/foundation/AMessage.h>
#include <media/stagefright/foundation/ColorUtils.h>

#include <mediaCodecLogger/base/ScopedRwLock.h>
#include <mediaCodecLogger/base/WrappingArithmetic.h>
#include <mediaCodecLogger/logger/VendorKeys.h>

namespace android::logger {

namespace {

/** From here on a colour standard is a vendor's and means nothing without its conversion. */
constexpr int32_t kFirstExtendedStandard = 65;

constexpr const char* kHdrTypes[] = {"SDR", "HDR10", "DOVI", "TCH", "HLG", "HDR10Plus"};
constexpr const char* kScanTypes[] = {"progressive", "interlace"};

template <size_t N>
const char* nameOf(const char* const (&names)[N], int32_t value) {
    return static_cast<uint32_t>(value) < N ? names[value] : "??";
}

bool find(const sp<AMessage>& message, const VendorKey& key, int32_t* value) {
    return message->findInt32(key.omx, value) || message->findInt32(key.codec2, value);
}

/** Pixels from `first` to `last`, both included. */
int32_t span(int32_t first, int32_t last) {
    return wrapAdd32(last, wrapSub(1, first));
}

}  // namespace

AString StreamFormatTexts::copyHdrType() const {
    ReadLock lock(mLock);
    return mHdrType;
}

AString StreamFormatTexts::copyScanType() const {
    ReadLock lock(mLock);
    return mScanType;
}

void FormatUpdate::take(const sp<AMessage>& message, StreamFormat& format,
                        StreamFormatTexts& texts) {
    WriteLock lock(texts.mLock);
    // What is shown; width and height are those of the buffer, with the padding that the component
    // needs.
    int32_t left, top, right, bottom;
    if (message->findRect("crop", &left, &top, &right, &bottom)) {
        width = span(left, right);
        height = span(top, bottom);
    } else {
        message->findInt32("height", &height);
        message->findInt32("width", &width);
    }
    if (message->findInt32("color-standard", &colorStandard)) {
        const int32_t reported = colorStandard;
        if (reported >= kFirstExtendedStandard &&
            convertExtendedColor(message, colorStandard) == OK) {
            convertedFrom = reported;
        }
        format.mColorStandard = colorStandard;
    }
    // Components that do not put the HDR type into the message leave it in a property.
    const bool hasHdrType = find(message, kHdrTypeKey, &hdrType);
    if (!hasHdrType) hdrType = property_get_int32(kHdrTypeKey.omx, kAbsent);
    if (hasHdrType || hdrType != kAbsent) texts.mHdrType = nameOf(kHdrTypes, hdrType);

    if (find(message, kBitDepthKey, &bitDepth)) format.mBitDepth = bitDepth;
    if (find(message, kScanTypeKey, &scanType)) texts.mScanType = nameOf(kScanTypes, scanType);
}

status_t convertExtendedColor(const sp<AMessage>& message, int32_t& standard) {
    ColorAspects aspects;
    ColorUtils::getColorAspectsFromFormat(message, aspects);
    // Called for its effect on the aspects: it replaces them by the nearest ones the platform
    // knows.
    ColorUtils::getDataSpaceForColorAspects(aspects, false /* mayExpand */);
    int32_t range, platformStandard, transfer;
    const status_t result = ColorUtils::convertCodecColorAspectsToPlatformAspects(
            aspects, &range, &platformStandard, &transfer);
    if (result == OK) standard = platformStandard;
    return result;
}

}  // namespace android::logger
