// SPDX-License-Identifier: Apache-2.0
#include <mediaCodecLogger/logger/DropRuns.h>

namespace android::logger {

void DropRuns::close() {
    const uint32_t length = mConsecutiveFramesDropped;
    mFramesDropped += length;
    const struct {
        uint32_t size;
        Relaxed<uint32_t>& count;
    } kPieces[] = {{10, mTenConsecutiveDrops},
                   {5, mFiveConsecutiveDrops},
                   {2, mTwoConsecutiveDrops},
                   {1, mOneConsecutiveDrops}};
    uint32_t rest = length;
    for (const auto& [size, count] : kPieces) {
        count += rest / size;
        rest %= size;
    }
    raiseLongest(length);
    mInDropRun = false;
    mConsecutiveFramesDropped = 0;
    mDropRunStartMs = 0;
}

uint32_t DropRuns::addDroppedByDisplay(uint32_t rendered, uint32_t shown) {
    if (shown == 0 || rendered <= shown) return 0;
    mDisplayFramesDropped = rendered - shown;
    mFramesDropped += rendered - shown;
    return rendered - shown;
}

}  // namespace android::logger
