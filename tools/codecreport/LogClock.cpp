// SPDX-License-Identifier: Apache-2.0
#include "LogClock.h"

#include <algorithm>

namespace android::codecreport {

namespace {

// Lines of several threads cross by milliseconds; the log daemon may sort them by some more.
constexpr int64_t kBackwardsUs = 2'000'000;
// A line is written after the time that it shows was read: early is a jump, late mostly a wait.
constexpr int64_t kEarlyUs = 200'000;
constexpr int64_t kLateUs = 1'000'000;
// Stamps of several threads cross as well.
constexpr int64_t kRebootMs = 10'000;

}  // namespace

int64_t LogClock::place(const LogLine& line) {
    mHasTime = line.hasTime;
    if (!line.hasTime) return mLastUs;
    mResolutionUs = line.resolutionUs;
    int64_t time = line.timeUs + mCorrectionUs;
    if (mStarted && time < mLastUs - kBackwardsUs) {
        mCorrectionUs += mLastUs - time;
        time = mLastUs;
        ++mJumps;
    }
    // Within one shown second the order of the lines is all that is known.
    if (mStarted && line.resolutionUs > 1000) time = std::max(time, mLastUs);
    mStarted = true;
    mLastUs = std::max(mLastUs, time);
    return time;
}

int64_t LogClock::anchor(int64_t monotonicMs) {
    if (mAnchored && monotonicMs < mLastMonotonicMs - kRebootMs) {
        mAnchored = false;
        ++mReboots;
    }
    if (!mAnchored) {
        // Without times in the log the monotonic clock is the timeline.
        if (mHasTime || mStarted) mOffsetUs = mLastUs - monotonicMs * 1000;
        mAnchored = true;
    }
    mLastMonotonicMs = monotonicMs;
    const int64_t expected = fromMonotonic(monotonicMs);
    const int64_t slack = mResolutionUs > 1000 ? mResolutionUs : 0;
    const int64_t late = mLastUs - expected;
    if (mHasTime && (late < -kEarlyUs - slack || late > kLateUs + slack)) {
        mCorrectionUs -= late;
        mLastUs = expected;
        ++mJumps;
    }
    mStarted = true;
    mLastUs = std::max(mLastUs, expected);
    return expected;
}

}  // namespace android::codecreport
