// SPDX-License-Identifier: Apache-2.0
#include "reading/LogClock.h"

#include <algorithm>

namespace android::codecreport {

namespace {

// Lines of several threads cross by milliseconds; the log daemon may sort them by some more.
constexpr int64_t kBackwardsUs = 2'000'000;
// In the midst of lines with monotonic times silence of more is a jump, unless they stay away.
constexpr int64_t kForwardUs = 10'000'000;
constexpr int64_t kDenseUs = 2'000'000;
constexpr int kMaxHeld = 200;
// A line is written after the time that it shows was read: early is a jump, late mostly a wait.
constexpr int64_t kEarlyUs = 200'000;
constexpr int64_t kLateUs = 1'000'000;
// Stamps of several threads cross as well.
constexpr int64_t kRebootMs = 10'000;

}  // namespace

bool LogClock::isSuspicious(int64_t timeUs) const {
    return mAnchored && timeUs > mLastUs + kForwardUs && mLastUs < mLastAnchorUs + kDenseUs &&
           mHeld < kMaxHeld;
}

int64_t LogClock::place(const LogLine& line) {
    mHasTime = line.hasTime;
    if (!line.hasTime) return mLastUs;
    mResolutionUs = line.resolutionUs;
    int64_t time = line.timeUs + mCorrectionUs;
    if (mStarted && time < mLastUs - kBackwardsUs) {
        mCorrectionUs += mLastUs - time;
        time = mLastUs;
        mGuessed = true;
        ++mJumps;
    }
    mPlacedUs = time;
    if (isSuspicious(time)) {
        ++mHeld;
        return mLastUs;
    }
    mHeld = 0;
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
        if (mHasTime) mLastUs = std::max(mLastUs, mPlacedUs);
        if (mHasTime || mStarted) mOffsetUs = mLastUs - monotonicMs * 1000;
        mAnchored = true;
        mGuessed = false;
    }
    mLastMonotonicMs = monotonicMs;
    const int64_t expected = fromMonotonic(monotonicMs);
    const int64_t slack = mResolutionUs > 1000 ? mResolutionUs : 0;
    const int64_t late = mPlacedUs - expected;
    if (mHasTime && (mGuessed || late < -kEarlyUs - slack || late > kLateUs + slack)) {
        mCorrectionUs -= late;
        mLastUs = expected;
        if (!mGuessed) ++mJumps;
        mGuessed = false;
    }
    mHeld = 0;
    mStarted = true;
    mLastUs = std::max(mLastUs, expected);
    mLastAnchorUs = mLastUs;
    return expected;
}

}  // namespace android::codecreport
