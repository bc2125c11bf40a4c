// SPDX-License-Identifier: Apache-2.0
#include "model/Series.h"

#include <algorithm>

namespace android::codecreport {

namespace {

bool isWorse(const FramePoint& a, const FramePoint& b) {
    if (a.dropped != b.dropped) return a.dropped;
    if (a.lateMs != b.lateMs) return a.lateMs > b.lateMs;
    return *std::max_element(a.stageMs.begin(), a.stageMs.end()) >
           *std::max_element(b.stageMs.begin(), b.stageMs.end());
}

}  // namespace

void Series::add(int64_t timeUs, double value) {
    if (!mPoints.empty() && mPoints.back().count < mStride) {
        Point& point = mPoints.back();
        point.sum += value;
        point.low = std::min(point.low, value);
        point.high = std::max(point.high, value);
        ++point.count;
        return;
    }
    if (mPoints.size() == kMax) {
        for (size_t i = 0; i < kMax / 2; ++i) {
            const Point& a = mPoints[2 * i];
            const Point& b = mPoints[2 * i + 1];
            mPoints[i] = {a.timeUs, a.sum + b.sum, std::min(a.low, b.low), std::max(a.high, b.high),
                          a.count + b.count};
        }
        mPoints.resize(kMax / 2);
        mStride *= 2;
    }
    mPoints.push_back({timeUs, value, value, value, 1});
}

void RateSeries::add(int64_t timeUs, double amount) {
    if (mSums.empty()) mStartUs = mLastUs = timeUs;
    mLastUs = std::max(mLastUs, timeUs);
    size_t index = timeUs <= mStartUs ? 0 : (timeUs - mStartUs) / mSpanUs;
    while (index >= kMax) {
        for (size_t i = 0; 2 * i < mSums.size(); ++i) {
            mSums[i] = mSums[2 * i] + (2 * i + 1 < mSums.size() ? mSums[2 * i + 1] : 0);
        }
        mSums.resize((mSums.size() + 1) / 2);
        mSpanUs *= 2;
        index /= 2;
    }
    if (index >= mSums.size()) mSums.resize(index + 1);
    mSums[index] += amount;
}

void FramePoints::add(const FramePoint& point) {
    if (mPending > 0) {
        if (isWorse(point, mPoints.back())) mPoints.back() = point;
        mPending = (mPending + 1) % mStride;
        return;
    }
    if (mPoints.size() == kMax) {
        for (size_t i = 0; i < kMax / 2; ++i) {
            const bool second = isWorse(mPoints[2 * i + 1], mPoints[2 * i]);
            mPoints[i] = mPoints[2 * i + (second ? 1 : 0)];
        }
        mPoints.resize(kMax / 2);
        mStride *= 2;
    }
    mPoints.push_back(point);
    mPending = 1 % mStride;
}

}  // namespace android::codecreport
