// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <array>

#include <mediaCodecLogger/base/Relaxed.h>
#include <mediaCodecLogger/base/WrappingArithmetic.h>
#include <mediaCodecLogger/logger/Resolution.h>

namespace android::logger {

/**
 * How long a session has played, from its output timestamps alone: the clock would count pauses. A
 * segment is a stretch of timestamps without a jump. Its time and frames are added to the totals
 * when it closes: at a seek, at a change of the format and with the session.
 *
 * Timestamps are microseconds.
 */
struct PlaybackSegments {
    enum class Step { FIRST, CONTINUES, SEEKS };

    static constexpr int64_t kNoPts = -1;
    /** A timestamp further ahead of the last one is a seek, any before it is, too. */
    static constexpr uint64_t kMaxContinuousStepUs = 5000000;

    Relaxed<int64_t> mLastPts = kNoPts;
    Relaxed<int64_t> mSegmentStartPts = kNoPts;
    Relaxed<uint64_t> mSegmentFrameCount = 0;
    Relaxed<uint64_t> mPrevSegmentsFrameCount = 0;
    Relaxed<int64_t> mAudioPlaybackTimeMs = 0;
    std::array<Relaxed<int64_t>, MAX_RES_TYPES> mPlaybackTimeMsByRes;

    /**
     * Says what a timestamp is to the open segment, opens the first one and counts the frames of
     * one that continues. `mLastPts` stays, because a repetition shows against it.
     */
    Step step(int64_t pts, uint64_t frames) {
        if (pts >= 0 && mSegmentStartPts == kNoPts) {
            // What came before, such as negative timestamps, was no playback.
            mSegmentStartPts = pts;
            mSegmentFrameCount = 0;
            mPrevSegmentsFrameCount = 0;
            return Step::FIRST;
        }
        const int64_t lastPts = mLastPts;
        const bool stepsOn = lastPts <= pts &&
                             static_cast<uint64_t>(wrapSub(pts, lastPts)) <= kMaxContinuousStepUs;
        if (pts >= 0 && lastPts != kNoPts && !stepsOn) return Step::SEEKS;
        mSegmentFrameCount += frames;
        return Step::CONTINUES;
    }

    /**
     * Ends the open segment and starts the next one at `nextPts`.
     *
     * @param timeMs the total that its time belongs to; null for a codec whose time nobody asks for
     */
    void close(Relaxed<int64_t>* timeMs, int64_t nextPts) {
        if (timeMs != nullptr) addOpenTime(*timeMs);
        foldFrames();
        mSegmentStartPts = nextPts;
    }

    /** Time alone, for the end of a session. */
    void addOpenTime(Relaxed<int64_t>& timeMs) const {
        timeMs = wrapAdd(timeMs, openSpanUs() / 1000);
    }

    /**
     * Frames alone, for a flush: the first timestamp after it normally reads as a seek, and that
     * adds the time.
     */
    void foldFrames() {
        mPrevSegmentsFrameCount += mSegmentFrameCount;
        mSegmentFrameCount = 0;
    }

    int64_t openSpanUs() const { return wrapSub(mLastPts, mSegmentStartPts); }

    /** Frames per second, had the open segment spanned so long. */
    double framerateOver(int64_t spanUs) const {
        return static_cast<double>(mSegmentFrameCount) * 1000000.0 / static_cast<double>(spanUs);
    }
};

}  // namespace android::logger
