// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <string>

#include <media/stagefright/foundation/AMessage.h>

#include "Ffmpeg.h"

namespace android::codecplay {

/** How a codec is called: mime and the part of its component's name that says the format. */
struct FormatName {
    std::string mime;
    std::string shortName;
};

/** The name of a codec that FFmpeg knows; codecs that Android does not name get FFmpeg's name. */
FormatName formatName(AVCodecID codec);

/** Names of the vendor entries in which a component reports what Android has no key for. */
enum class VendorKeys { DEFAULT, MTK };

/** HDR kinds as components number them. */
enum HdrType { HDR_SDR = 0, HDR_HDR10 = 1, HDR_DOLBY_VISION = 2, HDR_HLG = 4, HDR_HDR10_PLUS = 5 };

/** What a decoder's output is like; a framework announces each change of it. */
struct StreamFormat {
    bool video = false;

    int32_t width = 0;
    int32_t height = 0;
    int32_t cropLeft = 0;
    int32_t cropTop = 0;
    /** Inclusive, as in a format message. */
    int32_t cropRight = 0;
    int32_t cropBottom = 0;
    /** The platform's numbers; 0 where the stream does not say. */
    int32_t colorRange = 0;
    int32_t colorStandard = 0;
    int32_t colorTransfer = 0;
    int32_t hdrType = HDR_SDR;
    int32_t bitDepth = 0;
    bool interlaced = false;

    int32_t sampleRate = 0;
    int32_t channels = 0;

    bool operator==(const StreamFormat& other) const;
    bool operator!=(const StreamFormat& other) const { return !(*this == other); }

    int32_t visibleWidth() const { return cropRight - cropLeft + 1; }
    int32_t visibleHeight() const { return cropBottom - cropTop + 1; }

    /** The output format message of MediaCodec. */
    sp<AMessage> toMessage(const std::string& mime, VendorKeys keys) const;
};

/**
 * Reads the format of a decoded frame.
 *
 * @param previous format of the frame before; scan type and HDR kind are properties of a sequence,
 * so frames that start none keep them
 */
StreamFormat readFormat(const AVFrame& frame, const AVCodecContext& decoder, bool dolbyVision,
                        const StreamFormat& previous);

}  // namespace android::codecplay
