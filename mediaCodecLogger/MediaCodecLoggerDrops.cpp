// SPDX-License-Identifier: Apache-2.0
// Rendered and dropped frames, and what the logger service hears of them.
#define LOG_TAG "MediaCodecLogger"

#include <limits>
#include <memory>

#include <log/log.h>
#include <media/stagefright/CodecBase.h>
#include <mediaCodecLogger/LoggerSupport.h>
#include <mediaCodecLogger/MediaCodecLogger.h>
#include <mediaCodecLogger/binder/IMediaCodecLoggerService.h>
#include <mediaCodecLogger/binder/MediaCodecLoggerClient.h>

namespace android {

namespace {

using FrameTracker = ZephraMediaAnalytic::FrameTracker;

/** Output that comes this long after the output before it may be a resume after a pause. */
constexpr int64_t kDelayedOutputMs = 1000;
/** The total is logged whenever it is a multiple of this. */
constexpr uint32_t kDropLogInterval = 10;
/** The app left the render time to the platform. */
constexpr int64_t kNoRenderTime = -1;

}  // namespace

void MediaCodecLogger::updateFrameDropCounters(long timeUs, bool rendered) {
    if (!mLoggingEnabled) return;
    if (rendered) {
        ++mRenderedFrameCount;
        checkAndNotifyOutBufferAvailableAfterDelay();
        if (mAwaitingFirstRender) {
            mAwaitingFirstRender = false;
            mFirstRenderAfterFlushMs = getSystemTimeMillis();
            ALOGI("Rendering first frame after starting or flushing.");
        }
        return;
    }
    ZephraMediaAnalytic::instance().pass(mCodec, &FrameTracker::dropFrameAnalyze, timeUs);
    if (!mIsDecoder || mIgnoreRepeatCheck) return;
    if (!mInDropRun) mDropRunStartMs = getSystemTimeMillis();
    ++mConsecutiveFramesDropped;
    mInDropRun = true;
}

// A run counts as the pieces it is made of, the largest first: 17 frames are a ten, a five and a
// two.
void MediaCodecLogger::updateFrameDropCounters() {
    if (!mLoggingEnabled || !mIsDecoder) return;
    const uint32_t runLength = mConsecutiveFramesDropped;
    mFramesDropped += runLength;
    if (mFramesDropped % kDropLogInterval == 0) {
        ALOGI("%s Dropped %d frames", embeddedWarnings().c_str(), static_cast<int>(mFramesDropped));
    }
    const struct {
        uint32_t size;
        Relaxed<uint32_t>& count;
    } kPieces[] = {{10, mTenConsecutiveDrops},
                   {5, mFiveConsecutiveDrops},
                   {2, mTwoConsecutiveDrops},
                   {1, mOneConsecutiveDrops}};
    uint32_t rest = runLength;
    for (const auto& [size, count] : kPieces) {
        count += rest / size;
        rest %= size;
    }
    if (runLength > mMaxConsecutiveFramesDropped) mMaxConsecutiveFramesDropped = runLength;
    mInDropRun = false;
    mConsecutiveFramesDropped = 0;
    mDropRunStartMs = 0;
}

void MediaCodecLogger::resetConsecutiveFrameDropFlag(long renderTimeNs, long timeUs,
                                                     bool fromTunnelCallback,
                                                     unsigned long renderCount) {
    if (fromTunnelCallback) {
        if (!isTunneled()) return;
        updatePTSTime(timeUs, false /* isEos */, renderCount);
    }
    ZephraMediaAnalytic::instance().pass(mCodec, &FrameTracker::updateFrameRender, renderTimeNs,
                                         timeUs);
    if (!mIsDecoder) return;
    if (mInDropRun) updateFrameDropCounters();
    mLastRenderTimeMs = getSystemTimeMillis();
    if (mFirstFrameRenderMs == 0 && mFirstInputTimeMs != 0 && tagHas(TAG_VIDEO)) {
        noteFirstFrameRendered(renderTimeNs, renderCount);
    }
}

void MediaCodecLogger::noteFirstFrameRendered(int64_t renderTimeNs, unsigned long renderCount) {
    mFirstFrameRenderMs = getSystemTimeMillis();
    if (mFirstRenderAfterFlushMs == 0) mFirstRenderAfterFlushMs = mFirstFrameRenderMs;
    ALOGI("[BRISK] %s Got First Frame Render %lld(%lld), renderNum = %zu", mCodecTag.c_str(),
          static_cast<long long>(mFirstFrameRenderMs),
          static_cast<long long>(wrapSub(mFirstFrameRenderMs, mFirstInputTimeMs)),
          static_cast<size_t>(renderCount));
    notifyFirstFrameRendered();
    if (renderTimeNs != kNoRenderTime) ALOGI("App sets Timestamps for render in SurfaceFlinger");
}

void MediaCodecLogger::checkAndNotifyOutBufferAvailableAfterDelay() {
    if (!mIsDecoder) return;
    const int64_t now = getSystemTimeMillis();
    const int64_t lastOutputMs = mLastOutputTimeMs;
    const int64_t gapMs = wrapSub(now, lastOutputMs);
    if (lastOutputMs != -1 && gapMs >= kDelayedOutputMs) {
        ALOGI("the latest buffer is %lld old with packageName %s. Possible resume detected",
              static_cast<long long>(gapMs), mPackageName.c_str());
        notifyOutBufferAvailablAfterDelay(gapMs);
    }
    mLastOutputTimeMs = now;
}

template <typename Call>
void MediaCodecLogger::notifyService(Call call) {
    const sp<IMediaCodecLoggerService> service = mService;
    if (service == nullptr) {
        ALOGW("MediaCodecLoggerService in NULL");
        return;
    }
    if (!mIsDecoder) return;
    // The service knows the client by its address, so it must not go during the call.
    const sp<MediaCodecLoggerClient> client = mClient;
    call(service);
}

void MediaCodecLogger::notifyOutBufferAvailablAfterDelay(long delayMs) {
    notifyService([&](const sp<IMediaCodecLoggerService>& service) {
        service->onOutBufferAvailableAfterDelay(clientId(), delayMs);
    });
}

void MediaCodecLogger::notifyFirstFrameRendered() {
    notifyService([&](const sp<IMediaCodecLoggerService>& service) {
        service->onFirstFrameRendered(clientId());
    });
}

// Asks afresh each time: the allowlist matters before the codec is registered, too.
bool MediaCodecLogger::isInMitigateFrameDropAllowlist() {
    sp<IMediaCodecLoggerService> service;
    if (!lookUpLoggerService(service) || service == nullptr) return false;
    return service->isInMitigateFrameDropAllowlist(mPackageName.c_str()) != 0;
}

}  // namespace android
