// SPDX-License-Identifier: Apache-2.0
#include "Options.h"

#include <errno.h>
#include <stdlib.h>

#include <tools/options/OptionTable.h>

namespace android::codecloggerctl {

using codeclogger::ViewRequest;

namespace {

constexpr char kIntro[] =
        "Asks the logger service that media codecs register with.\n"
        "\n"
        "  codecloggerctl list                        the codecs that are registered now\n"
        "  codecloggerctl status 3                    everything about codec #3\n"
        "  codecloggerctl watch                       a table, refreshed every second\n"
        "  codecloggerctl listen --json               events as they happen, a line each\n"
        "  codecloggerctl allowlist set 'com.tv.*' --except com.tv.kids";

bool takeInterval(const char* text, int64_t* intervalMs) {
    char* end = nullptr;
    const double seconds = strtod(text, &end);
    *intervalMs = static_cast<int64_t>(seconds >= 0.1 && seconds <= 86400 ? seconds * 1000 : 0);
    return end != text && *end == '\0' && *intervalMs != 0;
}

bool takeCount(const char* text, int64_t* count) {
    char* end = nullptr;
    errno = 0;
    *count = strtoll(text, &end, 10);
    return errno == 0 && end != text && *end == '\0' && *count >= 1;
}

options::Program programOf(Options* options) {
    ViewRequest* const request = &options->request;
    const auto format = [request](ViewRequest::Format value) {
        return [request, value](const char*) {
            request->format = value;
            return true;
        };
    };
    const auto takeText = [](std::string* target) {
        return [target](const char* text) {
            *target = text;
            return true;
        };
    };
    return {"codecloggerctl",
            CODECLOGGER_VERSION,
            {"COMMAND [ARGUMENT...] [OPTION...]"},
            kIntro,
            {{"list", "",
              "the codecs that are registered now, the oldest first; * marks the active "
              "video codec"},
             {"status", "[ID...]",
              "details of all codecs, or of those with the given numbers or client ids"},
             {"watch", "",
              "frames and drops since the start and in the last interval, again and again"},
             {"listen", "",
              "first frames, late output and video codecs that leave, as they happen"},
             {"allowlist show", "", "the packages whose frame drops are mitigated"},
             {"allowlist set", "[PACKAGE...]",
              "replaces them; * at the end stands for any ending, and no package empties the list"},
             {"dump", "[WORD...]",
              "what the service writes for \"list\", \"status [ID...]\" or \"allowlist\", as "
              "dumpsys shows it on a device"}},
            {{"Output",
              nullptr,
              {{"json", 0, nullptr, "JSON; watch and listen print one line a refresh or event",
                format(ViewRequest::Format::JSON)},
               {"openmetrics", 0, nullptr, "OpenMetrics text",
                format(ViewRequest::Format::OPENMETRICS), nullptr, nullptr, "list status dump"},
               {"interval", 'i', "SECONDS", "time between two refreshes, 1 by default",
                [options](const char* text) { return takeInterval(text, &options->intervalMs); },
                "a number from 0.1 to 86400", nullptr, "watch"},
               {"count", 'n', "N", "end after N refreshes or events",
                [options](const char* text) { return takeCount(text, &options->count); },
                "a number from 1", nullptr, "watch listen"}}},
             {"Allowlist",
              nullptr,
              {{"except", 0, "PACKAGE", "leave this one out; may be repeated",
                [options](const char* text) {
                    options->exceptions.push_back(text);
                    return true;
                },
                nullptr, nullptr, "allowlist"},
               {"label", 0, "TEXT", "what the list is", takeText(&options->label), nullptr, nullptr,
                "allowlist"}}}},
            nullptr,
            {{0, "done"},
             {1, "an error"},
             {2, "usage"},
             {4, "no service can be reached"},
             {130, "interrupted"}}};
}

/** Takes the command and what follows it; otherwise says what is wrong. */
std::string takeOperands(const std::vector<std::string>& operands, Options* options) {
    if (operands.empty()) return "a command is missing";
    const std::string& name = operands[0];
    std::vector<std::string> rest(operands.begin() + 1, operands.end());
    if (name == "list" || name == "status") return parseWords(operands, &options->request);
    if (name == "dump") {
        options->command = Command::DUMP;
        options->words = rest;
        return "";
    }
    if (name == "allowlist") {
        const std::string what = rest.empty() ? "" : rest[0];
        if (what == "show" && rest.size() == 1) {
            options->request.subject = ViewRequest::Subject::ALLOWLIST;
            return options->exceptions.empty() && options->label.empty()
                           ? ""
                           : "--except and --label go with allowlist set only";
        }
        if (what != "set") return "allowlist: show or set is missing";
        options->command = Command::ALLOWLIST_SET;
        options->packages.assign(rest.begin() + 1, rest.end());
        return "";
    }
    if (name != "watch" && name != "listen") return name + ": not a command";
    if (!rest.empty()) return rest[0] + ": " + name + " takes no argument";
    options->command = name == "watch" ? Command::WATCH : Command::LISTEN;
    return "";
}

}  // namespace

std::optional<int> parseOptions(int argc, char** argv, Options* options) {
    const options::Program program = programOf(options);
    std::vector<std::string> operands;
    if (const auto code = options::parse(program, argc, argv, &operands)) return code;
    const std::string wrong = takeOperands(operands, options);
    if (!wrong.empty()) return options::complain(program, wrong);
    // A dump gets its format as words.
    if (options->isJson()) options->words.push_back("--json");
    if (options->request.format == ViewRequest::Format::OPENMETRICS) {
        options->words.push_back("--openmetrics");
    }
    return std::nullopt;
}

}  // namespace android::codecloggerctl
