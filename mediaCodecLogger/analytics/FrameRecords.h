// SPDX-License-Identifier: Apache-2.0
// What the frame analytics keep of each frame and of each buffer on its way to the display.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <utils/TypeHelpers.h>

namespace android {

/**
 * The life of one frame, from its input buffer to its render or drop. Times are CLOCK_MONOTONIC in
 * milliseconds unless their names say otherwise; the stamps come in the order of the comments.
 */
struct AnalyticTsInfo {
    /** Media timestamp in microseconds; the key by which every later event finds the record. */
    int64_t mTimeUs = 0;
    /** 2. The input buffer was queued, any decryption done. */
    int64_t mQueueTimeMs = 0;
    /** 5. The output buffer was handed to the client. */
    int64_t mOutputTimeMs = 0;
    /** 6. Time at which the frame is to be shown, as the client asked. */
    int64_t mRenderTimeMs = 0;
    /** 6. The client asked for it. */
    int64_t mRenderCallTimeMs = 0;
    /** 4. The component reported the frame decoded. */
    int64_t mCodecOutTimeMs = 0;
    /** 3. The buffer was handed to the component; 0 while it was not. */
    int64_t mCodecInTimeMs = 0;
    /** 3. Frames inside the component at that moment. */
    int64_t mFramesInCodec = 0;
    /** Number of the frame in the process, from 1. */
    int64_t mFrameNo = 0;
    /** 1. The input buffer was about to be queued, before any decryption. */
    int64_t mPreQueueTimeMs = 0;
};

/** A buffer that is queued to the display surface and has not come back yet. */
struct QueueBufInfo {
    /** Display time asked for, nanoseconds; 0 for none. */
    int64_t mRenderTimeNs = 0;
    /** The queue call began, monotonic milliseconds. */
    int64_t mQueueStartMs = 0;
    /** The queue call was recorded, monotonic milliseconds. */
    int64_t mQueueEndMs = 0;
    /** Identity of the graphic buffer; compared, never dereferenced. */
    const void* mBuffer = nullptr;
};

/** A buffer that came back from the display surface for the component to fill. */
struct FillBufInfo {
    /** The dequeue was recorded, monotonic milliseconds. */
    int64_t mDequeueTimeMs = 0;
    /** `mQueueStartMs` of the newest queued buffer at that moment, -1 when there was none. */
    int64_t mLastQueueStartMs = 0;
    /** Buffers that the component held, as the surface path counts them. */
    size_t mOwnedByComponent = 0;
};

// Records are plain data: vectors of them are moved as memory.
ANDROID_TRIVIAL_DTOR_TRAIT(AnalyticTsInfo)
ANDROID_TRIVIAL_COPY_TRAIT(AnalyticTsInfo)
ANDROID_TRIVIAL_MOVE_TRAIT(AnalyticTsInfo)
ANDROID_TRIVIAL_DTOR_TRAIT(QueueBufInfo)
ANDROID_TRIVIAL_COPY_TRAIT(QueueBufInfo)
ANDROID_TRIVIAL_MOVE_TRAIT(QueueBufInfo)
ANDROID_TRIVIAL_DTOR_TRAIT(FillBufInfo)
ANDROID_TRIVIAL_COPY_TRAIT(FillBufInfo)
ANDROID_TRIVIAL_MOVE_TRAIT(FillBufInfo)

}  // namespace android
