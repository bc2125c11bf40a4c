// SPDX-License-Identifier: Apache-2.0
#include "output/Compare.h"

#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include <map>

#include "model/Incident.h"

namespace android::codecreport {

namespace {

using Json = nlohmann::ordered_json;

enum class Better { LOWER, HIGHER, NEARER_TO_ZERO };
// Of the playback of BASE, less is an early end.
constexpr double kLeastPlayed = 0.9;

enum class Absent { UNKNOWN, ZERO_IF_REPORTED, ZERO_IF_JUDGED };

struct Measure {
    const char* key;
    const char* unit;
    Better better;
    /** What counts as 0 where it is not there: nothing, or what is told only when it is not 0. */
    Absent absent;
};

constexpr Measure kMeasures[] = {
        {"report.p2_ms", "ms", Better::LOWER, Absent::UNKNOWN},
        {"report.p3_ms", "ms", Better::LOWER, Absent::UNKNOWN},
        {"report.p5_ms", "ms", Better::LOWER, Absent::UNKNOWN},
        {"report.first_frame_ready_ms", "ms", Better::LOWER, Absent::UNKNOWN},
        {"report.stop_ms", "ms", Better::LOWER, Absent::ZERO_IF_REPORTED},
        {"report.total_frames_dropped", "frames", Better::LOWER, Absent::ZERO_IF_REPORTED},
        {"report.max_consecutive_frames_dropped", "frames", Better::LOWER,
         Absent::ZERO_IF_REPORTED},
        {"report.stream_avg_framerate_fps", "fps", Better::HIGHER, Absent::UNKNOWN},
        {"report.codec_non_fatal_error_count", "errors", Better::LOWER, Absent::ZERO_IF_REPORTED},
        {"counts.rendered_count", "frames", Better::HIGHER, Absent::UNKNOWN},
        {"counts.shown_count", "frames", Better::HIGHER, Absent::UNKNOWN},
        {"counts.never_shown_count", "frames", Better::LOWER, Absent::UNKNOWN},
        {"counts.display_dropped_count", "frames", Better::LOWER, Absent::UNKNOWN},
        {"counts.dropped_count", "frames", Better::LOWER, Absent::UNKNOWN},
        {"counts.error_count", "errors", Better::LOWER, Absent::UNKNOWN},
        {"counts.delayed_output_count", "stalls", Better::LOWER, Absent::UNKNOWN},
        {"counts.repeated_output_count", "frames", Better::LOWER, Absent::UNKNOWN},
        {"drops.run_count", "runs", Better::LOWER, Absent::UNKNOWN},
        {"drops.longest_run_frames", "frames", Better::LOWER, Absent::UNKNOWN},
        {"incident_count", "incidents", Better::LOWER, Absent::UNKNOWN},
        {"standing.count", "pictures", Better::LOWER, Absent::UNKNOWN},
        {"standing.total_ms", "ms", Better::LOWER, Absent::UNKNOWN},
        {"causes.input_starved.stood_ms", "ms", Better::LOWER, Absent::ZERO_IF_JUDGED},
        {"causes.input_starved.never_shown_count", "frames", Better::LOWER, Absent::ZERO_IF_JUDGED},
        {"causes.decryption.stood_ms", "ms", Better::LOWER, Absent::ZERO_IF_JUDGED},
        {"causes.decryption.never_shown_count", "frames", Better::LOWER, Absent::ZERO_IF_JUDGED},
        {"causes.codec.stood_ms", "ms", Better::LOWER, Absent::ZERO_IF_JUDGED},
        {"causes.codec.never_shown_count", "frames", Better::LOWER, Absent::ZERO_IF_JUDGED},
        {"causes.message_delay.stood_ms", "ms", Better::LOWER, Absent::ZERO_IF_JUDGED},
        {"causes.message_delay.never_shown_count", "frames", Better::LOWER, Absent::ZERO_IF_JUDGED},
        {"causes.application.stood_ms", "ms", Better::LOWER, Absent::ZERO_IF_JUDGED},
        {"causes.application.never_shown_count", "frames", Better::LOWER, Absent::ZERO_IF_JUDGED},
        {"causes.display_queue.stood_ms", "ms", Better::LOWER, Absent::ZERO_IF_JUDGED},
        {"causes.display_queue.never_shown_count", "frames", Better::LOWER, Absent::ZERO_IF_JUDGED},
        {"causes.display_rate.stood_ms", "ms", Better::LOWER, Absent::ZERO_IF_JUDGED},
        {"causes.display_rate.never_shown_count", "frames", Better::LOWER, Absent::ZERO_IF_JUDGED},
        {"causes.unknown.stood_ms", "ms", Better::LOWER, Absent::ZERO_IF_JUDGED},
        {"causes.unknown.never_shown_count", "frames", Better::LOWER, Absent::ZERO_IF_JUDGED},
        {"sync.outside_ms", "ms", Better::LOWER, Absent::UNKNOWN},
        {"sync.worst_ms", "ms", Better::NEARER_TO_ZERO, Absent::UNKNOWN},
        {"frame_interval.p99_ms", "ms", Better::LOWER, Absent::UNKNOWN},
        {"lateness.p99_ms", "ms", Better::LOWER, Absent::UNKNOWN},
        {"lateness.max_ms", "ms", Better::LOWER, Absent::UNKNOWN},
        {"stages.decrypt.p50_ms", "ms", Better::LOWER, Absent::UNKNOWN},
        {"stages.decrypt.p99_ms", "ms", Better::LOWER, Absent::UNKNOWN},
        {"stages.codec.p50_ms", "ms", Better::LOWER, Absent::UNKNOWN},
        {"stages.codec.p99_ms", "ms", Better::LOWER, Absent::UNKNOWN},
        {"stages.message.p50_ms", "ms", Better::LOWER, Absent::UNKNOWN},
        {"stages.message.p99_ms", "ms", Better::LOWER, Absent::UNKNOWN},
        {"stages.app.p50_ms", "ms", Better::LOWER, Absent::UNKNOWN},
        {"stages.app.p99_ms", "ms", Better::LOWER, Absent::UNKNOWN},
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

bool countsAsZero(const Json& session, Absent absent) {
    if (absent == Absent::ZERO_IF_REPORTED) return session.value("reported", false);
    const auto incidents = session.find("incident_count");
    return absent == Absent::ZERO_IF_JUDGED && incidents != session.end() && incidents->is_number();
}

std::optional<double> valueOf(const Json& session, const Measure& measure) {
    const Json* at = &session;
    std::string key = measure.key;
    while (!key.empty()) {
        const size_t dot = key.find('.');
        const auto it = at->is_object() ? at->find(key.substr(0, dot)) : at->end();
        if (!at->is_object() || it == at->end()) {
            return countsAsZero(session, measure.absent) ? std::optional<double>(0) : std::nullopt;
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

bool brokeOff(const Json& session) {
    const auto verdict = session.find("verdict");
    return verdict != session.end() && verdict->is_object() &&
           verdict->value("word", "") == toString(Word::BROKE_OFF);
}

/** Time in which pictures moved; longer playback by what stood is not longer. */
double movedMs(const Json& session) {
    const auto playback = session.find("playback_ms");
    double ms = playback != session.end() && playback->is_number() ? playback->get<double>() : 0;
    const auto causes = session.find("causes");
    if (causes == session.end()) return ms;
    for (const Json& cause : *causes) ms -= cause.value("stood_ms", 0.0);
    return ms;
}

/** Whatever the values are: what stopped before its end is no better than what did not. */
void checkEnd(const Json& base, const Json& now, CompareResult* result) {
    const char* how = nullptr;
    if (brokeOff(now) && !brokeOff(base)) {
        how = "no picture came any more";
    } else if (base.value("reported", false) && !now.value("reported", false)) {
        how = "no report of the library";
    } else if (movedMs(now) > 0 && movedMs(now) < movedMs(base) * kLeastPlayed) {
        how = "pictures moved for a shorter time";
    } else {
        return;
    }
    result->unmatched.push_back("NEW ends early: session " + std::to_string(now.value("id", 0)) +
                                ", " + how);
    result->exceeds = true;
}

void comparePair(const Json& base, const Json& now, const std::vector<Threshold>& thresholds,
                 CompareResult* result) {
    ++result->pairs;
    checkEnd(base, now, result);
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
