// SPDX-License-Identifier: Apache-2.0
#include "model/Histogram.h"

#include <math.h>

#include <algorithm>

namespace android::codecreport {

namespace {
// Beyond the exact range each power of two has this many steps.
constexpr int kStepBits = 6;
constexpr int kExactBits = 12;
// No duration of a session comes near; keeps a damaged number from growing the table.
constexpr int64_t kLargest = int64_t{1} << 40;
}  // namespace

size_t Histogram::indexOf(int64_t magnitude) {
    if (magnitude < kExact) return static_cast<size_t>(magnitude);
    const int power = 63 - __builtin_clzll(static_cast<uint64_t>(magnitude));
    const int64_t step = (magnitude >> (power - kStepBits)) - (int64_t{1} << kStepBits);
    return kExact + (static_cast<size_t>(power - kExactBits) << kStepBits) + step;
}

int64_t Histogram::valueOf(size_t index) {
    if (index < kExact) return static_cast<int64_t>(index);
    const size_t beyond = index - kExact;
    const int power = static_cast<int>(beyond >> kStepBits) + kExactBits;
    const int64_t step = static_cast<int64_t>(beyond & ((1 << kStepBits) - 1));
    return ((int64_t{1} << kStepBits) + step) << (power - kStepBits);
}

void Histogram::add(int64_t value) {
    value = std::clamp(value, -kLargest, kLargest);
    mMin = mCount == 0 ? value : std::min(mMin, value);
    mMax = mCount == 0 ? value : std::max(mMax, value);
    mSum += value;
    ++mCount;
    std::vector<uint64_t>& counts = value < 0 ? mNegative : mPositive;
    const size_t index = indexOf(value < 0 ? -value : value);
    if (index >= counts.size()) counts.resize(index + 1);
    ++counts[index];
}

void Histogram::add(const Histogram& other) {
    if (other.mCount == 0) return;
    mMin = mCount == 0 ? other.mMin : std::min(mMin, other.mMin);
    mMax = mCount == 0 ? other.mMax : std::max(mMax, other.mMax);
    mSum += other.mSum;
    mCount += other.mCount;
    for (const auto part : {&Histogram::mPositive, &Histogram::mNegative}) {
        std::vector<uint64_t>& counts = this->*part;
        const std::vector<uint64_t>& more = other.*part;
        counts.resize(std::max(counts.size(), more.size()));
        for (size_t i = 0; i < more.size(); ++i) counts[i] += more[i];
    }
}

uint64_t Histogram::countBelow(int64_t value) const {
    uint64_t count = 0;
    for (size_t i = 0; i < mPositive.size() && valueOf(i) < value; ++i) count += mPositive[i];
    for (size_t i = 0; i < mNegative.size(); ++i) {
        if (-valueOf(i) < value) count += mNegative[i];
    }
    return count;
}

int64_t Histogram::percentile(double fraction) const {
    if (mCount == 0) return 0;
    const uint64_t rank = std::max<uint64_t>(1, static_cast<uint64_t>(ceil(fraction * mCount)));
    uint64_t seen = 0;
    for (size_t i = mNegative.size(); i > 0; --i) {
        seen += mNegative[i - 1];
        if (seen >= rank) return std::max(mMin, -valueOf(i - 1));
    }
    for (size_t i = 0; i < mPositive.size(); ++i) {
        seen += mPositive[i];
        if (seen >= rank) return std::min(mMax, valueOf(i));
    }
    return mMax;
}

}  // namespace android::codecreport
