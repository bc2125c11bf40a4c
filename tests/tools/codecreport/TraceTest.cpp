// SPDX-License-Identifier: Apache-2.0
// The trace as whoever opens it reads it: by the numbers of the public format, which stand here
// once more, and with nothing of the code that writes it.
#include <gmock/gmock.h>
#include <google/protobuf/io/coded_stream.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include <tools/codecreport/output/TraceWriter.h>

#include "ReportSupport.h"
#include "SyntheticLog.h"

namespace android::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr uint64_t kMs = 1'000'000;

/** One message of the wire format: numbers and bytes by their field. */
class Message {
  public:
    explicit Message(const std::string& bytes) {
        google::protobuf::io::CodedInputStream input(reinterpret_cast<const uint8_t*>(bytes.data()),
                                                     bytes.size());
        while (const uint32_t key = input.ReadTag()) {
            uint64_t number = 0;
            std::string inner;
            uint32_t size = 0;
            const uint32_t type = key & 7;
            EXPECT_TRUE((type == 0 && input.ReadVarint64(&number)) ||
                        (type == 1 && input.ReadLittleEndian64(&number)) ||
                        (type == 2 && input.ReadVarint32(&size) && input.ReadString(&inner, size)))
                    << "wire type " << type;
            mFields.insert({key >> 3, {number, inner}});
        }
        EXPECT_TRUE(input.ConsumedEntireMessage());
    }
    bool has(uint64_t field) const { return mFields.count(field) != 0; }
    uint64_t number(uint64_t field) const {
        return has(field) ? mFields.find(field)->second.first : 0;
    }
    std::string text(uint64_t field) const {
        return has(field) ? mFields.find(field)->second.second : "";
    }
    std::vector<Message> all(uint64_t field) const {
        std::vector<Message> messages;
        const auto [from, to] = mFields.equal_range(field);
        for (auto it = from; it != to; ++it) messages.emplace_back(it->second.second);
        return messages;
    }

  private:
    std::multimap<uint64_t, std::pair<uint64_t, std::string>> mFields;
};

struct Event {
    std::string name;
    uint64_t beginNs = 0;
    uint64_t endNs = 0;
    std::map<std::string, std::string> arguments;
    std::set<uint64_t> flows;
};

struct ReadTrace {
    std::map<uint64_t, Message> tracks;
    /** By the name of their track; instants end as they begin. */
    std::map<std::string, std::vector<Event>> events;
    std::map<std::string, std::vector<std::pair<uint64_t, double>>> counters;
    Message snapshot{""};
};

/** Reads as the trace processor does, and fails on what makes it lose data. */
class TraceReader {
  public:
    ReadTrace read(const std::string& bytes) {
        for (const Message& packet : Message(bytes).all(1)) onPacket(packet);
        for (const auto& [track, open] : mOpen) EXPECT_EQ(0u, open) << "slices that do not end";
        return std::move(mTrace);
    }

  private:
    void onPacket(const Message& packet) {
        const uint64_t flags = packet.number(13);
        if ((flags & 1) != 0) {
            for (auto& names : mNames) names.clear();
            mIsCleared = true;
            mClock = packet.all(59).at(0).number(58);
        }
        EXPECT_NE(0u, packet.number(10)) << "of no sequence";
        if (packet.has(6)) mTrace.snapshot = packet.all(6)[0];
        if (packet.has(12)) onNames(packet.all(12)[0]);
        if (packet.has(60)) onTrack(packet.all(60)[0]);
        if (packet.has(11)) {
            EXPECT_TRUE((flags & 2) != 0 && mIsCleared) << "names may be missing";
            // Without one of its own, a packet's clock is the sequence's, and must be in the trace.
            EXPECT_EQ(mTrace.snapshot.number(2), mClock);
            onEvent(packet.all(11)[0], packet.number(8));
        }
    }

    void onNames(const Message& interned) {
        for (uint64_t kind = 1; kind <= 3; ++kind) {
            for (const Message& name : interned.all(kind)) {
                EXPECT_TRUE(mNames[kind].emplace(name.number(1), name.text(2)).second);
            }
        }
    }

    void onTrack(const Message& track) {
        EXPECT_TRUE(track.has(3) || !track.has(5) || mTrace.tracks.count(track.number(5)) != 0);
        EXPECT_TRUE(mTrace.tracks.emplace(track.number(1), track).second) << track.text(2);
    }

    void onEvent(const Message& event, uint64_t timeNs) {
        const uint64_t track = event.number(11);
        ASSERT_EQ(1u, mTrace.tracks.count(track)) << "an event without a track";
        const std::string trackName = mTrace.tracks.at(track).text(2);
        auto& events = mTrace.events[trackName];
        switch (event.number(9)) {
            case 1:
                EXPECT_LE(mLatest[track], timeNs) << trackName << ": overlaps";
                EXPECT_EQ(0u, mOpen[track]++);
                events.push_back(eventOf(event, timeNs));
                break;
            case 3:
                events.push_back(eventOf(event, timeNs));
                break;
            case 2:
                EXPECT_EQ(1u, mOpen[track]--);
                events.back().endNs = timeNs;
                EXPECT_LE(events.back().beginNs, timeNs);
                mLatest[track] = timeNs;
                break;
            case 4: {
                const uint64_t bits = event.number(44);
                double value = 0;
                memcpy(&value, &bits, sizeof(value));
                mTrace.counters[trackName].emplace_back(timeNs, value);
                break;
            }
            default:
                ADD_FAILURE() << "event type " << event.number(9);
        }
    }

    Event eventOf(const Message& message, uint64_t timeNs) {
        Event event;
        event.beginNs = event.endNs = timeNs;
        event.name = message.has(10) ? nameOf(2, message.number(10)) : message.text(23);
        EXPECT_NE("", nameOf(1, message.number(3)));
        for (const Message& each : message.all(4)) {
            event.arguments[nameOf(3, each.number(1))] =
                    each.has(4) ? std::to_string(static_cast<int64_t>(each.number(4)))
                                : each.text(6);
        }
        for (uint64_t field : {47, 48}) {
            if (message.has(field)) event.flows.insert(message.number(field));
        }
        return event;
    }

    std::string nameOf(uint64_t kind, uint64_t iid) {
        EXPECT_EQ(1u, mNames[kind].count(iid)) << "a name that nothing tells";
        return mNames[kind][iid];
    }

    ReadTrace mTrace;
    std::map<uint64_t, std::string> mNames[4];
    bool mIsCleared = false;
    uint64_t mClock = 0;
    std::map<uint64_t, uint64_t> mOpen;
    std::map<uint64_t, uint64_t> mLatest;
};

std::string traceBytes(const std::string& log) {
    const codecreport::Reference reference;
    codecreport::Analysis analysis;
    EXPECT_TRUE(codecreport::readLogs(reference, {fileWith(log)}, false, &analysis));
    const std::string path = fileWith("", "trace");
    EXPECT_EQ("", codecreport::writeTrace(analysis, path));
    return readFile(path);
}

Event named(const std::vector<Event>& events, const std::string& name) {
    for (const Event& event : events) {
        if (event.name == name) return event;
    }
    ADD_FAILURE() << "no " << name;
    return {};
}

/** Two seconds in, a frame is held for 400 ms; after a flush the library's numbers start over. */
std::string stalledLog() {
    Playback first;
    first.frames = 100;
    first.stalls = {{50, 400}};
    first.drops = {80, 81};
    std::vector<LogMessage> messages = messagesOf(first);
    messages.push_back({first.startMs + 2000, first.pid, first.tid, "MediaCodecLogger",
                        "the latest buffer is 1500 old with packageName com.example.tv. Possible "
                        "resume detected"});
    messages.push_back({first.startMs + 3000, first.pid, first.tid, "MediaCodecLogger",
                        "4321.HW.c2.video.avc.bitrateInKbps = 900"});
    return writeLog(messages);
}

TEST(Trace, framesStandWhereTheyWereInTimeAndUnderTheirCodec) {
    ReadTrace trace = TraceReader().read(traceBytes(stalledLog()));

    // Monotonic time leads, and the wall clock of the same moment stands beside it.
    EXPECT_EQ(3u, trace.snapshot.number(2));
    std::map<uint64_t, uint64_t> clocks;
    for (const Message& clock : trace.snapshot.all(1)) clocks[clock.number(1)] = clock.number(2);
    EXPECT_EQ(100'000 * kMs, clocks[3]);
    EXPECT_EQ((kWallOffsetMs + 100'000) * kMs, clocks[1]);

    std::map<std::string, uint64_t> ranks;
    for (const auto& [uuid, track] : trace.tracks) {
        if (track.has(3)) {
            EXPECT_EQ(4321u, track.all(3)[0].number(1));
            EXPECT_EQ("com.example.tv", track.all(3)[0].text(6));
        } else {
            ranks[track.text(2)] = track.number(12);
        }
    }
    for (const auto& [above, below] :
         {std::pair("incidents", "expected on display"),
          std::pair("expected on display", "actual on display"), std::pair("decrypt", "codec"),
          std::pair("codec", "message"), std::pair("message", "app"), std::pair("app", "lead")}) {
        EXPECT_LT(ranks[above], ranks[below]);
    }

    // Frame 51 was held from its output on, 77 ms before its time, for 67 and 400 more.
    Event held = named(trace.events["app"], "frame 51");
    EXPECT_EQ((100'160 + 50 * 40 - 77) * kMs, held.beginNs);
    EXPECT_EQ(467 * kMs, held.endNs - held.beginNs);
    EXPECT_EQ(std::to_string(50 * 40'000), held.arguments["pts_us"]);
    // All of its stages hang together, and no other frame's with them.
    std::map<uint64_t, std::set<std::string>> flows;
    for (const char* stage : {"decrypt", "codec", "message", "app", "lead"}) {
        EXPECT_EQ(stage == std::string("lead") ? 98u : 100u, trace.events[stage].size()) << stage;
        for (const Event& event : trace.events[stage]) {
            ASSERT_EQ(1u, event.flows.size());
            flows[*event.flows.begin()].insert(event.name);
        }
    }
    EXPECT_EQ(100u, flows.size());
    for (const auto& [flow, names] : flows) EXPECT_EQ(1u, names.size());

    const auto& inFlight = trace.counters["frames in flight"];
    ASSERT_FALSE(inFlight.empty());
    EXPECT_EQ(0, inFlight.back().second);
    EXPECT_THAT(trace.counters["input bitrate"], ElementsAre(std::pair(103'000 * kMs, 900.0)));
}

TEST(Trace, incidentsHaveTheirCauseAndFramesTheirJank) {
    ReadTrace trace = TraceReader().read(traceBytes(stalledLog()));
    ASSERT_FALSE(trace.events["incidents"].empty());
    Event& incident = trace.events["incidents"][0];
    EXPECT_EQ("application", incident.name);
    for (const auto& [name, value] :
         {std::pair("pts_us", "2000000"), std::pair("media_ms", "2000"),
          std::pair("stood_ms", "400"), std::pair("shares", "application 100 %"),
          std::pair("evidence", "467 ms")}) {
        EXPECT_THAT(incident.arguments[name], HasSubstr(value)) << name;
    }

    Event expected = named(trace.events["expected on display"], "frame 51");
    Event actual = named(trace.events["actual on display"], "frame 51");
    EXPECT_EQ((100'160 + 50 * 40) * kMs, expected.beginNs);
    EXPECT_EQ(40 * kMs, expected.endNs - expected.beginNs);
    EXPECT_EQ(400 * kMs, actual.beginNs - expected.beginNs);
    EXPECT_EQ("400", actual.arguments["late_ms"]);
    EXPECT_EQ("application", actual.arguments["cause"]);
    EXPECT_EQ(incident.arguments["incident"], actual.arguments["incident"]);
    // The picture before it stood all the while; dropped ones never were there.
    Event before = named(trace.events["actual on display"], "frame 50");
    EXPECT_EQ(actual.beginNs, before.endNs);
    Event dropped = named(trace.events["actual on display"], "frame 81");
    EXPECT_EQ("dropped", dropped.arguments["jank"]);
    EXPECT_EQ(dropped.beginNs, dropped.endNs);
}

TEST(Trace, framesOfALateRenderAndAfterAFlushAreTold) {
    std::vector<LogMessage> messages;
    for (int i = 0; i < 60; ++i) {
        // The media time starts over, as after a seek to the beginning; the last asks too late.
        const long now = 100'100 + i * 40;
        const long lead = i == 59 ? -17 : 12;
        char text[120];
        snprintf(text, sizeof(text), "avc Render R-S:%ld R:%ld(40) pts:%d 0/3", lead, now + lead,
                 i % 30 * 40'000);
        messages.push_back({now, -1, -1, "ZMediaAnalyticV", text});
        snprintf(text, sizeof(text), "avc queue:%d s:5000 tsS:1", i % 30 * 40'000);
        messages.push_back({now - 30, -1, -1, "ZMediaAnalyticV", text});
    }
    // A form without process numbers: none is made up.
    ReadTrace trace = TraceReader().read(traceBytes(writeLog(messages, LogFormat::TAG)));
    for (const auto& [uuid, track] : trace.tracks) EXPECT_FALSE(track.has(3));
    std::set<std::string> names;
    for (const Event& event : trace.events["lead"]) names.insert(event.name);
    EXPECT_EQ(60u, names.size());
    Event late = named(trace.events["lead"], "frame 60 late");
    EXPECT_EQ("-17", late.arguments["lead_ms"]);
    EXPECT_EQ(17 * kMs, late.endNs - late.beginNs);
}

TEST(Trace, canBeJoinedWithAnotherAndHoldsAnyText) {
    const std::string first = traceBytes(stalledLog());
    Playback playback;
    playback.startMs += 1000;
    const std::string second =
            traceBytes(logOf({playback}) +
                       "03-01 00:01:41.000  4321  4330 I MediaCodecLogger: [BRISK] HW.video.\xff "
                       "P2 + 102000\n");
    // One after the other is one trace.
    const ReadTrace joined = TraceReader().read(first + second);
    EXPECT_EQ(TraceReader().read(first).tracks.size() + TraceReader().read(second).tracks.size(),
              joined.tracks.size());
    EXPECT_EQ(first, traceBytes(stalledLog()));
    EXPECT_TRUE(std::any_of(joined.tracks.begin(), joined.tracks.end(), [](const auto& track) {
        return track.second.text(2) == "HW.video.\xef\xbf\xbd #2";
    }));
}

}  // namespace
}  // namespace android::test
