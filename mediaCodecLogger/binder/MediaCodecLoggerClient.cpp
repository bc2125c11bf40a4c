// SPDX-License-Identifier: Apache-2.0
#include <mediaCodecLogger/binder/MediaCodecLoggerClient.h>

#include <mediaCodecLogger/MediaCodecLogger.h>

namespace android {

namespace {

String8 toString8(const AString& text) {
    return String8(text.c_str());
}

}  // namespace

MediaCodecLoggerClient::MediaCodecLoggerClient(const wp<MediaCodecLogger>& logger)
    : mLogger(logger) {}

void MediaCodecLoggerClient::initialize(int pid, bool isVideo, String8 packageName) {
    mPid = pid;
    mIsVideo = isVideo;
    const ssize_t colon = packageName.find(":");
    mPackageName = colon < 0 ? packageName : String8(packageName.string(), colon);
}

// The logger may go while it answers: then dropping the last reference destroys it here and with it
// the logger's reference to this object. So nothing of this object is touched after `read`.
template <typename T, typename Read>
T MediaCodecLoggerClient::fromLogger(T fallback, Read read) const {
    const sp<MediaCodecLogger> logger = mLogger.promote();
    return logger != nullptr ? T(read(*logger)) : fallback;
}

String8 MediaCodecLoggerClient::getStatus() {
    return fromLogger(String8(), [](auto& logger) { return toString8(logger.getStatus()); });
}

String8 MediaCodecLoggerClient::getPackageName() {
    return mPackageName;
}

bool MediaCodecLoggerClient::isVideoClient() {
    return mIsVideo;
}

int32_t MediaCodecLoggerClient::getPid() {
    return mPid;
}

void MediaCodecLoggerClient::getClientResolution(int& width, int& height) {
    const sp<MediaCodecLogger> logger = mLogger.promote();
    if (logger != nullptr) logger->getResolution(width, height);
}

String8 MediaCodecLoggerClient::getClientHDRType() {
    return fromLogger(String8(), [](auto& logger) { return toString8(logger.getHDRType()); });
}

int32_t MediaCodecLoggerClient::getClientBitDepth() {
    return fromLogger(0, [](auto& logger) { return logger.getBitDepth(); });
}

String8 MediaCodecLoggerClient::getClientScanType() {
    return fromLogger(String8(), [](auto& logger) { return toString8(logger.getScanType()); });
}

void MediaCodecLoggerClient::getClientColorProperties(int& value) {
    const sp<MediaCodecLogger> logger = mLogger.promote();
    if (logger != nullptr) logger->getColorProperties(value);
}

int64_t MediaCodecLoggerClient::getTimeSinceLastFrameRendered() {
    return fromLogger(int64_t{0}, [](auto& logger) {
        return logger.mSession.rendering.sinceLastOutputMs(MediaCodecLogger::getSystemTimeMillis());
    });
}

int32_t MediaCodecLoggerClient::getUid() {
    return fromLogger(-1, [](auto& logger) { return static_cast<int32_t>(logger.mIdentity.mUid); });
}

int64_t MediaCodecLoggerClient::getBufferCountSinceLastFlush() {
    return fromLogger(int64_t{0}, [](auto& logger) {
        return static_cast<int64_t>(uint64_t{logger.mSession.segments.mSegmentFrameCount});
    });
}

bool MediaCodecLoggerClient::isVideoClientUsingSecureMem() {
    return fromLogger(false, [](auto& logger) { return bool{logger.mSecureMemoryUsed}; });
}

String8 MediaCodecLoggerClient::getClientCodecFormat() {
    return fromLogger(String8(),
                      [](auto& logger) { return toString8(logger.mIdentity.copyCodecFormat()); });
}

}  // namespace android
