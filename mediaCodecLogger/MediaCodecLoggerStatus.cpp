// SPDX-License-Identifier: Apache-2.0
// The status text that the logger service shows. Runs on binder threads while the codec works.
#include <stdarg.h>
#include <stdio.h>

#include <limits>
#include <memory>

#include <mediaCodecLogger/LoggerSupport.h>
#include <mediaCodecLogger/MediaCodecLogger.h>

namespace android {

namespace {

constexpr size_t kMaxPieceLength = 300;

/** Appends a formatted piece to `out`. One that is too long ends the process; it is never cut. */
__attribute__((format(printf, 2, 3))) void appendPiece(AString& out, const char* format, ...) {
    char piece[kMaxPieceLength + 1];
    va_list arguments;
    va_start(arguments, format);
    const int length = vsnprintf(piece, sizeof(piece), format, arguments);
    va_end(arguments);
    if (length < 0 || static_cast<size_t>(length) > kMaxPieceLength) {
        __android_log_assert("length > kMaxPieceLength", "MediaCodecLogger",
                             "status text: a piece of %d characters is too long", length);
    }
    out.append(piece);
}

const char* yesNo(bool value) {
    return value ? "YES" : "NO";
}

}  // namespace

AString MediaCodecLogger::getStatus() {
    AString status;
    appendPiece(status,
                "\tCodec Type: %s\n\tHW: %s\n\tFormat: %s\n\tSecure: %s\n"
                "\tIs Secure Memory Used: %s\n\tInput Bitrate: %llu\n",
                tagHas(TAG_AUDIO) ? "AUDIO" : "VIDEO", yesNo(tagHas(TAG_HW)),
                copyCodecFormat().c_str(), yesNo(mIsSecure), yesNo(mSecureMemoryUsed),
                static_cast<unsigned long long>(mBitrateKbps));
    if (tagHas(TAG_VIDEO)) {
        const int64_t lastPts = mLastPts;
        const int64_t startPts = mSegmentStartPts;
        double framerate = 0;
        if (isTunneled()) {
            framerate = mStreamFramerate;
        } else if (lastPts > startPts) {
            framerate = framesPerSecond(mSegmentFrameCount, wrapSub(lastPts, startPts));
        }
        appendPiece(status,
                    "\tResolution: %dx%d\n\tStream Framerate (fps): %.3f\n\tFramesDropped: %d\n",
                    int{mWidth}, int{mHeight}, framerate, static_cast<int>(mFramesDropped));
    }
    if (tagHas(TAG_AUDIO)) appendPiece(status, "\tAtmos: %s\n", yesNo(isAtmosDetected()));
    return status;
}

}  // namespace android
