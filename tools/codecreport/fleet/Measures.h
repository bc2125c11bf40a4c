// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace android::codecreport {

/** A figure of a session that sets of sessions are compared by. */
struct FleetMeasure {
    std::string name;
    const char* unit;
    /** Of session_summary s; null where the log does not tell. */
    std::string sql;
    /** Mostly 0: its mean speaks, not its median. */
    bool isRare = false;
    /** What a verdict on a whole set rests on. */
    bool isMain = false;
};

const std::vector<FleetMeasure>& fleetMeasures();

}  // namespace android::codecreport
