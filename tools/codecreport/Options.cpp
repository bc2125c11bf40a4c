// SPDX-License-Identifier: Apache-2.0
#include "Options.h"

#include <getopt.h>
#include <string.h>

#include <algorithm>

namespace android::codecreport {

namespace {

constexpr char kHelp[] = R"(usage: codecreport [LOG...] [OPTION...]
       codecreport compare BASE NEW [--threshold [KEY=]LIMIT[%]]...
       codecreport explain KEY...

Turns logs of libmediacodeclogger into a page to look at, a trace and numbers. LOG is a captured log
of a device or of the host in any of logcat's text forms, plain or compressed (gzip, xz, zstd, ...),
or a zipped bug report; without LOG, or as "-", standard input.

  codecreport session.log --metrics metrics.jsonl -o report.html --trace session.pftrace
  adb logcat -d | codecreport -o report.html
  codecreport compare good.json new.json --threshold drops.run_count=0 --threshold 10%
  codecreport explain BRISK-P5Ms

Report
  -o, --output FILE    write the page, one HTML file that needs nothing else
  --trace FILE         write a trace for the Perfetto UI
  --json[=FILE]        write everything as JSON (to standard output); see docs/report-json.md
  --metrics FILE       metrics records, one JSON object a line
  -q, --quiet          no progress and no summary

Compare: BASE and NEW are files written by --json, or logs
  --threshold LIMIT    how much worse a value may become; with KEY=, that value only; with %, of
                       the value in BASE. May be given several times
  --json[=FILE]        the comparison as JSON

Explain: KEY is a log line or its id, a field, a report key, a metrics record, a property or a key
of the JSON
  --markdown           print tables as Markdown; KEY: the tables' names, all if none is given

  -h, --help           this text
  --version            the version

An output takes its name when it is complete; until then what was there before stays.

Exit code: 0 done, 1 an input cannot be opened, holds no log or makes no sense, 2 usage, 3 a value
got worse by more than its threshold, 4 an output cannot be written, 5 done, but an input is
damaged or cut and was read up to there.

Values that are compared:
)";

enum Flag {
    FLAG_TRACE = 1000,
    FLAG_JSON,
    FLAG_METRICS,
    FLAG_THRESHOLD,
    FLAG_MARKDOWN,
    FLAG_VERSION
};

constexpr option kOptions[] = {
        {"output", required_argument, nullptr, 'o'},
        {"trace", required_argument, nullptr, FLAG_TRACE},
        {"json", optional_argument, nullptr, FLAG_JSON},
        {"metrics", required_argument, nullptr, FLAG_METRICS},
        {"threshold", required_argument, nullptr, FLAG_THRESHOLD},
        {"markdown", no_argument, nullptr, FLAG_MARKDOWN},
        {"quiet", no_argument, nullptr, 'q'},
        {"help", no_argument, nullptr, 'h'},
        {"version", no_argument, nullptr, FLAG_VERSION},
        {nullptr, 0, nullptr, 0},
};

bool addThreshold(const char* text, Options* options, std::string* error) {
    const auto threshold = parseThreshold(text);
    if (!threshold) {
        *error = std::string("--threshold takes [KEY=]LIMIT[%], not '") + text + "'";
        return false;
    }
    if (!threshold->key.empty() && !isComparedKey(threshold->key)) {
        *error = "no value '" + threshold->key + "' is compared; --help lists them";
        return false;
    }
    options->thresholds.push_back(*threshold);
    return true;
}

bool checkReport(Options* options, std::string* error) {
    if (options->page.empty() && options->trace.empty() && options->json.empty()) {
        *error = "nothing to write: give -o, --trace or --json";
        return false;
    }
    const int onStdout = (options->page == "-") + (options->trace == "-") + (options->json == "-");
    if (onStdout > 1) {
        *error = "only one of -o, --trace and --json can go to standard output";
        return false;
    }
    if (options->arguments.empty()) options->arguments.push_back("-");
    const auto& logs = options->arguments;
    if (std::count(logs.begin(), logs.end(), "-") + (options->metrics == "-") > 1) {
        *error = "standard input can be read once only";
        return false;
    }
    return true;
}

bool check(Options* options, std::string* error) {
    const size_t count = options->arguments.size();
    switch (options->command) {
        case Options::Command::REPORT:
            return checkReport(options, error);
        case Options::Command::COMPARE:
            if (count == 2) return true;
            *error = "compare takes two files, BASE and NEW";
            return false;
        case Options::Command::EXPLAIN:
            if (count > 0 || options->markdown) return true;
            *error = "explain takes a KEY";
            return false;
        default:
            return true;
    }
}

}  // namespace

std::string helpText() {
    return kHelp + comparedKeys();
}

bool parseOptions(int argc, char** argv, Options* options, std::string* error) {
    opterr = 0;
    optind = 1;
    if (argc > 1 && strcmp(argv[1], "compare") == 0) options->command = Options::Command::COMPARE;
    if (argc > 1 && strcmp(argv[1], "explain") == 0) options->command = Options::Command::EXPLAIN;
    if (options->command != Options::Command::REPORT) optind = 2;
    for (int c; (c = getopt_long(argc, argv, ":o:qh", kOptions, nullptr)) != -1;) {
        switch (c) {
            case 'o':
                options->page = optarg;
                break;
            case FLAG_TRACE:
                options->trace = optarg;
                break;
            case FLAG_JSON:
                options->json = optarg == nullptr ? "-" : optarg;
                break;
            case FLAG_METRICS:
                options->metrics = optarg;
                break;
            case FLAG_THRESHOLD:
                if (!addThreshold(optarg, options, error)) return false;
                break;
            case FLAG_MARKDOWN:
                options->markdown = true;
                break;
            case 'q':
                options->quiet = true;
                break;
            case 'h':
                options->command = Options::Command::HELP;
                return true;
            case FLAG_VERSION:
                options->command = Options::Command::VERSION;
                return true;
            default:
                *error = std::string(c == ':' ? "a value is missing after " : "unknown option ") +
                         argv[optind - 1];
                return false;
        }
    }
    options->arguments.assign(argv + optind, argv + argc);
    return check(options, error);
}

}  // namespace android::codecreport
