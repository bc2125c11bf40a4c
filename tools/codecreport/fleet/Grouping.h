// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "database/Database.h"

namespace android::codecreport {

/**
 * SQL of what tells sessions apart, of session_summary s: one of its columns or a label of the log.
 * Nothing, with *error, if the database knows no such name.
 */
std::optional<std::string> groupSql(Database* database, const std::string& name,
                                    std::string* error);

/**
 * SQL for the sessions of "KEY=VALUE"s: all keys must hold, each with one of its values.
 */
std::optional<std::string> conditionSql(Database* database, const std::vector<std::string>& terms,
                                        std::string* error);

}  // namespace android::codecreport
