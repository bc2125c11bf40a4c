// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "database/Database.h"
#include "fleet/Measures.h"
#include "fleet/RankTest.h"
#include "judging/Outcome.h"

namespace android::codecreport {

/** One measure of the sessions of two sets; sessions whose log does not tell it are left out. */
struct MeasuredSets {
    const FleetMeasure* measure = nullptr;
    std::vector<double> base;
    std::vector<double> now;
};

struct SetOutcome {
    const FleetMeasure* measure = nullptr;
    size_t baseCount = 0;
    size_t nowCount = 0;
    /** The mean of a rare measure, the median of another; only where the count is not 0. */
    double baseTypical = 0;
    double nowTypical = 0;
    RankTest test;
    /** After correction for all measures. */
    double p = 1;
    Outcome outcome = Outcome::CANNOT_TELL;
    /** About how many sessions a side would tell; 0: no matter, or not known. */
    size_t wouldTell = 0;
};

/** Two sets of sessions, for people. */
struct SetComparison {
    size_t baseSessions = 0;
    size_t nowSessions = 0;
    size_t baseLogs = 0;
    size_t nowLogs = 0;
    std::vector<SetOutcome> values;
    Outcome outcome = Outcome::CANNOT_TELL;
};

/**
 * Says of each measure whether it differs beyond chance: all together raise a false alarm in at
 * most 5 of 100 comparisons of equal sets. What does not differ is the same where the interval of
 * the effect leaves no room for a difference that matters; else it cannot be told.
 */
std::vector<SetOutcome> judgeSets(const std::vector<MeasuredSets>& sets);

/** One worse measure makes a set worse; without any, better; else the main measures decide. */
Outcome outcomeOf(const std::vector<SetOutcome>& values);

/** One side of a comparison. */
struct SessionSet {
    Database* database;
    /** SQL on session_summary s. */
    std::string condition = "1";
};

/** @return false with *error if a database cannot be read */
bool compareSets(const SessionSet& base, const SessionSet& now, SetComparison* comparison,
                 std::string* error);

std::string toText(const SetComparison& comparison);
nlohmann::ordered_json toJson(const SetComparison& comparison);

}  // namespace android::codecreport
