// SPDX-License-Identifier: Apache-2.0
// One session through the exported operations, on a device as on a host: nothing here knows the
// platform below the library.
#include <limits>
#include <memory>

#include <string.h>
#include <unistd.h>

#include <string>

#include <gtest/gtest.h>

#include <cutils/properties.h>
#include <media/stagefright/foundation/AMessage.h>
#include <mediaCodecLogger/MediaCodecLogger.h>
#include <mediaCodecLogger/ZephraMediaAnalytic.h>
#include <tests/support/FakeCodec.h>

namespace android {

namespace {

class DeviceTest : public ::testing::Test {
  protected:
    void configure() {
        logger->configure("c2.vendor.avc.decoder", "video/avc", 0, true, 0, 0, codec, true);
    }
    /** Queues, decodes and shows `count` frames at 30 frames a second. */
    void play(int count) {
        static const uint8_t kData[1000] = {};
        for (; count > 0; --count, pts += 33'333) {
            logger->queueInputBuffer_pre(kData, sizeof(kData), nullptr, nullptr, 0, nullptr,
                                         CryptoPlugin::kMode_Unencrypted, pts, 0, false);
            logger->logInputBufferBitrate(sizeof(kData), pts, false, false);
            ZephraMediaAnalytic::instance().updateC2Output(codec, pts, 0);
            logger->updatePTSTime(pts, false, 1);
            logger->updateFrameDropCounters(pts, true);
            logger->resetConsecutiveFrameDropFlag(-1, pts, false, 1);
        }
    }

    const sp<test::FakeCodec> codec = new test::FakeCodec;
    sp<MediaCodecLogger> logger = MediaCodecLogger::Create(-1, getuid());
    long pts = 0;
};

TEST_F(DeviceTest, sessionAnswersAndReports) {
    configure();
    sp<AMessage> format = new AMessage;
    format->setInt32("width", 1920);
    format->setInt32("height", 1080);
    logger->updateFormatChanged(format);
    play(301);
    const std::string status = logger->getStatus().c_str();
    EXPECT_NE(status.find("\tResolution: 1920x1080\n"), std::string::npos) << status;
    EXPECT_NE(status.find("\tFormat: avc\n"), std::string::npos) << status;

    const std::string summary = logger->logMetrics().c_str();
    // 300 steps of 33,333 us.
    EXPECT_NE(summary.find(".HW.c2.video.avc:videoResolution.FHD=9999"), std::string::npos)
            << summary;
    EXPECT_EQ(logger->logMetrics().size(), 0u) << "a second report of one configuration";
}

TEST_F(DeviceTest, analyticsKeepTheCodecUntilTheLoggerGoes) {
    if (property_set("mediaanalytic.enable", "true") != 0) GTEST_SKIP() << "needs root";
    ASSERT_EQ(ZephraMediaAnalytic::getInstance().addCodec("c2.vendor.avc.decoder", codec, 1, 1),
              OK);
    property_set("mediaanalytic.enable", "");
    ZephraMediaAnalytic::getInstance().updateCCodecConfigs(codec, true, false, true);
    configure();
    // More frames than a tracker holds at once.
    play(300);
    const auto known = [this] {
        return ZephraMediaAnalytic::getInstance().updateInputFrame_pre(
                codec, nullptr, 0, nullptr, nullptr, 0, nullptr, CryptoPlugin::kMode_Unencrypted,
                pts, 0, false);
    };
    EXPECT_TRUE(known());
    logger.clear();
    EXPECT_FALSE(known());
}

}  // namespace

}  // namespace android
