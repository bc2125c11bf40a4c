// SPDX-License-Identifier: Apache-2.0
#include "Demuxer.h"

#include <string.h>

#include <algorithm>
#include <utility>

namespace android::codecplay {

namespace {

constexpr AVRational kMicroseconds = {1, 1000000};

/** No picture comes later after its place in decode order than this many frames. */
constexpr int64_t kLongestReordering = 16;

/** Sound is decoded from so much before the place where it is to be heard. */
constexpr int64_t kAudioLeadUs = 300'000;

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

/** Sound or pictures that last, other than a cover. */
bool isMedia(const AVStream& stream) {
    const AVMediaType type = stream.codecpar->codec_type;
    return (type == AVMEDIA_TYPE_VIDEO || type == AVMEDIA_TYPE_AUDIO) &&
           !(stream.disposition & AV_DISPOSITION_ATTACHED_PIC);
}

/** Whether packets of a transport stream's stream say that they are scrambled. */
bool isScrambled(const std::vector<uint8_t>& bytes, int id) {
    constexpr size_t kPacketSize = 188;
    constexpr uint8_t kSyncByte = 0x47;
    for (size_t at = 0; at + kPacketSize <= bytes.size(); at += kPacketSize) {
        const uint8_t* packet = &bytes[at];
        if (packet[0] != kSyncByte) return false;
        if (((packet[1] & 0x1F) << 8 | packet[2]) == id && (packet[3] & 0xC0)) return true;
    }
    return false;
}

/** Why the stream cannot be played; empty if it can. */
std::string hindrance(const AVStream& stream, bool encrypted) {
    const AVCodecParameters& parameters = *stream.codecpar;
    const bool video = parameters.codec_type == AVMEDIA_TYPE_VIDEO;
    if (encrypted) return "is encrypted";
    if (parameters.codec_id == AV_CODEC_ID_NONE) {
        char tag[AV_FOURCC_MAX_STRING_SIZE];
        return std::string("unknown codec ") + av_fourcc_make_string(tag, parameters.codec_tag);
    }
    const bool known =
            video ? parameters.width > 0 && parameters.height > 0 : parameters.sample_rate > 0;
    if (known) return {};
    return std::string("no frame of ") + avcodec_get_name(parameters.codec_id) +
           " in it tells its format";
}

}  // namespace

bool TimestampMaker::stamp(const AVPacket& packet, Packet* out) {
    const bool useDts = mInDecodeOrder || packet.pts == AV_NOPTS_VALUE;
    const int64_t stamp = useDts ? packet.dts : packet.pts;
    if (stamp == AV_NOPTS_VALUE && mNextUs == INT64_MIN) return false;
    // Damaged files hold any number; the library computes with sums and nanoseconds.
    constexpr int64_t kLimitUs = INT64_C(1) << 50;
    out->timeUs = stamp == AV_NOPTS_VALUE
                          ? mNextUs
                          : std::clamp(toUs(stamp, mTimeBase), -kLimitUs, kLimitUs) - mOffsetUs;
    out->timeInDecodeOrder = mInDecodeOrder;
    mNextUs = out->timeUs +
              (packet.duration > 0 ? toUs(packet.duration, mTimeBase) : mDefaultDurationUs);
    return true;
}

bool Demuxer::open(const std::string& file, std::string* error) {
    mFile = file;
    if (!mInput.open(file, error) || !openFormat(error)) return false;
    mPositions.assign(mFormat->nb_streams, kNone);
    const std::vector<FirstPackets> first = lookAtFirstPackets();
    // The packets may have brought more streams, which are not played.
    for (size_t i = 0; i < first.size(); ++i) {
        const AVStream& stream = *mFormat->streams[i];
        if (!isMedia(stream)) continue;
        const std::string reason = hindrance(stream, first[i].encrypted);
        if (reason.empty()) {
            addStream(stream, first[i].withoutTimes);
        } else {
            mUnplayable.push_back({stream.index, reason});
        }
    }
    if (mStreams.empty()) {
        *error = mUnplayable.empty() ? "holds no audio or video stream"
                                     : "holds no stream that can be played";
        return false;
    }
    const auto video = std::find_if(mStreams.begin(), mStreams.end(),
                                    [](const StreamInfo& stream) { return stream.video; });
    discardOthers();
    mPrimary = video == mStreams.end() ? 0 : static_cast<size_t>(video - mStreams.begin());
    return true;
}

/** Opens what the input holds from its beginning. */
bool Demuxer::openFormat(std::string* error) {
    AVDictionary* options = nullptr;
    av_dict_set(&options, "protocol_whitelist", "file,pipe", 0);
    mFormat.reset();
    AVFormatContext* format = avformat_alloc_context();
    format->pb = mInput.begin();
    format->interrupt_callback = {
            [](void* stop) { return static_cast<const std::atomic<bool>*>(stop)->load() ? 1 : 0; },
            const_cast<std::atomic<bool>*>(&mStop)};
    int result = avformat_open_input(&format, mFile.c_str(), nullptr, &options);
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
    if (mayJump() && format->start_time != AV_NOPTS_VALUE) mOffsetUs = format->start_time;
    return true;
}

/** Once for the whole file: a stream that mixed kinds of times would run back and forth. */
std::vector<Demuxer::FirstPackets> Demuxer::lookAtFirstPackets() {
    constexpr size_t kPackets = 200;
    // A pipe may be live.
    constexpr size_t kLivePackets = 20;
    const bool untimed = (mFormat->iformat->flags & AVFMT_NOTIMESTAMPS) != 0;
    std::vector<FirstPackets> found(mFormat->nb_streams, {untimed, false});
    while (mUnstamped.size() < (seekable() ? kPackets : kLivePackets)) {
        PacketPtr data(av_packet_alloc());
        if (av_read_frame(mFormat.get(), data.get()) < 0) break;
        const size_t stream = static_cast<size_t>(data->stream_index);
        if (stream < found.size()) {
            if (data->pts == AV_NOPTS_VALUE) found[stream].withoutTimes = true;
            if (av_packet_get_side_data(data.get(), AV_PKT_DATA_ENCRYPTION_INFO, nullptr)) {
                found[stream].encrypted = true;
            }
        }
        mUnstamped.push_back(std::move(data));
    }
    if (strcmp(mFormat->iformat->name, "mpegts") == 0) {
        const std::vector<uint8_t> bytes = mInput.firstBytes(1 << 20);
        for (size_t i = 0; i < found.size(); ++i) {
            if (isScrambled(bytes, mFormat->streams[i]->id)) found[i].encrypted = true;
        }
    }
    return found;
}

void Demuxer::addStream(const AVStream& stream, bool withoutTimes) {
    mPositions[stream.index] = mStreams.size();
    CodecParametersPtr parameters(avcodec_parameters_alloc());
    avcodec_parameters_copy(parameters.get(), stream.codecpar);
    const bool video = parameters->codec_type == AVMEDIA_TYPE_VIDEO;
    mStreams.push_back(
            {stream.index, video, std::move(parameters), av_q2d(stream.avg_frame_rate),
             av_stream_get_side_data(&stream, AV_PKT_DATA_DOVI_CONF, nullptr) != nullptr});
    mTimestamps.emplace_back(stream.time_base, defaultDurationUs(stream), mOffsetUs, withoutTimes);
    mEndsUs.push_back(INT64_MIN);
    mAwaitSync.push_back(false);
}

void Demuxer::discardOthers() {
    for (unsigned i = 0; i < mFormat->nb_streams; ++i) {
        if (i < mPositions.size() && mPositions[i] != kNone) continue;
        mFormat->streams[i]->discard = AVDISCARD_ALL;
    }
}

int64_t Demuxer::endUs(size_t stream) const {
    return std::max<int64_t>(mEndsUs[stream], 0);
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

int Demuxer::readFile(PacketPtr* data) {
    if (mUnstamped.empty()) {
        data->reset(av_packet_alloc());
        return av_read_frame(mFormat.get(), data->get());
    }
    *data = std::move(mUnstamped.front());
    mUnstamped.pop_front();
    return 0;
}

Demuxer::Result Demuxer::readNext(Packet* packet, std::string* error) {
    for (;;) {
        PacketPtr data;
        const int result = readFile(&data);
        if (result == AVERROR_EOF || (result < 0 && mStop)) return Result::END;
        if (result < 0) {
            *error = ffmpegError(result);
            return Result::ERROR;
        }
        const size_t index = static_cast<size_t>(data->stream_index);
        // Streams that appear after the beginning are not played.
        if (index >= mPositions.size() || mPositions[index] == kNone) continue;
        const size_t stream = mPositions[index];
        if (!mTimestamps[stream].stamp(*data, packet)) continue;
        packet->stream = stream;
        packet->data = std::move(data);
        if (mAwaitSync[stream] && !packet->sync()) continue;
        mAwaitSync[stream] = false;
        const AVStream& info = *mFormat->streams[index];
        const int64_t durationUs = packet->data->duration > 0
                                           ? toUs(packet->data->duration, info.time_base)
                                           : mTimestamps[stream].defaultDurationUs();
        mEndsUs[stream] = std::max(mEndsUs[stream], packet->timeUs + durationUs);
        return Result::PACKET;
    }
}

bool Demuxer::seek(int64_t timeUs) {
    forgetPlace();
    if (!seekable()) return false;
    if (timeUs == kBeginning) return startAgain();
    // Files without an index find a place by its time, which is not always a sync frame, and files
    // without times none at all: these are read from the beginning.
    static constexpr int64_t kStepsBackUs[] = {0, 1000000, 2000000, 5000000, 10000000, 30000000};
    const bool timed = !(mFormat->iformat->flags & AVFMT_NOTIMESTAMPS);
    for (const int64_t backUs : kStepsBackUs) {
        if (!timed || timeUs < backUs || !jumpTo(timeUs - backUs)) break;
        if (canStartBefore(timeUs)) return true;
    }
    if (!startAgain()) return false;
    skipTo(timeUs);
    return true;
}

void Demuxer::forgetPlace() {
    mUnstamped.clear();
    mReadAhead.clear();
    for (size_t i = 0; i < mStreams.size(); ++i) {
        mAwaitSync[i] = mStreams[i].video;
        if (seekable()) mTimestamps[i].interrupt();
    }
}

bool Demuxer::jumpTo(int64_t fromUs) {
    forgetPlace();
    return av_seek_frame(mFormat.get(), -1, fromUs + mOffsetUs, AVSEEK_FLAG_BACKWARD) >= 0;
}

/**
 * Whether decoding from a sync frame on gives all frames from timeUs on. In decode times the sync
 * frame's own is a reordering earlier than the picture's.
 */
bool Demuxer::startsBefore(const Packet& sync, int64_t timeUs) const {
    const TimestampMaker& timestamps = mTimestamps[sync.stream];
    const int64_t leadUs = !mStreams[sync.stream].video ? kAudioLeadUs
                           : timestamps.inDecodeOrder()
                                   ? kLongestReordering * timestamps.defaultDurationUs()
                                   : 0;
    return sync.timeUs <= timeUs - leadUs;
}

/** Reads up to where pictures can start and tells whether that is early enough. */
bool Demuxer::canStartBefore(int64_t timeUs) {
    // Pictures that precede a sync frame but are decoded after it are lost with what they refer to.
    // Without times of their own the ones behind take theirs, up to the next sync frame.
    size_t needed = mStreams[mPrimary].video && mTimestamps[mPrimary].inDecodeOrder() ? 2 : 1;
    std::string error;
    Packet packet;
    while (readNext(&packet, &error) == Result::PACKET) {
        const bool counts = packet.stream == mPrimary && packet.sync() && --needed == 0;
        const bool early = counts && startsBefore(packet, timeUs);
        mReadAhead.push_back(std::move(packet));
        if (counts) return early;
    }
    return false;
}

/** As if the file had just been opened. */
bool Demuxer::startAgain() {
    std::string error;
    forgetPlace();
    if (!openFormat(&error) || mFormat->nb_streams < mPositions.size()) return false;
    discardOthers();
    for (size_t i = 0; i < mStreams.size(); ++i) {
        mAwaitSync[i] = false;
        mTimestamps[i].restart();
    }
    return true;
}

/** Reads from the beginning on up to the last place from which decoding gives all from timeUs on.
 */
void Demuxer::skipTo(int64_t timeUs) {
    constexpr int64_t kBeyondUs = 2'000'000;
    const bool video = mStreams[mPrimary].video;
    const size_t kept = video && mTimestamps[mPrimary].inDecodeOrder() ? 2 : 1;
    std::string error;
    Packet packet;
    while (readNext(&packet, &error) == Result::PACKET) {
        const bool primary = packet.stream == mPrimary;
        const bool start = primary && packet.sync() && startsBefore(packet, timeUs);
        const bool enough = primary && packet.timeUs > timeUs + (video ? kBeyondUs : 0);
        mReadAhead.push_back(std::move(packet));
        if (enough) break;
        if (!start) continue;
        auto first = mReadAhead.end();
        for (size_t seen = 0; first != mReadAhead.begin() && seen < kept;) {
            --first;
            if (first->stream == mPrimary && first->sync()) ++seen;
        }
        mReadAhead.erase(mReadAhead.begin(), first);
    }
    for (size_t i = 0; i < mStreams.size(); ++i) mAwaitSync[i] = mStreams[i].video;
    const auto unusable = [this](const Packet& each) {
        if (each.sync()) mAwaitSync[each.stream] = false;
        return mAwaitSync[each.stream];
    };
    mReadAhead.erase(std::remove_if(mReadAhead.begin(), mReadAhead.end(), unusable),
                     mReadAhead.end());
}

int64_t Demuxer::missingUs() const {
    // Only a duration that the container states says how long the file was meant to be.
    if (mFormat->duration_estimation_method != AVFMT_DURATION_FROM_STREAM) return 0;
    constexpr int64_t kToleranceUs = 1000000;
    int64_t missing = 0;
    int64_t end = INT64_MIN;
    for (size_t i = 0; i < mStreams.size(); ++i) {
        const AVStream& stream = *mFormat->streams[mStreams[i].index];
        end = std::max(end, mEndsUs[i]);
        if (stream.duration == AV_NOPTS_VALUE || mEndsUs[i] == INT64_MIN) continue;
        const int64_t start = stream.start_time == AV_NOPTS_VALUE ? 0 : stream.start_time;
        const int64_t declared = toUs(start + stream.duration, stream.time_base) - mOffsetUs;
        missing = std::max(missing, declared - mEndsUs[i]);
    }
    const bool allPlayed = mStreams.size() == mFormat->nb_streams;
    if (allPlayed && end != INT64_MIN) missing = std::max(missing, durationUs() - end);
    return missing > kToleranceUs ? missing : 0;
}

}  // namespace android::codecplay
