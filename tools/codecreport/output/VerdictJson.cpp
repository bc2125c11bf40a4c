// SPDX-License-Identifier: Apache-2.0
#include "output/VerdictJson.h"

#include <math.h>

namespace android::codecreport {

namespace {

using Json = nlohmann::ordered_json;

/** A thousandth is enough of any figure here. */
double rounded(double value) {
    return round(value * 1000) / 1000;
}

Json known(const std::optional<double>& value) {
    return value ? Json(rounded(*value)) : Json(nullptr);
}

Json since(const Session& session, int64_t timeUs) {
    return rounded((timeUs - session.startUs) / 1000.0);
}

Json incidentOf(const Session& session, const Incident& incident) {
    Json shares = Json::object();
    for (size_t i = 0; i < kCauseCount; ++i) {
        if (incident.shares[i] > 0) {
            shares[toString(static_cast<Cause>(i))] = rounded(incident.shares[i]);
        }
    }
    return {{"id", incident.id},
            {"start_ms", since(session, incident.startUs)},
            {"duration_ms", rounded((incident.endUs - incident.startUs) / 1000.0)},
            {"stood_ms", incident.stoodMs},
            {"never_shown_count", incident.neverShown},
            {"late_count", incident.late},
            {"pts_us", incident.ptsUs},
            {"media_ms", incident.ptsUs / 1000},
            {"cause", toString(incident.cause)},
            {"shares", std::move(shares)},
            {"evidence", incident.evidence},
            {"place", toString(incident.place)},
            {"open_ended", incident.openEnded}};
}

Json causesOf(const Judgement& judgement) {
    Json causes = Json::object();
    for (size_t i = 0; i < kCauseCount; ++i) {
        const CauseTotal& total = judgement.causes[i];
        if (total.share <= 0) continue;
        causes[toString(static_cast<Cause>(i))] = {{"incident_count", total.incidents},
                                                   {"stood_ms", rounded(total.stoodMs)},
                                                   {"never_shown_count", rounded(total.neverShown)},
                                                   {"share", rounded(total.share)}};
    }
    return causes;
}

/** What the frames tell, or else the library's report. */
Json measuredOrReported(const std::optional<double>& measured, const Session& session,
                        const char* reportKey) {
    const auto reported = session.report.find(reportKey);
    const bool isReported = reported != session.report.end() && reported->second > 0;
    return known(measured || !isReported ? measured : reported->second);
}

Json cadenceOf(const Session& session) {
    const Cadence& cadence = session.judgement.cadence;
    return {{"content_fps",
             measuredOrReported(cadence.contentFps, session, "stream_framerate_fps")},
            {"display_hz", known(cadence.displayHz)},
            {"pattern", cadence.pattern.empty() ? Json(nullptr) : Json(cadence.pattern)},
            {"even", cadence.even ? Json(*cadence.even) : Json(nullptr)},
            {"mistimed_count", cadence.mistimed ? Json(*cadence.mistimed) : Json(nullptr)},
            {"vsync_jitter_ms", known(cadence.vsyncJitterMs)}};
}

}  // namespace

void addVerdict(const Session& session, Json* json) {
    const Judgement& judgement = session.judgement;
    Json incidents = Json::array();
    for (const Incident& incident : judgement.incidents) {
        incidents.push_back(incidentOf(session, incident));
    }
    const Standing& standing = judgement.standing;
    const bool stood = standing.count > 0;
    (*json)["verdict"] = {
            {"word", toString(judgement.word)},
            {"sentence", judgement.sentence},
            {"missing", judgement.missing.empty() ? Json(nullptr) : Json(judgement.missing)}};
    (*json)["playback_ms"] =
            measuredOrReported(judgement.playbackMs, session, "total_video_playback_ms");
    // Without a line for pictures there is none of what became of them: that is not 0.
    const bool isTold = judgement.word != Word::CANNOT_TELL;
    (*json)["incident_count"] = isTold ? Json(judgement.incidentCount) : Json(nullptr);
    (*json)["incidents"] = std::move(incidents);
    (*json)["standing"] = {
            {"count", isTold ? Json(standing.count) : Json(nullptr)},
            {"total_ms", isTold ? Json(standing.totalMs) : Json(nullptr)},
            {"longest_ms", isTold ? Json(standing.longestMs) : Json(nullptr)},
            {"longest_at_ms", stood ? since(session, standing.longestAtUs) : Json(nullptr)}};
    (*json)["causes"] = causesOf(judgement);
    (*json)["cadence"] = cadenceOf(session);
    (*json)["at_least"] = judgement.atLeast;
}

}  // namespace android::codecreport
