// SPDX-License-Identifier: Apache-2.0
#include "StreamFormat.h"

#include <algorithm>
#include <tuple>

#include <media/stagefright/foundation/ColorUtils.h>

namespace android::codecplay {

namespace {

struct CodecRow {
    AVCodecID codec;
    const char* mime;
    const char* shortName;
};

constexpr CodecRow kCodecs[] = {
        {AV_CODEC_ID_H264, "video/avc", "avc"},
        {AV_CODEC_ID_HEVC, "video/hevc", "hevc"},
        {AV_CODEC_ID_VP8, "video/x-vnd.on2.vp8", "vp8"},
        {AV_CODEC_ID_VP9, "video/x-vnd.on2.vp9", "vp9"},
        {AV_CODEC_ID_AV1, "video/av01", "av1"},
        {AV_CODEC_ID_MPEG1VIDEO, "video/mpeg2", "mpeg2"},
        {AV_CODEC_ID_MPEG2VIDEO, "video/mpeg2", "mpeg2"},
        {AV_CODEC_ID_MPEG4, "video/mp4v-es", "mpeg4"},
        {AV_CODEC_ID_H263, "video/3gpp", "h263"},
        {AV_CODEC_ID_AAC, "audio/mp4a-latm", "aac"},
        {AV_CODEC_ID_MP3, "audio/mpeg", "mp3"},
        {AV_CODEC_ID_OPUS, "audio/opus", "opus"},
        {AV_CODEC_ID_VORBIS, "audio/vorbis", "vorbis"},
        {AV_CODEC_ID_FLAC, "audio/flac", "flac"},
        {AV_CODEC_ID_AC3, "audio/ac3", "ac3"},
        {AV_CODEC_ID_EAC3, "audio/eac3", "eac3"},
        {AV_CODEC_ID_AMR_NB, "audio/3gpp", "amrnb"},
        {AV_CODEC_ID_AMR_WB, "audio/amr-wb", "amrwb"},
        {AV_CODEC_ID_PCM_ALAW, "audio/g711-alaw", "g711.alaw"},
        {AV_CODEC_ID_PCM_MULAW, "audio/g711-mlaw", "g711.mlaw"},
};

/** One FFmpeg number and the platform's for the same thing. */
struct NumberRow {
    int ffmpeg;
    uint32_t platform;
};

constexpr NumberRow kPrimaries[] = {
        {AVCOL_PRI_BT709, ColorAspects::PrimariesBT709_5},
        {AVCOL_PRI_BT470M, ColorAspects::PrimariesBT470_6M},
        {AVCOL_PRI_BT470BG, ColorAspects::PrimariesBT601_6_625},
        {AVCOL_PRI_SMPTE170M, ColorAspects::PrimariesBT601_6_525},
        {AVCOL_PRI_SMPTE240M, ColorAspects::PrimariesBT601_6_525},
        {AVCOL_PRI_FILM, ColorAspects::PrimariesGenericFilm},
        {AVCOL_PRI_BT2020, ColorAspects::PrimariesBT2020},
        {AVCOL_PRI_UNSPECIFIED, ColorAspects::PrimariesUnspecified},
};

constexpr NumberRow kMatrices[] = {
        {AVCOL_SPC_BT709, ColorAspects::MatrixBT709_5},
        {AVCOL_SPC_FCC, ColorAspects::MatrixBT470_6M},
        {AVCOL_SPC_BT470BG, ColorAspects::MatrixBT601_6},
        {AVCOL_SPC_SMPTE170M, ColorAspects::MatrixBT601_6},
        {AVCOL_SPC_SMPTE240M, ColorAspects::MatrixSMPTE240M},
        {AVCOL_SPC_BT2020_NCL, ColorAspects::MatrixBT2020},
        {AVCOL_SPC_BT2020_CL, ColorAspects::MatrixBT2020Constant},
        {AVCOL_SPC_UNSPECIFIED, ColorAspects::MatrixUnspecified},
};

constexpr NumberRow kTransfers[] = {
        {AVCOL_TRC_LINEAR, ColorAspects::TransferLinear},
        {AVCOL_TRC_IEC61966_2_1, ColorAspects::TransferSRGB},
        {AVCOL_TRC_BT709, ColorAspects::TransferSMPTE170M},
        {AVCOL_TRC_SMPTE170M, ColorAspects::TransferSMPTE170M},
        {AVCOL_TRC_BT2020_10, ColorAspects::TransferSMPTE170M},
        {AVCOL_TRC_BT2020_12, ColorAspects::TransferSMPTE170M},
        {AVCOL_TRC_GAMMA22, ColorAspects::TransferGamma22},
        {AVCOL_TRC_GAMMA28, ColorAspects::TransferGamma28},
        {AVCOL_TRC_SMPTE2084, ColorAspects::TransferST2084},
        {AVCOL_TRC_ARIB_STD_B67, ColorAspects::TransferHLG},
        {AVCOL_TRC_SMPTE240M, ColorAspects::TransferSMPTE240M},
        {AVCOL_TRC_IEC61966_2_4, ColorAspects::TransferXvYCC},
        {AVCOL_TRC_BT1361_ECG, ColorAspects::TransferBT1361},
        {AVCOL_TRC_SMPTE428, ColorAspects::TransferST428},
        {AVCOL_TRC_UNSPECIFIED, ColorAspects::TransferUnspecified},
};

constexpr NumberRow kRanges[] = {
        {AVCOL_RANGE_JPEG, ColorAspects::RangeFull},
        {AVCOL_RANGE_MPEG, ColorAspects::RangeLimited},
        {AVCOL_RANGE_UNSPECIFIED, ColorAspects::RangeUnspecified},
};

template <typename T, size_t N>
T lookUp(const NumberRow (&rows)[N], int ffmpeg, T other) {
    for (const NumberRow& row : rows) {
        if (row.ffmpeg == ffmpeg) return static_cast<T>(row.platform);
    }
    return other;
}

void readColor(const AVFrame& frame, StreamFormat* format) {
    ColorAspects aspects{};
    aspects.mRange = lookUp(kRanges, frame.color_range, ColorAspects::RangeOther);
    aspects.mPrimaries = lookUp(kPrimaries, frame.color_primaries, ColorAspects::PrimariesOther);
    aspects.mTransfer = lookUp(kTransfers, frame.color_trc, ColorAspects::TransferOther);
    aspects.mMatrixCoeffs = lookUp(kMatrices, frame.colorspace, ColorAspects::MatrixOther);
    ColorUtils::convertCodecColorAspectsToPlatformAspects(
            aspects, &format->colorRange, &format->colorStandard, &format->colorTransfer);
}

int32_t readHdrType(const AVFrame& frame, bool dolbyVision) {
    if (dolbyVision) return HDR_DOLBY_VISION;
    if (av_frame_get_side_data(&frame, AV_FRAME_DATA_DYNAMIC_HDR_PLUS)) return HDR_HDR10_PLUS;
    if (frame.color_trc == AVCOL_TRC_SMPTE2084) return HDR_HDR10;
    if (frame.color_trc == AVCOL_TRC_ARIB_STD_B67) return HDR_HLG;
    return HDR_SDR;
}

}  // namespace

FormatName formatName(AVCodecID codec) {
    for (const CodecRow& row : kCodecs) {
        if (row.codec == codec) return {row.mime, row.shortName};
    }
    const std::string name = avcodec_get_name(codec);
    if (avcodec_get_type(codec) == AVMEDIA_TYPE_VIDEO) return {"video/" + name, name};
    // Only PCM of some form has samples of exactly so many bits.
    if (av_get_exact_bits_per_sample(codec) > 4) return {"audio/raw", "raw"};
    return {"audio/" + name, name};
}

bool StreamFormat::operator==(const StreamFormat& other) const {
    const auto all = [](const StreamFormat& f) {
        return std::tie(f.video, f.width, f.height, f.cropLeft, f.cropTop, f.cropRight,
                        f.cropBottom, f.colorRange, f.colorStandard, f.colorTransfer, f.hdrType,
                        f.bitDepth, f.interlaced, f.sampleRate, f.channels);
    };
    return all(*this) == all(other);
}

sp<AMessage> StreamFormat::toMessage(const std::string& mime, VendorKeys keys) const {
    sp<AMessage> message = new AMessage;
    message->setString("mime", mime.c_str());
    if (!video) {
        message->setInt32("sample-rate", sampleRate);
        message->setInt32("channel-count", channels);
        return message;
    }
    message->setInt32("width", width);
    message->setInt32("height", height);
    message->setRect("crop", cropLeft, cropTop, cropRight, cropBottom);
    if (colorRange) message->setInt32("color-range", colorRange);
    if (colorStandard) message->setInt32("color-standard", colorStandard);
    if (colorTransfer) message->setInt32("color-transfer", colorTransfer);
    const bool mtk = keys == VendorKeys::MTK;
    message->setInt32(mtk ? "vendor.mtk-codec2.hdr-type" : "vendor.vdecomx.hdr-type", hdrType);
    message->setInt32(mtk ? "vendor.mtk-codec2.color-depth" : "vendor.vdecomx.bitdepth", bitDepth);
    message->setInt32(mtk ? "vendor.mtk-codec2.scan-type" : "vendor.vdecomx.scan-type",
                      interlaced ? 1 : 0);
    return message;
}

StreamFormat readFormat(const AVFrame& frame, const AVCodecContext& decoder, bool dolbyVision,
                        const StreamFormat& previous) {
    StreamFormat format;
    format.video = decoder.codec_type == AVMEDIA_TYPE_VIDEO;
    if (!format.video) {
        format.sampleRate = frame.sample_rate;
        format.channels = frame.ch_layout.nb_channels;
        return format;
    }
    // The decoder leaves the cropping to us. Codecs without cropping of their own pad pictures at
    // the right and the bottom, which only the decoder knows, and it may be at the next size.
    const bool padded = frame.width == decoder.width && frame.height == decoder.height;
    format.width = padded ? std::max(frame.width, decoder.coded_width) : frame.width;
    format.height = padded ? std::max(frame.height, decoder.coded_height) : frame.height;
    format.cropLeft = static_cast<int32_t>(frame.crop_left);
    format.cropTop = static_cast<int32_t>(frame.crop_top);
    format.cropRight = frame.width - static_cast<int32_t>(frame.crop_right) - 1;
    format.cropBottom = frame.height - static_cast<int32_t>(frame.crop_bottom) - 1;
    readColor(frame, &format);
    const AVPixFmtDescriptor* pixels =
            av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    format.bitDepth = pixels ? pixels->comp[0].depth : 0;

    const bool newSequence = frame.key_frame || !previous.video || format.width != previous.width ||
                             format.height != previous.height;
    format.interlaced = newSequence ? frame.interlaced_frame != 0 : previous.interlaced;
    format.hdrType = newSequence ? readHdrType(frame, dolbyVision) : previous.hdrType;
    return format;
}

}  // namespace android::codecplay
