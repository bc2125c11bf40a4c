// SPDX-License-Identifier: Apache-2.0
#include "fleet/SetCompare.h"

#include <math.h>
#include <stdio.h>

#include <algorithm>
#include <numeric>

namespace android::codecreport {

namespace {

/** Chance of one false alarm or more in a comparison of equal sets. */
constexpr double kAlpha = 0.05;
/**
 * Effects that do not matter: with a rare measure, a difference in five of a hundred sessions; with
 * another, that a session of the one set is above one of the other in 57.5 % instead of 50 % of
 * pairs.
 */
constexpr double kRareMargin = 0.05;
constexpr double kMargin = 0.15;

double typical(std::vector<double> values, bool isRare) {
    if (isRare) return std::accumulate(values.begin(), values.end(), 0.0) / values.size();
    const auto middle = values.begin() + values.size() / 2;
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/** All sessions of both sets show the same: nothing to ask, and no question to correct for. */
bool isConstant(const MeasuredSets& sets) {
    const auto differs = [&sets](double value) { return value != sets.base[0]; };
    return std::none_of(sets.base.begin(), sets.base.end(), differs) &&
           std::none_of(sets.now.begin(), sets.now.end(), differs);
}

/** What can be said of one measure when p is corrected for all. */
void conclude(SetOutcome* value) {
    const double margin = value->measure->isRare ? kRareMargin : kMargin;
    if (value->p <= kAlpha && value->test.effect != 0) {
        value->outcome = value->test.effect > 0 ? Outcome::WORSE : Outcome::BETTER;
        return;
    }
    if (value->test.effectLow >= -margin && value->test.effectHigh <= margin) {
        value->outcome = Outcome::SAME;
        return;
    }
    // The interval narrows with the root of the number of sessions.
    const double width = (value->test.effectHigh - value->test.effectLow) / 2;
    const double fewer = static_cast<double>(std::min(value->baseCount, value->nowCount));
    const double needed = fewer * pow(std::max(1.2, width / margin), 2);
    const double step = pow(10, std::max(0.0, floor(log10(needed)) - 1));
    value->wouldTell = static_cast<size_t>(ceil(needed / step) * step);
}

bool readSet(const SessionSet& set, std::vector<MeasuredSets>* sets,
             std::vector<double> MeasuredSets::*side, size_t* sessions, size_t* logs,
             std::string* error) {
    std::string sql = "SELECT s.log_id";
    for (const FleetMeasure& measure : fleetMeasures()) sql += ", " + measure.sql;
    sql += " FROM session_summary s WHERE s.kind = 'video' AND (" + set.condition +
           ") ORDER BY s.log_id";
    Statement query;
    if (!set.database->prepare(sql, &query)) {
        *error = set.database->error();
        return false;
    }
    int64_t last = -1;
    while (query.step()) {
        ++*sessions;
        if (query.integer(0) != last) ++*logs;
        last = query.integer(0);
        for (size_t i = 0; i < sets->size(); ++i) {
            const int column = static_cast<int>(i) + 1;
            if (!query.isNull(column)) ((*sets)[i].*side).push_back(query.real(column));
        }
    }
    if (query.isDone()) return true;
    *error = sqlite3_errmsg(set.database->handle());
    return false;
}

std::string remark(const SetOutcome& value) {
    if (value.baseCount == 0 || value.nowCount == 0) {
        return value.baseCount == value.nowCount ? "" : "one side's logs do not tell it";
    }
    char text[100] = "";
    if (value.outcome == Outcome::CANNOT_TELL) {
        snprintf(text, sizeof(text), "too few sessions; about %zu a side would tell",
                 value.wouldTell);
    } else if (value.outcome != Outcome::SAME) {
        snprintf(text, sizeof(text), "in %.0f %% of pairs NEW is above, in %.0f %% below%s",
                 50 + value.test.effect * 50, 50 - value.test.effect * 50,
                 value.measure->isRare ? ", ties halved" : "");
    }
    return text;
}

}  // namespace

std::vector<SetOutcome> judgeSets(const std::vector<MeasuredSets>& sets) {
    std::vector<SetOutcome> values;
    std::vector<size_t> asked;
    std::vector<double> p;
    for (const MeasuredSets& set : sets) {
        SetOutcome& value = values.emplace_back();
        value.measure = set.measure;
        value.baseCount = set.base.size();
        value.nowCount = set.now.size();
        if (!set.base.empty()) value.baseTypical = typical(set.base, set.measure->isRare);
        if (!set.now.empty()) value.nowTypical = typical(set.now, set.measure->isRare);
        if (set.base.empty() || set.now.empty()) continue;
        value.test = rankTest(set.base, set.now);
        if (isConstant(set)) continue;
        asked.push_back(values.size() - 1);
        p.push_back(value.test.p);
    }
    const std::vector<double> corrected = holm(p);
    for (size_t i = 0; i < asked.size(); ++i) values[asked[i]].p = corrected[i];
    for (SetOutcome& value : values) {
        if (value.baseCount > 0 && value.nowCount > 0) conclude(&value);
    }
    return values;
}

Outcome outcomeOf(const std::vector<SetOutcome>& values) {
    const auto any = [&values](Outcome outcome, bool mainOnly) {
        return std::any_of(values.begin(), values.end(), [=](const SetOutcome& value) {
            return value.outcome == outcome && (value.measure->isMain || !mainOnly);
        });
    };
    if (any(Outcome::WORSE, false)) return Outcome::WORSE;
    if (any(Outcome::BETTER, false)) return Outcome::BETTER;
    return any(Outcome::CANNOT_TELL, true) || values.empty() ? Outcome::CANNOT_TELL : Outcome::SAME;
}

bool compareSets(const SessionSet& base, const SessionSet& now, SetComparison* comparison,
                 std::string* error) {
    std::vector<MeasuredSets> sets(fleetMeasures().size());
    for (size_t i = 0; i < sets.size(); ++i) sets[i].measure = &fleetMeasures()[i];
    if (!readSet(base, &sets, &MeasuredSets::base, &comparison->baseSessions, &comparison->baseLogs,
                 error) ||
        !readSet(now, &sets, &MeasuredSets::now, &comparison->nowSessions, &comparison->nowLogs,
                 error)) {
        return false;
    }
    comparison->values = judgeSets(sets);
    comparison->outcome = outcomeOf(comparison->values);
    return true;
}

std::string toText(const SetComparison& comparison) {
    char line[300];
    snprintf(line, sizeof(line), "BASE: %zu video sessions of %zu logs; NEW: %zu of %zu\n\n",
             comparison.baseSessions, comparison.baseLogs, comparison.nowSessions,
             comparison.nowLogs);
    std::string text = line;
    snprintf(line, sizeof(line), "%-24s %-6s %11s %11s %11s %19s %8s  %s\n", "measure", "unit",
             "BASE", "NEW", "shift", "effect", "p", "outcome");
    text += line;
    for (const SetOutcome& value : comparison.values) {
        if (value.baseCount == 0 && value.nowCount == 0) continue;
        const RankTest& test = value.test;
        char effect[40];
        snprintf(effect, sizeof(effect), "%+.2f (%+.2f %+.2f)", test.effect, test.effectLow,
                 test.effectHigh);
        snprintf(line, sizeof(line), "%-24s %-6s %11.5g %11.5g %+11.4g %19s %8.2g  %s",
                 value.measure->name.c_str(), value.measure->unit, value.baseTypical,
                 value.nowTypical, test.shift, effect, value.p, toString(value.outcome));
        text += line;
        const std::string more = remark(value);
        text += (more.empty() ? "" : "; " + more) + "\n";
    }
    return text +
           "\nOf each measure the median, of those that are mostly 0 the mean; shift: the median "
           "of "
           "the\ndifferences of all pairs; effect: of all pairs, the share in which NEW is above "
           "less "
           "that in\nwhich it is below, with its interval of 95 %; p: Mann-Whitney, corrected for "
           "all "
           "measures by Holm.\n\n" +
           toString(comparison.outcome) + "\n";
}

nlohmann::ordered_json toJson(const SetComparison& comparison) {
    using Json = nlohmann::ordered_json;
    Json values = Json::array();
    for (const SetOutcome& value : comparison.values) {
        if (value.baseCount == 0 && value.nowCount == 0) continue;
        const RankTest& test = value.test;
        values.push_back({{"measure", value.measure->name},
                          {"unit", value.measure->unit},
                          {"outcome", toString(value.outcome)},
                          {"base_count", value.baseCount},
                          {"new_count", value.nowCount},
                          {"base_value", value.baseTypical},
                          {"new_value", value.nowTypical},
                          {"value_is", value.measure->isRare ? "mean" : "median"},
                          {"shift", test.shift},
                          {"shift_low", test.shiftLow},
                          {"shift_high", test.shiftHigh},
                          {"effect", test.effect},
                          {"effect_low", test.effectLow},
                          {"effect_high", test.effectHigh},
                          {"p", test.p},
                          {"p_corrected", value.p},
                          {"would_tell_count", value.wouldTell}});
    }
    return {{"schema_version", 1},
            {"outcome", toString(comparison.outcome)},
            {"base_session_count", comparison.baseSessions},
            {"new_session_count", comparison.nowSessions},
            {"base_log_count", comparison.baseLogs},
            {"new_log_count", comparison.nowLogs},
            {"values", std::move(values)}};
}

}  // namespace android::codecreport
