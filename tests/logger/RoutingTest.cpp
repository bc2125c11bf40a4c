// SPDX-License-Identifier: Apache-2.0
#include <functional>

#include <mediaCodecLogger/ZephraMediaAnalytic.h>
#include <tests/support/ScopedProperties.h>

#include "LoggerTest.h"

namespace android::test {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

// Each event of the logger is found again in what the frame analytics log of it.
TEST_F(LoggerTest, events_reachTheFrameAnalytics) {
    const ScopedProperties properties(
            {{"mediaanalytic.enable", "1"}, {"mediaanalytic.debug", "0x407"}});
    auto& analytics = ZephraMediaAnalytic::instance();
    analytics.addCodec("name", codec, 1, 2);
    analytics.updateCCodecConfigs(codec, true /* isVideo */, false, true /* isDecoder */);
    configure();
    const auto queue = [&](long pts) {
        const uint8_t data[3] = {};
        logger->queueInputBuffer_pre(data, sizeof(data), nullptr, nullptr, 0, nullptr,
                                     CryptoPlugin::kMode_Unencrypted, pts, 7000, true);
        input(pts, 3);
    };
    const struct {
        std::function<void()> event;
        const char* line;
    } kSteps[] = {
            {[&] { queue(1234); }, "I/ZMediaAnalyticV avc queue:1234 s:3 "},
            {[&] { output(1234); }, "avc Frame:1 Decoded and filled into output buffer"},
            {[&] { logger->resetConsecutiveFrameDropFlag(7000000, 1234, false, 1); },
             "avc Render R-S:-993 R:7(7) pts:1234"},
            {[&] { queue(2234); }, "avc queue:2234 s:3 "},
            {[&] { output(2234); }, "avc Frame:2 Decoded and filled into output buffer"},
            {[&] { logger->updateFrameDropCounters(2234, false); }, "ZMediaAnalyticV Drop:2234("},
            {[&] { queue(3234); }, "avc queue:3234 s:3 "},
    };
    for (const auto& step : kSteps) {
        step.event();
        EXPECT_THAT(loggedWith("ZMediaAnalyticV"), Contains(HasSubstr(step.line)));
    }
    logger->updateMetricsForFlush();
    // The flush made the tracker forget what was queued.
    output(3234);
    EXPECT_THAT(loggedWith("Decoded and filled"), IsEmpty());
}

}  // namespace android::test
