// SPDX-License-Identifier: Apache-2.0
// The object that answers for one codec: what it reads from the codec's logger, and what it says
// once the logger is gone.
#include <stdlib.h>

#include <limits>
#include <memory>
#include <sstream>

#include <binder/IServiceManager.h>
#include <gtest/gtest.h>
#include <media/stagefright/CodecBase.h>
#include <media/stagefright/foundation/AMessage.h>
#include <mediaCodecLogger/MediaCodecLogger.h>
#include <tests/support/FakeClock.h>
#include <tests/support/RecordingService.h>

namespace android::test {

namespace {

constexpr int64_t kNowMs = 5000;

// The service of these tests is for this process alone.
[[maybe_unused]] const int kAlone = setenv("HOSTBINDER_DIR", "", 1);

/** A codec that has registered with a service of this process, which then holds its client. */
class ClientObject : public testing::Test {
  protected:
    ClientObject() {
        const sp<RecordingService> service = new RecordingService;
        defaultServiceManager()->addService(String16(kLoggerServiceName), service);
        configure();
        logger->profileP2End();
        client = service->client();
        client->initialize(1234, true, String8("com.app"));
    }

    void configure() {
        logger->configure("c2.vendor.hevc.decoder", "video/hevc", 0, true, 0, 0, nullptr, true);
    }

    void play() {
        configure();
        logger->logInputBufferBitrate(100, 0, true, true);
        sp<AMessage> format = new AMessage;
        format->setInt32("width", 3840);
        format->setInt32("height", 2160);
        format->setInt32("color-standard", 6);
        format->setInt32("vendor.mtk-codec2.hdr-type", 0);
        format->setInt32("vendor.mtk-codec2.scan-type", 0);
        format->setInt32("vendor.mtk-codec2.color-depth", 10);
        logger->updateFormatChanged(format);
        for (long pts = 0; pts < 3 * 40000; pts += 40000) logger->updatePTSTime(pts, false, 1);
        logger->updateFrameDropCounters(0, true);
    }

    /** Bit depth, user, frames, milliseconds since the last, secure, width, height, colour. */
    std::string answers() {
        int width = 7, height = 8, color = 9;
        client->getClientResolution(width, height);
        client->getClientColorProperties(color);
        std::ostringstream text;
        text << client->getClientBitDepth() << ' ' << client->getUid() << ' '
             << client->getBufferCountSinceLastFlush() << ' '
             << client->getTimeSinceLastFrameRendered() << ' '
             << client->isVideoClientUsingSecureMem() << ' ' << width << ' ' << height << ' '
             << color;
        return text.str();
    }

    FakeClock clock{kNowMs};
    sp<MediaCodecLogger> logger = MediaCodecLogger::Create(1234, 10057);
    sp<IMediaCodecLoggerClient> client;
};

}  // namespace

TEST_F(ClientObject, answers_comeFromTheLiveLogger) {
    EXPECT_EQ(client->getTimeSinceLastFrameRendered(), kNowMs + 1) << "before the first frame";
    play();
    clock.advanceMs(42);
    EXPECT_EQ(answers(), "10 10057 2 42 1 3840 2160 6");
    EXPECT_STREQ(client->getStatus(), logger->getStatus().c_str());
    EXPECT_STREQ(client->getClientHDRType(), logger->getHDRType().c_str());
    EXPECT_STREQ(client->getClientScanType(), logger->getScanType().c_str());
    EXPECT_FALSE(client->getClientHDRType().isEmpty());
    EXPECT_FALSE(client->getClientScanType().isEmpty());
    EXPECT_STREQ(client->getClientCodecFormat(), "hevc");
}

TEST_F(ClientObject, withoutTheLogger_fallsBack) {
    play();
    logger = nullptr;
    EXPECT_EQ(answers(), "0 -1 0 0 0 7 8 9");
    for (const String8& text : {client->getStatus(), client->getClientHDRType(),
                                client->getClientScanType(), client->getClientCodecFormat()}) {
        EXPECT_STREQ(text, "");
    }
    // These never needed it.
    EXPECT_EQ(client->getPid(), 1234);
    EXPECT_TRUE(client->isVideoClient());
    EXPECT_STREQ(client->getPackageName(), "com.app");
}

TEST_F(ClientObject, initialize_dropsTheProcessSuffix) {
    const struct {
        const char* name;
        const char* kept;
    } kNames[] = {{"com.app", "com.app"}, {"com.app:remote", "com.app"}, {":remote", ""},
                  {"a:b:c", "a"},         {"com.app:", "com.app"},       {"", ""}};
    for (const auto& [name, kept] : kNames) {
        client->initialize(1, false, String8(name));
        EXPECT_STREQ(client->getPackageName(), kept) << name;
    }
    EXPECT_FALSE(client->isVideoClient());
}

}  // namespace android::test
