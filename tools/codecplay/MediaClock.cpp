// SPDX-License-Identifier: Apache-2.0
#include "MediaClock.h"

#include <stdlib.h>
#include <time.h>

#include <algorithm>
#include <utility>

namespace android::codecplay {

int64_t monotonicNs() {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * INT64_C(1000000000) + now.tv_nsec;
}

MediaClock::MediaClock(double speed, int64_t vsyncNs, std::function<void()> onChange)
    : mSpeed(speed), mVsyncNs(vsyncNs), mOnChange(std::move(onChange)) {}

void MediaClock::expect(size_t streams, int64_t jumpUs) {
    Mutex::Autolock lock(mLock);
    mStreams = streams;
    mJumpUs = jumpUs;
}

MediaClock::Position MediaClock::follow(Track* track, int64_t timeUs) {
    bool moved = false;
    {
        Mutex::Autolock lock(mLock);
        const int64_t stepUs = timeUs - track->last.timeUs;
        if (!track->started) {
            track->started = true;
        } else if (stepUs < 0 || stepUs > mJumpUs) {
            moved = join_l(track, timeUs);
        } else if (stepUs > 0) {
            track->stepUs = stepUs;
        }
        track->last.timeUs = timeUs;
    }
    if (moved) mOnChange();
    return track->last;
}

/**
 * The track goes over to another stretch; true if that is due later now. A stream that had come
 * further than the one that placed the stretch moves it back, as no frame is due before the one
 * ahead of it.
 */
bool MediaClock::join_l(Track* track, int64_t timeUs) {
    constexpr int64_t kNearUs = 5'000'000;
    size_t& stretch = track->last.stretch;
    const int64_t nextUs = playedUs_l(track->last.timeUs, stretch) + track->stepUs;
    while (++stretch < mOffsetsUs.size()) {
        const int64_t lateUs = nextUs - playedUs_l(timeUs, stretch);
        if (llabs(lateUs) > kNearUs) continue;
        if (lateUs <= 0) return false;
        for (size_t i = stretch; i < mOffsetsUs.size(); ++i) mOffsetsUs[i] += lateUs;
        return true;
    }
    mOffsetsUs.push_back(nextUs - timeUs);
    return false;
}

void MediaClock::start_l() {
    // A few refreshes of lead let the first pictures be queued before they are due.
    constexpr int kStartLeadVsyncs = 4;
    mStarted = true;
    mAnchorNs = (monotonicNs() / mVsyncNs + kStartLeadVsyncs) * mVsyncNs;
}

void MediaClock::addReady(int64_t firstTimeUs, bool anything) {
    {
        Mutex::Autolock lock(mLock);
        ++mReady;
        if (anything) {
            mFirstUs = mHasFirst ? std::min(mFirstUs, firstTimeUs) : firstTimeUs;
            mHasFirst = true;
        }
        if (mStarted || mReady < mStreams) return;
        start_l();
    }
    mOnChange();
}

void MediaClock::ready(int64_t firstTimeUs) {
    addReady(firstTimeUs, true);
}

void MediaClock::readyWithNothing() {
    addReady(0, false);
}

void MediaClock::startWithoutTheRest() {
    {
        Mutex::Autolock lock(mLock);
        if (mStarted || !mHasFirst) return;
        start_l();
    }
    mOnChange();
}

void MediaClock::reset() {
    Mutex::Autolock lock(mLock);
    mReady = 0;
    mHasFirst = false;
    mStarted = false;
    mOffsetsUs.assign(1, 0);
}

int64_t MediaClock::dueNs(const Position& position) const {
    if (mSpeed <= 0) return 0;
    Mutex::Autolock lock(mLock);
    if (!mStarted) return kNotStarted;
    // In double: timestamps of damaged files lie anywhere in 64 bits.
    const double playedUs = static_cast<double>(playedUs_l(position.timeUs, position.stretch));
    const double sinceNs = (playedUs - static_cast<double>(mFirstUs)) * 1000;
    const double limitNs = 1e17;
    return mAnchorNs + static_cast<int64_t>(std::clamp(sinceNs / mSpeed, -limitNs, limitNs));
}

}  // namespace android::codecplay
