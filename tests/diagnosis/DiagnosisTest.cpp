// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <benchmarks/diagnosis/Diagnosis.h>

namespace android::test {
namespace {

/** A playback of every kind of fault, undisturbed but for it. */
TEST(Diagnosis, eachFaultIsNamedAndEveryStandingPictureFound) {
    for (int kind = 0; kind < static_cast<int>(FaultKind::COUNT); ++kind) {
        for (const bool omx : {false, true}) {
            Score score;
            Scenario scenario;
            scenario.setup.omx = omx;
            scenario.setup.faults = {{static_cast<FaultKind>(kind), 120, 900}};
            const bool isRate = scenario.setup.faults[0].kind == FaultKind::SLOW_DISPLAY;
            if (isRate) scenario.setup.displayHz = 25;
            score.addFaulty(scenario);
            EXPECT_EQ(1, score.large.right) << toString(scenario.setup.faults[0].kind);
            EXPECT_EQ(score.standing.all, score.standing.right);
            for (const std::string& miss : score.misses) ADD_FAILURE() << miss;
        }
    }
}

TEST(Diagnosis, healthyPlaybacksHaveNoIncident) {
    std::mt19937 random(7);
    Score score;
    for (int i = 0; i < 40; ++i) score.addHealthy(healthyScenario(random));
    EXPECT_LT(30, score.healthy.all);
    for (const std::string& miss : score.misses) ADD_FAILURE() << miss;
}

TEST(Diagnosis, faultsOfAllPlacesAndPipelinesAreNamed) {
    std::mt19937 random(8);
    Score score;
    for (int i = 0; i < 60; ++i) score.addFaulty(faultyScenario(random));
    // Two at once may hide one another.
    EXPECT_LE(0.95 * score.large.all, score.large.right);
    EXPECT_EQ(score.standing.all, score.standing.right);
}

}  // namespace
}  // namespace android::test
