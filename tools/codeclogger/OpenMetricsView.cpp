// SPDX-License-Identifier: Apache-2.0
#include <stdio.h>

#include <functional>
#include <optional>

#include "Views.h"

namespace android::codeclogger {

namespace {

std::string escaped(const std::string& text) {
    std::string out;
    for (const char c : text) {
        if (c == '\\' || c == '"') out += '\\';
        out += c == '\n' ? "\\n" : std::string(1, c);
    }
    return out;
}

std::string labels(const ClientEntry& entry) {
    return "{handle=\"" + std::to_string(entry.handle) + "\",pid=\"" + std::to_string(entry.pid) +
           "\",package=\"" + escaped(entry.packageName) + "\",kind=\"" +
           (entry.isVideo ? "video" : "audio") + "\",format=\"" + escaped(entry.format) + "\"}";
}

struct Family {
    const char* name;
    const char* type;
    const char* unit;  // "" for none; otherwise the name ends with it
    const char* help;
    /** Nothing for a codec that has no such value. */
    std::function<std::optional<double>(const CodecInfo&)> value;
};

std::optional<double> onlyIf(bool known, double value) {
    return known ? std::optional<double>(value) : std::nullopt;
}

const std::vector<Family>& families() {
    static const std::vector<Family> kFamilies = {
            {"codec_up", "gauge", "", "Whether the codec answers.",
             [](auto& c) { return c.answer == Answer::GIVEN ? 1 : 0; }},
            {"codec_frames_dropped", "counter", "", "Frames dropped in the session.",
             [](auto& c) {
                 return onlyIf(c.answer == Answer::GIVEN && c.entry.isVideo,
                               static_cast<double>(c.framesDropped));
             }},
            {"codec_segment_frames", "gauge", "", "Frames output since the last flush or seek.",
             [](auto& c) {
                 return onlyIf(c.answer == Answer::GIVEN, static_cast<double>(c.frames));
             }},
            {"codec_late_outputs", "counter", "", "Outputs after a gap of a second or more.",
             [](auto& c) { return c.entry.lateOutputs; }},
            {"codec_longest_output_gap_seconds", "gauge", "seconds",
             "The longest gap between two outputs that was reported.",
             [](auto& c) { return static_cast<double>(c.entry.longestDelayMs) / 1000; }},
            {"codec_last_frame_age_seconds", "gauge", "seconds",
             "Time since the last frame was rendered.",
             [](auto& c) {
                 return onlyIf(c.answer == Answer::GIVEN && c.msSinceLastFrame >= 0,
                               static_cast<double>(c.msSinceLastFrame) / 1000);
             }},
            {"codec_input_bitrate_kbps", "gauge", "kbps", "Bitrate of the input.",
             [](auto& c) {
                 return onlyIf(c.answer == Answer::GIVEN, static_cast<double>(c.bitrateKbps));
             }},
            {"codec_stream_framerate", "gauge", "", "Frames a second of the stream.",
             [](auto& c) {
                 return onlyIf(c.answer == Answer::GIVEN && c.entry.isVideo, c.framerate);
             }},
            {"codec_width_pixels", "gauge", "pixels", "Width of the picture.",
             [](auto& c) { return onlyIf(c.width != 0, c.width); }},
            {"codec_height_pixels", "gauge", "pixels", "Height of the picture.",
             [](auto& c) { return onlyIf(c.height != 0, c.height); }},
    };
    return kFamilies;
}

std::string number(double value) {
    char text[40];
    snprintf(text, sizeof(text), "%.15g", value);
    return text;
}

std::string head(const char* name, const char* type, const char* unit, const char* help) {
    std::string text = std::string("# TYPE ") + name + " " + type + "\n";
    if (*unit != '\0') text += std::string("# UNIT ") + name + " " + unit + "\n";
    return text + "# HELP " + name + " " + help + "\n";
}

}  // namespace

std::string openMetricsText(const ServiceState& state, const std::vector<CodecInfo>& codecs) {
    std::string text = head("codec_logger_codecs", "gauge", "", "Registered codecs.") +
                       "codec_logger_codecs " + std::to_string(state.clients.size()) + "\n";
    text += head("codec_logger_listeners", "gauge", "", "Registered listeners.") +
            "codec_logger_listeners " + std::to_string(state.listeners) + "\n";
    for (const Family& family : families()) {
        text += head(family.name, family.type, family.unit, family.help);
        const std::string suffix = std::string(family.type) == "counter" ? "_total" : "";
        for (const CodecInfo& codec : codecs) {
            const std::optional<double> value = family.value(codec);
            if (!value) continue;
            text += family.name + suffix + labels(codec.entry) + " " + number(*value) + "\n";
        }
    }
    return text + "# EOF\n";
}

}  // namespace android::codeclogger
