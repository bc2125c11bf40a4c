// SPDX-License-Identifier: Apache-2.0
#include "LoggerTest.h"

namespace android::test {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

class DropTest : public LoggerTest {
  protected:
    std::string dropped() {
        const std::string text = status();
        return text.substr(text.find("FramesDropped: ") + 15);
    }
};

TEST_F(DropTest, aRun_countsAsPiecesOf10_5_2And1) {
    const struct {
        std::vector<int> runs;
        Lines records;
        int total;
        int longest;
    } kCases[] = {
            {{1}, {"1 [1]"}, 1, 1},
            {{4}, {"2 [2]"}, 4, 4},
            {{5, 5}, {"2 [5]"}, 10, 5},
            {{9}, {"2 [2]", "1 [5]"}, 9, 9},
            {{17}, {"1 [2]", "1 [5]", "1 [10]"}, 17, 17},
            {{48, 3, 1}, {"3 [1]", "2 [2]", "1 [5]", "4 [10]"}, 52, 48},
    };
    for (const auto& c : kCases) {
        settle();
        for (const int length : c.runs) {
            drop(length);
            render(0);
        }
        output(5000000);
        output(10000000);
        report();
        Lines runs;
        Lines totals;
        for (const auto& record : metrics.take()) {
            const std::string value = std::to_string(static_cast<int>(record.value));
            if (record.name == "FramedropType") {
                runs.push_back(value + " [" + record.data[0].second + "]");
            } else if (record.name == "TotalFramesDropped") {
                totals.push_back(value);
            }
        }
        Lines expected = c.records;
        expected.push_back(std::to_string(c.longest) + " [max]");
        EXPECT_EQ(runs, expected);
        EXPECT_THAT(totals, ElementsAre(std::to_string(c.total)));
    }
}

TEST_F(DropTest, theTotal_isLoggedWhenItIsAMultipleOfTen) {
    settle();
    drop(5);
    render(0);
    EXPECT_THAT(loggedWith("Dropped"), IsEmpty());
    drop(5);
    render(0);
    drop(20);
    render(0);
    // The prefix is that before the run counts as the longest.
    EXPECT_THAT(loggedWith("Dropped"), ElementsAre("I " PID ".HW.c2.video.avc Dropped 10 frames",
                                                   "I " PID ".HW.c2.video.avc Dropped 30 frames"));
    // An empty run is logged as well.
    logger->updateFrameDropCounters();
    EXPECT_THAT(loggedWith("Dropped"),
                ElementsAre("I W.mcfd20." PID ".HW.c2.video.avc Dropped 30 frames"));
}

TEST_F(DropTest, drops_countFromTheEndOfSettling) {
    for (const int settlingMs : {500, 501}) {
        configure();
        frame(0);
        drop(3);
        after(settlingMs);
        output(1);
        drop(4);
        render(1);
        EXPECT_EQ(dropped(), settlingMs == 501 ? "4\n" : "0\n");
    }
    // Anew after a flush.
    logger->updateMetricsForFlush();
    drop(7);
    render(2);
    after(501);
    drop(7);
    output(2);
    drop(2);
    render(3);
    EXPECT_EQ(dropped(), "6\n");
}

TEST_F(DropTest, drops_countForLoggedDecodersOnly) {
    const CodecSetup kCases[] = {{"c2.v", "video/avc", 0, false, true},
                                 {"c2.v", "video/avc", 0, true, false}};
    for (const auto& setup : kCases) {
        settle(setup);
        drop(7);
        render(1);
        logger->updateFrameDropCounters();
        EXPECT_EQ(dropped(), "0\n");
    }
    configure(kCases[0]);
    frame(0);
    EXPECT_THAT(loggedWith("Got First Frame Render"), IsEmpty());
}

TEST_F(DropTest, aFlush_discardsAYoungRun) {
    for (const int ageMs : {299, 300}) {
        const char* total = ageMs == 299 ? "0\n" : "8\n";
        settle();
        drop(4);
        after(150);
        drop(4);
        after(ageMs - 150);
        logger->updateMetricsForFlush();
        EXPECT_EQ(dropped(), total);
        EXPECT_THAT(loggedWith("Dropped"), SizeIs(ageMs == 299 ? 1 : 0));
        // The run is closed either way.
        render(0);
        EXPECT_EQ(dropped(), total);
    }
}

TEST_F(DropTest, lateOutput_isNotifiedFromOneSecondOn) {
    const auto service = registerService();
    configure();
    logger->profileP2End();
    service->take();
    log.take();
    logger->updateFrameDropCounters(0, true);
    after(999);
    logger->updateFrameDropCounters(0, true);
    EXPECT_THAT(service->take(), IsEmpty());
    after(1000);
    logger->updateFrameDropCounters(0, true);
    EXPECT_THAT(service->take(), ElementsAre("onOutBufferAvailableAfterDelay(client, 1000)"));
    EXPECT_THAT(logged(), ElementsAre("I Rendering first frame after starting or flushing.",
                                      "I the latest buffer is 1000 old with packageName " PKG
                                      ". Possible resume detected"));
}

TEST_F(DropTest, theFirstRenderedFrame_isNotifiedOnce) {
    const auto service = registerService();
    configure();
    logger->profileP2End();
    service->take();
    log.take();
    const auto renderAt = [&](long renderTimeNs) {
        logger->resetConsecutiveFrameDropFlag(renderTimeNs, 0, false, 3);
    };
    // Not before an input.
    renderAt(-1);
    EXPECT_THAT(logged(), IsEmpty());
    input(0);
    log.take();
    after(40);
    renderAt(0);
    renderAt(0);
    logger->updateMetricsForFlush();
    renderAt(0);
    EXPECT_THAT(logged(), ElementsAre("I [BRISK] HW.c2.video.avc Got First Frame Render 1040(40), "
                                      "renderNum = 3",
                                      "I App sets Timestamps for render in SurfaceFlinger"));
    EXPECT_THAT(service->take(), ElementsAre("onFirstFrameRendered(client)"));

    configure(kAudio);
    frame(0);
    EXPECT_THAT(loggedWith("Got First Frame Render"), IsEmpty());
}

TEST_F(DropTest, withoutAService_notificationsWarn) {
    configure({"c2.v", "video/avc", 0, false});
    log.take();
    logger->notifyFirstFrameRendered();
    logger->notifyOutBufferAvailablAfterDelay(7);
    EXPECT_THAT(logged(), ElementsAre("W MediaCodecLoggerService in NULL",
                                      "W MediaCodecLoggerService in NULL"));
    // With one, an encoder notifies nothing.
    const auto service = registerService();
    logger->profileP2End();
    service->take();
    logger->notifyFirstFrameRendered();
    logger->notifyOutBufferAvailablAfterDelay(7);
    EXPECT_THAT(service->take(), IsEmpty());
    EXPECT_THAT(loggedWith("NULL"), IsEmpty());
}

TEST_F(DropTest, onlyATunneledCodecsRender_isAnOutputToo) {
    configure();
    input(0);
    log.take();
    logger->resetConsecutiveFrameDropFlag(0, 77, true, 4);
    EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(DropTest, theAllowlist_isTheServices) {
    configure();
    EXPECT_FALSE(logger->isInMitigateFrameDropAllowlist());
    const auto service = registerService();
    EXPECT_FALSE(logger->isInMitigateFrameDropAllowlist());
    service->allowlisted = true;
    EXPECT_TRUE(logger->isInMitigateFrameDropAllowlist());
    EXPECT_THAT(
            service->take(),
            testing::AllOf(SizeIs(2), testing::Each("isInMitigateFrameDropAllowlist(" PKG ")")));
}

TEST_F(DropTest, theDropClass_isHardwareOrSoftware) {
    secure = true;
    for (const auto& [setup, text] :
         {std::make_pair(kTunneled, "HW_secure_tunneled"),
          std::make_pair(CodecSetup{"c2.android.x", "video/avc"}, "SW_secure"),
          std::make_pair(kAudio, "SW_secure")}) {
        configure(setup);
        input(0);
        EXPECT_STREQ(logger->getFramedropMeta().c_str(), text);
    }
}

// Per frame in steady state: one read for the input, one for the render, one for the late-output
// check.
TEST_F(DropTest, aFrame_readsTheClockThreeTimes) {
    settle();
    output(33334);
    const int64_t before = clock.reads();
    frame(33335);
    EXPECT_EQ(clock.reads() - before, 3);
}

}  // namespace android::test
