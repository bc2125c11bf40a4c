// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "fleet/FleetOptions.h"
#include "output/Compare.h"

namespace android::codecreport {

struct Options {
    enum class Command { REPORT, COMPARE, EXPLAIN, FLEET };

    Command command = Command::REPORT;
    /** Logs; for COMPARE the two reports; for EXPLAIN the keys. */
    std::vector<std::string> arguments;
    /** Empty: not wanted; "-": standard output or input. */
    std::string page;
    std::string trace;
    std::string json;
    std::string metrics;
    FleetOptions fleet;
    std::vector<Threshold> thresholds;
    bool quiet = false;
    /** How often what is followed is written; 0: nothing is. */
    int64_t followMs = 0;
    /** EXPLAIN: tables as Markdown, all of them if no argument names one. */
    bool markdown = false;
};

/** @return the exit code if the program is to end here; what is wrong stands on standard error */
std::optional<int> parseOptions(int argc, char** argv, Options* options);

}  // namespace android::codecreport
