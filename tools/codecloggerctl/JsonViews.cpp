// SPDX-License-Identifier: Apache-2.0
#include "Views.h"

#include <nlohmann/json.hpp>

namespace codecloggerctl {

using nlohmann::ordered_json;

namespace {

const char* answerText(Answer answer) {
    switch (answer) {
        case Answer::GIVEN:
            return "given";
        case Answer::ENDED:
            return "ended";
        case Answer::DIED:
            return "died";
        case Answer::SILENT:
            break;
    }
    return "none";
}

}  // namespace

ordered_json codecJson(const CodecInfo& codec) {
    const codeclogger::ClientEntry& entry = codec.entry;
    ordered_json json = {{"handle", entry.handle},
                         // Numbers of JSON are not exact beyond 53 bits.
                         {"id", idText(entry.id)},
                         {"pid", entry.pid},
                         {"host_pid", entry.hostPid},
                         {"uid", entry.uid},
                         {"package", entry.packageName},
                         {"kind", entry.isVideo ? "video" : "audio"},
                         {"format", entry.format},
                         {"active", entry.isActive},
                         {"registered_ms", entry.registeredMs},
                         {"late_outputs", entry.lateOutputs},
                         {"longest_output_gap_ms", entry.longestDelayMs},
                         {"answer", answerText(codec.answer)}};
    if (entry.firstFrameMs != 0) json["first_frame_ms"] = entry.firstFrameMs;
    if (codec.answer != Answer::GIVEN) return json;
    json["bitrate_kbps"] = codec.bitrateKbps;
    json["frames_since_flush"] = codec.frames;
    json["secure_memory"] = codec.secureMemory;
    if (codec.msSinceLastFrame >= 0) json["last_frame_age_ms"] = codec.msSinceLastFrame;
    if (entry.isVideo) {
        json["width"] = codec.width;
        json["height"] = codec.height;
        json["hdr_type"] = codec.hdrType;
        json["scan_type"] = codec.scanType;
        json["bit_depth"] = codec.bitDepth;
        json["color_standard"] = codec.colorStandard;
        json["framerate"] = codec.framerate;
        json["frames_dropped"] = codec.framesDropped;
    }
    json["status"] = codec.status;
    return json;
}

ordered_json stateJson(const codeclogger::ServiceState& state,
                       const std::vector<CodecInfo>& codecs) {
    ordered_json list = ordered_json::array();
    for (const CodecInfo& codec : codecs) list.push_back(codecJson(codec));
    return {{"schema_version", kSchemaVersion},
            {"service",
             {{"pid", state.pid},
              {"uptime_ms", nowMs() - state.startedMs},
              {"listeners", state.listeners},
              {"tunneled_sessions_opened", state.tunneledOpened},
              {"tunneled_sessions_closed", state.tunneledClosed}}},
            {"codecs", list}};
}

ordered_json allowlistJson(const codeclogger::Allowlist& allowlist) {
    return {{"schema_version", kSchemaVersion},
            {"label", allowlist.label},
            {"packages", allowlist.packages},
            {"exceptions", allowlist.exceptions}};
}

std::string dump(const ordered_json& json, bool inOneLine) {
    return json.dump(inOneLine ? -1 : 2, ' ', false, ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace codecloggerctl
