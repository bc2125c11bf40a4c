// SPDX-License-Identifier: Apache-2.0
#include "output/JsonReport.h"

#include <math.h>

#include "output/VerdictJson.h"
#include "reading/LogTime.h"

namespace android::codecreport {

namespace {

using Json = nlohmann::ordered_json;

/** Keeps the page small: a microsecond, a thousandth of a unit. */
double rounded(double value) {
    return round(value * 1000) / 1000;
}

/** Milliseconds since the session began. */
Json since(const Session& session, int64_t timeUs) {
    if (timeUs == kNoTime) return nullptr;
    return rounded((timeUs - session.startUs) / 1000.0);
}

Json known(int64_t value) {
    return value < 0 ? Json(nullptr) : Json(value);
}

Json statsOf(const Histogram& histogram) {
    Json json = {{"count", histogram.count()}};
    if (histogram.count() == 0) return json;
    json["min_ms"] = histogram.min();
    json["mean_ms"] = rounded(histogram.mean());
    json["p50_ms"] = histogram.percentile(0.5);
    json["p90_ms"] = histogram.percentile(0.9);
    json["p99_ms"] = histogram.percentile(0.99);
    json["max_ms"] = histogram.max();
    return json;
}

const char* hdrName(int64_t type) {
    static constexpr const char* kNames[] = {"SDR", "HDR10", "DOVI", "TCH", "HLG", "HDR10Plus"};
    return type >= 0 && type < 6 ? kNames[type] : "??";
}

const char* scanName(int64_t type) {
    return type == 0 ? "progressive" : type == 1 ? "interlace" : "??";
}

Json videoOf(const Session& session) {
    return {
            {"width_px", known(session.width)},
            {"height_px", known(session.height)},
            {"hdr_type", session.hdrType == -1 ? Json(nullptr) : Json(hdrName(session.hdrType))},
            {"scan_type",
             session.scanType == -1 ? Json(nullptr) : Json(scanName(session.scanType))},
            {"bit_depth_bits", known(session.bitDepth)},
            {"color_standard", known(session.colorStandard)},
            {"max_width_px", known(session.maxWidth)},
            {"max_height_px", known(session.maxHeight)},
            {"input_buffers_count", known(session.inputBuffers)},
            {"output_buffers_count", known(session.outputBuffers)},
    };
}

Json startupOf(const Session& session) {
    const Startup& startup = session.startup;
    return {
            {"p2_begin_ms", since(session, startup.p2BeginUs)},
            {"p2_end_ms", since(session, startup.p2EndUs)},
            {"p3_begin_ms", since(session, startup.p3BeginUs)},
            {"p3_end_ms", since(session, startup.p3EndUs)},
            {"first_input_ms", since(session, startup.firstInputUs)},
            {"first_frame_ready_ms", since(session, startup.firstReadyUs)},
            {"first_frame_render_ms", since(session, startup.firstRenderUs)},
            {"stop_begin_ms", since(session, startup.stopBeginUs)},
            {"stop_end_ms", since(session, startup.stopEndUs)},
    };
}

/** Counts lines that only some settings write: none may be because nobody asked for them. */
Json logged(uint64_t lines) {
    return lines > 0 ? Json(lines) : Json(nullptr);
}

Json renderedOf(const Session& session) {
    return logged(session.rendered > 0 ? session.rendered : session.syncFrames);
}

bool hasFrameLines(const Session& session) {
    return session.inputs + session.outputs + session.rendered + session.syncFrames > 0;
}

/**
 * What the frame analytics count, where they were on; without them the library's report tells, of
 * all but 0.
 */
Json countedOrReported(const Session& session, uint64_t counted, const char* reportKey) {
    if (counted > 0 || hasFrameLines(session)) return counted;
    const auto reported = session.report.find(reportKey);
    if (reported != session.report.end()) return static_cast<uint64_t>(reported->second);
    return session.report.count("total_video_playback_ms") > 0 ? Json(0) : Json(nullptr);
}

/** Told with the session's end. */
Json displayDroppedOf(const Session& session) {
    const bool isTold = session.displayDropped > 0 || session.reported;
    return isTold ? Json(session.displayDropped) : Json(nullptr);
}

Json countsOf(const Session& session) {
    const Judgement& judgement = session.judgement;
    return {
            {"input_count", logged(session.inputs)},
            {"input_bytes", logged(session.inputBytes)},
            {"output_count", logged(session.outputs)},
            {"rendered_count", renderedOf(session)},
            {"dropped_count", countedOrReported(session, session.dropped, "total_frames_dropped")},
            {"shown_count", judgement.shown ? Json(*judgement.shown) : Json(nullptr)},
            {"never_shown_count",
             judgement.neverShown ? Json(*judgement.neverShown) : Json(nullptr)},
            {"display_dropped_count", displayDroppedOf(session)},
            {"seek_count", session.seeks},
            {"flush_count", session.flushes},
            {"format_change_count", session.formatChanges},
            {"delayed_output_count", session.delayedOutputs},
            {"repeated_output_count", session.repeatedOutputs},
            {"repeated_input_count", session.repeatedInputs},
            {"error_count", session.errors},
            {"warning_count", session.warnings},
    };
}

Json dropsOf(const Session& session) {
    Json lengths = Json::array();
    for (const auto& [length, count] : session.dropRunLengths) {
        lengths.push_back({{"length_frames", length}, {"run_count", count}});
    }
    const bool isTold = session.dropRunCount > 0 || hasFrameLines(session);
    return {{"run_count", isTold ? Json(session.dropRunCount) : Json(nullptr)},
            {"longest_run_frames",
             countedOrReported(session, session.longestDropRun, "max_consecutive_frames_dropped")},
            {"lengths", std::move(lengths)}};
}

Json pointsOf(const Session& session, const Series& series, const char* unit) {
    Json rows = Json::array();
    for (const Series::Point& point : series.points()) {
        rows.push_back({since(session, point.timeUs), rounded(point.mean()), rounded(point.low),
                        rounded(point.high)});
    }
    const std::string suffix = unit;
    return {{"columns", {"at_ms", "mean_" + suffix, "low_" + suffix, "high_" + suffix}},
            {"values_per_row_count", series.stride()},
            {"rows", std::move(rows)}};
}

/**
 * Rows of a rate: each stands at the middle of its span. The last span ends with the last event;
 * less than half a span is too little for a rate, unless there is no more.
 */
Json ratesOf(const Session& session, const RateSeries& series, const char* column,
             double perSecond) {
    Json rows = Json::array();
    const size_t count = series.sums().size();
    for (size_t i = 0; i < count; ++i) {
        const int64_t beginUs = series.startUs() + series.spanUs() * i;
        int64_t lengthUs = series.spanUs();
        if (i > 0 && i + 1 == count) {
            lengthUs = series.lastUs() - beginUs;
            if (lengthUs < series.spanUs() / 2) break;
        }
        rows.push_back({since(session, beginUs + lengthUs / 2),
                        rounded(series.sums()[i] * perSecond * 1e6 / lengthUs)});
    }
    return {{"columns", {"at_ms", column}},
            {"span_ms", series.spanUs() / 1000},
            {"rows", std::move(rows)}};
}

Json syncOf(const Session& session) {
    const SyncStats& sync = session.sync;
    const bool any = sync.offsets.count() > 0;
    return {{"line_count", sync.lines},
            {"offset", statsOf(sync.offsets)},
            {"measured_ms", rounded(sync.measuredMs)},
            {"outside_ms", rounded(sync.outsideMs)},
            {"worst_ms", any ? Json(sync.worstMs) : Json(nullptr)},
            {"last_ms", any ? Json(sync.lastMs) : Json(nullptr)},
            {"points", pointsOf(session, sync.offsetMs, "ms")}};
}

Json framesOf(const Session& session) {
    Json rows = Json::array();
    for (const FramePoint& point : session.frames.points()) {
        Json row = {since(session, point.timeUs), point.ptsUs};
        for (int32_t ms : point.stageMs) row.push_back(ms == kNoStage ? Json(nullptr) : Json(ms));
        row.push_back(point.lateMs == kNoStage ? Json(nullptr) : Json(point.lateMs));
        row.push_back(point.dropped ? 1 : 0);
        rows.push_back(std::move(row));
    }
    return {{"columns",
             {"at_ms", "pts_us", "decrypt_ms", "codec_ms", "message_ms", "app_ms", "lead_ms",
              "late_ms", "dropped"}},
            {"frames_per_row_count", session.frames.stride()},
            {"rows", std::move(rows)}};
}

Json momentsOf(const Session& session) {
    Json list = Json::array();
    for (const Moment& moment : session.moments) {
        list.push_back({{"at_ms", since(session, moment.timeUs)},
                        {"kind", moment.kind},
                        {"text", moment.text}});
    }
    return list;
}

Json stagesOf(const Session& session) {
    Json stages;
    for (size_t i = 0; i < kStageCount; ++i) {
        stages[toString(static_cast<Stage>(i))] = statsOf(session.stages[i]);
    }
    return stages;
}

Json sessionOf(const Session& session) {
    Json report = Json::object();
    for (const auto& [key, value] : session.report) report[key] = value;
    Json json = {
            {"id", session.id},
            {"codec_tag", session.tagText.empty() ? Json(nullptr) : Json(session.tagText)},
            {"kind", session.tag.kind},
            {"format", session.tag.format},
            {"implementation", session.tag.implementation},
            {"framework", session.tag.framework},
            {"pid", known(session.pid)},
            {"client_pid", known(session.clientPid)},
            {"package", session.package.empty() ? Json(nullptr) : Json(session.package)},
            {"tunneled", session.tag.tunneled},
            {"secure", session.secure},
            {"secure_memory", session.secureMemory},
            {"atmos", session.atmos},
            {"uhd_screen", session.uhdScreen},
            {"app_timestamps", session.appTimestamps},
            {"started_before_log", session.startedBefore},
            {"reported", session.reported},
            {"detailed", session.detailed},
            {"start_time", formatLogTime(session.startUs)},
            {"start_us", session.startUs},
            {"duration_ms", rounded((session.endUs - session.startUs) / 1000.0)},
            {"startup", startupOf(session)},
            {"counts", countsOf(session)},
            {"report", std::move(report)},
    };
    if (session.isVideo()) {
        addVerdict(session, &json);
        json["video"] = videoOf(session);
        json["stages"] = stagesOf(session);
        json["frame_interval"] = statsOf(session.frameIntervalMs);
        json["lateness"] = statsOf(session.lateMs);
        json["drops"] = dropsOf(session);
        json["sync"] = syncOf(session);
        json["frame_rate"] = ratesOf(session, session.renderedRate, "framerate_fps", 1);
        json["frames"] = framesOf(session);
    }
    json["input_rate"] = ratesOf(session, session.inputRate, "bitrate_kbps", 8 / 1000.0);
    json["reported_bitrate"] = pointsOf(session, session.bitrateKbps, "kbps");
    json["moment_count"] = session.momentCount;
    json["moments"] = momentsOf(session);
    return json;
}

Json inputOf(const Analysis& analysis) {
    const ReadStats& stats = analysis.stats;
    Json formats = Json::object();
    for (size_t i = 0; i < analysis.formats.size(); ++i) {
        if (analysis.formats[i] > 0) {
            formats[toString(static_cast<LogFormat>(i))] = analysis.formats[i];
        }
    }
    const bool any = stats.firstUs != kNoTime;
    return {
            {"files", analysis.files},
            {"problems", analysis.problems},
            {"bytes", stats.bytes},
            {"line_count", stats.lines},
            {"understood_count", stats.understood},
            {"other_tag_count", stats.otherTags},
            {"not_log_line_count", stats.notLogLines},
            {"cut_off_count", stats.cutOff},
            {"unknown_count", stats.unknown},
            {"unattributed_count", stats.unattributed},
            {"examples", stats.examples},
            {"formats", std::move(formats)},
            {"clock_jump_count", analysis.stats.clockJumps},
            {"reboot_count", analysis.stats.reboots},
            {"monotonic_clock", analysis.stats.hasMonotonicClock},
            {"first_time", any ? Json(formatLogTime(stats.firstUs)) : Json(nullptr)},
            {"duration_ms", any ? rounded((stats.lastUs - stats.firstUs) / 1000.0) : 0},
            {"sessions_left_out_count", stats.sessionsLeftOut},
            {"metrics_record_count", analysis.metrics.records()},
            {"metrics_not_understood_count", analysis.metrics.notUnderstood()},
    };
}

}  // namespace

nlohmann::ordered_json toJson(const Analysis& analysis) {
    Json sessions = Json::array();
    for (const auto& session : analysis.sessions) sessions.push_back(sessionOf(*session));
    Json metrics = Json::array();
    for (const auto& [key, row] : analysis.metrics.rows()) {
        metrics.push_back({{"name", row.name},
                           {"dimension", row.dimension},
                           {"unit", row.unit},
                           {"data", row.data},
                           {"package", row.package},
                           {"schema", row.schema},
                           {"record_count", row.count},
                           {"last_value", row.last},
                           {"sum_value", row.sum}});
    }
    return {{"schema_version", kSchemaVersion},
            {"input", inputOf(analysis)},
            {"sessions", std::move(sessions)},
            {"metrics", std::move(metrics)}};
}

std::string dump(const nlohmann::ordered_json& json, bool pretty) {
    return json.dump(pretty ? 1 : -1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

}  // namespace android::codecreport
