// SPDX-License-Identifier: Apache-2.0
#include "fleet/Grouping.h"

#include <map>

namespace android::codecreport {

namespace {

std::string quoted(const std::string& text) {
    std::string sql = "'";
    for (const char c : text) sql.append(c == '\'' ? 2 : 1, c);
    return sql + "'";
}

bool finds(Database* database, const std::string& sql) {
    Statement query;
    return database->prepare(sql, &query) && query.step();
}

}  // namespace

std::optional<std::string> groupSql(Database* database, const std::string& name,
                                    std::string* error) {
    if (finds(database, "SELECT 1 FROM label WHERE name = " + quoted(name))) {
        return "(SELECT l.value FROM label l WHERE l.log_id = s.log_id AND l.name = " +
               quoted(name) + ")";
    }
    if (finds(database,
              "SELECT 1 FROM pragma_table_info('session_summary') WHERE name = " + quoted(name))) {
        return "s." + name;
    }
    *error = "'" + name + "' is no column of session_summary, and no log has such a label";
    return std::nullopt;
}

std::optional<std::string> conditionSql(Database* database, const std::vector<std::string>& terms,
                                        std::string* error) {
    std::map<std::string, std::string> lists;
    for (const std::string& term : terms) {
        const size_t equals = term.find('=');
        if (equals == std::string::npos) {
            *error = "'" + term + "' is not KEY=VALUE";
            return std::nullopt;
        }
        std::string& list = lists[term.substr(0, equals)];
        list += (list.empty() ? "" : ", ") + quoted(term.substr(equals + 1));
    }
    std::string sql = "1";
    for (const auto& [name, list] : lists) {
        const auto value = groupSql(database, name, error);
        if (!value) return std::nullopt;
        sql += " AND " + *value + " IN (" + list + ")";
    }
    return sql;
}

}  // namespace android::codecreport
