// SPDX-License-Identifier: Apache-2.0
#include "ExitCode.h"
#include "fleet/FleetCommands.h"
#include "fleet/Grouping.h"
#include "fleet/SetCompare.h"
#include "output/JsonReport.h"

namespace android::codecreport {

namespace {

/**
 * Logs, folders, one database, or conditions on the database of --db. That a log of many cannot be
 * read is said and no matter.
 *
 * @return what the program ends with if there is no set
 */
ExitCode openSet(const std::vector<std::string>& operands, const Options& options,
                 Database* database, std::string* condition) {
    const std::string& fleet = options.fleet.database;
    if (fleet.empty() && operands.size() == 1 && isDatabase(operands[0])) {
        return openDatabase(operands[0], database) ? OK : BAD_INPUT;
    }
    if (fleet.empty()) {
        if (database->open("", Database::Access::CREATE)) {
            Options withoutFrames = options;
            withoutFrames.fleet.noFrames = true;
            return addLogs(operands, withoutFrames, database) == BAD_OUTPUT ? BAD_OUTPUT : OK;
        }
        say(database->error());
        return BAD_OUTPUT;
    }
    if (!openDatabase(fleet, database)) return BAD_INPUT;
    std::string error;
    const auto sql = conditionSql(database, operands, &error);
    if (!sql) {
        say(error);
        return BAD_INPUT;
    }
    *condition = *sql;
    return OK;
}

}  // namespace

int compareCommand(const std::vector<std::string>& operands, const Options& options) {
    Database databases[2];
    SessionSet sets[2] = {{&databases[0]}, {&databases[1]}};
    for (int i = 0; i < 2; ++i) {
        const ExitCode code = openSet(i == 0 ? operands : options.fleet.newSet, options,
                                      &databases[i], &sets[i].condition);
        if (code != OK) return code;
    }
    SetComparison comparison;
    std::string error;
    if (!compareSets(sets[0], sets[1], &comparison, &error)) {
        say(error);
        return BAD_INPUT;
    }
    if (comparison.baseSessions == 0 || comparison.nowSessions == 0) {
        say(std::string(comparison.baseSessions == 0 ? "BASE" : "NEW") + " has no video session");
        return BAD_INPUT;
    }
    if (options.json != "-" && !writeOutput("-", toText(comparison), &error)) {
        say(error);
        return BAD_OUTPUT;
    }
    if (!options.json.empty() &&
        !writeOutput(options.json, dump(toJson(comparison), true) + "\n", &error)) {
        say(error);
        return BAD_OUTPUT;
    }
    return exitCode(comparison.outcome);
}

}  // namespace android::codecreport
