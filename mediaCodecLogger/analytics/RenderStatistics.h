// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <algorithm>

#include <mediaCodecLogger/base/CheckedArithmetic.h>

namespace android::analytics {

struct MinMaxSum {
    /** No value yet. The statistics line tells it from a minimum of -1, which a lead may be. */
    static constexpr int64_t kNoMinimum = UINT32_MAX;

    int64_t min = kNoMinimum;
    int64_t max = 0;
    int64_t sum = 0;

    void fold(int64_t value) {
        min = std::min(min, value);
        max = std::max(max, value);
        sum = checkedAdd(sum, value);
    }

    /** The minimum as the statistics line shows it, in units of `unit`; -1 for none. */
    int64_t shownMin(int64_t unit) const { return min == kNoMinimum ? -1 : min / unit; }
};

/** How evenly frames were rendered since the last statistics line. */
struct RenderStatistics {
    /** From frame to frame, by the render times asked for; milliseconds. */
    MinMaxSum renderInterval;
    /** From frame to frame, by the media timestamps; microseconds. */
    MinMaxSum tsStep;
    /** From the report of a render to the render time asked for; milliseconds. */
    MinMaxSum renderLead;
    uint32_t renderCount = 0;

    // Averages: of the intervals and steps there is one less than frames.

    /** In microseconds, and by the clock: the render times that were asked for may be anything. */
    int64_t averageInterval(int64_t elapsedMs) const {
        return renderCount >= 2 ? checkedMul(elapsedMs, 1000) / (renderCount - 1) : 0;
    }
    int64_t averageStep() const { return renderCount >= 2 ? tsStep.sum / (renderCount - 1) : 0; }
    int64_t averageLead() const { return renderCount > 0 ? renderLead.sum / renderCount : 0; }
};

}  // namespace android::analytics
