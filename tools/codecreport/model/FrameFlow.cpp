// SPDX-License-Identifier: Apache-2.0
#include "model/FrameFlow.h"

#include <algorithm>

namespace android::codecreport {

namespace {

constexpr size_t kFreezeFrames = 30;
constexpr size_t kMinFreezeFrames = 5;
constexpr int64_t kFreezeExtraMs = 150;
constexpr int64_t kPauseMs = 5000;

// What the library calls a seek.
constexpr int64_t kMaxStepUs = 5'000'000;

// What the library takes for a resume: audio stood still too, and a new schedule holds.
constexpr int64_t kResumeMs = 1000;

constexpr size_t kReferenceFrames = 15;
// Beyond these the eye notices: sound early by 45 ms (video late), sound late by 100 ms.
constexpr int64_t kVideoLateMs = 45;
constexpr int64_t kVideoEarlyMs = -100;

constexpr int64_t kPtsGrainUs = 1500;

constexpr uint64_t kMinUsual = 20;
constexpr uint64_t kUsualEvery = 64;
// A dequeue that took long ended shortly before it held the frame up.
constexpr int64_t kDisplayWaitReachUs = 500'000;
// A frame is worth a line in the table of the worst from here on.
constexpr int64_t kLateMs = 8;

/** For drawing: days are off every scale. */
int32_t narrow(int64_t ms) {
    return static_cast<int32_t>(std::clamp<int64_t>(ms, -1'000'000'000, 1'000'000'000));
}

bool isOutside(int64_t offsetMs) {
    return offsetMs > kVideoLateMs || offsetMs < kVideoEarlyMs;
}

}  // namespace

FrameFlow::FrameFlow(Session* session, SessionObserver* observer)
    : mSession(session), mObserver(observer) {}

Frame* FrameFlow::find(int64_t ptsUs) {
    for (Frame& frame : mInFlight) {
        if (frame.ptsUs == ptsUs) return &frame;
    }
    return nullptr;
}

Frame& FrameFlow::get(int64_t ptsUs, bool announcing) {
    Frame* known = find(ptsUs);
    if (known != nullptr && !(announcing && known->outputUs != kNoTime)) return *known;
    if (mInFlight.size() == kMaxInFlight) {
        // The log does not tell how frames end.
        const Frame oldest = mInFlight.front();
        mInFlight.pop_front();
        retire(oldest);
    }
    Frame& frame = mInFlight.emplace_back();
    frame.ptsUs = ptsUs;
    if (mObserver != nullptr && mSession->endUs != kNoTime) {
        mObserver->onCounter(*mSession, Counter::FRAMES_IN_FLIGHT, mSession->endUs,
                             mInFlight.size());
    }
    return frame;
}

void FrameFlow::onRendered(int64_t ptsUs, int64_t callUs, int64_t displayUs) {
    Frame frame = get(ptsUs);
    mInFlight.erase(std::find_if(mInFlight.begin(), mInFlight.end(),
                                 [ptsUs](const Frame& f) { return f.ptsUs == ptsUs; }));
    closeDropRun();
    frame.rendered = true;
    frame.renderCallUs = callUs;
    // What is asked for too late is shown as soon as possible.
    frame.displayUs = displayUs == kNoTime ? callUs : displayUs;
    ++mSession->rendered;
    mSession->renderedRate.add(callUs, 1);
    foldInterval(&frame);
    mHasLast = true;
    mLast = frame;
    mDroppedSince = false;
    retire(frame);
}

void FrameFlow::onDropped(int64_t ptsUs, int64_t timeUs, int64_t lastPtsUs, int64_t lastShownUs) {
    Frame frame = get(ptsUs);
    mInFlight.erase(std::find_if(mInFlight.begin(), mInFlight.end(),
                                 [ptsUs](const Frame& f) { return f.ptsUs == ptsUs; }));
    frame.dropped = true;
    frame.renderCallUs = timeUs;
    ++mSession->dropped;
    // The log may hold a line for each drop and none for renders.
    if (mHasLast) {
        lastPtsUs = mLast.ptsUs;
        lastShownUs = std::max(mLast.displayUs, mLast.renderCallUs);
    }
    const int64_t stepUs = ptsUs - lastPtsUs;
    if (lastShownUs != kNoTime && stepUs >= 0 && stepUs <= kMaxStepUs) {
        frame.dueUs = lastShownUs + stepUs;
    }
    const int64_t lateMs = frame.dueUs == kNoTime ? 0 : (timeUs - frame.dueUs) / 1000;
    const Verdict verdict = judge(frame, usual(), lateMs, displayWaitFor(frame));
    if (!mDroppedSince || lateMs > mDroppedLateMs) {
        mDroppedVerdict = verdict;
        mDroppedLateMs = lateMs;
    }
    mDroppedSince = true;
    foldDrop(frame, verdict.cause, lastPtsUs);
    // Before anything was shown, no frame is late.
    if (frame.dueUs != kNoTime) keepIfWorst(frame, lateMs, verdict);
    retire(frame);
}

void FrameFlow::foldInterval(Frame* frame) {
    const int64_t shownUs = std::max(frame->displayUs, frame->renderCallUs);
    int64_t intervalMs = 0;
    const int64_t stepUs = frame->ptsUs - mLast.ptsUs;
    if (mHasLast && (stepUs < 0 || stepUs > kMaxStepUs)) {
        // Playback goes on elsewhere; the seek was logged when this frame was output, not now.
        onDiscontinuity();
    }
    if (mHasLast) {
        const int64_t lastShownUs = std::max(mLast.displayUs, mLast.renderCallUs);
        intervalMs = (shownUs - lastShownUs) / 1000;
        frame->dueUs = lastShownUs + stepUs;
        const int64_t lateMs = (shownUs - frame->dueUs) / 1000;
        mSession->frameIntervalMs.add(intervalMs);
        mSession->lateMs.add(lateMs);
        if (lateMs >= kLateMs && intervalMs <= kPauseMs) {
            keepIfWorst(*frame, lateMs, judge(*frame, usual(), lateMs, displayWaitFor(*frame)));
        }
        foldFreeze(*frame, intervalMs);
    }
    foldSync(*frame, intervalMs);
}

void FrameFlow::foldFreeze(const Frame& frame, int64_t intervalMs) {
    const size_t known = mIntervalsMs.size();
    if (known >= kMinFreezeFrames && intervalMs <= kPauseMs) {
        const double average = static_cast<double>(mIntervalSumMs) / known;
        if (intervalMs >= std::max(3 * average, average + kFreezeExtraMs)) {
            ++mSession->freezeCount;
            mSession->freezeTotalMs += intervalMs;
            const int64_t startUs = std::max(mLast.displayUs, mLast.renderCallUs);
            const int64_t lateMs = intervalMs - (frame.ptsUs - mLast.ptsUs) / 1000;
            // Frames that were dropped in between would have been shown: what held them up counts.
            const Freeze freeze = {startUs, intervalMs, mLast.ptsUs,
                                   mDroppedSince
                                           ? mDroppedVerdict
                                           : judge(frame, usual(), lateMs, displayWaitFor(frame))};
            if (mObserver != nullptr) {
                mObserver->onSpan(*mSession, "freeze", startUs, startUs + intervalMs * 1000);
            }
            if (mSession->freezes.size() < kMaxFreezes) mSession->freezes.push_back(freeze);
        }
    }
    mIntervalsMs.push_back(intervalMs);
    mIntervalSumMs += intervalMs;
    if (mIntervalsMs.size() > kFreezeFrames) {
        mIntervalSumMs -= mIntervalsMs.front();
        mIntervalsMs.pop_front();
    }
}

void FrameFlow::foldSync(const Frame& frame, int64_t intervalMs) {
    const int64_t shownUs = std::max(frame.displayUs, frame.renderCallUs);
    const Offset offset = {shownUs, (shownUs - frame.ptsUs) / 1000, intervalMs};
    if (intervalMs >= kResumeMs) onResume();
    if (mHasReference) {
        foldOffset(offset);
        return;
    }
    mFirstOffsets.push_back(offset);
    if (mFirstOffsets.size() == kReferenceFrames) settleReference();
}

/** A segment's schedule is the median of its first frames: one early or late frame is no measure.
 */
void FrameFlow::settleReference() {
    if (mFirstOffsets.empty() || mHasReference) return;
    std::vector<int64_t> sorted;
    for (const Offset& offset : mFirstOffsets) sorted.push_back(offset.rawMs);
    std::nth_element(sorted.begin(), sorted.begin() + sorted.size() / 2, sorted.end());
    mReferenceMs = sorted[sorted.size() / 2];
    mHasReference = true;
    for (const Offset& offset : mFirstOffsets) foldOffset(offset);
    mFirstOffsets.clear();
}

void FrameFlow::foldOffset(const Offset& offset) {
    SyncStats& sync = mSession->sync;
    // The offset of the frame before held for this interval; a pause is nobody's offset.
    if (offset.intervalMs > 0 && offset.intervalMs <= kPauseMs && sync.offsets.count() > 0) {
        sync.measuredMs += offset.intervalMs;
        if (isOutside(sync.lastMs)) sync.outsideMs += offset.intervalMs;
    }
    addOffset(offset.timeUs, offset.rawMs - mReferenceMs);
}

void FrameFlow::addOffset(int64_t timeUs, int64_t offsetMs) {
    SyncStats& sync = mSession->sync;
    if (sync.offsets.count() == 0 || std::abs(offsetMs) > std::abs(sync.worstMs)) {
        sync.worstMs = offsetMs;
    }
    sync.lastMs = offsetMs;
    sync.offsets.add(offsetMs);
    sync.offsetMs.add(timeUs, offsetMs);
    if (mObserver != nullptr) {
        mObserver->onCounter(*mSession, Counter::SYNC_OFFSET_MS, timeUs, offsetMs);
    }
}

void FrameFlow::onSyncLine(int64_t timeUs, int64_t behindMs, int64_t elapsedMs) {
    ++mSession->sync.lines;
    // With a line for each frame these lines tell nothing new.
    if (mSession->rendered > 0) return;
    if (!mHasReference) {
        mReferenceMs = behindMs;
        mHasReference = true;
    }
    mSession->sync.measuredMs += elapsedMs;
    if (isOutside(behindMs - mReferenceMs)) mSession->sync.outsideMs += elapsedMs;
    addOffset(timeUs, behindMs - mReferenceMs);
}

void FrameFlow::onResume() {
    settleReference();
    mHasReference = false;
}

void FrameFlow::onDisplayWait(int64_t timeUs, int64_t waitMs) {
    mDisplayWaitUs = timeUs;
    mDisplayWaitMs = waitMs;
}

int64_t FrameFlow::displayWaitFor(const Frame& frame) const {
    if (mDisplayWaitUs == kNoTime || frame.renderCallUs == kNoTime) return 0;
    const int64_t beforeUs = frame.renderCallUs - mDisplayWaitUs;
    return beforeUs >= -kDisplayWaitReachUs && beforeUs <= kDisplayWaitReachUs ? mDisplayWaitMs : 0;
}

void FrameFlow::foldDrop(const Frame& frame, OldCause cause, int64_t lastPtsUs) {
    // The log shows the difference to the last rendered frame in whole milliseconds.
    if (mInDropRun && std::abs(lastPtsUs - mDropRunLastPtsUs) > kPtsGrainUs) closeDropRun();
    if (!mInDropRun) {
        mInDropRun = true;
        mDropRun = DropRun();
        mDropRun.startUs = frame.renderCallUs;
        mDropRun.ptsUs = frame.ptsUs;
        mDropRunLastPtsUs = lastPtsUs;
    }
    mDropRun.endUs = frame.renderCallUs;
    ++mDropRun.frames;
    if (mDropRun.cause == OldCause::UNKNOWN) mDropRun.cause = cause;
}

void FrameFlow::closeDropRun() {
    if (!mInDropRun) return;
    mInDropRun = false;
    ++mSession->dropRunCount;
    ++mSession->dropRunLengths[std::min(mDropRun.frames, kMaxRunLength + 1)];
    mSession->longestDropRun = std::max(mSession->longestDropRun, mDropRun.frames);
    if (mSession->dropRuns.size() < kMaxDropRuns) mSession->dropRuns.push_back(mDropRun);
    if (mObserver != nullptr) {
        mObserver->onSpan(*mSession, "drop run", mDropRun.startUs, mDropRun.endUs);
    }
}

void FrameFlow::keepIfWorst(const Frame& frame, int64_t lateMs, const Verdict& verdict) {
    // The heap's front is the mildest of the worst.
    const auto worse = [](const WorstFrame& a, const WorstFrame& b) { return a.lateMs > b.lateMs; };
    std::vector<WorstFrame>& worst = mSession->worstFrames;
    if (worst.size() == kMaxWorstFrames) {
        if (lateMs <= worst.front().lateMs) return;
        std::pop_heap(worst.begin(), worst.end(), worse);
        worst.pop_back();
    }
    worst.push_back({frame, lateMs, verdict});
    std::push_heap(worst.begin(), worst.end(), worse);
}

const Usual& FrameFlow::usual() {
    if (mFinished >= kMinUsual && (!mUsual.known || mFinished >= mUsualAt + kUsualEvery)) {
        for (size_t i = 0; i < kStageCount; ++i) {
            mUsual.stageMs[i] = mSession->stages[i].percentile(0.5);
        }
        mUsual.inputMs = mInputMs.percentile(0.5);
        mUsual.known = true;
        mUsualAt = mFinished;
    }
    return mUsual;
}

void FrameFlow::foldStages(const Frame& frame) {
    FramePoint point = {frame.lastUs(), frame.ptsUs, {}, kNoStage, frame.dropped};
    bool any = false;
    for (size_t i = 0; i < kStageCount; ++i) {
        const int64_t ms = frame.stageMs(static_cast<Stage>(i));
        point.stageMs[i] = ms == kNoTime ? kNoStage : narrow(ms);
        if (ms == kNoTime) continue;
        any = true;
        mSession->stages[i].add(ms);
    }
    if (frame.dueUs != kNoTime) {
        const int64_t shownUs = std::max(frame.displayUs, frame.renderCallUs);
        point.lateMs = narrow((shownUs - frame.dueUs) / 1000);
    }
    if (any || frame.dropped || frame.rendered) mSession->frames.add(point);
}

void FrameFlow::retire(Frame frame) {
    if (frame.lastUs() == kNoTime) return;
    ++mFinished;
    const int64_t inputUs = frame.announcedUs != kNoTime ? frame.announcedUs : frame.queuedUs;
    if (frame.dueUs != kNoTime && inputUs != kNoTime) {
        mInputMs.add((inputUs - frame.dueUs) / 1000);
    }
    foldStages(frame);
    if (mObserver != nullptr) {
        mObserver->onFrame(*mSession, frame);
        mObserver->onCounter(*mSession, Counter::FRAMES_IN_FLIGHT, frame.lastUs(),
                             mInFlight.size());
    }
}

void FrameFlow::onDiscontinuity() {
    closeDropRun();
    onResume();
    mHasLast = false;
    mIntervalsMs.clear();
    mIntervalSumMs = 0;
}

void FrameFlow::onFlush() {
    onDiscontinuity();
    mInFlight.clear();
}

void FrameFlow::finish() {
    closeDropRun();
    settleReference();
    while (!mInFlight.empty()) {
        const Frame frame = mInFlight.front();
        mInFlight.pop_front();
        retire(frame);
    }
    std::sort(mSession->worstFrames.begin(), mSession->worstFrames.end(),
              [](const WorstFrame& a, const WorstFrame& b) {
                  return a.lateMs != b.lateMs ? a.lateMs > b.lateMs : a.frame.ptsUs < b.frame.ptsUs;
              });
}

}  // namespace android::codecreport
