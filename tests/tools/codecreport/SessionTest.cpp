// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "ReportSupport.h"
#include "SyntheticLog.h"

namespace android::test {
namespace {

using codecreport::LogFormat;
using testing::ElementsAre;
using testing::StartsWith;

constexpr char kLogger[] = "MediaCodecLogger";
constexpr char kAnalytics[] = "ZMediaAnalyticV";
constexpr char kBegin[] = "[BRISK] HW.c2.video.avc P2 + 100000";

std::string logOf(const Playback& playback) {
    return writeLog(messagesOf(playback), LogFormat::THREADTIME);
}

/** A playback with one of each: a stall, a slow frame, runs of three and one dropped frames. */
Playback troubled() {
    Playback playback;
    playback.stalls = {{150, 400}};
    playback.slowDecodes = {{100, 120}};
    playback.drops = {200, 201, 202, 220};
    return playback;
}

/** A log by hand of the first seconds of a codec; the numbers of the tests are worked out of it. */
constexpr char kByHand[] = R"(--------- beginning of main
03-01 10:00:00.000  4321  4330 I MediaCodecLogger: [BRISK] HW.omx.video.hevc P2 + 5000
03-01 10:00:00.000  4321  4330 I MediaCodecLogger: HW.omx.video.hevc Adaptive Streaming max w:3840 h:2160, screen size:4K
03-01 10:00:00.012  4321  4330 I MediaCodecLogger: [BRISK] HW.omx.video.hevc P2 - 5012
03-01 10:00:00.013  4321  4330 D MediaCodecLogger: Got zephra_media_codec_logger Service. Calling PID = 4321
03-01 10:00:00.015  4321  4330 I MediaCodecLogger: [BRISK] HW.omx.video.hevc P3 + 5015
03-01 10:00:00.040  4321  4330 I MediaCodecLogger: [BRISK] HW.omx.video.hevc P3 - 5040
03-01 10:00:00.041   900   901 I ActivityManager: Displayed com.example.app
03-01 10:00:00.050  4321  4330 I MediaCodecLogger: [BRISK] HW.omx.video.hevc Got First Input Frame 5050 pts:0
03-01 10:00:00.080  4321  4330 I MediaCodecLogger: updateFormatChanged width = 3840 height = 2160, hdrType = 5, scanType = 0, bitDepth = 10, colorStandard = 6
03-01 10:00:00.081  4321  4330 I MediaCodecLogger: updatePTSTime [HW.omx.video.hevc] First PTS after Flush or reset = 0
03-01 10:00:00.081  4321  4330 I MediaCodecLogger: [BRISK] HW.omx.video.hevc Got First Frame Ready 5081(31)
03-01 10:00:00.095  4321  4330 I MediaCodecLogger: [BRISK] HW.omx.video.hevc Got First Frame Render 5095(45), renderNum = 1
03-01 10:00:00.095  4321  4330 I MediaCodecLogger: App sets Timestamps for render in SurfaceFlinger
03-01 10:00:05.060  4321  4330 I MediaCodecLogger: 4321.4K.secure.HW.omx.video.hevc.bitrateInKbps = 8000
03-01 10:00:07.000  4321  4330 I MediaCodecLogger: the latest buffer is 1500 old with packageName com.example.app. Possible resume detected
03-01 10:00:08.000  4321  4330 I MediaCodecLogger: updatePTSTime Possible seek found! last pts:7900000 cur pts:60000000
03-01 10:00:08.500  4321  4330 I MediaCodecLogger: Flushing: 4321.4K.secure.HW.omx.video.hevc.framerate = 24.000 fps
03-01 10:00:08.600  4321  4330 I MediaCodecLogger: updatePTSTime [HW.omx.video.hevc] First PTS after Flush or reset = 90000000
03-01 10:00:09.000  4321  4330 I MediaCodecLogger: 4321.4K.secure.HW.omx.video.hevc.DecoderErrorTrans = 1
03-01 10:00:09.000  4321  4330 I MediaCodecLogger: 4321.4K.secure.HW.omx.video.hevc.TotalVideoPlaybackTimeMs = 8000
03-01 10:00:09.000  4321  4330 I MediaCodecLogger: 4321.4K.secure.HW.omx.video.hevc.TotalFramesDropped = 12
03-01 10:00:09.001  4321  4330 I MediaCodecLogger: 4321.4K.secure.HW.omx.video.hevc..DecoderErrorFatal = 1
03-01 10:00:09.001  4321  4330 I MediaCodecLogger: a text that the library does not wri
03-01 10:00:09.001  4321  4330 I MediaCodecLogger: [BRISK] HW.omx.video.hevc Got First Fra
)";

TEST(Session, handWrittenLogGivesItsNumbers) {
    const Json report = reportOf(kByHand);
    ASSERT_EQ(1u, report["sessions"].size());
    const Json& session = report["sessions"][0];
    EXPECT_EQ("HW.omx.video.hevc", session["codec_tag"]);
    EXPECT_EQ("omx", session["framework"]);
    EXPECT_EQ(4321, session["pid"]);
    EXPECT_EQ("com.example.app", session["package"]);
    EXPECT_EQ("03-01 10:00:00.000", session["start_time"]);
    EXPECT_EQ(9001, session["duration_ms"]);
    for (const char* flag :
         {"secure", "secure_memory", "uhd_screen", "app_timestamps", "reported"}) {
        EXPECT_TRUE(session[flag].get<bool>()) << flag;
    }
    EXPECT_FALSE(session["started_before_log"].get<bool>());
    EXPECT_EQ(Json({{"width_px", 3840},
                    {"height_px", 2160},
                    {"hdr_type", "HDR10Plus"},
                    {"scan_type", "progressive"},
                    {"bit_depth_bits", 10},
                    {"color_standard", 6},
                    {"max_width_px", 3840},
                    {"max_height_px", 2160},
                    {"input_buffers_count", nullptr},
                    {"output_buffers_count", nullptr}}),
              session["video"]);
    EXPECT_EQ(Json({{"p2_begin_ms", 0},
                    {"p2_end_ms", 12},
                    {"p3_begin_ms", 15},
                    {"p3_end_ms", 40},
                    {"first_input_ms", 50},
                    {"first_frame_ready_ms", 81},
                    {"first_frame_render_ms", 95},
                    {"stop_begin_ms", nullptr},
                    {"stop_end_ms", nullptr}}),
              session["startup"]);
    EXPECT_EQ(Json({{"decoder_error_fatal", 1},
                    {"total_frames_dropped", 12},
                    {"total_video_playback_ms", 8000}}),
              session["report"]);
    EXPECT_EQ(1, session["counts"]["seek_count"]);
    EXPECT_EQ(1, session["counts"]["flush_count"]);
    EXPECT_EQ(1, session["counts"]["error_count"]);
    EXPECT_EQ(1, session["counts"]["delayed_output_count"]);
    EXPECT_EQ(Json::array({Json::array({5060, 8000, 8000, 8000})}),
              session["reported_bitrate"]["rows"]);

    const Json& input = report["input"];
    EXPECT_EQ(25, input["line_count"]);
    EXPECT_EQ(21, input["understood_count"]);
    EXPECT_EQ(1, input["other_tag_count"]);
    EXPECT_EQ(1, input["unknown_count"]);
    EXPECT_EQ(1, input["cut_off_count"]);
    EXPECT_EQ(2u, input["examples"].size());
}

TEST(Session, framesGiveStagesFreezesDropsAndSync) {
    const Json report = reportOf(logOf(troubled()));
    const Json& session = report["sessions"][0];
    const auto stage = [&session](const char* name, const char* value) {
        return session["stages"][name][value].get<int>();
    };
    EXPECT_EQ(2, stage("decrypt", "p50_ms"));
    EXPECT_EQ(20, stage("codec", "p99_ms"));
    // 120 more than 20.
    EXPECT_EQ(140, stage("codec", "max_ms"));
    EXPECT_EQ(1, stage("message", "p50_ms"));
    // Output 77 ms before its time, released 10 ms before; the stalled one 400 later.
    EXPECT_EQ(67, stage("app", "p50_ms"));
    EXPECT_EQ(467, stage("app", "max_ms"));
    EXPECT_EQ(10, stage("lead", "p50_ms"));
    EXPECT_EQ(296, session["counts"]["rendered_count"]);
    EXPECT_EQ(300, session["counts"]["input_count"]);
    EXPECT_EQ(300 * 5000, session["counts"]["input_bytes"]);

    // The slow frame was shown 43 ms late together with the one behind it; the stall took 400.
    const Json& incidents = session["incidents"];
    ASSERT_EQ(4u, incidents.size());
    EXPECT_EQ("140 ms at work on a frame (usually 20) with 1 frame waiting, 1 picture never shown",
              incidents[0]["evidence"]);
    EXPECT_EQ("released 467 ms after it was ready (usually 67)", incidents[1]["evidence"]);
    EXPECT_EQ(160 + 150 * 40, incidents[1]["start_ms"]);
    EXPECT_EQ(400, incidents[1]["stood_ms"]);
    EXPECT_EQ(3, incidents[2]["never_shown_count"]);
    EXPECT_EQ(Json({{"application", 1}}), incidents[2]["shares"]);
    EXPECT_EQ(Json({{"count", 1},
                    {"total_ms", 400},
                    {"longest_ms", 400},
                    {"longest_at_ms", 160 + 150 * 40}}),
              session["standing"]);

    // After the stall 149 frames follow, each 400 ms behind the schedule.
    EXPECT_EQ(149 * 40, session["sync"]["outside_ms"]);
    EXPECT_EQ(299 * 40 + 400, session["sync"]["measured_ms"]);
    EXPECT_EQ(400, session["sync"]["worst_ms"]);
    EXPECT_EQ(400, session["sync"]["last_ms"]);
}

TEST(Session, everyFormOfTheLogGivesTheSameFrames) {
    const auto framesOf = [](LogFormat format) {
        const Json report = reportOf(writeLog(messagesOf(troubled()), format));
        EXPECT_EQ(1u, report["sessions"].size()) << toString(format);
        EXPECT_EQ(1u, report["input"]["formats"].size()) << toString(format);
        EXPECT_EQ(0, report["input"]["unknown_count"]) << toString(format);
        const Json& session = report["sessions"][0];
        Json result;
        for (const char* key :
             {"codec_tag", "counts", "startup", "report", "stages", "drops", "incidents"}) {
            result[key] = session[key];
        }
        return result;
    };
    const Json expected = framesOf(LogFormat::THREADTIME);
    for (int i = 0; i < static_cast<int>(LogFormat::COUNT); ++i) {
        const LogFormat format = static_cast<LogFormat>(i);
        EXPECT_EQ(expected, framesOf(format)) << toString(format);
    }
}

TEST(Session, jumpingClockChangesNoNumber) {
    const auto numbersOf = [](const std::map<int64_t, int64_t>& jumps, int expectedJumps) {
        const Json report =
                reportOf(writeLog(messagesOf(troubled()), LogFormat::THREADTIME, jumps));
        EXPECT_EQ(expectedJumps, report["input"]["clock_jump_count"]);
        const Json& session = report["sessions"][0];
        return std::make_tuple(session["stages"], session["incidents"], session["drops"],
                               session["duration_ms"], session["sync"]["worst_ms"]);
    };
    const auto expected = numbersOf({}, 0);
    EXPECT_EQ(expected, numbersOf({{103'000, 3'600'000}}, 1));
    EXPECT_EQ(expected, numbersOf({{103'000, -7'200'000}, {106'000, 0}}, 2));
}

TEST(Session, interleavedCodecsStayApart) {
    Playback first = troubled();
    Playback second;
    // The same kind of codec in the same process, on a thread of its own.
    second.tid = first.tid + 1;
    second.startMs = first.startMs + 333;
    second.drops = {7};
    Playback third = second;
    third.pid = 5000;
    third.frames = 100;
    third.tag = "SW.c2.video.vp9";
    third.format = "vp9";
    std::vector<LogMessage> messages = messagesOf(first);
    for (const Playback& playback : {second, third}) {
        for (const LogMessage& message : messagesOf(playback)) messages.push_back(message);
    }
    const Json report = reportOf(writeLog(messages, LogFormat::THREADTIME));
    const Json alone = reportOf(logOf(first));
    ASSERT_EQ(3u, report["sessions"].size());
    for (const char* key : {"counts", "startup", "report", "stages", "incidents", "drops"}) {
        EXPECT_EQ(alone["sessions"][0][key], report["sessions"][0][key]) << key;
    }
    EXPECT_EQ(299, report["sessions"][1]["counts"]["rendered_count"]);
    EXPECT_EQ(1, report["sessions"][1]["incident_count"]);
    EXPECT_EQ("SW.c2.video.vp9", report["sessions"][2]["codec_tag"]);
    EXPECT_EQ(99, report["sessions"][2]["counts"]["rendered_count"]);
}

TEST(Session, codecsOfOneKindAreToldApartWithoutThreads) {
    // Two players of the same kind in one process, one of them in the middle of its film.
    Playback first = troubled();
    Playback second = troubled();
    second.startMs = first.startMs + 3'333;
    second.drops = {7};
    second.firstPtsUs = 600'000'000;
    std::vector<LogMessage> messages = messagesOf(first);
    for (const LogMessage& message : messagesOf(second)) messages.push_back(message);
    for (LogFormat format :
         {LogFormat::BRIEF, LogFormat::TIME, LogFormat::PROCESS, LogFormat::TAG, LogFormat::RAW}) {
        const Json report = reportOf(writeLog(messages, format));
        ASSERT_EQ(2u, report["sessions"].size()) << toString(format);
        int i = 0;
        for (const Playback& playback : {first, second}) {
            const Json alone = reportOf(writeLog(messagesOf(playback), format))["sessions"][0];
            const Json& session = report["sessions"][i++];
            for (const char* key : {"counts", "startup", "report", "stages", "drops"}) {
                EXPECT_EQ(alone[key], session[key]) << toString(format) << " " << key;
            }
        }
    }
}

TEST(Session, eachConfigurationIsASession) {
    std::vector<LogMessage> messages;
    for (int64_t start : {100'000, 120'000}) {
        Playback playback;
        playback.startMs = start;
        playback.frames = 50;
        for (const LogMessage& message : messagesOf(playback)) messages.push_back(message);
    }
    const Json report = reportOf(writeLog(messages, LogFormat::THREADTIME));
    ASSERT_EQ(2u, report["sessions"].size());
    for (const Json& session : report["sessions"]) {
        EXPECT_EQ(50, session["counts"]["rendered_count"]);
        EXPECT_EQ(20, session["startup"]["p2_end_ms"]);
        EXPECT_TRUE(session["reported"].get<bool>());
    }
}

TEST(Session, eachCaptureHasItsClockAndItsSessions) {
    // The same codec of the same process on another day, not configured anew.
    const std::string first = fileWith(logOf(troubled()), "first");
    Playback later = troubled();
    later.startMs += 86'400'000 * 3;
    std::vector<LogMessage> messages = messagesOf(later);
    messages.erase(messages.begin(), messages.begin() + 10);
    const std::string second = fileWith(writeLog(messages, LogFormat::THREADTIME), "second");
    const Json alone = reportOfFiles({first});
    const Json both = reportOfFiles({second, first});
    ASSERT_EQ(2u, both["sessions"].size());
    for (const char* key : {"duration_ms", "counts", "stages", "start_time"}) {
        EXPECT_EQ(alone["sessions"][0][key], both["sessions"][1][key]) << key;
    }
    EXPECT_EQ(0, both["input"]["clock_jump_count"]);
}

TEST(Session, rotatedLogIsOne) {
    const std::string whole = logOf(troubled());
    const size_t cut = whole.find('\n', whole.size() / 2) + 1;
    fileWith(whole.substr(0, cut), "rotated.1");
    const std::string path = fileWith(whole.substr(cut), "rotated");
    EXPECT_EQ(reportOf(whole)["sessions"], reportOfFiles({path, path + ".1"})["sessions"]);
}

TEST(Session, logMayBeginInTheMiddle) {
    std::vector<LogMessage> messages = messagesOf(troubled());
    messages.erase(messages.begin(), messages.begin() + 500);
    const Json report = reportOf(writeLog(messages, LogFormat::THREADTIME));
    ASSERT_EQ(1u, report["sessions"].size());
    const Json& session = report["sessions"][0];
    EXPECT_TRUE(session["started_before_log"].get<bool>());
    // Frame lines tell the format, the report at the end the tag.
    EXPECT_EQ("HW.c2.video.avc", session["codec_tag"]);
    EXPECT_EQ(1, session["standing"]["count"]);
}

TEST(Session, syncLinesTellOffsetsWhereFramesHaveNoLine) {
    const auto sync = [](int now, int behind, const char* first, int frames, int elapsed) {
        char text[200];
        snprintf(text, sizeof(text),
                 "AVSYNC_V:%d(%d)(0) b:0 rts:0(10) pid:4321%s min:-1(-1 )(10) max:40(40)(10) "
                 "avg:40000(40000)(10) cnt:%d(%d)",
                 now - behind, behind, first, frames, elapsed);
        return std::string(text);
    };
    const Json report = reportOf(threadtime({{kLogger, kBegin},
                                             {kAnalytics, sync(101'000, 700, " First", 1, 0)},
                                             {kAnalytics, sync(102'000, 760, "", 25, 1000)},
                                             {kAnalytics, sync(103'000, 730, "", 24, 1000)}}));
    const Json& session = report["sessions"][0];
    EXPECT_EQ(3, session["sync"]["line_count"]);
    // 60 ms behind in the second line: more than 45 for its second.
    EXPECT_EQ(1000, session["sync"]["outside_ms"]);
    EXPECT_EQ(2000, session["sync"]["measured_ms"]);
    EXPECT_EQ(60, session["sync"]["worst_ms"]);
    EXPECT_EQ(30, session["sync"]["last_ms"]);
    EXPECT_EQ(50, session["counts"]["rendered_count"]);
    EXPECT_EQ(25, session["frame_rate"]["rows"][0][1]);
}

TEST(Session, dropsGoTogetherByTheLastRenderedFrameWhereRendersHaveNoLine) {
    const auto drop = [](int now, int ptsMs, int stepMs) {
        char text[200];
        snprintf(text, sizeof(text), "Drop:%d(0) TD:%d FARD:9(9) FAD:9(1) AL:67(%d) FL:20(21) 0/3",
                 ptsMs * 1000, stepMs, now);
        return std::string(text);
    };
    // The first two follow the frame of 960 ms, the third that of 1040 ms.
    const Json report = reportOf(threadtime({{kLogger, kBegin},
                                             {kAnalytics, drop(101'000, 1000, 40)},
                                             {kAnalytics, drop(102'000, 1040, 80)},
                                             {kAnalytics, drop(103'000, 1080, 40)}}));
    const Json& drops = report["sessions"][0]["drops"];
    EXPECT_EQ(2, drops["run_count"]);
    EXPECT_EQ(2, drops["longest_run_frames"]);
    EXPECT_EQ(Json::array({{{"length_frames", 1}, {"run_count", 1}},
                           {{"length_frames", 2}, {"run_count", 1}}}),
              drops["lengths"]);
    // Output at 100 933, 9 ms after the last frame was shown: due at 100 924 + 40, dropped at 101
    // 000. Renders have no lines, so there may have been more.
    const Json& session = report["sessions"][0];
    EXPECT_EQ("stuttered", session["verdict"]["word"]);
    EXPECT_EQ(101'000 - 36 - 100'000, session["incidents"][0]["start_ms"]);
    EXPECT_EQ(nullptr, session["counts"]["shown_count"]);
    EXPECT_EQ(Json::array({"incident_count", "counts.dropped_count"}), session["at_least"]);
}

/** A session of 40 renders, 40 ms apart, with a gap before the 31st. */
Json gapped(int64_t gapMs, int64_t seekMs, bool byMediaTime = false) {
    std::vector<LogMessage> messages = {{100'000, 4321, 4330, kLogger, kBegin}};
    for (int i = 0; i < 40; ++i) {
        const long now = 100'100 + i * 40 + (i >= 30 ? gapMs : 0);
        const long ptsMs = 40 * i + (i >= 30 ? seekMs : 0);
        const long render = byMediaTime ? ptsMs : now;
        char text[120];
        snprintf(text, sizeof(text), "avc Render R-S:%ld R:%ld(40) pts:%ld 0/3", render - now,
                 render, ptsMs * 1000);
        messages.push_back({now, 4321, 4330, kAnalytics, text});
    }
    return reportOf(writeLog(messages, LogFormat::THREADTIME))["sessions"][0];
}

TEST(Session, framesRenderedByMediaTimeAreShownWhenReleased) {
    // The render time is the media time: no moment on the clock, and no lead.
    const Json session = gapped(300, 0, true);
    EXPECT_EQ(40, session["frame_interval"]["p50_ms"]);
    EXPECT_EQ(340, session["frame_interval"]["max_ms"]);
    EXPECT_EQ(1, session["standing"]["count"]);
    EXPECT_EQ(0, session["stages"]["lead"]["max_ms"]);
}

TEST(Session, pausesAreNoIncidentsAndLongSeeksAre) {
    // Frames go on from where they stopped: a second of nothing was a pause.
    for (const auto& [gapMs, seekMs, incidents] :
         {std::make_tuple(249, 0, 1), std::make_tuple(999, 0, 1), std::make_tuple(1000, 0, 0),
          std::make_tuple(20'000, 0, 0), std::make_tuple(249, 60'000, 0),
          std::make_tuple(250, 60'000, 1), std::make_tuple(1000, -800, 1)}) {
        EXPECT_EQ(incidents, gapped(gapMs, seekMs)["incident_count"]) << gapMs << " " << seekMs;
    }
}

TEST(Session, everyLineIsCountedOnceHoweverDamaged) {
    const std::string whole = logOf(troubled()).substr(0, 60'000);
    std::mt19937 random(7);
    for (int round = 0; round < 150; ++round) {
        std::string log = whole;
        for (int i = 0; i < 200; ++i) {
            const size_t at = random() % log.size();
            const auto kind = random() % 4;
            if (kind == 0) log[at] = static_cast<char>(random());
            if (kind == 1) log.erase(at, random() % 40);
            if (kind == 2) log.insert(at, "9223372036854775807");
            if (kind == 3) log.insert(at, log.substr(random() % log.size(), random() % 200));
        }
        const Json input = reportOf(log)["input"];
        uint64_t counted = 0;
        for (const char* key : {"understood_count", "other_tag_count", "not_log_line_count",
                                "cut_off_count", "unknown_count"}) {
            counted += input[key].get<uint64_t>();
        }
        // What is left are dividers and empty lines.
        EXPECT_LE(counted, input["line_count"].get<uint64_t>());
        EXPECT_GT(counted + 60, input["line_count"].get<uint64_t>());
    }
}

}  // namespace
}  // namespace android::test
