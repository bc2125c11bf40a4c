// SPDX-License-Identifier: Apache-2.0
#include "fleet/FleetCommand.h"

#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include "fleet/FleetCommands.h"
#include "fleet/Ingest.h"
#include "fleet/Rows.h"
#include "output/HtmlPage.h"
#include "output/OutputFile.h"

namespace android::codecreport {

namespace {

/** The logs and metrics files with their labels. */
std::vector<LogFile> filesOf(const std::vector<std::string>& paths, const Options& options,
                             std::vector<std::string>* problems) {
    std::vector<LogFile> files = listLogs(paths, problems);
    if (!options.metrics.empty()) files.push_back({{options.metrics}, true, {}});
    for (LogFile& file : files) {
        file.labels = options.fleet.labels;
        if (options.fleet.labelPattern.empty()) continue;
        const auto labels = labelsOf(file.paths.back(), options.fleet.labelPattern);
        if (labels) {
            file.labels.insert(labels->begin(), labels->end());
        } else {
            say(file.paths.back() + ": has no labels, for its name does not fit '" +
                options.fleet.labelPattern + "'");
        }
    }
    return files;
}

int addCommand(const std::vector<std::string>& paths, const Options& options) {
    Database database;
    if (!database.open(options.fleet.database, Database::Access::CREATE)) {
        say(database.error());
        return BAD_OUTPUT;
    }
    return addLogs(paths, options, &database);
}

int queryCommand(const std::vector<std::string>& operands, const Options& options) {
    Database database;
    if (!openDatabase(operands[0], &database)) return BAD_INPUT;
    OutputFile output(options.page.empty() ? "-" : options.page);
    std::string error;
    if (output.open() && writeQuery(&database, operands[1], options.fleet.form, &output, &error)) {
        if (output.commit()) return OK;
    }
    say(output.error().empty() ? error : output.error());
    return output.error().empty() ? BAD_INPUT : BAD_OUTPUT;
}

int rowsCommand(const std::vector<std::string>& operands, const Options& options) {
    Database database;
    int code = OK;
    if (operands.size() == 1 && isDatabase(operands[0])) {
        if (!openDatabase(operands[0], &database)) return BAD_INPUT;
    } else {
        if (!database.open("", Database::Access::CREATE)) {
            say(database.error());
            return BAD_OUTPUT;
        }
        code = addLogs(operands, options, &database);
        if (code == BAD_OUTPUT) return code;
    }
    std::string error;
    if (writeRows(&database, options.page, &error)) return code;
    say(error);
    return BAD_OUTPUT;
}

int sessionCommand(const std::vector<std::string>& operands, const Options& options) {
    Database database;
    if (!openDatabase(operands[0], &database)) return BAD_INPUT;
    const auto report = database.reportOf(strtoll(operands[1].c_str(), nullptr, 10));
    if (!report) {
        say(database.error());
        return BAD_INPUT;
    }
    const Reference reference;
    std::string error;
    if (writeOutput(options.page, htmlPage(*report, reference), &error)) return OK;
    say(error);
    return BAD_OUTPUT;
}

struct FleetCommand {
    const char* name;
    size_t minOperands;
    size_t maxOperands;
    const char* usage;
    bool needsOutput;
    int (*run)(const std::vector<std::string>& operands, const Options& options);
};

constexpr FleetCommand kCommands[] = {
        {"query", 2, 2, "query takes a database and an SQL statement", false, queryCommand},
        {"rows", 1, SIZE_MAX, "rows takes logs, or one database, and -o FOLDER", true, rowsCommand},
        {"compare", 1, SIZE_MAX, "compare takes two sets of logs, BASE... -- NEW...", false,
         compareCommand},
        {"fleet", 1, 1, "fleet takes a database and -o FILE", true, fleetPageCommand},
        {"session", 2, 2, "session takes a database, a session_id and -o FILE", true,
         sessionCommand},
};

const FleetCommand* commandNamed(const std::string& name) {
    for (const FleetCommand& command : kCommands) {
        if (command.name == name) return &command;
    }
    return nullptr;
}

}  // namespace

void say(const std::string& text) {
    fprintf(stderr, "codecreport: %s\n", text.c_str());
}

bool openDatabase(const std::string& path, Database* database) {
    if (database->open(path, Database::Access::READ)) return true;
    say(database->error());
    return false;
}

ExitCode addLogs(const std::vector<std::string>& paths, const Options& options,
                 Database* database) {
    std::vector<std::string> problems;
    const std::vector<LogFile> files = filesOf(paths, options, &problems);
    const bool progress = !options.quiet && isatty(STDERR_FILENO) != 0;
    const Reference reference;
    const IngestResult result =
            ingest(reference, files, !options.fleet.noFrames, progress, database);
    problems.insert(problems.end(), result.problems.begin(), result.problems.end());
    for (const std::string& problem : problems) say(problem);
    if (!result.writeError.empty()) {
        say(result.writeError);
        return BAD_OUTPUT;
    }
    if (!options.quiet) {
        fprintf(stderr, "%zu logs with %zu sessions added, %zu held already, %zu not read\n",
                result.added, result.sessions, result.known, result.unread);
    }
    if (result.unread > 0) return BAD_INPUT;
    return problems.empty() ? OK : INPUT_ENDS_EARLY;
}

bool isFleetCommand(const std::string& word) {
    return commandNamed(word) != nullptr;
}

std::string checkFleetCommand(const Options& options) {
    const FleetCommand* command = commandNamed(options.fleet.command);
    if (command == nullptr) return "";
    const size_t count = options.arguments.size();
    const bool isComplete = count >= command->minOperands && count <= command->maxOperands &&
                            !(command->needsOutput && options.page.empty());
    return isComplete ? "" : command->usage;
}

int runFleetCommand(const Options& options) {
    const std::string conflict = outputConflict(options.arguments, {options.page, options.json});
    if (!conflict.empty()) {
        say(conflict);
        return USAGE;
    }
    const FleetCommand* command = commandNamed(options.fleet.command);
    return command == nullptr ? addCommand(options.arguments, options)
                              : command->run(options.arguments, options);
}

}  // namespace android::codecreport
