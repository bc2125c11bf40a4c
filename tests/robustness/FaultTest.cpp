// SPDX-License-Identifier: Apache-2.0
// The logger and the frame analytics while everything around them fails.
#include <dlfcn.h>

#include <limits>
#include <memory>

#include <mediaCodecLogger/PulseLog.h>
#include <mediaCodecLogger/ZephraMediaAnalytic.h>
#include <tests/analytics/DumpFolder.h>
#include <tests/logger/LoggerTest.h>
#include <tests/support/LoggerServices.h>
#include <tests/support/ScopedProperties.h>

namespace {

bool gMetricsFail = false;

template <typename Function>
Function* next(Function*, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// Come before those of the metrics library, which they call unless a case lets them fail.

extern "C" int __pulse_log_ext_set_data(void* dataSet, const char* key, const char* value,
                                        int reserved) {
    static const auto real = next(&__pulse_log_ext_set_data, "__pulse_log_ext_set_data");
    return gMetricsFail ? -1 : real(dataSet, key, value, reserved);
}

extern "C" int __pulse_log_ext_print_v2(const char* logName, const char* source, const char* schema,
                                        const char* group, const char* name,
                                        const char* packageName, const char* unit,
                                        const char* dimension, double value, void* dataSet,
                                        int reserved, int flag) {
    static const auto real = next(&__pulse_log_ext_print_v2, "__pulse_log_ext_print_v2");
    return gMetricsFail ? -1
                        : real(logName, source, schema, group, name, packageName, unit, dimension,
                               value, dataSet, reserved, flag);
}

namespace android::test {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr uint32_t kGetOldestAudioClientCodec = 16;

class FaultTest : public LoggerTest {
  protected:
    /** A session of six seconds with all that reaches the service; returns the report. */
    std::string session(const CodecSetup& setup = kTunneled) {
        configure(setup);
        logger->profileP2End();
        frame(0);
        play(20, 33333);
        after(1500);
        play(160, 33333);
        drop(5);
        play(1, 33333);
        logger->isInMitigateFrameDropAllowlist();
        const std::string summary = report();
        nextPts = 0;
        return summary;
    }
};

// The service dies between any two calls; the codec plays on as if it were there.
TEST_F(FaultTest, whereverTheServiceDies_theReportIsTheSame) {
    const std::string expected = session();
    const Lines records = sent();
    ASSERT_THAT(expected, HasSubstr("TotalFramesDropped=5"));

    constexpr size_t kCalls = 8;
    for (size_t lifetime = 0; lifetime <= kCalls; ++lifetime) {
        SCOPED_TRACE(lifetime);
        create();
        log.take();
        const sp<MortalRemote> service =
                new MortalRemote(new RecordingService, static_cast<int>(lifetime));
        registerService(service);
        EXPECT_EQ(session(), expected);
        EXPECT_EQ(sent(), records);
        EXPECT_EQ(service->calls().size(), kCalls);
        // One dead from the start fails at its first call already.
        EXPECT_EQ(loggedWith(" registerClient fail").empty(), lifetime > 0);
        // Once more with the dead one, and with none.
        EXPECT_EQ(session(), expected);
        registerService(nullptr);
        EXPECT_EQ(session(), expected);
        EXPECT_GT(service->calls().size(), kCalls);
        sent();
    }
}

// However slow the service is, only its answer at the first frame holds up playback.
TEST_F(FaultTest, playbackDoesNotWaitForTheService) {
    const sp<MortalRemote> service = new MortalRemote(new RecordingService);
    registerService(service);
    configure();
    logger->profileP2End();
    const size_t before = service->calls().size();
    frame(0);
    for (int i = 0; i < 5; ++i) {
        play(20, 33333);
        after(1500);
        drop(3);
        logger->updateMetricsForFlush();
        changeFormat(1280 + i, 720);
    }
    const auto calls = service->calls();
    ASSERT_GT(calls.size(), before + 5);
    int waits = 0;
    for (size_t i = before; i < calls.size(); ++i) {
        if (calls[i].oneway) continue;
        ++waits;
        EXPECT_EQ(calls[i].code, kGetOldestAudioClientCodec);
    }
    EXPECT_EQ(waits, 1);
}

TEST_F(FaultTest, whenTheMetricsServiceFails_logAndSummaryAreTheSame) {
    const std::string expected = session();
    const Lines lines = logged();
    gMetricsFail = true;
    metrics.take();
    create();
    clock.advanceUs(1000000 - clock.nowUs());
    EXPECT_EQ(session(), expected);
    gMetricsFail = false;
    EXPECT_EQ(logged(), lines);
    EXPECT_THAT(sent(), testing::IsEmpty());
}

TEST_F(FaultTest, whereTheProcessCannotBeRead_thePackageIsTheDefault) {
    for (const int pid : {kPid, 0, -2, INT32_MAX, INT32_MIN, 2 /* a kernel thread, or nothing */}) {
        create(pid);
        configure(kAudio);
        EXPECT_THAT(report(), StartsWith(PKG ".VND.c2.audio.mp4a")) << pid;
    }
}

TEST_F(FaultTest, aPropertyMayHoldAnything) {
    const std::string nines(90, '9');
    const struct {
        const char* value;
        int room;             // frames that a limit of this many allows
        const char* hdrType;  // HDR type of that number
    } kCases[] = {
            {"", 129, ""},    {"0", 1, "SDR"},         {"-1", 0, ""},
            {"-7", 0, "??"},  {"5", 6, "HDR10Plus"},   {"0x4", 5, "HLG"},
            {"03", 4, "TCH"}, {"5x", 6, "HDR10Plus"},  {" 2", 3, "DOVI"},
            {"x5", 129, ""},  {"%s%n", 129, ""},       {"\xff\x01\n", 129, ""},
            {"0x", 1, "SDR"}, {"2147483648", 129, ""}, {nines.c_str(), 129, ""},
    };
    DumpFolder folder;  // a mask of all bits dumps as well
    for (const char* what : {"input_video", "output_video", "decrypted_1"}) folder.path(what);
    auto& analytics = ZephraMediaAnalytic::instance();
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.value);
        ScopedProperties properties(
                {{"mediaanalytic.enable", "true"}, {"vendor.vdecomx.hdr-type", c.value}});
        for (const char* name : {"debug", "maxqueuesize", "maxdequeuetime", "maxqueuetime",
                                 "maxmsgdelaytime", "maxdecodetime", "vsyncperiod",
                                 "maxdecrypttime", "maxerrorframe", "maxearlytime", "atrace"}) {
            properties.set((std::string("mediaanalytic.") + name).c_str(), c.value);
        }
        create();
        configure();
        ASSERT_EQ(OK, analytics.addCodec("c", codec, 1, 1));
        analytics.updateCCodecConfigs(codec, true, false, true);
        int room = 0;
        const auto announce = [&] {
            return analytics.updateInputFrame_pre(codec, nullptr, 0, nullptr, nullptr, 0, nullptr,
                                                  CryptoPlugin::kMode_Unencrypted, room, 0, false);
        };
        while (announce()) ++room;
        EXPECT_EQ(room - 1, c.room) << "the last one was refused";

        analytics.addCodec("c", codec, 1, 1);
        analytics.updateCCodecConfigs(codec, true, false, true);
        changeFormat(1920, 1080);
        EXPECT_STREQ(logger->getHDRType().c_str(), c.hdrType);
        play(3, 33333);
        logger = nullptr;
        properties.set("mediaanalytic.enable", c.value);
        analytics.addCodec("c", codec, 1, 1);
        properties.set("mediaanalytic.enable", "1");
        analytics.addCodec("c", codec, 1, 1);
        analytics.removeCodec(codec);
    }
}

/** Seconds at which a number of milliseconds no longer holds the clock. */
constexpr int64_t kBeyondMs = INT64_MAX / 1000 + 1;

// What the logger computes wraps.
TEST_F(FaultTest, atTheClocksLimits_theLoggerGoesOn) {
    for (const int64_t seconds : {int64_t{0}, kBeyondMs - 2, kBeyondMs, INT64_MAX, INT64_MIN}) {
        configure();
        logger->profileP2End();
        frame(0);
        clock.leapTo(seconds);
        play(200, 33333);
        drop(2);
        logger->updateMetricsForFlush();
        logger->profileP3End();
        EXPECT_NE(report(), "") << seconds;
        clock.leapTo(1);
    }
}

// What the analytics compute is fatal where it would wrap, and says so.
TEST_F(FaultTest, beyondTheClocksLimits_theAnalyticsEndTheProcess) {
    const ScopedProperties properties({{"mediaanalytic.enable", "true"}});
    auto& analytics = ZephraMediaAnalytic::instance();
    analytics.addCodec("c", codec, 1, 1);
    analytics.updateCCodecConfigs(codec, true, false, true);
    configure();
    clock.leapTo(kBeyondMs - 2);
    play(3, 33333);
    for (const int64_t seconds : {kBeyondMs, -kBeyondMs - 1, INT64_MAX, INT64_MIN}) {
        EXPECT_EXIT(
                {
                    clock.leapTo(seconds);
                    input(nextPts + 1);
                    analytics.updateQueueBuffer(codec, 0, 0, 0, nullptr);
                },
                testing::KilledBySignal(SIGABRT),
                "F/ZMediaAnalyticV: overflow: arithmetic overflow: -?[0-9]+ \\* 1000\n$")
                << seconds;
    }
    analytics.removeCodec(codec);
}

// Names and texts of others go into lines, records and answers as they are: never read as a
// format, never written past a buffer.
TEST_F(FaultTest, namesAreNoFormats) {
    const std::string hostile = "%s%n%1000000d%\x01\x1b[31m\xff";
    const std::string codecName = "c2." + hostile + std::string(4096, 'x');
    const std::string mime = "video/" + hostile;
    const std::string package = "com." + hostile;
    const std::string tag = "HW.c2.video." + hostile;
    const NamedProcess process(package.c_str());
    const auto service = registerService();
    service->oldestAudioCodec = hostile.c_str();
    logger = MediaCodecLogger::Create(process.pid(), 1000);
    const ScopedProperties properties(
            {{"mediaanalytic.enable", "true"}, {"mediaanalytic.debug", "0xf047f"}});
    auto& analytics = ZephraMediaAnalytic::instance();
    analytics.addCodec(codecName.c_str(), codec, 1, 1);
    analytics.updateCCodecConfigs(codec, true, false, true);

    configure({codecName.c_str(), mime.c_str(), 0, true, true, 4096, 2304});
    logger->profileP2End();
    vendor((hostile + " CodecNonFatalErrorCount=3 " + hostile).c_str());
    logger->queueInputBuffer_pre(nullptr, 0, nullptr, nullptr, 0, nullptr,
                                 CryptoPlugin::kMode_Unencrypted, 0, clock.nowUs(), false);
    frame(0);
    after(501);
    play(200, 33333);
    drop(10);
    play(1, 33333);
    const std::string pid = std::to_string(process.pid());
    const auto client = service->client();
    EXPECT_STREQ(client->getPackageName().string(), package.c_str());
    EXPECT_STREQ(client->getClientCodecFormat().string(), hostile.c_str());
    EXPECT_THAT(status(), HasSubstr("\tFormat: " + hostile + "\n"));

    const std::string summary = report();
    EXPECT_THAT(summary, StartsWith(package + "." + tag + ":"));
    EXPECT_THAT(summary, HasSubstr(":CodecNonFatalErrorCount=3"));
    const Lines lines = logged();
    EXPECT_THAT(lines, Contains(StartsWith("I [BRISK] " + tag + " P2 + ")));
    EXPECT_THAT(lines, Contains("I " + pid + "." + tag + " Dropped 10 frames"));
    EXPECT_THAT(lines, Contains("I " + pid + "." + tag + ".TotalFramesDropped = 10"));
    EXPECT_THAT(lines, Contains(StartsWith("I/ZMediaAnalyticV " + hostile + " Frame:")));
    const auto records = metrics.take();
    ASSERT_FALSE(records.empty());
    for (const auto& record : records) {
        EXPECT_EQ(record.packageName, package);
        if (record.name == "VideoCodec") {
            EXPECT_EQ(record.dimension, "HW_" + hostile);
        } else if (record.name == "TotalFrameDrops") {
            EXPECT_EQ(record.data[0].second, hostile);
        }
    }
    logger = nullptr;
}

}  // namespace
}  // namespace android::test
