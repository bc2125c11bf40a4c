// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <memory>
#include <string>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
#include <libavutil/samplefmt.h>
}

namespace android::codecplay {

/** Frees what FFmpeg allocated. */
struct FfmpegDeleter {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
    void operator()(AVCodecParameters* parameters) const { avcodec_parameters_free(&parameters); }
};

using PacketPtr = std::unique_ptr<AVPacket, FfmpegDeleter>;
using FramePtr = std::unique_ptr<AVFrame, FfmpegDeleter>;
using CodecContextPtr = std::unique_ptr<AVCodecContext, FfmpegDeleter>;
using FormatContextPtr = std::unique_ptr<AVFormatContext, FfmpegDeleter>;
using CodecParametersPtr = std::unique_ptr<AVCodecParameters, FfmpegDeleter>;

/** FFmpeg's own text for one of its error codes. */
std::string ffmpegError(int code);

/**
 * Sends FFmpeg's error messages to standard error, each with the file's name before it, at most a
 * handful a file; call it before each file. A summary of the rest is reportFfmpegMessages()'s.
 */
void collectFfmpegMessages(const std::string& file, bool quiet);

/** Says how many messages of the present file were held back. */
void reportFfmpegMessages();

}  // namespace android::codecplay
