// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <mediaCodecLogger/base/Relaxed.h>
#include <mediaCodecLogger/base/WrappingArithmetic.h>

namespace android::logger {

/**
 * What a start and a flush stir up. Until the picture has run for half a second, repeated
 * timestamps and dropped frames are the player finding its position, not a fault.
 */
struct Settling {
    /** Settling ends this long after the first rendered frame. */
    static constexpr uint64_t kSettlingMs = 501;

    /** It lasts: repeats and drops do not count. */
    Relaxed<bool> mIgnoreRepeatCheck = false;
    /** When the first frame since start or flush was rendered; 0 before it and once settled. */
    Relaxed<int64_t> mFirstRenderAfterFlushMs = 0;
    /** The next timestamp is the first one. */
    Relaxed<bool> mFirstPtsAfterFlush = true;
    /** The next released frame is the first one. */
    Relaxed<bool> mAwaitingFirstRender = true;

    /** The first timestamp of the session. */
    void begin() { mIgnoreRepeatCheck = true; }

    /** A flush. */
    void restart() {
        mIgnoreRepeatCheck = true;
        mFirstRenderAfterFlushMs = 0;
        mFirstPtsAfterFlush = true;
        mAwaitingFirstRender = true;
    }

    /** Only then is it worth the clock read of `endIfDue()`. */
    bool mayEnd() const { return mFirstRenderAfterFlushMs != 0; }

    /** Unsigned: a render stamped after this clock read counts as long ago, as it always has. */
    void endIfDue(int64_t nowMs) {
        const int64_t settledMs = wrapSub(nowMs, mFirstRenderAfterFlushMs);
        if (static_cast<uint64_t>(settledMs) < kSettlingMs) return;
        mIgnoreRepeatCheck = false;
        mFirstRenderAfterFlushMs = 0;
    }
};

}  // namespace android::logger
