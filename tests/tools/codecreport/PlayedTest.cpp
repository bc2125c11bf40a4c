// SPDX-License-Identifier: Apache-2.0
// Logs of codecplay: what the library really writes, read by codecreport.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/tools/CodecplayTest.h"

namespace android::test {
namespace {

TEST(CodecreportPlayed, everyLineOfTheLibraryIsUnderstood) {
    // All lines of the analysis but the dumps, of both back-ends, with faults and interruptions.
    for (const std::string backEnd : {"--codec2", "--omx", "--tunneled", "--secure"}) {
        SCOPED_TRACE(backEnd);
        const std::string log = scratchFile("session.log");
        const auto played = runProcess(codecplay(
                "--log " + log + ' ' + analysis("0x3046f") + backEnd +
                " --speed 0 --drop 60-64 --seek 0.5@2 --error recoverable@3 " + ordinaryClip()));
        EXPECT_EQ(0, played.exitCode) << played.err;
        const auto printed = runProcess({CODECREPORT, log, "--json", "-q"});
        EXPECT_EQ(0, printed.exitCode) << printed.err;
        const Json report = Json::parse(printed.out, nullptr, false);
        for (const char* key : {"unknown_count", "cut_off_count", "not_log_line_count",
                                "unattributed_count", "clock_jump_count"}) {
            EXPECT_EQ(0, report["input"][key]) << key << report["input"]["examples"];
        }
        // One of video, one of audio; which begins first is up to the threads.
        ASSERT_EQ(2u, report["sessions"].size());
        const bool isFirst = report["sessions"][0]["kind"] == "video";
        EXPECT_EQ(1, report["sessions"][isFirst ? 0 : 1]["counts"]["error_count"]);
    }
}

}  // namespace
}  // namespace android::test
