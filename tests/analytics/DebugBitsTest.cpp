// SPDX-License-Identifier: Apache-2.0
// Each bit of the debug mask does what it is for and nothing else.

#include <algorithm>
#include <map>

#include <cutils/properties.h>
#include <cutils/trace.h>
#include <hostplatform/Trace.h>
#include <tests/analytics/DumpFolder.h>
#include <tests/analytics/FramePlayer.h>

namespace android::test {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

using Lines = std::vector<LogLine>;
using LinesOfBits = std::map<uint32_t, Lines>;

class DebugBitsTest : public AnalyticsTest {
  protected:
    /** One frame from input to display with every event of the road; the lines that it logs. */
    Lines life(const CodecKind& kind, const std::string& mask);

    /** `expected` holds the lines of each bit that has any; the dump bits need the folder. */
    void check(const CodecKind& kind, const LinesOfBits& expected);

    DumpFolder folder;
};

Lines DebugBitsTest::life(const CodecKind& kind, const std::string& mask) {
    debug(mask.c_str());
    restartNumbers();
    log.take();
    FramePlayer player(kind);
    player.announce(1000);
    after(2);
    player.queue(1000);
    player.handOver(1000);
    after(5);
    player.deliver(1000);
    analytics.updateACodecOutput(player.codec, "abcd", nullptr, 4);
    after(3);
    const int64_t now = clock.nowMs();
    player.toDisplay(8, now - 11, now + 10, 1000);
    player.render(1000, 10);
    player.fromDisplay(16, now - 100, 2);
    Lines lines = log.take();
    const auto isSync = [](const LogLine& line) { return line.text.rfind("AVSYNC_V:", 0) == 0; };
    // The statistics line of the first render comes with any mask.
    EXPECT_EQ(kind.isVideo && !kind.trackingOff, std::any_of(lines.begin(), lines.end(), isSync));
    lines.erase(std::remove_if(lines.begin(), lines.end(), isSync), lines.end());
    return lines;
}

void DebugBitsTest::check(const CodecKind& kind, const LinesOfBits& expected) {
    for (uint32_t bit = 0x400000; bit != 0; bit >>= 1) {
        const bool isDump = bit & (0x80 | 0x100 | 0x200 | 0x80000 | 0x100000 | 0x200000);
        if (isDump && !folder.exists()) continue;
        const auto lines = expected.find(bit);
        after(kStart - clock.nowMs());  // the lines show times
        EXPECT_THAT(life(kind, std::to_string(bit)),
                    ElementsAreArray(lines != expected.end() ? lines->second : Lines{}))
                << kind.name << " with bit 0x" << std::hex << bit;
    }
    EXPECT_THAT(life(kind, "0"), IsEmpty());
}

// What the surface path logs of any codec.
const Lines kSlowSurface = {
        info("queueBuffer cost:11 ts:1000"),
        info("Warning queueBuffer early too small:10 ms ts:1000"),
        info("dequeue actual:100(100) theory:0 renderTime:-1 index:-1 0x10"),
};
const Lines kDequeue = {
        info("dequeue actual:100(100) theory:0 renderTime:-1 index:-1 ownedByCom:2 ownByNat:1 "
             "0x10"),
};
const Lines kQueueBuffer = {info("queueBuffer rendertime:10020000000, mediatime:1000 size:1")};

Lines dumpOpened(const char* what) {
    return {info("fopen " + DumpFolder::path(what))};
}

/** The lines of the bits that do the same for decoders and encoders of video. */
LinesOfBits videoBits(const std::string& name, bool isDecoder) {
    LinesOfBits lines = {
            {0x4, {info(name + " Render R-S:10 R:10020(10020) pts:1000 0/1")}},
            {0x8, kDequeue},
            {0x20, kQueueBuffer},
            {0x40, {info("S:0 v:1 t:1000")}},
            {0x80, dumpOpened("input_video")},
            {0x100, dumpOpened("decrypted_1")},
            {0x200, dumpOpened("output_video")},
    };
    lines[0x200].push_back(info("write output size:4"));
    for (uint32_t bit = 0x10000; bit <= 0x400000; bit <<= 1) {
        lines[bit] = {info(name + " input:0 output:0 minUndequeue:0 video:1 decoder:" +
                           std::to_string(isDecoder))};
    }
    return lines;
}

TEST_F(DebugBitsTest, ofAnOmxVideoDecoder) {
    // Fed at 10000, queued and handed over at 10002, decoded and output at 10007, rendered at
    // 10010; media time is 1 ms.
    const std::string stages =
            "1000(10006) TD:1 FARD:(10007) FAD:10007(0) AL:0(10007) FL:5(5) 0/1$I:-5(1:0)";
    const std::string latency =
            "omx Frame:1 Frame latency in MediaCodec: 5 Frame latency in Codec: 5 1000 s:1 i:0";
    const std::string app =
            "omx Frame:1 AL: App Latency: time spent by frame after it is ready in MediaCodec but "
            "before app handles it ";
    LinesOfBits expected = videoBits("omx", true);
    expected.insert({
            {0x1,
             {info("omx ETB:1000 s:1000 tsS:1"),
              info("omx Omx ETB:1000 size:1000 c:3 tsS:1 flag:0")}},
            {0x2,
             {info("omx OMX FBD FL:5 mediaTs:1000 f:0 s:5000/1"), info("omx FBD mediaTs:1000, 0/1"),
              info("Pre-Render FBD:" + stages)}},
            {0x400,
             {info("omx Frame:1 Decrypt cost:2 ts:1000 size:1000"),
              info("omx Frame:1 sent to Omx, ETB(Empty this buffer) Timestamp:1000 size:1000 "
                   "frames owned by OMX:3 tsS:1 flag:0"),
              info("omx Frame:1 Decoded and filled into output buffer, FBD(Fill buffer done) "
                   "mediaTs:1000, 0/1"),
              info(latency), info(app + "0"), info("Pre-Render omx:" + stages), kSlowSurface[0],
              kSlowSurface[1], info(latency), info(app + "3"),
              info("Pre-Render Small_Early:10:1000(10009) TD:1 FARD:(10007) FAD:10007(0) "
                   "AL:3(10010) FL:5(5) 0/1$I:-5(1:0)"),
              kSlowSurface[2]}},
    });
    check(kOmxVideo, expected);
}

TEST_F(DebugBitsTest, ofACodec2VideoDecoder) {
    EXPECT_THAT(life(kCodec2Video, "2"),
                ElementsAre(info("c2 C2 OWD FL:5 mediaTs:1000 f:0 0/1"),
                            info("c2 OWD mediaTs:1000, 0/1"),
                            info("Pre-Render OWD:1000(10006) TD:1 FARD:(10007) FAD:10007(0) "
                                 "AL:0(10007) FL:5(5) 0/1$I:-5(1:0)")));
    after(kStart - clock.nowMs());
    EXPECT_THAT(life(kCodec2Video, "0x400"),
                ::testing::Contains(info("c2 Frame:1 Decoded and filled into output buffer, Output "
                                         "onWorkDone mediaTs:1000, 0/1")));
}

TEST_F(DebugBitsTest, ofAVideoEncoder) {
    // Nothing stamps its record but the render, so that the stages show the initial values.
    LinesOfBits expected = videoBits("enc", false);
    expected.insert({
            {0x1,
             {info("enc ETB:1000, size:1000"),
              info("enc Omx ETB:1000 size:1000 c:3 tsS:1 flag:0")}},
            {0x2, {info("enc OMX FBD mediaTs:1000 f:0 s:5001"), info("enc FBD:1000")}},
            {0x400,
             {kSlowSurface[0], kSlowSurface[1],
              info("enc Frame:1 Frame latency in MediaCodec: 0 Frame latency in Codec: 0 1000 s:1 "
                   "i:0"),
              info("enc Frame:1 AL: App Latency: time spent by frame after it is ready in "
                   "MediaCodec but before app handles it 10011"),
              info("Pre-Render Small_Early:10:1000(10009) TD:1 FARD:(-1) FAD:0(-1) "
                   "AL:10011(10010) FL:0(0) 0/1"),
              kSlowSurface[2]}},
    });
    check(kVideoEncoder, expected);
}

TEST_F(DebugBitsTest, ofCodecsWithoutRecords) {
    for (const CodecKind& kind : {kAudio, kUntracked}) {
        const std::string name = kind.name;
        const LogLine counts = info(name + " input:0 output:0 minUndequeue:0 video:0 decoder:1");
        LinesOfBits expected = {{0x8, kDequeue}, {0x20, kQueueBuffer}, {0x400, kSlowSurface}};
        for (uint32_t bit = 0x10000; bit <= 0x400000; bit <<= 1) expected[bit] = {counts};
        const auto also = [&](uint32_t bit, const Lines& lines) {
            expected[bit].insert(expected[bit].end(), lines.begin(), lines.end());
        };
        also(0x10000, {info(name + " ETB:1000, size:1000"),
                       info(name + " Omx ETB:1000 size:1000 c:3 tsS:0 flag:0")});
        also(0x20000, {info(name + " OMX FBD mediaTs:1000 f:0 s:5000"), info(name + " FBD:1000")});
        also(0x40000, {info("S:0 v:0 t:1000")});
        also(0x80000, dumpOpened("input_audio"));
        also(0x100000, dumpOpened("decrypted_0"));
        also(0x200000, dumpOpened("output_audio"));
        also(0x200000, {info("write output size:4")});
        check(kind, expected);
    }
}

TEST_F(DebugBitsTest, bit0x10TracesTheDropsAndSaysSoInAProperty) {
    const auto dropOne = [&](const char* mask, uint64_t tags) {
        hostplatform::setTraceTags(tags);
        hostplatform::takeTraceCounters();
        properties.set("mediaanalytic.atrace", "");
        debug(mask);
        FramePlayer player;
        player.feed(1000);
        player.drop(1000);
        char value[PROPERTY_VALUE_MAX];
        property_get("mediaanalytic.atrace", value, "unset");
        return std::string(value);
    };
    EXPECT_EQ("on", dropOne("0x10", ATRACE_TAG_VIDEO));
    const auto counters = hostplatform::takeTraceCounters();
    ASSERT_EQ(1u, counters.size());
    EXPECT_EQ("drop_sysTime", counters[0].name);
    EXPECT_EQ(kStart, counters[0].value);

    EXPECT_EQ("on", dropOne("0x10", ATRACE_TAG_AUDIO)) << "the property asks for the trace";
    EXPECT_THAT(hostplatform::takeTraceCounters(), IsEmpty());
    EXPECT_EQ("unset", dropOne("0xef", ATRACE_TAG_VIDEO));
    EXPECT_THAT(hostplatform::takeTraceCounters(), IsEmpty());
    hostplatform::setTraceTags(0);
}

TEST_F(DebugBitsTest, theMaskIsDecimalUnlessItBeginsWith0x) {
    const struct {
        const char* text;
        uint32_t bits;  ///< of 0xf
    } cases[] = {
            {"", 0},      {"5", 0x5},  {"0x5", 0x5}, {"0xaF", 0xf}, {"0X5", 0},
            {"010", 0xa}, {" 3", 0x3}, {" 0x3", 0},  {"-1", 0xf},   {"12abc", 0xc},
            {"abc", 0},   {"0x", 0},   {"0xzz", 0},  {"0x-1", 0},   {"0x80000004", 0x4},
    };
    const struct {
        uint32_t bit;
        const char* line;
    } signs[] = {{0x1, "omx ETB:"},
                 {0x2, "omx FBD mediaTs:"},
                 {0x4, "omx Render "},
                 {0x8, "ownedByCom"}};
    for (const auto& c : cases) {
        uint32_t bits = 0;
        for (const LogLine& line : life(kOmxVideo, c.text)) {
            for (const auto& sign : signs) {
                if (line.text.find(sign.line) != std::string::npos) bits |= sign.bit;
            }
        }
        EXPECT_EQ(c.bits, bits) << "\"" << c.text << "\"";
    }
}

}  // namespace
}  // namespace android::test
