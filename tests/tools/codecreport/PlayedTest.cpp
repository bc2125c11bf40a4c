// SPDX-License-Identifier: Apache-2.0
// Logs of codecplay: what the library really writes, read by codecreport.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/tools/CodecplayTest.h"

namespace android::test {
namespace {

/** What codecplay says of its sessions, and what codecreport reads out of their log. */
struct Both {
    Json played;
    Json report;
};

Both playAndReport(const std::string& arguments) {
    const std::string log = scratchFile("session.log");
    const auto played = runProcess(codecplay("--json --log " + log + ' ' + arguments));
    EXPECT_EQ(0, played.exitCode) << played.err;
    const auto report = runProcess({CODECREPORT, log, "--json", "-q"});
    EXPECT_EQ(0, report.exitCode) << report.err;
    return {Json::parse(played.out, nullptr, false), Json::parse(report.out, nullptr, false)};
}

/** The session of video; which stream begins first is up to the threads. */
Json videoOf(const Json& report) {
    for (const Json& session : report["sessions"]) {
        if (session["kind"] == "video") return session;
    }
    ADD_FAILURE() << "no session of video";
    return {};
}

TEST(CodecreportPlayed, everyLineOfTheLibraryIsUnderstood) {
    // All lines of the analysis but the dumps, of both back-ends, with faults and interruptions.
    for (const char* backEnd : {"--codec2", "--omx", "--tunneled", "--secure"}) {
        const Both both = playAndReport(
                analysis("0x3046f") + backEnd +
                " --speed 0 --drop 60-64 --seek 0.5@2 --error recoverable@3 " + ordinaryClip());
        const Json& input = both.report["input"];
        EXPECT_EQ(0, input["unknown_count"]) << backEnd << input["examples"];
        EXPECT_EQ(0, input["cut_off_count"]) << backEnd << input["examples"];
        EXPECT_EQ(0, input["not_log_line_count"]) << backEnd;
        EXPECT_EQ(0, input["unattributed_count"]) << backEnd;
        EXPECT_EQ(0, input["clock_jump_count"]) << backEnd;
        EXPECT_EQ(2u, both.report["sessions"].size()) << backEnd;
        EXPECT_EQ(1, videoOf(both.report)["counts"]["error_count"]) << backEnd;
    }
}

TEST(CodecreportPlayed, insertedStallIsFoundAndNamed) {
    const Both both = playAndReport(analysis("0x407") + "--stall 60:400 " + ordinaryClip());
    const Json session = videoOf(both.report);
    ASSERT_GE(session["incident_count"], 1);
    // 30 frames a second: what was to be shown at 2 s stood for the stall at least.
    const Json& incident = session["incidents"][0];
    EXPECT_GE(incident["stood_ms"], 200);
    EXPECT_NEAR(2e6, incident["pts_us"].get<double>(), 1e5);
    // Behind the stall frames back up into the codec, but it is the app that they wait for.
    EXPECT_EQ("application", incident["cause"]);
    EXPECT_GE(incident["never_shown_count"], 1);
}

}  // namespace
}  // namespace android::test
