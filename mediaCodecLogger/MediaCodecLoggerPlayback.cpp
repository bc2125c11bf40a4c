// SPDX-License-Identifier: Apache-2.0
// Output timestamps: segments, seeks, repeats, first frame, resolution changes and flush.
#define LOG_TAG "MediaCodecLogger"

#include <limits>
#include <memory>

#include <log/log.h>
#include <media/stagefright/CodecBase.h>
#include <mediaCodecLogger/LoggerSupport.h>
#include <mediaCodecLogger/MediaCodecLogger.h>
#include <mediaCodecLogger/MetricRecord.h>
#include <mediaCodecLogger/binder/IMediaCodecLoggerService.h>

namespace android {

namespace {

using FrameTracker = ZephraMediaAnalytic::FrameTracker;

/** A timestamp further ahead of the last one is a seek. */
constexpr uint64_t kMaxContinuousStepUs = 5000000;
/** Settling ends this long after the first rendered frame. */
constexpr uint64_t kSettlingMs = 501;
/** A run of drops younger than this at a flush is an effect of the seek, not a fault. */
constexpr uint64_t kMinFlushedDropRunMs = 300;
/** With throttling, from this many repeats on only each such multiple is logged. */
constexpr int kRepeatLogInterval = 20;

constexpr MetricRecord kFhdRampup = {"c48a/2/02330410", "FHDRampupTime", "ms", 0};
constexpr MetricRecord kUhdRampup = {"p61w/2/02330410", "UHDRampupTime", "ms", 0};

}  // namespace

void MediaCodecLogger::updatePTSTime(long pts, bool isEos, unsigned long count) {
    ZephraMediaAnalytic::instance().pass(mCodec, &FrameTracker::updateOutputFrame, pts);

    if (mFirstPtsAfterFlush) {
        ALOGI("%s [%s] First PTS after Flush or reset = %lld", __func__, mCodecTag.c_str(),
              static_cast<long long>(pts));
        mFirstPtsAfterFlush = false;
    }
    if (isEos) {
        ALOGI("%s [%s] EOS pts:%lld", __func__, mCodecTag.c_str(), static_cast<long long>(pts));
        return;
    }

    trackSegment(pts, count);
    if (mFirstRenderAfterFlushMs != 0) endSettling();
    if (pts >= 0 && !mIgnoreRepeatCheck) {
        if (pts == mLastPts) noteRepeat(pts, count);
        if (mResChangePending && mLastRenderTimeMs != 0) finishResolutionChange();
    }
    mLastPts = pts;
    if (mFirstFrameReadyMs == 0 && mFirstInputTimeMs != 0) noteFirstFrameReady();
}

void MediaCodecLogger::trackSegment(int64_t pts, unsigned long count) {
    const int64_t lastPts = mLastPts;
    if (pts >= 0 && mSegmentStartPts == -1) {
        mSegmentStartPts = pts;
        mSegmentFrameCount = 0;
        mPrevSegmentsFrameCount = 0;
        mIgnoreRepeatCheck = true;
        return;
    }
    const bool stepsOn =
            lastPts <= pts && static_cast<uint64_t>(wrapSub(pts, lastPts)) <= kMaxContinuousStepUs;
    if (pts < 0 || lastPts == -1 || stepsOn) {
        mSegmentFrameCount += count;
        return;
    }
    const int64_t playedMs = wrapSub(lastPts, mSegmentStartPts) / 1000;
    if (tagHas(TAG_VIDEO)) {
        auto& timeMs = mPlaybackTimeMsByRes[mResolutionType];
        timeMs = wrapAdd(timeMs, playedMs);
    } else if (tagHas(TAG_AUDIO)) {
        mAudioPlaybackTimeMs = wrapAdd(mAudioPlaybackTimeMs, playedMs);
    }
    ALOGI("%s Possible seek found! last pts:%lld cur pts:%lld", "updatePTSTime",
          static_cast<long long>(lastPts), static_cast<long long>(pts));
    mSegmentStartPts = pts;
    mPrevSegmentsFrameCount += mSegmentFrameCount;
    mSegmentFrameCount = 0;
}

// Unsigned: a render stamped after this clock read counts as long ago, as it always has.
void MediaCodecLogger::endSettling() {
    const int64_t settledMs = wrapSub(getSystemTimeMillis(), mFirstRenderAfterFlushMs);
    if (static_cast<uint64_t>(settledMs) < kSettlingMs) return;
    mIgnoreRepeatCheck = false;
    mFirstRenderAfterFlushMs = 0;
}

void MediaCodecLogger::noteRepeat(int64_t pts, unsigned long count) {
    logRepeatPTS(mRepeatPtsCount, pts);
    mRepeatPtsCount = wrapAdd32(mRepeatPtsCount, count);
    checkRepeatedInputPTS(pts);
}

void MediaCodecLogger::logRepeatPTS(int repeatCount, long pts) {
    const bool throttled = (mFlags & kFlagThrottleRepeats) != 0;
    if (throttled && repeatCount >= kRepeatLogInterval && repeatCount % kRepeatLogInterval != 0) {
        return;
    }
    ALOGI("%s Repeating PTS in Output = %lld", embeddedWarnings().c_str(),
          static_cast<long long>(pts));
}

// Exactly two: the timestamp was queued twice of late. More often means that the stream itself
// repeats it, and that is not reported.
void MediaCodecLogger::checkRepeatedInputPTS(long pts) {
    int occurrences = 0;
    for (const auto& inputPts : mInputPtsHistory) occurrences += inputPts == pts;
    if (occurrences != 2) return;
    ALOGW("%s Repeating PTS in Input = %lld", embeddedWarnings().c_str(),
          static_cast<long long>(pts));
    mRepeatInputPtsCount = wrapAdd32(mRepeatInputPtsCount, 1);
}

// The gap that the change caused: since the last frame rendered before this one.
void MediaCodecLogger::finishResolutionChange() {
    mResChangePending = false;
    const int64_t gapMs = wrapSub(getSystemTimeMillis(), mLastRenderTimeMs);
    ALOGI("%s Resolution change from %dx%d to %dx%d took = %lld", embeddedWarnings().c_str(),
          int{mPrevWidth}, int{mPrevHeight}, int{mWidth}, int{mHeight},
          static_cast<long long>(gapMs));
    sendRampupMetric();
}

// Each class is reported once a session, and FHD no more once UHD was reached.
void MediaCodecLogger::sendRampupMetric() {
    const uint32_t width = mWidth;
    const uint32_t height = mHeight;
    const int resolution = mapResolution(width > height ? width : height);
    const MetricRecord* record = nullptr;
    if (resolution == RES_FHD && !mFhdRampupLogged && !mUhdRampupLogged) {
        mFhdRampupLogged = true;
        record = &kFhdRampup;
    } else if (resolution == RES_UHD && !mUhdRampupLogged) {
        mUhdRampupLogged = true;
        record = &kUhdRampup;
    }
    if (record == nullptr) return;
    const uint64_t rampupMs = wrapSub(getSystemTimeMillis(), mFirstFrameRenderMs);
    sendMetric(*record, mPackageName.c_str(), codecDescriptor("").c_str(),
               static_cast<double>(rampupMs));
}

void MediaCodecLogger::noteFirstFrameReady() {
    mFirstFrameReadyMs = getSystemTimeMillis();
    const sp<IMediaCodecLoggerService> service = mService;
    if (service != nullptr) mOldestAudioClientCodec = service->getOldestAudioClientCodec();
    ALOGI("[BRISK] %s Got First Frame Ready %lld(%lld)", mCodecTag.c_str(),
          static_cast<long long>(mFirstFrameReadyMs),
          static_cast<long long>(wrapSub(mFirstFrameReadyMs, mFirstInputTimeMs)));
}

// The played time of the segment is not added here: the first frame after a flush normally reads as
// a seek, which adds it.
void MediaCodecLogger::updateMetricsForFlush() {
    mIgnoreRepeatCheck = true;
    mFirstRenderAfterFlushMs = 0;
    mFirstPtsAfterFlush = true;
    mAwaitingFirstRender = true;
    if (tagHas(TAG_VIDEO)) {
        if (mLastPts > mSegmentStartPts) {
            ALOGI("Flushing: %s.framerate = %.3f fps", embeddedWarnings().c_str(),
                  framesPerSecond(mSegmentFrameCount, wrapSub(mLastPts, mSegmentStartPts)));
        }
        mPrevSegmentsFrameCount += mSegmentFrameCount;
        mSegmentFrameCount = 0;
        if (mInDropRun) {
            const uint64_t runMs = wrapSub(getSystemTimeMillis(), mDropRunStartMs);
            if (runMs < kMinFlushedDropRunMs) mConsecutiveFramesDropped = 0;
            updateFrameDropCounters();
        }
    }
    ZephraMediaAnalytic::instance().pass(mCodec, &FrameTracker::flush);
}

}  // namespace android
