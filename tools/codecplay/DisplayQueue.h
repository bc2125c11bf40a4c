// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <deque>
#include <vector>

#include <ui/GraphicBuffer.h>
#include <utils/Condition.h>
#include <utils/Mutex.h>

namespace android::codecplay {

/**
 * The buffers of one output: a queue to a display that shows at most one new picture a refresh.
 *
 * A buffer is free, held by the component's side (component, framework or application), or with
 * the display. The display takes a queued buffer at the first refresh that is not before its render
 * time, and gives back the buffer shown until then; of two that fall on the same refresh the
 * earlier is never shown. So a full queue holds the component back, as on a device. The refreshes
 * are the multiples of the period on CLOCK_MONOTONIC and need no thread. Thread-safe.
 */
class DisplayQueue {
  public:
    /** One acquired buffer, and how it was come by. */
    struct Acquired {
        sp<GraphicBuffer> buffer;
        /** It came back from the display; otherwise it never left the component's side. */
        bool dequeued = false;
        /** When the dequeue call began, CLOCK_MONOTONIC. */
        int64_t startUs = 0;
        /** Buffers on the component's side, this one included. */
        size_t held = 0;
    };

    /** What became of the queued pictures since the last takeStatistics(). */
    struct Statistics {
        uint64_t shown = 0;
        uint64_t neverShown = 0;
        uint64_t longestRunNeverShown = 0;
    };

    /**
     * @param count number of buffers, at least 2
     * @param vsyncNs refresh period; 0 for a display that shows each picture as it comes
     * @param withDisplay false for output that no display gets: all buffers stay with the component
     */
    DisplayQueue(size_t count, int64_t vsyncNs, bool withDisplay);

    /** Blocks until a buffer is to be had; false after abort(). */
    bool acquire(Acquired* acquired);
    /** Sends a held buffer to the display, to be shown at renderTimeNs. */
    void queue(const sp<GraphicBuffer>& buffer, int64_t renderTimeNs);
    /** The display gives no buffer back for so long. */
    void block(int64_t forNs);
    /** Gives a held buffer back to the component unshown. */
    void cancel(const sp<GraphicBuffer>& buffer);

    /** Makes acquire() fail until resume(). */
    void abort();
    void resume();

    Statistics takeStatistics();

    /** The refresh nearest to a time; the time itself where there are no refreshes. */
    int64_t nearestVsync(int64_t timeNs) const;
    int64_t vsyncNs() const { return mVsyncNs; }

    /** Buffers that a display keeps: one shown, one to come. */
    static constexpr size_t kMinUndequeued = 2;
    size_t count() const { return mCount; }

  private:
    struct Queued {
        sp<GraphicBuffer> buffer;
        int64_t shownAtNs;
    };

    const size_t mCount;
    const int64_t mVsyncNs;

    Mutex mLock;
    Condition mChanged;
    bool mAborted GUARDED_BY(mLock) = false;
    std::vector<sp<GraphicBuffer>> mFree GUARDED_BY(mLock);
    /** With the component, ready to be filled. */
    std::vector<sp<GraphicBuffer>> mReturned GUARDED_BY(mLock);
    /** With the display, the shown one first. */
    std::deque<Queued> mQueued GUARDED_BY(mLock);
    int64_t mLastShownAtNs GUARDED_BY(mLock) = -1;
    int64_t mBlockedUntilNs GUARDED_BY(mLock) = 0;
    Statistics mStatistics GUARDED_BY(mLock);
    uint64_t mRunNeverShown GUARDED_BY(mLock) = 0;
};

}  // namespace android::codecplay
