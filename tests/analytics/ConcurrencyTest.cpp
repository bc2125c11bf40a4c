// SPDX-License-Identifier: Apache-2.0
// Trackers and the registry from several threads at once; the thread sanitizer watches.

#include <algorithm>
#include <atomic>
#include <thread>

#include <tests/analytics/FramePlayer.h>

namespace android::test {
namespace {

constexpr int kFrames = 300;

TEST_F(AnalyticsTest, codecsOnTheirOwnThreadsDoNotMeet) {
    debug("0x400");
    const auto play = [](const CodecKind& kind) {
        FramePlayer player(kind);
        for (long ts = 0; ts < kFrames * 1000; ts += 1000) {
            player.feed(ts);
            player.deliver(ts);
            ts % 3000 == 0 ? player.drop(ts) : player.render(ts, 20);
            player.fromDisplay(1, 0);
        }
    };
    std::atomic<bool> done{false};
    std::thread registrations([&] {
        while (!done) FramePlayer();
    });
    std::thread omx(play, kOmxVideo);
    std::thread codec2(play, kCodec2Video);
    omx.join();
    codec2.join();
    done = true;
    registrations.join();

    int drops = 0;
    for (const LogLine& line : log.take()) {
        EXPECT_EQ(ANDROID_LOG_INFO, line.priority) << line;
        drops += line.text.find("Drop:") != std::string::npos;
    }
    EXPECT_EQ(2 * kFrames / 3, drops) << "every third frame of both";
}

TEST_F(AnalyticsTest, oneCodecMayBeToldOfFromManyThreadsWhileItIsRemoved) {
    FramePlayer player;
    std::atomic<int> running{2};
    std::thread input([&] {
        for (long ts = 0; ts < kFrames; ++ts) player.feed(ts);
        --running;
    });
    std::thread output([&] {
        for (long ts = 0; ts < kFrames; ++ts) {
            player.deliver(ts);
            player.render(ts, 20);
            player.buffers(1, ts % 3);
            if (ts % 50 == 0) player.flush();
        }
        --running;
    });
    while (running != 0) {
        analytics.removeCodec(player.codec);
        analytics.addCodec(player.kind.name, player.codec, player.key, player.key);
        player.buffers(0, 1);
    }
    input.join();
    output.join();

    analytics.removeCodec(player.codec);
    EXPECT_EQ(1, player.codec->getStrongCount()) << "nothing but the case itself holds it";
    EXPECT_FALSE(player.announce(0));
}

}  // namespace
}  // namespace android::test
