// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <mediaCodecLogger/base/Relaxed.h>

namespace android::logger {

/** Whether the audio that a codec puts out carries Dolby Atmos; the audio system is asked once. */
struct Atmos {
    Relaxed<bool> mAtmosChecked = false;
    Relaxed<int32_t> mAtmosDetected = 0;

    /** @param isRaw only decoded audio (PCM) passes the part of the audio system that knows */
    bool isDetected(bool isRaw);
};

}  // namespace android::logger
