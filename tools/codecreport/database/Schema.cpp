// SPDX-License-Identifier: Apache-2.0
#include "database/Schema.h"

#include <stdlib.h>
#include <string.h>

#include <map>

#include "database/FrameRows.h"
#include "database/Views.h"

namespace android::codecreport {

namespace {

using Json = nlohmann::ordered_json;
using Row = std::function<void(const Json&)>;

void once(const Json& session, const Row& row) {
    row(session);
}

/** The elements of the list that a path of keys leads to. */
void elements(const Json& session, const char* pointer, const Row& row) {
    const Json::json_pointer at(pointer);
    if (!session.contains(at) || !session[at].is_array()) return;
    for (const Json& element : session[at]) row(element);
}

/** Members as {"#key": name, "#value": value}, and what an object holds beside them. */
void members(const Json& object, const Row& row) {
    if (!object.is_object()) return;
    for (const auto& [key, value] : object.items()) {
        Json member = value.is_object() ? value : Json::object();
        member["#key"] = key;
        member["#value"] = value;
        row(member);
    }
}

void members(const Json& session, const char* key, const Row& row) {
    const auto it = session.find(key);
    if (it != session.end()) members(*it, row);
}

void incidents(const Json& session, const Row& row) {
    elements(session, "/incidents", row);
}

void incidentShares(const Json& session, const Row& row) {
    incidents(session, [&row](const Json& incident) {
        members(incident, "shares", [&](Json share) {
            share["id"] = incident["id"];
            row(share);
        });
    });
}

void causes(const Json& session, const Row& row) {
    members(session, "causes", row);
}

void dropRuns(const Json& session, const Row& row) {
    elements(session, "/drops/lengths", row);
}

/** Moments of the start and the stop, each with its end where it takes time. */
void phases(const Json& session, const Row& row) {
    static constexpr struct {
        const char* phase;
        const char* begin;
        const char* end;
    } kPhases[] = {{"p2", "p2_begin_ms", "p2_end_ms"},
                   {"p3", "p3_begin_ms", "p3_end_ms"},
                   {"first_input", "first_input_ms", nullptr},
                   {"first_frame_ready", "first_frame_ready_ms", nullptr},
                   {"first_frame_render", "first_frame_render_ms", nullptr},
                   {"stop", "stop_begin_ms", "stop_end_ms"}};
    const auto startup = session.find("startup");
    if (startup == session.end()) return;
    for (const auto& phase : kPhases) {
        const Json begin = startup->value(phase.begin, Json());
        const Json end = phase.end == nullptr ? Json() : startup->value(phase.end, Json());
        if (begin.is_null() && end.is_null()) continue;
        row({{"phase", phase.phase}, {"begin_ms", begin}, {"end_ms", end}});
    }
}

void events(const Json& session, const Row& row) {
    elements(session, "/moments", row);
}

void distributions(const Json& session, const Row& row) {
    const auto named = [&row](std::string name, Json stats) {
        if (!stats.is_object() || stats.value("count", 0) == 0) return;
        stats["#key"] = std::move(name);
        row(stats);
    };
    const auto stages = session.find("stages");
    if (stages != session.end()) {
        for (const auto& [stage, stats] : stages->items()) named("stage_" + stage, stats);
    }
    for (const char* key : {"frame_interval", "lateness"}) named(key, session.value(key, Json()));
    const Json::json_pointer offset("/sync/offset");
    if (session.contains(offset)) named("sync_offset", session[offset]);
}

void reportValues(const Json& session, const Row& row) {
    members(session, "report", row);
}

constexpr Column kSession = {"session_id", "INTEGER", nullptr, "The session."};

std::vector<Column> sessionColumns() {
    return {
            kSession,
            {"log_id", "INTEGER", nullptr, "The log that it is in."},
            {"session_no", "INTEGER", "/id"},
            {"codec_tag", "TEXT", "/codec_tag"},
            {"kind", "TEXT", "/kind"},
            {"format", "TEXT", "/format"},
            {"implementation", "TEXT", "/implementation"},
            {"framework", "TEXT", "/framework"},
            {"package", "TEXT", "/package"},
            {"pid", "INTEGER", "/pid"},
            {"client_pid", "INTEGER", "/client_pid"},
            {"tunneled", "INTEGER", "/tunneled"},
            {"secure", "INTEGER", "/secure"},
            {"atmos", "INTEGER", "/atmos"},
            {"width_px", "INTEGER", "/video/width_px"},
            {"height_px", "INTEGER", "/video/height_px"},
            {"hdr_type", "TEXT", "/video/hdr_type"},
            {"bit_depth_bits", "INTEGER", "/video/bit_depth_bits"},
            {"started_before_log", "INTEGER", "/started_before_log"},
            {"reported", "INTEGER", "/reported"},
            {"start_time", "TEXT", "/start_time"},
            {"start_us", "INTEGER", "/start_us"},
            {"duration_ms", "REAL", "/duration_ms"},
            {"playback_ms", "REAL", "/playback_ms"},
            {"verdict", "TEXT", "/verdict/word"},
            {"verdict_sentence", "TEXT", "/verdict/sentence"},
            {"verdict_missing", "TEXT", "/verdict/missing"},
            {"incident_count", "INTEGER", "/incident_count"},
            {"standing_count", "INTEGER", "/standing/count"},
            {"standing_total_ms", "REAL", "/standing/total_ms"},
            {"standing_longest_ms", "REAL", "/standing/longest_ms"},
            {"standing_longest_at_ms", "REAL", "/standing/longest_at_ms"},
            {"input_count", "INTEGER", "/counts/input_count"},
            {"input_bytes", "INTEGER", "/counts/input_bytes"},
            {"output_count", "INTEGER", "/counts/output_count"},
            {"shown_count", "INTEGER", "/counts/shown_count"},
            {"rendered_count", "INTEGER", "/counts/rendered_count"},
            {"dropped_count", "INTEGER", "/counts/dropped_count"},
            {"never_shown_count", "INTEGER", "/counts/never_shown_count"},
            {"display_dropped_count", "INTEGER", "/counts/display_dropped_count"},
            {"seek_count", "INTEGER", "/counts/seek_count"},
            {"flush_count", "INTEGER", "/counts/flush_count"},
            {"format_change_count", "INTEGER", "/counts/format_change_count"},
            {"delayed_output_count", "INTEGER", "/counts/delayed_output_count"},
            {"repeated_output_count", "INTEGER", "/counts/repeated_output_count"},
            {"error_count", "INTEGER", "/counts/error_count"},
            {"warning_count", "INTEGER", "/counts/warning_count"},
            {"first_frame_ready_ms", "REAL", "/startup/first_frame_ready_ms"},
            {"first_frame_render_ms", "REAL", "/startup/first_frame_render_ms"},
            {"content_fps", "REAL", "/cadence/content_fps"},
            {"display_hz", "REAL", "/cadence/display_hz"},
            {"cadence_pattern", "TEXT", "/cadence/pattern"},
            {"cadence_even", "INTEGER", "/cadence/even"},
            {"mistimed_count", "INTEGER", "/cadence/mistimed_count"},
            {"vsync_jitter_ms", "REAL", "/cadence/vsync_jitter_ms"},
            {"sync_measured_ms", "REAL", "/sync/measured_ms"},
            {"sync_outside_ms", "REAL", "/sync/outside_ms"},
            {"sync_worst_ms", "REAL", "/sync/worst_ms"},
            {"at_least", "TEXT", "/at_least",
             "Figures of which the log holds a part only, as a JSON list of the report's keys."},
    };
}

std::vector<Column> distributionColumns() {
    return {kSession,
            {"name", "TEXT", "/#key",
             "stage_decrypt, stage_codec, stage_message, stage_app, stage_lead, frame_interval, "
             "lateness or sync_offset, as the JSON report describes them."},
            {"value_count", "INTEGER", "/count", "Values."},
            {"min_ms", "REAL", "/min_ms", "Least."},
            {"mean_ms", "REAL", "/mean_ms", "Mean."},
            {"p50_ms", "REAL", "/p50_ms", "Median, nearest rank."},
            {"p90_ms", "REAL", "/p90_ms", "90 of 100 are not above."},
            {"p99_ms", "REAL", "/p99_ms", "99 of 100 are not above."},
            {"max_ms", "REAL", "/max_ms", "Most."}};
}

std::vector<Column> logColumns() {
    return {{"log_id", "INTEGER", nullptr,
             "The log: the first 63 bits of its content_hash, so the same log has the same id in "
             "every database."},
            {"content_hash", "TEXT", nullptr,
             "XXH3, 128 bits, of the log's lines, uncompressed, each with a line feed."},
            {"kind", "TEXT", nullptr, "log or metrics."},
            {"path", "TEXT", nullptr, "As it was given first."},
            {"byte_count", "INTEGER", "/bytes"},
            {"line_count", "INTEGER", "/line_count"},
            {"understood_count", "INTEGER", "/understood_count"},
            {"cut_off_count", "INTEGER", "/cut_off_count"},
            {"unknown_count", "INTEGER", "/unknown_count"},
            {"unattributed_count", "INTEGER", "/unattributed_count"},
            {"clock_jump_count", "INTEGER", "/clock_jump_count"},
            {"reboot_count", "INTEGER", "/reboot_count"},
            {"sessions_left_out_count", "INTEGER", "/sessions_left_out_count"},
            {"first_time", "TEXT", "/first_time"},
            {"duration_ms", "REAL", "/duration_ms"},
            {"problems", "TEXT", "/problems",
             "What kept parts of it from being read; a JSON list."}};
}

std::vector<Table> makeTables() {
    return {
            {"log", "A log or a file of metrics records, once however often it was given.",
             "log_id", "input", nullptr, logColumns()},
            {"label",
             "What is known of a log from its name or the command line.",
             "log_id, name",
             "",
             nullptr,
             {{"log_id", "INTEGER", nullptr, "The log."},
              {"name", "TEXT", nullptr, "Such as build or device."},
              {"value", "TEXT", nullptr, "Its value; one given later replaces it."}}},
            {"session", "A configuration of a codec, from its first line to its last.",
             "session_id", "sessions[]", once, sessionColumns()},
            {"frame", "Every frame that the log has lines of.", "session_id, frame_no", "", nullptr,
             frameColumns()},
            {"incident",
             "What the viewer may have noticed. Of very many in a session the worst are listed; "
             "session.incident_count counts all.",
             "session_id, incident_no",
             "sessions[].incidents[]",
             incidents,
             {kSession,
              {"incident_no", "INTEGER", "/id"},
              {"start_ms", "REAL", "/start_ms"},
              {"duration_ms", "REAL", "/duration_ms"},
              {"stood_ms", "REAL", "/stood_ms"},
              {"never_shown_count", "INTEGER", "/never_shown_count"},
              {"late_count", "INTEGER", "/late_count"},
              {"pts_us", "INTEGER", "/pts_us"},
              {"cause", "TEXT", "/cause"},
              {"evidence", "TEXT", "/evidence"},
              {"place", "TEXT", "/place"},
              {"open_ended", "INTEGER", "/open_ended"}}},
            {"incident_share",
             "How much of an incident's lost time each cause has.",
             "session_id, incident_no, cause",
             "sessions[].incidents[].shares",
             incidentShares,
             {kSession,
              {"incident_no", "INTEGER", "/id", "The incident."},
              {"cause", "TEXT", "/#key", "Cause."},
              {"share", "REAL", "/#value", "Its share; those of an incident sum up to 1."}}},
            {"session_cause",
             "What each cause did to a session, all incidents together.",
             "session_id, cause",
             "sessions[].causes.*",
             causes,
             {kSession,
              {"cause", "TEXT", "/#key", "Cause."},
              {"incident_count", "INTEGER", "/incident_count"},
              {"stood_ms", "REAL", "/stood_ms"},
              {"never_shown_count", "REAL", "/never_shown_count"},
              {"share", "REAL", "/share"}}},
            {"drop_run",
             "Runs of dropped frames by their length.",
             "session_id, length_frames",
             "sessions[].drops.lengths[]",
             dropRuns,
             {kSession,
              {"length_frames", "INTEGER", "/length_frames"},
              {"run_count", "INTEGER", "/run_count"}}},
            {"phase",
             "Steps of the start and the stop.",
             "session_id, phase",
             "sessions[].startup",
             phases,
             {kSession,
              {"phase", "TEXT", "/phase",
               "p2, p3, first_input, first_frame_ready, first_frame_render or stop."},
              {"begin_ms", "REAL", "/begin_ms", "Since the session began."},
              {"end_ms", "REAL", "/end_ms", "The same; null for what takes no time."}}},
            {"event",
             "Moments worth a look: flushes, seeks, stalls, errors.",
             "",
             "sessions[].moments[]",
             events,
             {kSession,
              {"at_ms", "REAL", "/at_ms"},
              {"kind", "TEXT", "/kind"},
              {"text", "TEXT", "/text"}}},
            {"distribution", "How values of single frames spread.", "session_id, name", "",
             distributions, distributionColumns()},
            {"report_value",
             "What the library itself reported at the end.",
             "session_id, name",
             "sessions[].report",
             reportValues,
             {kSession,
              {"name", "TEXT", "/#key", "Key, as in the JSON report."},
              {"value", "REAL", "/#value", "Value; its unit ends the name."}}},
            {"metric",
             "Metrics records that differ in nothing but their value.",
             "",
             "metrics[]",
             nullptr,
             {{"log_id", "INTEGER", nullptr, "The file that they are in."},
              {"name", "TEXT", "/name"},
              {"dimension", "TEXT", "/dimension"},
              {"unit", "TEXT", "/unit"},
              {"data", "TEXT", "/data"},
              {"package", "TEXT", "/package"},
              {"schema", "TEXT", "/schema"},
              {"record_count", "INTEGER", "/record_count"},
              {"last_value", "REAL", "/last_value"},
              {"sum_value", "REAL", "/sum_value"}}},
    };
}

/** The JSON report's key that a column is made of. */
std::string reportKey(const Table& table, const Column& column) {
    std::string key = table.source;
    for (const char* at = column.pointer; *at != '\0'; ++at) key += *at == '/' ? '.' : *at;
    return key;
}

std::string cell(std::string text) {
    for (size_t at = 0; (at = text.find('|', at)) != std::string::npos; at += 2) {
        text.replace(at, 1, "\\|");
    }
    return text;
}

}  // namespace

const std::vector<Table>& tables() {
    static const std::vector<Table> tables = makeTables();
    return tables;
}

const Table& tableNamed(const std::string& name) {
    for (const Table& table : tables()) {
        if (name == table.name) return table;
    }
    abort();
}

std::string createStatements() {
    std::string sql;
    for (const Table& table : tables()) {
        sql += std::string("CREATE TABLE ") + table.name + " (";
        for (const Column& column : table.columns) {
            sql += std::string(&column == table.columns.data() ? "" : ", ") + column.name + " " +
                   column.type;
        }
        if (table.key[0] != '\0') sql += std::string(", PRIMARY KEY (") + table.key + ")";
        // Rows of a session lie together; a key of one integer is the row's own number.
        const bool isClustered = strchr(table.key, ',') != nullptr;
        sql += isClustered ? ") WITHOUT ROWID;\n" : ");\n";
        if (table.key[0] == '\0') {
            const std::string first = table.columns[0].name;
            const std::string name = table.name;
            sql.append("CREATE INDEX ").append(name).append("_").append(first);
            sql.append(" ON ").append(name).append(" (").append(first).append(");\n");
        }
    }
    return sql + "CREATE INDEX session_log_id ON session (log_id);\n" + kReportTables + kViews;
}

std::string standardStatements() {
    std::string sql;
    for (const Table& table : tables()) {
        sql += std::string("CREATE TABLE ") + table.name + " (\n";
        for (const Column& column : table.columns) {
            const std::string type = column.type;
            sql += std::string("  ") + column.name +
                   (type == "TEXT"   ? " VARCHAR"
                    : type == "REAL" ? " DOUBLE PRECISION"
                                     : " BIGINT") +
                   (&column == &table.columns.back() ? "\n);\n" : ",\n");
        }
    }
    return sql + kViews;
}

std::string insertStatement(const Table& table) {
    std::string sql = std::string("INSERT INTO ") + table.name + " VALUES (";
    for (size_t i = 0; i < table.columns.size(); ++i) sql += i == 0 ? "?" : ", ?";
    return sql + ")";
}

std::string schemaMarkdown(const Reference& reference) {
    std::map<std::string, const ReferenceEntry*> keys;
    for (const Reference::Table& table : reference.tables()) {
        if (table.name != "json") continue;
        for (const ReferenceEntry& entry : table.entries) keys[entry.id] = &entry;
    }
    std::string text;
    for (const Table& table : tables()) {
        text += std::string("### `") + table.name + "`\n\n" + table.meaning;
        if (table.key[0] != '\0') text += std::string(" Key: ") + table.key + ".";
        text += "\n\n| column | type | unit | meaning |\n|---|---|---|---|\n";
        for (const Column& column : table.columns) {
            std::string unit;
            std::string meaning = column.meaning == nullptr ? "" : column.meaning;
            const auto it =
                    column.pointer == nullptr ? keys.end() : keys.find(reportKey(table, column));
            if (it != keys.end()) {
                unit = it->second->fact("unit");
                if (meaning.empty()) meaning = it->second->fact("meaning");
            }
            text += std::string("| `") + column.name + "` | " + column.type + " | " + cell(unit) +
                    " | " + cell(meaning) + " |\n";
        }
        text += "\n";
    }
    text.pop_back();
    return text;
}

}  // namespace android::codecreport
