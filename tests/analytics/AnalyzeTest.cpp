// SPDX-License-Identifier: Apache-2.0
// The line of a frame and its histories. Every case drops a frame, which shows it as it is.

#include <cutils/properties.h>
#include <tests/analytics/FramePlayer.h>

namespace android::test {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

/** How often `part` stands in `text`. */
int countOf(const std::string& text, const char* part) {
    int count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

class AnalyzeTest : public AnalyticsTest {
  protected:
    /** A frame of media time 0, queued at 10000, handed over at 10001 and all else at 10010. */
    void playFirst(int64_t leadMs = 20, int64_t callDelayMs = 0) {
        player.announce(0);
        player.queue(0);
        after(1);
        player.handOver(0);
        after(9);
        player.deliver(0);
        after(callDelayMs);
        player.render(0, leadMs);
        log.take();
    }
    /** A buffer came back from the display of which nothing is known. */
    void dequeue(size_t ownedByComponent = 2) {
        player.fromDisplay(1, clock.nowMs(), ownedByComponent);
    }
    /** The line of the frame at its drop. */
    std::string dropped(long timeUs) {
        player.drop(timeUs);
        const auto lines = log.take();
        EXPECT_EQ(1u, lines.size());
        return lines.empty() ? "" : lines[0].text;
    }

    FramePlayer player;
};

TEST_F(AnalyzeTest, aFrameInTimeHasNoHistory) {
    playFirst();
    player.feed(40000);
    after(20);
    player.decode(40000);  // 20 after its input, 20 after the frame before
    after(4);
    player.output(40000);  // 24 after its input; 4 after the render, 24 after its call
    after(6);
    EXPECT_EQ("Drop:40000(10000) TD:40 FARD:4(24) FAD:20(4) AL:6(10040) FL:20(24) 0/1",
              dropped(40000));
}

TEST_F(AnalyzeTest, beforeTheFirstRenderTheLineSaysSo) {
    const auto dropOne = [&] {
        player.feed(1000);
        player.deliver(1000);
        return dropped(1000);
    };
    EXPECT_THAT(dropOne(), StartsWith("Pre-Render Drop:1000(9999) TD:1 FARD:(10000)"));
    playFirst();
    EXPECT_THAT(dropOne(), StartsWith("Drop:1000(10009) TD:1 FARD:-20(0)"));
    player.flush();
    EXPECT_THAT(dropOne(), StartsWith("Pre-Render Drop:1000(10009) TD:1 FARD:(10010)"));
}

TEST_F(AnalyzeTest, afterARenderByMediaTimeTheDistanceToItIsLeftOut) {
    player.feed(5000000);
    player.renderAt(5000000, 5000000000);
    log.take();
    player.feed(5040000);
    player.deliver(5040000);
    EXPECT_THAT(dropped(5040000), StartsWith("Drop:5040000(4960) TD:40 FARD:(0) FAD:10000(0)"));
}

TEST_F(AnalyzeTest, aFrameDroppedBeforeItsOutputShowsTheInitialStamps) {
    player.feed(0);
    after(5);
    player.drop(0);
    EXPECT_THAT(log.take(), ElementsAre(info("Pre-Render Drop:0(10005) TD:0 FARD:(-1) FAD:0(-1) "
                                             "AL:10006(10005) FL:-10000(-10001) 0/1"),
                                        warning("mFramesOwnedByUs is 0 unexpectedly")));
}

TEST_F(AnalyzeTest, onlyAKnownFrameOfVideoIsAnalysed) {
    player.drop(1000);
    player.feed(1000);
    analytics.dropFrameAnalyze(player.codec, 1000, true);
    FramePlayer audio(kAudio);
    audio.feed(1000);
    audio.drop(1000);
    EXPECT_THAT(log.take(), IsEmpty());
    player.drop(1000);
    EXPECT_EQ(2u, log.take().size()) << "reported as rendered, the frame was not touched";
}

TEST_F(AnalyzeTest, aLongLabelIsNotCut) {
    debug("0x400");
    const std::string name(600, 'n');
    FramePlayer talkative({name.c_str()});
    talkative.feed(1000);
    talkative.output(1000);
    EXPECT_THAT(log.take().back().text,
                StartsWith("Pre-Render " + name + ":1000(9999) TD:1 FARD:(10000)"));
}

// Delay history: the frame was decoded, but the client heard of it late.

TEST_F(AnalyzeTest, whenTheMessageIsLate_whatWasQueuedAndDequeuedMeanwhileIsShown) {
    player.buffers(1, 4);
    const struct {
        int64_t delayMs;
        bool dequeuesAgain;  ///< after the message: the walk back from there ends at once
        const char* line;
    } kCases[] = {
            {10, false, "Drop:40000(9990) TD:40 FARD:0(20) FAD:10(10) AL:0(10030) FL:10(20) 0/3"},
            {11, false,
             "Drop:40000(9991) TD:40 FARD:1(21) FAD:10(11) AL:0(10031) FL:10(21) 0/3"
             "$D:-0(0)D:-6(3)Q:-3(12)"},
            {11, true,
             "Drop:40000(9992) TD:40 FARD:1(21) FAD:10(11) AL:1(10032) FL:10(21) 0/3"
             "$D:-0(0)D:-6(3)"},
    };
    for (const auto& [delayMs, dequeuesAgain, line] : kCases) {
        after(kStart - clock.nowMs());
        player.flush();
        playFirst();
        player.feed(40000);
        dequeue();  // before the frame was decoded
        after(10);
        player.decode(40000);  // at 10020
        player.toDisplay(2, 10016, 0);
        after(2);
        player.announce(80000);
        after(3);
        player.queue(80000);  // at 10025, 3 after its announcement
        after(3);
        dequeue();  // at 10028, 12 after the last queueing
        after(delayMs - 8);
        player.announce(120000);
        player.queue(120000);
        player.output(40000);
        if (dequeuesAgain) {
            after(1);
            dequeue();
        }
        EXPECT_EQ(line, dropped(40000));
    }
}

TEST_F(AnalyzeTest, theDelayHistoryHasSixInputsAndSixDequeues) {
    playFirst();
    player.feed(40000);
    player.decode(40000);
    for (int i = 1; i <= 8; ++i) {
        after(2);
        player.feed(40000 + i);
        dequeue();
    }
    player.output(40000);
    EXPECT_THAT(dropped(40000),
                EndsWith("0/9$D:-0(0)D:-2(0)D:-4(0)D:-6(0)D:-8(0)D:-10(0)"
                         "Q:-0(10027)Q:-2(10025)Q:-4(10023)Q:-6(10021)Q:-8(10019)Q:-10(10017)"));
}

TEST_F(AnalyzeTest, pastTheLow32BitsOfTheClockTheDelayHistoryReachesBackWithoutEnd) {
    for (const int64_t uptimeMs : {int64_t{1} << 31, int64_t{1} << 32}) {
        after(uptimeMs - clock.nowMs());
        player.flush();
        playFirst();
        player.feed(40000);
        after(10);
        player.decode(40000);
        after(11);
        player.output(40000);
        EXPECT_THAT(dropped(40000), HasSubstr(" 0/1$D:-21(0)")) << uptimeMs;
    }
}

// Decode history: the frame came late out of the component.

TEST_F(AnalyzeTest, whenTheFrameIsLate_whatTheComponentHadIsShown) {
    playFirst();
    player.feed(40000);  // at 10010
    after(5);
    dequeue();
    after(5);
    after(-2);
    player.announce(80000);
    player.queue(80000);
    after(2);
    player.handOver(80000);  // at 10020
    after(10);
    player.feed(120000);  // at 10030
    player.announce(130000);
    after(30);
    dequeue();
    player.decode(40000);  // at 10060
    after(1);
    player.feed(160000);  // too late to have mattered
    dequeue();
    after(4);
    player.output(40000);
    EXPECT_EQ(
            "Drop:40000(10025) TD:40 FARD:35(55) FAD:50(5) AL:0(10065) FL:50(55) 0/5"
            "$I:-10060(0:90)I:-30(3:80)I:-40(2:40)I:-50(1:0)I:-59(1:-40000)$F:-0(2:10061)F:-45(2:"
            "10016)",
            dropped(40000));
}

TEST_F(AnalyzeTest, eachOfThreeDistancesCallsForTheDecodeHistory) {
    const struct {
        int64_t leadMs, callDelayMs;           ///< of the frame before
        int64_t decodeDelayMs, outputDelayMs;  ///< after its render call
        bool shown;
    } cases[] = {
            {100, 0, 25, 5, false},  {100, 0, 26, 5, true},   // output after the render call
            {100, 20, 12, 2, false}, {100, 20, 13, 2, true},  // decode interval less the delay
            {-20, 0, 8, 2, false},   {-20, 0, 9, 2, true},    // output after the render
    };
    for (const auto& c : cases) {
        player.flush();
        playFirst(c.leadMs, c.callDelayMs);
        player.feed(40000);
        after(c.decodeDelayMs);
        player.decode(40000);
        after(c.outputDelayMs);
        player.output(40000);
        EXPECT_EQ(c.shown, countOf(dropped(40000), "$I:") == 1)
                << c.leadMs << " " << c.decodeDelayMs;
    }
}

TEST_F(AnalyzeTest, theDecodeHistoryEndsAfter16InputsOrOneThatPrecedesTheFrame) {
    playFirst();
    for (int i = 0; i < 20; ++i) player.feed(40000 + i * 1000);
    for (int i = 0; i < 7; ++i) dequeue(i);
    after(40);
    player.deliver(40000);
    const std::string line = dropped(40000);
    EXPECT_EQ(17, countOf(line, "I:-")) << "16 and the last rendered: " << line;
    EXPECT_THAT(line, HasSubstr(" 0/20$I:-40(20:19)I:-40(19:18)"));
    EXPECT_THAT(line, EndsWith("I:-40(5:4)I:-49(1:-40000)"
                               "$F:-40(6:10011)F:-40(5:10011)F:-40(4:10011)"
                               "F:-40(3:10011)F:-40(2:10011)"));

    player.flush();
    playFirst();
    for (const long ts : {60000, 70000, 80000, 120000}) player.feed(ts);
    after(40);
    player.deliver(80000);
    EXPECT_THAT(dropped(80000),
                HasSubstr(" 2/4$I:-40(4:40)I:-40(3:0)I:-40(2:-10)I:-49(1:-80000)$F:-90("));
}

TEST_F(AnalyzeTest, withoutInputsTheLastRenderedIsLeftOut) {
    playFirst();
    player.feed(40000);
    after(40);
    player.output(40000);  // never reported decoded, so that nothing went in before
    player.drop(40000);
    EXPECT_THAT(log.take().at(0).text, EndsWith(" 0/1$D:-40(0)"));

    player.flush();
    player.feed(0);
    player.renderAt(0, 0);  // at time 0, which counts as not rendered
    player.feed(40000);
    after(40);
    player.deliver(40000);
    log.take();
    const std::string line = dropped(40000);
    EXPECT_THAT(line, StartsWith("Pre-Render Drop:40000("));
    EXPECT_THAT(line, EndsWith(" 0/1$I:-40(1:0)"));
}

TEST_F(AnalyzeTest, elevenDequeuesAreRemembered) {
    for (const int later : {10, 11}) {
        player.flush();
        playFirst();
        player.feed(40000);
        dequeue(99);
        after(40);
        player.decode(40000);
        after(1);
        for (int i = 0; i < later; ++i) dequeue();
        player.output(40000);
        EXPECT_EQ(later == 10 ? 1 : 0, countOf(dropped(40000), "$F:-40(99:")) << later;
    }
}

// Settings

TEST_F(AnalyzeTest, eachLimitIsSetByItsProperty) {
    const struct {
        const char *property, *value;
        const char* sign;  ///< stands in the log unless the property allows more
    } cases[] = {
            {"maxmsgdelaytime", "11", "$D:"},
            {"maxdecodetime", "1000000", "$I:"},
            {"vsyncperiod", "-7", "early too small"},
            {"maxqueuetime", "0x64", "queueBuffer cost"},
            {"maxearlytime", "300", "early too large"},
            {"maxdequeuetime", "90", "too long dequeue"},
    };
    debug("0x400");
    const auto logOfOne = [&] {
        FramePlayer talkative;
        const int64_t now = clock.nowMs();
        talkative.feed(1000);
        talkative.decode(1000);
        after(11);
        talkative.feed(2000);
        talkative.output(1000);
        talkative.toDisplay(1, now, now + 300);
        talkative.toDisplay(2, now, now + 4);
        talkative.fromDisplay(1, now - 79);
        std::string text;
        for (const LogLine& line : log.take()) text += line.text + "\n";
        after(-11);
        return text;
    };
    const std::string plain = logOfOne();
    for (const auto& c : cases) {
        const std::string property = std::string("mediaanalytic.") + c.property;
        properties.set(property.c_str(), c.value);
        EXPECT_THAT(plain, HasSubstr(c.sign));
        EXPECT_THAT(logOfOne(), Not(HasSubstr(c.sign))) << property;
        properties.set(property.c_str(), "");
    }
}

}  // namespace
}  // namespace android::test
