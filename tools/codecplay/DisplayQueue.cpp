// SPDX-License-Identifier: Apache-2.0
#include "DisplayQueue.h"

#include <algorithm>
#include <utility>

#include "MediaClock.h"

namespace android::codecplay {

DisplayQueue::DisplayQueue(size_t count, int64_t vsyncNs, bool withDisplay)
    : mCount(count), mVsyncNs(vsyncNs) {
    // The pictures are never looked at: a buffer is an identity, so the smallest one will do.
    for (size_t i = 0; i < count; ++i) {
        (withDisplay ? mFree : mReturned)
                .push_back(new GraphicBuffer(16, 16, 1, 1, GraphicBuffer::USAGE_HW_COMPOSER));
    }
}

bool DisplayQueue::acquire(Acquired* acquired) {
    acquired->startUs = monotonicNs() / 1000;
    Mutex::Autolock lock(mLock);
    for (;;) {
        if (mAborted) return false;
        acquired->dequeued = mReturned.empty();
        if (!mReturned.empty()) {
            acquired->buffer = std::move(mReturned.back());
            mReturned.pop_back();
            break;
        }
        if (!mFree.empty()) {
            acquired->buffer = std::move(mFree.back());
            mFree.pop_back();
            break;
        }
        // The display lets go of a buffer when it shows the next one.
        if (mQueued.size() < 2) {
            mChanged.wait(mLock);
            continue;
        }
        const int64_t waitNs = std::max(mQueued[1].shownAtNs, mBlockedUntilNs) - monotonicNs();
        if (waitNs > 0) {
            mChanged.waitRelative(mLock, waitNs);
            continue;
        }
        acquired->buffer = std::move(mQueued.front().buffer);
        mQueued.pop_front();
        break;
    }
    acquired->held = mCount - mFree.size() - mQueued.size();
    return true;
}

void DisplayQueue::queue(const sp<GraphicBuffer>& buffer, int64_t renderTimeNs) {
    Mutex::Autolock lock(mLock);
    int64_t shownAtNs = 0;
    if (mVsyncNs > 0) {
        const int64_t earliest = std::max({renderTimeNs, monotonicNs(), mLastShownAtNs});
        shownAtNs = (earliest + mVsyncNs - 1) / mVsyncNs * mVsyncNs;
    }
    if (mVsyncNs > 0 && shownAtNs == mLastShownAtNs) {
        // The picture before this one is replaced before anybody saw it.
        ++mStatistics.neverShown;
        mStatistics.longestRunNeverShown =
                std::max(mStatistics.longestRunNeverShown, ++mRunNeverShown);
    } else {
        ++mStatistics.shown;
        mRunNeverShown = 0;
    }
    mLastShownAtNs = shownAtNs;
    mQueued.push_back({buffer, shownAtNs});
    mChanged.broadcast();
}

void DisplayQueue::block(int64_t forNs) {
    Mutex::Autolock lock(mLock);
    mBlockedUntilNs = std::max(mBlockedUntilNs, monotonicNs() + forNs);
}

void DisplayQueue::cancel(const sp<GraphicBuffer>& buffer) {
    Mutex::Autolock lock(mLock);
    mReturned.push_back(buffer);
    mChanged.broadcast();
}

void DisplayQueue::abort() {
    Mutex::Autolock lock(mLock);
    mAborted = true;
    mChanged.broadcast();
}

void DisplayQueue::resume() {
    Mutex::Autolock lock(mLock);
    mAborted = false;
}

DisplayQueue::Statistics DisplayQueue::takeStatistics() {
    Mutex::Autolock lock(mLock);
    mRunNeverShown = 0;
    return std::exchange(mStatistics, {});
}

int64_t DisplayQueue::nearestVsync(int64_t timeNs) const {
    if (mVsyncNs <= 0) return timeNs;
    return (timeNs + mVsyncNs / 2) / mVsyncNs * mVsyncNs;
}

}  // namespace android::codecplay
