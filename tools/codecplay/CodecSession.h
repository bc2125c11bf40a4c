// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <atomic>
#include <deque>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <mediaCodecLogger/MediaCodecLogger.h>
#include <utils/Condition.h>
#include <utils/Mutex.h>

#include "Component.h"
#include "Demuxer.h"
#include "DisplayQueue.h"
#include "Faults.h"
#include "HostCodec.h"
#include "MediaClock.h"
#include "Options.h"
#include "StreamFormat.h"

namespace android::codecplay {

/**
 * Where the frames of a session went. In the end packets = rendered + the three kinds of drops +
 * flushed + noPicture, as long as each packet holds one frame.
 */
struct SessionCounts {
    std::atomic<uint64_t> packets{0};
    std::atomic<uint64_t> frames{0};
    /** Sent to the display, or for audio to the sink. */
    std::atomic<uint64_t> rendered{0};
    std::atomic<uint64_t> droppedLate{0};
    /** By --drop. */
    std::atomic<uint64_t> droppedOnRequest{0};
    /** Decoded only to reach the target of a seek. */
    std::atomic<uint64_t> droppedBeforeTarget{0};
    /** In the codec, or waiting to be rendered, when a flush or a stop came. */
    std::atomic<uint64_t> flushed{0};
    /** Packets without a picture: hidden, damaged, or half of one. */
    std::atomic<uint64_t> noPicture{0};
    /** Shown in the application's eyes but replaced before the display's next refresh. */
    std::atomic<uint64_t> neverShown{0};
};

/**
 * The framework's side of one codec, with the application that drives it: reports the life of the
 * codec and of each frame to the library as MediaCodec and its back-ends do. One thread, the
 * codec's looper, does all of it but the component's callbacks. The public operations belong to
 * the player's thread.
 */
class CodecSession {
  public:
    struct Command {
        enum Kind { NONE, FLUSH, RECONFIGURE, STOP };
        Kind kind = NONE;
        /** Frames before this time are decoded but not shown. */
        int64_t skipUntilUs = INT64_MIN;
    };

    /**
     * @param takesFaults the faults of the options are meant for this stream
     * @param stop set by somebody else to end all that holds frames up
     */
    CodecSession(const Options& options, const StreamInfo& stream, bool takesFaults,
                 MediaClock* clock, const std::atomic<bool>& stop);
    ~CodecSession();

    /** Opens the decoder; false with a reason. */
    bool open(std::string* error);
    /** Starts the looper, which creates and configures the codec. */
    void start();

    /** Takes a packet, or gives up after some milliseconds because the queue is full. */
    bool offer(Packet* packet);
    void offerEnd(int64_t timeUs);
    /** Returns when all that was offered has been decoded and released, or playback is to end. */
    void waitIdle();
    /** Runs a command on the looper. The caller waits for it with waitCommand(). */
    void post(Command command);
    /**
     * False if playback is to end and the looper does not answer: a service that hangs holds it.
     *
     * @param patienceNs what all such waits together may take
     */
    bool waitCommand(int64_t* patienceNs);
    /** Looks again at what is due. */
    void wake();

    /** The end was offered and everything before it released. */
    bool finished();
    /** Media time of the last frame released since start or flush; INT64_MIN before it. */
    int64_t positionUs() const { return mPositionUs; }

    const SessionCounts& counts() const { return mCounts; }
    uint64_t decodeErrors() const { return mComponent.decodeErrors(); }

    // After STOP.
    const std::string& name() const { return mName; }
    const FormatName& format() const { return mFormatName; }
    int streamIndex() const { return mStream.index; }
    bool video() const { return mStream.video; }
    /** The output formats in the order in which they were announced. */
    const std::vector<StreamFormat>& formats() const { return mFormats; }
    /** What the library returned for each configuration that it reported. */
    const std::vector<std::string>& reports() const { return mReports; }

  private:
    enum class Work { NOTHING, COMMAND, EVENT, RELEASE, INPUT, END };
    enum class Fate { RENDER, DROP_LATE, DROP_ON_REQUEST, DROP_BEFORE_TARGET };

    bool paced() const { return mOptions.paced(); }
    bool tunneled() const { return mStream.video && mOptions.tunneled; }
    bool secure() const { return mStream.video && mOptions.secure; }
    /** What a story says of the stream besides. */
    const char* storyKind() const { return tunneled() ? " off" : mStream.video ? "" : " notVideo"; }
    long key() const { return reinterpret_cast<long>(mCodec.get()); }

    // CodecSession.cpp: the looper.
    void run();
    Work waitForWork(int64_t deadlineNs);
    int64_t inputAtNs();
    bool idle_l() const REQUIRES(mLock);
    int64_t releaseAtNs() const;
    void onCommand();
    void onEvent();
    void onInput();
    void onInputEnd();
    void flush();

    // CodecSessionEvents.cpp: what the library is told.
    void configure();
    void reportBuffers();
    void stopCodec();
    void queueInput(const Packet& packet);
    void queueInputBuffer(const uint8_t* data, size_t size, int64_t timeUs, unsigned flags);
    void announceFormat(const StreamFormat& format);
    void onFrame(ComponentEvent frame);
    void onEnd(int64_t timeUs);
    void releaseFront();
    Fate fateOf(const ComponentEvent& frame, int64_t dueNs) const;
    void count(Fate fate);
    void renderOrDrop(const ComponentEvent& frame, Fate fate, int64_t dueNs);
    void reportTunneled(const ComponentEvent& frame, Fate fate, int64_t renderTimeNs);

    const Options& mOptions;
    const StreamInfo& mStream;
    MediaClock* const mClock;
    const std::atomic<bool>& mStop;
    const FormatName mFormatName;
    const std::string mName;
    const Faults mFaults;
    std::deque<DecoderError> mErrors;

    SessionCounts mCounts;
    std::atomic<int64_t> mPositionUs{INT64_MIN};

    DisplayQueue mDisplay;
    const sp<HostCodec> mCodec;
    Component mComponent;

    // The looper's own.
    sp<MediaCodecLogger> mLogger;
    /** With the application, in output order. */
    std::deque<ComponentEvent> mOutput;
    std::vector<StreamFormat> mFormats;
    std::vector<std::string> mReports;
    bool mMitigatesDrops = false;
    bool mFormatAnnounced = false;
    bool mClockReady = false;
    bool mRenderedSinceFlush = false;
    bool mEndQueued = false;
    int64_t mSkipUntilUs = INT64_MIN;
    MediaClock::Track mTrack;
    int64_t mLastRenderMs = -1;
    uint64_t mTunnelDrops = 0;
    uint64_t mErrorsReported = 0;
    int64_t mInputNumber = 0;
    /** The input that the source keeps waiting, and until when. */
    int64_t mStarvedInput = 0;
    int64_t mStarvedUntilNs = 0;
    /** The picture that the application is slow with, and until when. */
    int64_t mStalledFrame = 0;
    int64_t mStalledUntilNs = 0;

    Mutex mLock;
    Condition mChanged;
    std::deque<Packet> mInput GUARDED_BY(mLock);
    std::deque<ComponentEvent> mEvents GUARDED_BY(mLock);
    Command mCommand GUARDED_BY(mLock);
    size_t mFreeInputs GUARDED_BY(mLock) = Component::kInputBuffers;
    bool mInputEnded GUARDED_BY(mLock) = false;
    int64_t mEndUs GUARDED_BY(mLock) = 0;
    bool mEndOut GUARDED_BY(mLock) = false;
    /** mOutput is empty; kept here for the player's thread. */
    bool mAllReleased GUARDED_BY(mLock) = true;
    bool mWoken GUARDED_BY(mLock) = false;
    std::thread mThread;
};

}  // namespace android::codecplay
