// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include <tools/options/OptionTable.h>

#include "database/Query.h"
#include "fleet/LogFiles.h"

namespace android::codecreport {

/** What only the commands on databases and on sets of logs take. */
struct FleetOptions {
    /** Empty: add to the database. */
    std::string command;
    std::string database;
    /** Of compare, what follows "--"; the operands before it are BASE. */
    std::vector<std::string> newSet;
    Labels labels;
    std::string labelPattern;
    /** Each a list of names with commas between. */
    std::vector<std::string> by;
    bool noFrames = false;
    RowForm form = RowForm::TABLE;
};

std::vector<options::Command> fleetCommands();
options::Section fleetSection(FleetOptions* options);

}  // namespace android::codecreport
