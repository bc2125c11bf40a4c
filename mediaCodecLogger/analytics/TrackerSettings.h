// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

namespace android::analytics {

/** What the properties say when a tracker is made; times in milliseconds. */
struct TrackerSettings {
    /** Reads the properties. */
    TrackerSettings();

    /** Whether the debug mask has one of the bits. */
    bool debugs(int32_t bits) const { return (mDebug & bits) != 0; }

    /** DebugBits. */
    int32_t mDebug;
    int32_t mMaxQueueSize;
    int32_t mMaxDequeueTime;
    int32_t mMaxQueueTime;
    int32_t mMaxMsgDelayTime;
    int32_t mMaxDecodeTime;
    int32_t mVsyncPeriod;
    /** Nothing is held against it: what decryption took is logged as it is. */
    int32_t mMaxDecryptTime;
    int32_t mMaxErrorFrame;
};

/** How early a buffer may be queued to the display, which may change with each allocation. */
int32_t readMaxEarlyTime();

}  // namespace android::analytics
