// SPDX-License-Identifier: Apache-2.0
// The end of a frame: rendered, with statistics of how evenly, or dropped.

#define LOG_TAG "ZMediaAnalyticV"

#include <unistd.h>

#include <log/log.h>
#include <mediaCodecLogger/analytics/AnalyticSupport.h>
#include <mediaCodecLogger/analytics/FrameTracker.h>

namespace android {

namespace {

/** A statistics line is due when the last one is older. */
constexpr int64_t kAvSyncPeriodMs = 5000;

void fold(int64_t value, int64_t& min, int64_t& max, int64_t& sum) {
    min = std::min(min, value);
    max = std::max(max, value);
    sum = checkedAdd(sum, value);
}

}  // namespace

void ZephraMediaAnalytic::FrameTracker::updateFrameRender(long renderTimeNs, long timeUs) {
    Mutex::Autolock lock(mLock);
    if (!mIsVideo) return;
    const ssize_t index = indexOfTsInfo_l(timeUs);
    if (index < 0) {
        if (takeErrorFrame_l()) ALOGW("%s Not found ts  when %s", mLogPrefix.c_str(), __func__);
        return;
    }
    AnalyticTsInfo& rec = editRecord(mTsInfos, index);
    rec.mRenderTimeMs = nsToMs(renderTimeNs);
    rec.mRenderCallTimeMs = monotonicMs();
    const int64_t leadMs = checkedSub(rec.mRenderTimeMs, rec.mRenderCallTimeMs);
    if (debugs(kDebugRender)) {
        ALOGI("%s Render R-S:%lld R:%lld(%lld) pts:%lld %zd/%zu", mLogPrefix.c_str(), ll(leadMs),
              ll(rec.mRenderTimeMs), ll(checkedSub(rec.mRenderTimeMs, mLastRendered.mRenderTimeMs)),
              ll(timeUs), index, mTsInfos.size());
    }
    if (debugs(kDebugTimeline) && leadMs < mVsyncPeriod) {
        char label[40];
        snprintf(label, sizeof(label), "Small_Early:%lld", ll(leadMs));
        frameAnalyze_l(timeUs, label, false);
    }
    foldRender_l(rec, leadMs);
    mAnalyzed = false;
    mLastRendered = rec;
    removeRecord(mTsInfos, index);
    if (mFramesOwnedByUs > 0) --mFramesOwnedByUs;

    const int64_t nowMs = mLastRendered.mRenderCallTimeMs;
    if (mLastAvSyncLogMs < 0 || checkedSub(nowMs, mLastAvSyncLogMs) > kAvSyncPeriodMs) {
        logAvSync_l(leadMs, renderTimeNs);
        mLastAvSyncLogMs = nowMs;
        resetRenderStatusInfo_l();
    }
}

void ZephraMediaAnalytic::FrameTracker::foldRender_l(const AnalyticTsInfo& rec, int64_t leadMs) {
    // Before the first line nothing precedes this frame that it could keep a distance to.
    if (mLastAvSyncLogMs != kNeverLogged) {
        fold(checkedSub(rec.mRenderTimeMs, mLastRendered.mRenderTimeMs), mRenderIntervalMin,
             mRenderIntervalMax, mRenderIntervalSum);
        fold(checkedSub(rec.mTimeUs, mLastRendered.mTimeUs), mTsStepMin, mTsStepMax, mTsStepSum);
    }
    fold(leadMs, mRenderLeadMin, mRenderLeadMax, mRenderLeadSum);
    ++mRenderCount;
}

/** For the frame that was rendered last. */
void ZephraMediaAnalytic::FrameTracker::logAvSync_l(int64_t leadMs, long renderTimeNs) const {
    const AnalyticTsInfo& rec = mLastRendered;
    const int64_t nowMs = rec.mRenderCallTimeMs;
    const int64_t elapsedMs = mLastAvSyncLogMs >= 0 ? checkedSub(nowMs, mLastAvSyncLogMs) : 0;

    const int64_t count = mRenderCount;
    const bool hasSteps = count >= 2;
    const int64_t averageInterval = hasSteps ? checkedMul(elapsedMs, 1000) / (count - 1) : 0;
    const int64_t averageStep = hasSteps ? mTsStepSum / (count - 1) : 0;
    const int64_t averageLead = count > 0 ? mRenderLeadSum / count : 0;

    // A client that renders by media time tells nothing about when the frame will be seen.
    const int64_t mediaMs = usToMs(rec.mTimeUs);
    const int64_t leadShown = checkedMul(rec.mTimeUs, 1000) == renderTimeNs ? 0 : leadMs;
    const int64_t baseMs = usToMs(mFirstOutputTs);
    const int64_t positionMs = checkedSub(checkedSub(mediaMs, leadShown), baseMs);
    const auto minimum = [](int64_t min, int64_t unit) -> long {
        return min == kNoMinimum ? -1 : min / unit;
    };
    ALOGI("AVSYNC_V:%lld(%lld)(%lld) b:%lld rts:%lld(%lld) pid:%d%s min:%ld(%ld )(%ld) "
          "max:%lld(%lld)(%lld) avg:%lld(%lld)(%lld) cnt:%d(%ld)",
          ll(positionMs), ll(checkedSub(nowMs, positionMs)), ll(mediaMs), ll(baseMs),
          ll(rec.mRenderTimeMs), ll(leadShown), getpid(),
          mLastAvSyncLogMs == kNeverLogged ? " First" : "", minimum(mRenderIntervalMin, 1),
          minimum(mTsStepMin, 1000), minimum(mRenderLeadMin, 1), ll(mRenderIntervalMax),
          ll(mTsStepMax / 1000), ll(mRenderLeadMax), ll(averageInterval), ll(averageStep),
          ll(averageLead), static_cast<int>(mRenderCount), static_cast<long>(elapsedMs));
}

void ZephraMediaAnalytic::FrameTracker::resetRenderStatusInfo() {
    Mutex::Autolock lock(mLock);
    resetRenderStatusInfo_l();
}

void ZephraMediaAnalytic::FrameTracker::resetRenderStatusInfo_l() {
    mRenderIntervalMin = mTsStepMin = mRenderLeadMin = kNoMinimum;
    mRenderIntervalMax = mTsStepMax = mRenderLeadMax = 0;
    mRenderIntervalSum = mTsStepSum = mRenderLeadSum = 0;
    mRenderCount = 0;
}

void ZephraMediaAnalytic::FrameTracker::dropFrameAnalyze(long timeUs) {
    Mutex::Autolock lock(mLock);
    if (mIsVideo) frameAnalyze_l(timeUs, "Drop", true);
}

}  // namespace android
