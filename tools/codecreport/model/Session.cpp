// SPDX-License-Identifier: Apache-2.0
#include "model/Session.h"

#include <algorithm>

namespace android::codecreport {

namespace {

int64_t spanMs(int64_t fromUs, int64_t toUs) {
    return fromUs == kNoTime || toUs == kNoTime ? kNoTime : (toUs - fromUs) / 1000;
}

bool isWorse(const FramePoint& a, const FramePoint& b) {
    if (a.dropped != b.dropped) return a.dropped;
    if (a.lateMs != b.lateMs) return a.lateMs > b.lateMs;
    return *std::max_element(a.stageMs.begin(), a.stageMs.end()) >
           *std::max_element(b.stageMs.begin(), b.stageMs.end());
}

}  // namespace

const char* toString(Stage stage) {
    static constexpr const char* kNames[] = {"decrypt", "codec", "message", "app", "lead"};
    return kNames[static_cast<size_t>(stage)];
}

const char* toString(OldCause cause) {
    static constexpr const char* kNames[] = {"input late", "decrypt", "codec",  "message delay",
                                             "app",        "display", "unknown"};
    return kNames[static_cast<size_t>(cause)];
}

int64_t Frame::stageMs(Stage stage) const {
    switch (stage) {
        case Stage::DECRYPT:
            return spanMs(announcedUs, queuedUs);
        case Stage::CODEC:
            return spanMs(codecInUs, codecOutUs);
        case Stage::MESSAGE:
            return spanMs(codecOutUs, outputUs);
        case Stage::APP:
            return spanMs(outputUs, renderCallUs);
        case Stage::LEAD:
            return rendered ? spanMs(renderCallUs, displayUs) : kNoTime;
        default:
            return kNoTime;
    }
}

int64_t Frame::firstUs() const {
    for (int64_t time : {announcedUs, queuedUs, codecInUs, codecOutUs, outputUs, renderCallUs}) {
        if (time != kNoTime) return time;
    }
    return displayUs;
}

int64_t Frame::lastUs() const {
    return std::max(
            {announcedUs, queuedUs, codecInUs, codecOutUs, outputUs, renderCallUs, displayUs});
}

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

void Session::addMoment(const Moment& moment) {
    ++momentCount;
    if (moments.size() < kMaxMoments) moments.push_back(moment);
}

}  // namespace android::codecreport
