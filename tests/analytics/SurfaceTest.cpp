// SPDX-License-Identifier: Apache-2.0
// Buffers queued to the display and dequeued from it.

#include <limits.h>

#include <memory>

#include <tests/analytics/FramePlayer.h>

namespace android::test {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

class SurfaceTest : public AnalyticsTest {
  protected:
    void start(const char* mask, const CodecKind& kind = kAudio) {
        debug(mask);
        player = std::make_unique<FramePlayer>(kind);
        log.take();
    }
    std::vector<LogLine> queue(uintptr_t number, int64_t renderMs, int64_t costMs = 0,
                               long mediaTimeUs = 40000) {
        player->toDisplay(number, clock.nowMs() - costMs, renderMs, mediaTimeUs);
        return log.take();
    }
    std::vector<LogLine> dequeue(uintptr_t number, int64_t tookMs = 0) {
        player->fromDisplay(number, clock.nowMs() - tookMs);
        return log.take();
    }

    std::unique_ptr<FramePlayer> player;
};

TEST_F(SurfaceTest, aDequeueIsSetAgainstTheShowingOfTheNextBuffer) {
    start("8");
    const LogLine unknown =
            info("dequeue actual:5(5) theory:0 renderTime:-1 index:-1 ownedByCom:3 ownByNat:0 0x1");
    EXPECT_THAT(dequeue(1, 5), ElementsAre(unknown)) << "the first ones were never queued";
    queue(1, 10010);
    queue(2, 10026);
    queue(3, 10043);
    EXPECT_THAT(dequeue(2, 5),
                ElementsAre(info("dequeue actual:5(-43) theory:48 renderTime:10043000000 index:1 "
                                 "ownedByCom:3 ownByNat:2 0x2")));
    const LogLine newest = warning("Not found. If it is in the first stage, it is normal");
    EXPECT_THAT(dequeue(3, 5),
                ElementsAre(newest, info("dequeue actual:5(5) theory:0 renderTime:-1 index:1 "
                                         "ownedByCom:3 ownByNat:1 0x3")));
    EXPECT_THAT(dequeue(1, 5),
                ElementsAre(newest, info("dequeue actual:5(5) theory:0 renderTime:-1 index:0 "
                                         "ownedByCom:3 ownByNat:0 0x1")));
    EXPECT_THAT(dequeue(1, 5), ElementsAre(unknown));
    EXPECT_THAT(dequeue(0), ElementsAre(warning("dequeue buffer is NULL")));
}

TEST_F(SurfaceTest, aDequeueMayTakeAVsyncMoreThanNeededAnd80MsInAll) {
    const struct {
        int64_t actual, theory;
        const char* line;
    } cases[] = {
            {30, 25, nullptr},
            {41, 25, nullptr},
            {42, 25, "dequeue actual:42(17) theory:25"},
            {80, 75, nullptr},
            {81, 75, "too long dequeue actual:81(6) theory:75"},
            {90, 80, "too long dequeue actual:90(10) theory:80"},
            {100, 80, "dequeue actual:100(20) theory:80"},
            {16, -100, nullptr},  // a theory in the past counts as 0
            {17, -100, "dequeue actual:17(117) theory:-100"},
    };
    for (const auto& c : cases) {
        start("0x400");
        const int64_t shownMs = clock.nowMs() - c.actual + c.theory;
        queue(1, 0);
        queue(2, shownMs);
        std::vector<LogLine> expected;
        if (c.line != nullptr) {
            expected.push_back(info(std::string(c.line) + " renderTime:" + std::to_string(shownMs) +
                                    "000000 index:0 0x1"));
        }
        EXPECT_THAT(dequeue(1, c.actual), ElementsAreArray(expected)) << c.actual;
    }
}

TEST_F(SurfaceTest, aQueuedBufferIsJudgedByItsCostAndByHowEarlyItComes) {
    const LogLine cost = info("queueBuffer cost:11 ts:40000");
    const auto early = [](const char* how) {
        return info("Warning queueBuffer early too " + std::string(how) + " ms ts:40000");
    };
    const struct {
        int64_t costMs, earlyMs;
        std::vector<LogLine> lines;
    } cases[] = {
            {10, 16, {}},
            {11, 16, {cost}},
            {0, 15, {early("small:15")}},
            {0, -3, {early("small:-3")}},
            {0, 200, {}},
            {0, 201, {early("large:201")}},
            {1, 200, {early("large:200")}},
            {11, 190, {cost, early("large:190")}},
            {300,
             10,
             {info("queueBuffer cost:300 ts:40000"), early("small:10"), early("large:10")}},
    };
    for (const auto& c : cases) {
        start("0x400");
        EXPECT_THAT(queue(1, clock.nowMs() + c.earlyMs, c.costMs), ElementsAreArray(c.lines))
                << c.costMs << " " << c.earlyMs;
    }
    start("0x400");
    player->buffers(1, 3);
    EXPECT_THAT(queue(1, 0), IsEmpty()) << "no time asked for";
    EXPECT_THAT(queue(1, 40, 0, 40000), IsEmpty()) << "rendered by media time";
    EXPECT_DEATH(queue(1, 40, 0, LONG_MAX), "arithmetic overflow: 9223372036854775807 \\* 1000");
}

TEST_F(SurfaceTest, moreBuffersThanTheOutputHasAreWarnedOf) {
    start("0x20", kOmxVideo);
    player->buffers(1, 1);
    log.take();
    EXPECT_THAT(queue(1, 7), ElementsAre(info("queueBuffer rendertime:7000000, mediatime:40000 "
                                              "size:1")));
    queue(2, 7);
    EXPECT_THAT(queue(3, 7), ElementsAre(warning("Warning: queue too many buffers 2"),
                                         info("queueBuffer rendertime:7000000, mediatime:40000 "
                                              "size:3")));
}

TEST_F(SurfaceTest, onlyAnotherAllocationOfOutputForgetsQueuedBuffers) {
    start("0x20", kOmxVideo);
    const auto sizeAfter = [&](unsigned port, size_t count) {
        player->buffers(port, count, 2);
        player->flush();
        const std::string text = queue(1, 7).back().text;
        return text.substr(text.rfind(' ') + 1);
    };
    EXPECT_EQ("size:1", sizeAfter(1, 9));
    EXPECT_EQ("size:2", sizeAfter(0, 4));
    EXPECT_EQ("size:1", sizeAfter(1, 9));
    EXPECT_EQ("size:1", sizeAfter(1, 0));
    EXPECT_EQ("size:2", sizeAfter(1, 9)) << "there was no allocation before";
    EXPECT_EQ("size:1", sizeAfter(2, 9));
}

TEST_F(SurfaceTest, theLimitForEarlyBuffersIsReadAtEachAllocation) {
    start("0x400");
    properties.set("mediaanalytic.maxearlytime", "500");
    EXPECT_EQ(1u, queue(1, clock.nowMs() + 300).size());
    player->buffers(0, 1);
    EXPECT_THAT(dequeue(1), ElementsAre(warning("Not found. If it is in the first stage, it is "
                                                "normal")));
    EXPECT_THAT(queue(1, clock.nowMs() + 300), IsEmpty());
}

}  // namespace
}  // namespace android::test
