// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <array>
#include <limits>
#include <vector>

#include "model/Frame.h"

/** Values over time, thinned out as they come so that any length of session can be drawn. */
namespace android::codecreport {

/**
 * A value over time in at most kMax points: when they are full, each two become one, so that the
 * line keeps its shape over the whole session. Each point keeps the smallest and largest value.
 */
class Series {
  public:
    static constexpr size_t kMax = 2000;
    struct Point {
        int64_t timeUs;
        double sum;
        double low;
        double high;
        uint32_t count;
        double mean() const { return sum / count; }
    };
    void add(int64_t timeUs, double value);
    const std::vector<Point>& points() const { return mPoints; }
    /** Values that one point stands for. */
    uint32_t stride() const { return mStride; }

  private:
    std::vector<Point> mPoints;
    uint32_t mStride = 1;
};

/**
 * Amounts per span of time, in at most kMax spans: when they are full, spans double. Spans in which
 * nothing was added count as 0.
 */
class RateSeries {
  public:
    static constexpr size_t kMax = 2000;
    void add(int64_t timeUs, double amount);
    int64_t startUs() const { return mStartUs; }
    int64_t spanUs() const { return mSpanUs; }
    int64_t lastUs() const { return mLastUs; }
    const std::vector<double>& sums() const { return mSums; }

  private:
    std::vector<double> mSums;
    int64_t mStartUs = 0;
    int64_t mLastUs = 0;
    int64_t mSpanUs = 1'000'000;
};

/** A frame as it is drawn. */
struct FramePoint {
    int64_t timeUs;
    int64_t ptsUs;
    std::array<int32_t, kStageCount> stageMs;
    int32_t lateMs;
    bool dropped;
};
constexpr int32_t kNoStage = std::numeric_limits<int32_t>::min();

/**
 * At most kMax frames to draw: when they are full, of each two neighbours the one stays that was
 * dropped, later or longer on its way, so that what went wrong stays visible.
 */
class FramePoints {
  public:
    static constexpr size_t kMax = 4000;
    void add(const FramePoint& point);
    const std::vector<FramePoint>& points() const { return mPoints; }
    /** Frames of which the worst is drawn. */
    uint32_t stride() const { return mStride; }

  private:
    std::vector<FramePoint> mPoints;
    uint32_t mStride = 1;
    uint32_t mPending = 0;
};

}  // namespace android::codecreport
