// SPDX-License-Identifier: Apache-2.0
#include "fleet/FleetFigures.h"

#include <math.h>

#include <algorithm>

#include "fleet/Grouping.h"

namespace android::codecreport {

namespace {

/** Groups that are shown each; what is beyond them is one. */
constexpr size_t kMaxGroups = 100;
constexpr int kWorstSessions = 50;

constexpr char kSessions[] = " FROM session_summary s WHERE s.kind = 'video'";

/** Text of the names' values with " · " between; what is not known is a dash. */
std::string keySql(const std::vector<std::string>& values) {
    std::string sql;
    for (const std::string& value : values) {
        sql += (sql.empty() ? "" : " || ' · ' || ") + ("coalesce(" + value + ", '–')");
    }
    return sql.empty() ? "''" : sql;
}

void addSession(const Statement& row, FleetGroup* group) {
    ++group->sessions;
    const double hours = row.real(2);
    group->hours += hours;
    if (!row.isNull(3)) {
        ++group->judged;
        group->stuttered += row.integer(3);
    }
    if (hours > 0 && !row.isNull(4)) {
        const double stoodMs = row.real(4);
        group->standingHours += hours;
        group->standingMs += stoodMs;
        group->standings += row.integer(5);
        if (stoodMs > 0) group->standingPerMille.add(llround(stoodMs / (hours * 3600)));
        if (stoodMs > group->worstStoodMs) {
            group->worstStoodMs = stoodMs;
            group->worstSession = row.integer(1);
        }
    }
    if (hours > 0 && !row.isNull(6)) {
        group->neverShownHours += hours;
        group->neverShown += row.integer(6);
    }
    group->errors += row.integer(7);
    if (!row.isNull(8)) group->firstFrameMs.add(llround(row.real(8)));
}

size_t causeNamed(std::string_view name) {
    for (size_t i = 0; i < kCauseCount; ++i) {
        if (name == toString(static_cast<Cause>(i))) return i;
    }
    return static_cast<size_t>(Cause::UNKNOWN);
}

bool isComplete(Database* database, const Statement& query, std::string* error) {
    if (!query.isDone()) *error = sqlite3_errmsg(database->handle());
    return query.isDone();
}

/** All sessions by a key; ordered, so that one group is open at a time. */
bool readGroups(Database* database, const std::string& key,
                std::map<std::string, FleetGroup>* groups, std::string* error) {
    Statement query;
    if (!database->prepare(
                "SELECT " + key +
                        ", session_id, playback_hours, stuttered, "
                        "standing_total_ms, standing_count, never_shown_count, error_count, "
                        "first_frame_render_ms" +
                        kSessions,
                &query)) {
        *error = database->error();
        return false;
    }
    while (query.step()) addSession(query, &(*groups)[std::string(query.text(0))]);
    if (!isComplete(database, query, error)) return false;
    Statement causes;
    if (!database->prepare(
                "SELECT " + key +
                        ", c.cause, sum(c.never_shown_count), sum(c.stood_ms) "
                        "FROM session_cause c JOIN session_summary s USING (session_id) WHERE "
                        "s.kind = 'video' GROUP BY 1, 2",
                &causes)) {
        *error = database->error();
        return false;
    }
    while (causes.step()) {
        FleetGroup& group = (*groups)[std::string(causes.text(0))];
        const size_t cause = causeNamed(causes.text(1));
        group.lostByCause[cause] += causes.real(2);
        group.stoodMsByCause[cause] += causes.real(3);
    }
    return isComplete(database, causes, error);
}

std::vector<FleetGroup> largestFirst(std::map<std::string, FleetGroup>&& groups) {
    std::vector<FleetGroup> sorted;
    for (auto& [name, group] : groups) {
        group.name = name;
        sorted.push_back(std::move(group));
    }
    std::stable_sort(sorted.begin(), sorted.end(), [](const FleetGroup& a, const FleetGroup& b) {
        return a.sessions > b.sessions;
    });
    if (sorted.size() <= kMaxGroups) return sorted;
    FleetGroup others;
    others.name = std::to_string(sorted.size() - kMaxGroups) + " more";
    for (size_t i = kMaxGroups; i < sorted.size(); ++i) others.add(sorted[i]);
    sorted.resize(kMaxGroups);
    sorted.push_back(std::move(others));
    return sorted;
}

bool readWorst(Database* database, FleetFigures* figures, std::string* error) {
    Statement query;
    if (!database->prepare("SELECT session_id, log_path, codec, app, resolution, verdict_sentence, "
                           "standing_total_ms" +
                                   std::string(kSessions) +
                                   " AND s.stuttered = 1 ORDER BY standing_total_ms DESC, "
                                   "never_shown_count DESC, session_id LIMIT " +
                                   std::to_string(kWorstSessions),
                           &query)) {
        *error = database->error();
        return false;
    }
    while (query.step()) {
        WorstSession& worst = figures->worst.emplace_back();
        worst.id = query.integer(0);
        std::string* const texts[] = {&worst.log, &worst.codec, &worst.app, &worst.resolution,
                                      &worst.sentence};
        for (int i = 0; i < 5; ++i) *texts[i] = query.text(i + 1);
        worst.stoodMs = query.real(6);
    }
    return isComplete(database, query, error);
}

}  // namespace

void FleetGroup::add(const FleetGroup& other) {
    sessions += other.sessions;
    hours += other.hours;
    judged += other.judged;
    stuttered += other.stuttered;
    standingHours += other.standingHours;
    standingMs += other.standingMs;
    standings += other.standings;
    neverShownHours += other.neverShownHours;
    neverShown += other.neverShown;
    errors += other.errors;
    firstFrameMs.add(other.firstFrameMs);
    standingPerMille.add(other.standingPerMille);
    for (size_t i = 0; i < kCauseCount; ++i) {
        lostByCause[i] += other.lostByCause[i];
        stoodMsByCause[i] += other.stoodMsByCause[i];
    }
    if (other.worstStoodMs > worstStoodMs) {
        worstStoodMs = other.worstStoodMs;
        worstSession = other.worstSession;
    }
}

std::optional<FleetFigures> fleetFigures(Database* database,
                                         const std::vector<std::vector<std::string>>& groupings,
                                         std::string* error) {
    FleetFigures figures;
    for (const std::vector<std::string>& names : groupings) {
        std::vector<std::string> values;
        for (const std::string& name : names) {
            const auto value = groupSql(database, name, error);
            if (!value) return std::nullopt;
            values.push_back(*value);
        }
        std::map<std::string, FleetGroup> groups;
        if (!readGroups(database, keySql(values), &groups, error)) return std::nullopt;
        figures.groupings.push_back({names, largestFirst(std::move(groups))});
    }
    std::map<std::string, FleetGroup> all;
    if (!readGroups(database, "''", &all, error)) return std::nullopt;
    figures.all = std::move(all[""]);
    Statement logs;
    if (database->prepare("SELECT count(*) FROM log WHERE kind = 'log'", &logs) && logs.step()) {
        figures.logs = logs.integer(0);
    }
    if (!readWorst(database, &figures, error)) return std::nullopt;
    return figures;
}

std::vector<std::vector<std::string>> usualGroupings(Database* database) {
    std::vector<std::vector<std::string>> groupings;
    Statement labels;
    if (database->prepare("SELECT DISTINCT name FROM label ORDER BY name", &labels)) {
        while (labels.step()) groupings.push_back({std::string(labels.text(0))});
    }
    for (const char* column : {"codec", "app", "resolution"}) groupings.push_back({column});
    return groupings;
}

}  // namespace android::codecreport
