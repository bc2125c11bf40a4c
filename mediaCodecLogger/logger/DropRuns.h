// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <mediaCodecLogger/base/Relaxed.h>
#include <mediaCodecLogger/base/WrappingArithmetic.h>

namespace android::logger {

/**
 * Dropped frames. What a viewer notices is how many go missing in a row, so drops are gathered into
 * runs, and a run counts when the next frame is rendered. Two more sources report later and in
 * total: a tunnel, and the display, which drops what the codec has rendered.
 */
struct DropRuns {
    /** A run younger than this at a flush is an effect of the seek, not a fault. */
    static constexpr uint64_t kMinFlushedRunMs = 300;

    /** The total is logged whenever it is a multiple of this. */
    static constexpr uint32_t kLogInterval = 10;
    /** The longest run is told at the head of warning lines from this length on. */
    static constexpr uint32_t kWarnedRun = 10;

    /** A run is open. */
    Relaxed<bool> mInDropRun = false;
    Relaxed<int64_t> mDropRunStartMs = 0;
    /** Length of the open run. */
    Relaxed<uint32_t> mConsecutiveFramesDropped = 0;
    /** From every source. */
    Relaxed<uint32_t> mFramesDropped = 0;
    Relaxed<uint32_t> mMaxConsecutiveFramesDropped = 0;
    // Pieces of the closed runs by their length.
    Relaxed<uint32_t> mOneConsecutiveDrops = 0;
    Relaxed<uint32_t> mTwoConsecutiveDrops = 0;
    Relaxed<uint32_t> mFiveConsecutiveDrops = 0;
    Relaxed<uint32_t> mTenConsecutiveDrops = 0;
    /** The display's share, by its last report. */
    Relaxed<uint32_t> mDisplayFramesDropped = 0;

    /** A dropped frame. `clock` is asked only for the first one of a run. */
    template <typename Clock>
    void add(const Clock& clock) {
        if (!mInDropRun) mDropRunStartMs = clock();
        ++mConsecutiveFramesDropped;
        mInDropRun = true;
    }

    /** Before `close()`: at a flush, frames dropped since shortly before it do not count. */
    void forgiveIfYoung(int64_t nowMs) {
        const uint64_t runMs = wrapSub(nowMs, mDropRunStartMs);
        if (runMs < kMinFlushedRunMs) mConsecutiveFramesDropped = 0;
    }

    /** The total, had the open run been closed. */
    uint32_t totalWithRun() const { return mFramesDropped + mConsecutiveFramesDropped; }

    /** Also a total of 0, which a flush may leave. */
    static bool isLogged(uint32_t total) { return total % kLogInterval == 0; }

    /**
     * Adds the open run, of whatever length, to the total and to the pieces it is made of, the
     * largest first: 17 frames are a ten, a five and a two.
     */
    void close();

    void addDroppedInTunnel(uint32_t count) { mFramesDropped += count; }

    /**
     * The display has shown `shown` of `rendered` frames, and dropped the others. The total grows
     * with every such report, the display's share is that of the last one.
     *
     * @return how many it dropped; 0 for a report that says nothing
     */
    uint32_t addDroppedByDisplay(uint32_t rendered, uint32_t shown);

    /** The component saw a run of this length. */
    void raiseLongest(uint32_t length) {
        if (length > mMaxConsecutiveFramesDropped) mMaxConsecutiveFramesDropped = length;
    }
};

}  // namespace android::logger
