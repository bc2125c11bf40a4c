// SPDX-License-Identifier: Apache-2.0
#include "Options.h"

#include <math.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <filesystem>

#include <tools/options/OptionTable.h>

#include "fleet/FleetCommand.h"

namespace android::codecreport {

namespace {

using options::kFiles;
using options::Option;

constexpr char kIntro[] =
        "Turns logs of libmediacodeclogger into a page to look at, a trace and numbers. LOG is a "
        "captured log of a device or of the host in any of logcat's text forms, plain or "
        "compressed (gzip, xz, zstd, ...), or a zipped bug report; without LOG, or as \"-\", "
        "standard input.\n"
        "\n"
        "  codecreport session.log --metrics metrics.jsonl -o report.html --trace session.pftrace\n"
        "  adb logcat -d | codecreport -o report.html\n"
        "  adb logcat | codecreport -o report.html --follow\n"
        "  codecreport compare good.json new.json --threshold drops.run_count=0 --threshold 10%\n"
        "  codecreport explain BRISK-P5Ms\n"
        "\n"
        "An output takes its name when it is complete; until then what was there before stays.";

/** An option whose value is a text, taken as it is. */
Option textOption(const char* name, char letter, const char* value, const char* help,
                  std::string* target) {
    return {name,
            letter,
            value,
            help,
            [target](const char* text) {
                // A value that may be left out means standard output.
                *target = text == nullptr ? "-" : text;
                return true;
            },
            nullptr,
            kFiles};
}

Option flag(const char* name, char letter, const char* help, bool* target,
            const char* commands = nullptr) {
    return {name,    letter,  nullptr, help, [target](const char*) { return *target = true; },
            nullptr, nullptr, commands};
}

bool addThreshold(const char* text, Options* options) {
    const auto threshold = parseThreshold(text);
    if (!threshold || (!threshold->key.empty() && !isComparedKey(threshold->key))) return false;
    options->thresholds.push_back(*threshold);
    return true;
}

bool takeFollow(const char* text, Options* options) {
    char* end = nullptr;
    const double seconds = text == nullptr ? 5 : strtod(text, &end);
    if ((end != nullptr && (end == text || *end != '\0')) || !(seconds >= 0.001 && seconds < 1e6)) {
        return false;
    }
    options->followMs = llround(seconds * 1000);
    return true;
}

options::Program programOf(Options* options) {
    static const std::string notes = "Values that are compared:\n" + comparedKeys();
    Option metrics = textOption("metrics", 0, "FILE", "metrics records, one JSON object a line",
                                &options->metrics);
    Option threshold = {"threshold",
                        0,
                        "LIMIT",
                        "how much worse a value may become; as KEY=LIMIT, that value only; with %, "
                        "of the value in BASE. May be given several times",
                        [options](const char* text) { return addThreshold(text, options); },
                        "[KEY=]LIMIT[%] with a KEY of those that --help lists",
                        nullptr,
                        "compare"};
    options::Program program = {
            "codecreport",
            CODECREPORT_VERSION,
            {"[LOG...] [OPTION...]", "compare BASE NEW [OPTION...]",
             "compare BASE... -- NEW... [OPTION...]", "explain KEY...",
             "--db FILE LOG... [OPTION...]", "query FILE SQL [OPTION...]"},
            kIntro,
            {{"compare", "BASE NEW",
              "hold one against the other; both are logs or made by --json; folders, databases, "
              "and all that \"--\" parts, are sets of logs, which are compared by rank tests; with "
              "--db, sets are KEY=VALUE of its labels"},
             {"explain", "KEY...",
              "say what a log line or its id, a field, a report key, a metrics record, a property "
              "or a key of the JSON means"}},
            {{"Report",
              nullptr,
              {textOption("output", 'o', "FILE",
                          "write the page, one HTML file that needs nothing else", &options->page),
               textOption("trace", 0, "FILE", "write a trace for the Perfetto UI", &options->trace),
               textOption("json", 0, "[FILE]",
                          "write everything as JSON, to standard output unless a file is given; "
                          "of compare, the comparison",
                          &options->json),
               metrics,
               {"follow", 0, "[SECONDS]",
                "read on while the logs grow, and write anew every so often (5 s), until "
                "interrupted or a pipe ends",
                [options](const char* text) { return takeFollow(text, options); },
                "seconds above 0"},
               flag("quiet", 'q', "no progress and no summary", &options->quiet)}},
             {"Compare", nullptr, {threshold}},
             {"Explain",
              nullptr,
              {flag("markdown", 0,
                    "print tables as Markdown; KEY: the tables' names, all if none is given",
                    &options->markdown, "explain")}}},
            notes.c_str(),
            {{0, "done"},
             {1, "an input cannot be opened, holds no log or makes no sense"},
             {2, "usage"},
             {3, "a value got worse by more than its threshold"},
             {4, "an output cannot be written"},
             {5, "done, but an input is damaged or cut and was read up to there"},
             {6, "a comparison has too little to go by"}},
            kFiles};
    for (const options::Command& command : fleetCommands()) program.commands.push_back(command);
    program.sections.push_back(fleetSection(&options->fleet));
    return program;
}

/** What is wrong with what is to be read and written; empty: nothing. */
std::string checkReport(const Options& options) {
    if (options.page.empty() && options.trace.empty() && options.json.empty()) {
        return "nothing to write: give -o, --trace or --json";
    }
    const int onStdout = (options.page == "-") + (options.trace == "-") + (options.json == "-");
    if (onStdout > 0 && options.followMs > 0) return "--follow writes to files only";
    if (onStdout > 1) return "only one of -o, --trace and --json can go to standard output";
    const auto& logs = options.arguments;
    if (std::count(logs.begin(), logs.end(), "-") + (options.metrics == "-") > 1) {
        return "standard input can be read once only";
    }
    return {};
}

/** Two logs or reports are held against each other; all else that is compared are sets. */
bool isPair(const Options& options) {
    const auto isSet = [](const std::string& path) {
        std::error_code error;
        return std::filesystem::is_directory(path, error) || isDatabase(path);
    };
    return options.fleet.newSet.empty() && options.fleet.database.empty() &&
           std::none_of(options.arguments.begin(), options.arguments.end(), isSet);
}

/** Without "--", each of two operands is a set. */
std::string checkSets(Options* options) {
    if (options->fleet.newSet.empty() && options->arguments.size() == 2) {
        options->fleet.newSet = {options->arguments.back()};
        options->arguments.pop_back();
    }
    if (!options->thresholds.empty()) return "sets are compared without --threshold";
    return options->fleet.newSet.empty() ? "compare takes two sets, BASE... -- NEW..." : "";
}

/** Takes the command off the arguments and looks whether all that it needs is there. */
std::string check(Options* options) {
    auto& arguments = options->arguments;
    const std::string first = arguments.empty() ? "" : arguments[0];
    const bool isFleet = isFleetCommand(first);
    if (isFleet || first == "explain") arguments.erase(arguments.begin());
    if (isFleet && !(first == "compare" && isPair(*options))) {
        options->command = Options::Command::FLEET;
        options->fleet.command = first;
        return first == "compare" ? checkSets(options) : checkFleetCommand(*options);
    }
    if (first == "compare") {
        options->command = Options::Command::COMPARE;
        return arguments.size() == 2 ? "" : "compare takes two files, BASE and NEW";
    }
    if (first == "explain") {
        options->command = Options::Command::EXPLAIN;
        return !arguments.empty() || options->markdown ? "" : "explain takes a KEY";
    }
    if (!options->fleet.database.empty()) {
        options->command = Options::Command::FLEET;
        return arguments.empty() && options->metrics.empty() ? "--db takes logs" : "";
    }
    if (arguments.empty()) arguments.push_back("-");
    return checkReport(*options);
}

}  // namespace

std::optional<int> parseOptions(int argc, char** argv, Options* options) {
    const options::Program table = programOf(options);
    // Of compare, "--" parts two sets; options may stand on both sides.
    char** const end = argv + argc;
    char** parting =
            argc > 1 && strcmp(argv[1], "compare") == 0
                    ? std::find_if(argv, end, [](char* word) { return strcmp(word, "--") == 0; })
                    : end;
    if (parting != end) {
        std::vector<char*> rest = {argv[0]};
        rest.insert(rest.end(), parting + 1, end);
        rest.push_back(nullptr);
        const int count = static_cast<int>(rest.size()) - 1;
        auto& newSet = options->fleet.newSet;
        if (const auto code = options::parse(table, count, rest.data(), &newSet)) return code;
        *parting = nullptr;
        argc = static_cast<int>(parting - argv);
    }
    if (const auto code = options::parse(table, argc, argv, &options->arguments)) return code;
    const std::string wrong = check(options);
    if (wrong.empty()) return std::nullopt;
    return options::complain(table, wrong);
}

}  // namespace android::codecreport
