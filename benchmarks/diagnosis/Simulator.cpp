// SPDX-License-Identifier: Apache-2.0
#include "Simulator.h"

#include <math.h>

#include <algorithm>
#include <deque>
#include <set>

#include <mediaCodecLogger/MediaCodecLogger.h>
#include <mediaCodecLogger/ZephraMediaAnalytic.h>
#include <tests/support/FakeClock.h>
#include <tests/support/FakeCodec.h>
#include <tests/support/ScopedProperties.h>

namespace android::test {

namespace {

constexpr double kTickMs = 0.5;
constexpr double kStartMs = 100'000;
constexpr double kNever = 1e12;
constexpr double kDropAfterMs = 30;

class Playback {
  public:
    explicit Playback(const Setup& setup)
        : s(setup),
          mProperties{{"mediaanalytic.enable", "true"}, {"mediaanalytic.debug", setup.mask}},
          mClock(static_cast<int64_t>(kStartMs)),
          mStepMs(1000 / setup.fps),
          mRefreshMs(1000 / setup.displayHz),
          mCodec(new FakeCodec),
          mKey(reinterpret_cast<long>(mCodec.get())) {
        setLogListener([this](const LogLine& line) {
            mResult.log.push_back({static_cast<int64_t>(mNowMs), line});
        });
        mResult.faultMs.assign(s.faults.size(), -1);
        mResult.toleranceMs = mRefreshMs + 2;
        for (int i = 0; i < s.outputBuffers; ++i) mFresh.push_back(i + 1);
    }

    ~Playback() { setLogListener(nullptr); }

    Simulated run() {
        configure();
        feedFrom(0);
        while (!isOver()) {
            input();
            component();
            messages();
            application();
            wait(kTickMs);
        }
        stop();
        judgeDisplay();
        return std::move(mResult);
    }

  private:
    struct OnDisplay {
        uintptr_t buffer;
        double shownMs;
    };
    struct Message {
        int frame;
        uintptr_t buffer;
        double arrivesMs;
    };
    struct Shown {
        int frame;
        double ms;
        int segment;
    };

    void wait(double ms) {
        mNowMs += ms;
        mClock.advanceUs(static_cast<int64_t>(mNowMs * 1000) - mClock.nowUs());
    }

    /** The delay of a fault that begins now, with this frame, or 0. */
    double begins(FaultKind kind, int frame) {
        for (size_t i = 0; i < s.faults.size(); ++i) {
            const Fault& fault = s.faults[i];
            if (fault.kind != kind || fault.frame != frame || mResult.faultMs[i] >= 0) continue;
            mResult.faultMs[i] = mNowMs;
            return fault.ms;
        }
        return 0;
    }

    /** Whether a fault that concerns frame after frame concerns this one; each costs two steps. */
    double lasts(FaultKind kind, int frame) {
        for (size_t i = 0; i < s.faults.size(); ++i) {
            const Fault& fault = s.faults[i];
            const int count = std::max(1, static_cast<int>(fault.ms / mStepMs));
            if (fault.kind != kind || frame < fault.frame || frame >= fault.frame + count) continue;
            if (mResult.faultMs[i] < 0) mResult.faultMs[i] = mNowMs;
            return 2 * mStepMs;
        }
        return 0;
    }

    long ptsOf(int frame) const {
        const double jump = s.seekAt >= 0 && frame >= s.seekAt ? 60'000 : 0;
        return static_cast<long>((frame * mStepMs + jump) * 1000);
    }

    void configure() {
        auto& analytics = ZephraMediaAnalytic::instance();
        const char* name = s.omx ? "OMX.vendor.avc" : "c2.vendor.avc";
        analytics.addCodec(name, mCodec, mKey, mKey);
        mLogger = MediaCodecLogger::Create(4321, 10001);
        mLogger->configure(name, "video/avc", 0, true, 0, 0, mCodec, true);
        if (!s.omx) analytics.updateCCodecConfigs(mCodec, true, false, true);
        wait(10);
        mLogger->profileP2End();
        mLogger->profileP3Start();
        if (s.omx) {
            analytics.updateBuffers(mCodec, 0, s.inputSlots, 0, true, false, true);
            analytics.updateBuffers(mCodec, 1, s.outputBuffers, 2, true, false, true);
        } else {
            analytics.updateBuffers(mKey, 0, s.inputSlots, 0);
            analytics.updateBuffers(mKey, 1, s.outputBuffers, 2);
        }
        wait(15);
        mLogger->profileP3End();
    }

    /** Fills the source with what follows, in the order of decoding. */
    void feedFrom(int frame) {
        mSource.clear();
        mNextOut = frame;
        mBeganMs = mNowMs;
        mBeganFrame = frame;
        if (s.reorders) mSource.push_back(frame++);
        for (; frame < s.frames; frame += s.reorders ? 3 : 1) {
            const int last = std::min(frame + (s.reorders ? 2 : 0), s.frames - 1);
            mSource.push_back(last);
            for (int i = frame; i < last; ++i) mSource.push_back(i);
        }
        mClockMs = kNever;
    }

    void input() {
        double& busyUntilMs = s.oneThread ? mThreadMs : mInputThreadMs;
        if (mNowMs < busyUntilMs) return;
        if (mDecrypting >= 0) {
            queued(mDecrypting);
            mDecrypting = -1;
        }
        if (mSource.empty() || mSlotsUsed >= s.inputSlots) return;
        const int frame = mSource.front();
        if (s.liveAheadMs > 0) {
            const double dueMs = mBeganMs + (frame - mBeganFrame) * mStepMs - s.liveAheadMs;
            if (mNowMs < dueMs) return;
        }
        mSourceMs = std::max(mSourceMs, mNowMs + begins(FaultKind::STARVE, frame));
        if (mNowMs < mSourceMs) return;
        mSource.pop_front();
        ++mSlotsUsed;
        mLogger->queueInputBuffer_pre(nullptr, 0, nullptr, nullptr, 0, nullptr,
                                      CryptoPlugin::kMode_Unencrypted, ptsOf(frame), mClock.nowUs(),
                                      false);
        busyUntilMs = mNowMs + s.decryptMs + begins(FaultKind::SLOW_DECRYPT, frame) +
                      lasts(FaultKind::SLOW_DECRYPTS, frame);
        mDecrypting = frame;
    }

    void queued(int frame) {
        mLogger->logInputBufferBitrate(4000, ptsOf(frame), false, false);
        if (s.omx) {
            ZephraMediaAnalytic::instance().updateOmxInput(mCodec, nullptr, 4000, ptsOf(frame),
                                                           mSlotsUsed, 0);
        }
        mQueue.push_back(frame);
    }

    void component() {
        if (mNowMs < mComponentMs) return;
        if (mDecoding >= 0) {
            mDecoded.insert(mDecoding);
            mDecoding = -1;
            --mSlotsUsed;
        }
        while (mDecoded.count(mNextOut) != 0) {
            if (!emit()) return;
        }
        if (mQueue.empty()) return;
        const bool isLast = mSource.empty() && mDecrypting < 0;
        if (static_cast<int>(mQueue.size()) <= s.depth && !isLast) return;
        mDecoding = mQueue.front();
        mQueue.pop_front();
        mComponentMs = mNowMs + s.decodeMs + begins(FaultKind::SLOW_DECODE, mDecoding) +
                       lasts(FaultKind::SLOW_DECODES, mDecoding);
    }

    /** Hands the next picture on, if there is a buffer for it. */
    bool emit() {
        uintptr_t buffer = 0;
        if (mWaitsSinceMs < 0) mWaitsSinceMs = mNowMs;
        auto& analytics = ZephraMediaAnalytic::instance();
        if (!mFresh.empty()) {
            buffer = mFresh.back();
            mFresh.pop_back();
        } else if (mDisplay.size() >= 2 && mDisplay[1].shownMs <= mNowMs && mNowMs >= mKeptMs) {
            buffer = mDisplay.front().buffer;
            mDisplay.pop_front();
            analytics.updateDequeueBuffer(mCodec, static_cast<long>(mWaitsSinceMs * 1000),
                                          reinterpret_cast<const void*>(buffer << 6), 1);
        } else {
            return false;
        }
        mWaitsSinceMs = -1;
        if (s.omx) {
            analytics.updateOmxOutput(mKey, ptsOf(mNextOut), 0, 4000);
        } else {
            analytics.updateC2Output(mCodec, ptsOf(mNextOut), 0);
        }
        const double delayMs = s.messageMs + begins(FaultKind::LATE_MESSAGE, mNextOut);
        mMessages.push_back({mNextOut, buffer, mNowMs + delayMs});
        ++mNextOut;
        return true;
    }

    void messages() {
        while (!mMessages.empty() && mMessages.front().arrivesMs <= mNowMs && mNowMs >= mThreadMs) {
            const Message message = mMessages.front();
            mMessages.pop_front();
            mLogger->updatePTSTime(ptsOf(message.frame), false, 1);
            if (mClockMs == kNever) {
                const double refresh = ceil(mNowMs / mRefreshMs) + 4 + s.phase;
                mClockMs = refresh * mRefreshMs - message.frame * mStepMs;
            }
            mReady.push_back(message);
        }
    }

    double askedMs(int frame) const {
        const double dueMs = mClockMs + frame * mStepMs;
        return s.snaps ? round(dueMs / mRefreshMs) * mRefreshMs : dueMs;
    }

    void application() {
        if (mQueueing.frame >= 0 && mNowMs >= mThreadMs) endQueueing();
        while (!mReady.empty() && mNowMs >= mThreadMs) {
            const int frame = mReady.front().frame;
            if (frame == s.pauseAt && mPausedMs < 0 && mNowMs >= askedMs(frame) - 20) {
                mPausedMs = mNowMs + s.pauseMs;
                mClockMs += s.pauseMs;
                mSkipFrame = frame;
            }
            if (mNowMs < askedMs(frame) - s.leadRefreshes * mRefreshMs) return;
            const double stallMs = begins(FaultKind::STALL, frame);
            if (stallMs > 0) {
                mThreadMs = mNowMs + stallMs;
                return;
            }
            release();
            if (frame + 1 == s.seekAt || frame + 1 == s.flushAt) flush(frame + 1);
        }
    }

    void release() {
        const Message front = mReady.front();
        mReady.pop_front();
        mReleased = front.frame;
        const double lateMs = mNowMs - (mClockMs + front.frame * mStepMs);
        if (s.rebases && lateMs > 3 * mStepMs) mClockMs += lateMs;
        const bool isLate = s.dropsLate && !s.rebases && lateMs > kDropAfterMs && mRendered;
        if (isLate || lasts(FaultKind::NEEDLESS_DROPS, front.frame) > 0) {
            mLogger->updateFrameDropCounters(ptsOf(front.frame), false);
            mFresh.push_back(front.buffer);
            mLost.push_back({front.frame, mNowMs, mSegment});
            return;
        }
        mRendered = true;
        const double renderMs = askedMs(front.frame);
        mLogger->updateFrameDropCounters(ptsOf(front.frame), true);
        mLogger->resetConsecutiveFrameDropFlag(static_cast<long>(renderMs * 1e6),
                                               ptsOf(front.frame), false, 1);
        mQueueing = front;
        mQueueingMs = mNowMs;
        const double blockedMs = begins(FaultKind::BLOCKED_QUEUE, front.frame);
        const double keptMs = begins(FaultKind::KEPT_BUFFERS, front.frame);
        if (keptMs > 0 || blockedMs > 0) mKeptMs = mNowMs + std::max(keptMs, blockedMs);
        if (blockedMs > 0) {
            mThreadMs = mNowMs + blockedMs;
        } else {
            endQueueing();
        }
    }

    /** The picture is with the display, which shows it when asked to or else as soon as it can. */
    void endQueueing() {
        const Message front = mQueueing;
        mQueueing.frame = -1;
        const double renderMs = askedMs(front.frame);
        const double lastMs = mShown.empty() ? 0 : mShown.back().ms;
        const double earliestMs = std::max({renderMs, mNowMs, lastMs});
        const double shownMs = ceil(earliestMs / mRefreshMs - 1e-6) * mRefreshMs;
        if (!mShown.empty() && shownMs - lastMs < 0.01) {
            mLost.push_back({mShown.back().frame, lastMs, mSegment});
            mShown.back().frame = front.frame;
        } else {
            mShown.push_back({front.frame, shownMs, mSegment});
        }
        mDisplay.push_back({front.buffer, shownMs});
        ZephraMediaAnalytic::instance().updateQueueBuffer(
                mCodec, static_cast<long>(mQueueingMs * 1000), static_cast<long>(renderMs * 1e6),
                ptsOf(front.frame), reinterpret_cast<const GraphicBuffer*>(front.buffer << 6));
    }

    void flush(int next) {
        for (const Message& message : mMessages) mFresh.push_back(message.buffer);
        for (const Message& message : mReady) mFresh.push_back(message.buffer);
        mMessages.clear();
        mReady.clear();
        mQueue.clear();
        mDecoded.clear();
        mDecoding = mDecrypting = -1;
        mSlotsUsed = 0;
        // What holds frames up ends with them.
        mComponentMs = mWaitsSinceMs = mSourceMs = mInputThreadMs = -1;
        mRendered = false;
        ++mSegment;
        mFlushedMs = mNowMs;
        mLogger->updateMetricsForFlush();
        feedFrom(next);
    }

    bool isOver() {
        const bool played = mReleased == s.frames - 1 && mQueueing.frame < 0;
        if (played && !mEnded) {
            mLogger->updatePTSTime(ptsOf(s.frames - 1), true, 1);
            mEnded = true;
            mEndMs = mNowMs + s.lastsMs;
        }
        // A fault that never ends: nobody waits for that.
        const double lastMs = mShown.empty() ? mNowMs : mShown.back().ms;
        if (!mEnded && mPausedMs < mNowMs && mNowMs - lastMs > 6'000) mEndMs = mNowMs;
        return mNowMs >= mEndMs;
    }

    void stop() {
        mStoppedMs = mNowMs;
        if (!s.stops) {
            // Somebody else logs on.
            mResult.log.push_back({static_cast<int64_t>(mNowMs), {4, "Other", "still here"}});
        } else {
            mLogger->profileMCStopBegin();
            wait(5);
            mLogger->profileMCStopEnd();
            mLogger->logMetrics();
        }
        mLogger = nullptr;
    }

    void judgeDisplay() {
        std::vector<Seen>& seen = mResult.seen;
        for (size_t i = 1; i < mShown.size(); ++i) {
            const Shown& last = mShown[i - 1];
            const Shown& shown = mShown[i];
            const bool begins = last.segment != shown.segment;
            const double overMs = std::max(last.ms + mStepMs, begins ? mFlushedMs : 0);
            const double stoodMs = shown.ms - overMs;
            const double least = begins ? 250 : mResult.toleranceMs;
            const bool paused =
                    mSkipFrame >= 0 && last.frame < mSkipFrame && shown.frame >= mSkipFrame;
            if (stoodMs > least && !paused) seen.push_back({overMs, shown.ms, stoodMs, 0});
        }
        for (const Shown& lost : mLost) seen.push_back({lost.ms, lost.ms, 0, 1});
        const double overMs = mShown.empty() ? kNever : mShown.back().ms + mStepMs;
        if (!mEnded && mStoppedMs - overMs > 250) {
            seen.push_back({overMs, mStoppedMs, mStoppedMs - overMs, 0});
        }
        std::sort(seen.begin(), seen.end(),
                  [](const Seen& a, const Seen& b) { return a.fromMs < b.fromMs; });
    }

    const Setup s;
    ScopedProperties mProperties;
    FakeClock mClock;
    const double mStepMs;
    const double mRefreshMs;
    const sp<FakeCodec> mCodec;
    const long mKey;
    sp<MediaCodecLogger> mLogger;
    Simulated mResult;
    double mNowMs = kStartMs;

    std::deque<int> mSource;
    double mSourceMs = 0;
    double mBeganMs = 0;
    int mBeganFrame = 0;
    int mDecrypting = -1;
    int mSlotsUsed = 0;
    double mInputThreadMs = 0;

    std::deque<int> mQueue;
    std::set<int> mDecoded;
    int mDecoding = -1;
    int mNextOut = 0;
    double mComponentMs = 0;
    double mWaitsSinceMs = -1;

    std::deque<Message> mMessages;
    std::deque<Message> mReady;
    double mThreadMs = 0;
    double mClockMs = kNever;
    bool mRendered = false;
    int mReleased = -1;
    int mSkipFrame = -1;
    double mPausedMs = -1;
    int mSegment = 0;
    double mFlushedMs = 0;

    Message mQueueing = {-1, 0, 0};
    double mQueueingMs = 0;
    std::vector<uintptr_t> mFresh;
    std::deque<OnDisplay> mDisplay;
    double mKeptMs = 0;
    std::vector<Shown> mShown;
    std::vector<Shown> mLost;

    bool mEnded = false;
    double mEndMs = kNever;
    double mStoppedMs = 0;
};

}  // namespace

double Simulated::badnessMs() const {
    double sum = 0;
    for (const Seen& seen : seen) sum += seen.stoodMs + 20 * seen.lost;
    return sum;
}

Simulated simulate(const Setup& setup) {
    return Playback(setup).run();
}

}  // namespace android::test
