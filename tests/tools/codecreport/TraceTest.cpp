// SPDX-License-Identifier: Apache-2.0
// The trace as whoever opens it reads it: by the numbers of the public format, which stand here
// once more, and with nothing of the code that writes it.
#include <gmock/gmock.h>
#include <google/protobuf/io/coded_stream.h>
#include <gtest/gtest.h>
#include <math.h>
#include <string.h>

#include <map>

#include <tools/codecreport/output/TraceWriter.h>

#include "ReportSupport.h"
#include "SyntheticLog.h"

namespace android::test {
namespace {

using testing::Each;
using testing::ElementsAre;

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
    uint64_t number(uint64_t field) const { return has(field) ? at(field).first : 0; }
    std::string text(uint64_t field) const { return has(field) ? at(field).second : ""; }
    std::vector<Message> all(uint64_t field) const {
        std::vector<Message> messages;
        const auto [from, to] = mFields.equal_range(field);
        for (auto it = from; it != to; ++it) messages.emplace_back(it->second.second);
        return messages;
    }

  private:
    using Value = std::pair<uint64_t, std::string>;
    const Value& at(uint64_t field) const { return mFields.find(field)->second; }

    std::multimap<uint64_t, Value> mFields;
};

struct ReadTrace {
    std::map<uint64_t, Message> tracks;
    /** By the name of their track: "NAME @BEGIN +DURATION KEY=VALUE", in milliseconds. */
    std::map<std::string, std::vector<std::string>> events;
    /** The names of the events on each flow. */
    std::map<uint64_t, std::vector<std::string>> flows;
    /** By their rank. */
    std::map<uint64_t, std::string> partsOfCodecs;
    Message snapshot{""};
};

/** Reads as the trace processor does, and fails on what makes it lose data. */
class TraceReader {
  public:
    ReadTrace read(const std::string& bytes) {
        for (const Message& packet : Message(bytes).all(1)) onPacket(packet);
        for (const auto& [track, open] : mOpen) EXPECT_EQ("", open) << "a slice that does not end";
        return std::move(mTrace);
    }

  private:
    void onPacket(const Message& packet) {
        const uint64_t flags = packet.number(13);
        if ((flags & 1) != 0) {
            mNames.clear();
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
                EXPECT_NE(0u, name.number(1)) << "no id";
                EXPECT_TRUE(mNames.try_emplace({kind, name.number(1)}, name.text(2)).second);
            }
        }
    }

    void onTrack(const Message& track) {
        const auto parent = mTrace.tracks.find(track.number(5));
        EXPECT_NE(track.has(5), parent == mTrace.tracks.end()) << "parents come first";
        if (track.has(5) && !parent->second.has(3)) {
            mTrace.partsOfCodecs[track.number(12)] = track.text(2);
        }
        EXPECT_TRUE(mTrace.tracks.emplace(track.number(1), track).second) << track.text(2);
    }

    void onEvent(const Message& event, uint64_t timeNs) {
        const uint64_t track = event.number(11);
        ASSERT_EQ(1u, mTrace.tracks.count(track)) << "an event without a track";
        auto& events = mTrace.events[mTrace.tracks.at(track).text(2)];
        std::string& open = mOpen[track];
        uint64_t& latestNs = mLatestNs[track];
        const uint64_t type = event.number(9);
        if (type == 1) {
            EXPECT_EQ("", open) << "overlaps";
            EXPECT_LE(latestNs, timeNs) << "overlaps";
            open = textOf(event);
            latestNs = timeNs;
        } else if (type == 2) {
            EXPECT_LE(latestNs, timeNs) << open;
            events.push_back(open.replace(open.find('@'), 1,
                                          "@" + std::to_string(latestNs / kMs) + " +" +
                                                  std::to_string((timeNs - latestNs) / kMs)));
            open.clear();
            latestNs = timeNs;
        } else if (type == 3) {
            events.push_back(textOf(event));
        } else if (type == 4) {
            const uint64_t bits = event.number(44);
            double value = 0;
            memcpy(&value, &bits, sizeof(value));
            events.push_back(std::to_string(lround(value)) + " @" + std::to_string(timeNs / kMs));
        } else {
            ADD_FAILURE() << "event type " << type;
        }
    }

    std::string textOf(const Message& event) {
        const std::string name = event.has(10) ? nameOf(2, event.number(10)) : event.text(23);
        EXPECT_NE("", nameOf(1, event.number(3)));
        for (uint64_t field : {47, 48}) {
            if (event.has(field)) mTrace.flows[event.number(field)].push_back(name);
        }
        std::string text = name + " @";
        for (const Message& each : event.all(4)) {
            const auto number = static_cast<int64_t>(each.number(4));
            text += " " + nameOf(3, each.number(1)) + "=" +
                    (each.has(4) ? std::to_string(number) : each.text(6));
        }
        return text;
    }

    std::string nameOf(uint64_t kind, uint64_t iid) {
        EXPECT_EQ(1u, mNames.count({kind, iid})) << "a name that nothing tells";
        return mNames[{kind, iid}];
    }

    ReadTrace mTrace;
    std::map<std::pair<uint64_t, uint64_t>, std::string> mNames;
    bool mIsCleared = false;
    uint64_t mClock = 0;
    std::map<uint64_t, std::string> mOpen;
    std::map<uint64_t, uint64_t> mLatestNs;
};

std::string traceBytes(const std::string& log) {
    const codecreport::Reference reference;
    codecreport::Analysis analysis;
    EXPECT_TRUE(codecreport::readLogs(reference, {fileWith(log)}, false, &analysis));
    const std::string path = fileWith("", "trace");
    EXPECT_EQ("", codecreport::writeTrace(analysis, path));
    return readFile(path);
}

/** The event of this name. */
std::string eventOf(const std::vector<std::string>& events, const std::string& name) {
    for (const std::string& event : events) {
        if (event.rfind(name + " @", 0) == 0) return event;
    }
    return "no " + name;
}

/** Two seconds in, a frame is held for 400 ms. */
std::string stalledLog() {
    Playback playback;
    playback.frames = 100;
    playback.stalls = {{50, 400}};
    playback.drops = {80, 81};
    std::vector<LogMessage> messages = messagesOf(playback);
    for (const char* text :
         {"the latest buffer is 1500 old with packageName com.example.tv. Possible resume detected",
          "4321.HW.c2.video.avc.bitrateInKbps = 900"}) {
        messages.push_back({103'000, playback.pid, playback.tid, "MediaCodecLogger", text});
    }
    return writeLog(messages);
}

TEST(Trace, framesStandWhereTheyWereWithTheirCodecCauseAndJank) {
    ReadTrace trace = TraceReader().read(traceBytes(stalledLog()));

    // Monotonic time leads, and the wall clock of the same moment stands beside it.
    EXPECT_EQ(3u, trace.snapshot.number(2));
    std::map<uint64_t, uint64_t> clocks;
    for (const Message& clock : trace.snapshot.all(1)) clocks[clock.number(1)] = clock.number(2);
    EXPECT_EQ(100'000 * kMs, clocks[3]);
    EXPECT_EQ((kWallOffsetMs + 100'000) * kMs, clocks[1]);

    for (const auto& [uuid, track] : trace.tracks) {
        if (!track.has(3)) continue;
        EXPECT_EQ(4321u, track.all(3)[0].number(1));
        EXPECT_EQ("com.example.tv", track.all(3)[0].text(6));
    }
    std::string order;
    for (const auto& [rank, name] : trace.partsOfCodecs) order += name + "|";
    EXPECT_EQ(
            "incidents|expected on display|actual on display|decrypt|codec|message|app|lead|"
            "frames in flight|input bitrate|sync offset|",
            order);

    // Frame 51 was held from its output on, 77 ms before its time, for 67 and 400 more.
    EXPECT_EQ("frame 51 @102083 +467 frame=51 pts_us=2000000 frame_no=51 size_bytes=5000",
              eventOf(trace.events["app"], "frame 51"));
    // All of its stages hang together, and no other frame's with them: two frames are dropped.
    EXPECT_EQ(100u, trace.flows.size());
    size_t stages = 0;
    for (const auto& [flow, names] : trace.flows) {
        stages += names.size();
        EXPECT_THAT(names, Each(names[0]));
    }
    EXPECT_EQ(5u * 98 + 4 * 2, stages);
    // The last frame's output, 77 ms before its time.
    EXPECT_EQ("0 @104443", trace.events["frames in flight"].back());
    EXPECT_THAT(trace.events["input bitrate"], ElementsAre("900 @103000"));

    EXPECT_EQ(
            "application @102160 +400 incident=1 cause=application shares=application 100 % "
            "evidence=released 467 ms after it was ready (usually 67) place=playback "
            "duration_ms=400 stood_ms=400 never_shown=0 late=6 pts_us=2000000 media_ms=2000",
            trace.events["incidents"].at(0));
    // Due 160 ms after the start and 40 for each frame before it.
    EXPECT_EQ("frame 51 @102160 +40 frame=51 pts_us=2000000 jank=stood",
              eventOf(trace.events["expected on display"], "frame 51"));
    // The picture before it stood all the while; dropped ones never were there.
    auto& actual = trace.events["actual on display"];
    EXPECT_EQ("frame 50 @102120 +440 frame=50 pts_us=1960000 jank=none late_ms=0",
              eventOf(actual, "frame 50"));
    EXPECT_EQ(
            "frame 51 @102560 +40 frame=51 pts_us=2000000 jank=stood cause=application incident=1 "
            "late_ms=400",
            eventOf(actual, "frame 51"));
    EXPECT_EQ(
            "frame 81 @103750 +0 frame=81 pts_us=3200000 jank=dropped cause=application incident=2",
            eventOf(actual, "frame 81"));
}

TEST(Trace, lateReleasesAreToldAndNoProcessIsMadeUp) {
    // Of a form without process numbers, and asked for 17 ms after its time.
    const std::vector<LogMessage> messages = {
            {100'030, -1, -1, "ZMediaAnalyticV", "avc queue:40000 s:5000 tsS:1"},
            {100'060, -1, -1, "ZMediaAnalyticV", "avc Render R-S:-17 R:100043(40) pts:40000 0/3"}};
    ReadTrace trace = TraceReader().read(traceBytes(writeLog(messages, LogFormat::RAW)));
    for (const auto& [uuid, track] : trace.tracks) EXPECT_FALSE(track.has(3));
    EXPECT_THAT(
            trace.events["lead"],
            ElementsAre(
                    "frame 1 late @100043 +17 frame=1 pts_us=40000 size_bytes=5000 lead_ms=-17"));
}

TEST(Trace, canBeJoinedWithAnotherAndHoldsAnyText) {
    const std::string first = traceBytes(stalledLog());
    const std::string second = traceBytes(logOf({Playback()}) +
                                          "03-01 00:01:41.000  4321  4330 I MediaCodecLogger: "
                                          "[BRISK] HW.video.\xff P2 + 102000\n");
    // One after the other is one trace.
    ReadTrace joined = TraceReader().read(first + second);
    EXPECT_EQ(TraceReader().read(first).tracks.size() + TraceReader().read(second).tracks.size(),
              joined.tracks.size());
    EXPECT_EQ(first, traceBytes(stalledLog()));
    EXPECT_EQ(1u, joined.events.count("HW.video.\xef\xbf\xbd #2"));
}

}  // namespace
}  // namespace android::test
