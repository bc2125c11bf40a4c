// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <math.h>

#include <random>

#include <tools/codecreport/fleet/SetCompare.h>

namespace android::test {
namespace {

using namespace codecreport;

TEST(CodecreportRankTest, knowsTheTextbooksCases) {
    // {1,2,3} and {4,5,6}: 2 of the 20 ways to part six ranks are as far apart.
    const RankTest apart = rankTest({1, 2, 3}, {4, 5, 6});
    EXPECT_DOUBLE_EQ(0.1, apart.p);
    EXPECT_DOUBLE_EQ(1, apart.effect);
    EXPECT_NEAR(3, apart.shift, 1e-6);
    // {0,0,1} and {0,1,1}: the sums of ranks 7, 10, 13 or 16 halves come up 1, 9, 9 and 1 times.
    EXPECT_DOUBLE_EQ(1, rankTest({0, 0, 1}, {0, 1, 1}).p);
    EXPECT_DOUBLE_EQ(1, rankTest({5, 5}, {5, 5}).p);
    EXPECT_DOUBLE_EQ(0.1, leastP(3, 3));
    EXPECT_EQ((std::vector<double>{0.04, 0.03, 0.04}), holm({0.02, 0.01, 0.02}));
}

/** What sessions of a fleet look like: measures that hang together, some of them mostly 0. */
class Fleet {
  public:
    /** @param codecFactor how much longer the codec takes in this set */
    void draw(size_t sessions, double codecFactor, double moreStutter,
              std::vector<double> MeasuredSets::*side, std::vector<MeasuredSets>* sets) {
        std::normal_distribution<double> normal;
        std::uniform_real_distribution<double> uniform;
        for (size_t n = 0; n < sessions; ++n) {
            const double device = normal(mRandom);
            const bool stutters = uniform(mRandom) < 0.05 + moreStutter;
            for (MeasuredSets& set : *sets) {
                const bool isCodec = set.measure->name.find("codec") != std::string::npos;
                double value = exp(0.15 * device + 0.2 * normal(mRandom));
                if (set.measure->isRare) value = stutters ? value : 0;
                if (set.measure->name == "stuttered") value = stutters ? 1 : 0;
                if (isCodec) value *= codecFactor;
                // The log shows whole milliseconds.
                (set.*side).push_back(set.measure->isRare ? value : floor(20 * value));
            }
        }
    }

    Outcome compare(size_t sessions, double codecFactor = 1, double moreStutter = 0) {
        std::vector<MeasuredSets> sets(fleetMeasures().size());
        for (size_t i = 0; i < sets.size(); ++i) sets[i].measure = &fleetMeasures()[i];
        draw(sessions, 1, 0, &MeasuredSets::base, &sets);
        draw(sessions, codecFactor, moreStutter, &MeasuredSets::now, &sets);
        return outcomeOf(judgeSets(sets));
    }

  private:
    std::mt19937 mRandom{1};
};

constexpr int kDraws = 300;

TEST(CodecreportSetCompare, equalSetsRaiseAFalseAlarmInFiveOfAHundredDrawsAtMost) {
    Fleet fleet;
    for (const size_t sessions : {12, 80}) {
        int alarms = 0;
        for (int i = 0; i < kDraws; ++i) {
            const Outcome outcome = fleet.compare(sessions);
            if (outcome == Outcome::WORSE || outcome == Outcome::BETTER) ++alarms;
        }
        EXPECT_LE(alarms, kDraws / 20) << sessions;
    }
}

TEST(CodecreportSetCompare, smallRegressionsAreFound) {
    Fleet fleet;
    int slower = 0;
    int stuttering = 0;
    for (int i = 0; i < kDraws / 10; ++i) {
        // A tenth more time in the codec; 12 instead of 5 of 100 sessions that stutter.
        if (fleet.compare(300, 1.1) == Outcome::WORSE) ++slower;
        if (fleet.compare(1000, 1, 0.07) == Outcome::WORSE) ++stuttering;
    }
    EXPECT_GE(slower, kDraws * 95 / 1000);
    EXPECT_GE(stuttering, kDraws * 95 / 1000);
}

TEST(CodecreportSetCompare, fewSessionsCannotTellAndManyEqualOnesAreTheSame) {
    Fleet fleet;
    EXPECT_EQ(Outcome::CANNOT_TELL, fleet.compare(3, 10));
    EXPECT_EQ(Outcome::CANNOT_TELL, fleet.compare(100));
    EXPECT_EQ(Outcome::SAME, fleet.compare(2000));
    EXPECT_EQ(Outcome::WORSE, fleet.compare(12, 10));
    EXPECT_EQ(Outcome::BETTER, fleet.compare(12, 0.1));
}

TEST(CodecreportSetCompare, whatNoLogTellsIsNotShown) {
    const std::vector<FleetMeasure>& measures = fleetMeasures();
    SetComparison comparison;
    comparison.values = judgeSets({{&measures[0], {1, 2}, {2, 3}}, {&measures[1], {}, {}}});
    EXPECT_EQ(1u, toJson(comparison)["values"].size());
    EXPECT_EQ(std::string::npos, toText(comparison).find(measures[1].name));
}

}  // namespace
}  // namespace android::test
