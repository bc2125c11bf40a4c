// SPDX-License-Identifier: Apache-2.0
// Stream format, its getters, and the statistics string of the codec's component.
#define LOG_TAG "MediaCodecLogger"

#include <limits>
#include <memory>

#include <stdlib.h>
#include <string.h>

#include <cutils/properties.h>
#include <log/log.h>
#include <media/stagefright/foundation/AMessage.h>
#include <media/stagefright/foundation/ColorUtils.h>
#include <mediaCodecLogger/LoggerSupport.h>
#include <mediaCodecLogger/MediaCodecLogger.h>

namespace android {

namespace {

constexpr char kHdrTypeProperty[] = "vendor.vdecomx.hdr-type";
constexpr int32_t kAbsent = -1;
/** From here on a colour standard is a vendor's and means nothing without its conversion. */
constexpr int32_t kFirstExtendedStandard = 65;

constexpr const char* kHdrTypes[] = {"SDR", "HDR10", "DOVI", "TCH", "HLG", "HDR10Plus"};
constexpr const char* kScanTypes[] = {"progressive", "interlace"};

template <size_t N>
const char* nameOf(const char* const (&names)[N], int32_t value) {
    return static_cast<uint32_t>(value) < N ? names[value] : "??";
}

/** OMX components report under the first key, Codec2 components under the second. */
bool findVendorKey(const sp<AMessage>& format, const char* omxKey, const char* codec2Key,
                   int32_t* value) {
    return format->findInt32(omxKey, value) || format->findInt32(codec2Key, value);
}

int32_t span(int32_t first, int32_t last) {
    return wrapAdd32(last, wrapSub(1, first));
}

}  // namespace

/** What a format message says; -1 for what it does not. */
struct MediaCodecLogger::FormatUpdate {
    int32_t width = 0;
    int32_t height = 0;
    int32_t colorStandard = 0;
    int32_t hdrType = kAbsent;
    int32_t bitDepth = kAbsent;
    int32_t scanType = kAbsent;
    /** The vendor's colour standard, if colorStandard was converted from one. */
    int32_t convertedFrom = kAbsent;
};

void MediaCodecLogger::updateFormatChanged(sp<AMessage>& format) {
    if (!mIsDecoder) return;
    FormatUpdate update;
    {
        WriteLock lock(mLock);
        readFormat(format, &update);
    }
    if (update.convertedFrom != kAbsent) {
        ALOGI("%s convert extend color changed from [%d] to standard [%d] !", __func__,
              update.convertedFrom, update.colorStandard);
    }
    ALOGI("%s width = %d height = %d, hdrType = %d, scanType = %d, bitDepth = %d, "
          "colorStandard = %d",
          __func__, update.width, update.height, update.hdrType, update.scanType, update.bitDepth,
          update.colorStandard);
    LOGGER_CHECK(static_cast<uint32_t>(mResolutionType) < MAX_RES_TYPES, "685",
                 "videoType < MAX_RES_TYPES");

    // Armed by every change, also one that keeps the size.
    mPrevWidth = mWidth;
    mPrevHeight = mHeight;
    mResChangePending = true;
    mWidth = update.width;
    mHeight = update.height;
    closeSegmentForFormatChange();
    mResolutionType = mapResolution(update.width);
    updateDisplaySize();
}

void MediaCodecLogger::readFormat(const sp<AMessage>& format, FormatUpdate* update) {
    int32_t left, top, right, bottom;
    if (format->findRect("crop", &left, &top, &right, &bottom)) {
        update->width = span(left, right);
        update->height = span(top, bottom);
    } else {
        format->findInt32("height", &update->height);
        format->findInt32("width", &update->width);
    }
    if (format->findInt32("color-standard", &update->colorStandard)) {
        const int32_t reported = update->colorStandard;
        if (reported >= kFirstExtendedStandard &&
            convertExtendedColorToStandard(format, update->colorStandard) == OK) {
            update->convertedFrom = reported;
        }
        mColorStandard = update->colorStandard;
    }
    const bool hasHdrType =
            findVendorKey(format, kHdrTypeProperty, "vendor.mtk-codec2.hdr-type", &update->hdrType);
    if (!hasHdrType) update->hdrType = property_get_int32(kHdrTypeProperty, kAbsent);
    if (hasHdrType || update->hdrType != kAbsent) mHdrType = nameOf(kHdrTypes, update->hdrType);

    if (findVendorKey(format, "vendor.vdecomx.bitdepth", "vendor.mtk-codec2.color-depth",
                      &update->bitDepth)) {
        mBitDepth = update->bitDepth;
    }
    if (findVendorKey(format, "vendor.vdecomx.scan-type", "vendor.mtk-codec2.scan-type",
                      &update->scanType)) {
        mScanType = nameOf(kScanTypes, update->scanType);
    }
}

status_t MediaCodecLogger::convertExtendedColorToStandard(const sp<AMessage>& format,
                                                          int& standard) {
    ColorAspects aspects;
    ColorUtils::getColorAspectsFromFormat(format, aspects);
    // Called for its effect on the aspects: it replaces them by the nearest ones the platform
    // knows.
    ColorUtils::getDataSpaceForColorAspects(aspects, false /* mayExpand */);
    int32_t range, platformStandard, transfer;
    const status_t result = ColorUtils::convertCodecColorAspectsToPlatformAspects(
            aspects, &range, &platformStandard, &transfer);
    if (result == OK) standard = platformStandard;
    return result;
}

void MediaCodecLogger::closeSegmentForFormatChange() {
    const int64_t spanUs = wrapSub(mLastPts, mSegmentStartPts);
    if (spanUs > 0) {
        auto& timeMs = mPlaybackTimeMsByRes[mResolutionType];
        timeMs = wrapAdd(timeMs, spanUs / 1000);
        ALOGI("%s.framerate = %.3f fps", embeddedWarnings().c_str(),
              framesPerSecond(mSegmentFrameCount, spanUs));
        mPrevSegmentsFrameCount += mSegmentFrameCount;
        mSegmentFrameCount = 0;
    }
    mSegmentStartPts = mLastPts;
}

AString MediaCodecLogger::getHDRType() {
    ReadLock lock(mLock);
    return mHdrType;
}

void MediaCodecLogger::getResolution(int& width, int& height) {
    ReadLock lock(mLock);
    width = mWidth;
    height = mHeight;
}

int MediaCodecLogger::getBitDepth() {
    ReadLock lock(mLock);
    return mBitDepth;
}

AString MediaCodecLogger::getScanType() {
    ReadLock lock(mLock);
    return mScanType;
}

void MediaCodecLogger::getColorProperties(int& value) {
    ReadLock lock(mLock);
    value = mColorStandard;
}

long MediaCodecLogger::parseMetricValue(const AString& text, const char* key) {
    const ssize_t position = text.find(key);
    if (position < 0) return 0;
    const size_t value = position + strlen(key) + 1;
    return value < text.size() ? strtol(text.c_str() + value, nullptr, 10) : 0;
}

void MediaCodecLogger::updateVendorMetrics(AString& metrics) {
    if (metrics.empty()) return;
    // The counters have 32 bits; what the vendor sends beyond that is cut off.
    const auto valueOf = [&](const char* key) {
        return static_cast<uint32_t>(parseMetricValue(metrics, key));
    };
    mNonFatalErrorCount = valueOf("CodecNonFatalErrorCount");
    if (isTunneled()) {
        mFramesDropped += valueOf("TunnelFrameDropCount");
    } else {
        const uint32_t shown = valueOf("HWCRenderFrameCount");
        const uint32_t rendered = mRenderedFrameCount;
        if (shown != 0 && rendered > shown) {
            // The total grows with every report, the display's share does not.
            mDisplayFramesDropped = rendered - shown;
            mFramesDropped += rendered - shown;
            ALOGI("%d frames were dropped in SurfaceFlinger or HWC.",
                  static_cast<int>(rendered - shown));
        }
    }
    const uint32_t longestRun = valueOf("MaxConsecutiveFramesDropped");
    if (longestRun > mMaxConsecutiveFramesDropped) mMaxConsecutiveFramesDropped = longestRun;
}

}  // namespace android
