// SPDX-License-Identifier: Apache-2.0
#include "fleet/FleetOptions.h"

#include <string.h>

namespace android::codecreport {

namespace {

bool addLabel(const char* text, Labels* labels) {
    const char* equals = strchr(text, '=');
    if (equals == nullptr || equals == text || equals[1] == '\0') return false;
    (*labels)[std::string(text, equals)] = equals + 1;
    return true;
}

}  // namespace

std::vector<options::Command> fleetCommands() {
    return {
            {"query", "FILE SQL", "ask a database; it is only read"},
            {"rows", "LOG...",
             "write the tables of a database as JSON lines for other engines, a file each in -o "
             "FOLDER; LOG may "
             "be the database"},
            {"fleet", "FILE",
             "write a page about all sessions of a database, and beside it those of the worst"},
            {"session", "FILE ID", "write the page of one session of a database"},
    };
}

options::Section fleetSection(FleetOptions* options) {
    return {"Many logs",
            "LOG may be a folder then; its logs are read on all cores, and files that end in "
            ".jsonl "
            "are taken for metrics records.",
            {
                    {"db", 0, "FILE",
                     "add sessions and all that is known of them to this SQLite database, each log "
                     "once however often it is given",
                     [options](const char* value) {
                         options->database = value;
                         return value[0] != '\0';
                     },
                     nullptr, options::kFiles},
                    {"label", 0, "KEY=VALUE",
                     "what is known of these logs, such as build=B12; may be given several times",
                     [options](const char* value) { return addLabel(value, &options->labels); }},
                    {"labels", 0, "PATTERN",
                     "labels that the logs' names show, such as {build}/{device}-*.log",
                     [options](const char* value) {
                         options->labelPattern = value;
                         return isLabelPattern(value);
                     },
                     "a name with {LABEL} and * in it"},
                    {"no-frames", 0, nullptr,
                     "leave single frames out of the database, which are most of its size",
                     [options](const char*) { return options->noFrames = true; }},
                    {"by", 0, "NAMES",
                     "what groups the sessions of a fleet: labels or columns of session_summary, "
                     "such as build,codec; may be given several times",
                     [options](const char* value) {
                         options->by.emplace_back(value);
                         return value[0] != '\0';
                     },
                     nullptr, nullptr, "fleet"},
                    {"csv", 0, nullptr, "the rows of a query as CSV",
                     [options](const char*) {
                         options->form = RowForm::CSV;
                         return true;
                     },
                     nullptr, nullptr, "query"},
                    {"jsonl", 0, nullptr, "the rows of a query as JSON lines",
                     [options](const char*) {
                         options->form = RowForm::JSON_LINES;
                         return true;
                     },
                     nullptr, nullptr, "query"},
            }};
}

}  // namespace android::codecreport
