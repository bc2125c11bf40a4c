// SPDX-License-Identifier: Apache-2.0
#include "LoggerTest.h"

namespace android::test {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

TEST_F(LoggerTest, jumpsBackOrFarAhead_areSeeks) {
    constexpr long kMax = INT64_MAX;
    constexpr long kMin = INT64_MIN;
    const struct {
        std::vector<long> outputs;
        Lines seeks;
    } kCases[] = {
            {{0, 33333, 33333, 66666}, {}},
            {{0, 5000000, 10000000}, {}},
            {{0, 5000001}, {"last pts:0 cur pts:5000001"}},
            {{100, 99}, {"last pts:100 cur pts:99"}},
            {{100, 99, 100, 5000101}, {"last pts:100 cur pts:99", "last pts:100 cur pts:5000101"}},
            // A negative timestamp runs on and becomes the last one; after -1 anything runs on.
            {{50, -7, 10}, {}},
            {{50, -7, 5000000}, {"last pts:-7 cur pts:5000000"}},
            {{50, -1, 9000000}, {}},
            {{-7, 9000000, 9000001}, {}},
            {{kMax - 1, kMax, 0}, {"last pts:9223372036854775807 cur pts:0"}},
            {{0, kMin, kMax}, {"last pts:-9223372036854775808 cur pts:9223372036854775807"}},
    };
    for (const auto& c : kCases) {
        configure();
        for (const long pts : c.outputs) output(pts);
        Lines expected;
        for (const auto& seek : c.seeks) {
            expected.push_back("I updatePTSTime Possible seek found! " + seek);
        }
        EXPECT_EQ(loggedWith("seek"), expected);
    }
}

TEST_F(LoggerTest, playback_isTheSumOfItsSegments) {
    const struct {
        CodecSetup setup;
        const char* summary;
    } kCases[] = {
            // 66 ms before the flush, 10 s up to the seek and 2 s after it.
            {{}, PKG ".HW.c2.video.avc:videoResolution.SD=12066:BRISK-P5Ms=0:"},
            {kAudio, PKG ".VND.c2.audio.mp4a:TotalAudioPlaybackTimeMs=12066"},
            {{"c2.v", "text/x"}, PKG ".VND.c2.unknown.x"},
    };
    for (const auto& c : kCases) {
        configure(c.setup);
        // What comes before the first frame is not played.
        output(-7);
        logger->updateMetricsForFlush();
        frame(0);
        for (const long pts : {33333, 66666}) output(pts);
        logger->updateMetricsForFlush();
        for (const long pts : {10000000, 15000000, 20000000, 5000000, 7000000}) output(pts);
        EXPECT_THAT(report(), testing::StartsWith(c.summary));
    }
    // Frames that continue a segment: 2, 2 and 1 in 12066 ms.
    EXPECT_THAT(loggedWith("StreamAvgFramerate"),
                ElementsAre("I " PID ".HW.c2.video.avc.StreamAvgFramerate = 0.414"));
}

TEST_F(LoggerTest, theEndOfTheStream_changesNothing) {
    configure();
    log.take();
    logger->updatePTSTime(5, true, 1);
    EXPECT_THAT(logged(),
                ElementsAre("I updatePTSTime [HW.c2.video.avc] First PTS after Flush or reset = 5",
                            "I updatePTSTime [HW.c2.video.avc] EOS pts:5"));
    output(100);
    logger->updatePTSTime(9000000, true, 1);
    output(200);
    EXPECT_THAT(loggedWith("seek"), IsEmpty());
}

TEST_F(LoggerTest, theFirstFrame_isReadyOnceAfterTheFirstInput) {
    configure();
    output(0);
    input(0, 0);
    EXPECT_THAT(loggedWith("Got First"), IsEmpty());
    after(20);
    input(7);
    after(30);
    output(7);
    output(8);
    EXPECT_THAT(loggedWith("Got First"),
                ElementsAre("I [BRISK] HW.c2.video.avc Got First Input Frame 1020 pts:7",
                            "I [BRISK] HW.c2.video.avc Got First Frame Ready 1050(30)"));
}

TEST_F(LoggerTest, repeatsCount_from501MsAfterTheFirstRender) {
    // With logging off, the release of the buffer does not count as the render.
    const struct {
        bool logging;
        int waitMs;
        int repeats;
    } kCases[] = {{true, 400, 0}, {true, 401, 2}, {false, 500, 0}, {false, 501, 2}};
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.waitMs);
        configure({"c2.v", "video/avc", 0, true, c.logging});
        input(0);
        output(0);
        logger->updateFrameDropCounters(0, true);
        after(100);
        logger->resetConsecutiveFrameDropFlag(-1, 0, false, 1);
        after(c.waitMs);
        output(0);
        output(0);
        EXPECT_THAT(loggedWith("Output"), SizeIs(c.repeats));
    }
}

TEST_F(LoggerTest, repeatsAreThrottled_onRequest) {
    settle({"c2.vendor.avc.decoder", "video/avc", 2});
    for (int i = 0; i < 61; ++i) output(33333);
    // Those with 0 to 19, 20, 40 and 60 repeats before them.
    EXPECT_THAT(loggedWith("Repeating PTS in Output = 33333"), SizeIs(23));
    settle();
    for (int i = 0; i < 61; ++i) output(33333);
    EXPECT_THAT(loggedWith("Repeating PTS in Output = 33333"), SizeIs(61));
}

TEST_F(LoggerTest, aRepeatStandsForItsFrames) {
    settle();
    logger->updatePTSTime(33333, false, 10);
    logger->updatePTSTime(33333, false, 1);
    output(33333);
    const std::string line = PID ".HW.c2.video.avc Repeating PTS in Output = 33333";
    EXPECT_THAT(logged(), ElementsAre("I " + line, "I " + line, "I W.rot11." + line));
}

TEST_F(LoggerTest, aRepeat_isTheInputs_whenItWasQueuedExactlyTwice) {
    const struct {
        std::vector<long> inputs;
        int warnings;
    } kCases[] = {{{}, 0}, {{33333}, 0}, {{33333, 1, 33333}, 1}, {{33333, 33333, 33333}, 0}};
    for (const auto& c : kCases) {
        settle();
        for (const long pts : c.inputs) input(pts);
        output(33333);
        const Lines lines = loggedWith("Input");
        EXPECT_THAT(lines, SizeIs(c.warnings));
        for (const auto& line : lines) {
            EXPECT_EQ(line, "W " PID ".HW.c2.video.avc Repeating PTS in Input = 33333");
        }
        for (int i = 0; i < 20; ++i) input(7);
    }
}

TEST_F(LoggerTest, theInputHistory_holdsTwenty) {
    settle();
    input(33333);
    input(33333);
    // The frame of settle() took the first of the 20 places: 18 more keep both, the 19th does not.
    for (int i = 0; i < 18; ++i) input(7);
    output(33333);
    EXPECT_THAT(loggedWith("Input"), SizeIs(1));
    input(7);
    output(33333);
    EXPECT_THAT(loggedWith("Input"), IsEmpty());
}

TEST_F(LoggerTest, aFormatChange_isTimedAtItsFirstFrame) {
    settle();
    changeFormat(640, 480);
    changeFormat(1280, 720);
    log.take();
    // 511 ms after the frame that settle() rendered.
    after(10);
    output(66666);
    output(99999);
    EXPECT_THAT(logged(), ElementsAre("I " PID ".HW.c2.video.avc Resolution change from 640x480 to "
                                      "1280x720 took = 511"));
    // Also one that keeps the size.
    changeFormat(1280, 720);
    output(133332);
    EXPECT_THAT(loggedWith("from 1280x720 to 1280x720 took = 511"), SizeIs(1));
}

TEST_F(LoggerTest, rampUp_isSentOnceAClass) {
    const std::string fhd = "c48a/2/02330410 FHDRampupTime 501 ms [HW_avc] 0";
    const std::string uhd = "p61w/2/02330410 UHDRampupTime 501 ms [HW_avc] 0";
    const struct {
        std::vector<std::pair<int, int>> sizes;
        Lines records;
    } kCases[] = {
            {{{1919, 1080}}, {}},
            {{{1920, 1080}, {1920, 800}}, {fhd}},
            {{{1080, 1920}}, {fhd}},
            {{{3839, 2160}}, {fhd}},
            {{{3840, 2160}, {1920, 1080}, {3840, 2160}}, {uhd}},
            {{{1920, 1080}, {3840, 2160}}, {fhd, uhd}},
            // Compared unsigned.
            {{{-1, 1920}}, {uhd}},
    };
    for (const auto& c : kCases) {
        settle();
        for (const auto& [width, height] : c.sizes) {
            changeFormat(width, height);
            output(33334);
        }
        EXPECT_EQ(sent(), c.records);
    }
}

TEST_F(LoggerTest, rampUpKey_namesTheCodec) {
    hostplatform::setDisplaySize(3840, 2160);
    const std::pair<CodecSetup, const char*> kCases[] = {
            {{"c2.vendor.dec", "video/hevc", 1}, "[HW_hevc_4K_secure_tunneled]"},
            {{"c2.android.dec", "video/hevc", 1}, "[SW_hevc_4K_secure_tunneled]"},
            {{"c2.vendor.dec", "text/x", 1}, "[VND_x]"},
    };
    secure = true;
    for (const auto& [setup, key] : kCases) {
        settle(setup);
        changeFormat(1920, 1080);
        output(33334);
        EXPECT_THAT(sent(), ElementsAre(testing::HasSubstr(key)));
    }
}

TEST_F(LoggerTest, aFlush_logsTheFramerate_andSettlesAnew) {
    configure();
    output(0);
    for (int i = 1; i <= 30; ++i) output(i * 1000000L / 30);
    log.take();
    logger->updateMetricsForFlush();
    EXPECT_THAT(logged(),
                ElementsAre("I Flushing: " PID ".HW.c2.video.avc.framerate = 30.000 fps"));

    // The first frame after it reads as a seek from where the segment ended.
    output(7000000);
    output(7000000);
    EXPECT_THAT(
            logged(),
            ElementsAre("I updatePTSTime [HW.c2.video.avc] First PTS after Flush or reset = "
                        "7000000",
                        "I updatePTSTime Possible seek found! last pts:1000000 cur pts:7000000"));

    configure(kAudio);
    output(0);
    output(1000000);
    logger->updateMetricsForFlush();
    EXPECT_THAT(loggedWith("Flushing"), IsEmpty());
}

}  // namespace android::test
