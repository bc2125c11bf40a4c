// SPDX-License-Identifier: Apache-2.0
#include "output/TraceStream.h"

#include <algorithm>

#include <nlohmann/json.hpp>

#include "perfetto_trace.pb.h"

namespace android::codecreport {

namespace {

using perfetto::protos::BuiltinClock;
using perfetto::protos::DebugAnnotation;
using perfetto::protos::TracePacket;
using perfetto::protos::TrackDescriptor;
using perfetto::protos::TrackEvent;

// Field 1 of the trace, length-delimited.
constexpr char kPacketTag = 0x0a;

uint64_t fnv1a(const std::string& text, uint64_t hash) {
    for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
    return hash;
}

/** Log texts may hold any bytes, the trace's strings are UTF-8. */
std::string inUtf8(const std::string& text) {
    using nlohmann::json;
    return json::parse(json(text).dump(-1, ' ', false, json::error_handler_t::replace));
}

uint64_t stamp(int64_t timeNs) {
    return static_cast<uint64_t>(std::max<int64_t>(0, timeNs));
}

}  // namespace

TraceStream::TraceStream(OutputFile* file, const std::string& seed)
    : mFile(file), mSeed(fnv1a(seed, 0xcbf29ce484222325)), mPacket(new TracePacket) {
    // Those of a device's own trace are small.
    mSequence = static_cast<uint32_t>(mSeed) | 0x80000000;
}

TraceStream::~TraceStream() = default;

void TraceStream::write() {
    mPacket->set_trusted_packet_sequence_id(mSequence);
    mBuffer.clear();
    mPacket->SerializeToString(&mBuffer);
    char head[8] = {kPacketTag};
    size_t length = 1;
    for (size_t size = mBuffer.size();; size >>= 7) {
        head[length++] = static_cast<char>((size & 0x7f) | (size > 0x7f ? 0x80 : 0));
        if (size <= 0x7f) break;
    }
    mFile->write({head, length});
    mFile->write(mBuffer);
    mPacket->Clear();
}

void TraceStream::begin(Clock clock, const std::map<Clock, int64_t>& snapshotNs) {
    auto* snapshot = mPacket->mutable_clock_snapshot();
    snapshot->set_primary_trace_clock(static_cast<BuiltinClock>(clock));
    for (const auto& [id, timeNs] : snapshotNs) {
        auto* each = snapshot->add_clocks();
        each->set_clock_id(static_cast<uint32_t>(id));
        each->set_timestamp(stamp(timeNs));
    }
    mPacket->set_first_packet_on_sequence(true);
    mPacket->set_sequence_flags(TracePacket::SEQ_INCREMENTAL_STATE_CLEARED);
    mPacket->mutable_trace_packet_defaults()->set_timestamp_clock_id(static_cast<uint32_t>(clock));
    write();
}

uint64_t TraceStream::idOf(const std::string& name) const {
    return fnv1a(name, mSeed);
}

uint64_t TraceStream::addTrack(const std::string& id, const TraceTrack& track) {
    TrackDescriptor* descriptor = mPacket->mutable_track_descriptor();
    const uint64_t uuid = idOf(id);
    descriptor->set_uuid(uuid);
    if (track.pid >= 0) {
        descriptor->mutable_process()->set_pid(track.pid);
        if (!track.name.empty()) {
            descriptor->mutable_process()->set_process_name(inUtf8(track.name));
        }
    } else {
        descriptor->set_name(inUtf8(track.name));
    }
    if (track.parent != 0) {
        descriptor->set_parent_uuid(track.parent);
        descriptor->set_sibling_order_rank(track.rank);
    }
    if (track.unit != nullptr) {
        descriptor->mutable_counter()->set_unit_name(track.unit);
    } else {
        descriptor->set_child_ordering(TrackDescriptor::EXPLICIT);
    }
    write();
    return uuid;
}

TrackEvent* TraceStream::startEvent(uint64_t track, int type, int64_t timeNs) {
    mPacket->set_timestamp(stamp(timeNs));
    mPacket->set_sequence_flags(TracePacket::SEQ_NEEDS_INCREMENTAL_STATE);
    TrackEvent* event = mPacket->mutable_track_event();
    event->set_type(static_cast<TrackEvent::Type>(type));
    event->set_track_uuid(track);
    return event;
}

void TraceStream::describe(const TraceEvent& from, TrackEvent* event) {
    using perfetto::protos::InternedData;
    const auto intern = [this](Names* names, const std::string& text, auto add) {
        const auto [at, isNew] = names->emplace(text, names->size() + 1);
        if (isNew) {
            auto* entry = (mPacket->mutable_interned_data()->*add)();
            entry->set_iid(at->second);
            entry->set_name(inUtf8(text));
        }
        return at->second;
    };
    event->add_category_iids(
            intern(&mCategories, from.category, &InternedData::add_event_categories));
    if (from.hasOwnName) {
        event->set_name(inUtf8(from.name));
    } else {
        event->set_name_iid(intern(&mEvents, from.name, &InternedData::add_event_names));
    }
    for (const auto& [name, value] : from.arguments) {
        DebugAnnotation* annotation = event->add_debug_annotations();
        annotation->set_name_iid(
                intern(&mArguments, name, &InternedData::add_debug_annotation_names));
        if (const int64_t* number = std::get_if<int64_t>(&value)) {
            annotation->set_int_value(*number);
        } else {
            annotation->set_string_value(inUtf8(*std::get_if<std::string>(&value)));
        }
    }
    if (from.flow.id == 0) return;
    if (from.flow.ends) {
        event->add_terminating_flow_ids(from.flow.id);
    } else {
        event->add_flow_ids(from.flow.id);
    }
}

void TraceStream::slice(uint64_t track, int64_t beginNs, int64_t endNs, const TraceEvent& event) {
    describe(event, startEvent(track, TrackEvent::TYPE_SLICE_BEGIN, beginNs));
    write();
    startEvent(track, TrackEvent::TYPE_SLICE_END, endNs);
    write();
}

void TraceStream::instant(uint64_t track, int64_t timeNs, const TraceEvent& event) {
    describe(event, startEvent(track, TrackEvent::TYPE_INSTANT, timeNs));
    write();
}

void TraceStream::counter(uint64_t track, int64_t timeNs, double value) {
    startEvent(track, TrackEvent::TYPE_COUNTER, timeNs)->set_double_counter_value(value);
    write();
}

}  // namespace android::codecreport
