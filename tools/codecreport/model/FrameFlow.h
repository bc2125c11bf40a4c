// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <deque>

#include "model/FrameStore.h"
#include "model/Session.h"
#include "model/SyncOffsets.h"

namespace android::codecreport {

/**
 * Follows the frames of one session from line to line. What became of a frame goes to the store,
 * for the session to be judged when all is known; what need not wait for that is counted.
 *
 * Memory: the frames in flight (at most kMaxInFlight) and what Session holds.
 */
class FrameFlow {
  public:
    static constexpr size_t kMaxInFlight = 256;

    FrameFlow(Session* session, FrameStore* store);

    /** The frame in flight with this timestamp, or nullptr. The oldest wins, as in the library. */
    Frame* find(int64_t ptsUs);
    size_t inFlight() const { return mInFlight.size(); }
    /** As find(), or a new one; with `announcing`, a new one too if that frame left the codec. */
    Frame& get(int64_t ptsUs, bool announcing = false);

    /** So many frames are in flight, with the one that is being queued. */
    void onRecords(int64_t records, int64_t timeUs);
    /** It went to the component. */
    void onQueued(Frame* frame);
    /** The component is done with a frame. `records`: frames in flight by its line, -1: no word. */
    void onDecoded(Frame* frame, int64_t records);
    /** Ends the frame's life. `displayUs` is kNoTime where the client gave no clock time. */
    void onRendered(int64_t ptsUs, int64_t callUs, int64_t displayUs);
    /**
     * @param lastPtsUs of the frame that was rendered last, which tells drop runs apart
     * @param lastShownUs when that was to be shown, kNoTime if there is none
     */
    void onDropped(int64_t ptsUs, int64_t timeUs, int64_t lastPtsUs, int64_t lastShownUs);
    void onSyncLine(int64_t timeUs, int64_t behindMs, int64_t elapsedMs);

    /** A frame was queued to the display, which ended now and took so long if the line tells. */
    void onDisplayQueued(int64_t ptsUs, int64_t endUs, int64_t tookUs);
    /** The component waited for a buffer of the display until now. */
    void onDequeued(int64_t endUs, int64_t tookUs);

    /** The client's input was decrypted until now. */
    void onDecrypted(int64_t endUs, int64_t tookUs);

    /** Playback went on after a pause: its schedule is a new one. */
    void onResume() { mSync.onResume(); }
    /** Output went on elsewhere; without a flush frames of before are still to come. */
    void onSeek();
    /** What is rendered next is elsewhere. */
    void onDiscontinuity(Place place, int64_t timeUs);
    /** The same, and the frames in flight are gone. */
    void onFlush(int64_t timeUs);
    /** No more lines come. */
    void finish();

  private:
    struct Wait {
        int64_t beginUs;
        int64_t endUs;
    };

    Frame take(int64_t ptsUs);
    void retire(Frame frame);
    void foldDrop(int64_t lastPtsUs);
    void closeDropRun();
    static void remember(std::deque<Wait>* waits, Wait wait);
    static int64_t overlapUs(const std::deque<Wait>& waits, int64_t beginUs, int64_t endUs);

    Session* mSession;
    FrameStore* mStore;
    SyncOffsets mSync;
    std::deque<Frame> mInFlight;

    /** The frame rendered last, unless playback went on elsewhere. */
    bool mHasLast = false;
    int64_t mLastPtsUs = 0;
    int64_t mLastShownUs = 0;
    int64_t mLastCallUs = 0;
    /** What the next frame to be rendered or dropped begins. */
    Place mBegins = Place::START;
    int64_t mBegunUs = kNoTime;

    /** When the component was done with the frame before. */
    int64_t mLastOutUs = kNoTime;

    int64_t mDropRun = 0;
    int64_t mDropRunLastPtsUs = 0;

    /** The latest waits at the display and for input, for frames that they held up. */
    std::deque<Wait> mQueueWaits;
    std::deque<Wait> mDequeueWaits;
    std::deque<Wait> mDecrypts;
};

}  // namespace android::codecreport
