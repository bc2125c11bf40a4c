// SPDX-License-Identifier: Apache-2.0
// Faults that were asked for, and faults of the files.
#include <gtest/gtest.h>

#include "CodecplayTest.h"

namespace android::test {

namespace {

/** 8 s at 30 frames a second; at four times its pace it lasts two seconds. */
std::string longClip() {
    return clip("long.mp4", picture(8) + "-c:v libx264 -preset ultrafast -bf 2 -g 30");
}

/** At four times the pace the display has to keep up with 120 pictures a second. */
const std::vector<std::string> kFast = {"--speed", "4", "--vsync", "240"};

}  // namespace

TEST(CodecplayFaultTest, requestedDropsAreExactlyTheReportedOnes) {
    const std::string metrics = scratchFile("metrics");
    // Unpaced, so that the machine drops none. The logger counts drops from half a second after the
    // first picture on, which the second one waits for. Then 13 and 2 pictures.
    const Played played = play(analysis("0x4") +
                               std::vector<std::string>{"--speed", "0", "--slow-decode", "2:600",
                                                        "--drop", "120-132", "--drop", "180-181",
                                                        "--metrics", metrics, longClip()});
    EXPECT_EQ(played.video()["dropped"]["requested"], 15);
    EXPECT_EQ(played.video()["rendered"], 225);
    // 13 = 10 + 2 + 1, and another 2.
    EXPECT_EQ(numberBehind(played.log, "TenConsecutiveFramesDropped = "), 1);
    EXPECT_EQ(numberBehind(played.log, "TwoConsecutiveFramesDropped = "), 2);
    EXPECT_EQ(numberBehind(played.log, "OneConsecutiveFramesDropped = "), 1);
    EXPECT_EQ(numberBehind(played.log, "TotalFramesDropped = "), 15);
    EXPECT_EQ(numberBehind(played.log, "MaxConsecutiveFramesDropped = "), 13);
    EXPECT_NE(readFile(metrics).find("\"TotalFramesDropped\""), std::string::npos);
    const std::string report = played.video()["reports"][0];
    EXPECT_NE(report.find(":TotalFramesDropped=15:MaxConsecutiveFramesDropped=13:"),
              std::string::npos)
            << report;
    // Each of them left the tracker with a line of its own; 30 pictures a second, so number n
    // has the time (n - 1) / 30 s.
    EXPECT_EQ(countLines(played.log, ": Drop:"), 15U);
    EXPECT_NE(findLine(played.log, ": Drop:3966667("), "");
    EXPECT_NE(findLine(played.log, ": Drop:5966667("), "");
}

TEST(CodecplayFaultTest, stallShowsAsApplicationLatencyAndLatePictures) {
    const Played played = play(kFast + analysis("0x4") +
                               std::vector<std::string>{"--stall", "120:400", longClip()});
    // 400 ms at 120 pictures a second, less 30 ms of tolerance and what waits in the buffers.
    EXPECT_GE(played.video()["dropped"]["late"], 20);
    const std::string line = findLine(played.log, ": Drop:3966667(");
    ASSERT_NE(line, "") << "picture 120 was not dropped";
    EXPECT_GE(atoi(line.c_str() + line.find(" AL:") + 4), 400) << line;
    EXPECT_EQ(accountedFrames(played.video()), 240U);
}

TEST(CodecplayFaultTest, eachDelayShowsWhereItHappened) {
    // 15 frames apart, so that none disturbs another. Without B-frames picture n has the time
    // (n - 1) / 30 s on the way in as on the way out.
    const std::string file =
            clip("delays.mp4", picture(4) + "-c:v libx264 -preset ultrafast -bf 0");
    const Played played =
            play(analysis("0x402") +
                 std::vector<std::string>{"--speed", "0", "--slow-decrypt", "16:80",
                                          "--slow-decode", "31-32:80", "--slow-message", "46:80",
                                          "--block-display", "61:120", "--starve", "76:80", file});
    const auto number = [&](const char* line, const char* field) {
        return numberBehind({findLine(played.log, line)}, field);
    };
    EXPECT_GE(numberBehind(played.log, " Frame:16 Decrypt cost:"), 80);
    for (const char* slow : {"OWD:1000000(", "OWD:1033333("}) {
        EXPECT_GE(number(slow, " FL:"), 80);
        EXPECT_LT(number(slow, ") AL:"), 40);
    }
    EXPECT_LT(number("OWD:1066667(", " FL:"), 40);
    const std::string late = findLine(played.log, "OWD:1500000(");
    EXPECT_LT(numberBehind({late}, " FL:"), 40) << late;
    EXPECT_GE(atoi(late.c_str() + late.find('(', late.find(" FAD:")) + 1), 80) << late;
    EXPECT_GE(numberBehind(played.log, "queueBuffer cost:"), 120);
    // The component stood still and then took nothing: decoded long after the one before.
    EXPECT_GE(number("OWD:2500000(", " FAD:"), 80);
    EXPECT_LT(number("OWD:2500000(", " FL:"), 40);
}

TEST(CodecplayFaultTest, displayThatRefreshesTooSeldomLosesPictures) {
    const Played played = play({"--speed", "2", "--vsync", "15", ordinaryClip()});
    // 60 pictures a second and 15 refreshes: about three of four are never shown.
    EXPECT_GT(
            played.video()["never_shown"].get<int>() + played.video()["dropped"]["late"].get<int>(),
            60);
    EXPECT_NE(findLine(played.log, "I/MediaCodecLogger: " + played.video()["never_shown"].dump() +
                                           " frames were dropped in SurfaceFlinger or HWC."),
              "");
}

TEST(CodecplayFaultTest, jumpsOfTheClockCostNeitherTimeNorPictures) {
    const std::string file = scratchFile("joined.ts");
    std::string parts;
    // Far on, back by half a second, on by 12 s, to the beginning; and 33 bits end at 95443.7 s.
    for (const char* startS : {"0", "6000", "5999.5", "6012", "0", "95443"}) {
        parts += clip(std::string("part") + startS + ".ts",
                      picture(1.5) + tone(1.5) +
                              "-c:v libx264 -preset ultrafast -bf 2 -g 10 -output_ts_offset " +
                              startS) +
                 ' ';
    }
    ASSERT_EQ(runProcess({"sh", "-c", "cat " + parts + ">" + file}).exitCode, 0);
    const Played played = play(kFast + analysis("0x4") + std::vector<std::string>{file});
    // Parts that do not continue each other are no damage.
    EXPECT_EQ(played.process.exitCode, 0) << played.process.err;
    EXPECT_EQ(played.video()["frames"], 6 * 45);
    EXPECT_LT(played.video()["dropped"]["late"], 30);
    long lastMs = -1;
    for (const std::string& line : played.log) {
        if (line.find(" Render R-S:") == std::string::npos) continue;
        const long displayMs = numberBehind({line}, " R:");
        // A picture each 8 ms, and a moment at the joints where sound is longer.
        EXPECT_LT(displayMs - (lastMs < 0 ? displayMs : lastMs), 200) << line;
        EXPECT_GE(displayMs, lastMs) << line;
        lastMs = displayMs;
    }
}

TEST(CodecplayFaultTest, decoderErrorsEndTheReportOnce) {
    const Played played = play({"--speed", "0", "--error", "fatal@1", "--error", "recoverable@2",
                                "--error", "7@3", ordinaryClip()});
    EXPECT_EQ(missingInOrder(played.log, {"codecplay.HW", "HW.c2.video.avc.DecoderErrorFatal = 1",
                                          "HW.c2.video.avc.BRISK-P2Ms = ",
                                          "HW.c2.video.avc..DecoderErrorFatal = 1",
                                          "HW.c2.video.avc.DecoderErrorRecov = 1",
                                          "HW.c2.video.avc.DecoderErrorTrans = 1"}),
              "codecplay.HW");
    EXPECT_EQ(countLines(played.log, "HW.c2.video.avc.BRISK-P2Ms = "), 1U);
    EXPECT_EQ(played.process.exitCode, 0);
}

namespace {

void cutAtSixTenths(std::string* bytes) {
    bytes->resize(bytes->size() * 6 / 10);
}

void damageTheMiddle(std::string* bytes) {
    for (size_t i = bytes->size() * 4 / 10; i < bytes->size() * 5 / 10; ++i) {
        (*bytes)[i] = static_cast<char>(i * 2654435761U >> 13);
    }
}

/** A file that was whole once, and what a reader is told. */
void renameVideoCodec(std::string* bytes) {
    // The sample entry, not the brand of the file type.
    bytes->replace(bytes->rfind("avc1"), 4, "zzzz");
}

/** All elementary streams of ffmpeg's transport streams: their packet identifiers begin at 256. */
void scramble(std::string* bytes) {
    for (size_t at = 0; at + 188 <= bytes->size(); at += 188) {
        if (((*bytes)[at + 1] & 0x1F) != 1) continue;
        (*bytes)[at + 3] = static_cast<char>((*bytes)[at + 3] | 0x80);
        for (size_t i = at + 4; i < at + 188; ++i)
            (*bytes)[i] = static_cast<char>((*bytes)[i] ^ 0x5A);
    }
}

struct BadFile {
    const char* name;
    void (*change)(std::string*);
    int exitCode;
    const char* complaint;
};

constexpr BadFile kBadFiles[] = {
        {"cut.mp4", cutAtSixTenths, 3, "is cut off: "},
        {"cut.mkv", cutAtSixTenths, 3, "is cut off: "},
        {"cut.ts", cutAtSixTenths, 3, "damaged"},
        {"damaged.mp4", damageTheMiddle, 3, "damaged frames: "},
        {"damaged.ts", damageTheMiddle, 3, "damaged"},
        {"renamed.mp4", renameVideoCodec, 5, "stream 0: unknown codec zzzz"},
        {"scrambled.ts", scramble, 1, "stream 0: is encrypted"},
        {"headless.mp4", [](std::string* bytes) { bytes->erase(0, 6000); }, 1, "is no media file"},
        {"empty.mp4", [](std::string* bytes) { bytes->clear(); }, 1, "is no media file"},
        {"text.txt", [](std::string* bytes) { *bytes = std::string(5000, 'a'); }, 1, "media"},
};

}  // namespace

TEST(CodecplayFaultTest, badFilesArePlayedAsFarAsTheyGo) {
    for (const BadFile& bad : kBadFiles) {
        SCOPED_TRACE(bad.name);
        const std::string name = bad.name;
        const std::string whole = clip("whole" + name.substr(name.find('.')),
                                       picture(4, "320x180") + tone(4) +
                                               "-c:v libx264 -preset ultrafast -bf 2 -g 30 -c:a "
                                               "aac -movflags +faststart -f " +
                                               (name.find(".mkv") != std::string::npos  ? "matroska"
                                                : name.find(".ts") != std::string::npos ? "mpegts"
                                                                                        : "mp4"));
        const std::string file = changedClip(whole, name, bad.change);
        const Played played =
                play(analysis("0x4") + std::vector<std::string>{"--speed", "0", file});
        EXPECT_EQ(played.process.exitCode, bad.exitCode) << played.process.err;
        EXPECT_NE(played.process.err.find("codecplay: " + file + ": "), std::string::npos);
        EXPECT_NE(played.process.err.find(bad.complaint), std::string::npos) << played.process.err;
        if (bad.exitCode != 3) continue;
        // What there was is reported, and all of it accounted for.
        EXPECT_GT(played.video()["rendered"], 40);
        EXPECT_EQ(accountedFrames(played.video()), played.video()["packets"]);
        EXPECT_EQ(played.video()["reports"].size(), 1U);
        EXPECT_EQ(played.video()["frames"], probedFrames(file)[0]);
    }
}

TEST(CodecplayFaultTest, encryptedStreamsAreCalledEncrypted) {
    const std::string file =
            clip("encrypted.mp4",
                 picture(1) +
                         "-c:v libx264 -preset ultrafast -encryption_scheme cenc-aes-ctr "
                         "-encryption_key 000102030405060708090a0b0c0d0e0f "
                         "-encryption_kid 000102030405060708090a0b0c0d0e0f");
    const ProcessResult result = runProcess({CODECPLAY, "--quiet", file});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.err.find(file + ": stream 0: is encrypted\n"), std::string::npos)
            << result.err;
}

}  // namespace android::test
