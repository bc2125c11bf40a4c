// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <deque>
#include <vector>

#include "judging/Verdict.h"
#include "model/Session.h"
#include "model/SessionObserver.h"

namespace android::codecreport {

/**
 * Follows the frames of one session from line to line and folds each finished frame into the
 * session: stage times, frame rate, freezes, sync, drop runs, worst frames.
 *
 * Freeze: the rule of WebRTC's statistics. Between two frames pass at least 3 times the average
 * interval of the last 30 frames, and at least 150 ms more than it; more than 5 s is a pause.
 *
 * Memory: the frames in flight (at most kMaxInFlight) and what Session holds.
 */
class FrameFlow {
  public:
    static constexpr size_t kMaxInFlight = 256;

    /** @param observer may be null */
    FrameFlow(Session* session, SessionObserver* observer);

    /** The frame in flight with this timestamp, or nullptr. The oldest wins, as in the library. */
    Frame* find(int64_t ptsUs);
    /** As find(), or a new one; with `announcing`, a new one too if that frame left the codec. */
    Frame& get(int64_t ptsUs, bool announcing = false);

    /** Ends the frame's life. `displayUs` is kNoTime where the client gave no clock time. */
    void onRendered(int64_t ptsUs, int64_t callUs, int64_t displayUs);
    /**
     * @param lastPtsUs of the frame that was rendered last, which tells drop runs apart
     * @param lastShownUs when that was to be shown, kNoTime if there is none
     */
    void onDropped(int64_t ptsUs, int64_t timeUs, int64_t lastPtsUs, int64_t lastShownUs);
    void onSyncLine(int64_t timeUs, int64_t behindMs, int64_t elapsedMs);
    void onDisplayWait(int64_t timeUs, int64_t waitMs);

    /** Playback went on after a pause: its schedule is a new one. */
    void onResume();
    /** Output goes on elsewhere: intervals across this moment mean nothing. */
    void onDiscontinuity();
    /** The same, and the frames in flight are gone. */
    void onFlush();
    /** No more lines come. */
    void finish();

  private:
    /** When a frame was shown, and how far that is from its media time. */
    struct Offset {
        int64_t timeUs;
        int64_t rawMs;
        int64_t intervalMs;
    };

    void retire(Frame frame);
    void foldStages(const Frame& frame);
    void foldInterval(Frame* frame);
    void foldFreeze(const Frame& frame, int64_t intervalMs);
    void foldSync(const Frame& frame, int64_t intervalMs);
    void foldOffset(const Offset& offset);
    void addOffset(int64_t timeUs, int64_t offsetMs);
    void settleReference();
    void foldDrop(const Frame& frame, OldCause cause, int64_t lastPtsUs);
    void closeDropRun();
    void keepIfWorst(const Frame& frame, int64_t lateMs, const Verdict& verdict);
    const Usual& usual();
    int64_t displayWaitFor(const Frame& frame) const;

    Session* mSession;
    SessionObserver* mObserver;
    std::deque<Frame> mInFlight;

    /** The frame rendered last, unless playback went on elsewhere, and the intervals before it. */
    bool mHasLast = false;
    Frame mLast;
    std::deque<int64_t> mIntervalsMs;
    int64_t mIntervalSumMs = 0;

    bool mInDropRun = false;
    DropRun mDropRun;
    int64_t mDropRunLastPtsUs = 0;
    /** What held the latest of the frames up that were dropped since the last one was rendered. */
    bool mDroppedSince = false;
    int64_t mDroppedLateMs = 0;
    Verdict mDroppedVerdict;

    /** The segment's schedule, and the offsets that it is made of until there are enough. */
    bool mHasReference = false;
    int64_t mReferenceMs = 0;
    std::vector<Offset> mFirstOffsets;

    int64_t mDisplayWaitUs = kNoTime;
    int64_t mDisplayWaitMs = 0;

    Histogram mInputMs;
    Usual mUsual;
    uint64_t mUsualAt = 0;
    uint64_t mFinished = 0;
};

}  // namespace android::codecreport
