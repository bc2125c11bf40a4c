// SPDX-License-Identifier: Apache-2.0
// What codecplay makes of the formats it meets.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CodecplayTest.h"

namespace android::test {

namespace {

constexpr char kAvc[] = "-c:v libx264 -preset ultrafast -bf 2 -g 15";
constexpr char kHevc[] = "-c:v libx265 -preset ultrafast -x265-params log-level=none:bframes=2";
constexpr char kMpeg2[] = "-c:v mpeg2video -bf 2 -g 15";
constexpr char kMpeg4[] = "-c:v mpeg4 -bf 2 -g 15";
constexpr char kAv1[] = "-c:v libaom-av1 -cpu-used 8 -row-mt 0 -lag-in-frames 0 -strict -2";
constexpr char kVp8[] = "-c:v libvpx -deadline realtime -cpu-used 8";
constexpr char kVp9[] = "-c:v libvpx-vp9 -deadline realtime -cpu-used 8";

std::string joined(std::initializer_list<const char*> parts) {
    std::string text;
    for (const char* part : parts) text += std::string(part) + " ";
    return text;
}

/** A clip and the codec tags that its streams' sessions bear, "" for a stream it has not. */
struct FormatCase {
    std::string name;
    std::string file;
    std::string arguments;
    std::string video;
    std::string audio;
};

const FormatCase kFormats[] = {
        {"AvcAacMp4", "f.mp4", joined({kAvc, "-c:a aac"}), "HW.c2.video.avc", "VND.c2.audio.mp4a"},
        {"HevcMp3Mp4", "f.mp4", joined({kHevc, "-tag:v hvc1 -c:a libmp3lame"}), "HW.c2.video.hevc",
         "VND.c2.audio.mpeg"},
        {"Av1FlacMp4", "f.mp4", joined({kAv1, "-c:a flac -strict -2"}), "HW.c2.video.av01",
         "VND.c2.audio.flac"},
        {"Mpeg4Mp3Mp4", "f.mp4", joined({kMpeg4, "-c:a libmp3lame"}), "HW.c2.video.mp4v",
         "VND.c2.audio.mpeg"},
        {"AvcVorbisMatroska", "f.mkv", joined({kAvc, "-c:a libvorbis"}), "HW.c2.video.avc",
         "VND.c2.audio.vorbis"},
        {"Mpeg2Ac3Matroska", "f.mkv", joined({kMpeg2, "-c:a ac3"}), "HW.c2.video.mpeg2",
         "VND.c2.audio.ac3"},
        {"HevcPcmMatroska", "f.mkv", joined({kHevc, "-c:a pcm_s16le"}), "HW.c2.video.hevc",
         "VND.c2.audio.raw"},
        {"Vp8VorbisWebm", "f.webm", joined({kVp8, "-c:a libvorbis"}), "HW.c2.video.vp8",
         "VND.c2.audio.vorbis"},
        {"Vp9OpusWebm", "f.webm", joined({kVp9, "-c:a libopus"}), "HW.c2.video.vp9",
         "VND.c2.audio.opus"},
        {"AvcAacTransport", "f.ts", joined({kAvc, "-c:a aac"}), "HW.c2.video.avc",
         "VND.c2.audio.mp4a"},
        {"HevcAc3Transport", "f.ts", joined({kHevc, "-c:a ac3"}), "HW.c2.video.hevc",
         "VND.c2.audio.ac3"},
        {"Mpeg2Mp3Transport", "f.ts", joined({kMpeg2, "-c:a libmp3lame"}), "HW.c2.video.mpeg2",
         "VND.c2.audio.mpeg"},
        {"AvcElementary", "f.h264", joined({kAvc, "-an"}), "HW.c2.video.avc", ""},
        {"HevcElementary", "f.hevc", joined({kHevc, "-an"}), "HW.c2.video.hevc", ""},
        {"Mpeg2Elementary", "f.m2v", joined({kMpeg2, "-an"}), "HW.c2.video.mpeg2", ""},
        {"Mpeg4Elementary", "f.m4v", joined({kMpeg4, "-an -f m4v"}), "HW.c2.video.mp4v", ""},
        {"Vp8Ivf", "f.ivf", joined({kVp8, "-an"}), "HW.c2.video.vp8", ""},
        {"Av1Obu", "f.obu", joined({kAv1, "-an"}), "HW.c2.video.av01", ""},
        {"AacElementary", "f.aac", "-vn -c:a aac", "", "VND.c2.audio.mp4a"},
        {"Mp3Elementary", "f.mp3", "-vn -c:a libmp3lame", "", "VND.c2.audio.mpeg"},
        {"Ac3Elementary", "f.ac3", "-vn -c:a ac3", "", "VND.c2.audio.ac3"},
        {"FlacElementary", "f.flac", "-vn -c:a flac", "", "VND.c2.audio.flac"},
        {"OpusOgg", "f.opus", "-vn -c:a libopus", "", "VND.c2.audio.opus"},
        {"VorbisOgg", "f.ogg", "-vn -c:a libvorbis", "", "VND.c2.audio.vorbis"},
        {"PcmWave", "f.wav", "-vn -c:a pcm_s16le", "", "VND.c2.audio.raw"},
        {"G711Wave", "f.wav", "-vn -ar 8000 -c:a pcm_alaw", "", "VND.c2.audio.g711"},
        // Packets without presentation times: those of pictures that others follow out of order.
        {"Mpeg4AviWithoutTimes", "f.avi", joined({kMpeg4, "-an"}), "HW.c2.video.mp4v", ""},
        // Sound from -21 ms and pictures from 0.
        {"NegativeTimes", "f.mkv",
         joined({kAvc, "-c:a aac -af asetpts=PTS-0.5/TB -avoid_negative_ts disabled"}),
         "HW.c2.video.avc", "VND.c2.audio.mp4a"},
};

/** Frames of each stream as ffprobe decodes them. */
std::vector<uint64_t> probedFrames(const std::string& file) {
    const ProcessResult result =
            runProcess({"ffprobe", "-v", "quiet", "-count_frames", "-show_entries",
                        "stream=nb_read_frames", "-of", "json", file});
    std::vector<uint64_t> frames;
    const Json probe = Json::parse(result.out);
    for (const Json& stream : probe["streams"]) {
        frames.push_back(std::stoull(stream["nb_read_frames"].get<std::string>()));
    }
    return frames;
}

std::vector<uint64_t> playedFrames(const Played& played) {
    std::vector<uint64_t> frames;
    for (const Json& session : played.json["files"][0]["sessions"]) {
        frames.push_back(session["frames"].get<uint64_t>());
    }
    return frames;
}

void PrintTo(const FormatCase& format, std::ostream* out) {
    *out << format.name;
}

class CodecplayFormatTest : public testing::TestWithParam<FormatCase> {};

}  // namespace

TEST_P(CodecplayFormatTest, playsEveryFrameOnBothRoads) {
    const FormatCase& format = GetParam();
    const std::string inputs =
            (format.video.empty() ? "" : picture(1.2)) + (format.audio.empty() ? "" : tone(1.2));
    const std::string file = clip(format.name + format.file, inputs + format.arguments);
    const std::vector<uint64_t> expected = probedFrames(file);

    for (const bool omx : {false, true}) {
        SCOPED_TRACE(omx ? "OMX" : "Codec2");
        const Played played =
                play(analysis("0x7") +
                     std::vector<std::string>{omx ? "--omx" : "--codec2", "--speed", "0", file});
        EXPECT_EQ(played.process.exitCode, 0) << played.process.err;
        EXPECT_EQ(playedFrames(played), expected);
        for (std::string tag : {format.video, format.audio}) {
            if (tag.empty()) continue;
            if (omx) tag.replace(tag.find("c2"), 2, "omx");
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
        for (const char* odd : {"ot found", "queue full", "unexpectedly", "Possible seek"}) {
            EXPECT_EQ(findLine(played.log, odd), "");
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, CodecplayFormatTest, testing::ValuesIn(kFormats),
                         [](const auto& info) { return info.param.name; });

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
};

}  // namespace

TEST(CodecplayFormatMessageTest, formatChangeSaysWhatTheStreamSays) {
    for (const Announcement& row : kAnnouncements) {
        SCOPED_TRACE(row.name);
        const Played played = play({"--speed", "0", clip(row.name, picture(0.3) + row.arguments)});
        EXPECT_EQ(countLines(played.log, "updateFormatChanged"), 1U);
        EXPECT_NE(findLine(played.log, row.line), "")
                << findLine(played.log, "updateFormatChanged");
    }
}

TEST(CodecplayFormatMessageTest, primariesAndMatrixOfNoStandardBecomeTheNearestOne) {
    // Primaries of film (5) with the matrix of BT.709 (1) are 64 + 5 + 7 * 1 = 76, which the
    // platform narrows to film (9).
    const std::string file = clip("odd.mp4", picture(0.3) +
                                                     "-c:v libx264 -preset ultrafast "
                                                     "-color_primaries film -colorspace bt709");
    const Played played = play({"--speed", "0", file});
    EXPECT_NE(findLine(played.log,
                       "updateFormatChanged convert extend color changed from [76] to standard "
                       "[9] !"),
              "");
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
