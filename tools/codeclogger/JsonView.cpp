// SPDX-License-Identifier: Apache-2.0
#include "Views.h"

namespace android::codeclogger {

Json codecJson(const CodecInfo& codec) {
    const ClientEntry& entry = codec.entry;
    Json json = Json::object();
    json.set("handle", entry.handle);
    json.set("id", idText(entry.id));  // numbers of JSON are not exact beyond 53 bits
    json.set("pid", entry.pid);
    json.set("host_pid", entry.hostPid);
    json.set("uid", entry.uid);
    json.set("package", entry.packageName);
    json.set("kind", entry.isVideo ? "video" : "audio");
    json.set("format", entry.format);
    json.set("active", entry.isActive);
    json.set("registered_ms", entry.registeredMs);
    json.set("late_outputs", entry.lateOutputs);
    json.set("longest_output_gap_ms", entry.longestDelayMs);
    json.set("answer", kAnswerWords[static_cast<int>(codec.answer)].inJson);
    if (entry.firstFrameMs != 0) json.set("first_frame_ms", entry.firstFrameMs);
    if (codec.answer != Answer::GIVEN) return json;
    json.set("bitrate_kbps", codec.bitrateKbps);
    json.set("frames_since_flush", codec.frames);
    json.set("secure_memory", codec.secureMemory);
    if (codec.msSinceLastFrame >= 0) json.set("last_frame_age_ms", codec.msSinceLastFrame);
    if (entry.isVideo) {
        json.set("width", codec.width);
        json.set("height", codec.height);
        json.set("hdr_type", codec.hdrType);
        json.set("scan_type", codec.scanType);
        json.set("bit_depth", codec.bitDepth);
        json.set("color_standard", codec.colorStandard);
        json.set("framerate", codec.framerate);
        json.set("frames_dropped", codec.framesDropped);
    }
    json.set("status", codec.status);
    return json;
}

Json stateJson(const ServiceState& state, const std::vector<Json>& codecs) {
    Json service = Json::object();
    service.set("pid", state.pid);
    service.set("uptime_ms", nowMs() - state.startedMs);
    service.set("listeners", state.listeners);
    service.set("tunneled_sessions_opened", state.tunneledOpened);
    service.set("tunneled_sessions_closed", state.tunneledClosed);
    Json json = Json::object();
    json.set("schema_version", kSchemaVersion);
    json.set("service", std::move(service));
    json.set("codecs", Json::array(codecs));
    return json;
}

Json allowlistJson(const Allowlist& allowlist) {
    const auto list = [](const std::vector<std::string>& names) {
        return Json::array({names.begin(), names.end()});
    };
    Json json = Json::object();
    json.set("schema_version", kSchemaVersion);
    json.set("label", allowlist.label);
    json.set("packages", list(allowlist.packages));
    json.set("exceptions", list(allowlist.exceptions));
    return json;
}

}  // namespace android::codeclogger
