// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include "reading/LogLine.h"

namespace android::codecreport {

/**
 * One even timeline for a log whose clock may jump. The timeline is the log's own clock as it
 * stood at the beginning. The device's monotonic clock, which many lines of the library carry,
 * shows jumps and places these lines to the millisecond even where the log shows seconds; without
 * it only a jump backwards is seen, and the timeline goes on without a gap. A jump forward in the
 * midst of lines with monotonic times is held back until the next of them tells whether it is one.
 */
class LogClock {
  public:
    /** Microseconds on the timeline of a line; one without a time is as late as the last. */
    int64_t place(const LogLine& line);

    /**
     * The line that was placed last shows a monotonic time that was read just before it was
     * written.
     */
    int64_t anchor(int64_t monotonicMs);

    /** The timeline of a monotonic time; before the first anchor both run alike. */
    int64_t fromMonotonic(int64_t monotonicMs) const { return monotonicMs * 1000 + mOffsetUs; }

    bool isAnchored() const { return mAnchored; }
    uint64_t jumps() const { return mJumps; }
    uint64_t reboots() const { return mReboots; }

  private:
    bool isSuspicious(int64_t timeUs) const;

    bool mStarted = false;
    bool mAnchored = false;
    /** The correction was guessed when the clock went back; the next anchor knows. */
    bool mGuessed = false;
    /** Lines in a row that were held back, and where the log puts the last one. */
    int mHeld = 0;
    int64_t mPlacedUs = 0;
    int64_t mLastAnchorUs = 0;
    int64_t mCorrectionUs = 0;
    int64_t mOffsetUs = 0;
    int64_t mLastUs = 0;
    int64_t mLastMonotonicMs = 0;
    int64_t mResolutionUs = 1000;
    bool mHasTime = false;
    uint64_t mJumps = 0;
    uint64_t mReboots = 0;
};

}  // namespace android::codecreport
