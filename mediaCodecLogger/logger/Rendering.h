// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <mediaCodecLogger/base/Relaxed.h>
#include <mediaCodecLogger/base/WrappingArithmetic.h>

namespace android::logger {

/** Rendered frames, and how long ago the last one was. */
struct Rendering {
    /** Output that comes this long after the output before it may be a resume after a pause. */
    static constexpr int64_t kDelayedOutputMs = 1000;
    static constexpr int64_t kNoOutput = -1;

    Relaxed<uint32_t> mRenderedFrameCount = 0;
    /** Of the frames that the framework reports as rendered; starts a resolution change's gap. */
    Relaxed<int64_t> mLastRenderTimeMs = 0;
    /** Of the buffers released to be rendered. */
    Relaxed<int64_t> mLastOutputTimeMs = kNoOutput;

    /** Before the first output the answer is `nowMs` + 1, which the service knows. */
    int64_t sinceLastOutputMs(int64_t nowMs) const { return wrapSub(nowMs, mLastOutputTimeMs); }

    int64_t sinceLastRenderMs(int64_t nowMs) const { return wrapSub(nowMs, mLastRenderTimeMs); }

    bool isDelayed(int64_t nowMs) const {
        return mLastOutputTimeMs != kNoOutput && sinceLastOutputMs(nowMs) >= kDelayedOutputMs;
    }
};

}  // namespace android::logger
