// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <mediaCodecLogger/base/Relaxed.h>
#include <mediaCodecLogger/base/WrappingArithmetic.h>

namespace android::logger {

/**
 * When a codec reached the points of its start and stop. Differences are taken as the stamps stand:
 * a phase that was never stamped gives an odd value, which the report shows rather than hides.
 */
struct StartupProfile {
    // P2: from `configure()` to the end of the codec's configuration.
    Relaxed<int64_t> mP2StartMs = 0;
    Relaxed<int64_t> mP2EndMs = 0;
    // P3: as the framework says.
    Relaxed<int64_t> mP3StartMs = 0;
    Relaxed<int64_t> mP3EndMs = 0;
    // P5: from the first input buffer that is not empty to the first picture, once a session.
    Relaxed<int64_t> mFirstInputTimeMs = 0;
    Relaxed<int64_t> mFirstFrameReadyMs = 0;
    Relaxed<int64_t> mFirstFrameRenderMs = 0;

    Relaxed<int64_t> mStopBeginMs = 0;
    Relaxed<int64_t> mStopEndMs = 0;

    bool awaitsFrameReady() const { return mFirstFrameReadyMs == 0 && mFirstInputTimeMs != 0; }
    bool awaitsFrameRender() const { return mFirstFrameRenderMs == 0 && mFirstInputTimeMs != 0; }

    int64_t p2Ms() const { return wrapSub(mP2EndMs, mP2StartMs); }
    int64_t p3Ms() const { return wrapSub(mP3EndMs, mP3StartMs); }
    int64_t firstFrameReadyMs() const { return wrapSub(mFirstFrameReadyMs, mFirstInputTimeMs); }
    int64_t firstFrameRenderMs() const { return wrapSub(mFirstFrameRenderMs, mFirstInputTimeMs); }
    int64_t sinceFirstFrameRenderMs(int64_t nowMs) const {
        return wrapSub(nowMs, mFirstFrameRenderMs);
    }
    int64_t stopMs() const { return wrapSub(mStopEndMs, mStopBeginMs); }
};

}  // namespace android::logger
