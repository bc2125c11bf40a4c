// SPDX-License-Identifier: Apache-2.0
#include "LoggerTest.h"

namespace android::test {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

TEST_F(LoggerTest, aStopThatNeverBegan_isLogged_butNoneOfAudio) {
    configure();
    log.take();
    after(15);
    logger->profileMCStopEnd();
    EXPECT_THAT(logged(), ElementsAre("I MC Stop Time(start: 0, stop:1015 :1015 <profileMCStopEnd "
                                      "1462>\n"));
    configure(kAudio);
    log.take();
    logger->profileMCStopBegin();
    logger->profileMCStopEnd();
    EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(LoggerTest, atTheEndOfP2_theClientIsRegistered) {
    const auto service = registerService();
    configure();
    log.take();
    logger->profileP2End();
    EXPECT_THAT(logged(),
                ElementsAre("I [BRISK] HW.c2.video.avc P2 - 1000",
                            "D Got zephra_media_codec_logger Service. Calling PID = " PID));
    EXPECT_THAT(service->take(), ElementsAre("registerClient(client)"));
    EXPECT_EQ(service->client()->getPid(), kPid);
    EXPECT_TRUE(service->client()->isVideoClient());
    EXPECT_STREQ(service->client()->getPackageName().string(), PKG);

    // Once more with the service it has; the reset in between takes it off the list.
    configure(kAudio);
    EXPECT_THAT(service->take(), ElementsAre("unregisterClient(client)"));
    log.take();
    logger->profileP2End();
    EXPECT_THAT(logged(), ElementsAre("I [BRISK] VND.c2.audio.mp4a P2 - 1000",
                                      testing::MatchesRegex("D registerClient for [0-9]+, probably "
                                                            "moved from un-initialized to "
                                                            "configured state")));
    EXPECT_THAT(service->take(), ElementsAre("registerClient(client)"));
    // The report unregisters, the destructor does not.
    report();
    EXPECT_THAT(service->take(), ElementsAre("unregisterClient(client)"));
    logger = nullptr;
    EXPECT_THAT(service->take(), IsEmpty());
}

TEST_F(LoggerTest, aTunneledCodec_opensAndClosesItsHidlMetrics) {
    const auto service = registerService();
    configure(kTunneled);
    logger->profileP2End();
    EXPECT_THAT(service->take(),
                ElementsAre("registerClient(client)", "updateHidlMediaMetrics(" PKG
                                                      ", tunneled.HW.c2.video.avc, true, false)"));
    logger->resetMetricsData();
    EXPECT_THAT(service->take(), ElementsAre("unregisterClient(client)",
                                             "updateHidlMediaMetrics(null, null, true, true)"));
}

TEST_F(LoggerTest, withLoggingOff_onlyThePhaseIsLogged) {
    const auto service = registerService();
    configure({"c2.mtk.dec", "video/avc", 1, true, false});
    log.take();
    logger->profileP2End();
    EXPECT_THAT(logged(), ElementsAre("I [BRISK] tunneled.HW.c2.video.avc P2 - 1000"));
    logger->resetMetricsData();
    EXPECT_THAT(service->take(), IsEmpty());
    EXPECT_THAT(codec->parameters(), IsEmpty());
    EXPECT_EQ(report(), "");
}

TEST_F(LoggerTest, onlyAMediaTekCodec2Decoder_isAskedForItsFormatKeys) {
    const struct {
        CodecSetup setup;
        bool subscribed;
    } kCases[] = {{{"C2.MTK.avc.decoder", "video/avc"}, true},
                  {{"c2.mtk", "audio/x"}, true},
                  {{"c2.mtk.avc.encoder", "video/avc", 0, false}, false},
                  {{"c2.android.avc.decoder", "video/avc"}, false},
                  {{"x.c2.mtk", "video/avc"}, false}};
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.setup.codecName);
        codec = new FakeCodec;
        configure(c.setup);
        logger->profileP2End();
        EXPECT_THAT(loggedWith("D Subscribe MTK C2 hdr-type, scan-type, color-depth parameters"),
                    testing::SizeIs(c.subscribed));
        const auto parameters = codec->parameters();
        ASSERT_EQ(parameters.size(), c.subscribed);
        if (!c.subscribed) continue;
        EXPECT_EQ(parameters[0]->countEntries(), 3u);
        for (const char* key : {"hdr-type", "scan-type", "color-depth"}) {
            int32_t value = -1;
            parameters[0]->findInt32((std::string("vendor.mtk-codec2.") + key).c_str(), &value);
            EXPECT_EQ(value, 0);
        }
    }
    codec = nullptr;
    configure({"c2.mtk.avc.decoder", "video/avc"});
    logger->profileP2End();
    EXPECT_THAT(loggedWith("Subscribe"), IsEmpty());
}

TEST_F(LoggerTest, anError_isLoggedAndCausesTheReport) {
    const std::pair<int, std::string> kCases[] = {{0, "DecoderErrorFatal"},
                                                  {2, "DecoderErrorRecov"},
                                                  {1, "DecoderErrorTrans"},
                                                  {-3, "DecoderErrorTrans"}};
    for (const auto& [type, key] : kCases) {
        configure(kAudio);
        log.take();
        const std::string line = "I " PID ".VND.c2.audio.mp4a." + key + " = 1";
        logger->uploadDecoderError(type);
        EXPECT_THAT(logged(), ElementsAre(line, "I " PID ".VND.c2.audio.mp4a..DecoderErrorFatal = "
                                                "1"));
        EXPECT_THAT(sent(), ElementsAre("68pc/2/03330470 .DecoderErrorFatal 1 errors [VND_mp4a] "
                                        "media=audio 1"));
        // A second one has no report.
        logger->uploadDecoderError(type);
        EXPECT_THAT(logged(), ElementsAre(line));
        EXPECT_THAT(sent(), IsEmpty());
    }
}

}  // namespace android::test
