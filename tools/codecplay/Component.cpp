// SPDX-License-Identifier: Apache-2.0
#include "Component.h"

#include <inttypes.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <utility>

#include <cutils/properties.h>
#include <mediaCodecLogger/ZephraMediaAnalytic.h>

#include "MediaClock.h"
#include "StoryRecorder.h"

namespace android::codecplay {

namespace {

/**
 * No decoder holds a picture back for longer than this many packets: 16 for reordering and as many
 * again for its threads. What has not come out by then gave no picture.
 */
constexpr int64_t kLongestDelay = 40;

/** Whether the frame analytics dump output (bits 0x200 of video and 0x200000 of audio). */
bool outputIsDumped() {
    char text[PROPERTY_VALUE_MAX];
    property_get("mediaanalytic.debug", text, "0");
    return (strtol(text, nullptr, strncmp(text, "0x", 2) == 0 ? 16 : 10) & 0x200200) != 0;
}

size_t frameSize(const AVFrame& frame, bool video) {
    const int size = video ? av_image_get_buffer_size(static_cast<AVPixelFormat>(frame.format),
                                                      frame.width, frame.height, 1)
                           : av_samples_get_buffer_size(
                                     nullptr, frame.ch_layout.nb_channels, frame.nb_samples,
                                     static_cast<AVSampleFormat>(frame.format), 1);
    return static_cast<size_t>(std::max(size, 0));
}

/** Pictures plane by plane, samples interleaved. */
std::vector<uint8_t> copyFrame(const AVFrame& frame, bool video, size_t size) {
    std::vector<uint8_t> bytes(size);
    const auto sampleFormat = static_cast<AVSampleFormat>(frame.format);
    if (video) {
        av_image_copy_to_buffer(bytes.data(), static_cast<int>(size), frame.data, frame.linesize,
                                static_cast<AVPixelFormat>(frame.format), frame.width, frame.height,
                                1);
    } else if (!av_sample_fmt_is_planar(sampleFormat)) {
        memcpy(bytes.data(), frame.extended_data[0], size);
    } else {
        const int channels = frame.ch_layout.nb_channels;
        const size_t width = static_cast<size_t>(av_get_bytes_per_sample(sampleFormat));
        uint8_t* to = bytes.data();
        for (int sample = 0; sample < frame.nb_samples; ++sample) {
            for (int channel = 0; channel < channels; ++channel, to += width) {
                memcpy(to, frame.extended_data[channel] + sample * width, width);
            }
        }
    }
    return bytes;
}

}  // namespace

Component::Component(const Options& options, const Faults& faults, sp<HostCodec> codec, long omxKey,
                     DisplayQueue* output, Listener listener)
    : mOptions(options),
      mFaults(faults),
      mCodec(std::move(codec)),
      mOmxKey(omxKey),
      mOutput(output),
      mListener(std::move(listener)) {}

Component::~Component() {
    stop();
}

bool Component::open(const StreamInfo& stream, std::string* error) {
    const AVCodec* codec = avcodec_find_decoder(stream.parameters->codec_id);
    if (!codec) {
        *error = std::string("no decoder for ") + avcodec_get_name(stream.parameters->codec_id);
        return false;
    }
    mDecoder.reset(avcodec_alloc_context3(codec));
    avcodec_parameters_to_context(mDecoder.get(), stream.parameters.get());
    mDecoder->pkt_timebase = {1, 1000000};
    mDecoder->apply_cropping = 0;
    // Threads delay the pictures, so only what needs them to keep pace gets them.
    constexpr int kOneThreadSuffices = 1920 * 1088;
    mDecoder->thread_count =
            mDecoder->width * static_cast<int64_t>(mDecoder->height) > kOneThreadSuffices ? 0 : 1;
    const int result = avcodec_open2(mDecoder.get(), codec, nullptr);
    if (result < 0) {
        *error = std::string("cannot open the decoder ") + codec->name + ": " + ffmpegError(result);
        return false;
    }
    mVideo = stream.video;
    mFramerate = stream.framerate;
    mWithoutDelay = !(codec->capabilities & (AV_CODEC_CAP_DELAY | AV_CODEC_CAP_OTHER_THREADS)) &&
                    !(mDecoder->active_thread_type & FF_THREAD_FRAME);
    const AVCodecDescriptor* descriptor = avcodec_descriptor_get(codec->id);
    mInOrder = descriptor && !(descriptor->props & AV_CODEC_PROP_REORDER);
    mDolbyVision = stream.dolbyVision;
    return true;
}

void Component::start() {
    mThread = std::thread([this] { run(); });
}

void Component::queue(Packet packet) {
    Mutex::Autolock lock(mLock);
    const int64_t timeUs = packet.timeUs;
    mPending.push_back({++mSequence, timeUs, packet.sync()});
    mInput.push_back({std::move(packet), false, timeUs, mSequence});
    mChanged.broadcast();
}

void Component::queueEnd(int64_t timeUs) {
    Mutex::Autolock lock(mLock);
    mInput.push_back({{}, true, timeUs});
    mChanged.broadcast();
}

size_t Component::flush() {
    size_t inside;
    {
        Mutex::Autolock lock(mLock);
        if (!mThread.joinable()) return 0;
        mFlushing = true;
        mChanged.broadcast();
    }
    // It may be waiting for a buffer that only the flush makes free.
    mOutput->abort();
    {
        Mutex::Autolock lock(mLock);
        while (mFlushing) mChanged.wait(mLock);
        inside = mPending.size();
        mPending.clear();
    }
    mOutput->resume();
    return inside;
}

void Component::stop() {
    {
        Mutex::Autolock lock(mLock);
        mStopping = true;
        mChanged.broadcast();
    }
    mOutput->abort();
    if (mThread.joinable()) mThread.join();
    mOutput->resume();
}

void Component::acknowledgeFlush() {
    avcodec_flush_buffers(mDecoder.get());
    Mutex::Autolock lock(mLock);
    mInput.clear();
    mFlushing = false;
    mChanged.broadcast();
}

void Component::run() {
    for (;;) {
        Input input;
        bool flushing = false;
        {
            Mutex::Autolock lock(mLock);
            while (!mStopping && !mFlushing && mInput.empty()) mChanged.wait(mLock);
            if (mStopping) return;
            flushing = mFlushing;
            if (!flushing) {
                input = std::move(mInput.front());
                mInput.pop_front();
            }
        }
        if (flushing) {
            acknowledgeFlush();
        } else if (input.end) {
            finish(input.timeUs);
        } else {
            decode(input);
        }
    }
}

void Component::decode(const Input& input) {
    AVPacket* packet = input.packet.data.get();
    // The decoder carries the time that the frame was queued with through its reordering.
    packet->pts = input.timeUs;
    packet->dts = AV_NOPTS_VALUE;
    // So too this, which unlike the time is there but once.
    packet->pos = input.sequence;
    mTimesInDecodeOrder = input.packet.timeInDecodeOrder;
    int result;
    while ((result = avcodec_send_packet(mDecoder.get(), packet)) == AVERROR(EAGAIN)) {
        if (!drainFrames()) return;
    }
    if (result < 0) ++mDecodeErrors;
    if (!drainFrames()) return;
    giveUpBefore(mWithoutDelay ? input.sequence + 1 : input.sequence - kLongestDelay);
    mListener({ComponentEvent::INPUT_DONE});
}

void Component::finish(int64_t timeUs) {
    avcodec_send_packet(mDecoder.get(), nullptr);
    if (!drainFrames()) return;
    giveUpBefore(INT64_MAX);
    reportOutput(timeUs, BUFFER_FLAG_END_OF_STREAM, 0);
    mListener({ComponentEvent::END, timeUs});
}

bool Component::drainFrames() {
    // A decoder that can do nothing with its input reports it once a packet, and holds few of them.
    constexpr int kErrorsInARow = 100;
    FramePtr frame(av_frame_alloc());
    for (int errors = 0; errors < kErrorsInARow;) {
        const int result = avcodec_receive_frame(mDecoder.get(), frame.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) return true;
        if (result < 0) {
            ++mDecodeErrors;
            ++errors;
            continue;
        }
        if (frame->decode_error_flags || (frame->flags & AV_FRAME_FLAG_CORRUPT)) ++mDecodeErrors;
        if (!emit(*frame)) return false;
    }
    return true;
}

/**
 * Takes a packet out and returns its time. Times that were made up in decode order fall to the
 * packets in the order in which they leave.
 */
int64_t Component::takeOut_l(size_t index) {
    if (mTimesInDecodeOrder) {
        for (size_t i = 0; i < index; ++i) std::swap(mPending[i].timeUs, mPending[i + 1].timeUs);
    }
    const int64_t timeUs = mPending[index].timeUs;
    mPending.erase(mPending.begin() + static_cast<ptrdiff_t>(index));
    return timeUs;
}

/** The time of a frame; its packet leaves, and so do those that cannot give a frame any more. */
int64_t Component::takeTimestamp(const AVFrame& frame) {
    const auto isSource = [&](const Pending& packet) {
        return frame.pkt_pos >= 0 ? packet.sequence == frame.pkt_pos : packet.timeUs == frame.pts;
    };
    int64_t sequence;
    bool sync;
    {
        Mutex::Autolock lock(mLock);
        const auto source = std::find_if(mPending.begin(), mPending.end(), isSource);
        // One more frame of the packet that the last one came from.
        if (source == mPending.end()) return mLastTimeUs + mLastDurationUs;
        sequence = source->sequence;
        sync = source->sync;
    }
    // What was decoded before a sync frame is also shown before it.
    if (mInOrder || sync) giveUpBefore(sequence);
    Mutex::Autolock lock(mLock);
    const auto source = std::find_if(mPending.begin(), mPending.end(), isSource);
    return takeOut_l(static_cast<size_t>(source - mPending.begin()));
}

/** How long a frame lasts, as far as it tells. */
int64_t Component::durationUs(const AVFrame& frame) const {
    if (!mVideo) return av_rescale(frame.nb_samples, 1000000, std::max(frame.sample_rate, 1));
    return mFramerate > 0 ? static_cast<int64_t>(1e6 / mFramerate) : 1;
}

bool Component::emit(const AVFrame& frame) {
    mFaults.hold(Fault::SLOW_DECODE, mFrames + 1);
    DisplayQueue::Acquired acquired;
    if (!mOutput->acquire(&acquired)) return false;
    if (acquired.dequeued) {
        recordEvent(mCodec.get(), "updateDequeueBuffer %p %" PRId64 " owned=%zu",
                    static_cast<const void*>(acquired.buffer.get()), acquired.startUs,
                    acquired.held);
        ZephraMediaAnalytic::instance().updateDequeueBuffer(mCodec, acquired.startUs,
                                                            acquired.buffer.get(), acquired.held);
    }
    ComponentEvent event{ComponentEvent::FRAME};
    event.buffer = std::move(acquired.buffer);
    event.number = ++mFrames;
    event.timeUs = mLastTimeUs = takeTimestamp(frame);
    mLastDurationUs = durationUs(frame);
    event.format = mFormat = readFormat(frame, *mDecoder, mDolbyVision, mFormat);
    event.size = frameSize(frame, mVideo);
    if (outputIsDumped()) event.bytes = copyFrame(frame, mVideo, event.size);
    reportOutput(event.timeUs, 0, event.size);
    mListener(std::move(event));
    return true;
}

/** The component's callback: Fill-Buffer-Done of OMX or work done of Codec2. */
void Component::reportOutput(int64_t timeUs, unsigned flags, size_t size) {
    ZephraMediaAnalytic& analytics = ZephraMediaAnalytic::instance();
    if (mOptions.omx) {
        recordEvent(mCodec.get(), "updateOmxOutput %" PRId64 " flags=%u size=%zu", timeUs, flags,
                    size);
        analytics.updateOmxOutput(mOmxKey, timeUs, static_cast<int>(flags),
                                  static_cast<unsigned>(size));
    } else {
        recordEvent(mCodec.get(), "updateC2Output %" PRId64 " flags=%u", timeUs, flags);
        analytics.updateC2Output(mCodec, timeUs, flags);
    }
}

/** Packets from before this one give no frame any more. */
void Component::giveUpBefore(int64_t sequence) {
    std::vector<int64_t> times;
    {
        Mutex::Autolock lock(mLock);
        while (!mPending.empty() && mPending.front().sequence < sequence) {
            times.push_back(takeOut_l(0));
        }
    }
    for (const int64_t timeUs : times) {
        // Codec2 returns the work of every packet, with or without a picture.
        if (!mOptions.omx) reportOutput(timeUs, 0, 0);
        mListener({ComponentEvent::NO_PICTURE, timeUs});
    }
}

}  // namespace android::codecplay
