// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <mediaCodecLogger/base/Relaxed.h>
#include <mediaCodecLogger/base/WrappingArithmetic.h>

namespace android::logger {

/** Frames put out with the timestamp of the one before: the picture stands, or the stream errs. */
struct RepeatedTimestamps {
    /** With throttling, from this many repeats on only each such multiple is logged. */
    static constexpr int kLogInterval = 20;
    /**
     * The timestamp was queued twice of late. More often means that the stream itself repeats it,
     * and that is not reported.
     */
    static constexpr int kReportedInputOccurrences = 2;
    /** Told at the head of warning lines from this count on; one more than drops, as ever. */
    static constexpr int32_t kWarnedCount = 11;

    Relaxed<int32_t> mRepeatPtsCount = 0;
    Relaxed<int32_t> mRepeatInputPtsCount = 0;

    void addOutput(uint64_t frames) { mRepeatPtsCount = wrapAdd32(mRepeatPtsCount, frames); }
    void addInput() { mRepeatInputPtsCount = wrapAdd32(mRepeatInputPtsCount, 1); }

    /** Of a repeat with so many before it. */
    static bool isLogged(int before, bool throttled) {
        return !throttled || before < kLogInterval || before % kLogInterval == 0;
    }
};

}  // namespace android::logger
