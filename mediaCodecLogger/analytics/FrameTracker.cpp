// SPDX-License-Identifier: Apache-2.0

#define LOG_TAG "ZMediaAnalyticV"

#include <mediaCodecLogger/analytics/FrameTracker.h>

#include <stdlib.h>
#include <string.h>

#include <cutils/properties.h>
#include <log/log.h>
#include <mediaCodecLogger/analytics/AnalyticSupport.h>

namespace android {

/** A limit that a property sets. */
struct ZephraMediaAnalytic::FrameTracker::Setting {
    const char* mProperty;
    int32_t FrameTracker::*mMember;
    int32_t mDefault;
};

const ZephraMediaAnalytic::FrameTracker::Setting ZephraMediaAnalytic::FrameTracker::kSettings[] = {
        {"mediaanalytic.maxqueuesize", &FrameTracker::mMaxQueueSize, 128},
        {"mediaanalytic.maxdequeuetime", &FrameTracker::mMaxDequeueTime, 80},
        {"mediaanalytic.maxqueuetime", &FrameTracker::mMaxQueueTime, 10},
        {"mediaanalytic.maxmsgdelaytime", &FrameTracker::mMaxMsgDelayTime, 10},
        {"mediaanalytic.maxdecodetime", &FrameTracker::mMaxDecodeTime, 30},
        {"mediaanalytic.vsyncperiod", &FrameTracker::mVsyncPeriod, 16},
        {"mediaanalytic.maxdecrypttime", &FrameTracker::mMaxDecryptTime, 16},
        {"mediaanalytic.maxerrorframe", &FrameTracker::mMaxErrorFrame, 16},
};

Relaxed<uint64_t> ZephraMediaAnalytic::FrameTracker::mFrameCounter = 0;

namespace {

/** The debug mask; only a leading "0x" makes it hexadecimal. */
int32_t readDebugMask() {
    char value[PROPERTY_VALUE_MAX];
    if (property_get("mediaanalytic.debug", value, nullptr) <= 0) return 0;
    const int base = strncmp(value, "0x", 2) == 0 ? 16 : 10;
    return static_cast<int32_t>(strtol(value, nullptr, base));
}

}  // namespace

ZephraMediaAnalytic::FrameTracker::FrameTracker(const AString& name)
    : mName(name), mLogPrefix(name) {
    extendObjectLifetime(OBJECT_LIFETIME_WEAK);
    for (const Setting& setting : kSettings) {
        this->*setting.mMember = property_get_int32(setting.mProperty, setting.mDefault);
    }
    mDebug = readDebugMask();
}

ZephraMediaAnalytic::FrameTracker::~FrameTracker() {
    for (FILE* file : {mInputDumpFile, mOutputDumpFile, mDecryptedDumpFile}) {
        if (file != nullptr) fclose(file);
    }
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
    if (outputChanged || mDebug >= kDebugBufferCounts) {
        ALOGI("%s input:%zu output:%zu minUndequeue:%zu video:%d decoder:%d", mLogPrefix.c_str(),
              mInputBufferCount, mOutputBufferCount, minUndequeued, static_cast<bool>(mIsVideo),
              static_cast<bool>(mIsDecoder));
    }
    mMaxEarlyTime = property_get_int32("mediaanalytic.maxearlytime", 200);
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
    if (mErrorFrameCount >= mMaxErrorFrame) return false;
    ++mErrorFrameCount;
    return true;
}

}  // namespace android
