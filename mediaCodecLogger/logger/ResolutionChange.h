// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <algorithm>

#include <mediaCodecLogger/base/Relaxed.h>
#include <mediaCodecLogger/logger/Resolution.h>

namespace android::logger {

/**
 * A change of the output format whose first frame has not come yet, and which classes the stream
 * has climbed to. Every change is armed, also one that keeps the size: the gap it tears counts as
 * well.
 */
struct ResolutionChange {
    enum class Rampup { NONE, FHD, UHD };

    Relaxed<int32_t> mPrevWidth = 0;
    Relaxed<int32_t> mPrevHeight = 0;
    Relaxed<bool> mResChangePending = false;
    Relaxed<bool> mFhdRampupLogged = false;
    Relaxed<bool> mUhdRampupLogged = false;

    void arm(int32_t prevWidth, int32_t prevHeight) {
        mPrevWidth = prevWidth;
        mPrevHeight = prevHeight;
        mResChangePending = true;
    }

    /**
     * The class that the stream has reached with this size, of either orientation. Each is told
     * once a session, and FHD no more once UHD was.
     */
    Rampup takeRampup(uint32_t width, uint32_t height) {
        const ResolutionType resolution = resolutionOf(std::max(width, height));
        if (mUhdRampupLogged) return Rampup::NONE;
        if (resolution == RES_UHD) {
            mUhdRampupLogged = true;
            return Rampup::UHD;
        }
        if (resolution != RES_FHD || mFhdRampupLogged) return Rampup::NONE;
        mFhdRampupLogged = true;
        return Rampup::FHD;
    }
};

}  // namespace android::logger
