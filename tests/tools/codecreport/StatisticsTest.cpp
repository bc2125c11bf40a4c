// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

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
    double sum = 0;
    for (int i = 0; i < 10'000; ++i) {
        series.add(i, i == 7777 ? 1000 : i % 3);
        sum += i == 7777 ? 1000 : i % 3;
    }
    EXPECT_LE(series.points().size(), Series::kMax);
    EXPECT_EQ(8u, series.stride());
    double kept = 0;
    double high = 0;
    for (const Series::Point& point : series.points()) {
        kept += point.sum;
        high = std::max(high, point.high);
    }
    EXPECT_EQ(sum, kept);
    EXPECT_EQ(1000, high);
}

TEST(RateSeries, keepsAmountsWhileSpansDouble) {
    RateSeries series;
    for (int64_t second = 0; second < 5000; ++second) series.add(second * 1'000'000, 2);
    EXPECT_LE(series.sums().size(), RateSeries::kMax);
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
    EXPECT_GT(frames.stride(), 1u);
    const auto has = [&frames](int64_t pts) {
        return std::any_of(frames.points().begin(), frames.points().end(),
                           [pts](const FramePoint& p) { return p.ptsUs == pts; });
    };
    EXPECT_TRUE(has(12'345));
    EXPECT_TRUE(has(33'333));
}

LogLine at(int64_t ms, int64_t resolutionUs = 1000) {
    LogLine line;
    line.hasTime = true;
    line.timeUs = ms * 1000 / resolutionUs * resolutionUs;
    line.resolutionUs = resolutionUs;
    return line;
}

TEST(LogClock, monotonicTimesShowJumpsBothWays) {
    LogClock clock;
    // The log's clock is 1 000 000 ms ahead of the monotonic one.
    clock.place(at(1'000'100));
    EXPECT_EQ(1'000'100'000, clock.anchor(100));
    // An hour forward, then back to where it was: the timeline goes on by 50 ms each.
    clock.place(at(4'600'150));
    EXPECT_EQ(1'000'150'000, clock.anchor(150));
    EXPECT_EQ(1'000'160'000, clock.place(at(4'600'160)));
    clock.place(at(1'000'200));
    EXPECT_EQ(1'000'200'000, clock.anchor(200));
    EXPECT_EQ(1'000'300'000, clock.place(at(1'000'300)));
    EXPECT_EQ(2u, clock.jumps());
    EXPECT_EQ(0u, clock.reboots());
}

TEST(LogClock, withoutMonotonicTimesTheTimelineNeverGoesBack) {
    LogClock clock;
    EXPECT_EQ(50'000'000, clock.place(at(50'000)));
    // Lines of two threads may cross by a little.
    EXPECT_EQ(49'900'000, clock.place(at(49'900)));
    EXPECT_EQ(50'000'000, clock.place(at(10'000)));
    EXPECT_EQ(50'500'000, clock.place(at(10'500)));
    EXPECT_EQ(1u, clock.jumps());
}

TEST(LogClock, waitsBeforeALineAreNoJumps) {
    LogClock clock;
    clock.place(at(100'000));
    clock.anchor(0);
    // The line was written 900 ms after the time that it shows.
    clock.place(at(101'900));
    EXPECT_EQ(101'000'000, clock.anchor(1000));
    EXPECT_EQ(0u, clock.jumps());
}

TEST(LogClock, rebootStartsTheMonotonicClockAnew) {
    LogClock clock;
    clock.place(at(100'000));
    clock.anchor(50'000);
    clock.place(at(140'000));
    EXPECT_EQ(140'000'000, clock.anchor(9'000));
    EXPECT_EQ(140'001'000, clock.fromMonotonic(9'001));
    EXPECT_EQ(1u, clock.reboots());
    EXPECT_EQ(0u, clock.jumps());
}

TEST(LogClock, monotonicTimesTellMillisecondsWhereTheLogShowsSeconds) {
    LogClock clock;
    clock.place(at(100'700, 1'000'000));
    EXPECT_EQ(100'000'000, clock.anchor(700));
    clock.place(at(101'900, 1'000'000));
    EXPECT_EQ(101'200'000, clock.anchor(1'900));
    // A line without one is as late as the last.
    EXPECT_EQ(101'200'000, clock.place(at(101'950, 1'000'000)));
    EXPECT_EQ(0u, clock.jumps());
}

}  // namespace
}  // namespace android::codecreport
