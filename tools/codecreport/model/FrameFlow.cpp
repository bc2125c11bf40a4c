// SPDX-License-Identifier: Apache-2.0
#include "model/FrameFlow.h"

#include <stdlib.h>

#include <algorithm>

namespace android::codecreport {

namespace {

// What the library calls a seek.
constexpr int64_t kMaxStepUs = 5'000'000;
// The log shows the distance to the last rendered frame in whole milliseconds.
constexpr int64_t kPtsGrainUs = 1500;
// Shorter waits at the display hold nobody up; more of them than a frame can meet are forgotten.
constexpr int64_t kLeastWaitUs = 5000;
constexpr size_t kMaxWaits = 64;
// More than any device takes.
constexpr int64_t kLongDecryptUs = 20'000;

}  // namespace

FrameFlow::FrameFlow(Session* session, FrameStore* store)
    : mSession(session), mStore(store), mSync(session) {}

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
    return frame;
}

Frame FrameFlow::take(int64_t ptsUs) {
    const Frame frame = get(ptsUs);
    mInFlight.erase(std::find_if(mInFlight.begin(), mInFlight.end(),
                                 [ptsUs](const Frame& f) { return f.ptsUs == ptsUs; }));
    return frame;
}

void FrameFlow::onRecords(int64_t records, int64_t timeUs) {
    // Not every flush has a line, but none leaves a frame in flight.
    if (records == 1 && mInFlight.size() > 1) onFlush(timeUs);
}

void FrameFlow::onQueued(Frame* frame) {
    frame->insideBefore = 0;
    for (const Frame& other : mInFlight) {
        if (&other != frame && other.queuedUs != kNoTime && other.codecOutUs == kNoTime) {
            ++frame->insideBefore;
        }
    }
}

void FrameFlow::onDecoded(Frame* frame, int64_t records) {
    if (frame->inside >= 0) return;
    int64_t inside = 0;
    int64_t output = 0;
    for (const Frame& other : mInFlight) {
        if (other.outputUs != kNoTime) ++output;
        if (&other == frame || other.codecOutUs != kNoTime) continue;
        if (other.queuedUs != kNoTime) ++inside;
    }
    if (mSession->inputs > 0) {
        frame->inside = inside;
    } else if (records >= output) {
        // Without a line for each input the number of records tells what the client has not got.
        frame->inside = records - output;
    }
}

void FrameFlow::onRendered(int64_t ptsUs, int64_t callUs, int64_t displayUs) {
    Frame frame = take(ptsUs);
    closeDropRun();
    frame.rendered = true;
    frame.renderCallUs = callUs;
    frame.displayUs = displayUs == kNoTime ? callUs : displayUs;
    ++mSession->rendered;
    mSession->renderedRate.add(callUs, 1);
    const int64_t stepUs = ptsUs - mLastPtsUs;
    if (mHasLast && (stepUs < 0 || stepUs > kMaxStepUs)) {
        // Playback goes on elsewhere; the seek was logged when this frame was output, not now.
        onDiscontinuity(Place::SEEK, kNoTime);
    }
    mHasLast = true;
    mLastPtsUs = ptsUs;
    // What is asked for too late is shown as soon as possible.
    mLastShownUs = std::max(frame.displayUs, callUs);
    mLastCallUs = callUs;
    mSync.onShown(mLastShownUs, ptsUs);
    retire(frame);
}

void FrameFlow::onDropped(int64_t ptsUs, int64_t timeUs, int64_t lastPtsUs, int64_t lastShownUs) {
    Frame frame = take(ptsUs);
    frame.dropped = true;
    frame.renderCallUs = timeUs;
    ++mSession->dropped;
    // The log may hold a line for each drop and none for renders.
    if (mHasLast) {
        lastPtsUs = mLastPtsUs;
        lastShownUs = mLastShownUs;
    }
    const int64_t stepUs = ptsUs - lastPtsUs;
    if (lastShownUs != kNoTime && stepUs >= 0 && stepUs <= kMaxStepUs) {
        frame.dueUs = lastShownUs + stepUs;
    }
    foldDrop(lastPtsUs);
    retire(frame);
}

void FrameFlow::onSyncLine(int64_t timeUs, int64_t behindMs, int64_t elapsedMs) {
    mSync.onSyncLine(timeUs, behindMs, elapsedMs);
}

void FrameFlow::onDisplayQueued(int64_t ptsUs, int64_t endUs, int64_t tookUs) {
    // The call began when the render was reported.
    if (tookUs < 0 && mHasLast && ptsUs == mLastPtsUs) tookUs = endUs - mLastCallUs;
    remember(&mQueueWaits, {endUs - tookUs, endUs});
}

void FrameFlow::onDequeued(int64_t endUs, int64_t tookUs) {
    remember(&mDequeueWaits, {endUs - tookUs, endUs});
}

void FrameFlow::onDecrypted(int64_t endUs, int64_t tookUs) {
    if (tookUs >= kLongDecryptUs) remember(&mDecrypts, {endUs - tookUs, endUs});
}

void FrameFlow::remember(std::deque<Wait>* waits, Wait wait) {
    if (wait.endUs - wait.beginUs < kLeastWaitUs) return;
    if (waits->size() == kMaxWaits) waits->pop_front();
    waits->push_back(wait);
}

/** How much of a time was spent waiting; two lines may tell of the same wait. */
int64_t FrameFlow::overlapUs(const std::deque<Wait>& waits, int64_t beginUs, int64_t endUs) {
    int64_t sumUs = 0;
    if (beginUs == kNoTime || endUs == kNoTime) return sumUs;
    for (auto wait = waits.rbegin(); wait != waits.rend() && wait->endUs > beginUs; ++wait) {
        const int64_t fromUs = std::max(beginUs, wait->beginUs);
        sumUs += std::max<int64_t>(0, std::min(endUs, wait->endUs) - fromUs);
        endUs = std::min(endUs, fromUs);
    }
    return sumUs;
}

void FrameFlow::foldDrop(int64_t lastPtsUs) {
    if (mDropRun > 0 && std::abs(lastPtsUs - mDropRunLastPtsUs) > kPtsGrainUs) closeDropRun();
    if (mDropRun++ == 0) mDropRunLastPtsUs = lastPtsUs;
}

void FrameFlow::closeDropRun() {
    if (mDropRun == 0) return;
    ++mSession->dropRunCount;
    ++mSession->dropRunLengths[std::min(mDropRun, kMaxRunLength + 1)];
    mSession->longestDropRun = std::max(mSession->longestDropRun, mDropRun);
    mDropRun = 0;
}

void FrameFlow::retire(Frame frame) {
    if (frame.lastUs() == kNoTime) return;
    if (frame.hasFate()) {
        frame.begins = mBegins;
        frame.begunUs = mBegunUs;
        // Frames on the way to where a seek goes are dropped before the first that is shown.
        if (frame.rendered) mBegins = Place::PLAYBACK;
    }
    frame.dequeueWaitUs =
            overlapUs(mDequeueWaits, std::max(frame.codecInUs, mLastOutUs), frame.codecOutUs);
    frame.messageQueueWaitUs = overlapUs(mQueueWaits, frame.codecOutUs, frame.outputUs);
    frame.messageDecryptWaitUs = overlapUs(mDecrypts, frame.codecOutUs, frame.outputUs);
    frame.decryptWaitUs = overlapUs(mDecrypts, frame.outputUs, frame.renderCallUs);
    if (frame.codecOutUs != kNoTime) mLastOutUs = frame.codecOutUs;
    frame.queueWaitUs = overlapUs(mQueueWaits, frame.outputUs, frame.renderCallUs);
    for (size_t i = 0; i < kStageCount; ++i) {
        const int64_t ms = frame.stageMs(static_cast<Stage>(i));
        if (ms != kNoTime) mSession->stages[i].add(ms);
    }
    mStore->add(mSession->id, frame);
}

void FrameFlow::onDiscontinuity(Place place, int64_t timeUs) {
    closeDropRun();
    mSync.onDiscontinuity();
    mHasLast = false;
    // A flush that belongs to a seek is part of it.
    if (mBegins == Place::START) return;
    if (mBegins == Place::PLAYBACK) mBegunUs = timeUs;
    mBegins = mBegins == Place::SEEK ? Place::SEEK : place;
}

void FrameFlow::onSeek() {
    if (mBegins == Place::FLUSH) mBegins = Place::SEEK;
}

void FrameFlow::onFlush(int64_t timeUs) {
    onDiscontinuity(Place::FLUSH, timeUs);
    mInFlight.clear();
}

void FrameFlow::finish() {
    closeDropRun();
    mSync.finish();
    for (const Frame& frame : mInFlight) retire(frame);
    mInFlight.clear();
}

}  // namespace android::codecreport
