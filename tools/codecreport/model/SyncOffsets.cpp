// SPDX-License-Identifier: Apache-2.0
#include "model/SyncOffsets.h"

#include <stdlib.h>

#include <algorithm>

namespace android::codecreport {

namespace {

constexpr size_t kReferenceFrames = 15;
// What the library takes for a resume: audio stood still too, and a new schedule holds.
constexpr int64_t kResumeMs = 1000;
// An offset is nobody's for longer than this.
constexpr int64_t kPauseMs = 5000;
// Beyond these the eye notices: sound early by 45 ms (video late), sound late by 100 ms.
constexpr int64_t kVideoLateMs = 45;
constexpr int64_t kVideoEarlyMs = -100;

bool isOutside(int64_t offsetMs) {
    return offsetMs > kVideoLateMs || offsetMs < kVideoEarlyMs;
}

}  // namespace

void SyncOffsets::onShown(int64_t shownUs, int64_t ptsUs) {
    const int64_t intervalMs = mLastShownUs == kNoTime ? 0 : (shownUs - mLastShownUs) / 1000;
    mLastShownUs = shownUs;
    if (intervalMs >= kResumeMs) onResume();
    const Offset offset = {shownUs, (shownUs - ptsUs) / 1000, intervalMs};
    if (mHasReference) {
        fold(offset);
        return;
    }
    mFirst.push_back(offset);
    if (mFirst.size() == kReferenceFrames) settle();
}

void SyncOffsets::onSyncLine(int64_t timeUs, int64_t behindMs, int64_t elapsedMs) {
    ++mSession->sync.lines;
    // With a line for each frame these lines tell nothing new.
    if (mSession->rendered > 0) return;
    if (!mHasReference) {
        mReferenceMs = behindMs;
        mHasReference = true;
    }
    mSession->sync.measuredMs += elapsedMs;
    if (isOutside(behindMs - mReferenceMs)) mSession->sync.outsideMs += elapsedMs;
    add(timeUs, behindMs - mReferenceMs);
}

void SyncOffsets::onResume() {
    settle();
    mHasReference = false;
}

void SyncOffsets::onDiscontinuity() {
    onResume();
    mLastShownUs = kNoTime;
}

void SyncOffsets::settle() {
    if (mFirst.empty() || mHasReference) return;
    std::vector<int64_t> sorted;
    for (const Offset& offset : mFirst) sorted.push_back(offset.rawMs);
    std::nth_element(sorted.begin(), sorted.begin() + sorted.size() / 2, sorted.end());
    mReferenceMs = sorted[sorted.size() / 2];
    mHasReference = true;
    for (const Offset& offset : mFirst) fold(offset);
    mFirst.clear();
}

void SyncOffsets::fold(const Offset& offset) {
    SyncStats& sync = mSession->sync;
    // The offset of the frame before held for this interval.
    if (offset.intervalMs > 0 && offset.intervalMs <= kPauseMs && sync.offsets.count() > 0) {
        sync.measuredMs += offset.intervalMs;
        if (isOutside(sync.lastMs)) sync.outsideMs += offset.intervalMs;
    }
    add(offset.timeUs, offset.rawMs - mReferenceMs);
}

void SyncOffsets::add(int64_t timeUs, int64_t offsetMs) {
    SyncStats& sync = mSession->sync;
    if (sync.offsets.count() == 0 || std::abs(offsetMs) > std::abs(sync.worstMs)) {
        sync.worstMs = offsetMs;
    }
    sync.lastMs = offsetMs;
    sync.offsets.add(offsetMs);
    sync.offsetMs.add(timeUs, offsetMs);
}

}  // namespace android::codecreport
