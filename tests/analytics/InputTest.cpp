// SPDX-License-Identifier: Apache-2.0
// The way in: records and their limit, names, the log of input bytes.

#include <memory>

#include <tests/analytics/FramePlayer.h>

namespace android::test {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

using InputTest = AnalyticsTest;

/** Inputs that a codec takes before it is dropped; stops at `most`. */
int acceptedInputs(int most) {
    FramePlayer player;
    int count = 0;
    while (count < most && player.announce(count * 1000)) ++count;
    return count;
}

TEST_F(InputTest, theQueueHoldsOneFrameMoreThanItsLimit) {
    // The call that is refused answers true as well, hence 2 more than the limit.
    const LogLine full = warning("omx queue full:129, first ts:0, last ts:129000");
    EXPECT_EQ(130, acceptedInputs(1000));
    EXPECT_THAT(log.take(), ElementsAre(full));
    properties.set("mediaanalytic.maxqueuesize", "1");
    EXPECT_EQ(3, acceptedInputs(1000));
    EXPECT_THAT(log.take(), ElementsAre(warning("omx queue full:2, first ts:0, last ts:2000")));
    properties.set("mediaanalytic.maxqueuesize", "0");
    EXPECT_EQ(2, acceptedInputs(1000));
    properties.set("mediaanalytic.maxqueuesize", "-1");
    EXPECT_EQ(1, acceptedInputs(1000));
    EXPECT_THAT(log.take(), IsEmpty()) << "a limit below 1 refuses silently";
}

TEST_F(InputTest, onlyVideoKeepsRecords) {
    properties.set("mediaanalytic.maxqueuesize", "0");
    for (const CodecKind& kind : {kAudio, kUntracked, kVideoEncoder}) {
        FramePlayer player(kind);
        for (long ts = 0; ts < 10; ++ts) player.announce(ts);
        // An encoder's records are opened although nothing ever closes them.
        EXPECT_EQ(!kind.isDecoder, !player.announce(10)) << kind.name;
    }
}

TEST_F(InputTest, warnsOfEveryUnknownTimestamp) {
    FramePlayer player;
    std::vector<LogLine> expected;
    for (int i = 0; i < 20; ++i) {
        player.queue(-5);
        player.handOver(-5);
        expected.push_back(warning("omx Not found when updateInputFrame ts:-5"));
        expected.push_back(warning("omx Not found when updateOmxInput ts:-5"));
    }
    EXPECT_THAT(log.take(), ElementsAreArray(expected));
}

TEST_F(InputTest, theFormatNameReplacesTheCodecsNameOnce) {
    debug("1");
    FramePlayer player;
    const auto queueAs = [&](const char* format) {
        player.announce(0);
        analytics.updateInputFrame(player.codec, 7, 0, false, format);
        return log.take();
    };
    EXPECT_THAT(queueAs(""), ElementsAre(info(" ETB:0 s:7 tsS:1")));
    EXPECT_THAT(queueAs("avc"), ElementsAre(info("avc ETB:0 s:7 tsS:2")));
    EXPECT_THAT(queueAs("hevc"), ElementsAre(info("avc ETB:0 s:7 tsS:3")));
}

TEST_F(InputTest, ofTwoFramesWithOneTimestampTheOlderIsMeant) {
    debug("2");
    FramePlayer player;
    player.feed(1000);
    after(10);
    player.announce(1000);
    player.queue(1000);  // stamps the older record once more
    after(4);
    player.handOver(1000);
    after(1);
    player.decode(1000);
    EXPECT_THAT(log.take(), ElementsAre(info("omx OMX FBD FL:1 mediaTs:1000 f:0 s:5000/2")));
}

TEST_F(InputTest, whenTheClientOwnsEveryFrame_onlyOmxWarns) {
    for (const CodecKind& kind : {kOmxVideo, kCodec2Video}) {
        FramePlayer player(kind);
        player.feed(1000);
        player.decode(1000);
        player.decode(1000);  // reported twice: one record, two frames owned
        player.announce(2000);
        player.queue(2000);
        player.handOver(2000, 0x10);
    }
    EXPECT_THAT(log.take(),
                ElementsAre(warning("omx Omx ETB:2000 size:1000 c:3 u:2 tsS:2 flag:10")));
}

// Input bytes

constexpr uint8_t kBytes[] = {0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07,
                              0x08, 0x09, 0x0a, 0xff, 0xfe, 0xfd, 0xfc, 0xfb};

class InputBytesTest : public AnalyticsTest {
  protected:
    std::vector<LogLine> logged(const uint8_t* data, size_t size, const uint8_t* iv,
                                const std::vector<CryptoPlugin::SubSample>& samples) {
        if (player == nullptr) player = std::make_unique<FramePlayer>();
        analytics.updateInputFrame_pre(player->codec, data, size, nullptr, iv, samples.size(),
                                       samples.data(), CryptoPlugin::kMode_AES_CTR, 1000, 0,
                                       !samples.empty());
        return log.take();
    }

    std::unique_ptr<FramePlayer> player;  // made when the case has set its mask
};

TEST_F(InputBytesTest, showTheHeadOfTheBufferOrOfEachSubSample) {
    debug("0x40");
    const std::string head = " 00 01 02 03 04 05 06 07 08 09";
    const LogLine iv = info("iv:00 01 02 03 04 05 06 07 08 09 0a ff fe fd fc fb");
    EXPECT_THAT(logged(kBytes, 16, kBytes, {}), ElementsAre(info("S:16 v:1 t:1000" + head)));
    EXPECT_THAT(logged(kBytes, 3, nullptr, {}), ElementsAre(info("S:3 v:1 t:1000 00 01 02")));
    EXPECT_THAT(logged(nullptr, 3, nullptr, {}), ElementsAre(info("S:3 v:1 t:1000")));
    EXPECT_THAT(logged(kBytes, 16, kBytes, {{2, 1}}),
                ElementsAre(iv, info("s:0 v:1 t:1000 c:2 e:1 S:16 00 01 02")));
    EXPECT_THAT(logged(kBytes, 16, nullptr, {{5, 6}, {0, 2}, {0, 0}, {1, 1}}),
                ElementsAre(info("s:0 v:1 t:1000 c:5 e:6 S:16" + head),
                            info("s:1 v:1 t:1000 c:0 e:2 S:16 ff fe"),
                            info("s:2 v:1 t:1000 c:0 e:0 S:16"),
                            info("s:3 v:1 t:1000 c:1 e:1 S:16 fd fc")));
}

TEST_F(InputBytesTest, stayInsideTheBuffer) {
    debug("0x40");
    EXPECT_THAT(
            logged(kBytes, 4, nullptr, {{3, 0}, {4, 0}, {4, 0}}),
            ElementsAre(info("s:0 v:1 t:1000 c:3 e:0 S:4 00 01 02"),
                        info("s:1 v:1 t:1000 c:4 e:0 S:4 03"), info("s:2 v:1 t:1000 c:4 e:0 S:4")));
    EXPECT_THAT(logged(nullptr, 4, nullptr, {{0, 4000000000}, {1, 0}}),
                ElementsAre(info("s:0 v:1 t:1000 c:0 e:-294967296 S:4"),
                            info("s:1 v:1 t:1000 c:1 e:0 S:4")));
}

TEST_F(InputBytesTest, aSubSampleThatOverflowsIsFatal) {
    debug("0x40");
    EXPECT_DEATH(logged(kBytes, 16, nullptr, {{0xffffffff, 1}}),
                 "F/ZMediaAnalyticV: overflow: arithmetic overflow: 4294967295 \\+ 1");
    debug("0");
    player.reset();
    EXPECT_THAT(logged(kBytes, 16, nullptr, {{0xffffffff, 1}}), IsEmpty());
}

}  // namespace
}  // namespace android::test
