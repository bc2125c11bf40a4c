// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>
#include <time.h>

namespace android {

/**
 * One read of CLOCK_MONOTONIC in whole milliseconds. `toMs` makes them of seconds and nanoseconds,
 * so that whoever reads the clock says what becomes of a time beyond 64 bits.
 */
template <typename ToMs>
int64_t readClockMs(const ToMs& toMs) {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return toMs(now.tv_sec, now.tv_nsec);
}

}  // namespace android
