// SPDX-License-Identifier: Apache-2.0
#include <mediaCodecLogger/logger/StatusText.h>

#include <inttypes.h>
#include <stdarg.h>
#include <stdio.h>

#include <android/log.h>

namespace android::logger {

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

// Runs on binder threads while the codec works, hence the copy of the format's name.
AString statusText(const CodecIdentity& codec, const Session& session, bool secureMemoryUsed,
                   bool atmos) {
    AString status;
    appendPiece(status,
                "\tCodec Type: %s\n\tHW: %s\n\tFormat: %s\n\tSecure: %s\n"
                "\tIs Secure Memory Used: %s\n\tInput Bitrate: %" PRIu64 "\n",
                codec.is(TAG_AUDIO) ? "AUDIO" : "VIDEO", yesNo(codec.is(TAG_HW)),
                codec.copyCodecFormat().c_str(), yesNo(session.mIsSecure), yesNo(secureMemoryUsed),
                uint64_t{session.bitrate.mBitrateKbps});
    if (codec.is(TAG_VIDEO)) {
        // Read once each, because playback goes on.
        const int64_t lastPts = session.segments.mLastPts;
        const int64_t startPts = session.segments.mSegmentStartPts;
        double framerate = 0;
        if (codec.isTunneled()) {
            framerate = session.framerate.mStreamFramerate;
        } else if (lastPts > startPts) {
            framerate = session.segments.framerateOver(wrapSub(lastPts, startPts));
        }
        appendPiece(status,
                    "\tResolution: %dx%d\n\tStream Framerate (fps): %.3f\n\tFramesDropped: %d\n",
                    int{session.format.mWidth}, int{session.format.mHeight}, framerate,
                    static_cast<int>(session.drops.mFramesDropped));
    }
    if (codec.is(TAG_AUDIO)) appendPiece(status, "\tAtmos: %s\n", yesNo(atmos));
    return status;
}

}  // namespace android::logger
