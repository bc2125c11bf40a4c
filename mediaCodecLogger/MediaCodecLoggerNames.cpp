// SPDX-License-Identifier: Apache-2.0
// The texts that log lines, report keys and records start with.
#include <limits>
#include <memory>

#include <stdio.h>

#include <mediaCodecLogger/LoggerSupport.h>
#include <mediaCodecLogger/MediaCodecLogger.h>

namespace android {

// A long drop run raises the marker from 10 on, repeated timestamps from 11 on.
void MediaCodecLogger::getEmbeddedWarnings(AString& out) {
    const struct {
        const char* name;
        int32_t count;
        bool raised;
    } kWarnings[] = {
            {"mcfd", static_cast<int32_t>(mMaxConsecutiveFramesDropped),
             mMaxConsecutiveFramesDropped >= 10},
            {"rot", mRepeatPtsCount, mRepeatPtsCount >= 11},
            {"rit", mRepeatInputPtsCount, mRepeatInputPtsCount >= 11},
    };
    bool marked = false;
    for (const auto& warning : kWarnings) {
        if (!warning.raised) continue;
        if (!marked) out.append("W.");
        marked = true;
        out.append(warning.name);
        out.append(warning.count);
        out.append(".");
    }
    out.append(mPid);
    if (mScreenSizeType == RES_UHD) out.append(".4K");
    out.append(!mIsSecure ? "." : mSecureMemoryUsed ? ".secure." : ".secureSW.");
    out.append(mCodecTag);
    if (tagHas(TAG_AUDIO) && isAtmosDetected()) out.append(".atmos");
}

AString MediaCodecLogger::embeddedWarnings() {
    AString warnings;
    getEmbeddedWarnings(warnings);
    return warnings;
}

AString MediaCodecLogger::metricPrefix() const {
    AString prefix(mPackageName);
    if (mScreenSizeType == RES_UHD) prefix.append(".4K");
    prefix.append(mIsSecure ? ".secure." : ".");
    prefix.append(mCodecTag);
    return prefix;
}

AString MediaCodecLogger::codecDescriptor(const char* afterFormat) const {
    AString descriptor(tagHas(TAG_HW) ? "HW_" : tagHas(TAG_SW) ? "SW_" : "VND_");
    descriptor.append(mCodecFormat);
    descriptor.append(afterFormat);
    if (tagHas(TAG_VIDEO)) {
        if (mScreenSizeType == RES_UHD) descriptor.append("_4K");
        if (mIsSecure) descriptor.append("_secure");
        if (isTunneled()) descriptor.append("_tunneled");
    }
    return descriptor;
}

AString MediaCodecLogger::getFramedropMeta() {
    AString meta(tagHas(TAG_HW) ? "HW" : "SW");
    if (mIsSecure) meta.append("_secure");
    if (isTunneled()) meta.append("_tunneled");
    return meta;
}

}  // namespace android
