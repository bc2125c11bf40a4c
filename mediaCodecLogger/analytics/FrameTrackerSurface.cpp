// SPDX-License-Identifier: Apache-2.0
// Buffers on their way to the display and back.

#define LOG_TAG "ZMediaAnalyticV"

#include <mediaCodecLogger/analytics/FrameTracker.h>

#include <inttypes.h>

#include <algorithm>

#include <log/log.h>

#include <mediaCodecLogger/analytics/RecordVector.h>
#include <mediaCodecLogger/analytics/TrackerClock.h>

namespace android {

using namespace analytics;

namespace {

/** Dequeues remembered for the histories of the frame analysis. */
constexpr size_t kMaxFillBufInfos = 11;

}  // namespace

void ZephraMediaAnalytic::FrameTracker::updateQueueBuffer(long startUs, long renderTimeNs,
                                                          long mediaTimeUs, const void* buffer) {
    Mutex::Autolock lock(mLock);
    const int64_t nowMs = monotonicMs();
    const int64_t startMs = usToMs(startUs);
    // There are not that many buffers: some came back without being reported.
    if (mQueueBufInfos.size() > mOutputBufferCount) {
        ALOGW("Warning: queue too many buffers %zu", mQueueBufInfos.size());
    }
    mQueueBufInfos.push_back({renderTimeNs, startMs, nowMs, buffer});
    if (debugs(DEBUG_TIMELINE)) judgeQueue_l(mQueueBufInfos.top(), mediaTimeUs);
    if (debugs(DEBUG_QUEUE)) {
        ALOGI("queueBuffer rendertime:%" PRId64 ", mediatime:%" PRId64 " size:%zu", renderTimeNs,
              mediaTimeUs, mQueueBufInfos.size());
    }
}

void ZephraMediaAnalytic::FrameTracker::judgeQueue_l(const QueueBufInfo& queued,
                                                     long mediaTimeUs) const {
    const int64_t costMs = checkedSub(queued.mQueueEndMs, queued.mQueueStartMs);
    if (costMs > mSettings.mMaxQueueTime) {
        ALOGI("queueBuffer cost:%" PRId64 " ts:%" PRId64, costMs, mediaTimeUs);
    }
    // A client that renders by media time does not say when the frame is to be shown.
    if (queued.mRenderTimeNs == 0 || checkedMul(mediaTimeUs, 1000) == queued.mRenderTimeNs) return;
    const int64_t renderMs = nsToMs(queued.mRenderTimeNs);
    const int64_t earlyMs = checkedSub(renderMs, queued.mQueueEndMs);
    if (earlyMs < mSettings.mVsyncPeriod) {
        ALOGI("Warning queueBuffer early too small:%" PRId64 " ms ts:%" PRId64, earlyMs,
              mediaTimeUs);
    }
    // Tested from the start of the call, shown from its end.
    if (checkedSub(renderMs, queued.mQueueStartMs) > mMaxEarlyTime) {
        ALOGI("Warning queueBuffer early too large:%" PRId64 " ms ts:%" PRId64, earlyMs,
              mediaTimeUs);
    }
}

/** A dequeue against what the timing of the display allowed, milliseconds. */
struct ZephraMediaAnalytic::FrameTracker::Dequeue {
    int64_t actual = 0;
    /** The buffer is free once the next one is shown, which is due after this time. */
    int64_t theory = 0;
    int64_t renderTimeNs = -1;
    int index = -1;
};

void ZephraMediaAnalytic::FrameTracker::updateDequeueBuffer(long startUs, const void* buffer,
                                                            size_t ownedByComponent) {
    Mutex::Autolock lock(mLock);
    const int64_t startMs = usToMs(startUs);
    const int64_t lastQueueStartMs =
            mQueueBufInfos.isEmpty() ? -1 : mQueueBufInfos.top().mQueueStartMs;
    if (buffer == nullptr) {
        ALOGW("dequeue buffer is NULL");
        return;
    }
    Dequeue dequeue;
    dequeue.actual = checkedSub(monotonicMs(), startMs);
    takeQueued_l(buffer, startMs, dequeue);
    const int64_t excess = checkedSub(dequeue.actual, dequeue.theory);
    if (debugs(DEBUG_TIMELINE)) {
        // Longer than the display's timing explains, or too long whatever explains it.
        const char* verdict = nullptr;
        if (checkedSub(dequeue.actual, std::max<int64_t>(dequeue.theory, 0)) >
            mSettings.mVsyncPeriod) {
            verdict = "";
        } else if (dequeue.actual > mSettings.mMaxDequeueTime) {
            verdict = "too long ";
        }
        if (verdict != nullptr) {
            ALOGI("%sdequeue actual:%" PRId64 "(%" PRId64 ") theory:%" PRId64 " renderTime:%" PRId64
                  " index:%d %p",
                  verdict, dequeue.actual, excess, dequeue.theory, dequeue.renderTimeNs,
                  dequeue.index, buffer);
        }
    }
    // For the histories, which ask when the component got its buffers back.
    if (mFillBufInfos.size() >= kMaxFillBufInfos) removeRecord(mFillBufInfos, 0);
    mFillBufInfos.push_back({monotonicMs(), lastQueueStartMs, ownedByComponent});
    if (debugs(DEBUG_DEQUEUE)) {
        ALOGI("dequeue actual:%" PRId64 "(%" PRId64 ") theory:%" PRId64 " renderTime:%" PRId64
              " index:%d ownedByCom:%zu ownByNat:%zu %p",
              dequeue.actual, excess, dequeue.theory, dequeue.renderTimeNs, dequeue.index,
              ownedByComponent, mQueueBufInfos.size(), buffer);
    }
}

void ZephraMediaAnalytic::FrameTracker::takeQueued_l(const void* buffer, int64_t startMs,
                                                     Dequeue& dequeue) {
    const size_t count = mQueueBufInfos.size();
    size_t index = 0;
    while (index < count && mQueueBufInfos[index].mBuffer != buffer) ++index;
    if (index == count) return;

    dequeue.index = static_cast<int>(index);
    if (index + 1 < count) {
        dequeue.renderTimeNs = mQueueBufInfos[index + 1].mRenderTimeNs;
        dequeue.theory = checkedSub(nsToMs(dequeue.renderTimeNs), startMs);
    } else {
        ALOGW("Not found. If it is in the first stage, it is normal");
    }
    removeRecord(mQueueBufInfos, index);
}

}  // namespace android
