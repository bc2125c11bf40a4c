// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <mediaCodecLogger/base/Relaxed.h>
#include <mediaCodecLogger/base/WrappingArithmetic.h>

namespace android::logger {

/**
 * The stream's frame rate from its input timestamps: how far those of 240 buffers spread. Buffers
 * are queued in decoding order, so that of the timestamps only the smallest and the largest count.
 */
struct FramerateSample {
    static constexpr int64_t kSize = 240;

    /** The last estimate; 0 before the first. */
    Relaxed<float> mStreamFramerate = 0.0f;
    Relaxed<int64_t> mInputMinPts = 0;
    Relaxed<int64_t> mInputMaxPts = 0;
    Relaxed<int64_t> mInputPtsSampleCount = 0;

    void add(int64_t timeUs) {
        // The first buffer sets only the minimum: the largest timestamp counts from 0 on.
        if (mInputPtsSampleCount == 0 || timeUs < mInputMinPts) {
            mInputMinPts = timeUs;
        } else if (timeUs > mInputMaxPts) {
            mInputMaxPts = timeUs;
        }
        mInputPtsSampleCount = mInputPtsSampleCount + 1;
        if (mInputPtsSampleCount < kSize) return;
        constexpr float kIntervalsUs = (kSize - 1) * 1000000.0f;
        mStreamFramerate = kIntervalsUs / static_cast<float>(wrapSub(mInputMaxPts, mInputMinPts));
        mInputPtsSampleCount = 0;
        mInputMinPts = 0;
        mInputMaxPts = 0;
    }
};

}  // namespace android::logger
