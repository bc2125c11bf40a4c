// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <media/stagefright/foundation/AString.h>
#include <utils/Mutex.h>

#include <mediaCodecLogger/base/Relaxed.h>

namespace android::logger {

/** What the codec tag says, found once when it is built. The words need not exclude each other. */
enum TagWord : uint32_t {
    TAG_VIDEO = 0x1,
    TAG_AUDIO = 0x2,
    TAG_HW = 0x4,
    TAG_SW = 0x8,
    TAG_RAW = 0x10,
};

/**
 * Whose codec it is and what it is called. The process is fixed, the codec's names change with each
 * configuration; `mCodecTag` and `mCodecFormat` under `mTextLock`, which the codec's own threads,
 * idle meanwhile, read them without.
 */
struct CodecIdentity {
    static constexpr uint32_t kFlagTunneled = 0x1;
    static constexpr uint32_t kFlagThrottleRepeats = 0x2;

    /** @param pid the process that owns the codec; -1 is this one */
    CodecIdentity(int pid, uint32_t uid);

    /** A new configuration. */
    void configure(const AString& codecName, const AString& mime, uint32_t flags);

    bool is(TagWord word) const { return (mTagWords & word) != 0; }
    bool isTunneled() const { return (mFlags & kFlagTunneled) != 0; }
    bool throttlesRepeats() const { return (mFlags & kFlagThrottleRepeats) != 0; }

    /** A copy that is safe against a reconfiguration on another thread. */
    AString copyCodecFormat() const;

    /** As `MediaCodecLogger::replacePkgNameWithPid()`. */
    AString replacePkgNameWithPid(const char* text) const;

    const int32_t mPid;
    const uint32_t mUid;
    const AString mPackageName;
    AString mCodecName;
    Relaxed<uint32_t> mFlags;
    AString mCodecTag;
    AString mCodecFormat;
    Relaxed<uint32_t> mTagWords;
    mutable Mutex mTextLock;
};

/** Appends the short name of the format of `mime` to `out`: "avc" for video/avc. */
void appendCodecFormat(const AString& mime, AString& out);

}  // namespace android::logger
