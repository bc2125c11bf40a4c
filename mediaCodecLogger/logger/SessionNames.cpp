// SPDX-License-Identifier: Apache-2.0
#include <mediaCodecLogger/logger/SessionNames.h>

namespace android::logger {

void appendWarningsPrefix(const CodecIdentity& codec, const Session& session, bool secureMemoryUsed,
                          bool atmos, AString& out) {
    const uint32_t longestRun = session.drops.mMaxConsecutiveFramesDropped;
    const int32_t repeats = session.repeats.mRepeatPtsCount;
    const int32_t inputRepeats = session.repeats.mRepeatInputPtsCount;
    const struct {
        const char* name;
        int32_t count;
        bool raised;
    } kWarnings[] = {
            {"mcfd", static_cast<int32_t>(longestRun), longestRun >= DropRuns::kWarnedRun},
            {"rot", repeats, repeats >= RepeatedTimestamps::kWarnedCount},
            {"rit", inputRepeats, inputRepeats >= RepeatedTimestamps::kWarnedCount},
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
    out.append(codec.mPid);
    if (session.format.mScreenSizeType == RES_UHD) out.append(".4K");
    out.append(!session.mIsSecure ? "." : secureMemoryUsed ? ".secure." : ".secureSW.");
    out.append(codec.mCodecTag);
    if (atmos) out.append(".atmos");
}

AString metricPrefix(const CodecIdentity& codec, const Session& session) {
    AString prefix(codec.mPackageName);
    if (session.format.mScreenSizeType == RES_UHD) prefix.append(".4K");
    prefix.append(session.mIsSecure ? ".secure." : ".");
    prefix.append(codec.mCodecTag);
    return prefix;
}

AString codecDescriptor(const CodecIdentity& codec, const Session& session,
                        const char* afterFormat) {
    AString descriptor(codec.is(TAG_HW) ? "HW_" : codec.is(TAG_SW) ? "SW_" : "VND_");
    descriptor.append(codec.mCodecFormat);
    descriptor.append(afterFormat);
    if (codec.is(TAG_VIDEO)) {
        if (session.format.mScreenSizeType == RES_UHD) descriptor.append("_4K");
        if (session.mIsSecure) descriptor.append("_secure");
        if (codec.isTunneled()) descriptor.append("_tunneled");
    }
    return descriptor;
}

AString framedropMeta(const CodecIdentity& codec, const Session& session) {
    AString meta(codec.is(TAG_HW) ? "HW" : "SW");
    if (session.mIsSecure) meta.append("_secure");
    if (codec.isTunneled()) meta.append("_tunneled");
    return meta;
}

}  // namespace android::logger
