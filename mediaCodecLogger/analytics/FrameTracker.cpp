// SPDX-License-Identifier: Apache-2.0

#define LOG_TAG "ZMediaAnalyticV"

#include <mediaCodecLogger/analytics/FrameTracker.h>

#include <log/log.h>

namespace android {

using namespace analytics;

Relaxed<uint64_t> ZephraMediaAnalytic::FrameTracker::mFrameCounter = 0;

ZephraMediaAnalytic::FrameTracker::FrameTracker(const AString& name)
    : mName(name), mLogPrefix(name) {
    // The registry keeps a tracker through an event by a weak reference.
    extendObjectLifetime(OBJECT_LIFETIME_WEAK);
}

const char* ZephraMediaAnalytic::FrameTracker::inputEvent() const {
    return mIsCodec2 ? "queue" : "ETB";
}

const char* ZephraMediaAnalytic::FrameTracker::outputEvent() const {
    return mIsCodec2 ? "OWD" : "FBD";
}

// Configuration

void ZephraMediaAnalytic::FrameTracker::updateConfigs(bool isVideo, bool trackingOff,
                                                      bool isDecoder, bool isCodec2) {
    mIsVideo = isVideo && !trackingOff;
    mIsDecoder = isDecoder;
    mTrackingOff = trackingOff;
    mIsCodec2 = isCodec2;
}

void ZephraMediaAnalytic::FrameTracker::updateBuffers(unsigned port, size_t count,
                                                      size_t minUndequeued) {
    constexpr unsigned kInputPort = 0;
    constexpr unsigned kOutputPort = 1;

    Mutex::Autolock lock(mLock);
    bool outputChanged = false;
    if (port == kInputPort) {
        mInputBufferCount = count;
    } else {
        outputChanged = port == kOutputPort && mIsVideo && count != mOutputBufferCount;
        // The display hands buffers of an earlier allocation back to nobody.
        if (mOutputBufferCount != 0) mQueueBufInfos.clear();
        mOutputBufferCount = count;
    }
    mQueueBufInfos.setCapacity(minUndequeued);
    if (outputChanged || mSettings.mDebug >= DEBUG_BUFFER_COUNTS) {
        ALOGI("%s input:%zu output:%zu minUndequeue:%zu video:%d decoder:%d", mLogPrefix.c_str(),
              mInputBufferCount, mOutputBufferCount, minUndequeued, static_cast<bool>(mIsVideo),
              static_cast<bool>(mIsDecoder));
    }
    mMaxEarlyTime = readMaxEarlyTime();
}

// Records

ssize_t ZephraMediaAnalytic::FrameTracker::indexOfTsInfo_l(long timeUs) const {
    const AnalyticTsInfo* records = mTsInfos.array();
    const size_t count = mTsInfos.size();
    for (size_t i = 0; i < count; ++i) {
        if (records[i].mTimeUs == timeUs) return static_cast<ssize_t>(i);
    }
    return -1;
}

int64_t ZephraMediaAnalytic::FrameTracker::framesInCodec_l() const {
    const size_t count = mTsInfos.size();
    return count > mFramesOwnedByUs ? static_cast<int64_t>(count - mFramesOwnedByUs) : 0;
}

bool ZephraMediaAnalytic::FrameTracker::takeErrorFrame_l() {
    if (mErrorFrameCount >= mSettings.mMaxErrorFrame) return false;
    ++mErrorFrameCount;
    return true;
}

}  // namespace android
