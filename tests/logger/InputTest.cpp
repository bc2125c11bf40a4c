// SPDX-License-Identifier: Apache-2.0
#include "LoggerTest.h"

namespace android::test {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

TEST_F(LoggerTest, theBitrate_isMeasuredOverMoreThanFiveSeconds) {
    configure();
    input(0);
    log.take();
    after(5000);
    input(0);
    EXPECT_THAT(logged(), IsEmpty());
    after(1);
    input(0);
    // 3 buffers of 1000 bytes in 5001 ms: 24000 bits / 5001 ms.
    EXPECT_THAT(logged(), ElementsAre("I " PID ".HW.c2.video.avc.bitrateInKbps = 4"));
    EXPECT_THAT(status(), HasSubstr("\tInput Bitrate: 4\n"));

    // The next buffer opens a new interval, whatever lies between.
    after(60000);
    for (int i = 0; i < 52; ++i) {
        input(0);
        after(100);
    }
    // 52 buffers, the last 5100 ms after the first: 416000 / 5100.
    EXPECT_THAT(logged(), ElementsAre("I " PID ".HW.c2.video.avc.bitrateInKbps = 81"));
    // The report: 55000 bytes in 10101 ms.
    EXPECT_THAT(report(), HasSubstr(":StreamAvgBitrateInKbps=43"));
}

TEST_F(LoggerTest, theFramerate_isTheSpreadOf240Timestamps) {
    configure(kTunneled);
    const auto framerate = [&] {
        const std::string text = status();
        const size_t at = text.find("(fps): ") + 7;
        return text.substr(at, text.find('\n', at) - at);
    };
    // Each pair swapped, as with B-frames: only the smallest and the largest count.
    for (long i = 0; i < 239; ++i) input((i ^ 1) * 33333);
    EXPECT_EQ(framerate(), "0.000");
    input(238 * 33333);
    EXPECT_EQ(framerate(), "30.000");
    // The first one sets only the minimum, so that here 238 steps remain.
    input(239 * 33333);
    for (long i = 0; i < 239; ++i) input(i * 33333);
    EXPECT_EQ(framerate(), "30.126");
    for (long i = 0; i < 240; ++i) input(i * 16667);
    EXPECT_EQ(framerate(), "59.999");
    for (long i = 0; i < 240; ++i) input(0);
    EXPECT_EQ(framerate(), "inf");
    for (long i = 0; i < 240; ++i) input(i % 2 != 0 ? INT64_MIN : INT64_MAX);
    EXPECT_THAT(framerate(), testing::Not("inf"));
}

TEST_F(LoggerTest, atmos_isAskedOnceASessionAndOnlyOfRawAudio) {
    const struct {
        const char *mime, *reply;
        bool detected;
        int queries;
    } kCases[] = {
            {"audio/raw", "a=1;atmos_detected=-2", true, 1},
            {"audio/raw", "atmos_detected=0", false, 1},
            {"audio/raw", "atmos_detected=true", false, 1},
            {"audio/raw", "", false, 1},
            {"audio/eac3", "atmos_detected=1", false, 0},
            {"video/avc", "atmos_detected=1", false, 0},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.reply);
        hostplatform::setAudioParameters(c.reply);
        configure({"c2.vendor", c.mime});
        const int before = hostplatform::audioQueryCount();
        EXPECT_EQ(logger->isAtmosDetected(), c.detected);
        hostplatform::setAudioParameters("atmos_detected=1");
        EXPECT_EQ(logger->isAtmosDetected(), c.detected);
        EXPECT_EQ(hostplatform::audioQueryCount() - before, c.queries);
    }
}

}  // namespace android::test
