// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <sstream>

#include <tools/codecreport/model/CodecNames.h>
#include <tools/codecreport/model/Incident.h>
#include <tools/codecreport/output/Compare.h>
#include <tools/codecreport/reading/Pattern.h>
#include <tools/codecreport/reference/Explain.h>
#include <tools/codecreport/reference/Reference.h>

namespace android::codecreport {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

/** The line with values in its fields, which are written "{name:type}". */
std::string sampleOf(const std::string& line) {
    std::map<char, std::string> values = {
            {'d', "-12"}, {'f', "29.970"}, {'x', "1f"}, {'w', "avc"}, {'s', ""}};
    std::string text;
    for (size_t i = 0; i < line.size(); ++i) {
        if (line[i] != '{') {
            text += line[i];
            continue;
        }
        const size_t close = line.find('}', i);
        const std::string name = line.substr(i + 1, close - i - 3);
        text += name == "input_event" ? "queue"
                : name == "prefix"    ? "W.mcfd12.7.HW.c2.video.avc"
                                      : values[line[close - 1]];
        i = close;
    }
    return text;
}

TEST(Reference, everyLineIsRecognisedAsItselfAndLongOnesWhenCutOff) {
    const Reference reference;
    const std::set<std::string> kLongLines = {"analysis", "sync", "first_render", "rendered"};
    size_t longLines = 0;
    int lines = 0;
    for (const Reference::Table& table : reference.tables()) {
        for (const ReferenceEntry& entry : table.entries) {
            const std::string& line = entry.fact("line");
            if (line.empty() || table.tag.empty()) continue;
            ++lines;
            const std::string sample = sampleOf(line);
            const ReferenceEntry* found = nullptr;
            Fields fields;
            ASSERT_EQ(Reference::Match::YES,
                      reference.recognise(table.tag, sample, &found, &fields))
                    << sample;
            EXPECT_EQ(entry.id, found->id) << sample;
            EXPECT_LE(Pattern(line).fieldCount(), Fields::kMax) << line;
            if (kLongLines.count(entry.id) == 0) continue;
            ++longLines;
            EXPECT_EQ(Reference::Match::CUT_OFF,
                      reference.recognise(table.tag, sample.substr(0, sample.size() / 2), &found,
                                          &fields))
                    << sample;
        }
    }
    EXPECT_GT(lines, 80);
    EXPECT_EQ(kLongLines.size(), longLines);
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

TEST(CodecNames, prefixIsTakenApart) {
    // The pid, the tag, what is said of them, and the longest run of dropped frames; or none.
    const std::pair<const char*, const char*> cases[] = {
            {"1234.HW.c2.video.avc", "1234 HW.c2.video.avc 0"},
            {"W.mcfd12.1234.4K.secure.HW.c2.video.hevc",
             "1234 HW.c2.video.hevc 4K secure memory 12"},
            {"W.rot11.rit11.7.secureSW.SW.omx.audio.mp4a", "7 SW.omx.audio.mp4a secure 0"},
            {"7.VND.audio.raw.atmos", "7 VND.audio.raw atmos 0"},
            {"7.tunneled.HW.omx.video.x-ms.wmv", "7 tunneled.HW.omx.video.x-ms.wmv 0"},
            {"HW.c2.video.avc", nullptr},
            {"1234.video.avc", nullptr},
            {"", nullptr},
    };
    for (const auto& [text, expected] : cases) {
        LinePrefix prefix;
        ASSERT_EQ(expected != nullptr, parseLinePrefix(text, &prefix)) << text;
        if (expected == nullptr) continue;
        std::string said = std::to_string(prefix.pid) + " " + std::string(prefix.tag);
        if (prefix.uhdScreen) said += " 4K";
        if (prefix.secure) said += " secure";
        if (prefix.secureMemory) said += " memory";
        if (prefix.atmos) said += " atmos";
        EXPECT_EQ(expected, said + " " + std::to_string(prefix.maxDropRun)) << text;
    }
}

TEST(Explain, answersToAllKindsOfKeys) {
    const Reference reference;
    const std::pair<const char*, const char*> cases[] = {
            {"BRISK-P5Ms", "p5_ms"},
            {"totalframesdropped", "All dropped frames"},
            {"p5_ms", "BRISK-P5Ms"},
            {"first_render", "Got First Frame Render {at_ms}({since_input_ms})"},
            {"FARD", "it was there before"},
            {"qkuh/2/02330410", "TotalVideoPlaybackTimeMs"},
            {"mediaanalytic.debug", "0x407"},
            {"outside_ms", "sessions[].sync.outside_ms"},
            {"report.p5_ms", "BRISK-P5Ms"},
            {"tsS", "Frames in flight"},
            {"\tInput Bitrate: 900", "bitrate_kbps = 900 kbit/s"},
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

TEST(Explain, knowsAllThatTheReportNames) {
    const Reference reference;
    std::vector<std::string> names;
    for (const Reference::Table& table : reference.tables()) {
        for (const ReferenceEntry& entry : table.entries) {
            names.push_back(entry.id);
            const std::string& line = entry.fact("line");
            for (size_t at = line.find('{'); at != std::string::npos; at = line.find('{', at + 1)) {
                names.push_back(line.substr(at + 1, line.find(':', at) - at - 1));
            }
        }
    }
    std::istringstream compared(comparedKeys());
    for (std::string row; std::getline(compared, row);) {
        std::istringstream(row) >> names.emplace_back();
    }
    for (size_t i = 0; i < kCauseCount; ++i) {
        names.push_back(toString(static_cast<Cause>(i)));
        names.push_back(inWords(static_cast<Cause>(i)));
    }
    for (Word word : {Word::SMOOTH, Word::STUTTERED, Word::BROKE_OFF, Word::CANNOT_TELL}) {
        names.push_back(toString(word));
    }
    for (const std::string& name : names) {
        EXPECT_THAT(explain(reference, name), HasSubstr("meaning: ")) << name;
    }
}

}  // namespace
}  // namespace android::codecreport
