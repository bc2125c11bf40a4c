// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <deque>
#include <functional>

#include "judging/IncidentList.h"

namespace android::codecreport {

/**
 * Walks through the frames of a session as the viewer saw them: which was shown when, which stood
 * too long, came late or never. Frames come in the order in which they were rendered or dropped,
 * those that were on their way when the log ended last.
 *
 * Memory: the frames of about a second around the present one.
 */
class Timeline {
  public:
    using Sink = std::function<void(const JudgedFrame&)>;

    /** All arguments outlive it; the sink may be empty. */
    Timeline(const Session& session, const Usual& usual, Sink sink);

    void add(const Frame& frame);
    /** No more frames; the judgement but for its words. */
    void finish(Judgement* judgement);

    /** From picture to picture, and how much later than due they were. */
    Histogram intervalMs;
    Histogram lateMs;

  private:
    /** The picture on the display. */
    struct Picture {
        int64_t shownUs = kNoTime;
        int64_t ptsUs = 0;
        /** Its time is over when the next frame of the stream is due. */
        int64_t nextPtsUs = kNoTime;
    };

    void walk();
    void begin(const Frame& frame, JudgedFrame* judged);
    void onDropped(const Frame& frame, JudgedFrame* judged);
    void onRendered(const Frame& frame, JudgedFrame* judged);
    void onStood(const Frame& frame, int64_t stoodUs, JudgedFrame* judged);
    uint64_t blame(int64_t dueUs, int64_t untilUs, int64_t lateUs, bool begins);
    void show(const Frame& frame, int64_t shownUs);
    void keepSchedule(int64_t offsetUs);
    void end();
    Cause causeOfEnd(int64_t dueUs, bool orderly) const;
    std::string evidenceOfEnd(Cause cause) const;
    void countStanding(int64_t fromUs, int64_t stoodUs);

    int64_t shownAt(const Frame& frame) const;
    bool isReplaced(const Frame& frame, int64_t shownUs) const;
    bool isPause(const Frame& frame, int64_t stoodUs) const;
    bool isFasterThanDisplay() const;
    LateFrame lateFrame(int64_t lateUs, int64_t inheritedUs, bool begins) const;

    const Session& mSession;
    const Usual& mUsual;
    Sink mSink;
    std::deque<Frame> mFrames;
    size_t mAt = 0;

    Picture mPicture;
    Place mPlace = Place::START;
    int64_t mPicturesSinceBegin = 0;
    /** Due time minus timestamp, while playback keeps one; and of the latest pictures. */
    int64_t mScheduleUs = 0;
    /** By how much the first picture since playback began missed the time asked for. */
    int64_t mAskedLateUs = 0;
    std::deque<int64_t> mOffsetsUs;
    int64_t mLateUs = 0;
    bool mLostSincePicture = false;
    /** A render time that was on the display's grid. */
    int64_t mRefreshUs = kNoTime;

    IncidentList mIncidents;
    Standing mStanding;
    uint64_t mShown = 0;
    uint64_t mNeverShown = 0;
    uint64_t mMistimed = 0;
    int64_t mPlaybackUs = 0;
};

}  // namespace android::codecreport
