// SPDX-License-Identifier: Apache-2.0
// Input buffers: security, first input, history of timestamps, bitrate and frame rate; Atmos.
#define LOG_TAG "MediaCodecLogger"

#include <limits>
#include <memory>

#include <log/log.h>
#include <media/AudioParameter.h>
#include <media/AudioSystem.h>
#include <media/stagefright/CodecBase.h>
#include <mediaCodecLogger/LoggerSupport.h>
#include <mediaCodecLogger/MediaCodecLogger.h>

namespace android {

namespace {

using FrameTracker = ZephraMediaAnalytic::FrameTracker;

/** A bitrate interval is closed by the first buffer after more than five seconds. */
constexpr uint64_t kBitrateIntervalMs = 5001;
/** Input buffers of one frame-rate estimate. */
constexpr int64_t kFramerateSampleSize = 240;

constexpr char kAtmosKey[] = "atmos_detected";

}  // namespace

void MediaCodecLogger::queueInputBuffer_pre(const unsigned char* data, unsigned long size,
                                            const unsigned char* key, const unsigned char* iv,
                                            unsigned long numSubSamples,
                                            const CryptoPlugin::SubSample* subSamples,
                                            CryptoPlugin::Mode mode, long timeUs, long nowUs,
                                            bool encrypted) {
    ZephraMediaAnalytic::instance().pass(mCodec, &FrameTracker::updateInputFrame_pre, data, size,
                                         key, iv, numSubSamples, subSamples, mode, timeUs, nowUs,
                                         encrypted);
}

void MediaCodecLogger::logInputBufferBitrate(unsigned long size, long timeUs, bool secure,
                                             bool secureMemoryUsed) {
    mIsSecure = secure;
    mSecureMemoryUsed = secureMemoryUsed;
    performBitrateCalculationAndTracking(size, timeUs);
    ZephraMediaAnalytic::instance().pass(mCodec, &FrameTracker::updateInputFrame, size, timeUs,
                                         secure, mCodecFormat);
    sampleInputFramerate(timeUs);
}

void MediaCodecLogger::performBitrateCalculationAndTracking(unsigned long size, long timeUs) {
    mIntervalBytes += size;
    const int64_t now = getSystemTimeMillis();
    if (mIntervalStartMs == 0) mIntervalStartMs = now;
    // An empty buffer, such as an end-of-stream marker, is no first input.
    if (size != 0 && mFirstInputTimeMs == 0) {
        mFirstInputTimeMs = now;
        ALOGI("[BRISK] %s Got First Input Frame %lld pts:%lld", mCodecTag.c_str(),
              static_cast<long long>(now), static_cast<long long>(timeUs));
    }
    mInputPtsHistory[mInputPtsCount % kInputHistorySize] = timeUs;
    ++mInputPtsCount;

    const uint64_t elapsedMs = static_cast<uint64_t>(now) - mIntervalStartMs;
    if (elapsedMs < kBitrateIntervalMs) return;
    mBitrateKbps = mIntervalBytes * 8 / elapsedMs;
    ALOGI("%s.%s = %lld", embeddedWarnings().c_str(), "bitrateInKbps",
          static_cast<long long>(mBitrateKbps));
    mTotalIntervalMs += elapsedMs;
    mTotalInputBytes += mIntervalBytes;
    mIntervalBytes = 0;
    mIntervalStartMs = 0;
}

// From the spread of the timestamps, so that it does not matter in which order they arrive. The
// first buffer sets only the minimum.
void MediaCodecLogger::sampleInputFramerate(int64_t timeUs) {
    if (mInputPtsSampleCount == 0 || timeUs < mInputMinPts) {
        mInputMinPts = timeUs;
    } else if (timeUs > mInputMaxPts) {
        mInputMaxPts = timeUs;
    }
    mInputPtsSampleCount = mInputPtsSampleCount + 1;
    if (mInputPtsSampleCount < kFramerateSampleSize) return;
    constexpr float kIntervalsUs = (kFramerateSampleSize - 1) * 1000000.0f;
    mStreamFramerate = kIntervalsUs / static_cast<float>(wrapSub(mInputMaxPts, mInputMinPts));
    mInputPtsSampleCount = 0;
    mInputMinPts = 0;
    mInputMaxPts = 0;
}

// Only decoded audio (PCM) passes the part of the audio system that knows.
bool MediaCodecLogger::isAtmosDetected() {
    if (mAtmosChecked) return mAtmosDetected != 0;
    mAtmosChecked = true;
    if (!tagHas(TAG_RAW)) {
        mAtmosDetected = 0;
        return false;
    }
    const String8 key(kAtmosKey);
    const AudioParameter reply(AudioSystem::getParameters(0 /* ioHandle */, key));
    int detected = mAtmosDetected;
    const status_t result = reply.getInt(key, detected);
    mAtmosDetected = detected;
    return result == OK && detected != 0;
}

}  // namespace android
