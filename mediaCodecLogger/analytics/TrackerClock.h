// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <mediaCodecLogger/base/CheckedArithmetic.h>
#include <mediaCodecLogger/base/Clock.h>

namespace android::analytics {

// Records are stamped in milliseconds. Media timestamps and callers' clocks are microseconds,
// render times nanoseconds; both are truncated towards zero.

constexpr int64_t usToMs(int64_t us) {
    return us / 1000;
}

constexpr int64_t nsToMs(int64_t ns) {
    return ns / 1000000;
}

/** CLOCK_MONOTONIC. */
inline int64_t monotonicMs() {
    return readClockMs([](int64_t seconds, int64_t nanoseconds) {
        return checkedAdd(checkedMul(seconds, 1000), nsToMs(nanoseconds));
    });
}

}  // namespace android::analytics
