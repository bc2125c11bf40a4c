// SPDX-License-Identifier: Apache-2.0
#include "Options.h"

#include <errno.h>
#include <getopt.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>

namespace codecloggerctl {

namespace {

constexpr char kUsage[] =
        "Examples:\n"
        "  codecloggerctl list                        the codecs that are registered now\n"
        "  codecloggerctl status 3                    everything about codec #3\n"
        "  codecloggerctl watch                       a table, refreshed every second\n"
        "  codecloggerctl listen --json               events as they happen, a line each\n"
        "  codecloggerctl allowlist set 'com.tv.*' --except com.tv.kids\n"
        "\n"
        "Usage: codecloggerctl [OPTION...] COMMAND [ARGUMENT...]\n"
        "Asks the logger service that media codecs register with.\n"
        "\n"
        "Commands:\n"
        "  list                   codecs, the oldest first; * marks the active video codec\n"
        "  status [ID...]         details of all codecs, or of those with the given numbers or\n"
        "                         client ids\n"
        "  watch                  frames and drops since the start and in the last interval\n"
        "  listen                 first frames, late output and video codecs that leave\n"
        "  allowlist show         the packages whose frame drops are mitigated\n"
        "  allowlist set PACKAGE...\n"
        "                         replaces them; * at the end stands for any ending, and no\n"
        "                         package empties the list\n"
        "\n"
        "Options:\n"
        "      --json             JSON; watch and listen print one line a refresh or event\n"
        "      --openmetrics      OpenMetrics text; list and status only\n"
        "  -i, --interval SEC     time between two refreshes of watch, from 0.1; default 1\n"
        "  -n, --count N          end after N refreshes of watch or N events of listen\n"
        "      --except PACKAGE   allowlist set: leave this one out; may be repeated\n"
        "      --label TEXT       allowlist set: what the list is\n"
        "  -h, --help             show this and exit\n"
        "      --version          show the version and exit\n"
        "\n"
        "Exit status: 0, 1 on an error, 2 on a usage error, 4 if no service can be reached, 130\n"
        "after an interrupt.\n";

[[noreturn]] __attribute__((format(printf, 1, 2))) void usageError(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    fputs("codecloggerctl: ", stderr);
    vfprintf(stderr, format, arguments);
    va_end(arguments);
    fputs("\nTry 'codecloggerctl --help'.\n", stderr);
    exit(EXIT_USAGE);
}

int64_t parseId(const char* text) {
    char* end = nullptr;
    errno = 0;
    const long long id = strtoll(*text == '#' ? text + 1 : text, &end, 0);
    if (errno != 0 || *end != '\0' || end == text || end[-1] == '#') {
        usageError("%s: not a codec's number or client id", text);
    }
    return id;
}

int64_t parseInterval(const char* text) {
    char* end = nullptr;
    const double seconds = strtod(text, &end);
    if (end == text || *end != '\0' || !(seconds >= 0.1 && seconds <= 86400)) {
        usageError("%s: not an interval from 0.1 to 86400 seconds", text);
    }
    return static_cast<int64_t>(seconds * 1000);
}

int64_t parseCount(const char* text) {
    char* end = nullptr;
    errno = 0;
    const long long count = strtoll(text, &end, 10);
    if (errno != 0 || end == text || *end != '\0' || count < 1) {
        usageError("%s: not a count from 1", text);
    }
    return count;
}

struct CommandName {
    const char* name;
    const char* second;  // null for none
    Command command;
    bool takesArguments;
};
constexpr CommandName kCommands[] = {
        {"list", nullptr, Command::LIST, false},
        {"status", nullptr, Command::STATUS, true},
        {"watch", nullptr, Command::WATCH, false},
        {"listen", nullptr, Command::LISTEN, false},
        {"allowlist", "show", Command::ALLOWLIST_SHOW, false},
        {"allowlist", "set", Command::ALLOWLIST_SET, true},
};

const CommandName& findCommand(const std::vector<std::string>& words) {
    if (words.empty()) usageError("a command is missing");
    bool needsSecond = false;
    for (const CommandName& command : kCommands) {
        if (words[0] != command.name) continue;
        needsSecond = command.second != nullptr;
        if (!needsSecond || (words.size() > 1 && words[1] == command.second)) return command;
    }
    if (needsSecond) usageError("%s: show or set is missing", words[0].c_str());
    usageError("%s: not a command", words[0].c_str());
}

void takeCommand(const std::vector<std::string>& words, Options* options) {
    const CommandName& command = findCommand(words);
    options->command = command.command;
    const size_t used = command.second != nullptr ? 2 : 1;
    if (words.size() > used && !command.takesArguments) {
        usageError("%s: %s takes no argument", words[used].c_str(), command.name);
    }
    for (size_t i = used; i < words.size(); ++i) {
        if (command.command == Command::STATUS) {
            options->ids.push_back(parseId(words[i].c_str()));
        } else {
            options->packages.push_back(words[i]);
        }
    }
}

void checkCombination(const Options& options) {
    if (options.format == Format::OPENMETRICS && options.command != Command::LIST &&
        options.command != Command::STATUS) {
        usageError("--openmetrics goes with list and status only");
    }
    if (options.count != 0 && options.command != Command::WATCH &&
        options.command != Command::LISTEN) {
        usageError("--count goes with watch and listen only");
    }
    if ((!options.exceptions.empty() || !options.label.empty()) &&
        options.command != Command::ALLOWLIST_SET) {
        usageError("--except and --label go with allowlist set only");
    }
}

}  // namespace

Options parseOptions(int argc, char** argv) {
    enum { JSON = 1, OPENMETRICS, EXCEPT, LABEL, VERSION };
    static constexpr option kOptions[] = {{"json", no_argument, nullptr, JSON},
                                          {"openmetrics", no_argument, nullptr, OPENMETRICS},
                                          {"interval", required_argument, nullptr, 'i'},
                                          {"count", required_argument, nullptr, 'n'},
                                          {"except", required_argument, nullptr, EXCEPT},
                                          {"label", required_argument, nullptr, LABEL},
                                          {"help", no_argument, nullptr, 'h'},
                                          {"version", no_argument, nullptr, VERSION},
                                          {}};
    Options options;
    int c;
    while ((c = getopt_long(argc, argv, "i:n:h", kOptions, nullptr)) != -1) {
        switch (c) {
            case JSON:
                options.format = Format::JSON;
                break;
            case OPENMETRICS:
                options.format = Format::OPENMETRICS;
                break;
            case 'i':
                options.intervalMs = parseInterval(optarg);
                break;
            case 'n':
                options.count = parseCount(optarg);
                break;
            case EXCEPT:
                options.exceptions.push_back(optarg);
                break;
            case LABEL:
                options.label = optarg;
                break;
            case 'h':
                fputs(kUsage, stdout);
                exit(EXIT_OK);
            case VERSION:
                puts("codecloggerctl " CODECLOGGER_VERSION);
                exit(EXIT_OK);
            default:
                fputs("Try 'codecloggerctl --help'.\n", stderr);
                exit(EXIT_USAGE);
        }
    }
    takeCommand({argv + optind, argv + argc}, &options);
    checkCombination(options);
    return options;
}

}  // namespace codecloggerctl
