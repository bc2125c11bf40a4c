// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <functional>
#include <queue>
#include <string>
#include <vector>

#include "model/Frame.h"
#include "model/Session.h"
#include "output/TraceStream.h"

namespace android::codecreport {

/**
 * One session in a trace. Frames come in the order in which they ended.
 *
 * Memory: its tracks, and the frames of the next few seconds that are counted.
 */
class SessionTrace {
  public:
    /** @param originUs time 0 of the trace on the log's timeline */
    SessionTrace(TraceStream* stream, uint64_t process, int64_t originUs, const Session& session);

    /** All but the frames. */
    void writeSession();
    void addFrame(const JudgedFrame& frame);
    /** No more frames. */
    void finish();

  private:
    /** Tracks below that of the session, from top to bottom. */
    enum Group {
        INCIDENTS,
        EXPECTED,
        ACTUAL,
        DECRYPT,
        CODEC,
        MESSAGE,
        APP,
        LEAD,
        FRAMES_IN_FLIGHT,
        BITRATE,
        SYNC_OFFSET,
        DISPLAY_BUFFERS,
        GROUP_COUNT,
    };
    struct Lane {
        uint64_t track;
        int64_t busyUntilUs;
    };
    /** A frame came into the codec (+1) or left it (-1). */
    struct Step {
        int64_t timeUs;
        int change;
        bool operator>(const Step& other) const { return timeUs > other.timeUs; }
    };

    int64_t ns(int64_t timeUs) const { return (timeUs - mOriginUs) * 1000; }
    uint64_t addTrack(Group group);
    void slice(Group group, int64_t beginUs, int64_t endUs, const TraceEvent& event);
    void phase(const char* name, int64_t beginUs, int64_t endUs);
    void writeIncident(const Incident& incident);
    void writeSeries(Group group, const Series& series);
    void writeStages(const Frame& frame, const TraceEvent& event);
    void writeDisplay(const JudgedFrame& judged);
    void endPicture(int64_t shownUs);
    void count(const Frame& frame);
    void emitCounts(size_t keep);
    const Incident* incidentOf(const JudgedFrame& judged) const;

    TraceStream* mStream;
    int64_t mOriginUs;
    const Session& mSession;
    std::string mId;
    uint64_t mTrack;
    std::array<std::vector<Lane>, GROUP_COUNT> mLanes;

    /** Counts all frames of the session: the library's numbers start over at any flush. */
    int64_t mFrames = 0;
    /** How long a picture stays by the content's rate; 0: not known. */
    int64_t mPeriodUs = 0;
    /** The picture on the display, until the next one is. */
    TraceEvent mPicture = {};
    int64_t mPictureUs = kNoTime;

    std::priority_queue<Step, std::vector<Step>, std::greater<>> mSteps;
    int64_t mInFlight = 0;
};

}  // namespace android::codecreport
