// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <mediaCodecLogger/base/Relaxed.h>

namespace android::logger {

/** The timestamps of the last input buffers, to tell whether a repeated output was queued twice. */
struct InputHistory {
    static constexpr uint32_t kSize = 20;

    Relaxed<uint32_t> mInputPtsCount = 0;
    Relaxed<int64_t> mInputPtsHistory[kSize];

    void add(int64_t timeUs) {
        mInputPtsHistory[mInputPtsCount % kSize] = timeUs;
        ++mInputPtsCount;
    }

    int occurrencesOf(int64_t timeUs) const {
        int occurrences = 0;
        for (const auto& inputPts : mInputPtsHistory) occurrences += inputPts == timeUs;
        return occurrences;
    }

    /** A new session writes from the beginning; what the old one left stays until overwritten. */
    void restart() { mInputPtsCount = 0; }
};

}  // namespace android::logger
