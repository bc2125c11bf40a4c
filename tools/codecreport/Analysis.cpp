// SPDX-License-Identifier: Apache-2.0
#include "Analysis.h"

#include <inttypes.h>
#include <stdio.h>

#include <numeric>

#include "reading/Captures.h"
#include "reading/LineReader.h"
#include "reading/LogcatParser.h"

namespace android::codecreport {

namespace {

constexpr uint64_t kProgressLines = 200'000;

void showProgress(const std::string& file, const LineReader& reader, uint64_t lines) {
    const double mb = reader.bytesRead() / 1e6;
    if (reader.bytesTotal() > 0) {
        fprintf(stderr, "\r%s: %3.0f %%, %.0f MB, %" PRIu64 " lines\033[K", file.c_str(),
                100.0 * reader.bytesRead() / reader.bytesTotal(), mb, lines);
    } else {
        fprintf(stderr, "\r%s: %.0f MB, %" PRIu64 " lines\033[K", file.c_str(), mb, lines);
    }
}

/** What was read early enough to stand, of an input that is damaged or was cut. */
void noteEarlyEnd(const std::string& file, const LineReader& reader, Analysis* analysis) {
    if (reader.error().empty()) return;
    analysis->problems.push_back(file + ": ends early: " + reader.error());
    analysis->endsEarly = true;
}

/** Any text passes for a log without headers: it is one if lines of the library are in it. */
bool isLog(const LogcatParser& parser, uint64_t understood) {
    const auto& counts = parser.counts();
    const uint64_t messages = std::accumulate(counts.begin(), counts.end(), uint64_t{0});
    return understood > 0 || messages > counts[static_cast<size_t>(LogFormat::RAW)];
}

bool readLog(const std::string& file, const Copies& copies, SessionBuilder* builder, bool progress,
             Analysis* analysis) {
    analysis->files.push_back(file);
    LineReader reader;
    const auto copy = copies.find(file);
    if (!reader.open(copy == copies.end() ? file : copy->second)) {
        analysis->problems.push_back(file + ": " + reader.error());
        return false;
    }
    LogcatParser parser(reader.referenceSeconds());
    ReadStats& stats = builder->stats();
    const uint64_t understoodBefore = stats.understood;
    int entry = 0;
    std::string_view text;
    while (reader.next(&text)) {
        if (reader.file() != entry) {
            entry = reader.file();
            builder->beginCapture();
        }
        ++stats.lines;
        stats.bytes += text.size() + 1;
        LogLine line;
        switch (parser.parse(text, &line)) {
            case LogcatParser::Result::MESSAGE:
                builder->onLine(line);
                break;
            case LogcatParser::Result::NOT_A_LOG_LINE:
                ++stats.notLogLines;
                break;
            case LogcatParser::Result::FRAME:
                break;
        }
        if (progress && stats.lines % kProgressLines == 0) showProgress(file, reader, stats.lines);
    }
    if (progress) fprintf(stderr, "\r\033[K");
    noteEarlyEnd(file, reader, analysis);
    for (size_t i = 0; i < parser.counts().size(); ++i) analysis->formats[i] += parser.counts()[i];
    if (isLog(parser, stats.understood - understoodBefore)) return true;
    if (reader.error().empty()) analysis->problems.push_back(file + ": holds no log");
    return false;
}

}  // namespace

bool readLogs(const Reference& reference, const std::vector<std::string>& files, bool progress,
              Analysis* analysis, const Copies& copies) {
    SessionBuilder builder(reference, &analysis->frames);
    bool allOpened = true;
    for (const Capture& capture : capturesOf(files)) {
        builder.beginCapture();
        for (const std::string& file : capture) {
            allOpened &= readLog(file, copies, &builder, progress, analysis);
        }
    }
    analysis->sessions = builder.finish();
    if (!analysis->frames.error().empty()) {
        analysis->problems.push_back(analysis->frames.error());
        analysis->endsEarly = true;
    }
    analysis->stats = builder.stats();
    return allOpened;
}

bool readMetrics(const std::string& file, Analysis* analysis) {
    LineReader reader;
    if (!reader.open(file)) {
        analysis->problems.push_back(file + ": " + reader.error());
        return false;
    }
    std::string_view text;
    while (reader.next(&text)) analysis->metrics.onLine(text);
    noteEarlyEnd(file, reader, analysis);
    return true;
}

}  // namespace android::codecreport
