// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tools/codecreport/CodecNames.h>
#include <tools/codecreport/Explain.h>
#include <tools/codecreport/Pattern.h>
#include <tools/codecreport/Reference.h>

namespace android::codecreport {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/** The line with values in its fields. */
std::string sampleOf(const std::string& line) {
    std::string text;
    for (size_t i = 0; i < line.size(); ++i) {
        if (line[i] != '{') {
            text += line[i];
            continue;
        }
        const size_t close = line.find('}', i);
        const std::string name = line.substr(i + 1, close - i - 3);
        switch (line[close - 1]) {
            case 'd':
                text += "-12";
                break;
            case 'f':
                text += "29.970";
                break;
            case 'x':
                text += "1f";
                break;
            case 'w':
                text += name == "input_event" ? "queue"
                        : name == "prefix"    ? "W.mcfd12.7.HW.c2.video.avc"
                                              : "avc";
                break;
            case 's':
                text += "";
                break;
        }
        i = close;
    }
    return text;
}

TEST(Reference, everyLineIsRecognisedAsItself) {
    const Reference reference;
    int lines = 0;
    for (const Reference::Table& table : reference.tables()) {
        for (const ReferenceEntry& entry : table.entries) {
            const std::string& line = entry.fact("line");
            if (line.empty()) continue;
            ++lines;
            const std::string sample = sampleOf(line);
            const ReferenceEntry* found = nullptr;
            Fields fields;
            ASSERT_EQ(Reference::Match::YES,
                      reference.recognise(table.tag, sample, &found, &fields))
                    << sample;
            EXPECT_EQ(entry.id, found->id) << sample;
            EXPECT_LE(Pattern(line).fieldCount(), Fields::kMax) << line;
        }
    }
    EXPECT_GT(lines, 80);
}

TEST(Reference, everyLineCutOffInTheMiddleIsKnownForOne) {
    const Reference reference;
    for (const char* id : {"analysis", "sync", "first_render", "rendered"}) {
        const ReferenceEntry* entry = reference.line(id);
        ASSERT_NE(nullptr, entry) << id;
        const std::string whole = sampleOf(entry->fact("line"));
        const std::string tag =
                entry->table == "Log lines of a codec" ? "MediaCodecLogger" : "ZMediaAnalyticV";
        const std::string cut = whole.substr(0, whole.size() / 2);
        Fields fields;
        EXPECT_EQ(Reference::Match::CUT_OFF, reference.recognise(tag, cut, &entry, &fields)) << cut;
    }
}

TEST(Reference, fieldsCarryTheirValues) {
    const Reference reference;
    const ReferenceEntry* entry = nullptr;
    Fields fields;
    ASSERT_EQ(Reference::Match::YES,
              reference.recognise("ZMediaAnalyticV",
                                  "Drop:5000(7) TD:40 FARD:(31) FAD:39(-2) AL:67(90125) FL:20(21) "
                                  "0/3$D:-1(2)Q:-3(4)",
                                  &entry, &fields));
    EXPECT_EQ("analysis", entry->id);
    EXPECT_EQ("Drop", fields.text("label"));
    EXPECT_EQ(5000, fields.number("pts_us"));
    EXPECT_EQ("", fields.text("after_render_ms"));
    EXPECT_EQ(-2, fields.number("message_ms"));
    EXPECT_EQ(90125, fields.number("now_ms"));
    EXPECT_EQ("$D:-1(2)Q:-3(4)", fields.text("history"));
}

TEST(Reference, reportLinesGoByTheirKey) {
    const Reference reference;
    const ReferenceEntry* entry = nullptr;
    Fields fields;
    const auto recognise = [&](const char* text) {
        return reference.recognise("MediaCodecLogger", text, &entry, &fields);
    };
    ASSERT_EQ(Reference::Match::YES,
              recognise("4321.4K.secure.HW.c2.video.avc.videoResolution.UHD = 6000"));
    EXPECT_EQ("videoResolution.UHD", entry->id);
    EXPECT_EQ("4321.4K.secure.HW.c2.video.avc", fields.text("prefix"));
    EXPECT_EQ(6000, fields.real("value"));
    ASSERT_EQ(Reference::Match::YES, recognise("1.HW.c2.video.avc..DecoderErrorFatal = 1"));
    EXPECT_EQ("1.HW.c2.video.avc", fields.text("prefix"));
    EXPECT_EQ(Reference::Match::UNKNOWN, recognise("1.HW.c2.video.avc.NoSuchKey = 1"));
    EXPECT_EQ(Reference::Match::UNKNOWN, recognise("BRISK-P2Ms = 1"));
    EXPECT_EQ(Reference::Match::NO, reference.recognise("ActivityManager", "x", &entry, &fields));
}

struct PrefixCase {
    const char* text;
    bool good;
    int pid;
    bool uhd;
    bool secure;
    bool memory;
    bool atmos;
    int drops;
    const char* tag;
};

TEST(CodecNames, prefixIsTakenApart) {
    for (const PrefixCase& c : {
                 PrefixCase{"1234.HW.c2.video.avc", true, 1234, false, false, false, false, 0,
                            "HW.c2.video.avc"},
                 PrefixCase{"W.mcfd12.1234.4K.secure.HW.c2.video.hevc", true, 1234, true, true,
                            true, false, 12, "HW.c2.video.hevc"},
                 PrefixCase{"W.rot11.rit11.7.secureSW.SW.omx.audio.mp4a", true, 7, false, true,
                            false, false, 0, "SW.omx.audio.mp4a"},
                 PrefixCase{"7.VND.audio.raw.atmos", true, 7, false, false, false, true, 0,
                            "VND.audio.raw"},
                 PrefixCase{"7.tunneled.HW.omx.video.x-ms.wmv", true, 7, false, false, false, false,
                            0, "tunneled.HW.omx.video.x-ms.wmv"},
                 PrefixCase{"HW.c2.video.avc", false, 0, false, false, false, false, 0, ""},
                 PrefixCase{"1234.video.avc", false, 0, false, false, false, false, 0, ""},
                 PrefixCase{"", false, 0, false, false, false, false, 0, ""},
         }) {
        LinePrefix prefix;
        ASSERT_EQ(c.good, parseLinePrefix(c.text, &prefix)) << c.text;
        if (!c.good) continue;
        EXPECT_EQ(c.pid, prefix.pid) << c.text;
        EXPECT_EQ(c.uhd, prefix.uhdScreen) << c.text;
        EXPECT_EQ(c.secure, prefix.secure) << c.text;
        EXPECT_EQ(c.memory, prefix.secureMemory) << c.text;
        EXPECT_EQ(c.atmos, prefix.atmos) << c.text;
        EXPECT_EQ(c.drops, prefix.maxDropRun) << c.text;
        EXPECT_EQ(c.tag, prefix.tag) << c.text;
    }
}

TEST(Explain, answersToAllKindsOfKeys) {
    const Reference reference;
    const std::pair<const char*, const char*> cases[] = {
            {"BRISK-P5Ms", "p5_ms"},
            {"totalframesdropped", "All dropped frames"},
            {"p5_ms", "BRISK-P5Ms"},
            {"first_render", "Got First Frame Render {at_ms}({since_input_ms})"},
            {"FARD", "output minus render time"},
            {"qkuh/2/02330410", "TotalVideoPlaybackTimeMs"},
            {"mediaanalytic.debug", "0x400"},
            {"outside_ms", "sessions[].sync.outside_ms"},
            {"03-01 10:20:30.456  4321  4330 I ZMediaAnalyticV: avc Render R-S:10 R:100(40) pts:5 "
             "0/3",
             "lead_ms = 10 ms"},
            {"avc Render R-S:10 R:100(40) pts:5 0/3", "render_ms = 100 ms"},
    };
    for (const auto& [key, expected] : cases) {
        EXPECT_THAT(explain(reference, key), HasSubstr(expected)) << key;
    }
    EXPECT_THAT(explain(reference, "nothing of the kind"), IsEmpty());
    EXPECT_THAT(suggest(reference, "dropped"), HasSubstr("TotalFramesDropped"));
}

TEST(Explain, fieldsOfEveryLineAreExplainedOrSpeakForThemselves) {
    // Names that carry their unit or say it all; everything else needs an entry.
    const std::vector<std::string> plain = {
            "screen",         "service",        "pid",           "client_id",
            "package",        "source_line",    "function",      "condition",
            "count",          "input_event",    "output_event",  "how",
            "first",          "flags",          "video",         "decoder",
            "buffer",         "bytes",          "file",          "errno",
            "error",          "name",           "codec",         "omx_key",
            "history",        "buffer_flags",   "queued",        "vendor_color",
            "owned_by_us",    "size_and_index", "input_buffers", "output_buffers",
            "min_undequeued", "old_width",      "old_height"};
    const Reference reference;
    std::vector<std::string> unexplained;
    for (const Reference::Table& table : reference.tables()) {
        for (const ReferenceEntry& entry : table.entries) {
            const std::string& line = entry.fact("line");
            for (size_t at = line.find('{'); at != std::string::npos; at = line.find('{', at + 1)) {
                const std::string name = line.substr(at + 1, line.find(':', at) - at - 1);
                const std::string unit = name.substr(name.find_last_of('_') + 1);
                const bool hasUnit =
                        unit == "ms" || unit == "us" || unit == "ns" || unit == "bytes";
                if (hasUnit || std::find(plain.begin(), plain.end(), name) != plain.end()) continue;
                if (explain(reference, name).empty()) unexplained.push_back(name);
            }
        }
    }
    EXPECT_THAT(unexplained, IsEmpty());
}

TEST(Explain, markdownHoldsEveryEntry) {
    const Reference reference;
    const std::string all = markdown(reference, "");
    for (const Reference::Table& table : reference.tables()) {
        const std::string own = markdown(reference, table.name);
        EXPECT_THAT(all, HasSubstr("#" + own));
        for (const ReferenceEntry& entry : table.entries) {
            EXPECT_THAT(own, HasSubstr("| `" + entry.id + "` |"));
        }
    }
    EXPECT_THAT(all, Not(HasSubstr(":d}")));
    EXPECT_THAT(markdown(reference, "no such table"), IsEmpty());
}

}  // namespace
}  // namespace android::codecreport
