// SPDX-License-Identifier: Apache-2.0
#include "output/PageReport.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "model/Severity.h"
#include "output/JsonReport.h"

namespace android::codecreport {

namespace {

using Json = nlohmann::ordered_json;

/** Plots for some dozens of sessions, and room for the incidents of thousands. */
constexpr size_t kDrawnBytes = 5'000'000;
constexpr size_t kMostBytes = 8'000'000;
constexpr size_t kMetricsRows = 2000;

/** A value by its path, null where there is none. */
const Json& valueOf(const Json& json, std::initializer_list<const char*> path) {
    static const Json kNone;
    const Json* at = &json;
    for (const char* key : path) {
        const auto found = at->is_object() ? at->find(key) : at->end();
        if (!at->is_object() || found == at->end()) return kNone;
        at = &*found;
    }
    return *at;
}

double numberOf(const Json& value) {
    return value.is_number() ? value.get<double>() : 0;
}

std::optional<Word> wordOf(const Json& session) {
    const Json& word = valueOf(session, {"verdict", "word"});
    for (Word each : {Word::SMOOTH, Word::STUTTERED, Word::BROKE_OFF, Word::CANNOT_TELL}) {
        if (word == toString(each)) return each;
    }
    return {};
}

Severity severityOf(const Json& session) {
    Severity severity;
    severity.word = wordOf(session);
    for (const Json& total : valueOf(session, {"causes"})) {
        severity.stoodMs += numberOf(valueOf(total, {"stood_ms"}));
    }
    severity.neverShown = numberOf(valueOf(session, {"counts", "never_shown_count"}));
    severity.incidents = numberOf(valueOf(session, {"incident_count"}));
    severity.errors = numberOf(valueOf(session, {"counts", "error_count"}));
    return severity;
}

void keep(const Json& from, std::initializer_list<const char*> keys, Json* to) {
    for (const char* key : keys) {
        const auto found = from.find(key);
        if (found != from.end()) (*to)[key] = *found;
    }
}

void keepOf(const Json& session, const char* part, std::initializer_list<const char*> keys,
            Json* to) {
    const auto found = session.find(part);
    if (found != session.end()) keep(*found, keys, &((*to)[part] = Json::object()));
}

/** What the list of sessions shows, is searched for and sorted by. */
Json listed(const Json& session) {
    Json json = Json::object();
    keep(session,
         {"id", "codec_tag", "kind", "format", "package", "pid", "start_time", "start_us",
          "duration_ms", "playback_ms", "verdict", "incident_count", "standing", "causes",
          "cadence", "at_least"},
         &json);
    keepOf(session, "video", {"width_px", "height_px"}, &json);
    keepOf(session, "counts", {"shown_count", "dropped_count", "error_count"}, &json);
    keepOf(session, "sync", {"measured_ms", "outside_ms"}, &json);
    keepOf(session, "startup", {"first_frame_render_ms"}, &json);
    return json;
}

Json listedWithIncidents(const Json& session) {
    Json json = listed(session);
    keep(session, {"incidents"}, &json);
    return json;
}

size_t sizeOf(const Json& json) {
    return dump(json, false).size();
}

/** Gives the sessions more of what is known of them, worst first, while that fits. */
void enrich(const std::vector<const Json*>& sessions, Json (*more)(const Json&), size_t mostBytes,
            std::vector<Json>* shown, size_t* bytes) {
    for (size_t i = 0; i < sessions.size(); ++i) {
        if ((*shown)[i].contains("moments")) continue;
        Json richer = more(*sessions[i]);
        const size_t size = *bytes - sizeOf((*shown)[i]) + sizeOf(richer);
        if (size > mostBytes) return;
        *bytes = size;
        (*shown)[i] = std::move(richer);
    }
}

}  // namespace

Json pageReport(const Json& report) {
    std::vector<const Json*> sessions;
    for (const Json& session : report["sessions"]) sessions.push_back(&session);
    std::stable_sort(sessions.begin(), sessions.end(),
                     [](const Json* a, const Json* b) { return severityOf(*a) > severityOf(*b); });
    std::vector<Json> shown;
    size_t bytes = 0;
    for (const Json* session : sessions) {
        shown.push_back(listed(*session));
        bytes += sizeOf(shown.back());
    }
    enrich(
            sessions, [](const Json& session) { return session; }, kDrawnBytes, &shown, &bytes);
    enrich(sessions, listedWithIncidents, kMostBytes, &shown, &bytes);

    Json page = {{"input", report["input"]}, {"sessions", std::move(shown)}};
    const Json& metrics = report["metrics"];
    Json& rows = page["metrics"] = Json::array();
    for (const Json& row : metrics) {
        if (rows.size() < kMetricsRows) rows.push_back(row);
    }
    if (metrics.size() > rows.size()) {
        page["metrics_left_out_count"] = metrics.size() - rows.size();
    }
    return page;
}

}  // namespace android::codecreport
