// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

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

TEST(Reference, reportLinesGoByTheirKeyAndLinesThatEndEarlyAreTold) {
    const Reference reference;
    const ReferenceEntry* entry = nullptr;
    Fields fields;
    const auto recognise = [&](const char* tag, const char* text) {
        return reference.recognise(tag, text, &entry, &fields);
    };
    for (const auto& [text, key, prefix] : {
                 std::tuple("4321.4K.secure.HW.c2.video.avc.videoResolution.UHD = 6000",
                            "videoResolution.UHD", "4321.4K.secure.HW.c2.video.avc"),
                 std::tuple("1.HW.c2.video.avc..DecoderErrorFatal = 6000", "DecoderErrorFatal",
                            "1.HW.c2.video.avc"),
         }) {
        ASSERT_EQ(Reference::Match::YES, recognise("MediaCodecLogger", text));
        EXPECT_EQ(key, entry->id);
        EXPECT_EQ(prefix, fields.text("prefix"));
        EXPECT_EQ(6000, fields.real("value"));
    }
    for (const char* text : {"1.HW.c2.video.avc.NoSuchKey = 1", "BRISK-P2Ms = 1", "[BRIS"}) {
        EXPECT_EQ(Reference::Match::UNKNOWN, recognise("MediaCodecLogger", text)) << text;
    }
    EXPECT_EQ(Reference::Match::NO, recognise("ActivityManager", "x"));
    for (const char* text : {"avc:40000(7) TD:40 FARD:-", "AVSYNC_V:1(2)(3) b:0 rts:",
                             "avc Render R-S:10 R:100(40) pt", "avc Frame:12 Decryp"}) {
        EXPECT_EQ(Reference::Match::CUT_OFF, recognise("ZMediaAnalyticV", text)) << text;
    }
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
