// SPDX-License-Identifier: Apache-2.0
#include <inttypes.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Analysis.h"
#include "ExitCode.h"
#include "Follow.h"
#include "Options.h"
#include "database/Schema.h"
#include "fleet/FleetCommand.h"
#include "output/Compare.h"
#include "output/HtmlPage.h"
#include "output/JsonReport.h"
#include "output/OutputFile.h"
#include "output/TraceWriter.h"
#include "reference/Explain.h"
#include "reference/Reference.h"

namespace android::codecreport {

namespace {

void say(const std::string& text) {
    fprintf(stderr, "codecreport: %s\n", text.c_str());
}

bool writeFile(const std::string& path, const std::string& text) {
    std::string error;
    if (writeOutput(path, text, &error)) return true;
    say(error);
    return false;
}

bool writeTraceFile(const Analysis& analysis, const std::string& path) {
    const std::string error = writeTrace(analysis, path);
    if (!error.empty()) say(error);
    return error.empty();
}

/** Tells a person what is wrong with the command's files before one of them is touched. */
bool filesConflict(const std::vector<std::string>& inputs,
                   const std::vector<std::string>& outputs) {
    const std::string conflict = outputConflict(inputs, outputs);
    if (!conflict.empty()) say(conflict);
    return !conflict.empty();
}

/** What was read and what was not understood, for people. */
void summarise(const Analysis& analysis) {
    const ReadStats& stats = analysis.stats;
    fprintf(stderr, "%" PRIu64 " lines, %" PRIu64 " of the library, %zu sessions\n", stats.lines,
            stats.understood, analysis.sessions.size());
    const std::pair<uint64_t, const char*> odd[] = {
            {stats.cutOff, "lines of the library are cut off"},
            {stats.unknown, "lines carry the library's tag and are not understood"},
            {stats.unattributed, "lines belong to no session of the log"},
            {stats.notLogLines, "lines are no log lines"},
            {stats.clockJumps, "jumps of the log's clock were evened out"},
            {stats.reboots, "reboots"},
            {stats.sessionsLeftOut, "sessions more than are kept"},
            {analysis.metrics.notUnderstood(), "metrics records are not understood"},
    };
    for (const auto& [count, text] : odd) {
        if (count > 0) fprintf(stderr, "  %" PRIu64 " %s\n", count, text);
    }
}

/** @param isLast what is wrong is said then only: a log that grows may yet become one */
int makeReport(const Reference& reference, const Options& options, const Copies& copies,
               bool isLast) {
    Analysis analysis;
    const bool progress = !options.quiet && copies.empty() && isatty(STDERR_FILENO);
    bool ok = readLogs(reference, options.arguments, progress, &analysis, copies);
    if (!options.metrics.empty()) ok &= readMetrics(options.metrics, &analysis);
    for (const std::string& problem : analysis.problems) {
        if (isLast) say(problem);
    }
    if (!ok) return BAD_INPUT;
    bool written = options.trace.empty() || writeTraceFile(analysis, options.trace);

    const nlohmann::ordered_json json = toJson(analysis);
    if (!options.json.empty()) written &= writeFile(options.json, dump(json, true) + "\n");
    if (!options.page.empty()) written &= writeFile(options.page, htmlPage(json, reference));
    if (!options.quiet && isLast) summarise(analysis);
    if (!written) return BAD_OUTPUT;
    return analysis.endsEarly ? INPUT_ENDS_EARLY : OK;
}

int report(const Options& options) {
    std::vector<std::string> inputs = options.arguments;
    inputs.push_back(options.metrics);
    if (filesConflict(inputs, {options.page, options.trace, options.json})) return USAGE;
    const Reference reference;
    if (options.followMs == 0) return makeReport(reference, options, {}, true);
    return follow(options.arguments, options.followMs, [&](const Copies& copies, bool isLast) {
        return makeReport(reference, options, copies, isLast);
    });
}

/** The file's text if it begins as JSON does. */
std::string jsonText(const std::string& path) {
    std::string text;
    struct stat status = {};
    // A pipe can be read once only, and is a log.
    if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return text;
    FILE* file = fopen(path.c_str(), "re");
    if (file == nullptr) return text;
    const int first = getc(file);
    if (first == '{') {
        text.push_back('{');
        char block[65536];
        for (size_t size; (size = fread(block, 1, sizeof(block), file)) > 0;) {
            text.append(block, size);
        }
    }
    fclose(file);
    return text;
}

/** A report that was written as JSON, or one made of a log. */
bool load(const Reference& reference, const std::string& path, nlohmann::ordered_json* json) {
    const std::string text = jsonText(path);
    if (!text.empty()) {
        *json = nlohmann::ordered_json::parse(text, nullptr, false);
        const auto version = json->is_object() ? json->find("schema_version") : json->end();
        if (json->is_object() && version != json->end() && *version == kSchemaVersion) return true;
        say(path + ": no report of this version");
        return false;
    }
    Analysis analysis;
    const bool ok = readLogs(reference, {path}, false, &analysis);
    for (const std::string& problem : analysis.problems) say(problem);
    *json = toJson(analysis);
    return ok;
}

int compareReports(const Options& options) {
    if (filesConflict(options.arguments, {options.json})) return USAGE;
    const Reference reference;
    nlohmann::ordered_json base;
    nlohmann::ordered_json now;
    if (!load(reference, options.arguments[0], &base)) return BAD_INPUT;
    if (!load(reference, options.arguments[1], &now)) return BAD_INPUT;
    const CompareResult result = compare(base, now, options.thresholds);
    if (result.pairs == 0) {
        say("the two have no codec in common");
        return BAD_INPUT;
    }
    bool written = options.json == "-" || writeFile("-", toText(result));
    if (!options.json.empty())
        written &= writeFile(options.json, dump(toJson(result), true) + "\n");
    if (!written) return BAD_OUTPUT;
    return exitCode(result.outcome);
}

int explainKeys(const Options& options) {
    const Reference reference;
    std::vector<std::string> keys = options.arguments;
    if (keys.empty()) keys.push_back("");
    int code = OK;
    for (const std::string& key : keys) {
        const std::string text = !options.markdown   ? explain(reference, key)
                                 : key == "database" ? schemaMarkdown(reference)
                                                     : markdown(reference, key);
        if (!writeFile("-", text)) return BAD_OUTPUT;
        if (!text.empty()) continue;
        code = BAD_INPUT;
        if (options.markdown) {
            say("no table '" + key + "'; there are: " + tableNames(reference));
            continue;
        }
        const std::string near = suggest(reference, key);
        say("nothing is known of '" + key + "'" + (near.empty() ? "" : "; there are:\n" + near));
    }
    return code;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    if (const auto code = parseOptions(argc, argv, &options)) {
        // The table prints its texts straight.
        return *code == OK && !writeFile("-", {}) ? BAD_OUTPUT : *code;
    }
    switch (options.command) {
        case Options::Command::COMPARE:
            return compareReports(options);
        case Options::Command::EXPLAIN:
            return explainKeys(options);
        case Options::Command::FLEET:
            return runFleetCommand(options);
        default:
            return report(options);
    }
}

}  // namespace android::codecreport

int main(int argc, char** argv) {
    return android::codecreport::main(argc, argv);
}
