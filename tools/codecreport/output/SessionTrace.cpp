// SPDX-License-Identifier: Apache-2.0
#include "output/SessionTrace.h"

#include <math.h>
#include <stdio.h>

#include <algorithm>

namespace android::codecreport {

namespace {

// Frames come out of order by what a codec holds, at most; each is two steps.
constexpr size_t kStepsAhead = 1024;

std::string sharesInWords(const Incident& incident) {
    std::string text;
    for (size_t i = 0; i < kCauseCount; ++i) {
        if (incident.shares[i] <= 0) continue;
        char share[16];
        snprintf(share, sizeof(share), " %.0f %%", 100 * incident.shares[i]);
        text += (text.empty() ? "" : ", ") + std::string(inWords(static_cast<Cause>(i))) + share;
    }
    return text;
}

struct GroupName {
    const char* name;
    /** Of counters. */
    const char* unit;
};

}  // namespace

SessionTrace::SessionTrace(TraceStream* stream, uint64_t process, int64_t originUs,
                           const Session& session)
    : mStream(stream),
      mOriginUs(originUs),
      mSession(session),
      mId("session " + std::to_string(session.id)) {
    TraceTrack track = {};
    track.parent = process;
    track.name = (session.tagText.empty() ? "video " + session.tag.format : session.tagText) +
                 " #" + std::to_string(session.id);
    track.rank = session.id;
    mTrack = stream->addTrack(mId, track);
    const auto& fps = session.judgement.cadence.contentFps;
    if (fps && *fps > 0) mPeriodUs = llround(1e6 / *fps);
}

uint64_t SessionTrace::addTrack(Group group) {
    static constexpr GroupName kNames[GROUP_COUNT] = {{"incidents", nullptr},
                                                      {"expected on display", nullptr},
                                                      {"actual on display", nullptr},
                                                      {"decrypt", nullptr},
                                                      {"codec", nullptr},
                                                      {"message", nullptr},
                                                      {"app", nullptr},
                                                      {"lead", nullptr},
                                                      {"frames in flight", "frames"},
                                                      {"input bitrate", "kbit/s"},
                                                      {"sync offset", "ms"},
                                                      {"buffers at the display", "buffers"}};
    TraceTrack track = {};
    track.parent = mTrack;
    track.name = kNames[group].name;
    track.rank = group;
    track.unit = kNames[group].unit;
    const std::string lane = std::to_string(mLanes[group].size());
    return mStream->addTrack(mId + " " + track.name + " " + lane, track);
}

void SessionTrace::slice(Group group, int64_t beginUs, int64_t endUs, const TraceEvent& event) {
    // Stages that the clock's grain turned around.
    endUs = std::max(beginUs, endUs);
    auto& lanes = mLanes[group];
    auto lane = std::find_if(lanes.begin(), lanes.end(),
                             [beginUs](const Lane& l) { return l.busyUntilUs <= beginUs; });
    if (lane == lanes.end()) lane = lanes.insert(lane, {addTrack(group), 0});
    lane->busyUntilUs = endUs;
    mStream->slice(lane->track, ns(beginUs), ns(endUs), event);
}

void SessionTrace::phase(const char* name, int64_t beginUs, int64_t endUs) {
    if (beginUs == kNoTime || endUs == kNoTime) return;
    mStream->slice(mTrack, ns(beginUs), ns(std::max(beginUs, endUs)), {"phase", name});
}

void SessionTrace::writeSession() {
    const Startup& startup = mSession.startup;
    const Judgement& judgement = mSession.judgement;
    mStream->instant(mTrack, ns(mSession.startUs),
                     {"verdict", toString(judgement.word), {{"text", judgement.sentence}}});
    phase("P2 configure", startup.p2BeginUs, startup.p2EndUs);
    phase("P3 start", startup.p3BeginUs, startup.p3EndUs);
    phase("P5 first frame", startup.firstInputUs, startup.firstRenderUs);
    phase("stop", startup.stopBeginUs, startup.stopEndUs);
    for (const Moment& moment : mSession.moments) {
        mStream->instant(mTrack, ns(moment.timeUs),
                         {"moment", moment.kind, {{"text", moment.text}}});
    }
    for (const Incident& incident : judgement.incidents) writeIncident(incident);
    writeSeries(BITRATE, mSession.bitrateKbps);
    writeSeries(SYNC_OFFSET, mSession.sync.offsetMs);
    writeSeries(DISPLAY_BUFFERS, mSession.displayBuffers);
}

void SessionTrace::writeIncident(const Incident& incident) {
    TraceEvent event = {"incident", inWords(incident.cause)};
    event.arguments = {{"incident", static_cast<int64_t>(incident.id)},
                       {"cause", toString(incident.cause)},
                       {"shares", sharesInWords(incident)},
                       {"evidence", incident.evidence},
                       {"place", toString(incident.place)},
                       {"duration_ms", (incident.endUs - incident.startUs) / 1000},
                       {"stood_ms", incident.stoodMs},
                       {"never_shown", incident.neverShown},
                       {"late", incident.late},
                       {"pts_us", incident.ptsUs},
                       {"media_ms", incident.ptsUs / 1000}};
    if (incident.openEnded) event.arguments.push_back({"end", "no picture came any more"});
    slice(INCIDENTS, incident.startUs, incident.endUs, event);
}

void SessionTrace::writeSeries(Group group, const Series& series) {
    if (series.points().empty()) return;
    const uint64_t track = addTrack(group);
    for (const Series::Point& point : series.points()) {
        mStream->counter(track, ns(point.timeUs), point.mean());
    }
}

void SessionTrace::addFrame(const JudgedFrame& judged) {
    const Frame& frame = judged.frame;
    ++mFrames;
    TraceEvent event = {"frame", "frame " + std::to_string(mFrames)};
    event.hasOwnName = true;
    event.arguments = {{"frame", mFrames}, {"pts_us", frame.ptsUs}};
    if (frame.number >= 0) event.arguments.push_back({"frame_no", frame.number});
    if (frame.sizeBytes >= 0) event.arguments.push_back({"size_bytes", frame.sizeBytes});
    writeStages(frame, event);
    writeDisplay(judged);
    count(frame);
}

void SessionTrace::writeStages(const Frame& frame, const TraceEvent& event) {
    struct Span {
        Group group;
        int64_t beginUs;
        int64_t endUs;
    };
    const Span spans[] = {
            {DECRYPT, frame.announcedUs, frame.queuedUs},
            {CODEC, frame.codecInUs, frame.codecOutUs},
            {MESSAGE, frame.codecOutUs, frame.outputUs},
            {APP, frame.outputUs, frame.renderCallUs},
            {LEAD, frame.rendered ? frame.renderCallUs : kNoTime, frame.displayUs},
    };
    const auto isKnown = [](const Span& span) {
        return span.beginUs != kNoTime && span.endUs != kNoTime;
    };
    size_t left = std::count_if(std::begin(spans), std::end(spans), isKnown);
    const uint64_t flow = left > 1 ? mStream->idOf(mId + " " + event.name) : 0;
    for (const Span& span : spans) {
        if (!isKnown(span)) continue;
        TraceEvent stage = event;
        stage.flow = {flow, --left == 0};
        if (span.group == APP && frame.dropped) stage.arguments.push_back({"end", "dropped"});
        if (span.group == LEAD && span.endUs < span.beginUs) {
            // Asked for a time that was over: the slice is how far.
            stage.name += " late";
            stage.arguments.push_back({"lead_ms", (span.endUs - span.beginUs) / 1000});
            slice(LEAD, span.endUs, span.beginUs, stage);
        } else {
            slice(span.group, span.beginUs, span.endUs, stage);
        }
    }
}

const Incident* SessionTrace::incidentOf(const JudgedFrame& judged) const {
    if (judged.incident == 0) return nullptr;
    const auto& incidents = mSession.judgement.incidents;
    const auto at = std::lower_bound(incidents.begin(), incidents.end(), judged.incident,
                                     [](const Incident& i, uint64_t id) { return i.id < id; });
    return at != incidents.end() && at->id == judged.incident ? &*at : nullptr;
}

/** When the frame was due and how it fared; a picture stays until the next one is shown. */
void SessionTrace::writeDisplay(const JudgedFrame& judged) {
    const Frame& frame = judged.frame;
    TraceEvent event = {"frame", "frame " + std::to_string(mFrames)};
    event.hasOwnName = true;
    event.arguments = {
            {"frame", mFrames}, {"pts_us", frame.ptsUs}, {"jank", toString(judged.jank)}};
    if (judged.dueUs != kNoTime && mPeriodUs > 0) {
        slice(EXPECTED, judged.dueUs, judged.dueUs + mPeriodUs, event);
    }
    if (const Incident* incident = incidentOf(judged)) {
        event.arguments.push_back({"cause", toString(incident->cause)});
        event.arguments.push_back({"incident", static_cast<int64_t>(incident->id)});
    }
    if (judged.shownUs != kNoTime) {
        if (judged.dueUs != kNoTime) {
            event.arguments.push_back({"late_ms", (judged.shownUs - judged.dueUs) / 1000});
        }
        endPicture(judged.shownUs);
        mPicture = event;
        mPictureUs = judged.shownUs;
    } else if (frame.hasFate()) {
        slice(ACTUAL, frame.renderCallUs, frame.renderCallUs, event);
    }
}

void SessionTrace::endPicture(int64_t shownUs) {
    if (mPictureUs != kNoTime) slice(ACTUAL, mPictureUs, shownUs, mPicture);
    mPictureUs = kNoTime;
}

void SessionTrace::count(const Frame& frame) {
    const int64_t inUs = frame.queuedUs != kNoTime ? frame.queuedUs : frame.codecInUs;
    if (inUs == kNoTime || frame.outputUs == kNoTime) return;
    mSteps.push({inUs, 1});
    mSteps.push({frame.outputUs, -1});
    emitCounts(kStepsAhead);
}

void SessionTrace::emitCounts(size_t keep) {
    while (mSteps.size() > keep) {
        const int64_t timeUs = mSteps.top().timeUs;
        for (; !mSteps.empty() && mSteps.top().timeUs == timeUs; mSteps.pop()) {
            mInFlight += mSteps.top().change;
        }
        auto& lanes = mLanes[FRAMES_IN_FLIGHT];
        if (lanes.empty()) lanes.push_back({addTrack(FRAMES_IN_FLIGHT), 0});
        mStream->counter(lanes[0].track, ns(timeUs), mInFlight);
    }
}

void SessionTrace::finish() {
    emitCounts(0);
    if (mPictureUs != kNoTime) endPicture(std::max(mPictureUs, mSession.endUs));
}

}  // namespace android::codecreport
