// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "database/Database.h"
#include "model/Histogram.h"
#include "model/Incident.h"

namespace android::codecreport {

/**
 * Figures of the sessions that have something in common. A session whose log does not tell a value
 * is left out of that value: rates are over the hours of the sessions that have both.
 */
struct FleetGroup {
    std::string name;
    uint64_t sessions = 0;
    double hours = 0;
    /** Sessions that could be judged, and those of them that were not smooth. */
    uint64_t judged = 0;
    uint64_t stuttered = 0;
    /** Standing pictures in the hours that they are known for. */
    double standingHours = 0;
    double standingMs = 0;
    uint64_t standings = 0;
    double neverShownHours = 0;
    uint64_t neverShown = 0;
    uint64_t errors = 0;
    Histogram firstFrameMs;
    /** Thousandths of playback that pictures stood for in the sessions in which one did. */
    Histogram standingPerMille;
    /** Pictures lost and time stood by cause. */
    std::array<double, kCauseCount> lostByCause{};
    std::array<double, kCauseCount> stoodMsByCause{};
    int64_t worstSession = 0;
    double worstStoodMs = 0;

    void add(const FleetGroup& other);
};

/** Groups by one list of names, the largest first. */
struct FleetGrouping {
    std::vector<std::string> names;
    std::vector<FleetGroup> groups;
};

struct WorstSession {
    int64_t id = 0;
    std::string log;
    std::string codec;
    std::string app;
    std::string resolution;
    std::string sentence;
    double stoodMs = 0;
};

struct FleetFigures {
    FleetGroup all;
    uint64_t logs = 0;
    std::vector<FleetGrouping> groupings;
    /** By the time that pictures stood, then by pictures lost. */
    std::vector<WorstSession> worst;
};

/**
 * Sums up all video sessions of a database, once for all and once for each list of names, which are
 * those that groupSql() knows.
 *
 * @return nothing, with *error, if a name is not known or the database cannot be read
 */
std::optional<FleetFigures> fleetFigures(Database* database,
                                         const std::vector<std::vector<std::string>>& groupings,
                                         std::string* error);

/** What to group by if nobody says: each label, codec, app and resolution. */
std::vector<std::vector<std::string>> usualGroupings(Database* database);

}  // namespace android::codecreport
