// SPDX-License-Identifier: Apache-2.0
#include "MediaClock.h"

#include <time.h>

#include <algorithm>
#include <utility>

namespace android::codecplay {

int64_t monotonicNs() {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * INT64_C(1000000000) + now.tv_nsec;
}

MediaClock::MediaClock(double speed, int64_t vsyncNs, std::function<void()> onStart)
    : mSpeed(speed), mVsyncNs(vsyncNs), mOnStart(std::move(onStart)) {}

void MediaClock::expect(size_t streams) {
    Mutex::Autolock lock(mLock);
    mStreams = streams;
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
    mOnStart();
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
    mOnStart();
}

void MediaClock::reset() {
    Mutex::Autolock lock(mLock);
    mReady = 0;
    mHasFirst = false;
    mStarted = false;
}

int64_t MediaClock::dueNs(int64_t timeUs) const {
    if (mSpeed <= 0) return 0;
    Mutex::Autolock lock(mLock);
    if (!mStarted) return kNotStarted;
    // In double: timestamps of damaged files lie anywhere in 64 bits.
    const double sinceNs = (static_cast<double>(timeUs) - static_cast<double>(mFirstUs)) * 1000;
    const double limitNs = 1e17;
    return mAnchorNs + static_cast<int64_t>(std::clamp(sinceNs / mSpeed, -limitNs, limitNs));
}

}  // namespace android::codecplay
