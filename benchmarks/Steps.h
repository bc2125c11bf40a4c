// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <benchmarks/Stream.h>

namespace android::bench {

/** One event of a frame, to be measured on its own. */
struct Step {
    const char* name;
    void (Stream::*event)(int64_t frame);
};

/**
 * Every event of a frame in the order in which a frame meets them, so that running all steps for
 * the same frames brings a stream back to where it was.
 */
inline constexpr Step kOmxSteps[] = {
        {"queueInputBuffer_pre", &Stream::announce},
        {"logInputBufferBitrate", &Stream::queue},
        {"updateOmxInput", &Stream::omxInput},
        {"updateOmxOutput", &Stream::omxOutput},
        {"updateACodecOutput", &Stream::frameBytes},
        {"updatePTSTime", &Stream::output},
        {"updateFrameDropCounters rendered", &Stream::release},
        {"resetConsecutiveFrameDropFlag", &Stream::render},
        {"updateQueueBuffer", &Stream::toDisplay},
        {"updateDequeueBuffer", &Stream::fromDisplay},
};

/** The first steps put a frame in, the others put one out. */
inline constexpr size_t kOmxInputSteps = 3;

/** What differs with Codec2, and with a frame that is dropped. */
inline constexpr Step kCodec2Steps[] = {
        {"queueInputBuffer_pre", &Stream::announce},
        {"logInputBufferBitrate", &Stream::queue},
        {"updateC2Output", &Stream::codec2Output},
        {"updatePTSTime", &Stream::output},
        {"updateFrameDropCounters dropped", &Stream::drop},
};
inline constexpr size_t kCodec2InputSteps = 2;

}  // namespace android::bench
