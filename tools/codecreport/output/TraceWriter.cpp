// SPDX-License-Identifier: Apache-2.0
#include "output/TraceWriter.h"

#include <algorithm>

#include "perfetto_trace.pb.h"

namespace android::codecreport {

namespace {

using perfetto::protos::DebugAnnotation;
using perfetto::protos::TracePacket;
using perfetto::protos::TrackDescriptor;
using perfetto::protos::TrackEvent;

constexpr uint32_t kSequence = 1;
// Field 1 of the trace, length-delimited.
constexpr char kPacketTag = 0x0a;

struct CounterName {
    const char* name;
    const char* unit;
};
constexpr CounterName kCounters[kCounterCount] = {{"frames in flight", "frames"},
                                                  {"input bitrate", "kbit/s"},
                                                  {"sync offset", "ms"},
                                                  {"buffers at the display", "buffers"}};

void annotate(TrackEvent* event, const char* name, int64_t value) {
    DebugAnnotation* annotation = event->add_debug_annotations();
    annotation->set_name(name);
    annotation->set_int_value(value);
}

void annotate(TrackEvent* event, const char* name, const std::string& value) {
    DebugAnnotation* annotation = event->add_debug_annotations();
    annotation->set_name(name);
    annotation->set_string_value(value);
}

uint64_t nanoseconds(int64_t timeUs) {
    return static_cast<uint64_t>(std::max<int64_t>(0, timeUs)) * 1000;
}

/** Log texts may hold any bytes, the trace's strings are UTF-8. */
std::string printable(std::string text) {
    for (char& c : text) {
        if (static_cast<unsigned char>(c) >= 0x80) c = '?';
    }
    return text;
}

}  // namespace

void TraceWriter::write(const TracePacket& packet) {
    mBuffer.clear();
    packet.SerializeToString(&mBuffer);
    char head[8] = {kPacketTag};
    size_t length = 1;
    for (size_t size = mBuffer.size();; size >>= 7) {
        head[length++] = static_cast<char>((size & 0x7f) | (size > 0x7f ? 0x80 : 0));
        if (size <= 0x7f) break;
    }
    mFile.write({head, length});
    mFile.write(mBuffer);
}

uint64_t TraceWriter::describe(uint64_t parent, const std::string& name, const char* unit) {
    TracePacket packet;
    packet.set_trusted_packet_sequence_id(kSequence);
    TrackDescriptor* track = packet.mutable_track_descriptor();
    track->set_uuid(mNextUuid);
    track->set_name(name);
    track->set_parent_uuid(parent);
    if (unit != nullptr) track->mutable_counter()->set_unit_name(unit);
    write(packet);
    return mNextUuid++;
}

/** The trace's default clock and the wall clock are one, so that the UI can show dates. */
void TraceWriter::describeClocks(int64_t timeUs) {
    constexpr uint32_t kRealtime = 1;
    constexpr uint32_t kBoottime = 6;
    TracePacket packet;
    packet.set_trusted_packet_sequence_id(kSequence);
    packet.mutable_clock_snapshot()->set_primary_trace_clock(kBoottime);
    for (uint32_t id : {kBoottime, kRealtime}) {
        auto* clock = packet.mutable_clock_snapshot()->add_clocks();
        clock->set_clock_id(id);
        clock->set_timestamp(nanoseconds(timeUs));
    }
    write(packet);
}

uint64_t TraceWriter::processTrack(const Session& session) {
    uint64_t& uuid = mProcesses[session.pid];
    if (uuid != 0) return uuid;
    uuid = mNextUuid++;
    TracePacket packet;
    packet.set_trusted_packet_sequence_id(kSequence);
    TrackDescriptor* track = packet.mutable_track_descriptor();
    track->set_uuid(uuid);
    // Process 0 is the system's idle task; logs without process ids still need a group.
    track->mutable_process()->set_pid(session.pid < 0 ? 1 : session.pid);
    track->mutable_process()->set_process_name("codecs of process " + std::to_string(session.pid));
    write(packet);
    return uuid;
}

void TraceWriter::onSession(const Session& session) {
    if (mTracks.empty()) describeClocks(session.startUs);
    const std::string name =
            session.tagText.empty() ? "video " + session.tag.format : session.tagText;
    Tracks& tracks = mTracks[session.id];
    tracks.session = describe(processTrack(session),
                              printable(name) + " #" + std::to_string(session.id), nullptr);
}

uint64_t TraceWriter::laneFor(Tracks* tracks, const std::string& name, int64_t beginUs,
                              int64_t endUs) {
    std::vector<Lane>& lanes = tracks->lanes[name];
    for (Lane& lane : lanes) {
        if (lane.busyUntilUs <= beginUs) {
            lane.busyUntilUs = endUs;
            return lane.uuid;
        }
    }
    lanes.push_back({describe(tracks->session, name, nullptr), endUs});
    return lanes.back().uuid;
}

TrackEvent* TraceWriter::event(TracePacket* packet, int64_t timeUs, uint64_t track, int type) {
    packet->set_timestamp(nanoseconds(timeUs));
    packet->set_trusted_packet_sequence_id(kSequence);
    TrackEvent* event = packet->mutable_track_event();
    event->set_type(static_cast<TrackEvent::Type>(type));
    event->set_track_uuid(track);
    return event;
}

void TraceWriter::slice(Tracks* tracks, const std::string& name, int64_t beginUs, int64_t endUs,
                        const Frame* frame, uint64_t flow, bool isLastOfFlow) {
    // Stages that the clock's grain turned around.
    endUs = std::max(beginUs, endUs);
    const uint64_t lane = laneFor(tracks, name, beginUs, endUs);
    TracePacket begin;
    TrackEvent* event = this->event(&begin, beginUs, lane, TrackEvent::TYPE_SLICE_BEGIN);
    event->add_categories(frame == nullptr ? "session" : "frame");
    if (frame == nullptr) {
        event->set_name(name);
    } else {
        event->set_name(frame->number >= 0 ? "frame " + std::to_string(frame->number)
                                           : "pts " + std::to_string(frame->ptsUs));
        annotate(event, "pts_us", frame->ptsUs);
        if (frame->sizeBytes >= 0) annotate(event, "size_bytes", frame->sizeBytes);
        if (frame->dropped) annotate(event, "end", "dropped");
    }
    if (flow != 0) {
        if (isLastOfFlow) {
            event->add_terminating_flow_ids(flow);
        } else {
            event->add_flow_ids(flow);
        }
    }
    write(begin);
    TracePacket end;
    this->event(&end, endUs, lane, TrackEvent::TYPE_SLICE_END);
    write(end);
}

void TraceWriter::onFrame(const Session& session, const Frame& frame) {
    struct Span {
        Stage stage;
        int64_t beginUs;
        int64_t endUs;
    };
    const std::array<Span, kStageCount> spans = {{
            {Stage::DECRYPT, frame.announcedUs, frame.queuedUs},
            {Stage::CODEC, frame.codecInUs, frame.codecOutUs},
            {Stage::MESSAGE, frame.codecOutUs, frame.outputUs},
            {Stage::APP, frame.outputUs, frame.renderCallUs},
            {Stage::LEAD, frame.rendered ? frame.renderCallUs : kNoTime, frame.displayUs},
    }};
    const auto isKnown = [](const Span& span) {
        return span.beginUs != kNoTime && span.endUs != kNoTime;
    };
    size_t left = std::count_if(spans.begin(), spans.end(), isKnown);
    const uint64_t flow = left > 1 ? mNextFlow++ : 0;
    for (const Span& span : spans) {
        if (!isKnown(span)) continue;
        --left;
        slice(&mTracks[session.id], toString(span.stage), span.beginUs, span.endUs, &frame, flow,
              left == 0);
    }
}

void TraceWriter::onCounter(const Session& session, Counter counter, int64_t timeUs, double value) {
    const size_t index = static_cast<size_t>(counter);
    Tracks& tracks = mTracks[session.id];
    uint64_t& uuid = tracks.counters[index];
    if (uuid == 0) uuid = describe(tracks.session, kCounters[index].name, kCounters[index].unit);
    TracePacket packet;
    event(&packet, timeUs, uuid, TrackEvent::TYPE_COUNTER)->set_double_counter_value(value);
    write(packet);
}

void TraceWriter::onMoment(const Session& session, const Moment& moment) {
    TracePacket packet;
    TrackEvent* event = this->event(&packet, moment.timeUs, mTracks[session.id].session,
                                    TrackEvent::TYPE_INSTANT);
    event->add_categories("moment");
    event->set_name(moment.kind);
    annotate(event, "text", printable(moment.text));
    write(packet);
}

void TraceWriter::onSpan(const Session& session, const char* name, int64_t beginUs, int64_t endUs) {
    slice(&mTracks[session.id], name, beginUs, endUs, nullptr, 0, false);
}

}  // namespace android::codecreport
