// SPDX-License-Identifier: Apache-2.0
// Rendering: its statistics, and what is fatal.

#include <limits.h>
#include <unistd.h>

#include <tests/analytics/FramePlayer.h>

namespace android::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class RenderTest : public AnalyticsTest {
  protected:
    /** Takes a frame through the codec at once and renders it `leadMs` ahead. */
    std::vector<LogLine> play(long timeUs, int64_t leadMs) {
        player.feed(timeUs);
        player.deliver(timeUs);
        player.render(timeUs, leadMs);
        return log.take();
    }

    /** A statistics line: what comes before the process id, and what comes after it. */
    LogLine sync(const std::string& head, const std::string& tail) {
        return info("AVSYNC_V:" + head + " pid:" + std::to_string(getpid()) + tail);
    }

    FramePlayer player;
};

TEST_F(RenderTest, theFirstFrameIsLoggedAtOnceAndHasNoSteps) {
    player.feed(40000);
    after(5);
    player.deliver(40000);
    after(10);
    player.render(40000, 20);
    // Position 40 - 20 - 40, at 10015.
    EXPECT_THAT(log.take(), ElementsAre(sync("-20(10035)(40) b:40 rts:10035(20)",
                                             " First min:-1(-1 )(20) max:0(0)(20) avg:0(0)(20) "
                                             "cnt:1(0)")));
}

TEST_F(RenderTest, aPeriodEndsWithTheFirstRenderAfter5000Ms) {
    play(40000, 20);  // shown at 10020
    after(5000);
    EXPECT_THAT(play(80000, 10), IsEmpty());  // shown at 15010, 4990 later
    after(1);
    // Shown at 15031, 21 later; the steps add up to 100 ms, the leads to 40.
    EXPECT_THAT(play(140000, 30),
                ElementsAre(sync("70(14931)(140) b:40 rts:15031(30)",
                                 " min:21(40 )(10) max:4990(60)(30) avg:5001000(100000)(20) "
                                 "cnt:2(5001)")));
    after(6000);
    // Backwards by 1.5 ms, and a lead that never was positive: the maximum stays where it began.
    EXPECT_THAT(play(138500, -7),
                ElementsAre(sync("105(20896)(138) b:40 rts:20994(-7)",
                                 " min:5963(-1 )(-7) max:5963(0)(0) avg:0(0)(-7) cnt:1(6000)")));
}

TEST_F(RenderTest, afterAFlush_theFirstFrameIsLoggedAndMeasuredFromZero) {
    play(40000, 20);
    player.flush();
    after(10000);
    EXPECT_THAT(play(7000000, -5),
                ElementsAre(sync("5(19995)(7000) b:7000 rts:19995(-5)",
                                 " min:19995(7000 )(-5) max:19995(7000)(0) avg:0(0)(-5) "
                                 "cnt:1(0)")));
}

TEST_F(RenderTest, whenTheClientRendersByMediaTime_noLeadIsShown) {
    player.feed(40000);
    player.deliver(40000);
    player.renderAt(40000, 40000000);
    EXPECT_THAT(log.take(), ElementsAre(sync("0(10000)(40) b:40 rts:40(0)",
                                             " First min:-1(-1 )(-9960) max:0(0)(0) "
                                             "avg:0(0)(-9960) cnt:1(0)")));
}

TEST_F(RenderTest, aFrameThatTheClientNeverReceivedHasBaseZero) {
    player.feed(40000);
    player.render(40000, 16);
    EXPECT_THAT(log.take(), ElementsAre(sync("24(9976)(40) b:0 rts:10016(16)",
                                             " First min:-1(-1 )(16) max:0(0)(16) avg:0(0)(16) "
                                             "cnt:1(0)")));
}

TEST_F(RenderTest, theRenderLogCountsFromTheFrameBefore) {
    debug("4");
    FramePlayer talkative;
    talkative.feed(40000);
    talkative.feed(80000);
    talkative.render(80000, 20);
    EXPECT_EQ(info("omx Render R-S:20 R:10020(10020) pts:80000 1/2"), log.take().at(0));
    after(33);
    talkative.render(40000, -3);
    EXPECT_THAT(log.take(), ElementsAre(info("omx Render R-S:-3 R:10030(10) pts:40000 0/1")));
}

TEST_F(RenderTest, whenTheLeadIsBelowAVsync_theTimelineAnalysesTheFrame) {
    debug("0x400");
    FramePlayer talkative;
    const auto isAnalysed = [&](int64_t leadMs) {
        talkative.feed(1000);
        talkative.render(1000, leadMs);
        std::string text;
        for (const LogLine& line : log.take()) text += line.text + "\n";
        return text.find("Small_Early:" + std::to_string(leadMs) + ":1000(") != text.npos;
    };
    EXPECT_TRUE(isAnalysed(-40));
    EXPECT_TRUE(isAnalysed(15));
    EXPECT_FALSE(isAnalysed(16));
}

TEST_F(RenderTest, overflowIsFatal) {
    constexpr long kMost = LONG_MAX / 1000 * 1000;  // as close as milliseconds come to the end
    EXPECT_DEATH(play(LONG_MAX, 0),
                 "F/ZMediaAnalyticV: overflow: arithmetic overflow: "
                 "9223372036854775807 \\* 1000");
    EXPECT_DEATH(
            {
                play(-1000, 0);
                play(LONG_MAX, 0);
            },
            "arithmetic overflow: 9223372036854775807 - -1000");
    EXPECT_DEATH(
            {
                play(-1000, 0);
                player.feed(kMost);
                player.drop(kMost);
            },
            "arithmetic overflow: 9223372036854775000 - -1000");
    play(0, 0);
    player.feed(kMost);
    player.drop(kMost);  // one step earlier nothing overflows
    EXPECT_FALSE(log.take().empty());
}

}  // namespace
}  // namespace android::test
