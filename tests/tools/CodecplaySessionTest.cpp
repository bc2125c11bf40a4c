// SPDX-License-Identifier: Apache-2.0
// The course of sessions without faults.
#include <gtest/gtest.h>

#include <algorithm>

#include "CodecplayTest.h"

namespace android::test {

namespace {

/** What must be the same in two unpaced runs: all but the program's own measurements. */
Json timeless(const Played& played) {
    Json sessions = played.json["files"][0]["sessions"];
    for (Json& session : sessions) session.erase("reports");
    return sessions;
}

}  // namespace

TEST(CodecplaySessionTest, fullReportHasPlaybackTimeAndRecords) {
    const std::string metrics = scratchFile("metrics");
    // What was in the file goes.
    runProcess({"sh", "-c", "echo before >" + metrics});
    // Two rounds of 4 s: 3966 ms between first and last picture, each.
    const Played played =
            play({"--speed", "0", "--loop", "2", "--display", "3840x2160", "--package",
                  "com.example.tv", "--metrics", metrics, ordinaryClip()});
    EXPECT_EQ(played.video()["packets"], 240);
    EXPECT_EQ(played.video()["rendered"], 240);
    EXPECT_EQ(numberBehind(played.log, "TotalVideoPlaybackTimeMs = "), 7932);
    EXPECT_EQ(missingInOrder(played.log,
                             {"I/MediaCodecLogger: [BRISK] HW.c2.video.avc P2 + ", "avc P2 - ",
                              "avc P3 + ", "avc P3 - ", "avc Got First Input Frame ",
                              "updateFormatChanged width = 64 height = 48",
                              "[HW.c2.video.avc] First PTS after Flush or reset = 0",
                              "avc Got First Frame Ready ",
                              "Rendering first frame after starting or flushing.",
                              "avc Got First Frame Render ", "[HW.c2.video.avc] EOS pts:4000000",
                              "Possible seek found! last pts:", "EOS pts:4000000",
                              "MC Stop Time(start: ", "TotalVideoPlaybackTimeMs"}),
              "");
    EXPECT_EQ(missingInOrder(played.log,
                             {"[BRISK] VND.c2.audio.mp4a P2 + ", "mp4a Got First Input Frame ",
                              "mp4a Got First Frame Ready ", "[VND.c2.audio.mp4a] EOS pts:"}),
              "");
    const std::string report = played.video()["reports"][0];
    EXPECT_EQ(report.find("com.example.tv.4K.HW.c2.video.avc:videoResolution.SD=7932:BRISK-P5Ms="),
              0U)
            << report;
    size_t records = 0;
    for (const std::string& line : splitLines(readFile(metrics))) {
        const Json record = Json::parse(line, nullptr, false);
        ASSERT_FALSE(record.is_discarded()) << line;
        if (record["name"] != "TotalVideoPlaybackTimeMs") continue;
        ++records;
        EXPECT_EQ(record["value"], 7932.0);
        EXPECT_EQ(record["package"], "com.example.tv");
    }
    EXPECT_EQ(records, 1U);
}

TEST(CodecplaySessionTest, unpacedRunsWithSeekAndFlushAreAllTheSame) {
    const std::vector<std::string> arguments = {"--speed", "0",   "--seek",      "1.5@3",
                                                "--flush", "3.5", ordinaryClip()};
    const Played first = play(arguments);
    EXPECT_EQ(timeless(first), timeless(play(arguments)));
    EXPECT_EQ(missingInOrder(first.log, {"First PTS after Flush or reset = 0",
                                         // From the sync frame before the target.
                                         "First PTS after Flush or reset = 1000000",
                                         "Possible seek found! last pts:",
                                         "First PTS after Flush or reset = 3000000"}),
              "");
    // From 1.0 s to the target at 1.5 s, and from 3.0 s to 3.5 s: 15 pictures each.
    EXPECT_EQ(first.video()["dropped"]["before_target"], 30);
    EXPECT_GT(first.video()["flushed"], 0);
    EXPECT_EQ(accountedFrames(first.video()), first.video()["packets"]);
    EXPECT_EQ(first.process.err, "");
}

namespace {

constexpr char kOpenGop[] = "-c:v libx264 -preset ultrafast -bf 2 -g 30 -x264-params open-gop=1 ";
constexpr char kHevc[] =
        "-c:v libx265 -preset ultrafast -g 30 -x265-params log-level=none:bframes=2 ";

struct Container {
    const char* name;
    const char* extension;
    const char* codecs;
};

constexpr Container kContainers[] = {
        {"Mp4", "mp4", kOpenGop},
        {"Matroska", "mkv", kOpenGop},
        {"WebM", "webm", "-c:v libvpx -deadline realtime -g 30 -c:a libopus "},
        {"TransportStream", "ts", kOpenGop},
        {"Avi", "avi", kOpenGop},
        {"Flv", "flv", kOpenGop},
        {"Ogg", "ogg", "-c:v libtheora -g 30 -c:a libvorbis "},
        {"H264", "h264", kOpenGop},
        {"Hevc", "hevc", kHevc},
        // One sync frame, at the beginning; the clock starts high.
        {"OneSyncFrame", "ts",
         "-c:v libx264 -preset ultrafast -bf 2 -g 999 -output_ts_offset 95000 "},
};

/** Media times of the pictures in the order in which they were shown, or were too late for it. */
std::vector<long> releasedTimes(const Played& played) {
    std::vector<long> times;
    for (const std::string& line : played.log) {
        const bool rendered = line.find(" Render R-S:") != std::string::npos;
        const long timeUs = numberBehind({line}, rendered ? "pts:" : ": Drop:");
        if (timeUs >= 0) times.push_back(timeUs);
    }
    return times;
}

}  // namespace

class CodecplayContainerTest : public testing::TestWithParam<Container> {};

TEST_P(CodecplayContainerTest, whatWasInterruptedGoesOnWithTheSamePictures) {
    const Container& container = GetParam();
    const bool elementary = container.extension[0] == 'h';
    const std::string file = clip(std::string("interrupted.") + container.extension,
                                  picture(4) + (elementary ? "" : tone(4)) + container.codecs);
    const auto played = [&](const std::vector<std::string>& more) {
        const Played result = play(analysis("0x4") + more + std::vector<std::string>{file});
        EXPECT_EQ(result.process.exitCode, 0) << result.process.err;
        EXPECT_EQ(accountedFrames(result.video()), result.video()["packets"]);
        return releasedTimes(result);
    };
    const std::vector<long> whole = played({"--speed", "0"});
    EXPECT_GT(whole.size(), 60U);
    // At the end from 1.3 s on, and all once more. The end of each part before is flushed.
    const std::vector<long> expected =
            std::vector<long>(std::lower_bound(whole.begin(), whole.end(), 1'300'000),
                              whole.end()) +
            whole;
    for (const std::vector<std::string>& last :
         std::vector<std::vector<std::string>>{{"0", "--seek", "1.3@2.8"},
                                               {"0", "--flush", "1.3"},
                                               {"8", "--reconfigure", "1.3"}}) {
        SCOPED_TRACE(file + ' ' + last[1]);
        std::vector<long> shown = played(std::vector<std::string>{"--vsync", "480", "--speed"} +
                                         last + std::vector<std::string>{"--loop", "2"});
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

INSTANTIATE_TEST_SUITE_P(Containers, CodecplayContainerTest, testing::ValuesIn(kContainers),
                         [](const auto& info) { return info.param.name; });

TEST(CodecplaySessionTest, reconfigurationGivesAReportEach) {
    const Played played = play({"--speed", "0", "--reconfigure", "2", ordinaryClip()});
    EXPECT_EQ(played.video()["reports"].size(), 2U);
    EXPECT_EQ(countLines(played.log, "[BRISK] HW.c2.video.avc P2 + "), 2U);
    EXPECT_EQ(countLines(played.log, "width = 64 height = 48"), 2U);
    EXPECT_EQ(countLines(played.log, "HW.c2.video.avc.BRISK-P2Ms = "), 2U);
    EXPECT_EQ(accountedFrames(played.video()), played.video()["packets"]);
}

TEST(CodecplaySessionTest, tunneledSecureSessionsSaySo) {
    const Played played = play(analysis("0x40017") +
                               std::vector<std::string>{"--tunneled", "--secure", "--speed", "0",
                                                        "--loop", "2", ordinaryClip()});
    EXPECT_EQ(played.video()["component"], "c2.ffmpeg.avc.decoder.secure");
    EXPECT_EQ(played.video()["rendered"], 240);
    const std::string report = played.video()["reports"][0];
    EXPECT_EQ(report.find("codecplay.secure.tunneled.HW.c2.video.avc:videoResolution.SD=7932"), 0U)
            << report;
    // Encrypted input is described; the tunnel's pictures are not followed to the display.
    EXPECT_NE(findLine(played.log, "iv:01 00 00"), "");
    EXPECT_NE(findLine(played.log, "s:0 v:0 t:0 c:32 e:"), "");
    EXPECT_EQ(countLines(played.log, "FirstFrameReadyMs"), 0U);
    EXPECT_EQ(countLines(played.log, " Render R-S:"), 0U);
}

TEST(CodecplaySessionTest, instancesPlaySideBySide) {
    const Played played =
            play(analysis("0x4") +
                 std::vector<std::string>{"--instances", "4", "--speed", "0", ordinaryClip()});
    ASSERT_EQ(played.json["files"].size(), 4U);
    for (const Json& file : played.json["files"]) {
        EXPECT_EQ(file["sessions"][0]["rendered"], 120) << file;
    }
    EXPECT_EQ(countLines(played.log, " Render R-S:"), 480U);
}

TEST(CodecplaySessionTest, pacedPlaybackTakesItsTimeAndLosesNothing) {
    const std::string file =
            clip("short.mp4", picture(1.5) + tone(1.5) + "-c:v libx264 -preset ultrafast -c:a aac");
    const Played played = play(analysis("0x4") + std::vector<std::string>{"--buffers", "3", file});
    EXPECT_EQ(accountedFrames(played.video()), 45U);
    EXPECT_EQ(countLines(played.log, "AVSYNC_V:"), 1U);
    // Pictures go out two refreshes before they are due, later only where the machine is busy.
    size_t inTime = 0;
    for (const std::string& line : played.log) {
        if (line.find("avc Render R-S:") == std::string::npos) continue;
        const long lead = numberBehind({line}, "avc Render R-S:");
        EXPECT_LE(lead, 34) << line;
        inTime += lead > 0;
    }
    EXPECT_GT(inTime, 10U);
    const long firstReady = numberBehind(played.log, "HW.c2.video.avc Got First Input Frame ");
    const long stop = numberBehind(played.log, "MC Stop Time(start: ");
    EXPECT_GE(stop - firstReady, 1400);
}

}  // namespace android::test
