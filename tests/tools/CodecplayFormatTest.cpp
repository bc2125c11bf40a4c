// SPDX-License-Identifier: Apache-2.0
// What codecplay makes of the formats it meets.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CodecplayTest.h"

namespace android::test {

namespace {

constexpr char kAvc[] = "-c:v libx264 -preset ultrafast -bf 2 -g 15 ";
constexpr char kHevc[] = "-c:v libx265 -preset ultrafast -x265-params log-level=none:bframes=2 ";
constexpr char kMpeg2[] = "-c:v mpeg2video -bf 2 -g 15 ";
constexpr char kMpeg4[] = "-c:v mpeg4 -bf 2 -g 15 ";
constexpr char kAv1[] = "-c:v libaom-av1 -cpu-used 8 -row-mt 0 -lag-in-frames 0 -strict -2 ";
constexpr char kVp8[] = "-c:v libvpx -deadline realtime -cpu-used 8 ";
constexpr char kVp9[] = "-c:v libvpx-vp9 -deadline realtime -cpu-used 8 ";

/** A clip and the ends of the codec tags of its streams' sessions, "" for a stream it has not. */
struct FormatCase {
    const char* name;
    const char* extension;
    const char* picture;  ///< ffmpeg's arguments
    const char* video;
    const char* sound;  ///< ffmpeg's name of the codec, and further arguments
    const char* audio;
};

constexpr FormatCase kFormats[] = {
        {"AvcAac", "mp4", kAvc, "avc", "aac", "mp4a"},
        {"HevcMp3", "mp4", kHevc, "hevc", "libmp3lame -tag:v hvc1", "mpeg"},
        {"Av1Flac", "mp4", kAv1, "av01", "flac", "flac"},
        {"Mpeg2Ac3", "mkv", kMpeg2, "mpeg2", "ac3", "ac3"},
        {"Vp8Vorbis", "webm", kVp8, "vp8", "libvorbis", "vorbis"},
        {"Vp9Opus", "webm", kVp9, "vp9", "libopus", "opus"},
        {"HevcAc3", "ts", kHevc, "hevc", "ac3", "ac3"},
        {"Mpeg2Mp3", "ts", kMpeg2, "mpeg2", "libmp3lame", "mpeg"},
        {"Mpeg2", "m2v", kMpeg2, "mpeg2", "", ""},
        {"Mpeg4", "m4v", "-c:v mpeg4 -bf 2 -g 15 -f m4v", "mp4v", "", ""},
        {"Vp8", "ivf", kVp8, "vp8", "", ""},
        {"Av1", "obu", kAv1, "av01", "", ""},
        {"Aac", "aac", "", "", "aac", "mp4a"},
        {"Mp3", "mp3", "", "", "libmp3lame", "mpeg"},
        {"Ac3", "ac3", "", "", "ac3", "ac3"},
        {"Flac", "flac", "", "", "flac", "flac"},
        {"Opus", "opus", "", "", "libopus", "opus"},
        {"Vorbis", "ogg", "", "", "libvorbis", "vorbis"},
        {"Pcm", "wav", "", "", "pcm_s16le", "raw"},
        {"Wma", "wma", "", "", "wmav2", "wmav2"},
        {"G711", "wav", "", "", "pcm_alaw -ar 8000", "g711"},
        // Packets without presentation times: those of pictures that others follow out of order.
        {"Mpeg4WithoutTimes", "avi", kMpeg4, "mp4v", "", ""},
        // Sound from -21 ms and pictures from 0.
        {"NegativeTimes", "mkv", kAvc, "avc",
         "aac -af asetpts=PTS-0.5/TB -avoid_negative_ts disabled", "mp4a"},
};

std::vector<uint64_t> playedFrames(const Played& played) {
    std::vector<uint64_t> frames;
    for (const Json& session : played.json["files"][0]["sessions"]) {
        frames.push_back(session["frames"].get<uint64_t>());
    }
    return frames;
}

class CodecplayFormatTest : public testing::TestWithParam<FormatCase> {};

}  // namespace

TEST_P(CodecplayFormatTest, playsEveryFrameOnBothRoads) {
    const FormatCase& format = GetParam();
    const bool hasVideo = *format.video != 0;
    const bool hasAudio = *format.audio != 0;
    const std::string inputs = (hasVideo ? picture(1.2) : "") + (hasAudio ? tone(1.2) : "");
    const std::string sound = hasAudio ? std::string("-c:a ") + format.sound : "";
    const std::string file = clip(std::string(format.name) + "." + format.extension,
                                  inputs + format.picture + sound);
    const std::vector<uint64_t> expected = probedFrames(file);

    for (const bool omx : {false, true}) {
        SCOPED_TRACE(omx ? "OMX" : "Codec2");
        const Played played =
                play(analysis("0x7") +
                     std::vector<std::string>{omx ? "--omx" : "--codec2", "--speed", "0", file});
        EXPECT_EQ(played.process.exitCode, 0) << played.process.err;
        EXPECT_EQ(playedFrames(played), expected);
        const std::string road = omx ? "omx" : "c2";
        for (const std::string& tag : {hasVideo ? "HW." + road + ".video." + format.video : "",
                                       hasAudio ? "VND." + road + ".audio." + format.audio : ""}) {
            if (tag.empty()) continue;
            EXPECT_NE(findLine(played.log, "[BRISK] " + tag + " P2 + "), "") << tag;
        }
        uint64_t rendered = 0;
        for (const Json& session : played.json["files"][0]["sessions"]) {
            if (session["kind"] == "audio") continue;
            EXPECT_EQ(accountedFrames(session), session["packets"]) << session;
            rendered += session["rendered"].get<uint64_t>();
        }
        // The tracker knew every frame that it was told of.
        EXPECT_EQ(countLines(played.log, " Render R-S:"), rendered);
        // Pictures were followed on the road of their component.
        const bool isFollowed = findLine(played.log, omx ? " OMX FBD FL:" : " C2 OWD FL:") != "";
        EXPECT_EQ(isFollowed, hasVideo);
        for (const char* odd : {"ot found", "queue full", "unexpectedly", "Possible seek"}) {
            EXPECT_EQ(findLine(played.log, odd), "");
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, CodecplayFormatTest, testing::ValuesIn(kFormats),
                         [](const auto& info) {
                             return std::string(info.param.name) + "_" + info.param.extension;
                         });

TEST(CodecplayFormatPacketTest, framesOfOnePacketHaveTimesOfTheirOwn) {
    // Packets of three AC-3 frames, 256 bytes and 32 ms each, out of those of one.
    const auto joinFrames = [](std::string* bytes) {
        const size_t packetBytes = bytes->find("desc") + 12 + 16;
        bytes->replace(packetBytes, 8, std::string("\0\0\3\0\0\0\x12\0", 8));
        bytes->replace(bytes->find("pakt"), 4, "free");
    };
    const std::string file = changedClip(clip("single.caf", tone(3) + "-c:a ac3 -b:a 64k"),
                                         "joined.caf", joinFrames);
    for (const char* speed : {"0", "8"}) {
        const Played played =
                play(analysis("0x20000") + std::vector<std::string>{"--speed", speed, file});
        EXPECT_EQ(played.session(0)["packets"], 31);
        long expectedUs = 0;
        for (const std::string& line : played.log) {
            if (line.find(" f:0") == std::string::npos) continue;
            const long timeUs = numberBehind({line}, " C2 OWD mediaTs:");
            EXPECT_EQ(timeUs, expectedUs);
            expectedUs += 32'000;
        }
        EXPECT_EQ(expectedUs, 93 * 32'000);
    }
}

// Two passes, because only these make VP8 hide pictures in packets of their own.
TEST(CodecplayFormatHiddenTest, hiddenFramesLeaveTheTrackerAtOnce) {
    const std::string pass = picture(3) +
                             "-c:v libvpx -auto-alt-ref 1 -lag-in-frames 16 -b:v 100k -g 60 "
                             "-passlogfile " CODECPLAY_CLIPS "/hidden -pass ";
    const std::string file =
            clip("hidden.webm",
                 pass + "1 -f null /dev/null && ffmpeg -v error -nostdin -y " + pass + "2");
    for (const char* road : {"--codec2", "--omx"}) {
        const Played played =
                play(analysis("0x1") + std::vector<std::string>{road, "--speed", "0", file});
        EXPECT_GT(played.video()["no_picture"], 0);
        EXPECT_EQ(accountedFrames(played.video()), played.video()["packets"]);
        for (const std::string& line : played.log) EXPECT_LE(numberBehind({line}, " tsS:"), 1);
    }
}

namespace {

/** A picture and what the library must say of its format. */
struct Announcement {
    const char* name;
    const char* arguments;
    const char* line;
};

constexpr Announcement kAnnouncements[] = {
        {"sdr.mp4",
         "-s 320x180 -c:v libx264 -preset ultrafast -pix_fmt yuv420p -colorspace bt709 "
         "-color_primaries bt709 -color_trc bt709",
         "width = 320 height = 180, hdrType = 0, scanType = 0, bitDepth = 8, colorStandard = 1"},
        {"hdr10.mp4",
         "-c:v libx265 -preset ultrafast -pix_fmt yuv420p10le -x265-params log-level=none:"
         "colorprim=bt2020:transfer=smpte2084:colormatrix=bt2020nc",
         "width = 64 height = 48, hdrType = 1, scanType = 0, bitDepth = 10, colorStandard = 6"},
        {"hlg.mp4",
         "-c:v libx265 -preset ultrafast -pix_fmt yuv420p10le -x265-params log-level=none:"
         "colorprim=bt2020:transfer=arib-std-b67:colormatrix=bt2020nc",
         "width = 64 height = 48, hdrType = 4, scanType = 0, bitDepth = 10, colorStandard = 6"},
        {"interlaced.m2v", "-s 720x480 -c:v mpeg2video -flags +ilme+ildct -top 1",
         "width = 720 height = 480, hdrType = 0, scanType = 1, bitDepth = 8, colorStandard = 0"},
        // 1080 is no multiple of the codec's 16 lines: the crop has to be taken off 1088.
        {"cropped.mp4", "-s 1920x1080 -c:v libx264 -preset ultrafast -pix_fmt yuv420p",
         "width = 1920 height = 1080, hdrType = 0, scanType = 0, bitDepth = 8, colorStandard = 0"},
        // Primaries of film (5) with the matrix of BT.709 (1) are 64 + 5 + 7 * 1 = 76, which the
        // platform narrows to film (9).
        {"odd.mp4", "-c:v libx264 -preset ultrafast -color_primaries film -colorspace bt709",
         "convert extend color changed from [76] to standard [9] !"},
};

}  // namespace

TEST(CodecplayFormatMessageTest, formatChangeSaysWhatTheStreamSays) {
    for (const Announcement& row : kAnnouncements) {
        SCOPED_TRACE(row.name);
        const Played played = play({"--speed", "0", clip(row.name, picture(0.3) + row.arguments)});
        EXPECT_EQ(countLines(played.log, "updateFormatChanged width"), 1U);
        EXPECT_NE(findLine(played.log, "updateFormatChanged " + std::string(row.line)), "")
                << findLine(played.log, "updateFormatChanged");
    }
}

TEST(CodecplayFormatMessageTest, mediatekComponentReportsWhatTheLibrarySubscribedTo) {
    const Played played = play({"--component", "c2.mtk", "--speed", "0", ordinaryClip()});
    EXPECT_EQ(
            missingInOrder(played.log, {"D/MediaCodecLogger: Subscribe MTK C2 hdr-type, scan-type, "
                                        "color-depth parameters",
                                        "hdrType = 0, scanType = 0, bitDepth = 8"}),
            "");
    EXPECT_EQ(played.video()["component"], "c2.mtk.avc.decoder");
}

TEST(CodecplayFormatMessageTest, demoClipChangesItsResolutionTwice) {
    const std::string file = scratchFile("demo.ts");
    ASSERT_EQ(runProcess({CODECPLAY_DEMO_CLIP, file}).exitCode, 0);
    const Played played = play({"--speed", "0", file});

    EXPECT_EQ(played.process.exitCode, 0) << played.process.err;
    EXPECT_GE(played.json["files"][0]["duration_us"], 15'000'000);
    EXPECT_EQ(playedFrames(played), probedFrames(file));
    std::vector<int> widths;
    for (const Json& format : played.video()["formats"]) widths.push_back(format["width"]);
    EXPECT_THAT(widths, testing::ElementsAre(1280, 1920, 1280));
    // 6 s and 12 s of pictures at 30 fps; the last one's duration does not count.
    EXPECT_EQ(numberBehind(played.log, "videoResolution.FHD = "), 6000);
    EXPECT_EQ(numberBehind(played.log, "videoResolution.HD = "), 11966);
}

}  // namespace android::test
