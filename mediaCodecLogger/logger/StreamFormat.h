// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pthread.h>
#include <stdint.h>

#include <media/stagefright/foundation/AString.h>
#include <utils/Errors.h>
#include <utils/StrongPointer.h>

#include <mediaCodecLogger/base/Relaxed.h>
#include <mediaCodecLogger/logger/Resolution.h>

namespace android {
struct AMessage;
}

namespace android::logger {

/** The stream's output format, as far as a new session forgets the last one's. */
struct StreamFormat {
    Relaxed<int32_t> mResolutionType = RES_SD;
    Relaxed<int32_t> mWidth = 0;
    Relaxed<int32_t> mHeight = 0;
    Relaxed<int32_t> mBitDepth = 0;
    /** A platform value, or what the codec reported where that could not be converted. */
    Relaxed<int32_t> mColorStandard = 0;
    /** The class of the primary display. */
    Relaxed<int32_t> mScreenSizeType = RES_SD;
};

/** The format's texts, which outlive a session, and the lock for reading all of the format. */
struct StreamFormatTexts {
    StreamFormatTexts() { pthread_rwlock_init(&mLock, nullptr); }
    ~StreamFormatTexts() { pthread_rwlock_destroy(&mLock); }
    StreamFormatTexts(const StreamFormatTexts&) = delete;
    StreamFormatTexts& operator=(const StreamFormatTexts&) = delete;

    AString copyHdrType() const;
    AString copyScanType() const;

    mutable pthread_rwlock_t mLock;
    AString mHdrType;
    AString mScanType;
};

/** What a format message says; `kAbsent` for what it does not. */
struct FormatUpdate {
    static constexpr int32_t kAbsent = -1;

    int32_t width = 0;
    int32_t height = 0;
    int32_t colorStandard = 0;
    int32_t hdrType = kAbsent;
    int32_t bitDepth = kAbsent;
    int32_t scanType = kAbsent;
    /** The vendor's colour standard, if colorStandard was converted from one. */
    int32_t convertedFrom = kAbsent;

    /**
     * Reads a message and stores its colour, HDR type, bit depth and scan type, with the texts'
     * lock held for writing. The size is left to the caller, who closes the segment of the old
     * size with it.
     */
    void take(const sp<AMessage>& message, StreamFormat& format, StreamFormatTexts& texts);
};

/** As `MediaCodecLogger::convertExtendedColorToStandard()`. */
status_t convertExtendedColor(const sp<AMessage>& message, int32_t& standard);

}  // namespace android::logger
