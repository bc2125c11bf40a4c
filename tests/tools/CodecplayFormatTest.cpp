// SPDX-License-Identifier: Apache-2.0
// What codecplay makes of the formats it meets.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CodecplayTest.h"

namespace android::test {

using namespace testing;

namespace {

constexpr char kAvc[] = "-c:v libx264 -preset ultrafast -bf 2 -g 15 ";
constexpr char kHevc[] = "-c:v libx265 -preset ultrafast -x265-params log-level=none:bframes=2 ";
constexpr char kMpeg2[] = "-c:v mpeg2video -bf 2 -g 15 ";
constexpr char kAv1[] = "-c:v libaom-av1 -cpu-used 8 -row-mt 0 -lag-in-frames 0 -strict -2 ";
constexpr char kVp8[] = "-c:v libvpx -deadline realtime -cpu-used 8 ";
constexpr char kVp9[] = "-c:v libvpx-vp9 -deadline realtime -cpu-used 8 ";
constexpr char kEarlyFlac[] = "-c:a flac -af asetpts=PTS-0.5/TB -avoid_negative_ts disabled";

/** A clip, and what its streams' sessions are told that they are. */
struct FormatCase {
    const char* name;
    const char* extension;
    std::string picture;  ///< ffmpeg's arguments
    std::string sound;
    std::vector<std::string> mimes;
};

const FormatCase kFormats[] = {
        {"AvcAac", "mp4", kAvc, "-c:a aac", {"video/avc", "audio/mp4a-latm"}},
        {"HevcMp3", "mp4", kHevc, "-c:a libmp3lame -tag:v hvc1", {"video/hevc", "audio/mpeg"}},
        {"Av1Flac", "mp4", kAv1, "-c:a flac", {"video/av01", "audio/flac"}},
        {"Mpeg2Ac3", "mkv", kMpeg2, "-c:a ac3", {"video/mpeg2", "audio/ac3"}},
        {"Vp8Vorbis", "webm", kVp8, "-c:a libvorbis", {"video/x-vnd.on2.vp8", "audio/vorbis"}},
        {"Vp9Opus", "webm", kVp9, "-c:a libopus", {"video/x-vnd.on2.vp9", "audio/opus"}},
        {"Mpeg2", "m2v", kMpeg2, "", {"video/mpeg2"}},
        {"Mpeg4", "m4v", "-c:v mpeg4 -bf 2 -g 15 -f m4v", "", {"video/mp4v-es"}},
        {"Av1", "obu", kAv1, "", {"video/av01"}},
        {"Aac", "aac", "-vn ", "-c:a aac", {"audio/mp4a-latm"}},
        {"Opus", "ogg", "-vn ", "-c:a libopus", {"audio/opus"}},
        {"Pcm", "wav", "-vn ", "-c:a pcm_s16le", {"audio/raw"}},
        {"Wma", "wma", "-vn ", "-c:a wmav2", {"audio/wmav2"}},
        {"G711", "wav", "-vn ", "-c:a pcm_alaw -ar 8000", {"audio/g711-alaw"}},
        // Packets without presentation times: those of pictures that others follow out of order.
        {"Mpeg4WithoutTimes", "avi", "-c:v mpeg4 -bf 2 -g 15 ", "-an", {"video/mp4v-es"}},
        // Sound from -500 ms and pictures from 0.
        {"NegativeTimes", "mkv", kAvc, kEarlyFlac, {"video/avc", "audio/flac"}},
};

class CodecplayFormatTest : public TestWithParam<FormatCase> {};

}  // namespace

TEST_P(CodecplayFormatTest, playsEveryFrameOnBothRoads) {
    const FormatCase& format = GetParam();
    const std::string file = clip(std::string(format.name) + "." + format.extension,
                                  picture(1.2) + tone(1.2) + format.picture + format.sound);
    const std::vector<uint64_t> expected = probedFrames(file);
    for (const bool omx : {false, true}) {
        SCOPED_TRACE(omx ? "OMX" : "Codec2");
        const Played played =
                play(analysis("0x7") + (omx ? "--omx" : "--codec2") + " --speed 0 " + file);
        EXPECT_EQ(played.process.exitCode, 0) << played.process.err;
        size_t rendered = 0;
        std::vector<uint64_t> frames;
        std::vector<std::string> mimes;
        for (const Json& session : played.sessions()) {
            frames.push_back(session["frames"]);
            mimes.push_back(session["mime"]);
            if (session["kind"] == "video") rendered += session["rendered"].get<size_t>();
        }
        EXPECT_EQ(frames, expected);
        EXPECT_EQ(mimes, format.mimes);
        // The tracker knew every picture, and followed it on the road of its component.
        EXPECT_EQ(played.count(" Render R-S:"), rendered);
        EXPECT_EQ(played.count(omx ? " OMX FBD FL:" : " C2 OWD FL:") > 0, rendered > 0);
        EXPECT_THAT(played.log,
                    Not(Contains(ContainsRegex("ot found|queue full|unexpectedly|Possible seek"))));
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, CodecplayFormatTest, ValuesIn(kFormats), [](const auto& info) {
    return std::string(info.param.name) + "_" + info.param.extension;
});

TEST(CodecplayFormatPacketTest, framesOfOnePacketHaveTimesOfTheirOwn) {
    // Packets of three AC-3 frames, 256 bytes and 32 ms each, out of those of one.
    const std::string file =
            changedClip(clip("single.caf", tone(3) + "-c:a ac3 -b:a 64k"), "joined.caf",
                        R"(sed -e 's/\(desc.\{24\}\).\{8\}/\1\x00\x00\x03\x00\x00\x00\x12\x00/')"
                        " -e s/pakt/free/ $0");
    const Played played = play(analysis("0x20000") + "--speed 0 " + file);
    EXPECT_EQ(played.sessions()[0]["packets"], 31);
    long expectedUs = 0;
    for (const std::string& line : played.lines(" f:0")) {
        EXPECT_EQ(numberBehind(line, " C2 OWD mediaTs:"), expectedUs);
        expectedUs += 32'000;
    }
    EXPECT_EQ(expectedUs, 93 * 32'000);
}

// Two passes, because only these make VP8 hide pictures in packets of their own.
TEST(CodecplayFormatPacketTest, hiddenFramesLeaveTheTrackerAtOnce) {
    const std::string pass = picture(3) +
                             "-c:v libvpx -auto-alt-ref 1 -lag-in-frames 16 -b:v 100k -g 60 "
                             "-passlogfile " CODECPLAY_CLIPS "/hidden -pass ";
    const std::string file =
            clip("hidden.webm",
                 pass + "1 -f null /dev/null && ffmpeg -v error -nostdin -y " + pass + "2");
    for (const char* road : {"--codec2", "--omx"}) {
        const Played played = play(analysis("0x1") + road + " --speed 0 " + file);
        EXPECT_GT(played.video()["no_picture"], 0);
        for (const std::string& line : played.log) EXPECT_LE(numberBehind(line, " tsS:"), 1);
    }
}

TEST(CodecplayFormatMessageTest, formatChangeSaysWhatTheStreamSays) {
    const std::string hdr =
            "-c:v libx265 -preset ultrafast -pix_fmt yuv420p10le -x265-params "
            "log-level=none:colorprim=bt2020:colormatrix=bt2020nc:transfer=";
    const std::string avc = "-c:v libx264 -preset ultrafast -pix_fmt yuv420p ";
    // A picture and what the library must say of its format.
    const std::vector<std::vector<std::string>> announcements = {
            {"hdr10.mp4", hdr + "smpte2084",
             "width = 64 height = 48, hdrType = 1, scanType = 0, bitDepth = 10, colorStandard = 6"},
            {"hlg.mp4", hdr + "arib-std-b67", "hdrType = 4, scanType = 0, bitDepth = 10"},
            {"interlaced.m2v", "-s 720x480 -c:v mpeg2video -flags +ilme+ildct -top 1",
             "height = 480, hdrType = 0, scanType = 1, bitDepth = 8, colorStandard = 0"},
            // 1080 is no multiple of the codec's 16 lines: the crop has to be taken off 1088.
            {"cropped.mp4",
             avc + "-s 1920x1080 -colorspace bt709 -color_primaries bt709 -color_trc bt709",
             "width = 1920 height = 1080, hdrType = 0, scanType = 0, bitDepth = 8, "},
            // Primaries of film (5) with the matrix of BT.709 (1) are 64 + 5 + 7 * 1 = 76, which
            // the platform narrows to film (9).
            {"odd.mp4", avc + "-color_primaries film -colorspace bt709",
             "convert extend color changed from [76] to standard [9] !"}};
    for (const auto& row : announcements) {
        // The latter reports what the library subscribed to.
        for (const char* component : {"c2.ffmpeg ", "c2.mtk "}) {
            const Played played = play(std::string("--speed 0 --component ") + component +
                                       clip(row[0], picture(0.3) + row[1]));
            EXPECT_EQ(played.count("updateFormatChanged width"), 1U) << row[0];
            EXPECT_NE(played.line(row[2]), "") << row[0] << played.line("updateFormatChanged");
        }
    }
}

TEST(CodecplayFormatMessageTest, demoClipChangesItsResolutionTwice) {
    const std::string file = scratchFile("demo.ts");
    ASSERT_EQ(runProcess({CODECPLAY_DEMO_CLIP, file, "2"}).exitCode, 0);
    const Played played = play("--speed 0 " + file);
    EXPECT_GE(played.json["files"][0]["duration_us"], 6'000'000);
    std::vector<int> widths;
    for (const Json& format : played.video()["formats"]) widths.push_back(format["width"]);
    EXPECT_THAT(widths, ElementsAre(1280, 1920, 1280));
    // 2 s and 4 s of pictures at 30 fps; the last one's duration does not count.
    EXPECT_NE(played.line("videoResolution.FHD = 2000"), "");
    EXPECT_NE(played.line("videoResolution.HD = 3966"), "");
}

}  // namespace android::test
