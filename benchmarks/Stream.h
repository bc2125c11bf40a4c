// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <limits>
#include <memory>

#include <stddef.h>
#include <stdint.h>

#include <vector>

#include <mediaCodecLogger/MediaCodecLogger.h>
#include <mediaCodecLogger/ZephraMediaAnalytic.h>
#include <tests/support/FakeCodec.h>

namespace android::bench {

inline ZephraMediaAnalytic& analytics() {
    return ZephraMediaAnalytic::instance();
}

/** Switches the analytics of the process. Codecs have to be registered again after it. */
void switchAnalytics(bool on);

/** A hardware video decoder and its logger, configured as the media framework would. */
struct Codec {
    Codec();

    const sp<CodecBase> backEnd = new test::FakeCodec;
    const sp<MediaCodecLogger> logger;
    /** The frame that is put out next; frame numbers are media time, 30 a second. */
    int64_t next = 0;
};

/**
 * `count` codecs that have been played until every effect of the start is over, so that each
 * further frame costs the same. `wait` lets more than 501 ms of the monotonic clock pass.
 */
std::vector<std::unique_ptr<Codec>> playedCodecs(size_t count, void (*wait)());

/** Who reports the component's share of a frame; without either, the analytics are off. */
enum class Component { kNone, kOmx, kCodec2 };

/**
 * The events of one codec's frames. An event is told the frame that it concerns; input runs
 * `inFlight` frames ahead of output.
 */
class Stream {
  public:
    Stream(Codec& codec, Component component, size_t inFlight);
    ~Stream();
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    // What the media framework reports to the logger.
    void announce(int64_t frame) {
        mLogger.queueInputBuffer_pre(kData, sizeof(kData), nullptr, nullptr, 0, nullptr,
                                     CryptoPlugin::kMode_Unencrypted, timeUs(frame), timeUs(frame),
                                     false);
    }
    void queue(int64_t frame) {
        mLogger.logInputBufferBitrate(sizeof(kData), timeUs(frame), false, false);
    }
    void output(int64_t frame) { mLogger.updatePTSTime(timeUs(frame), false, 1); }
    void release(int64_t frame) { mLogger.updateFrameDropCounters(timeUs(frame), true); }
    void drop(int64_t frame) { mLogger.updateFrameDropCounters(timeUs(frame), false); }
    void render(int64_t frame) {
        mLogger.resetConsecutiveFrameDropFlag(timeUs(frame) * 1000, timeUs(frame), false, 1);
    }

    // What the back-ends report to the registry.
    void omxInput(int64_t frame) {
        analytics().updateOmxInput(mCodec.backEnd, kData, sizeof(kData), timeUs(frame), 4, 0);
    }
    void omxOutput(int64_t frame) {
        analytics().updateOmxOutput(mKey, timeUs(frame), 0, sizeof(kData));
    }
    void codec2Output(int64_t frame) {
        analytics().updateC2Output(mCodec.backEnd, timeUs(frame), 0);
    }
    void frameBytes(int64_t) {
        analytics().updateACodecOutput(mCodec.backEnd, kData, nullptr, sizeof(kData));
    }
    void toDisplay(int64_t frame) {
        analytics().updateQueueBuffer(mCodec.backEnd, timeUs(frame), timeUs(frame) * 1000,
                                      timeUs(frame), displayBuffer(frame));
    }
    /** While the frame is queued, the buffer of the one before the last comes back. */
    void fromDisplay(int64_t frame) {
        analytics().updateDequeueBuffer(mCodec.backEnd, timeUs(frame), displayBuffer(frame - 2), 4);
    }

    /** One frame into and one out of the codec, as far as the logger is told. */
    void loggerFrame();
    /** The same with everything that the back-ends of the codec report, OMX or Codec2. */
    void frame();
    /** A frame that is dropped instead of shown. */
    void droppedFrame();

    Codec& codec() { return mCodec; }
    int64_t newest() const { return mCodec.next + static_cast<int64_t>(mInFlight); }

  private:
    static constexpr size_t kOutputBuffers = 32;
    static const uint8_t kData[kOutputBuffers];

    static long timeUs(int64_t frame) { return frame * 33333; }
    /** Never dereferenced, so any address will do. */
    static const GraphicBuffer* displayBuffer(int64_t frame) {
        return reinterpret_cast<const GraphicBuffer*>(
                &kData[static_cast<uint64_t>(frame) % kOutputBuffers]);
    }
    void input();

    Codec& mCodec;
    MediaCodecLogger& mLogger;
    const Component mComponent;
    const size_t mInFlight;
    const long mKey;
};

}  // namespace android::bench
