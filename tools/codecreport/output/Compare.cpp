// SPDX-License-Identifier: Apache-2.0
#include "output/Compare.h"

#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include <map>

namespace android::codecreport {

namespace {

using Json = nlohmann::ordered_json;

enum class Better { LOWER, HIGHER, NEARER_TO_ZERO };

struct Measure {
    const char* key;
    const char* unit;
    Better better;
    /** Reported only when it is not 0. */
    bool zeroWhenAbsent;
};

constexpr Measure kMeasures[] = {
        {"report.p2_ms", "ms", Better::LOWER, false},
        {"report.p3_ms", "ms", Better::LOWER, false},
        {"report.p5_ms", "ms", Better::LOWER, false},
        {"report.first_frame_ready_ms", "ms", Better::LOWER, false},
        {"report.stop_ms", "ms", Better::LOWER, true},
        {"report.total_frames_dropped", "frames", Better::LOWER, true},
        {"report.max_consecutive_frames_dropped", "frames", Better::LOWER, true},
        {"report.stream_avg_framerate_fps", "fps", Better::HIGHER, false},
        {"report.codec_non_fatal_error_count", "errors", Better::LOWER, true},
        {"counts.rendered_count", "frames", Better::HIGHER, false},
        {"counts.shown_count", "frames", Better::HIGHER, false},
        {"counts.never_shown_count", "frames", Better::LOWER, false},
        {"counts.display_dropped_count", "frames", Better::LOWER, false},
        {"counts.dropped_count", "frames", Better::LOWER, false},
        {"counts.error_count", "errors", Better::LOWER, false},
        {"counts.delayed_output_count", "stalls", Better::LOWER, false},
        {"counts.repeated_output_count", "frames", Better::LOWER, false},
        {"drops.run_count", "runs", Better::LOWER, false},
        {"drops.longest_run_frames", "frames", Better::LOWER, false},
        {"incident_count", "incidents", Better::LOWER, false},
        {"standing.count", "pictures", Better::LOWER, false},
        {"standing.total_ms", "ms", Better::LOWER, false},
        {"sync.outside_ms", "ms", Better::LOWER, false},
        {"sync.worst_ms", "ms", Better::NEARER_TO_ZERO, false},
        {"frame_interval.p99_ms", "ms", Better::LOWER, false},
        {"lateness.p99_ms", "ms", Better::LOWER, false},
        {"lateness.max_ms", "ms", Better::LOWER, false},
        {"stages.decrypt.p50_ms", "ms", Better::LOWER, false},
        {"stages.decrypt.p99_ms", "ms", Better::LOWER, false},
        {"stages.codec.p50_ms", "ms", Better::LOWER, false},
        {"stages.codec.p99_ms", "ms", Better::LOWER, false},
        {"stages.message.p50_ms", "ms", Better::LOWER, false},
        {"stages.message.p99_ms", "ms", Better::LOWER, false},
        {"stages.app.p50_ms", "ms", Better::LOWER, false},
        {"stages.app.p99_ms", "ms", Better::LOWER, false},
};

/** What holds without a threshold: what viewers notice, with room for chance. */
std::vector<Threshold> defaultLimits() {
    return {{"counts.rendered_count", 5, true},
            {"counts.shown_count", 5, true},
            {"counts.never_shown_count", 10},
            {"incident_count", 1},
            {"standing.count", 0},
            {"standing.total_ms", 250}};
}

std::optional<double> valueOf(const Json& session, const Measure& measure) {
    const Json* at = &session;
    std::string key = measure.key;
    while (!key.empty()) {
        const size_t dot = key.find('.');
        const auto it = at->is_object() ? at->find(key.substr(0, dot)) : at->end();
        if (!at->is_object() || it == at->end()) {
            const bool isReported = session.value("reported", false);
            return measure.zeroWhenAbsent && isReported ? std::optional<double>(0) : std::nullopt;
        }
        at = &*it;
        key = dot == std::string::npos ? "" : key.substr(dot + 1);
    }
    return at->is_number() ? std::optional<double>(at->get<double>()) : std::nullopt;
}

double worsening(const Measure& measure, double base, double now) {
    switch (measure.better) {
        case Better::HIGHER:
            return base - now;
        case Better::NEARER_TO_ZERO:
            return fabs(now) - fabs(base);
        default:
            return now - base;
    }
}

/** By how much a value may become worse; nothing: by any. */
std::optional<double> limitOf(const Measure& measure, double base,
                              const std::vector<Threshold>& thresholds) {
    const Threshold* threshold = nullptr;
    for (const Threshold& candidate : thresholds) {
        if (candidate.key == measure.key || (candidate.key.empty() && threshold == nullptr)) {
            threshold = &candidate;
        }
        if (candidate.key == measure.key) break;
    }
    if (threshold == nullptr) return std::nullopt;
    return threshold->percent ? fabs(base) * threshold->limit / 100 : threshold->limit;
}

void comparePair(const Json& base, const Json& now, const std::vector<Threshold>& thresholds,
                 CompareResult* result) {
    ++result->pairs;
    for (const Measure& measure : kMeasures) {
        const auto before = valueOf(base, measure);
        const auto after = valueOf(now, measure);
        if (!before) continue;
        const auto limit = limitOf(measure, *before, thresholds);
        if (!after) {
            if (!limit) continue;
            result->unmatched.push_back(std::string("not known in NEW: ") + measure.key);
            result->exceeds = true;
            continue;
        }
        Comparison value;
        value.baseId = base.value("id", 0);
        value.newId = now.value("id", 0);
        value.codec = base.value("codec_tag", "");
        value.key = measure.key;
        value.base = *before;
        value.now = *after;
        value.worseBy = worsening(measure, *before, *after);
        value.exceeds = limit && value.worseBy > *limit;
        result->exceeds |= value.exceeds;
        if (limit && result->outcome == Outcome::CANNOT_TELL) result->outcome = Outcome::SAME;
        if (limit && -value.worseBy > *limit) result->outcome = Outcome::BETTER;
        result->values.push_back(value);
    }
}

/** Sessions by codec tag; those whose tag the log does not tell by their format. */
std::map<std::string, std::vector<const Json*>> byCodec(const Json& report) {
    std::map<std::string, std::vector<const Json*>> sessions;
    const auto list = report.find("sessions");
    if (list == report.end() || !list->is_array()) return sessions;
    for (const Json& session : *list) {
        if (!session.is_object()) continue;
        const auto tag = session.find("codec_tag");
        const bool isKnown = tag != session.end() && tag->is_string();
        sessions[isKnown ? tag->get<std::string>() : session.value("format", "")].push_back(
                &session);
    }
    return sessions;
}

}  // namespace

std::optional<Threshold> parseThreshold(const std::string& text) {
    Threshold threshold;
    const size_t equals = text.find('=');
    std::string value = text;
    if (equals != std::string::npos) {
        threshold.key = text.substr(0, equals);
        value = text.substr(equals + 1);
        if (threshold.key.empty()) return std::nullopt;
    }
    char* end = nullptr;
    threshold.limit = strtod(value.c_str(), &end);
    threshold.percent = *end == '%';
    if (end == value.c_str() || end[threshold.percent ? 1 : 0] != '\0' ||
        !(threshold.limit >= 0 && threshold.limit < 1e15)) {
        return std::nullopt;
    }
    return threshold;
}

std::string comparedKeys() {
    std::string text;
    for (const Measure& measure : kMeasures) {
        char line[100];
        snprintf(line, sizeof(line), "  %-40s %-8s %s\n", measure.key, measure.unit,
                 measure.better == Better::HIGHER  ? "higher is better"
                 : measure.better == Better::LOWER ? "lower is better"
                                                   : "nearer to 0 is better");
        text += line;
    }
    return text;
}

bool isComparedKey(const std::string& key) {
    for (const Measure& measure : kMeasures) {
        if (key == measure.key) return true;
    }
    return false;
}

CompareResult compare(const Json& base, const Json& now, const std::vector<Threshold>& given) {
    const std::vector<Threshold> thresholds = given.empty() ? defaultLimits() : given;
    CompareResult result;
    auto before = byCodec(base);
    auto after = byCodec(now);
    for (const auto& [codec, sessions] : before) {
        const auto& others = after[codec];
        for (size_t i = 0; i < sessions.size(); ++i) {
            if (i < others.size()) {
                comparePair(*sessions[i], *others[i], thresholds, &result);
            } else {
                result.unmatched.push_back("only in BASE: " + codec);
                result.exceeds = true;
            }
        }
    }
    for (const auto& [codec, sessions] : after) {
        for (size_t i = before[codec].size(); i < sessions.size(); ++i) {
            result.unmatched.push_back("only in NEW: " + codec);
        }
    }
    if (result.exceeds) result.outcome = Outcome::WORSE;
    return result;
}

std::string toText(const CompareResult& result) {
    std::string text;
    std::string codec;
    for (const Comparison& value : result.values) {
        char line[200];
        const std::string head = value.codec + ", session " + std::to_string(value.baseId) +
                                 " against " + std::to_string(value.newId);
        if (head != codec) {
            codec = head;
            text += head + "\n";
        }
        const char* verdict = value.exceeds       ? "WORSE, past the threshold"
                              : value.worseBy > 0 ? "worse"
                              : value.worseBy < 0 ? "better"
                                                  : "same";
        snprintf(line, sizeof(line), "  %-40s %12.3f %12.3f  %+12.3f  %s\n", value.key.c_str(),
                 value.base, value.now, value.now - value.base, verdict);
        text += line;
    }
    for (const std::string& unmatched : result.unmatched) text += unmatched + "\n";
    return text + toString(result.outcome) + "\n";
}

Json toJson(const CompareResult& result) {
    Json values = Json::array();
    for (const Comparison& value : result.values) {
        values.push_back({{"codec_tag", value.codec},
                          {"base_session", value.baseId},
                          {"new_session", value.newId},
                          {"key", value.key},
                          {"base_value", value.base},
                          {"new_value", value.now},
                          {"worse_by", value.worseBy},
                          {"exceeds", value.exceeds}});
    }
    return {{"schema_version", 1},
            {"outcome", toString(result.outcome)},
            {"exceeds", result.exceeds},
            {"values", std::move(values)},
            {"unmatched", result.unmatched}};
}

}  // namespace android::codecreport
