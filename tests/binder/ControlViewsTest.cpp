// SPDX-License-Identifier: Apache-2.0
// What codecloggerctl and dumps make of the answers of codecs.
#include <limits>
#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tools/codeclogger/Views.h>
#include <tools/codecloggerctl/CodecProgress.h>

#include <nlohmann/json.hpp>

namespace android::codeclogger {

namespace {

using testing::HasSubstr;

CodecInfo videoCodec() {
    CodecInfo codec;
    codec.answer = Answer::GIVEN;
    codec.entry.handle = 12;
    codec.entry.id = 0x7f001234;
    codec.entry.pid = 345;
    codec.entry.packageName = "com.app";
    codec.entry.format = "hevc";
    codec.entry.isVideo = true;
    codec.entry.isActive = true;
    codec.status =
            "\tCodec Type: VIDEO\n\tInput Bitrate: 4200\n"
            "\tStream Framerate (fps): 59.940\n\tFramesDropped: 7\n";
    codec.width = 1920;
    codec.height = 1080;
    codec.msSinceLastFrame = 16;
    codec.frames = 500;
    readStatusText(&codec);
    return codec;
}

CodecInfo audioCodec(Answer answer) {
    CodecInfo codec;
    codec.answer = answer;
    codec.entry.handle = 3;
    codec.entry.id = 0x7f;
    codec.entry.pid = 9;
    codec.entry.packageName = "com.radio";
    codec.entry.format = "mp4a";
    return codec;
}

}  // namespace

TEST(ControlViews, list_isATable) {
    EXPECT_EQ(listText({audioCodec(Answer::SILENT), videoCodec()}),
              "  #  PID  PACKAGE    KIND   FORMAT  RESOLUTION  LAST FRAME  ID\n"
              "  3    9  com.radio  audio  mp4a    -           no answer   0x7f\n"
              "*12  345  com.app    video  hevc    1920x1080   16 ms       0x7f001234\n");
    EXPECT_EQ(listText({}), "No codec is registered.\n");
}

TEST(ControlViews, lastFrame_saysWhyItIsUnknown) {
    const struct {
        Answer answer;
        int64_t answered;  // to who asked when the clock stood at 100000
        int64_t frames;
        const char* text;
    } kCases[] = {{Answer::GIVEN, -3, 1, "0 ms"},     {Answer::GIVEN, 9999, 1, "9999 ms"},
                  {Answer::GIVEN, 10000, 1, "10 s"},  {Answer::GIVEN, 100001, 0, "none yet"},
                  {Answer::GIVEN, 100001, 5, "-"},    {Answer::ENDED, 0, 0, "ended"},
                  {Answer::DIED, 0, 0, "died"},       {Answer::STOPPED, 0, 0, "stopped"},
                  {Answer::SILENT, 0, 0, "no answer"}};
    for (const auto& [answer, answered, frames, text] : kCases) {
        CodecInfo codec;
        codec.entry.isVideo = true;
        codec.answer = answer;
        codec.frames = frames;
        codec.msSinceLastFrame = frameAgeMs(answered, 100000);
        EXPECT_EQ(codec.lastFrame(), text);
    }
    EXPECT_EQ(audioCodec(Answer::GIVEN).lastFrame(), "-");
}

TEST(ControlViews, json_holdsWhatIsKnownAndAlwaysParses) {
    CodecInfo odd = videoCodec();
    odd.entry.packageName = "a\xff\xe2\x82\"\n";
    ServiceState state{};
    const std::string text =
            stateJson(state, {codecJson(odd), codecJson(audioCodec(Answer::STOPPED))}).text(false);
    const auto parsed = nlohmann::json::parse(text, nullptr, false);
    ASSERT_FALSE(parsed.is_discarded()) << text;
    // As people are used to have it laid out.
    EXPECT_EQ(nlohmann::ordered_json::parse(text).dump(2) + "\n", text);
    const nlohmann::json& video = parsed["codecs"][0];
    EXPECT_EQ(video["package"], "a\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd\"\n");
    EXPECT_EQ(video["id"], "0x7f001234");
    EXPECT_EQ(video["frames_dropped"], 7);
    EXPECT_EQ(video["framerate"], 59.94);
    EXPECT_EQ(video["last_frame_age_ms"], 16);
    EXPECT_FALSE(video.contains("first_frame_ms"));
    EXPECT_EQ(parsed["codecs"][1]["answer"], "stopped");
    EXPECT_FALSE(parsed["codecs"][1].contains("bitrate_kbps"));
}

TEST(ControlViews, openMetrics_leavesOutWhatIsUnknown) {
    ServiceState state{};
    state.clients.resize(2);
    CodecInfo odd = videoCodec();
    odd.entry.packageName = "a\"b\\c\n";
    const std::string text = openMetricsText(state, {odd, audioCodec(Answer::DIED)});
    constexpr char kVideo[] =
            "{handle=\"12\",pid=\"345\",package=\"a\\\"b\\\\c\\n\",kind=\"video\",format=\"hevc\"}";
    constexpr char kAudio[] =
            "{handle=\"3\",pid=\"9\",package=\"com.radio\",kind=\"audio\",format=\"mp4a\"}";
    EXPECT_THAT(text, HasSubstr("# TYPE codec_frames_dropped counter\n"
                                "# HELP codec_frames_dropped Frames dropped in the session.\n"
                                "codec_frames_dropped_total" +
                                std::string(kVideo) + " 7\n# TYPE"));
    EXPECT_THAT(text, HasSubstr("# UNIT codec_last_frame_age_seconds seconds\n"));
    EXPECT_THAT(text, HasSubstr("codec_last_frame_age_seconds" + std::string(kVideo) + " 0.016\n"));
    EXPECT_THAT(text,
                HasSubstr("codec_up" + std::string(kVideo) + " 1\ncodec_up" + kAudio + " 0\n"));
    EXPECT_THAT(text, HasSubstr("codec_logger_codecs 2\n"));
    EXPECT_THAT(text, testing::EndsWith("# EOF\n"));
}

TEST(ControlViews, progress_goesOnAfterACounterFallsBack) {
    codecloggerctl::CodecProgress progress;
    CodecInfo codec = videoCodec();
    const struct {
        int64_t frames;
        Answer answer;
        int64_t total;
        int64_t recent;
    } kSteps[] = {{500, Answer::GIVEN, 500, 0}, {560, Answer::GIVEN, 560, 60},
                  {0, Answer::SILENT, 560, 0},  {580, Answer::GIVEN, 580, 20},
                  {15, Answer::GIVEN, 595, 15},  // a flush
                  {15, Answer::GIVEN, 595, 0}};
    for (const auto& [frames, answer, total, recent] : kSteps) {
        codec.frames = frames;
        codec.answer = answer;
        progress.update(codec);
        EXPECT_EQ(progress.frames().total, total);
        EXPECT_EQ(progress.frames().recent, recent);
    }
}

}  // namespace android::codeclogger
