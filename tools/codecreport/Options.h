// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "output/Compare.h"

namespace android::codecreport {

struct Options {
    enum class Command { REPORT, COMPARE, EXPLAIN, HELP, VERSION };

    Command command = Command::REPORT;
    /** Logs; for COMPARE the two reports; for EXPLAIN the keys. */
    std::vector<std::string> arguments;
    /** Empty: not wanted; "-": standard output or input. */
    std::string page;
    std::string trace;
    std::string json;
    std::string metrics;
    std::vector<Threshold> thresholds;
    bool quiet = false;
    /** EXPLAIN: tables as Markdown, all of them if no argument names one. */
    bool markdown = false;
};

/** @return false, with *error set, if the command line makes no sense */
bool parseOptions(int argc, char** argv, Options* options, std::string* error);

std::string helpText();

}  // namespace android::codecreport
