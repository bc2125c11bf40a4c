// SPDX-License-Identifier: Apache-2.0
// Where one frame spent its time, and what went on around it when that was too long.

#define LOG_TAG "ZMediaAnalyticV"

#include <mediaCodecLogger/analytics/FrameTracker.h>

#include <inttypes.h>

#include <cutils/properties.h>
#include <cutils/trace.h>
#include <log/log.h>

#include <mediaCodecLogger/analytics/LatencyLine.h>
#include <mediaCodecLogger/analytics/RecordVector.h>
#include <mediaCodecLogger/analytics/TrackerClock.h>

namespace android {

using namespace analytics;

void ZephraMediaAnalytic::FrameTracker::frameAnalyze_l(long timeUs, const char* label,
                                                       bool retire) {
    const ssize_t index = indexOfTsInfo_l(timeUs);
    if (index < 0) return;
    mAnalyzed = true;
    const AnalyticTsInfo& rec = mTsInfos[index];
    const FrameLatency latency(rec, mLastRendered, monotonicMs());
    if (debugs(DEBUG_TIMELINE)) {
        const size_t frameNo = static_cast<size_t>(rec.mFrameNo);
        ALOGI("%s Frame:%zu Frame latency in MediaCodec: %" PRId64
              " Frame latency in Codec: %" PRId64 " %" PRId64 " s:%zu i:%zu",
              mLogPrefix.c_str(), frameNo, latency.mediaCodec, latency.codec, timeUs,
              mTsInfos.size(), static_cast<size_t>(index));
        ALOGI("%s Frame:%zu AL: App Latency: time spent by frame after it is ready in MediaCodec "
              "but before app handles it %" PRId64,
              mLogPrefix.c_str(), frameNo, latency.app);
    }
    // Stages that were not reached show as large values from the stamps that a record starts with;
    // that tells how far the frame came.
    LatencyLine line(mLine, rec, mLastRendered);
    line.begin(label, latency, index, mTsInfos.size());
    if (latency.messageDelay > mSettings.mMaxMsgDelayTime) {
        line.appendDelayHistory(mTsInfos, mFillBufInfos);
    }
    // A gap since the frame before, on the screen or in the component's output: was the component
    // starved, or slow?
    if (latency.afterRenderCall > mSettings.mMaxDecodeTime ||
        checkedSub(latency.decodeInterval, latency.messageDelay) > mSettings.mMaxDecodeTime ||
        latency.afterRender > mSettings.mMaxDecodeTime) {
        line.appendDecodeHistory(mTsInfos);
        line.appendFillHistory(mFillBufInfos);
    }
    ALOGI("%s", mLine.c_str());
    if (retire) retire_l(index);
}

// A dropped frame that was never decoded belonged to the component still, hence the warning.
void ZephraMediaAnalytic::FrameTracker::retire_l(size_t index) {
    removeRecord(mTsInfos, index);
    if (mFramesOwnedByUs == 0) {
        ALOGW("mFramesOwnedByUs is 0 unexpectedly");
    } else {
        --mFramesOwnedByUs;
    }
    if (debugs(DEBUG_TRACE)) {
        // For who records traces on the device: from now on there is something to see.
        property_set("mediaanalytic.atrace", "on");
        atrace_int64(ATRACE_TAG_VIDEO, "drop_sysTime", monotonicMs());
    }
}

}  // namespace android
