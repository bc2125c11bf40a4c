// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

namespace android::test {

/**
 * Freezes CLOCK_MONOTONIC of the whole process, inside every library, while it exists; other clocks
 * go on. At most one at a time. Thread-safe.
 *
 * std::chrono::steady_clock stands still as well, so a timed wait (condition_variable::wait_for)
 * never times out.
 */
class FakeClock {
  public:
    explicit FakeClock(int64_t startMs = 0);
    ~FakeClock();

    void advanceMs(int64_t ms) { advanceUs(ms * 1000); }
    void advanceUs(int64_t us);
    /** Moves it to any second that a timespec can hold, which nowUs() does not follow. */
    void leapTo(int64_t seconds);
    int64_t nowUs() const;

    /** How often the clock was read since its creation, not counting nowUs(). */
    int64_t reads() const;
};

}  // namespace android::test
