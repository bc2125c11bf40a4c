// SPDX-License-Identifier: Apache-2.0
// The end of a frame: rendered, with statistics of how evenly, or dropped.

#define LOG_TAG "ZMediaAnalyticV"

#include <mediaCodecLogger/analytics/FrameTracker.h>

#include <inttypes.h>
#include <string.h>
#include <unistd.h>

#include <charconv>
#include <iterator>

#include <log/log.h>

#include <mediaCodecLogger/analytics/RecordVector.h>
#include <mediaCodecLogger/analytics/TrackerClock.h>

namespace android {

using namespace analytics;

namespace {

/** A statistics line is due when the last one is older. */
constexpr int64_t kAvSyncPeriodMs = 5000;

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
    if (debugs(DEBUG_RENDER)) {
        ALOGI("%s Render R-S:%" PRId64 " R:%" PRId64 "(%" PRId64 ") pts:%" PRId64 " %zd/%zu",
              mLogPrefix.c_str(), leadMs, rec.mRenderTimeMs,
              checkedSub(rec.mRenderTimeMs, mLastRendered.mRenderTimeMs), timeUs, index,
              mTsInfos.size());
    }
    if (debugs(DEBUG_TIMELINE) && leadMs < mSettings.mVsyncPeriod) {
        // Late already, or too close to the next vsync to be shown by it. The label takes no memory
        // from the heap.
        char label[40] = "Small_Early:";
        *std::to_chars(label + strlen(label), std::end(label), leadMs).ptr = '\0';
        frameAnalyze_l(timeUs, label, false);
    }
    foldRender_l(rec, leadMs);
    mAnalyzed = false;
    // A copy, because the stages of later frames are measured from this one's.
    mLastRendered = rec;
    removeRecord(mTsInfos, index);
    if (mFramesOwnedByUs > 0) --mFramesOwnedByUs;

    // The first render after start or flush has a line of its own, from which periods count.
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
        mStatistics.renderInterval.fold(checkedSub(rec.mRenderTimeMs, mLastRendered.mRenderTimeMs));
        mStatistics.tsStep.fold(checkedSub(rec.mTimeUs, mLastRendered.mTimeUs));
    }
    mStatistics.renderLead.fold(leadMs);
    ++mStatistics.renderCount;
}

/** Where playback stands, by the frame that was rendered last, and how evenly it got there. */
void ZephraMediaAnalytic::FrameTracker::logAvSync_l(int64_t leadMs, long renderTimeNs) const {
    const AnalyticTsInfo& rec = mLastRendered;
    const int64_t nowMs = rec.mRenderCallTimeMs;
    const int64_t elapsedMs = mLastAvSyncLogMs >= 0 ? checkedSub(nowMs, mLastAvSyncLogMs) : 0;

    // A client that renders by media time tells nothing about when the frame will be seen.
    const int64_t mediaMs = usToMs(rec.mTimeUs);
    const int64_t leadShown = checkedMul(rec.mTimeUs, 1000) == renderTimeNs ? 0 : leadMs;
    const int64_t baseMs = usToMs(mFirstOutputTs);
    const int64_t positionMs = checkedSub(checkedSub(mediaMs, leadShown), baseMs);
    const RenderStatistics& all = mStatistics;
    ALOGI("AVSYNC_V:%" PRId64 "(%" PRId64 ")(%" PRId64 ") b:%" PRId64 " rts:%" PRId64 "(%" PRId64
          ") pid:%d%s min:%" PRId64 "(%" PRId64 " )(%" PRId64 ") max:%" PRId64 "(%" PRId64
          ")(%" PRId64 ") avg:%" PRId64 "(%" PRId64 ")(%" PRId64 ") cnt:%d(%" PRId64 ")",
          positionMs, checkedSub(nowMs, positionMs), mediaMs, baseMs, rec.mRenderTimeMs, leadShown,
          getpid(), mLastAvSyncLogMs == kNeverLogged ? " First" : "",
          all.renderInterval.shownMin(1), all.tsStep.shownMin(1000), all.renderLead.shownMin(1),
          all.renderInterval.max, all.tsStep.max / 1000, all.renderLead.max,
          all.averageInterval(elapsedMs), all.averageStep(), all.averageLead(),
          static_cast<int>(all.renderCount), elapsedMs);
}

void ZephraMediaAnalytic::FrameTracker::resetRenderStatusInfo() {
    Mutex::Autolock lock(mLock);
    resetRenderStatusInfo_l();
}

void ZephraMediaAnalytic::FrameTracker::resetRenderStatusInfo_l() {
    mStatistics = RenderStatistics();
}

void ZephraMediaAnalytic::FrameTracker::dropFrameAnalyze(long timeUs) {
    Mutex::Autolock lock(mLock);
    if (mIsVideo) frameAnalyze_l(timeUs, "Drop", true);
}

}  // namespace android
