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

SessionResult describeSession(const CodecSession& session, bool ended) {
    const SessionCounts& counts = session.counts();
    return {session.streamIndex(),
            session.video(),
            session.format().mime,
            session.name(),
            counts.packets,
            counts.frames,
            counts.rendered,
            counts.droppedLate,
            counts.droppedOnRequest,
            counts.droppedBeforeTarget,
            counts.flushed,
            counts.noPicture,
            counts.neverShown,
            session.decodeErrors(),
            ended ? session.formats() : std::vector<StreamFormat>(),
            ended ? session.reports() : std::vector<std::string>()};
}

std::string summaryText(const FileResult& result) {
    std::string text = result.file;
    if (!result.format.empty()) {
        char duration[32];
        snprintf(duration, sizeof(duration), ", %.1f s", result.durationUs / 1e6);
        text += ": " + result.format + duration;
    }
    text += '\n';
    for (const SessionResult& session : result.sessions) {
        text += "  stream " + std::to_string(session.stream) + "  " + session.mime + "  " +
                session.component + "  ";
        for (const StreamFormat& format : session.formats) {
            text += (&format == &session.formats.front() ? "" : " -> ") + formatText(format);
        }
        text += "\n    packets " + std::to_string(session.packets) + ", frames " +
                std::to_string(session.frames) + (session.video ? ", rendered " : ", played ") +
                std::to_string(session.rendered) +
                figures({{"dropped late", session.droppedLate},
                         {"dropped on request", session.droppedOnRequest},
                         {"dropped before a seek's target", session.droppedBeforeTarget},
                         {"flushed", session.flushed},
                         {"without output", session.noPicture},
                         {"rendered but never shown", session.neverShown},
                         {"damaged", session.decodeErrors}}) +
                '\n';
        for (const std::string& report : session.reports) text += "    " + report + '\n';
    }
    return text;
}

std::string jsonText(const std::vector<FileResult>& results, int exitCode) {
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
    return document.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}

}  // namespace android::codecplay
