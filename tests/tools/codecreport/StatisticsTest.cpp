// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <random>

#include <tools/codecreport/model/FrameStore.h>
#include <tools/codecreport/model/Histogram.h>
#include <tools/codecreport/model/Session.h>
#include <tools/codecreport/reading/LogClock.h>

namespace android::codecreport {
namespace {

TEST(Histogram, agreesWithSortedValuesWithinItsPromise) {
    EXPECT_EQ(0, Histogram().percentile(0.5));
    std::mt19937_64 random(1);
    for (int64_t range : {100, 4095, 1'000'000, 1'000'000'000}) {
        Histogram histogram;
        Histogram later;
        std::vector<int64_t> values;
        std::uniform_int_distribution<int64_t> pick(-range, range);
        for (int i = 0; i < 5000; ++i) {
            values.push_back(pick(random));
            (i < 2000 ? histogram : later).add(values.back());
        }
        histogram.add(later);
        std::sort(values.begin(), values.end());
        EXPECT_EQ(std::lower_bound(values.begin(), values.end(), -50) - values.begin(),
                  static_cast<int64_t>(histogram.countBelow(-50)));
        EXPECT_EQ(values.front(), histogram.min());
        EXPECT_EQ(values.back(), histogram.max());
        for (double fraction : {0.001, 0.1, 0.5, 0.9, 0.99, 1.0}) {
            const int64_t exact = values[static_cast<size_t>(fraction * 5000 + 0.999999) - 1];
            const double tolerance = std::abs(exact) < 4096 ? 0 : std::abs(exact) / 64.0;
            EXPECT_NEAR(exact, histogram.percentile(fraction), tolerance) << range << fraction;
        }
    }
}

TEST(Series, keepsSumsAndExtremesInBoundedPoints) {
    Series series;
    for (int i = 0; i < 10'000; ++i) series.add(i, i == 7777 ? 1000 : 2);
    EXPECT_LE(series.points().size(), Series::kMax);
    EXPECT_EQ(8u, series.stride());
    double sum = 0;
    double high = 0;
    for (const Series::Point& point : series.points()) {
        sum += point.sum;
        high = std::max(high, point.high);
    }
    EXPECT_EQ(9'999 * 2 + 1000, sum);
    EXPECT_EQ(1000, high);
}

TEST(RateSeries, keepsAmountsWhileSpansDouble) {
    RateSeries series;
    for (int64_t second = 0; second < 5000; ++second) series.add(second * 1'000'000, 2);
    EXPECT_EQ(4'000'000, series.spanUs());
    for (size_t i = 0; i + 1 < series.sums().size(); ++i) EXPECT_EQ(8, series.sums()[i]) << i;
    EXPECT_EQ(5'000u / 4, series.sums().size());
    // Far beyond any log: a damaged time neither loops nor grows.
    series.add(int64_t{1} << 60, 1);
    EXPECT_LE(series.sums().size(), RateSeries::kMax);
}

TEST(FramePoints, keepTheWorstOfTheirNeighbours) {
    FramePoints frames;
    for (int i = 0; i < 50'000; ++i) {
        FramePoint point = {i, i, {0, 20, 0, 0, 0}, 0, false};
        if (i == 12'345) point.dropped = true;
        if (i == 33'333) point.stageMs[1] = 500;
        frames.add(point);
    }
    EXPECT_LE(frames.points().size(), FramePoints::kMax);
    EXPECT_GT(frames.stride(), 2u);
    EXPECT_NEAR(50'000.0 / frames.stride(), frames.points().size(), 1);
    for (const int64_t worst : {12'345, 33'333}) {
        EXPECT_TRUE(std::any_of(frames.points().begin(), frames.points().end(),
                                [&](const FramePoint& p) { return p.ptsUs == worst; }));
    }
}

TEST(FrameStore, framesThatCannotBeReadAreTold) {
    FrameStore frames;
    for (int i = 0; i < 1000; ++i) frames.add(1, Frame());
    sqlite3_hard_heap_limit64(1);
    frames.read(1, [](const Frame&) {});
    sqlite3_hard_heap_limit64(0);
    EXPECT_EQ("frames: out of memory", frames.error());
}

/** One line's place: what its clock shows, what it says of the monotonic clock, where it comes. */
struct Placed {
    int64_t shownMs;
    int64_t monotonicMs;
    int64_t placedMs;
};
constexpr int64_t kNotSaid = -1;

void expectPlaced(const char* what, int64_t resolutionUs, uint64_t jumps, uint64_t reboots,
                  const std::vector<Placed>& lines) {
    SCOPED_TRACE(what);
    LogClock clock;
    for (const Placed& placed : lines) {
        LogLine line;
        line.hasTime = true;
        line.timeUs = placed.shownMs * 1000 / resolutionUs * resolutionUs;
        line.resolutionUs = resolutionUs;
        int64_t us = clock.place(line);
        if (placed.monotonicMs != kNotSaid) us = clock.anchor(placed.monotonicMs);
        EXPECT_EQ(placed.placedMs * 1000, us);
    }
    EXPECT_EQ(jumps, clock.jumps());
    EXPECT_EQ(reboots, clock.reboots());
}

TEST(LogClock, timelineGoesOnOverJumpsWaitsAndReboots) {
    expectPlaced("an hour forward, then back: the monotonic clock goes on by 50 ms each", 1000, 2,
                 0,
                 {{1'000'100, 100, 1'000'100},
                  {4'600'150, 150, 1'000'150},
                  {4'600'160, kNotSaid, 1'000'160},
                  {1'000'200, 200, 1'000'200},
                  {1'000'300, kNotSaid, 1'000'300}});
    expectPlaced("lines of two threads cross by a little; further back is a jump", 1000, 1, 0,
                 {{50'000, kNotSaid, 50'000},
                  {49'900, kNotSaid, 49'900},
                  {10'000, kNotSaid, 50'000},
                  {10'500, kNotSaid, 50'500}});
    expectPlaced("a line that was written 900 ms after the time that it shows", 1000, 0, 0,
                 {{100'000, 0, 100'000}, {101'900, 1000, 101'000}});
    expectPlaced(
            "a reboot starts the monotonic clock anew", 1000, 0, 1,
            {{100'000, 50'000, 100'000}, {140'000, 9'000, 140'000}, {140'001, 9'001, 140'001}});
    expectPlaced(
            "seconds are shown; a line that does not say is as late as the last", 1'000'000, 0, 0,
            {{100'700, 700, 100'000}, {101'900, 1'900, 101'200}, {101'950, kNotSaid, 101'200}});
}

}  // namespace
}  // namespace android::codecreport
