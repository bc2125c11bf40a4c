// SPDX-License-Identifier: Apache-2.0
#include "Demuxer.h"

#include <string.h>

#include <algorithm>
#include <utility>

namespace android::codecplay {

namespace {

constexpr AVRational kMicroseconds = {1, 1000000};

int64_t toUs(int64_t value, AVRational timeBase) {
    return av_rescale_q(value, timeBase, kMicroseconds);
}

/** How long a frame of the stream lasts as far as its parameters tell. */
int64_t defaultDurationUs(const AVStream& stream) {
    const AVCodecParameters& parameters = *stream.codecpar;
    if (parameters.codec_type == AVMEDIA_TYPE_AUDIO) {
        const int samples = parameters.frame_size > 0 ? parameters.frame_size : 1024;
        return av_rescale(samples, 1000000, std::max(parameters.sample_rate, 1));
    }
    const AVRational rate = stream.avg_frame_rate.num > 0 && stream.avg_frame_rate.den > 0
                                    ? stream.avg_frame_rate
                                    : AVRational{25, 1};
    return av_rescale(1000000, rate.den, rate.num);
}

/** Formats that FFmpeg recognises by file name alone and that hold no media. */
bool isNoMedia(const AVInputFormat& format) {
    return strcmp(format.name, "tty") == 0;
}

bool isPlayable(const AVStream& stream) {
    const AVCodecParameters& parameters = *stream.codecpar;
    if (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) return false;
    if (parameters.codec_type == AVMEDIA_TYPE_VIDEO) {
        return parameters.width > 0 && parameters.height > 0;
    }
    return parameters.codec_type == AVMEDIA_TYPE_AUDIO && parameters.sample_rate > 0;
}

}  // namespace

void TimestampMaker::stamp(const AVPacket& packet, Packet* out) {
    // Sticky: a stream that mixed presentation and decode times would run back and forth.
    if (packet.pts == AV_NOPTS_VALUE) mInDecodeOrder = true;
    const int64_t stamp = mInDecodeOrder ? packet.dts : packet.pts;
    // Damaged files hold any number; the library computes with sums and nanoseconds.
    constexpr int64_t kLimitUs = INT64_C(1) << 50;
    out->timeUs = stamp == AV_NOPTS_VALUE
                          ? mNextUs
                          : std::clamp(toUs(stamp, mTimeBase), -kLimitUs, kLimitUs) - mOffsetUs;
    out->timeInDecodeOrder = mInDecodeOrder;
    mNextUs = out->timeUs +
              (packet.duration > 0 ? toUs(packet.duration, mTimeBase) : mDefaultDurationUs);
    mEndUs = std::max(mEndUs, mNextUs);
}

bool Demuxer::open(const std::string& file, std::string* error) {
    AVDictionary* options = nullptr;
    av_dict_set(&options, "protocol_whitelist", "file,pipe", 0);
    AVFormatContext* format = nullptr;
    const char* url = file == "-" ? "pipe:0" : file.c_str();
    int result = avformat_open_input(&format, url, nullptr, &options);
    av_dict_free(&options);
    mFormat.reset(format);
    if (result >= 0 && isNoMedia(*format->iformat)) result = AVERROR_INVALIDDATA;
    if (result >= 0) result = avformat_find_stream_info(format, nullptr);
    if (result < 0) {
        *error = result == AVERROR_INVALIDDATA ? "is no media file, or its beginning is damaged"
                                               : ffmpegError(result);
        return false;
    }
    // Transport streams start anywhere on their clock; players count from their beginning.
    if ((format->iformat->flags & AVFMT_TS_DISCONT) && format->start_time != AV_NOPTS_VALUE) {
        mOffsetUs = format->start_time;
    }
    mPositions.assign(format->nb_streams, -1);
    for (unsigned i = 0; i < format->nb_streams; ++i) {
        if (isPlayable(*format->streams[i])) {
            addStream(*format->streams[i]);
        } else {
            format->streams[i]->discard = AVDISCARD_ALL;
        }
    }
    if (mStreams.empty()) *error = "holds no audio or video stream";
    return !mStreams.empty();
}

void Demuxer::addStream(const AVStream& stream) {
    mPositions[stream.index] = static_cast<int>(mStreams.size());
    CodecParametersPtr parameters(avcodec_parameters_alloc());
    avcodec_parameters_copy(parameters.get(), stream.codecpar);
    const bool video = parameters->codec_type == AVMEDIA_TYPE_VIDEO;
    mStreams.push_back(
            {stream.index, video, std::move(parameters), av_q2d(stream.avg_frame_rate),
             av_stream_get_side_data(&stream, AV_PKT_DATA_DOVI_CONF, nullptr) != nullptr});
    mTimestamps.emplace_back(stream.time_base, defaultDurationUs(stream), mOffsetUs,
                             (mFormat->iformat->flags & AVFMT_NOTIMESTAMPS) != 0);
    mAwaitSync.push_back(false);
}

int64_t Demuxer::endUs(size_t stream) const {
    return std::max<int64_t>(mTimestamps[stream].endUs(), 0);
}

int64_t Demuxer::durationUs() const {
    return mFormat->duration == AV_NOPTS_VALUE ? 0 : mFormat->duration;
}

Demuxer::Result Demuxer::read(Packet* packet, std::string* error) {
    if (mReadAhead.empty()) return readNext(packet, error);
    *packet = std::move(mReadAhead.front());
    mReadAhead.pop_front();
    return Result::PACKET;
}

Demuxer::Result Demuxer::readNext(Packet* packet, std::string* error) {
    for (;;) {
        PacketPtr data(av_packet_alloc());
        const int result = av_read_frame(mFormat.get(), data.get());
        if (result == AVERROR_EOF) return Result::END;
        if (result < 0) {
            *error = ffmpegError(result);
            return Result::ERROR;
        }
        const size_t index = static_cast<size_t>(data->stream_index);
        // Streams that appear after the beginning are not played.
        if (index >= mPositions.size() || mPositions[index] < 0) continue;
        const size_t position = static_cast<size_t>(mPositions[index]);
        if (mAwaitSync[position] && !(data->flags & AV_PKT_FLAG_KEY)) continue;
        mAwaitSync[position] = false;
        if (data->flags & AV_PKT_FLAG_CORRUPT) ++mCorruptPackets;

        packet->stream = position;
        mTimestamps[position].stamp(*data, packet);
        packet->data = std::move(data);
        return Result::PACKET;
    }
}

bool Demuxer::seek(int64_t timeUs) {
    // Files without an index find a place by its time, which is not always a sync frame.
    static constexpr int64_t kStepsBackUs[] = {0, 1000000, 2000000, 5000000, 10000000, 30000000};
    for (const int64_t backUs : kStepsBackUs) {
        for (size_t i = 0; i < mStreams.size(); ++i) mAwaitSync[i] = mStreams[i].video;
        mReadAhead.clear();
        const int64_t fromUs = std::max<int64_t>(timeUs - backUs, 0);
        if (av_seek_frame(mFormat.get(), -1, fromUs + mOffsetUs, AVSEEK_FLAG_BACKWARD) < 0) {
            return false;
        }
        if (startsAtOrBefore(timeUs) || fromUs == 0) break;
    }
    return true;
}

/** Reads up to the first picture and tells whether it comes early enough. */
bool Demuxer::startsAtOrBefore(int64_t timeUs) {
    const bool anyVideo = std::any_of(mStreams.begin(), mStreams.end(),
                                      [](const StreamInfo& stream) { return stream.video; });
    std::string error;
    Packet packet;
    while (anyVideo && readNext(&packet, &error) == Result::PACKET) {
        const bool video = mStreams[packet.stream].video;
        const int64_t foundUs = packet.timeUs;
        mReadAhead.push_back(std::move(packet));
        if (video) return foundUs <= timeUs;
    }
    return true;
}

int64_t Demuxer::missingUs() const {
    // Only a duration that the container states says how long the file was meant to be.
    if (mFormat->duration_estimation_method != AVFMT_DURATION_FROM_STREAM) return 0;
    constexpr int64_t kToleranceUs = 1000000;
    int64_t missing = 0;
    int64_t end = INT64_MIN;
    for (size_t i = 0; i < mStreams.size(); ++i) {
        const AVStream& stream = *mFormat->streams[mStreams[i].index];
        end = std::max(end, mTimestamps[i].endUs());
        if (stream.duration == AV_NOPTS_VALUE || mTimestamps[i].endUs() == INT64_MIN) continue;
        const int64_t start = stream.start_time == AV_NOPTS_VALUE ? 0 : stream.start_time;
        const int64_t declared = toUs(start + stream.duration, stream.time_base) - mOffsetUs;
        missing = std::max(missing, declared - mTimestamps[i].endUs());
    }
    const bool allPlayed = mStreams.size() == mFormat->nb_streams;
    if (allPlayed && end != INT64_MIN) missing = std::max(missing, durationUs() - end);
    return missing > kToleranceUs ? missing : 0;
}

}  // namespace android::codecplay
