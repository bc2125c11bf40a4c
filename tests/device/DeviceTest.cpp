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

// The analytics follow the codec until the logger goes, where properties may be set.
TEST(DeviceTest, sessionAnswersAndReports) {
    auto& analytics = ZephraMediaAnalytic::getInstance();
    const sp<test::FakeCodec> codec = new test::FakeCodec;
    const bool isAnalysed = property_set("mediaanalytic.enable", "true") == 0;
    EXPECT_EQ(analytics.addCodec("c2.vendor.avc.decoder", codec, 1, 1) == OK, isAnalysed);
    property_set("mediaanalytic.enable", "");
    analytics.updateCCodecConfigs(codec, true, false, true);
    sp<MediaCodecLogger> logger = MediaCodecLogger::Create(-1, getuid());
    logger->configure("c2.vendor.avc.decoder", "video/avc", 0, true, 0, 0, codec, true);
    sp<AMessage> format = new AMessage;
    format->setInt32("width", 1920);
    format->setInt32("height", 1080);
    logger->updateFormatChanged(format);
    // 30 frames a second; more than a tracker holds at once.
    long pts = 0;
    static const uint8_t kData[1000] = {};
    const auto isFollowed = [&] {
        return analytics.updateInputFrame_pre(codec, nullptr, 0, nullptr, nullptr, 0, nullptr,
                                              CryptoPlugin::kMode_Unencrypted, pts, 0, false);
    };
    for (int frame = 0; frame <= 300; ++frame, pts += 33'333) {
        logger->queueInputBuffer_pre(kData, sizeof(kData), nullptr, nullptr, 0, nullptr,
                                     CryptoPlugin::kMode_Unencrypted, pts, 0, false);
        logger->logInputBufferBitrate(sizeof(kData), pts, false, false);
        analytics.updateC2Output(codec, pts, 0);
        logger->updatePTSTime(pts, false, 1);
        logger->updateFrameDropCounters(pts, true);
        logger->resetConsecutiveFrameDropFlag(-1, pts, false, 1);
    }
    const std::string status = logger->getStatus().c_str();
    EXPECT_NE(status.find("\tResolution: 1920x1080\n"), std::string::npos) << status;
    EXPECT_NE(status.find("\tFormat: avc\n"), std::string::npos) << status;
    const std::string summary = logger->logMetrics().c_str();
    // 300 steps of 33,333 us.
    EXPECT_NE(summary.find(".HW.c2.video.avc:videoResolution.FHD=9999"), std::string::npos)
            << summary;
    EXPECT_EQ(logger->logMetrics().size(), 0u) << "a second report of one configuration";
    EXPECT_EQ(isFollowed(), isAnalysed);
    logger.clear();
    EXPECT_FALSE(isFollowed());
}

}  // namespace

}  // namespace android
