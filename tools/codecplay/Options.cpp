// SPDX-License-Identifier: Apache-2.0
#include "Options.h"

#include <errno.h>
#include <getopt.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>

#include <optional>
#include <string_view>

namespace android::codecplay {

namespace {

constexpr char kHelp[] = R"(usage: codecplay [OPTION...] FILE...    (- for standard input)

Plays media files through libmediacodeclogger as an Android media framework would: one codec session
for each audio and video stream, with FFmpeg's decoders as the components. The log goes to standard
output in logcat's threadtime form.

  codecplay clip.mp4
  codecplay --speed 0 --prop mediaanalytic.enable=true --prop mediaanalytic.debug=0x407 clip.mp4
  codecplay --seek 30@5 --drop 200-204 --log session.log --metrics metrics.jsonl clip.mkv

Playback
  --speed N            N times presentation pace (1); 0: as fast as it decodes, nothing is late
  --seek TO@AT         when playback reaches AT, go on at TO
  --flush AT           when playback reaches AT, flush all codecs and go on there
  --reconfigure AT     when playback reaches AT, stop, report and configure all codecs again
  --loop N             play each file N times in the same sessions
  --instances N        play N times at once (1)

Codecs
  --codec2, --omx      the back-end that the sessions are reported as (Codec2)
  --tunneled           tunneled video: pictures go from the component to the display
  --secure             encrypted input, video in secure memory
  --component PREFIX   what component names begin with (c2.ffmpeg or OMX.ffmpeg)
  --package NAME       the application's package name (codecplay)

Platform
  --prop NAME=VALUE    set a system property, such as mediaanalytic.enable=true
  --display WxH        size of the display (1920x1080)
  --vsync HZ           refresh rate of the display (60)
  --buffers N          output buffers that decoder, framework and display share (8)

Faults, in frames of the first video (without one, audio) stream, from 1. FRAMES is FIRST[-LAST], in
the order in which they go in for the first two, and come out for the others. All can be combined.
  --starve FRAMES:MS   the source delivers nothing for MS ms before each of them
  --slow-decrypt FRAMES:MS   the framework takes MS ms longer to decrypt each of them
  --slow-decode FRAMES:MS    the component takes MS ms longer for each of them
  --slow-message FRAMES:MS   the component's message of each reaches the framework MS ms late
  --stall FRAMES:MS    the application takes MS ms longer for each, and is late with all behind it
  --block-display FRAMES:MS  the display takes and returns no buffer for MS ms when each is queued
  --drop FRAMES        the application drops them
  --error TYPE@AT      report a decoder error: fatal, recoverable, transient or a number

Output
  --log FILE           write the log there
  --metrics FILE       write metrics records there, one JSON object a line ("-": standard output)
  --json               print one JSON document with the sessions; the log only with --log
  -q, --quiet          neither log on standard output nor summary
  -h, --help           this text
  --version            the version

Times are seconds (12.5) or [HH:]MM:SS[.fff]. Interruptions happen in the order given. Pictures that
are more than 30 ms late are dropped, unless the logger service's allowlist names the package. The
logger ignores drops from a start or flush until half a second after the first picture behind it.

Exit code: 0 played, 1 a file cannot be opened or holds nothing to play, 2 usage, 3 damaged or cut
off (played as far as possible), 4 a file cannot be written, 130 interrupted.
)";

std::optional<double> parseNumber(const std::string& text, double low, double high) {
    if (text.empty() || strchr("0123456789.", text[0]) == nullptr) return std::nullopt;
    char* end = nullptr;
    const double value = strtod(text.c_str(), &end);
    if (*end != '\0' || !(value >= low && value <= high)) return std::nullopt;
    return value;
}

std::optional<int64_t> parseInteger(const std::string& text, int64_t low, int64_t high) {
    if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos) {
        return std::nullopt;
    }
    errno = 0;
    const int64_t value = strtoll(text.c_str(), nullptr, 10);
    if (errno != 0 || value < low || value > high) return std::nullopt;
    return value;
}

/** Seconds, minutes:seconds or hours:minutes:seconds, in microseconds. */
std::optional<int64_t> parseTime(std::string text) {
    constexpr double kMaxSeconds = 1e9;
    double seconds = 0;
    for (int fields = 0; fields < 3; ++fields) {
        const size_t colon = text.find(':');
        const auto value = parseNumber(text.substr(0, colon), 0, kMaxSeconds);
        if (!value) return std::nullopt;
        seconds = seconds * 60 + *value;
        if (colon == std::string::npos) return llround(seconds * 1e6);
        text.erase(0, colon + 1);
    }
    return std::nullopt;
}

/** "before SEPARATOR after"; nothing if the separator is missing. */
std::optional<std::pair<std::string, std::string>> split(const std::string& text, char separator) {
    const size_t at = text.find(separator);
    if (at == std::string::npos) return std::nullopt;
    return std::make_pair(text.substr(0, at), text.substr(at + 1));
}

bool parseFrames(const std::string& text, FrameRange* range) {
    const auto ends = split(text, '-');
    const auto first = parseInteger(ends ? ends->first : text, 1, INT64_MAX);
    const auto last = ends ? parseInteger(ends->second, 1, INT64_MAX) : first;
    if (!first || !last || *last < *first) return false;
    range->first = *first;
    range->last = *last;
    return true;
}

bool parseDelay(const std::string& text, Fault fault, Options* options) {
    FrameRange frames{};
    const auto parts = split(text, ':');
    const auto delayMs = parts ? parseInteger(parts->second, 0, 600'000) : std::nullopt;
    if (!delayMs || !parseFrames(parts->first, &frames)) return false;
    options->delays.push_back({fault, frames, *delayMs});
    return true;
}

bool parseSeek(const std::string& text, Options* options) {
    const auto parts = split(text, '@');
    const auto to = parts ? parseTime(parts->first) : std::nullopt;
    const auto at = parts ? parseTime(parts->second) : std::nullopt;
    if (!to || !at) return false;
    options->interruptions.push_back({Interruption::SEEK, *at, *to});
    return true;
}

bool parseInterruption(const std::string& text, Interruption::Kind kind, Options* options) {
    const auto at = parseTime(text);
    if (!at) return false;
    options->interruptions.push_back({kind, *at, *at});
    return true;
}

bool parseError(const std::string& text, Options* options) {
    static constexpr std::pair<std::string_view, int> kTypes[] = {
            {"fatal", 0}, {"transient", 1}, {"recoverable", 2}};
    const auto parts = split(text, '@');
    const auto at = parts ? parseTime(parts->second) : std::nullopt;
    if (!at) return false;
    for (const auto& [name, type] : kTypes) {
        if (parts->first == name) {
            options->errors.push_back({type, *at});
            return true;
        }
    }
    const auto type = parseInteger(parts->first, 0, INT32_MAX);
    if (!type) return false;
    options->errors.push_back({static_cast<int>(*type), *at});
    return true;
}

bool parseDisplay(const std::string& text, Options* options) {
    const auto parts = split(text, 'x');
    const auto width = parts ? parseInteger(parts->first, 1, 65535) : std::nullopt;
    const auto height = parts ? parseInteger(parts->second, 1, 65535) : std::nullopt;
    if (!width || !height) return false;
    options->displayWidth = static_cast<int>(*width);
    options->displayHeight = static_cast<int>(*height);
    return true;
}

bool parseProperty(const std::string& text, Options* options) {
    const auto parts = split(text, '=');
    if (!parts || parts->first.empty()) return false;
    options->properties.push_back(*parts);
    return true;
}

template <typename T, typename V>
bool store(const std::optional<V>& value, T* target) {
    if (value) *target = static_cast<T>(*value);
    return value.has_value();
}

bool storeText(const char* value, std::string* target) {
    *target = value;
    return !target->empty();
}

/** One option with a value: what it is called, what it takes, how it is read. */
struct ValueOption {
    const char* name;
    const char* expected;
    bool (*parse)(const char* value, Options* options);
};

constexpr char kTimeText[] = "a time such as 12.5 or 1:02:03";
constexpr char kDelayText[] = "FIRST[-LAST]:MS, such as 50-60:40";

const ValueOption kValueOptions[] = {
        {"speed", "a number from 0 to 1000",
         [](const char* v, Options* o) { return store(parseNumber(v, 0, 1000), &o->speed); }},
        {"seek", "TO@AT, two times such as 30@12.5",
         [](const char* v, Options* o) { return parseSeek(v, o); }},
        {"flush", kTimeText,
         [](const char* v, Options* o) { return parseInterruption(v, Interruption::FLUSH, o); }},
        {"reconfigure", kTimeText,
         [](const char* v, Options* o) {
             return parseInterruption(v, Interruption::RECONFIGURE, o);
         }},
        {"loop", "a number from 1 to 1000000",
         [](const char* v, Options* o) { return store(parseInteger(v, 1, 1000000), &o->loops); }},
        {"instances", "a number from 1 to 100",
         [](const char* v, Options* o) { return store(parseInteger(v, 1, 100), &o->instances); }},
        {"component", "the beginning of a component name, such as c2.vendor",
         [](const char* v, Options* o) { return storeText(v, &o->component); }},
        {"package", "a package name",
         [](const char* v, Options* o) { return storeText(v, &o->package); }},
        {"prop", "NAME=VALUE", [](const char* v, Options* o) { return parseProperty(v, o); }},
        {"display", "a size such as 1920x1080",
         [](const char* v, Options* o) { return parseDisplay(v, o); }},
        {"vsync", "a number from 1 to 1000",
         [](const char* v, Options* o) { return store(parseNumber(v, 1, 1000), &o->vsyncHz); }},
        {"buffers", "a number from 2 to 64",
         [](const char* v, Options* o) { return store(parseInteger(v, 2, 64), &o->buffers); }},
        {"starve", kDelayText,
         [](const char* v, Options* o) { return parseDelay(v, Fault::STARVE, o); }},
        {"slow-decrypt", kDelayText,
         [](const char* v, Options* o) { return parseDelay(v, Fault::SLOW_DECRYPT, o); }},
        {"slow-decode", kDelayText,
         [](const char* v, Options* o) { return parseDelay(v, Fault::SLOW_DECODE, o); }},
        {"slow-message", kDelayText,
         [](const char* v, Options* o) { return parseDelay(v, Fault::SLOW_MESSAGE, o); }},
        {"stall", kDelayText,
         [](const char* v, Options* o) { return parseDelay(v, Fault::STALL, o); }},
        {"block-display", kDelayText,
         [](const char* v, Options* o) { return parseDelay(v, Fault::BLOCK_DISPLAY, o); }},
        {"drop", "FIRST[-LAST], such as 200-204",
         [](const char* v, Options* o) {
             FrameRange range{};
             if (!parseFrames(v, &range)) return false;
             o->drops.push_back(range);
             return true;
         }},
        {"error", "TYPE@AT, such as fatal@12",
         [](const char* v, Options* o) { return parseError(v, o); }},
        {"log", "a file", [](const char* v, Options* o) { return storeText(v, &o->logFile); }},
        {"metrics", "a file",
         [](const char* v, Options* o) { return storeText(v, &o->metricsFile); }},
};

enum Flag {
    FLAG_OMX = 1000,
    FLAG_CODEC2,
    FLAG_TUNNELED,
    FLAG_SECURE,
    FLAG_JSON,
    FLAG_VERSION,
    /** From here on: the index into kValueOptions. */
    FLAG_VALUE
};

std::vector<option> longOptions() {
    std::vector<option> table = {{"omx", no_argument, nullptr, FLAG_OMX},
                                 {"codec2", no_argument, nullptr, FLAG_CODEC2},
                                 {"tunneled", no_argument, nullptr, FLAG_TUNNELED},
                                 {"secure", no_argument, nullptr, FLAG_SECURE},
                                 {"json", no_argument, nullptr, FLAG_JSON},
                                 {"version", no_argument, nullptr, FLAG_VERSION},
                                 {"quiet", no_argument, nullptr, 'q'},
                                 {"help", no_argument, nullptr, 'h'}};
    int flag = FLAG_VALUE;
    for (const ValueOption& value : kValueOptions) {
        table.push_back({value.name, required_argument, nullptr, flag++});
    }
    table.push_back({nullptr, 0, nullptr, 0});
    return table;
}

bool applyFlag(int flag, Options* options) {
    switch (flag) {
        case FLAG_OMX:
            options->omx = true;
            return true;
        case FLAG_CODEC2:
            options->omx = false;
            return true;
        case FLAG_TUNNELED:
            options->tunneled = true;
            return true;
        case FLAG_SECURE:
            options->secure = true;
            return true;
        case FLAG_JSON:
            options->json = true;
            return true;
        case 'q':
            options->quiet = true;
            return true;
        default:
            return false;
    }
}

}  // namespace

ParseResult parseOptions(int argc, char** argv, Options* options) {
    const ParseResult usage{false, EXIT_USAGE};
    const std::vector<option> table = longOptions();
    int found;
    while ((found = getopt_long(argc, argv, "hq", table.data(), nullptr)) != -1) {
        if (found >= FLAG_VALUE) {
            const ValueOption& value = kValueOptions[found - FLAG_VALUE];
            if (value.parse(optarg, options)) continue;
            fprintf(stderr, "codecplay: --%s %s: expected %s\n", value.name, optarg,
                    value.expected);
            return usage;
        }
        if (found == 'h') {
            fputs(kHelp, stdout);
            return {};
        }
        if (found == FLAG_VERSION) {
            puts("codecplay " CODECPLAY_VERSION);
            return {};
        }
        if (!applyFlag(found, options)) {
            fputs("Try 'codecplay --help'.\n", stderr);
            return usage;
        }
    }
    options->files.assign(argv + optind, argv + argc);
    if (options->files.empty()) {
        fputs("codecplay: no file given\nTry 'codecplay --help'.\n", stderr);
        return usage;
    }
    return {true, EXIT_PLAYED};
}

}  // namespace android::codecplay
