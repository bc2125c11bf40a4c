// SPDX-License-Identifier: Apache-2.0
#include <mediaCodecLogger/logger/Atmos.h>

#include <media/AudioParameter.h>
#include <media/AudioSystem.h>

namespace android::logger {

bool Atmos::isDetected(bool isRaw) {
    if (mAtmosChecked) return mAtmosDetected != 0;
    mAtmosChecked = true;
    if (!isRaw) {
        mAtmosDetected = 0;
        return false;
    }
    const String8 key("atmos_detected");
    const AudioParameter reply(AudioSystem::getParameters(0 /* ioHandle */, key));
    int detected = mAtmosDetected;
    const status_t result = reply.getInt(key, detected);
    // A failed read may have left a number all the same, which later answers go by.
    mAtmosDetected = detected;
    return result == OK && detected != 0;
}

}  // namespace android::logger
