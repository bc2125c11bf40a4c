// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <random>

#include "ReportSupport.h"
#include "SyntheticLog.h"

namespace android::test {
namespace {

using codecreport::LogFormat;

constexpr char kLogger[] = "MediaCodecLogger";
constexpr char kAnalytics[] = "ZMediaAnalyticV";
constexpr char kBegin[] = "[BRISK] HW.c2.video.avc P2 + 100000";

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
            "message": {"p50_ms": 1}, "app": {"p50_ms": 67, "max_ms": 467},
            "lead": {"p50_ms": 10}},
        "counts": {"rendered_count": 296, "input_count": 300, "input_bytes": 1500000},
        "incidents": [
            {"evidence":
            "140 ms at work on a frame (usually 20) with 1 frame waiting, 1 picture never shown"},
            {"evidence": "released 467 ms after it was ready (usually 67)", "start_ms": 6160,
                "stood_ms": 400},
            {"never_shown_count": 3, "shares": {"application": 1}}, {}],
        "standing": {"count": 1, "total_ms": 400, "longest_ms": 400, "longest_at_ms": 6160},
        "sync": {"outside_ms": 5960, "measured_ms": 12360, "worst_ms": 400, "last_ms": 400}
    })json",
              session);
}

/** What neither the log's form nor its clock nor other codecs in it may change. */
Json numbersOf(const Json& session) {
    Json numbers;
    for (const char* key :
         {"codec_tag", "counts", "startup", "report", "stages", "drops", "incidents"}) {
        numbers[key] = session[key];
    }
    return numbers;
}

TEST(Session, neitherFormNorClockChangesItsNumbers) {
    const Json plain = reportOf(logOf({troubled()}))["sessions"][0];
    for (int i = 0; i < static_cast<int>(LogFormat::COUNT); ++i) {
        const LogFormat format = static_cast<LogFormat>(i);
        const Json report = reportOf(logOf({troubled()}, format));
        EXPECT_EQ(1u, report["sessions"].size()) << toString(format);
        EXPECT_EQ(1u, report["input"]["formats"].size()) << toString(format);
        EXPECT_EQ(0, report["input"]["unknown_count"]) << toString(format);
        EXPECT_EQ(numbersOf(plain), numbersOf(report["sessions"][0])) << toString(format);
    }
    for (const std::map<int64_t, int64_t>& jumps :
         {std::map<int64_t, int64_t>{{103'000, 3'600'000}},
          {{103'000, -7'200'000}, {106'000, 0}}}) {
        const Json report =
                reportOf(writeLog(messagesOf(troubled()), LogFormat::THREADTIME, jumps));
        EXPECT_EQ(jumps.size(), report["input"]["clock_jump_count"]);
        const Json& session = report["sessions"][0];
        EXPECT_EQ(numbersOf(plain), numbersOf(session));
        EXPECT_EQ(plain["duration_ms"], session["duration_ms"]);
        EXPECT_EQ(plain["sync"]["worst_ms"], session["sync"]["worst_ms"]);
    }
}

TEST(Session, codecsInOneLogStayApart) {
    // Of the same kind in one process, the second in the middle of its film, by threads or without.
    Playback first = troubled();
    Playback second = troubled();
    second.tid = first.tid + 1;
    second.startMs = first.startMs + 3'333;
    second.drops = {7};
    second.firstPtsUs = 600'000'000;
    for (int i = 0; i < static_cast<int>(LogFormat::COUNT); ++i) {
        const LogFormat format = static_cast<LogFormat>(i);
        const Json report = reportOf(logOf({first, second}, format));
        ASSERT_EQ(2u, report["sessions"].size()) << toString(format);
        int next = 0;
        for (const Playback& playback : {first, second}) {
            Json alone = numbersOf(reportOf(logOf({playback}, format))["sessions"][0]);
            Json together = numbersOf(report["sessions"][next++]);
            if (format != LogFormat::THREADTIME) {
                alone.erase("incidents");
                together.erase("incidents");
            }
            EXPECT_EQ(alone, together) << toString(format);
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
    EXPECT_EQ(numbersOf(sessions[0]), numbersOf(sessions[2]));
    EXPECT_TRUE(sessions[0]["reported"].get<bool>());
}

TEST(Session, eachCaptureHasItsClockAndItsSessions) {
    // The same codec of the same process on another day, not configured anew.
    const std::string first = fileWith(logOf({troubled()}), "first");
    Playback later = troubled();
    later.startMs += 86'400'000 * 3;
    std::vector<LogMessage> messages = messagesOf(later);
    messages.erase(messages.begin(), messages.begin() + 10);
    const Json alone = reportOfFiles({first})["sessions"][0];
    const Json both = reportOfFiles({fileWith(writeLog(messages), "second"), first});
    ASSERT_EQ(2u, both["sessions"].size());
    for (const char* key : {"duration_ms", "counts", "stages", "start_time"}) {
        EXPECT_EQ(alone[key], both["sessions"][1][key]) << key;
    }
    EXPECT_EQ(0, both["input"]["clock_jump_count"]);
}

TEST(Session, rotatedLogIsOne) {
    const std::string whole = logOf({troubled()});
    const size_t cut = whole.find('\n', whole.size() / 2) + 1;
    fileWith(whole.substr(0, cut), "rotated.1");
    const std::string path = fileWith(whole.substr(cut), "rotated");
    EXPECT_EQ(reportOf(whole)["sessions"], reportOfFiles({path, path + ".1"})["sessions"]);
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
        return "AVSYNC_V:" + std::to_string(now - behind) + "(" + std::to_string(behind) +
               ")(0) b:0 rts:0(10) pid:4321" + first + " min:-1(-1 )(10) max:40(40)(10) " +
               "avg:40000(40000)(10) cnt:" + frames;
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
        return "Drop:" + std::to_string(ptsMs * 1000) + "(0) TD:" + std::to_string(stepMs) +
               " FARD:9(9) FAD:9(1) AL:67(" + std::to_string(now) + ") FL:20(21) 0/3";
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
                  "verdict": {"word": "stuttered"}, "incidents": [{"start_ms": 964}],
                  "counts": {"shown_count": null},
                  "at_least": ["incident_count", "counts.dropped_count"]})",
              session);
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
                  "stages": {"lead": {"max_ms": 0}}})",
              gapped(300, 0, true));
}

TEST(Session, everyLineIsCountedOnceHoweverDamaged) {
    const std::string whole = logOf({troubled()}).substr(0, 60'000);
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
