// SPDX-License-Identifier: Apache-2.0
#include <hostplatform/ColorConversion.h>
#include <tests/support/ScopedProperties.h>

#include "LoggerTest.h"

namespace android::test {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class FormatTest : public LoggerTest {
  protected:
    using Keys = std::vector<std::pair<const char*, int32_t>>;

    void change(const Keys& keys, const std::vector<int32_t>& crop = {}) {
        sp<AMessage> format = new AMessage;
        for (const auto& [key, value] : keys) format->setInt32(key, value);
        if (!crop.empty()) format->setRect("crop", crop[0], crop[1], crop[2], crop[3]);
        logger->updateFormatChanged(format);
    }
    std::string prefix() {
        AString text;
        logger->getEmbeddedWarnings(text);
        return text.c_str();
    }
};

TEST_F(FormatTest, aChange_logsWhatTheMessageSays) {
    const std::string unknown = ", hdrType = -1, scanType = -1, bitDepth = -1, colorStandard = 0";
    const struct {
        Keys keys;
        std::vector<int32_t> crop;
        std::string line;
    } kCases[] = {
            {{}, {}, "width = 0 height = 0" + unknown},
            {{{"width", 1920}}, {}, "width = 1920 height = 0" + unknown},
            {{{"width", 1920}, {"height", 1088}},
             {0, 0, 1919, 1079},
             "width = 1920 height = 1080" + unknown},
            {{}, {INT32_MIN, 8, INT32_MAX, 7}, "width = 0 height = 0" + unknown},
            {{{"vendor.vdecomx.hdr-type", 1},
              {"vendor.mtk-codec2.hdr-type", 2},
              {"vendor.mtk-codec2.color-depth", 10},
              {"vendor.mtk-codec2.scan-type", 1},
              {"color-standard", 64}},
             {},
             "width = 0 height = 0, hdrType = 1, scanType = 1, bitDepth = 10, colorStandard = 64"},
    };
    configure();
    log.take();
    for (const auto& c : kCases) {
        change(c.keys, c.crop);
        EXPECT_THAT(logged(), ElementsAre("I updateFormatChanged " + c.line));
    }
}

TEST_F(FormatTest, theGetters_answerTheLastChange) {
    configure();
    change({{"width", 1280},
            {"vendor.vdecomx.bitdepth", -1},
            {"vendor.vdecomx.scan-type", 0},
            {"color-standard", 6}});
    // What a message does not say stays, the size aside.
    change({{"height", 8}});
    int width, height, standard;
    logger->getResolution(width, height);
    logger->getColorProperties(standard);
    EXPECT_THAT((std::vector<int>{width, height, logger->getBitDepth(), standard}),
                ElementsAre(0, 8, -1, 6));
    EXPECT_STREQ(logger->getScanType().c_str(), "progressive");

    // A reset clears the numbers and keeps the texts.
    logger->resetMetricsData();
    logger->getResolution(width, height);
    logger->getColorProperties(standard);
    EXPECT_THAT((std::vector<int>{width, height, logger->getBitDepth(), standard}),
                ElementsAre(0, 0, 0, 0));
    EXPECT_STREQ(logger->getScanType().c_str(), "progressive");
}

TEST_F(FormatTest, hdrAndScanTypes_haveNames) {
    constexpr char kHdr[] = "vendor.mtk-codec2.hdr-type";
    constexpr char kScan[] = "vendor.mtk-codec2.scan-type";
    const struct {
        const char* property;
        Keys keys;
        const char* hdrType;
        const char* scanType;
    } kCases[] = {
            {"", {}, "", ""},
            {"", {{kHdr, 0}, {kScan, 0}}, "SDR", "progressive"},
            {"", {{kHdr, 1}, {kScan, 1}}, "HDR10", "interlace"},
            {"", {{kHdr, 2}, {kScan, 2}}, "DOVI", "??"},
            {"", {{kHdr, 3}, {kScan, -1}}, "TCH", "??"},
            {"", {{kHdr, 4}}, "HLG", "??"},
            {"", {{kHdr, 5}}, "HDR10Plus", "??"},
            {"", {}, "HDR10Plus", "??"},
            {"", {{kHdr, 6}}, "??", "??"},
            {"4", {}, "HLG", "??"},
            {"-1", {}, "HLG", "??"},
            // The message goes before the property, also when it says -1.
            {"0", {{kHdr, -1}}, "??", "??"},
            {"0", {{"vendor.vdecomx.hdr-type", 1}, {kHdr, 2}}, "HDR10", "??"},
    };
    configure();
    ScopedProperties properties;
    for (const auto& c : kCases) {
        properties.set("vendor.vdecomx.hdr-type", c.property);
        change(c.keys);
        EXPECT_STREQ(logger->getHDRType().c_str(), c.hdrType);
        EXPECT_STREQ(logger->getScanType().c_str(), c.scanType);
    }
}

TEST_F(FormatTest, anExtendedColorStandard_isConverted) {
    configure();
    log.take();
    const auto standardOf = [&](int32_t value) {
        change({{"color-standard", value}});
        int standard = -1;
        logger->getColorProperties(standard);
        return standard;
    };
    EXPECT_EQ(standardOf(64), 64);
    EXPECT_THAT(loggedWith("extend"), IsEmpty());
    // 64 + 6 + 7 * 5: BT2020 primaries and matrix.
    EXPECT_EQ(standardOf(105), 6);
    EXPECT_THAT(loggedWith("extend"),
                ElementsAre("I updateFormatChanged convert extend color changed from [105] to "
                            "standard [6] !"));
    hostplatform::setColorConversionFailure(BAD_VALUE);
    EXPECT_EQ(standardOf(105), 105);
    EXPECT_THAT(loggedWith("extend"), IsEmpty());

    sp<AMessage> format = new AMessage;
    format->setInt32("color-standard", 105);
    int standard = 42;
    EXPECT_EQ(logger->convertExtendedColorToStandard(format, standard), BAD_VALUE);
    EXPECT_EQ(standard, 42);
    hostplatform::setColorConversionFailure(OK);
    EXPECT_EQ(logger->convertExtendedColorToStandard(format, standard), OK);
    EXPECT_EQ(standard, 6);
}

TEST_F(FormatTest, aChange_closesTheSegmentAtTheOldClass) {
    configure();
    frame(0);
    changeFormat(1280, 720);
    play(60, 100000);
    log.take();
    // 60 frames in 6 s.
    changeFormat(1080, 1920);
    EXPECT_THAT(loggedWith("fps"), ElementsAre("I " PID ".HW.c2.video.avc.framerate = 10.000 fps"));
    // Portrait is SD, because only the width counts.
    play(10, 100000);
    changeFormat(1920, 800);
    play(20, 100000);
    changeFormat(4096, 800);
    play(30, 100000);
    changeFormat(3840, 2160);
    // A segment that ends before it began adds nothing, and the next starts where it ended: 3 + 2
    // s.
    output(-2000000);
    changeFormat(3840, 2160);
    output(0);
    EXPECT_THAT(report(), testing::HasSubstr(":videoResolution.SD=1000:videoResolution.HD=6000:"
                                             "videoResolution.FHD=2000:videoResolution.UHD=5000:"));
}

TEST_F(FormatTest, anEncodersChange_isIgnored) {
    configure({"c2.vendor.avc.encoder", "video/avc", 0, false});
    log.take();
    change({{"width", 1280}, {"color-standard", 6}});
    int width = 0, height = 0, standard = 0;
    logger->getResolution(width, height);
    logger->getColorProperties(standard);
    EXPECT_THAT((std::vector<int>{width, standard}), ElementsAre(0, 0));
    EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(FormatTest, vendorValues_followTheirKeys) {
    const std::pair<const char*, long> kCases[] = {
            {"abc=5", 5},  {"abc=", 0},        {"abc", 0},    {"", 0},
            {"x", 0},      {"abc=-12;d", -12}, {"abc:x", 0},  {"xabc=7abc=8", 7},
            {"abc==5", 0}, {"abc= 6", 6},      {"abc=0x1", 0}};
    for (const auto& [text, value] : kCases) {
        EXPECT_EQ(logger->parseMetricValue(text, "abc"), value) << text;
    }
}

TEST_F(FormatTest, displayDrops_areRenderedButNotShown) {
    settle();
    for (int i = 1; i < 100; ++i) render(0);
    log.take();
    vendor("HWCRenderFrameCount=100;TunnelFrameDropCount=7");
    vendor("HWCRenderFrameCount=101;");
    vendor("HWCRenderFrameCount=0;");
    EXPECT_THAT(logged(), IsEmpty());
    EXPECT_THAT(status(), testing::HasSubstr("FramesDropped: 0\n"));
    vendor("HWCRenderFrameCount=90;");
    EXPECT_THAT(logged(), ElementsAre("I 10 frames were dropped in SurfaceFlinger or HWC."));
    // The total grows by each report.
    vendor("HWCRenderFrameCount=90;");
    EXPECT_THAT(status(), testing::HasSubstr("FramesDropped: 20\n"));
    // The display's share is that of the last one.
    for (const long pts : {5000000, 10000000}) output(pts);
    EXPECT_THAT(report(), testing::HasSubstr(":DisplayFramesDropped=10:MediaCodecFramesDropped=10:"
                                             "TotalFramesDropped=20:"));

    settle(kTunneled);
    vendor("HWCRenderFrameCount=90;TunnelFrameDropCount=7");
    EXPECT_THAT(status(), testing::HasSubstr("FramesDropped: 7\n"));
}

TEST_F(FormatTest, thePrefix_tellsWarningsScreenSecurityAndTag) {
    settle();
    EXPECT_EQ(prefix(), PID ".HW.c2.video.avc");
    vendor("MaxConsecutiveFramesDropped=9;");
    for (int i = 0; i < 10; ++i) output(33333);
    EXPECT_EQ(prefix(), PID ".HW.c2.video.avc");
    vendor("MaxConsecutiveFramesDropped=10;");
    EXPECT_EQ(prefix(), "W.mcfd10." PID ".HW.c2.video.avc");
    vendor("MaxConsecutiveFramesDropped=3;");
    vendor("");
    output(33333);
    EXPECT_EQ(prefix(), "W.mcfd10.rot11." PID ".HW.c2.video.avc");
    secure = true;
    input(33333);
    input(33333);
    for (int i = 0; i < 10; ++i) output(33333);
    EXPECT_EQ(prefix(), "W.mcfd10.rot21." PID ".secureSW.HW.c2.video.avc");
    output(33333);
    EXPECT_EQ(prefix(), "W.mcfd10.rot22.rit11." PID ".secureSW.HW.c2.video.avc");
    secureMemory = true;
    input(0);
    hostplatform::setDisplaySize(3840, 2160);
    logger->updateDisplaySize();
    EXPECT_EQ(prefix(), "W.mcfd10.rot22.rit11." PID ".4K.secure.HW.c2.video.avc");
}

}  // namespace android::test
