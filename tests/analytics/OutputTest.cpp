// SPDX-License-Identifier: Apache-2.0
// The way out, the flush and the buffer counts.

#include <tests/analytics/FramePlayer.h>

namespace android::test {
namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

constexpr int kEndOfStream = 0x1;

class OutputTest : public AnalyticsTest {
  protected:
    /** Drops the frame; whether it counted as decoded and not yet given back. */
    bool wasOwned(FramePlayer& player, long timeUs) {
        player.drop(timeUs);
        const auto lines = log.take();
        EXPECT_FALSE(lines.empty());
        return !(lines.back() == warning("mFramesOwnedByUs is 0 unexpectedly"));
    }
};

TEST_F(OutputTest, anOmxBufferCountsWhenItHoldsAKnownFrame) {
    const auto notFound = [](const std::string& frame, const char* flags) {
        return std::vector<LogLine>{warning("omx not found ts:" + frame + " infos Size:1 flag:" +
                                            flags + " when updateOmxOutput")};
    };
    const struct {
        long timeUs;
        int flags;
        unsigned size;
        const char* mask;
        bool owned;
        std::vector<LogLine> lines;
    } cases[] = {
            {1000, 0, 500, "0", true, {}},
            {1000, 0x10, 500, "2", true, {info("omx OMX FBD FL:0 mediaTs:1000 f:16 s:5000/1")}},
            {1000, kEndOfStream, 500, "2", false, {}},
            {1000, kEndOfStream | 0x10, 0, "2", false, {}},
            {1000, 0, 0, "0", false, {}},
            {1000, 0, 0, "2", false, notFound("1000 size:0", "0")},
            {1001, 2, 7, "0", false, notFound("1001 size:7", "2")},
            {1001, 0, 0, "0", false, {}},
    };
    for (const auto& c : cases) {
        debug(c.mask);
        FramePlayer player;
        player.feed(1000);
        log.take();
        analytics.updateOmxOutput(player.key, c.timeUs, c.flags, c.size);
        EXPECT_THAT(log.take(), ElementsAreArray(c.lines));
        EXPECT_EQ(c.owned, wasOwned(player, 1000)) << c.timeUs << " " << c.flags << " " << c.size;
    }
}

TEST_F(OutputTest, aCodec2ItemCountsWhateverItsFlags) {
    FramePlayer player(kCodec2Video);
    player.feed(1000);
    analytics.updateC2Output(player.codec, 1001, 0);
    EXPECT_THAT(log.take(), IsEmpty());
    analytics.updateC2Output(player.codec, 1000, kEndOfStream);
    EXPECT_TRUE(wasOwned(player, 1000));

    debug("2");
    FramePlayer talkative(kCodec2Video);
    analytics.updateC2Output(talkative.codec, 1001, kEndOfStream);
    EXPECT_THAT(log.take(), ElementsAre(warning("c2 not found ts:1001 infos Size:0 flag:1 when "
                                                "updateC2Output")));
}

TEST_F(OutputTest, warningsOfOutputAndRenderShareACapUntilTheNextFlush) {
    const LogLine output = warning("omx not found ts when updateOutputFrame");
    const LogLine render = warning("omx Not found ts  when updateFrameRender");
    FramePlayer player;
    const auto tenOfEach = [&] {
        for (int i = 0; i < 10; ++i) player.output(0);
        for (int i = 0; i < 10; ++i) player.render(0, 0);
        return log.take();
    };
    std::vector<LogLine> expected(10, output);
    expected.insert(expected.end(), 6, render);
    EXPECT_THAT(tenOfEach(), ElementsAreArray(expected));
    EXPECT_THAT(tenOfEach(), IsEmpty());
    player.flush();
    EXPECT_EQ(16u, tenOfEach().size());

    properties.set("mediaanalytic.maxerrorframe", "1");
    FramePlayer terse;
    terse.output(0);
    terse.render(0, 0);
    EXPECT_THAT(log.take(), ElementsAre(output));
}

TEST_F(OutputTest, whenFlushed_framesAreForgottenAndNumbersRestartForAll) {
    debug("0x400");
    FramePlayer flushed;
    FramePlayer other(kCodec2Video);
    const auto numberOfNext = [&](FramePlayer& player, long timeUs) {
        player.feed(timeUs);
        return log.take().at(0).text;
    };
    EXPECT_EQ("omx Frame:1 Decrypt cost:0 ts:1000 size:1000", numberOfNext(flushed, 1000));
    EXPECT_EQ("c2 Frame:2 Decrypt cost:0 ts:1000 size:1000", numberOfNext(other, 1000));
    flushed.decode(1000);
    flushed.flush();
    EXPECT_EQ("c2 Frame:1 Decrypt cost:0 ts:2000 size:1000", numberOfNext(other, 2000));
    EXPECT_EQ("omx Frame:2 Decrypt cost:0 ts:2000 size:1000", numberOfNext(flushed, 2000));
    flushed.drop(1000);
    EXPECT_THAT(log.take(), IsEmpty());
    EXPECT_FALSE(wasOwned(flushed, 2000)) << "a flush gives back what was decoded";
    other.decode(1000);
    EXPECT_TRUE(wasOwned(other, 1000)) << "the other codec keeps its frames";
}

TEST_F(OutputTest, bufferCountsAreLoggedWhenTheOutputOfVideoChanges) {
    FramePlayer video;
    const auto lines = [&](unsigned port, size_t count) {
        video.buffers(port, count, 2);
        return log.take();
    };
    EXPECT_THAT(lines(0, 5), IsEmpty());
    EXPECT_THAT(lines(1, 4),
                ElementsAre(info("omx input:5 output:4 minUndequeue:2 video:1 decoder:1")));
    EXPECT_THAT(lines(1, 4), IsEmpty());
    EXPECT_THAT(lines(2, 6), IsEmpty()) << "any other port is an output, too";
    EXPECT_THAT(lines(1, 6), IsEmpty());
    EXPECT_THAT(lines(1, 0),
                ElementsAre(info("omx input:5 output:0 minUndequeue:2 video:1 decoder:1")));

    FramePlayer audio(kAudio);
    audio.buffers(1, 4);
    sp<FakeCodec> unknown = new FakeCodec;
    analytics.addCodec("unknown", unknown, 1, 2);
    analytics.updateBuffers(2, 1, 4, 2);  // does not tell that it is video
    analytics.removeCodec(unknown);
    EXPECT_THAT(log.take(), IsEmpty());
}

}  // namespace
}  // namespace android::test
