// SPDX-License-Identifier: Apache-2.0
// The parts of a session, each without a logger around it.
#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include <mediaCodecLogger/logger/BitrateMeter.h>
#include <mediaCodecLogger/logger/DropRuns.h>
#include <mediaCodecLogger/logger/FramerateSample.h>
#include <mediaCodecLogger/logger/InputHistory.h>
#include <mediaCodecLogger/logger/PlaybackSegments.h>
#include <mediaCodecLogger/logger/Rendering.h>
#include <mediaCodecLogger/logger/RepeatedTimestamps.h>
#include <mediaCodecLogger/logger/ResolutionChange.h>
#include <mediaCodecLogger/logger/Settling.h>
#include <mediaCodecLogger/logger/VendorStatistics.h>

namespace android::logger {
namespace {

/** Steps through timestamps as the logger does; "F" the first, "." goes on, "S" a seek. */
std::string stepped(PlaybackSegments& segments, const std::vector<int64_t>& timestamps) {
    std::string steps;
    for (const int64_t pts : timestamps) {
        const auto step = segments.step(pts, 1);
        steps += step == PlaybackSegments::Step::FIRST   ? 'F'
                 : step == PlaybackSegments::Step::SEEKS ? 'S'
                                                         : '.';
        if (steps.back() == 'S') segments.close(&segments.mAudioPlaybackTimeMs, pts);
        segments.mLastPts = pts;
    }
    return steps;
}

TEST(PlaybackSegments, fiveSecondsGoOn_moreOrAnyStepBackIsASeek) {
    PlaybackSegments segments;
    EXPECT_EQ("F.S.S", stepped(segments, {0, 5000000, 10000001, 10000001, 10000000}));
    EXPECT_EQ(5000, segments.mAudioPlaybackTimeMs);   // 0 to 5000000; the second one had no length
    EXPECT_EQ(2u, segments.mPrevSegmentsFrameCount);  // the frame that opens a segment is not one
    EXPECT_EQ(0u, segments.mSegmentFrameCount);
}

TEST(PlaybackSegments, beforeTheFirstTimestampNothingIsPlayed_afterItNegativeOnesGoOn) {
    PlaybackSegments segments;
    EXPECT_EQ("..F.", stepped(segments, {-5, -1, 40, -1}));
    EXPECT_EQ(1u, segments.mSegmentFrameCount);
    constexpr int64_t kMax = std::numeric_limits<int64_t>::max();
    PlaybackSegments wide;
    EXPECT_EQ("FS", stepped(wide, {0, kMax}));  // and the difference to the lowest one wraps
    wide.mLastPts = -kMax;
    EXPECT_EQ(PlaybackSegments::Step::SEEKS, wide.step(kMax, 1));
}

TEST(PlaybackSegments, aFlushCountsFramesAndNoTime) {
    PlaybackSegments segments;
    stepped(segments, {0, 20000, 40000});
    EXPECT_EQ(50.0, segments.framerateOver(segments.openSpanUs()));
    segments.foldFrames();
    EXPECT_EQ(2u, segments.mPrevSegmentsFrameCount);
    EXPECT_EQ(40000, segments.openSpanUs());
    segments.close(nullptr, 7);
    EXPECT_EQ(7, segments.mSegmentStartPts);
}

TEST(Settling, lastsUntil501MsAfterTheFirstRender_andAFlushStartsItAgain) {
    Settling settling;
    settling.begin();
    settling.mFirstRenderAfterFlushMs = 1000;
    settling.endIfDue(1500);
    EXPECT_TRUE(settling.mIgnoreRepeatCheck);
    settling.endIfDue(1501);
    EXPECT_FALSE(settling.mIgnoreRepeatCheck || settling.mayEnd());
    settling.mFirstPtsAfterFlush = settling.mAwaitingFirstRender = false;
    settling.restart();
    EXPECT_TRUE(settling.mIgnoreRepeatCheck && settling.mFirstPtsAfterFlush &&
                settling.mAwaitingFirstRender && !settling.mayEnd());
}

TEST(DropRuns, aRunCountsAsItsPieces_andAYoungOneAtAFlushNotAtAll) {
    DropRuns drops;
    int clockReads = 0;
    const auto drop = [&](int frames) {
        for (int i = 0; i < frames; ++i) drops.add([&] { return int64_t{1000 * ++clockReads}; });
    };
    drop(19);
    EXPECT_EQ(1, clockReads);
    EXPECT_EQ(19u, drops.totalWithRun());
    drops.close();
    drop(4);
    drops.forgiveIfYoung(2300);
    drops.close();
    drop(7);
    drops.forgiveIfYoung(3299);
    drops.close();
    EXPECT_EQ(23u, drops.mFramesDropped);
    EXPECT_EQ(19u, drops.mMaxConsecutiveFramesDropped);
    EXPECT_EQ((std::vector<uint32_t>{1, 1, 4, 0}),
              (std::vector<uint32_t>{drops.mTenConsecutiveDrops, drops.mFiveConsecutiveDrops,
                                     drops.mTwoConsecutiveDrops, drops.mOneConsecutiveDrops}));
}

TEST(DropRuns, theDisplaysShareIsItsLastReport_theTotalOfAll) {
    DropRuns drops;
    EXPECT_EQ(10u, drops.addDroppedByDisplay(100, 90));
    EXPECT_EQ(12u, drops.addDroppedByDisplay(102, 90));
    EXPECT_EQ(0u, drops.addDroppedByDisplay(102, 0) + drops.addDroppedByDisplay(90, 90));
    EXPECT_EQ(12u, drops.mDisplayFramesDropped);
    EXPECT_EQ(22u, drops.mFramesDropped);
}

TEST(BitrateMeter, anIntervalClosesAfterMoreThanFiveSeconds_theNextBufferOpensOne) {
    BitrateMeter meter;
    EXPECT_FALSE(meter.add(1000, 100));
    EXPECT_FALSE(meter.add(1000, 5100));
    EXPECT_TRUE(meter.add(500126, 5101));  // 502126 bytes * 8 / 5001 ms
    EXPECT_EQ(803u, meter.mBitrateKbps);
    EXPECT_FALSE(meter.add(1, 20000));
    EXPECT_EQ(20000u, meter.mIntervalStartMs);
    EXPECT_EQ(502126u, meter.mTotalInputBytes);
}

TEST(FramerateSample, theSpreadOf240Buffers_ofWhichTheFirstIsNoMaximum) {
    FramerateSample sample;
    for (int i = 0; i < 240; ++i) {
        EXPECT_EQ(0.0f, sample.mStreamFramerate);
        sample.add((i ^ 1) * 40000);
    }
    EXPECT_FLOAT_EQ(25.0f, sample.mStreamFramerate);
    for (int i = 0; i < 240; ++i) sample.add((i + 239) % 240 * 40000);
    EXPECT_FLOAT_EQ(239 * 25.0f / 238, sample.mStreamFramerate);
}

TEST(InputHistory, keepsTwenty_alsoOverARestart) {
    InputHistory history;
    for (int i = 1; i <= 21; ++i) history.add(i % 20);
    EXPECT_EQ(2, history.occurrencesOf(0) + history.occurrencesOf(1));
    history.restart();
    history.add(7);
    EXPECT_EQ(2, history.occurrencesOf(7));
}

TEST(RepeatedTimestamps, throttledFromTheTwentiethOn) {
    std::vector<int> logged;
    for (int i = 18; i < 45; ++i) {
        if (RepeatedTimestamps::isLogged(i, true)) logged.push_back(i);
        EXPECT_TRUE(RepeatedTimestamps::isLogged(i, false));
    }
    EXPECT_EQ((std::vector<int>{18, 19, 20, 40}), logged);
}

TEST(ResolutionChange, eachClassIsReachedOnce_andFhdNoMoreAfterUhd) {
    using Rampup = ResolutionChange::Rampup;
    ResolutionChange change;
    EXPECT_EQ(Rampup::NONE, change.takeRampup(1919, 1080));
    EXPECT_EQ(Rampup::FHD, change.takeRampup(1080, 1920));
    EXPECT_EQ(Rampup::NONE, change.takeRampup(1920, 1080));
    EXPECT_EQ(Rampup::UHD, change.takeRampup(3840, 2160));
    EXPECT_EQ(Rampup::NONE, change.takeRampup(3840, 2160));
    ResolutionChange straight;
    EXPECT_EQ(Rampup::UHD, straight.takeRampup(3840, 2160));
    EXPECT_EQ(Rampup::NONE, straight.takeRampup(1920, 1080));
}

TEST(Rendering, outputIsDelayedFromASecondOn_theFirstNever) {
    Rendering rendering;
    EXPECT_FALSE(rendering.isDelayed(5000));
    EXPECT_EQ(5001, rendering.sinceLastOutputMs(5000));
    rendering.mLastOutputTimeMs = 5000;
    EXPECT_FALSE(rendering.isDelayed(5999));
    EXPECT_TRUE(rendering.isDelayed(6000));
}

TEST(VendorStatistics, aValueFollowsItsKeyAndOneSeparator) {
    const AString text("HWCRenderFrameCount=90;TunnelFrameDropCount=-1;abc=");
    const VendorStatistics statistics(text);
    EXPECT_EQ(90u, statistics.shownByDisplay());
    EXPECT_EQ(UINT32_MAX, statistics.droppedInTunnel());
    EXPECT_EQ(0, statistics.valueOf("abc") + statistics.longestDropRun());
}

}  // namespace
}  // namespace android::logger
