// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <atomic>
#include <deque>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <utils/Condition.h>
#include <utils/Mutex.h>

#include "Demuxer.h"
#include "DisplayQueue.h"
#include "Faults.h"
#include "HostCodec.h"
#include "MediaClock.h"
#include "Options.h"
#include "StreamFormat.h"

namespace android::codecplay {

/** Flags of a buffer, OMX's numbers. */
constexpr unsigned BUFFER_FLAG_END_OF_STREAM = 0x1;
constexpr unsigned BUFFER_FLAG_END_OF_FRAME = 0x10;
constexpr unsigned BUFFER_FLAG_SYNC_FRAME = 0x20;

/** What a component tells the framework, in the order in which it happened. */
struct ComponentEvent {
    enum Kind {
        /** A decoded frame, in a buffer. */
        FRAME,
        /** A packet that gave no picture: damaged, hidden, or half of a picture. */
        NO_PICTURE,
        /** An input buffer is free again. */
        INPUT_DONE,
        /** Everything that went in has come out. */
        END,
    };
    Kind kind = INPUT_DONE;
    int64_t timeUs = 0;
    /** FRAME: position in output order, from 1. */
    int64_t number = 0;
    StreamFormat format = {};
    size_t size = 0;
    /** FRAME: the samples, while somebody wants to dump them. */
    std::vector<uint8_t> bytes = {};
    sp<GraphicBuffer> buffer = {};
    /** When the message of the event arrives; those behind it do not overtake it. */
    int64_t arrivesAtNs = 0;

    // For the receiver.
    MediaClock::Position position = {};
    /** Decoded only to reach the target of a seek. */
    bool beforeTarget = false;
};

/**
 * The decoder behind a codec back-end: FFmpeg's, on a thread of its own. It reports to the frame
 * analytics what a component's callbacks report, and everything else to its listener.
 *
 * queue(), queueEnd(), flush() and stop() belong to one thread, the framework's; the listener is
 * called on the component's thread.
 */
class Component {
  public:
    using Listener = std::function<void(ComponentEvent&&)>;

    /** Input buffers; so many packets may be queued and not yet done. */
    static constexpr size_t kInputBuffers = 8;

    Component(const Options& options, const Faults& faults, sp<HostCodec> codec, long omxKey,
              DisplayQueue* output, Listener listener);
    ~Component();

    /** Finds and opens the decoder; false with a reason. */
    bool open(const StreamInfo& stream, std::string* error);
    void start();
    bool started() const { return mThread.joinable(); }

    void queue(Packet packet);
    /** No packets follow; END comes when all frames are out. */
    void queueEnd(int64_t timeUs);

    /**
     * Forgets what it was given. No listener call is running or comes after the return.
     *
     * @return packets that had gone in and whose frames will not come out
     */
    size_t flush();
    void stop();

    /** Packets that the decoder refused, and frames that it had to patch up; any thread. */
    uint64_t decodeErrors() const { return mDecodeErrors; }

  private:
    struct Input {
        Packet packet;
        bool end = false;
        int64_t timeUs = 0;
        int64_t sequence = 0;
    };
    /** A packet inside, in the order of decoding. */
    struct Pending {
        int64_t sequence;
        int64_t timeUs;
        bool sync;
    };

    void run();
    void decode(const Input& input);
    /** Hands over what the decoder has ready; false once a flush cut it short. */
    bool drainFrames();
    bool emit(const AVFrame& frame);
    void finish(int64_t timeUs);
    void reportOutput(int64_t timeUs, unsigned flags, size_t size);
    void giveUpBefore(int64_t sequence);
    int64_t takeTimestamp(const AVFrame& frame);
    int64_t takeOut_l(size_t index) REQUIRES(mLock);
    int64_t durationUs(const AVFrame& frame) const;
    void acknowledgeFlush();

    const Options& mOptions;
    const Faults& mFaults;
    const sp<HostCodec> mCodec;
    const long mOmxKey;
    DisplayQueue* const mOutput;
    const Listener mListener;
    bool mVideo = false;
    double mFramerate = 0;
    bool mDolbyVision = false;

    // The component thread's own.
    CodecContextPtr mDecoder;
    StreamFormat mFormat;
    int64_t mFrames = 0;
    int64_t mLastTimeUs = 0;
    int64_t mLastDurationUs = 0;
    /** The decoder returns a packet's picture, if it has one, before it takes the next. */
    bool mWithoutDelay = false;
    /** Pictures come out in the order in which they went in. */
    bool mInOrder = false;
    bool mTimesInDecodeOrder = false;

    std::atomic<uint64_t> mDecodeErrors{0};

    Mutex mLock;
    Condition mChanged;
    std::deque<Input> mInput GUARDED_BY(mLock);
    std::deque<Pending> mPending GUARDED_BY(mLock);
    int64_t mSequence GUARDED_BY(mLock) = 0;
    bool mFlushing GUARDED_BY(mLock) = false;
    bool mStopping GUARDED_BY(mLock) = false;
    std::thread mThread;
};

}  // namespace android::codecplay
