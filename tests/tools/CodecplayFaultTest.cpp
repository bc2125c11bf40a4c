// SPDX-License-Identifier: Apache-2.0
// Faults that were asked for, and faults of the files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CodecplayTest.h"

namespace android::test {

using namespace testing;

TEST(CodecplayFaultTest, requestedDropsAreExactlyTheReportedOnes) {
    // Unpaced, so that the machine drops none. The logger counts drops from half a second after the
    // first picture on, which the second one waits for. Then 13 and 2 pictures.
    const Played played = play(analysis("0x4") +
                               "--speed 0 --loop 2 --slow-decode 2:600 --drop 60-72 --drop 90-91 " +
                               ordinaryClip());
    EXPECT_EQ(played.video()["dropped"]["requested"], 15);
    EXPECT_EQ(played.video()["rendered"], 225);
    EXPECT_THAT(std::string(played.video()["reports"][0]),
                HasSubstr(":TotalFramesDropped=15:MaxConsecutiveFramesDropped=13:"));
    // Each of them left the tracker with a line of its own; 30 pictures a second, so number n
    // has the time (n - 1) / 30 s.
    EXPECT_EQ(played.count(": Drop:"), 15U);
    EXPECT_NE(played.line(": Drop:1966667("), "");
}

TEST(CodecplayFaultTest, stallAndSlowDisplayLosePictures) {
    // 120 pictures a second and 15 refreshes: about seven of eight are never shown.
    const Played played =
            play(analysis("0x4") + "--speed 4 --vsync 15 --stall 60:400 " + ordinaryClip());
    // 400 ms at 120 pictures a second, less 30 ms of tolerance and what waits in the buffers.
    EXPECT_GE(played.video()["dropped"]["late"], 20);
    EXPECT_GE(numberBehind(played.line(": Drop:1966667("), " AL:"), 400);
    EXPECT_LT(played.video()["rendered"].get<int>() - played.video()["never_shown"].get<int>(), 60);
    EXPECT_NE(played.line("I/MediaCodecLogger: " + played.video()["never_shown"].dump() +
                          " frames were dropped in SurfaceFlinger or HWC."),
              "");
}

TEST(CodecplayFaultTest, eachDelayShowsWhereItHappened) {
    // 15 frames apart, so that none disturbs another. Without B-frames picture n has the time
    // (n - 1) / 30 s on the way in as on the way out.
    const std::string file =
            clip("delays.mp4", picture(4) + "-c:v libx264 -preset ultrafast -bf 0");
    const Played played =
            play(analysis("0x402") +
                 "--speed 0 --slow-decrypt 16:250 --slow-decode 31-32:250 --slow-message 46:150 "
                 "--slow-message 46:100 --block-display 61:250 --starve 76:250 " +
                 file);
    for (const auto& [picture, field, isLong] :
         std::vector<std::tuple<const char*, const char*, bool>>{
                 {" Frame:16 Decrypt cost:", " cost:", true},
                 {"OWD:1000000(", " FL:", true},
                 {"OWD:1033333(", " FL:", true},
                 {"OWD:1066667(", " FL:", false},
                 {"OWD:1500000(", " FL:", false},
                 {"OWD:1500000(", " FARD:(", true},
                 {"queueBuffer cost:", " cost:", true},
                 // The component stood still and then took nothing: decoded long after
                 // the one before.
                 {"OWD:2500000(", " FL:", false},
                 {"OWD:2500000(", " FAD:", true}}) {
        const std::string line = played.line(picture);
        const long delayMs = numberBehind(line, field);
        // What the machine takes away is far less.
        EXPECT_TRUE(isLong ? delayMs >= 250 : delayMs >= 0 && delayMs < 200) << field << line;
    }
}

TEST(CodecplayFaultTest, jumpsOfTheClockCostNeitherTimeNorPictures) {
    const std::string file = scratchFile("joined.ts");
    std::string parts;
    // Far on, back, on by 12 s, to the beginning; and 33 bits end at 95443.7 s.
    for (const char* startS : {"0", "6000", "5999.5", "6012", "0", "95443.5"}) {
        parts += clip(std::string("part") + startS + ".ts",
                      picture(0.5) + tone(0.5) +
                              "-c:v libx264 -preset ultrafast -bf 2 -g 10 -output_ts_offset " +
                              startS) +
                 ' ';
    }
    ASSERT_EQ(runProcess({"sh", "-c", "cat " + parts + ">" + file}).exitCode, 0);
    const Played played = play(analysis("0x4") + file);
    // Parts that do not continue each other are no damage.
    EXPECT_EQ(played.process.exitCode, 0) << played.process.err;
    EXPECT_EQ(played.video()["frames"], 6 * 15);
    // A picture each 33 ms, and a moment at the joints where sound is longer; none of the parts is
    // waited for or late as a whole, whatever the machine takes away.
    EXPECT_LT(played.video()["dropped"]["late"], 15);
    long lastMs = -1;
    for (const std::string& line : played.lines(" Render R-S:")) {
        const long displayMs = numberBehind(line, " R:");
        EXPECT_LT(displayMs - (lastMs < 0 ? displayMs : lastMs), 450) << line;
        EXPECT_GE(displayMs, lastMs) << line;
        lastMs = displayMs;
    }
}

TEST(CodecplayFaultTest, decoderErrorsEndTheReportOnce) {
    const Played played = play(
            "--speed 0 --error 7@3.5 --error recoverable@2 --error fatal@1 --error transient@3 " +
            ordinaryClip());
    EXPECT_EQ(played.missingInOrder({"avc.DecoderErrorFatal = 1", "avc.BRISK-P2Ms = ",
                                     "avc..DecoderErrorFatal = 1", "avc.DecoderErrorRecov = 1",
                                     "avc.DecoderErrorTrans = 1", "avc.DecoderErrorTrans = 1"}),
              "");
    EXPECT_EQ(played.count("HW.c2.video.avc.BRISK-P2Ms = "), 1U);
    EXPECT_EQ(played.process.exitCode, 0);
}

TEST(CodecplayFaultTest, badFilesArePlayedAsFarAsTheyGo) {
    const std::string damage =
            "split -n 1/2 $0; split -n 3/4 $0 | tr '\\0-\\376' '\\1-\\377'; split -n 4/4 $0";
    const std::string encrypted =
            "mp4 -encryption_scheme cenc-aes-ctr -encryption_key 000102030405060708090a0b0c0d0e0f "
            "-encryption_kid 000102030405060708090a0b0c0d0e0f";
    // A file, ffmpeg's name of its format, what is done to it, and what a reader is told.
    for (const auto& [name, format, command, exitCode, complaint] :
         std::vector<std::tuple<std::string, std::string, std::string, int, std::string>>{
                 {"cut.mp4", "mp4", "split -n 1/2 $0", 3, "is cut off: "},
                 {"cut.mkv", "matroska", "split -n 1/2 $0", 3, "is cut off: "},
                 {"damaged.mp4", "mp4", damage, 3, "damaged frames: .* more messages"},
                 {"damaged.ts", "mpegts", damage, 3, "damaged"},
                 // The sample entry, not the brand of the file type.
                 {"renamed.mp4", "mp4", R"(sed 's/\([^2]\)avc1/\1zzzz/' $0)", 5, "codec zzzz"},
                 // ffmpeg's packet identifiers begin at 256.
                 {"scrambled.ts", "mpegts", R"(sed 's/G\([\x01A].\)./G\1\x90/g' $0)", 1,
                  "encrypted"},
                 {"encrypted.mp4", encrypted, "cat $0", 1, ": stream 0: is encrypted"},
                 {"headless.mp4", "mp4", "tail -c +6000 $0", 1, "is no media file"},
                 {"empty.mp4", "mp4", "true", 1, "is no media file"},
                 {"text.txt", "mp4", "tr -c a a <$0", 1, "media"}}) {
        SCOPED_TRACE(name);
        const std::string whole =
                clip("whole", picture(4) + tone(4) +
                                      "-s 320x180 -c:v libx264 -preset ultrafast -bf 2 -g 30 "
                                      "-c:a aac -movflags +faststart -f " +
                                      format);
        const std::string file = changedClip(whole, name, command);
        const Played played = play("--speed 0 " + file);
        EXPECT_EQ(played.process.exitCode, exitCode);
        EXPECT_THAT(played.process.err,
                    AllOf(HasSubstr("codecplay: " + file + ": "), ContainsRegex(complaint)));
        if (exitCode != 3) continue;
        // What there was is reported.
        EXPECT_GT(played.video()["rendered"], 40);
        EXPECT_EQ(played.video()["reports"].size(), 1U);
        EXPECT_EQ(played.video()["frames"], probedFrames(file)[0]);
    }
}

}  // namespace android::test
