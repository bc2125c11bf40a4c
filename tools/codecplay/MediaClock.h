// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <functional>

#include <utils/Mutex.h>

namespace android::codecplay {

/** CLOCK_MONOTONIC in nanoseconds. */
int64_t monotonicNs();

/**
 * Maps media time to the time at which it is due. Playback starts together: the clock starts when
 * each stream has something to show, as a player waits for all its renderers. Thread-safe.
 */
class MediaClock {
  public:
    static constexpr int64_t kNotStarted = INT64_MAX;

    /**
     * @param speed media seconds per second; 0 for an unpaced clock, by which all is due at once
     * @param vsyncNs playback starts at a multiple of this, so that pictures that come once a
     * refresh keep their distance from it
     * @param onStart called on the thread whose call started the clock
     */
    MediaClock(double speed, int64_t vsyncNs, std::function<void()> onStart);

    /** How many streams start the clock together; before the first is ready. */
    void expect(size_t streams);

    /** A stream is ready to show its first media time, once between resets. */
    void ready(int64_t firstTimeUs);
    /** A stream has nothing to show before its end. */
    void readyWithNothing();
    /** Starts without the streams that are not ready; does nothing while none is. */
    void startWithoutTheRest();
    /** Waits for all streams again: after a seek. */
    void reset();

    /** When the media time is due; kNotStarted while the clock waits. */
    int64_t dueNs(int64_t timeUs) const;

  private:
    void addReady(int64_t firstTimeUs, bool anything);
    void start_l() REQUIRES(mLock);

    const double mSpeed;
    const int64_t mVsyncNs;
    const std::function<void()> mOnStart;

    mutable Mutex mLock;
    size_t mStreams GUARDED_BY(mLock) = 0;
    size_t mReady GUARDED_BY(mLock) = 0;
    bool mHasFirst GUARDED_BY(mLock) = false;
    bool mStarted GUARDED_BY(mLock) = false;
    int64_t mFirstUs GUARDED_BY(mLock) = 0;
    int64_t mAnchorNs GUARDED_BY(mLock) = 0;
};

}  // namespace android::codecplay
