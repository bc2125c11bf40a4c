// SPDX-License-Identifier: Apache-2.0
// Registration, capacity, keys and the switch.

#include <errno.h>
#include <unistd.h>

#include <memory>

#include <hostplatform/AppIdentity.h>
#include <tests/analytics/FramePlayer.h>

namespace android::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr size_t kCapacity = 101;

class RegistryTest : public AnalyticsTest {
  protected:
    /** Whether the analytics follow the codec. */
    bool follows(const sp<FakeCodec>& codec) {
        return analytics.updateInputFrame_pre(codec, nullptr, 0, nullptr, nullptr, 0, nullptr,
                                              CryptoPlugin::kMode_Unencrypted, 0, 0, false);
    }
};

TEST_F(RegistryTest, whenOff_nothingIsRegisteredAndEveryInputIsWelcome) {
    properties.set("mediaanalytic.enable", "off");
    FramePlayer early;
    EXPECT_FALSE(analytics.isEnabled());
    EXPECT_TRUE(early.announce(0));
    EXPECT_EQ(1, early.codec->getStrongCount());

    properties.set("mediaanalytic.enable", "true");
    EXPECT_FALSE(analytics.isEnabled()) << "only a registration reads the switch";
    FramePlayer late;
    EXPECT_TRUE(analytics.isEnabled());
    EXPECT_FALSE(early.announce(0)) << "registered while the analytics were off";
    EXPECT_TRUE(late.announce(0));
}

TEST_F(RegistryTest, whenSwitchedOff_allCodecsFallSilentAndStayRegistered) {
    debug("0x20001");
    FramePlayer player;
    player.queue(1000);
    player.decode(1000);
    EXPECT_EQ(4u, log.take().size());

    properties.set("mediaanalytic.enable", "false");
    EXPECT_EQ(OK, analytics.addCodec("x", new FakeCodec, 0, 0));
    player.queue(1000);
    player.decode(1000);
    player.render(1000, 0);
    EXPECT_THAT(log.take(), IsEmpty());
    EXPECT_EQ(OK, analytics.removeCodec(player.codec));

    properties.set("mediaanalytic.enable", "true");
    FramePlayer other;
    EXPECT_TRUE(player.announce(1000)) << "removing while off must leave the entry";
}

TEST_F(RegistryTest, whenFull_refusesEvenCodecsThatItKnows) {
    std::vector<std::unique_ptr<FramePlayer>> players;
    while (players.size() < kCapacity) players.push_back(std::make_unique<FramePlayer>());
    EXPECT_THAT(log.take(), IsEmpty());

    const auto full = [](const sp<FakeCodec>& codec) {
        char text[128];
        snprintf(text, sizeof(text), "addCodec Warning too much track %p 0x1f c:more s:101",
                 static_cast<CodecBase*>(codec.get()));
        return warning(text);
    };
    sp<FakeCodec> more = new FakeCodec;
    EXPECT_EQ(-EMFILE, analytics.addCodec("more", more, 31, 32));
    EXPECT_THAT(log.take(), ElementsAre(full(more)));
    EXPECT_EQ(1, more->getStrongCount());
    EXPECT_EQ(-EMFILE, analytics.addCodec("more", players[0]->codec, 31, 32));
    EXPECT_THAT(log.take(), ElementsAre(full(players[0]->codec)));

    players.pop_back();
    EXPECT_EQ(OK, analytics.addCodec("more", more, 31, 32));
    EXPECT_TRUE(follows(more));
    EXPECT_EQ(OK, analytics.removeCodec(more));
    EXPECT_EQ(1, more->getStrongCount());
}

TEST_F(RegistryTest, whenRegisteredAgain_theCodecStartsAfreshUnderItsNewKeys) {
    debug("2");
    FramePlayer earlier;
    FramePlayer player;
    player.feed(1000);
    log.take();

    analytics.addCodec("again", player.codec, 77, 88);
    analytics.updateOmxOutput(player.key, 1000, 0, 500);
    EXPECT_THAT(log.take(), IsEmpty()) << "the old key is gone";
    player.buffers(0, 0);
    analytics.updateOmxOutput(77, 1000, 0, 500);
    EXPECT_THAT(log.take(), ElementsAre(warning("again not found ts:1000 size:500 infos Size:0 "
                                                "flag:0 when updateOmxOutput")));
    analytics.removeCodec(player.codec);
    EXPECT_EQ(1, player.codec->getStrongCount()) << "one registration, one removal";
}

TEST_F(RegistryTest, keysLeadToTheCodecRegisteredFirst) {
    debug("0x20000");
    const sp<FakeCodec> first = new FakeCodec;
    const sp<FakeCodec> second = new FakeCodec;
    analytics.addCodec("first", first, 5, 6);
    analytics.addCodec("second", second, 5, 6);
    const auto report = [&] {
        analytics.updateOmxOutput(5, 1000, 0, 9);
        analytics.updateBuffers(6, 0, 4, 2);
        analytics.updateOmxOutput(6, 1000, 0, 9);
        analytics.updateBuffers(5, 0, 4, 2);
        return log.take();
    };
    const auto linesOf = [](const std::string& name) {
        return ElementsAre(info(name + " OMX FBD mediaTs:1000 f:0 s:90"),
                           info(name + " input:4 output:0 minUndequeue:2 video:0 decoder:0"));
    };
    EXPECT_THAT(report(), linesOf("first"));
    analytics.removeCodec(first);
    EXPECT_THAT(report(), linesOf("second"));
    analytics.removeCodec(second);
    EXPECT_THAT(report(), IsEmpty());
}

TEST_F(RegistryTest, eventsOfUnknownCodecsAreIgnored) {
    debug("0x7fffffff");
    FramePlayer player;
    analytics.removeCodec(player.codec);
    log.take();
    EXPECT_FALSE(player.announce(0));
    player.queue(0);
    player.handOver(0);
    player.deliver(0);
    player.render(0, 0);
    player.drop(0);
    player.flush();
    analytics.updateC2Output(player.codec, 0, 0);
    analytics.updateACodecOutput(player.codec, "", nullptr, 1);
    analytics.updateQueueBuffer(player.codec, 0, 0, 0, nullptr);
    analytics.updateDequeueBuffer(nullptr, 0, nullptr, 0);
    EXPECT_FALSE(follows(nullptr));
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(RegistryTest, aTrackerThatRefusesInputTakesItsCodecAlong) {
    properties.set("mediaanalytic.maxqueuesize", "0");
    FramePlayer player;
    EXPECT_TRUE(player.announce(0));
    EXPECT_TRUE(player.announce(1)) << "the refusal is no concern of the caller";
    EXPECT_FALSE(player.announce(2));
    EXPECT_EQ(1, player.codec->getStrongCount());
}

TEST_F(RegistryTest, thePackageIsThatOfThisProcess) {
    hostplatform::setPackageNameForPid(getpid(), "com.example.player");
    EXPECT_STREQ("com.example.player", analytics.getPackageName().string());
    hostplatform::setPackageNameForPid(getpid(), nullptr);
}

TEST_F(RegistryTest, theLastReferenceToACodecMayGoByRemoval) {
    wp<FakeCodec> codec;
    {
        sp<FakeCodec> strong = new FakeCodec;
        analytics.addCodec("x", strong, 0, 0);
        codec = strong;
    }
    ASSERT_NE(nullptr, codec.promote());
    analytics.removeCodec(codec.promote());
    EXPECT_EQ(nullptr, codec.promote());
}

}  // namespace
}  // namespace android::test
