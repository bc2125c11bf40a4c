// SPDX-License-Identifier: Apache-2.0
#include <cutils/properties.h>
#include <mediaCodecLogger/ZephraMediaAnalytic.h>
#include <tests/support/ScopedProperties.h>

#include "LoggerTest.h"

namespace android::test {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

TEST_F(LoggerTest, whenConfigured_namesTheCodec) {
    const struct {
        CodecSetup setup;
        const char* tag;
        const char* format;
    } kCases[] = {
            {{"c2.android.avc.decoder", "video/avc"}, "SW.c2.video.avc", "avc"},
            {{"OMX.vendor.hevc", "video/hevc", 1}, "tunneled.HW.omx.video.hevc", "hevc"},
            {{"OMX.vendor.hevc", "video/hevc", 2}, "HW.omx.video.hevc", "hevc"},
            {{"C2.Android.vp9", "video/x-vnd.on2.vp9", 1}, "SW.c2.video.vp9", "vp9"},
            {{"OMX.google.vp8.decoder", "video/x-vnd.on2.vp8"}, "SW.omx.video.vp8", "vp8"},
            {{"OMX.GOOGLE.dec", "video/mp4v-es"}, "HW.omx.video.mp4v", "mp4v"},
            {{"c2.android.aac.decoder", "audio/mp4a-latm"}, "SW.c2.audio.mp4a", "mp4a"},
            {{"OMX.vendor.dec", "audio/ac3", 1}, "VND.omx.audio.ac3", "ac3"},
            {{"vendor.dec", "audio/g711-alaw"}, "VND.audio.g711", "g711"},
            {{"vendor.dec", "audio/amr-wb"}, "VND.audio.amr", "amr"},
            {{"c2.vendor", "audio"}, "VND.c2.audio.audio", "audio"},
            {{"c2.vendor", "text/a/b"}, "VND.c2.unknown.a/b", "a/b"},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.tag);
        configure(c.setup);
        EXPECT_THAT(logged(), ElementsAre("I [BRISK] " + std::string(c.tag) + " P2 + 1000"));
        EXPECT_THAT(status(), HasSubstr("\tFormat: " + std::string(c.format) + "\n"));
    }
}

TEST_F(LoggerTest, whenAName_isEmpty_theProcessDies) {
    EXPECT_DEATH(configure({"", "video/avc"}),
                 "F/MediaCodecLogger: !\\(!codecName.empty\\(\\)\\): "
                 "media/mediaCodecLogger/MediaCodecLogger:430 "
                 "CHECK\\(!codecName.empty\\(\\)\\) failed\\.\n");
    EXPECT_DEATH(configure({"", ""}), ":430 ");
    EXPECT_DEATH(configure({"c2.vendor", ""}),
                 "F/MediaCodecLogger: !\\(!mime.empty\\(\\)\\): "
                 "media/mediaCodecLogger/MediaCodecLogger:431 "
                 "CHECK\\(!mime.empty\\(\\)\\) failed\\.\n");
}

TEST_F(LoggerTest, whenPlaybackIsAdaptive_logsTheScreen) {
    const struct {
        int displayWidth, maxWidth, maxHeight;
        Lines lines;
    } kCases[] = {
            {1279, 8, 9, {"w:8 h:9, screen size:SD"}},
            {1280, 8, 9, {"w:8 h:9, screen size:SD"}},
            {1920, 8, 9, {"w:8 h:9, screen size:FHD"}},
            {3839, -8, 9, {"w:-8 h:9, screen size:FHD"}},
            {3840, 8, 9, {"w:8 h:9, screen size:4K"}},
            {3840, 8, 0, {}},
            {3840, 0, 9, {}},
    };
    for (auto c : kCases) {
        hostplatform::setDisplaySize(c.displayWidth, 1);
        configure({"c2.v", "video/avc", 0, true, true, c.maxWidth, c.maxHeight});
        for (auto& line : c.lines) line = "I HW.c2.video.avc Adaptive Streaming max " + line;
        EXPECT_EQ(loggedWith("Adaptive"), c.lines) << c.displayWidth;
    }
    // Audio does not ask for the display.
    const int queries = hostplatform::displayQueryCount();
    configure({"c2.v", "audio/x", 0, true, true, 8, 9});
    EXPECT_THAT(loggedWith("screen size:SD"), testing::SizeIs(1));
    EXPECT_EQ(hostplatform::displayQueryCount(), queries);
}

TEST_F(LoggerTest, theDisplaysClass_survivesFailuresAndStaysAt4K) {
    const auto screenIs4K = [&] {
        AString prefix;
        logger->getEmbeddedWarnings(prefix);
        return prefix.find(".4K") >= 0;
    };
    hostplatform::setDisplaySize(3840, 2160);
    hostplatform::setDisplayConnected(false);
    logger->updateDisplaySize();
    EXPECT_FALSE(screenIs4K());
    hostplatform::setDisplayConnected(true);
    hostplatform::setDisplayConfigStatus(NAME_NOT_FOUND);
    logger->updateDisplaySize();
    EXPECT_FALSE(screenIs4K());
    hostplatform::setDisplayConfigStatus(OK);
    logger->updateDisplaySize();
    EXPECT_TRUE(screenIs4K());

    const int queries = hostplatform::displayQueryCount();
    hostplatform::setDisplaySize(1280, 720);
    logger->updateDisplaySize();
    EXPECT_TRUE(screenIs4K());
    EXPECT_EQ(hostplatform::displayQueryCount(), queries);
}

TEST_F(LoggerTest, widthsMapToClasses) {
    const std::pair<unsigned, int> kCases[] = {{0, 0},    {1279, 0}, {1280, 1}, {1919, 1},
                                               {1920, 2}, {3839, 2}, {3840, 3}, {UINT32_MAX, 3}};
    for (const auto& [width, type] : kCases) EXPECT_EQ(logger->mapResolution(width), type) << width;
}

TEST_F(LoggerTest, thePidTakesThePackagesPlace) {
    EXPECT_STREQ(logger->replacePkgNameWithPid(nullptr).c_str(), PID);
    EXPECT_STREQ(logger->replacePkgNameWithPid(PKG ":svc").c_str(), PID ":svc");
    // The text is not compared, only measured.
    EXPECT_STREQ(logger->replacePkgNameWithPid(PKG).c_str(), PID PKG);
    EXPECT_STREQ(logger->replacePkgNameWithPid("short").c_str(), PID "short");
}

TEST_F(LoggerTest, thePackageName_isThatOfTheProcess) {
    const auto packageOf = [&](int pid) {
        create(pid);
        configure(kAudio);
        const std::string summary = report();
        return summary.substr(0, summary.find(".VND.c2.audio.mp4a"));
    };
    const std::string longName(80, 'x');
    EXPECT_EQ(packageOf(NamedProcess("com.app:svc").pid()), "com.app:svc");
    EXPECT_EQ(packageOf(NamedProcess("abc").pid()), "abc");
    EXPECT_EQ(packageOf(NamedProcess("ab").pid()), PKG);
    EXPECT_EQ(packageOf(NamedProcess("").pid()), PKG);
    EXPECT_EQ(packageOf(NamedProcess(longName.c_str()).pid()), longName.substr(0, 69));
    EXPECT_EQ(packageOf(kPid), PKG);
    EXPECT_THAT(program_invocation_name, StartsWith(packageOf(-1)));
    EXPECT_STREQ(logger->replacePkgNameWithPid(nullptr).c_str(), std::to_string(getpid()).c_str());
}

// A change of resolution that no frame has shown yet, and a run of drops that no frame has ended.
TEST_F(LoggerTest, whatASessionLeftOpen_isNotClosedInTheNext) {
    settle();
    changeFormat(1280, 720);
    drop();
    configure();
    log.take();
    play(40, 33333);
    EXPECT_THAT(logged(),
                testing::Each(testing::Not(testing::ContainsRegex("Resolution change|Dropped 0"))));
}

TEST_F(LoggerTest, whenDestroyed_leavesTheFrameAnalytics) {
    const ScopedProperties properties({{"mediaanalytic.enable", "1"}});
    auto& analytics = ZephraMediaAnalytic::instance();
    analytics.addCodec("name", codec, 1, 2);
    configure();
    const auto isRegistered = [&] {
        return analytics.updateInputFrame_pre(codec, nullptr, 0, nullptr, nullptr, 0, nullptr,
                                              CryptoPlugin::kMode_Unencrypted, 0, 0, false);
    };
    EXPECT_TRUE(isRegistered());
    logger = nullptr;
    EXPECT_FALSE(isRegistered());
}

}  // namespace android::test
