// SPDX-License-Identifier: Apache-2.0
// The course of sessions without faults.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "CodecplayTest.h"

namespace android::test {

using namespace testing;

TEST(CodecplaySessionTest, fullReportHasPlaybackTimeAndRecords) {
    const std::string metrics = scratchFile("metrics");
    // What was in the file goes.
    runProcess({"sh", "-c", "echo before >" + metrics});
    // Two rounds of 4 s: 3966 ms between first and last picture, each.
    const Played played =
            play("--speed 0 --loop 2 --display 3840x2160 --package com.example.tv --metrics " +
                 metrics + ' ' + ordinaryClip());
    EXPECT_EQ(played.video()["rendered"], 240);
    EXPECT_EQ(
            played.missingInOrder(
                    {"I/MediaCodecLogger: [BRISK] HW.c2.video.avc P2 + ", "avc P2 - ", "avc P3 + ",
                     "avc P3 - ", "avc Got First Input Frame ", "width = 64 height = 48",
                     "avc] First PTS after Flush or reset = 0", "avc Got First Frame Ready ",
                     "Rendering first frame", "avc Got First Frame Render ", "avc] EOS pts:4000000",
                     "Possible seek found!", "EOS pts:4000000",
                     "MC Stop Time(start: ", "TotalVideoPlaybackTimeMs = 7932"}),
            "");
    EXPECT_EQ(played.missingInOrder({"VND.c2.audio.mp4a P2 + ", "[VND.c2.audio.mp4a] EOS pts:"}),
              "");
    EXPECT_THAT(std::string(played.video()["reports"][0]),
                StartsWith("com.example.tv.4K.HW.c2.video.avc:videoResolution.SD=7932:"));
    EXPECT_THAT(readFile(metrics),
                AllOf(HasSubstr(R"(,"name":"TotalVideoPlaybackTimeMs","package":"com.example.tv",)"
                                R"("unit":"ms","dimension":"HW_avc_4K","value":7932.0,)"),
                      Not(HasSubstr("before"))));
}

TEST(CodecplaySessionTest, unpacedRunsWithInterruptionsAreAllTheSame) {
    const std::string arguments =
            "--speed 0 --seek 1.5@3 --flush 3.5 --reconfigure 3.8 " + ordinaryClip();
    const Played first = play(arguments);
    EXPECT_EQ(first.missingInOrder(
                      {"First PTS after Flush or reset = 0",
                       // From the sync frame before the target.
                       "First PTS after Flush or reset = 1000000",
                       "Possible seek found! last pts:", "First PTS after Flush or reset = 3000000",
                       "HW.c2.video.avc.BRISK-P2Ms = ", "[BRISK] HW.c2.video.avc P2 + ",
                       "width = 64 height = 48", "HW.c2.video.avc.BRISK-P2Ms = "}),
              "");
    EXPECT_EQ(first.video()["reports"].size(), 2U);
    // From 1.0 s to the target at 1.5 s, and from 3.0 s to 3.5 s and to 3.8 s.
    EXPECT_EQ(first.video()["dropped"]["before_target"], 15 + 15 + 24);
    EXPECT_GT(first.video()["flushed"], 0);
    EXPECT_EQ(first.process.err, "");
    // So are those side by side, but for the program's own measurements.
    const auto timeless = [](Json sessions) {
        for (Json& session : sessions) session.erase("reports");
        return sessions;
    };
    const Played others = play("--instances 3 " + arguments);
    ASSERT_EQ(others.json["files"].size(), 3U);
    for (const Json& file : others.json["files"])
        EXPECT_EQ(timeless(file["sessions"]), timeless(first.sessions()));
}

namespace {

constexpr char kOpenGop[] = "-c:v libx264 -preset ultrafast -bf 2 -g 30 -x264-params open-gop=1 ";

/** A format's file name extension and ffmpeg's codecs for it. */
using Container = std::pair<const char*, const char*>;

constexpr Container kContainers[] = {
        {"mp4", kOpenGop},
        {"webm", "-c:v libvpx -deadline realtime -g 30 -c:a libopus "},
        {"ts", kOpenGop},
        {"avi", kOpenGop},
        {"flv", kOpenGop},
        {"ogg", "-c:v libtheora -g 30 -c:a libvorbis "},
        {"h264", kOpenGop},
        {"hevc", "-c:v libx265 -preset ultrafast -g 30 -x265-params log-level=none:bframes=2 "},
        // One sync frame, at the beginning; the clock starts high.
        {"m2t", "-c:v libx264 -preset ultrafast -bf 2 -g 999 -output_ts_offset 95000 "},
};

/** Media times of the pictures in the order in which they were shown, or were too late for it. */
std::vector<long> releasedTimes(const Played& played) {
    std::vector<long> times;
    for (const std::string& line : played.log) {
        const bool rendered = line.find(" Render R-S:") != std::string::npos;
        const long timeUs = numberBehind(line, rendered ? "pts:" : ": Drop:");
        if (timeUs >= 0) times.push_back(timeUs);
    }
    return times;
}

}  // namespace

class CodecplayContainerTest : public TestWithParam<Container> {};

TEST_P(CodecplayContainerTest, whatWasInterruptedGoesOnWithTheSamePictures) {
    const auto& [extension, codecs] = GetParam();
    const std::string file =
            clip(std::string("interrupted.") + extension, picture(4) + tone(4) + codecs);
    const auto played = [&](const std::string& more) {
        const Played result = play(analysis("0x4") + more + ' ' + file);
        EXPECT_EQ(result.process.exitCode, 0) << result.process.err;
        return releasedTimes(result);
    };
    const std::vector<long> whole = played("--speed 0");
    EXPECT_GT(whole.size(), 60U);
    // At the end from 1.3 s on, and all once more. The end of each part before is flushed.
    std::vector<long> expected(std::lower_bound(whole.begin(), whole.end(), 1'300'000),
                               whole.end());
    expected.insert(expected.end(), whole.begin(), whole.end());
    for (const std::string last : {"0 --seek 1.3@2.8", "0 --flush 1.3", "8 --reconfigure 1.3"}) {
        SCOPED_TRACE(file + ' ' + last);
        std::vector<long> shown = played("--loop 2 --vsync 480 --speed " + last);
        // Pictures on the way to the place are given up when they cannot come any more.
        const auto lastRound = shown.end() - static_cast<long>(whole.size());
        shown.erase(std::remove_if(shown.begin(), lastRound,
                                   [](long timeUs) { return timeUs < 1'300'000; }),
                    lastRound);
        ASSERT_GT(shown.size(), expected.size());
        EXPECT_EQ(std::vector<long>(shown.end() - static_cast<long>(expected.size()), shown.end()),
                  expected);
    }
}

INSTANTIATE_TEST_SUITE_P(Containers, CodecplayContainerTest, ValuesIn(kContainers),
                         [](const auto& info) { return info.param.first; });

TEST(CodecplaySessionTest, tunneledSecureSessionsSaySo) {
    const Played played =
            play(analysis("0x40017") + "--tunneled --secure --speed 0 --loop 2 " + ordinaryClip());
    EXPECT_EQ(played.video()["component"], "c2.ffmpeg.avc.decoder.secure");
    EXPECT_EQ(played.video()["rendered"], 240);
    EXPECT_THAT(std::string(played.video()["reports"][0]),
                StartsWith("codecplay.secure.tunneled.HW.c2.video.avc:videoResolution.SD=7932"));
    // Encrypted input is described; the tunnel's pictures are not followed to the display.
    EXPECT_NE(played.line("iv:01 00 00"), "");
    EXPECT_NE(played.line("s:0 v:0 t:0 c:32 e:"), "");
    EXPECT_THAT(played.log, Not(Contains(ContainsRegex("FirstFrameReadyMs| Render R-S:"))));
}

TEST(CodecplaySessionTest, pacedPlaybackTakesItsTimeAndLosesNothing) {
    const std::string file =
            clip("short.mp4", picture(1.5) + tone(1.5) + "-c:v libx264 -preset ultrafast -c:a aac");
    const Played played = play(analysis("0x4") + "--buffers 3 " + file);
    EXPECT_EQ(played.video()["packets"], 45);
    // Pictures go out two refreshes before they are due, later only where the machine is busy.
    const std::vector<std::string> renders = played.lines("avc Render R-S:");
    long maxLeadMs = 0;
    for (const std::string& line : renders)
        maxLeadMs = std::max(maxLeadMs, numberBehind(line, "R-S:"));
    EXPECT_THAT(maxLeadMs, AllOf(Gt(0), Le(34)));
    EXPECT_GE(numberBehind(renders.back(), " R:") - numberBehind(renders.front(), " R:"), 1300);
}

}  // namespace android::test
