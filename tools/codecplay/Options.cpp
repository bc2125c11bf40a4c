// SPDX-License-Identifier: Apache-2.0
#include "Options.h"

#include <errno.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <sstream>
#include <string_view>

#include <tools/options/OptionTable.h>

namespace android::codecplay {

namespace {

using options::kFiles;
using options::Option;
using options::Section;

constexpr char kIntro[] =
        "Plays media files through libmediacodeclogger as an Android media framework would: one "
        "codec session for each audio and video stream, with FFmpeg's decoders as the components. "
        "The log goes to standard output in logcat's threadtime form. FILE \"-\" is standard "
        "input.\n"
        "\n"
        "  codecplay clip.mp4\n"
        "  codecplay --speed 0 --prop mediaanalytic.enable=true --prop mediaanalytic.debug=0x407 "
        "clip.mp4\n"
        "  codecplay --seek 30@5 --drop 200-204 --log session.log --metrics metrics.jsonl clip.mkv";

constexpr char kNotes[] =
        "Times are seconds (12.5) or [HH:]MM:SS[.fff]. Interruptions happen in the order given. "
        "Pictures that are more than 30 ms late are dropped, unless the logger service's allowlist "
        "names the package. The logger ignores drops from a start or flush until half a second "
        "after the first picture behind it.";

constexpr char kFaultIntro[] =
        "In frames of the first video (without one, audio) stream, from 1. FRAMES is FIRST[-LAST], "
        "in the order in which they go in for the first two, and come out for the others. All can "
        "be given more than once and combined.";

/** What the library reads, as completion offers it. */
constexpr char kProperties[] =
        "mediaanalytic.enable=true mediaanalytic.debug= mediaanalytic.maxqueuesize= "
        "mediaanalytic.maxdequeuetime= mediaanalytic.maxqueuetime= mediaanalytic.maxmsgdelaytime= "
        "mediaanalytic.maxdecodetime= mediaanalytic.vsyncperiod= mediaanalytic.maxdecrypttime= "
        "mediaanalytic.maxerrorframe= mediaanalytic.maxearlytime= vendor.vdecomx.hdr-type=";

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

bool parseDrop(const std::string& text, Options* options) {
    FrameRange frames{};
    if (!parseFrames(text, &frames)) return false;
    options->drops.push_back(frames);
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

Option flag(const char* name, char letter, const char* help, bool* target, bool value = true) {
    return {name, letter, nullptr, help, [=](const char*) {
                *target = value;
                return true;
            }};
}

Option textOption(const char* name, const char* value, const char* help, std::string* target,
                  const char* completion = nullptr) {
    return {name,
            0,
            value,
            help,
            [=](const char* text) {
                *target = text;
                return !target->empty();
            },
            nullptr,
            completion};
}

Option delayOption(const char* name, Fault fault, const char* help, Options* options) {
    return {name,
            0,
            "FRAMES:MS",
            help,
            [=](const char* text) { return parseDelay(text, fault, options); },
            "FIRST[-LAST]:MS, such as 50-60:40"};
}

Section playback(Options* o) {
    static constexpr char kTime[] = "a time such as 12.5 or 1:02:03";
    const auto interruption = [o](Interruption::Kind kind) {
        return [=](const char* text) { return parseInterruption(text, kind, o); };
    };
    return {"Playback",
            nullptr,
            {{"speed", 0, "N",
              "N times presentation pace (1); 0: as fast as it decodes, nothing is late",
              [o](const char* text) { return store(parseNumber(text, 0, 1000), &o->speed); },
              "a number from 0 to 1000"},
             {"seek", 0, "TO@AT", "when playback reaches AT, go on at TO",
              [o](const char* text) { return parseSeek(text, o); },
              "TO@AT, two times such as 30@12.5"},
             {"flush", 0, "AT", "when playback reaches AT, flush all codecs and go on there",
              interruption(Interruption::FLUSH), kTime},
             {"reconfigure", 0, "AT",
              "when playback reaches AT, stop, report and configure all codecs again",
              interruption(Interruption::RECONFIGURE), kTime},
             {"loop", 0, "N", "play each file N times in the same sessions",
              [o](const char* text) { return store(parseInteger(text, 1, 1000000), &o->loops); },
              "a number from 1 to 1000000"},
             {"instances", 0, "N", "play N times at once (1)",
              [o](const char* text) { return store(parseInteger(text, 1, 100), &o->instances); },
              "a number from 1 to 100"}}};
}

Section codecs(Options* o) {
    return {"Codecs",
            nullptr,
            {flag("codec2", 0, "report the sessions as Codec2's, which is the default", &o->omx,
                  false),
             flag("omx", 0, "report the sessions as OMX's", &o->omx),
             flag("tunneled", 0, "tunneled video: pictures go from the component to the display",
                  &o->tunneled),
             flag("secure", 0, "encrypted input, video in secure memory", &o->secure),
             textOption("component", "PREFIX",
                        "what component names begin with (c2.ffmpeg or OMX.ffmpeg)", &o->component),
             textOption("package", "NAME", "the application's package name (codecplay)",
                        &o->package)}};
}

Section platform(Options* o) {
    return {"Platform",
            nullptr,
            {{"prop", 0, "NAME=VALUE",
              "set a system property, such as mediaanalytic.enable=true; may be given more than "
              "once",
              [o](const char* text) { return parseProperty(text, o); }, "NAME=VALUE", kProperties},
             {"display", 0, "WxH", "size of the display (1920x1080)",
              [o](const char* text) { return parseDisplay(text, o); }, "a size such as 1920x1080",
              "1280x720 1920x1080 3840x2160"},
             {"vsync", 0, "HZ", "refresh rate of the display (60)",
              [o](const char* text) { return store(parseNumber(text, 1, 1000), &o->vsyncHz); },
              "a number from 1 to 1000"},
             {"buffers", 0, "N", "output buffers that decoder, framework and display share (8)",
              [o](const char* text) { return store(parseInteger(text, 2, 64), &o->buffers); },
              "a number from 2 to 64"}}};
}

Section faults(Options* o) {
    return {"Faults",
            kFaultIntro,
            {delayOption(
                     "starve", Fault::STARVE,
                     "the source delivers nothing for MS ms before each of them. What codec and "
                     "application hold, about half a second of 30 pictures a second, bridges "
                     "shorter gaps",
                     o),
             delayOption("slow-decrypt", Fault::SLOW_DECRYPT,
                         "the framework takes MS ms longer to decrypt each of them, and does "
                         "nothing else meanwhile",
                         o),
             delayOption("slow-decode", Fault::SLOW_DECODE,
                         "the component takes MS ms longer for each of them", o),
             delayOption("slow-message", Fault::SLOW_MESSAGE,
                         "the component's message of each reaches the framework MS ms late; those "
                         "behind do not overtake it",
                         o),
             delayOption("stall", Fault::STALL,
                         "the application takes MS ms longer for each, and is late with all behind",
                         o),
             delayOption("block-display", Fault::BLOCK_DISPLAY,
                         "when each is queued to the display, this takes and returns no buffer for "
                         "MS ms. A tunnel has no such queue",
                         o),
             {"drop", 0, "FRAMES", "the application drops them",
              [o](const char* text) { return parseDrop(text, o); },
              "FIRST[-LAST], such as 200-204"},
             {"error", 0, "TYPE@AT",
              "report a decoder error: fatal, recoverable, transient or a number",
              [o](const char* text) { return parseError(text, o); }, "TYPE@AT, such as fatal@12",
              "fatal@ recoverable@ transient@"}}};
}

Section output(Options* o) {
    return {"Output",
            nullptr,
            {textOption("log", "FILE", "write the log there", &o->logFile, kFiles),
             textOption("metrics", "FILE",
                        "write metrics records there, one JSON object a line; \"-\" is standard "
                        "output",
                        &o->metricsFile, kFiles),
             textOption("story", "FILE",
                        "write what the library is told there, with the clock, as a story that the "
                        "library's tests play",
                        &o->storyFile, kFiles),
             flag("json", 0,
                  "print one JSON document with the sessions; the log is then written only with "
                  "--log",
                  &o->json),
             flag("quiet", 'q', "neither log on standard output nor summary", &o->quiet)}};
}

options::Program program(Options* options) {
    return {"codecplay",
            CODECPLAY_VERSION,
            {"[OPTION...] FILE..."},
            kIntro,
            {},
            {playback(options), codecs(options), platform(options), faults(options),
             output(options)},
            kNotes,
            {{EXIT_PLAYED, "played"},
             {EXIT_NOT_PLAYABLE, "a file cannot be opened or holds nothing to play"},
             {EXIT_USAGE, "usage"},
             {EXIT_DAMAGED, "a file is damaged or cut off (played as far as possible)"},
             {EXIT_CANNOT_WRITE, "an output cannot be written"},
             {EXIT_STREAM_NOT_PLAYED, "a stream of a file cannot be played (the others were)"},
             {EXIT_INTERRUPTED, "interrupted by SIGINT (with what was recorded)"},
             {EXIT_TERMINATED, "the same by SIGTERM"}},
            kFiles};
}

}  // namespace

bool isKnownProperty(const std::string& name) {
    std::istringstream all(kProperties);
    for (std::string word; all >> word;) {
        if (word.substr(0, word.find('=')) == name) return true;
    }
    return false;
}

int worseExit(int a, int b) {
    static constexpr int kWorstLast[] = {EXIT_PLAYED,       EXIT_STREAM_NOT_PLAYED, EXIT_DAMAGED,
                                         EXIT_NOT_PLAYABLE, EXIT_INTERRUPTED,       EXIT_TERMINATED,
                                         EXIT_CANNOT_WRITE};
    const auto rank = [](int code) {
        return std::find(std::begin(kWorstLast), std::end(kWorstLast), code);
    };
    return rank(a) < rank(b) ? b : a;
}

std::optional<int> parseOptions(int argc, char** argv, Options* options) {
    const options::Program table = program(options);
    if (const auto code = options::parse(table, argc, argv, &options->files)) return code;
    if (options->files.empty()) return options::complain(table, "no file given");
    if (options->json && options->metricsFile == "-") {
        return options::complain(table, "--json and --metrics - both want standard output");
    }
    return std::nullopt;
}

}  // namespace android::codecplay
