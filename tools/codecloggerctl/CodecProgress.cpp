// SPDX-License-Identifier: Apache-2.0
#include "CodecProgress.h"

namespace android::codecloggerctl {

void CodecProgress::Counter::update(int64_t value) {
    const int64_t counted = value >= last ? value - last : value;
    // What was counted before the first look was not counted in the last interval.
    count.recent = started ? counted : 0;
    count.total += counted;
    last = value;
    started = true;
}

void CodecProgress::update(const CodecInfo& codec) {
    mLate.update(codec.entry.lateOutputs);
    if (codec.answer != Answer::GIVEN) {
        mFrames.count.recent = 0;
        mDropped.count.recent = 0;
        return;
    }
    mFrames.update(codec.frames);
    mDropped.update(codec.framesDropped);
}

}  // namespace android::codecloggerctl
