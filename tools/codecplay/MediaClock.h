// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <functional>
#include <vector>

#include <utils/Mutex.h>

namespace android::codecplay {

/** CLOCK_MONOTONIC in nanoseconds. */
int64_t monotonicNs();

/**
 * Maps media time to the time at which it is due. Playback starts together: the clock starts when
 * each stream has something to show, as a player waits for all its renderers.
 *
 * Where the media time jumps, in joined files and edited recordings, a new stretch begins, which is
 * due right behind the one before. The streams of a file meet a jump one after the other; the first
 * one places the stretch for all, so they keep their distance. Thread-safe.
 */
class MediaClock {
  public:
    static constexpr int64_t kNotStarted = INT64_MAX;

    /** A media time, and in which uninterrupted stretch of it. */
    struct Position {
        int64_t timeUs = 0;
        size_t stretch = 0;
    };

    /** How far one stream has come, in output order. */
    struct Track {
        bool started = false;
        Position last;
        /** From frame to frame. */
        int64_t stepUs = 0;
    };

    /**
     * @param speed media seconds per second; 0 for an unpaced clock, by which all is due at once
     * @param vsyncNs playback starts at a multiple of this, so that pictures that come once a
     * refresh keep their distance from it
     * @param onChange called on a thread whose call changed when something is due
     */
    MediaClock(double speed, int64_t vsyncNs, std::function<void()> onChange);

    /**
     * @param streams how many start the clock together
     * @param jumpUs a longer step forward is a jump of the media time
     */
    void expect(size_t streams, int64_t jumpUs);

    /** Places the next frame of a stream. */
    Position follow(Track* track, int64_t timeUs);

    /** A stream is ready to show its first frame, once between resets. */
    void ready(int64_t firstTimeUs);
    /** A stream has nothing to show before its end. */
    void readyWithNothing();
    /** Starts without the streams that are not ready; does nothing while none is. */
    void startWithoutTheRest();
    /** Waits for all streams again: after a seek. Tracks start anew as well. */
    void reset();

    /** When the position is due; kNotStarted while the clock waits. */
    int64_t dueNs(const Position& position) const;

  private:
    void addReady(int64_t firstTimeUs, bool anything);
    void start_l() REQUIRES(mLock);
    int64_t playedUs_l(int64_t timeUs, size_t stretch) const REQUIRES(mLock) {
        return timeUs + mOffsetsUs[stretch];
    }
    bool join_l(Track* track, int64_t timeUs) REQUIRES(mLock);

    const double mSpeed;
    const int64_t mVsyncNs;
    const std::function<void()> mOnChange;

    mutable Mutex mLock;
    size_t mStreams GUARDED_BY(mLock) = 0;
    int64_t mJumpUs GUARDED_BY(mLock) = INT64_MAX;
    size_t mReady GUARDED_BY(mLock) = 0;
    bool mHasFirst GUARDED_BY(mLock) = false;
    bool mStarted GUARDED_BY(mLock) = false;
    int64_t mFirstUs GUARDED_BY(mLock) = 0;
    int64_t mAnchorNs GUARDED_BY(mLock) = 0;
    /** By stretch: from its media time to the time that has been played by then. */
    std::vector<int64_t> mOffsetsUs GUARDED_BY(mLock) = {0};
};

}  // namespace android::codecplay
