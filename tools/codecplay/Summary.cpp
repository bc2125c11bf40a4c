// SPDX-License-Identifier: Apache-2.0
#include "Summary.h"

#define JSON_NOEXCEPTION
#include <nlohmann/json.hpp>

#include "CodecSession.h"

namespace android::codecplay {

namespace {

using Json = nlohmann::ordered_json;

std::string formatText(const StreamFormat& format) {
    char text[64];
    if (format.video) {
        snprintf(text, sizeof(text), "%dx%d", format.visibleWidth(), format.visibleHeight());
    } else {
        snprintf(text, sizeof(text), "%d Hz, %d channels", format.sampleRate, format.channels);
    }
    return text;
}

Json toJson(const StreamFormat& format) {
    if (!format.video) {
        return {{"sample_rate", format.sampleRate}, {"channels", format.channels}};
    }
    return {{"width", format.visibleWidth()},         {"height", format.visibleHeight()},
            {"color_range", format.colorRange},       {"color_standard", format.colorStandard},
            {"color_transfer", format.colorTransfer}, {"hdr_type", format.hdrType},
            {"bit_depth", format.bitDepth},           {"interlaced", format.interlaced}};
}

Json toJson(const SessionResult& session) {
    Json formats = Json::array();
    for (const StreamFormat& format : session.formats) formats.push_back(toJson(format));
    return {{"stream", session.stream},
            {"kind", session.video ? "video" : "audio"},
            {"mime", session.mime},
            {"component", session.component},
            {"packets", session.packets},
            {"frames", session.frames},
            {"rendered", session.rendered},
            {"dropped",
             {{"late", session.droppedLate},
              {"requested", session.droppedOnRequest},
              {"before_target", session.droppedBeforeTarget}}},
            {"flushed", session.flushed},
            {"no_picture", session.noPicture},
            {"never_shown", session.neverShown},
            {"decode_errors", session.decodeErrors},
            {"formats", formats},
            {"reports", session.reports}};
}

/** "name value" for each figure that is not 0, each after a comma. */
std::string figures(std::initializer_list<std::pair<const char*, uint64_t>> list) {
    std::string text;
    for (const auto& [name, value] : list) {
        if (value > 0) text += std::string(", ") + name + " " + std::to_string(value);
    }
    return text;
}

}  // namespace

SessionResult describeSession(const CodecSession& session) {
    const SessionCounts& counts = session.counts();
    return {session.streamIndex(),   session.video(),
            session.format().mime,   session.name(),
            counts.packets,          counts.frames,
            counts.rendered,         counts.droppedLate,
            counts.droppedOnRequest, counts.droppedBeforeTarget,
            counts.flushed,          counts.noPicture,
            counts.neverShown,       session.decodeErrors(),
            session.formats(),       session.reports()};
}

void printSummary(FILE* out, const FileResult& result) {
    fprintf(out, "%s", result.file.c_str());
    if (!result.format.empty()) {
        fprintf(out, ": %s, %.1f s", result.format.c_str(), result.durationUs / 1e6);
    }
    fputc('\n', out);
    for (const SessionResult& session : result.sessions) {
        std::string formats;
        for (const StreamFormat& format : session.formats) {
            formats += (formats.empty() ? "" : " -> ") + formatText(format);
        }
        fprintf(out, "  stream %d  %s  %s  %s\n", session.stream, session.mime.c_str(),
                session.component.c_str(), formats.c_str());
        fprintf(out, "    packets %llu, frames %llu, %s %llu%s\n",
                static_cast<unsigned long long>(session.packets),
                static_cast<unsigned long long>(session.frames),
                session.video ? "rendered" : "played",
                static_cast<unsigned long long>(session.rendered),
                figures({{"dropped late", session.droppedLate},
                         {"dropped on request", session.droppedOnRequest},
                         {"dropped before a seek's target", session.droppedBeforeTarget},
                         {"flushed", session.flushed},
                         {"without output", session.noPicture},
                         {"rendered but never shown", session.neverShown},
                         {"damaged", session.decodeErrors}})
                        .c_str());
        for (const std::string& report : session.reports) {
            fprintf(out, "    %s\n", report.c_str());
        }
    }
}

void printJson(FILE* out, const std::vector<FileResult>& results, int exitCode) {
    Json files = Json::array();
    for (const FileResult& result : results) {
        Json sessions = Json::array();
        for (const SessionResult& session : result.sessions) sessions.push_back(toJson(session));
        files.push_back({{"file", result.file},
                         {"instance", result.instance},
                         {"format", result.format},
                         {"duration_us", result.durationUs},
                         {"exit_code", result.exitCode},
                         {"warnings", result.warnings},
                         {"sessions", sessions}});
    }
    const Json document = {{"schema_version", 1}, {"exit_code", exitCode}, {"files", files}};
    // File names are bytes; JSON is UTF-8.
    const std::string text = document.dump(2, ' ', false, Json::error_handler_t::replace);
    fprintf(out, "%s\n", text.c_str());
}

}  // namespace android::codecplay
