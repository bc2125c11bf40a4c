// SPDX-License-Identifier: Apache-2.0
#include "fleet/Measures.h"

#include "model/Incident.h"

namespace android::codecreport {

namespace {

std::string perHour(const std::string& column) {
    return "CASE WHEN s.playback_hours > 0 THEN s." + column + " / s.playback_hours END";
}

std::string distribution(const std::string& name, const std::string& column) {
    return "(SELECT d." + column +
           " FROM distribution d WHERE d.session_id = s.session_id AND "
           "d.name = '" +
           name + "')";
}

/** A cause that did nothing in a judged session has no row. */
std::string causePerHour(const std::string& cause) {
    return "CASE WHEN s.playback_hours > 0 AND s.stuttered IS NOT NULL THEN coalesce((SELECT "
           "c.stood_ms FROM session_cause c WHERE c.session_id = s.session_id AND c.cause = '" +
           cause + "'), 0) / s.playback_hours END";
}

std::vector<FleetMeasure> makeMeasures() {
    std::vector<FleetMeasure> measures = {
            {"stuttered", "share", "s.stuttered", true, true},
            {"standing", "ms/h", perHour("standing_total_ms"), true, true},
            {"standings", "1/h", perHour("standing_count"), true},
            {"never_shown", "1/h", perHour("never_shown_count"), true, true},
            {"display_dropped", "1/h", perHour("display_dropped_count"), true},
            {"errors", "count", "s.error_count", true},
            {"first_frame_render", "ms", "s.first_frame_render_ms", false, true},
            {"mistimed", "1/h", perHour("mistimed_count"), true},
            {"sync_outside", "share",
             "CASE WHEN s.sync_measured_ms > 0 THEN s.sync_outside_ms / s.sync_measured_ms END",
             true},
            {"lateness_p99", "ms", distribution("lateness", "p99_ms")},
            {"frame_interval_p99", "ms", distribution("frame_interval", "p99_ms")},
    };
    // Not the application: it holds pictures until they are due, the longer the sooner they are
    // ready.
    for (const char* stage : {"decrypt", "codec", "message"}) {
        for (const char* percentile : {"p50", "p99"}) {
            const std::string name = std::string("stage_") + stage;
            measures.push_back({name + "_" + percentile, "ms",
                                distribution(name, std::string(percentile) + "_ms")});
        }
    }
    for (size_t i = 0; i < kCauseCount; ++i) {
        const std::string cause = toString(static_cast<Cause>(i));
        measures.push_back({"standing_" + cause, "ms/h", causePerHour(cause), true});
    }
    return measures;
}

}  // namespace

const std::vector<FleetMeasure>& fleetMeasures() {
    static const std::vector<FleetMeasure> measures = makeMeasures();
    return measures;
}

}  // namespace android::codecreport
