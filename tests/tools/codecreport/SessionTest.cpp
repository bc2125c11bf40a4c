// SPDX-License-Identifier: Apache-2.0
#include <random>

#include <android-base/stringprintf.h>
#include <gtest/gtest.h>

#include "ReportSupport.h"
#include "SyntheticLog.h"

namespace android::test {
namespace {

using codecreport::LogFormat;

constexpr char kLogger[] = "MediaCodecLogger";
constexpr char kAnalytics[] = "ZMediaAnalyticV";
constexpr char kBegin[] = "[BRISK] HW.c2.video.avc P2 + 100000";

/** One of each: a stall, a slow frame, a slow decryption, runs of three and one dropped frames. */
Playback troubled() {
    Playback playback;
    playback.stalls = {{150, 400}};
    playback.slowDecodes = {{100, 120}};
    playback.slowDecrypts = {{50, 120}};
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
    expectHas(R"json({
        "codec_tag": "HW.omx.video.hevc", "framework": "omx", "pid": 4321,
        "package": "com.example.app", "start_time": "03-01 10:00:00.000", "duration_ms": 9001,
        "secure": true, "secure_memory": true, "uhd_screen": true, "app_timestamps": true,
        "reported": true, "started_before_log": false,
        "video": {"width_px": 3840, "height_px": 2160, "hdr_type": "HDR10Plus",
            "scan_type": "progressive", "bit_depth_bits": 10, "color_standard": 6,
            "max_width_px": 3840, "max_height_px": 2160, "input_buffers_count": null,
            "output_buffers_count": null},
        "startup": {"p2_begin_ms": 0, "p2_end_ms": 12, "p3_begin_ms": 15, "p3_end_ms": 40,
            "first_input_ms": 50, "first_frame_ready_ms": 81, "first_frame_render_ms": 95,
            "stop_begin_ms": null, "stop_end_ms": null},
        "report": {"decoder_error_fatal": 1, "total_frames_dropped": 12,
            "total_video_playback_ms": 8000},
        "counts": {"seek_count": 1, "flush_count": 1, "error_count": 1,
            "delayed_output_count": 1},
        "reported_bitrate": {"rows": [[5060, 8000, 8000, 8000]]}
    })json",
              report["sessions"][0]);
    EXPECT_EQ(3u, report["sessions"][0]["report"].size());
    expectHas(R"({"line_count": 25, "understood_count": 21, "other_tag_count": 1,
                  "unknown_count": 1, "cut_off_count": 1})",
              report["input"]);
    EXPECT_EQ(2u, report["input"]["examples"].size());
}

TEST(Session, framesGiveStagesFreezesDropsAndSync) {
    // The slow frame took 120 ms more than 20 and was shown 43 ms late with the one behind it.
    // Frames leave the codec 77 ms before their time and are released 10 before; one stalls for
    // 400, and the 149 that follow are as much behind the schedule.
    const Json session = reportOf(logOf({troubled()}))["sessions"][0];
    expectHas(R"json({
        "stages": {"decrypt": {"p50_ms": 2}, "codec": {"p99_ms": 20, "max_ms": 140},
            "message": {"p50_ms": 1}, "app": {"p50_ms": 67, "p90_ms": 67, "max_ms": 467},
            "lead": {"p50_ms": 10}},
        "counts": {"rendered_count": 296, "input_count": 300, "input_bytes": 1500000},
        "incidents": [{"cause": "decryption"},
            {"evidence":
            "140 ms at work on a frame (usually 20) with 1 frame waiting, 1 picture never shown"},
            {"evidence": "released 467 ms after it was ready (usually 67)", "start_ms": 6160,
                "stood_ms": 400},
            {"never_shown_count": 3, "shares": {"application": 1}}],
        "incident_count": 5,
        "standing": {"count": 1, "total_ms": 400, "longest_ms": 400, "longest_at_ms": 6160},
        "sync": {"outside_ms": 5960, "measured_ms": 12360, "worst_ms": 400, "last_ms": 400}
    })json",
              session);
    EXPECT_EQ(25, session["frame_rate"]["rows"].back()[1]);
}

TEST(Session, lastPictureStandsAsLongAsItsProcessLogs) {
    std::vector<LogMessage> messages = {{120'000, 4321, 1, "Zygote", "still there"}};
    // The application releases no picture any more, and stops nothing.
    for (const LogMessage& message : messagesOf(Playback())) {
        const bool isRender = message.text.find(" Render ") != std::string::npos;
        const bool isLast = message.timeMs > 112'000 && (isRender || message.tag == kLogger);
        if (!isLast) messages.push_back(message);
    }
    expectHas(R"({"verdict": {"word": "broke off"}, "incidents": [{"cause": "application"}],
                  "standing": {"longest_at_ms": 12040, "total_ms": 7960}})",
              reportOf(writeLog(messages))["sessions"][0]);
}

/** What neither the log's form nor its clock nor other codecs in it may change. */
Json numbersOf(const Json& session) {
    Json numbers;
    for (const char* key :
         {"codec_tag", "counts", "startup", "report", "stages", "drops", "incidents", "reported"}) {
        numbers[key] = session[key];
    }
    return numbers;
}

TEST(Session, neitherFormNorOtherCodecsChangeItsNumbers) {
    // Of the same kind in one process, the second in the middle of its film, by threads or without.
    const Playback first = troubled();
    Playback second = first;
    second.tid = first.tid + 1;
    second.startMs = first.startMs + 3'333;
    second.drops = {7};
    second.firstPtsUs = 600'000'000;
    const Json plain[] = {numbersOf(reportOf(logOf({first}))["sessions"][0]),
                          numbersOf(reportOf(logOf({second}))["sessions"][0])};
    // With all, without threads, times, whole times, tags.
    for (const LogFormat format : {LogFormat::THREADTIME, LogFormat::TIME, LogFormat::BRIEF,
                                   LogFormat::LIBLOG, LogFormat::RAW}) {
        SCOPED_TRACE(toString(format));
        const Json alone = reportOf(logOf({first}, format));
        EXPECT_EQ(1u, alone["sessions"].size());
        EXPECT_EQ(plain[0], numbersOf(alone["sessions"][0]));
        const Json both = reportOf(logOf({first, second}, format));
        ASSERT_EQ(2u, both["sessions"].size());
        EXPECT_EQ(1u, both["input"]["formats"].size());
        EXPECT_EQ(0, both["input"]["unknown_count"]);
        for (int session : {0, 1}) {
            Json expected = plain[session];
            Json together = numbersOf(both["sessions"][session]);
            if (format != LogFormat::THREADTIME) {
                expected.erase("incidents");
                together.erase("incidents");
            }
            EXPECT_EQ(expected, together);
        }
    }
    // Another codec in another process; the first thread's next configuration.
    Playback other = second;
    other.pid = 5000;
    other.tag = "SW.c2.video.vp9";
    other.format = "vp9";
    Playback again = first;
    again.startMs += 20'000;
    const Json sessions = reportOf(logOf({first, other, again}))["sessions"];
    ASSERT_EQ(3u, sessions.size());
    EXPECT_EQ("SW.c2.video.vp9", sessions[1]["codec_tag"]);
    EXPECT_EQ(299, sessions[1]["counts"]["rendered_count"]);
    EXPECT_EQ(plain[0], numbersOf(sessions[0]));
    EXPECT_EQ(plain[0], numbersOf(sessions[2]));
}

TEST(Session, jumpsOfTheClockChangeNoNumbers) {
    const Json plain = reportOf(logOf({troubled()}))["sessions"][0];
    for (const std::map<int64_t, int64_t>& jumps :
         {std::map<int64_t, int64_t>{{103'000, 3'600'000}},
          {{103'000, -7'200'000}, {106'000, 0}}}) {
        const Json report =
                reportOf(writeLog(messagesOf(troubled()), LogFormat::THREADTIME, jumps));
        EXPECT_EQ(jumps.size(), report["input"]["clock_jump_count"]);
        EXPECT_EQ(numbersOf(plain), numbersOf(report["sessions"][0]));
        EXPECT_EQ(plain["duration_ms"], report["sessions"][0]["duration_ms"]);
    }
}

TEST(Session, eachCaptureHasItsClockAndItsSessionsAndARotatedLogIsOne) {
    const std::string whole = logOf({troubled()});
    const size_t cut = whole.find('\n', whole.size() / 2) + 1;
    const std::string older = fileWith(whole.substr(0, cut), "rotated.1");
    const std::string newer = fileWith(whole.substr(cut), "rotated");
    // The same codec of the same process on another day, not configured anew.
    Playback later = troubled();
    later.startMs += 86'400'000 * 3;
    std::vector<LogMessage> messages = messagesOf(later);
    messages.erase(messages.begin(), messages.begin() + 10);
    const std::string other = fileWith(writeLog(messages), "other");
    const Json report = reportOfFiles({other, newer, older});
    ASSERT_EQ(2u, report["sessions"].size());
    EXPECT_EQ(numbersOf(reportOf(whole)["sessions"][0]), numbersOf(report["sessions"][1]));
    EXPECT_EQ(0, report["input"]["clock_jump_count"]);
}

TEST(Session, logMayBeginInTheMiddle) {
    std::vector<LogMessage> messages = messagesOf(troubled());
    messages.erase(messages.begin(), messages.begin() + 500);
    const Json report = reportOf(writeLog(messages));
    ASSERT_EQ(1u, report["sessions"].size());
    // Frame lines tell the format, the report at the end the tag.
    expectHas(R"({"started_before_log": true, "codec_tag": "HW.c2.video.avc",
                  "standing": {"count": 1}})",
              report["sessions"][0]);
}

TEST(Session, syncLinesTellOffsetsWhereFramesHaveNoLine) {
    const auto sync = [](int now, int behind, const char* first, const char* frames) {
        return base::StringPrintf(
                "AVSYNC_V:%d(%d)(0) b:0 rts:0(10) pid:4321%s min:-1(-1 )(10) max:40(40)(10) "
                "avg:40000(40000)(10) cnt:%s",
                now - behind, behind, first, frames);
    };
    const Json session =
            reportOf(threadtime({{kLogger, kBegin},
                                 {kAnalytics, sync(101'000, 700, " First", "1(0)")},
                                 {kAnalytics, sync(102'000, 760, "", "25(1000)")},
                                 {kAnalytics, sync(103'000, 730, "", "24(1000)")}}))["sessions"][0];
    // 60 ms behind in the second line: more than 45 for its second.
    expectHas(R"({"sync": {"line_count": 3, "outside_ms": 1000, "measured_ms": 2000,
                      "worst_ms": 60, "last_ms": 30},
                  "counts": {"rendered_count": 50}})",
              session);
    EXPECT_EQ(25, session["frame_rate"]["rows"][0][1]);
}

TEST(Session, dropsGoTogetherByTheLastRenderedFrameWhereRendersHaveNoLine) {
    const auto drop = [](int now, int ptsMs, int stepMs) {
        return base::StringPrintf("Drop:%d(0) TD:%d FARD:9(9) FAD:9(1) AL:67(%d) FL:20(21) 0/3",
                                  ptsMs * 1000, stepMs, now);
    };
    // The first two follow the frame of 960 ms, the third that of 1040 ms. Output at 100 933, 9 ms
    // after the last frame was shown: due at 100 924 + 40. Renders have no lines, so there may have
    // been more.
    const Json session =
            reportOf(threadtime({{kLogger, kBegin},
                                 {kAnalytics, drop(101'000, 1000, 40)},
                                 {kAnalytics, drop(102'000, 1040, 80)},
                                 {kAnalytics, drop(103'000, 1080, 40)}}))["sessions"][0];
    expectHas(R"({"drops": {"run_count": 2, "longest_run_frames": 2, "lengths": [
                      {"length_frames": 1, "run_count": 1}, {"length_frames": 2, "run_count": 1}]},
                  "verdict": {"word": "stuttered"}, "incident_count": 1, "incidents": [{"start_ms": 964}],
                  "counts": {"shown_count": null},
                  "at_least": ["incident_count", "counts.dropped_count"]})",
              session);
}

/** A session of 40 renders, 40 ms apart, with a gap before the 31st. */
Json gapped(int64_t gapMs, int64_t seekMs, bool byMediaTime = false,
            std::vector<LogMessage> messages = {}) {
    messages.push_back({100'000, 4321, 4330, kLogger, kBegin});
    for (int i = 0; i < 40; ++i) {
        const long now = 100'100 + i * 40 + (i >= 30 ? gapMs : 0) + (i == 7 ? 5 : 0);
        const long ptsMs = 40 * i + (i >= 30 ? seekMs : 0);
        const long render = byMediaTime ? ptsMs : now;
        messages.push_back({now, 4321, 4330, kAnalytics,
                            base::StringPrintf("avc Render R-S:%ld R:%ld(40) pts:%ld 0/3",
                                               render - now, render, ptsMs * 1000)});
    }
    return reportOf(writeLog(messages))["sessions"][0];
}

TEST(Session, pausesAreNoIncidentsAndLongSeeksAre) {
    // Frames go on from where they stopped: a second of nothing was a pause.
    for (const auto& [gapMs, seekMs, incidents] :
         {std::make_tuple(249, 0, 1), std::make_tuple(999, 0, 1), std::make_tuple(1000, 0, 0),
          std::make_tuple(20'000, 0, 0), std::make_tuple(249, 60'000, 0),
          std::make_tuple(250, 60'000, 1), std::make_tuple(1000, -800, 1)}) {
        EXPECT_EQ(incidents, gapped(gapMs, seekMs)["incident_count"]) << gapMs << " " << seekMs;
    }
    // Where the render time is the media time, frames are shown when released, without a lead.
    expectHas(R"({"frame_interval": {"p50_ms": 40, "max_ms": 340}, "standing": {"count": 1},
                  "stages": {"lead": {"max_ms": 0}}, "sync": {"worst_ms": 300, "last_ms": 300}})",
              gapped(300, 0, true));
    // What goes on elsewhere after a flush was sent there.
    const LogMessage flush = {101'270, 4321, 4330, kLogger,
                              "Flushing: 4321.HW.c2.video.avc.framerate = 25.000 fps"};
    EXPECT_EQ("flush", gapped(400, 0, false, {flush})["incidents"][0]["place"]);
    EXPECT_EQ("seek", gapped(400, 60'000, false, {flush})["incidents"][0]["place"]);
}

TEST(Session, everyLineIsCountedOnceHoweverDamaged) {
    const std::string whole = logOf({troubled()}).substr(0, 60'000);
    std::mt19937 random(7);
    for (int round = 0; round < 100; ++round) {
        std::string log = whole;
        for (int i = 0; i < 200; ++i) {
            const size_t at = random() % log.size();
            const std::string with[] = {std::string(1, static_cast<char>(random())), "",
                                        "9223372036854775807", log.substr(at / 2, random() % 200)};
            log.replace(at, random() % 40, with[random() % 4]);
        }
        const Json input = reportOf(log)["input"];
        // What is left are dividers and empty lines.
        uint64_t left = input["line_count"];
        for (const char* key : {"understood_count", "other_tag_count", "not_log_line_count",
                                "cut_off_count", "unknown_count"}) {
            left -= input[key].get<uint64_t>();
        }
        EXPECT_LT(left, 60u);
    }
}

}  // namespace
}  // namespace android::test
