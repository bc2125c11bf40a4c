// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <benchmarks/diagnosis/Simulator.h>
#include <tools/codecreport/model/Session.h>

namespace android::test {

/** What was injected into a playback, and where. */
struct Scenario {
    std::string name;
    Setup setup;
};

/** A playback in which nothing goes wrong, of any rate, road, display and pipeline. */
Scenario healthyScenario(std::mt19937& random);
/** The same with one or two faults, at a random or the named place. */
Scenario faultyScenario(std::mt19937& random);

codecreport::Cause causeOf(FaultKind kind);
const char* toString(FaultKind kind);

/** The judgement that codecreport makes of a log. */
std::unique_ptr<codecreport::Session> judged(const Simulated& simulated);

/** Sums up what was said of many playbacks. */
struct Score {
    using Cause = codecreport::Cause;
    struct Cell {
        int right = 0;
        int all = 0;
    };
    /** Injected cause to the one that was named; COUNT: none was. */
    std::map<Cause, std::map<Cause, int>> confusion;
    Cell large;
    Cell small;
    Cell standing;
    Cell healthy;
    int absorbed = 0;
    std::map<FaultKind, int> kinds;
    /** What went wrong, in words. */
    std::vector<std::string> misses;

    void addHealthy(const Scenario& scenario);
    void addFaulty(const Scenario& scenario);

  private:
    void addFault(const Scenario& scenario, const Simulated& simulated, size_t fault,
                  const codecreport::Session& session);
};

}  // namespace android::test
