// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <vector>

namespace android::codecreport {

/**
 * Counts integer values for percentiles in bounded memory. Values from -4096 to 4095 are exact;
 * beyond, they are counted in steps of at most 1/64 of the value (1.6 %), shown by the step's end
 * that is nearer to zero. Minimum, maximum, sum and count are always exact.
 */
class Histogram {
  public:
    void add(int64_t value);
    void add(const Histogram& other);

    uint64_t count() const { return mCount; }
    int64_t min() const { return mMin; }
    int64_t max() const { return mMax; }
    double mean() const { return mCount == 0 ? 0 : static_cast<double>(mSum) / mCount; }

    /**
     * Nearest-rank percentile: the smallest value that at least `fraction` of all are not above.
     *
     * @param fraction 0 < fraction <= 1
     */
    int64_t percentile(double fraction) const;

    /** Values less than this one, which is exact or the beginning of a step. */
    uint64_t countBelow(int64_t value) const;

  private:
    static constexpr int64_t kExact = 4096;
    static size_t indexOf(int64_t magnitude);
    static int64_t valueOf(size_t index);

    std::vector<uint64_t> mPositive;
    std::vector<uint64_t> mNegative;
    uint64_t mCount = 0;
    int64_t mMin = 0;
    int64_t mMax = 0;
    int64_t mSum = 0;
};

}  // namespace android::codecreport
