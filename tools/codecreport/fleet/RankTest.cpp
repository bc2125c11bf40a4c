// SPDX-License-Identifier: Apache-2.0
#include "fleet/RankTest.h"

#include <math.h>
#include <stdint.h>

#include <algorithm>
#include <numeric>

namespace android::codecreport {

namespace {

constexpr size_t kMaxExact = 50;
/** Of the normal distribution, 95 % lie within so many standard deviations. */
constexpr double kZ95 = 1.959963985;

double squared(double value) {
    return value * value;
}

/** Twice the mid-ranks of all values of both sets, from least to greatest, and whose they are. */
struct Ranks {
    std::vector<int64_t> doubled;
    std::vector<bool> isNow;
    int64_t nowSum = 0;
    /** Sum of t^3 - t over the groups of t equal values. */
    double ties = 0;
};

Ranks rank(const std::vector<double>& base, const std::vector<double>& now) {
    std::vector<std::pair<double, bool>> all;
    all.reserve(base.size() + now.size());
    for (const double value : base) all.emplace_back(value, false);
    for (const double value : now) all.emplace_back(value, true);
    std::sort(all.begin(), all.end());
    Ranks ranks;
    for (size_t begin = 0, end = 0; begin < all.size(); begin = end) {
        while (end < all.size() && all[end].first == all[begin].first) ++end;
        const double count = static_cast<double>(end - begin);
        ranks.ties += count * count * count - count;
        for (size_t i = begin; i < end; ++i) {
            ranks.doubled.push_back(static_cast<int64_t>(begin + 1 + end));
            ranks.isNow.push_back(all[i].second);
            if (all[i].second) ranks.nowSum += ranks.doubled.back();
        }
    }
    return ranks;
}

/** Counts, of all ways to choose `size` of the ranks, those as far from the mean as the sum. */
double exactP(const Ranks& ranks, size_t size) {
    const int64_t total = std::accumulate(ranks.doubled.begin(), ranks.doubled.end(), int64_t{0});
    // ways[j][s]: choices of j ranks with the sum s.
    std::vector<std::vector<double>> ways(size + 1, std::vector<double>(total + 1));
    ways[0][0] = 1;
    for (const int64_t rank : ranks.doubled) {
        for (size_t j = size; j > 0; --j) {
            for (int64_t s = total; s >= rank; --s) ways[j][s] += ways[j - 1][s - rank];
        }
    }
    const double mean = static_cast<double>(total) * size / ranks.doubled.size();
    const double distance = fabs(ranks.nowSum - mean) - 1e-6;
    double all = 0;
    double extreme = 0;
    for (int64_t s = 0; s <= total; ++s) {
        all += ways[size][s];
        if (fabs(s - mean) >= distance) extreme += ways[size][s];
    }
    return std::min(1.0, extreme / all);
}

/** Standard deviation of the number of pairs in which the second is greater, if sets are equal. */
double deviation(double n, double m, double ties) {
    const double both = n + m;
    return sqrt(n * m / 12 * std::max(0.0, both + 1 - ties / (both * (both - 1))));
}

/** For each value the share of the others that are less, equal ones counted half; sorted sets. */
std::vector<double> placements(const std::vector<double>& values,
                               const std::vector<double>& others) {
    std::vector<double> shares;
    for (const double value : values) {
        const auto equal = std::equal_range(others.begin(), others.end(), value);
        const double below = static_cast<double>(equal.first - others.begin());
        const double ties = static_cast<double>(equal.second - equal.first);
        shares.push_back((below + ties / 2) / others.size());
    }
    return shares;
}

double varianceOfMean(const std::vector<double>& values) {
    const double n = static_cast<double>(values.size());
    if (n < 2) return 0.25;
    const double mean = std::accumulate(values.begin(), values.end(), 0.0) / n;
    double sum = 0;
    for (const double value : values) sum += squared(value - mean);
    return sum / (n - 1) / n;
}

/** Sorted sets; the pairs with a difference of at most so much. */
double pairsWithin(const std::vector<double>& base, const std::vector<double>& now, double limit) {
    double count = 0;
    size_t below = 0;
    for (const double value : base) {
        while (below < now.size() && now[below] - value <= limit) ++below;
        count += static_cast<double>(below);
    }
    return count;
}

/** The difference of a pair that so many pairs' differences are not above. */
double differenceAt(const std::vector<double>& base, const std::vector<double>& now, double rank) {
    double low = now.front() - base.back();
    double high = now.back() - base.front();
    const double grain = std::max(1e-12, (high - low) * 1e-7);
    if (pairsWithin(base, now, low) >= rank) return low;
    while (high - low > grain) {
        const double middle = low + (high - low) / 2;
        (pairsWithin(base, now, middle) >= rank ? high : low) = middle;
    }
    return fabs(high) <= grain ? 0 : high;
}

}  // namespace

RankTest rankTest(std::vector<double> base, std::vector<double> now) {
    const Ranks ranks = rank(base, now);
    std::sort(base.begin(), base.end());
    std::sort(now.begin(), now.end());
    const double n = static_cast<double>(base.size());
    const double m = static_cast<double>(now.size());
    const double pairs = n * m;
    const double greater = ranks.nowSum / 2.0 - m * (m + 1) / 2;
    const double sd = deviation(n, m, ranks.ties);
    RankTest test;
    if (base.size() + now.size() <= kMaxExact) {
        test.p = exactP(ranks, now.size());
    } else if (sd > 0) {
        test.p = erfc(std::max(0.0, fabs(greater - pairs / 2) - 0.5) / sd / sqrt(2));
    }
    test.effect = 2 * greater / pairs - 1;
    // After DeLong. That nothing was seen in n sessions leaves room for 3 in n.
    const double error = sqrt(
            4 * (varianceOfMean(placements(now, base)) + varianceOfMean(placements(base, now))) +
            squared(1.5 / n) + squared(1.5 / m));
    test.effectLow = std::max(-1.0, test.effect - kZ95 * error);
    test.effectHigh = std::min(1.0, test.effect + kZ95 * error);
    const double rank = std::max(1.0, floor(pairs / 2 - kZ95 * sd));
    test.shift = differenceAt(base, now, ceil(pairs / 2));
    test.shiftLow = differenceAt(base, now, rank);
    test.shiftHigh = differenceAt(base, now, pairs - rank + 1);
    return test;
}

double leastP(size_t base, size_t now) {
    double ways = 1;
    for (size_t i = 1; i <= std::min(base, now); ++i) {
        ways *= static_cast<double>(base + now - i + 1) / i;
    }
    return std::min(1.0, 2 / ways);
}

std::vector<double> holm(const std::vector<double>& p) {
    std::vector<size_t> order(p.size());
    std::iota(order.begin(), order.end(), 0);
    std::sort(order.begin(), order.end(), [&p](size_t a, size_t b) { return p[a] < p[b]; });
    std::vector<double> adjusted(p.size());
    double least = 0;
    for (size_t i = 0; i < order.size(); ++i) {
        least = std::max(least, std::min(1.0, p[order[i]] * (order.size() - i)));
        adjusted[order[i]] = least;
    }
    return adjusted;
}

}  // namespace android::codecreport
