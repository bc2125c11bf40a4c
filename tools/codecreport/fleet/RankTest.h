// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stddef.h>

#include <vector>

namespace android::codecreport {

/** What two sets of values have to say on whether they differ. */
struct RankTest {
    /** Mann-Whitney, two-sided: how often chance alone would part equal sets at least so far. */
    double p = 1;
    /**
     * Rank-biserial correlation: of all pairs of one value from each set, the share in which the
     * second set's is greater minus the share in which it is less. With its interval of 95 %.
     */
    double effect = 0;
    double effectLow = -1;
    double effectHigh = 1;
    /** Hodges-Lehmann: the median of the differences of all pairs, with its interval of 95 %. */
    double shift = 0;
    double shiftLow = 0;
    double shiftHigh = 0;
};

/**
 * Compares the ranks of two sets, neither of them empty. Exact, with ties, up to 50 values
 * together; beyond, by the normal approximation with corrections for ties and continuity.
 */
RankTest rankTest(std::vector<double> base, std::vector<double> now);

/** The least p that sets of these sizes could give. */
double leastP(size_t base, size_t now);

/** p values for many questions at once, by Holm: the chance of one false alarm or more. */
std::vector<double> holm(const std::vector<double>& p);

}  // namespace android::codecreport
