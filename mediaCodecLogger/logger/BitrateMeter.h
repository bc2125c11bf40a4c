// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <mediaCodecLogger/base/Relaxed.h>

namespace android::logger {

/**
 * The bitrate of the input, measured over intervals of a little more than five seconds. An interval
 * opens with a buffer and closes with one, so a pause makes it longer and none stays half empty.
 */
struct BitrateMeter {
    /** An interval is closed by the first buffer after more than five seconds. */
    static constexpr uint64_t kIntervalMs = 5001;

    Relaxed<uint64_t> mIntervalBytes = 0;
    /** 0 while none is open. */
    Relaxed<uint64_t> mIntervalStartMs = 0;
    // Of the closed intervals.
    Relaxed<uint64_t> mTotalInputBytes = 0;
    Relaxed<uint64_t> mTotalIntervalMs = 0;
    /** Of the last closed one; bytes a millisecond, times 8, are kbit/s. */
    Relaxed<uint64_t> mBitrateKbps = 0;

    /** A buffer was queued. True when it closed an interval: `mBitrateKbps` is new. */
    bool add(uint64_t bytes, int64_t nowMs) {
        mIntervalBytes += bytes;
        if (mIntervalStartMs == 0) mIntervalStartMs = nowMs;
        const uint64_t elapsedMs = static_cast<uint64_t>(nowMs) - mIntervalStartMs;
        if (elapsedMs < kIntervalMs) return false;
        mBitrateKbps = mIntervalBytes * 8 / elapsedMs;
        mTotalIntervalMs += elapsedMs;
        mTotalInputBytes += mIntervalBytes;
        mIntervalBytes = 0;
        mIntervalStartMs = 0;
        return true;
    }
};

}  // namespace android::logger
