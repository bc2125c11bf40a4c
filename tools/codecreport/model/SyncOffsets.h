// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include "model/Session.h"

namespace android::codecreport {

/**
 * How far pictures are from the schedule that their segment began with, frame by frame or, where
 * these have no lines, by the sync lines. A schedule is the median of a segment's first frames: one
 * early or late frame is no measure.
 */
class SyncOffsets {
  public:
    explicit SyncOffsets(Session* session) : mSession(session) {}

    void onShown(int64_t shownUs, int64_t ptsUs);
    void onSyncLine(int64_t timeUs, int64_t behindMs, int64_t elapsedMs);
    /** Playback goes on by a new schedule, after a pause for example. */
    void onResume();
    /** Playback goes on elsewhere. */
    void onDiscontinuity();
    void finish() { settle(); }

  private:
    struct Offset {
        int64_t timeUs;
        int64_t rawMs;
        int64_t intervalMs;
    };

    void settle();
    void fold(const Offset& offset);
    void add(int64_t timeUs, int64_t offsetMs);

    Session* mSession;
    bool mHasReference = false;
    int64_t mReferenceMs = 0;
    int64_t mLastShownUs = kNoTime;
    /** What the reference is made of until there is enough of it. */
    std::vector<Offset> mFirst;
};

}  // namespace android::codecreport
