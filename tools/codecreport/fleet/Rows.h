// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "database/Database.h"

namespace android::codecreport {

/**
 * Writes each table as FOLDER/TABLE.jsonl, a JSON object a line, all columns in each, and the SQL
 * that makes the tables in another engine as FOLDER/tables.sql. The folder is made if it is not
 * there.
 */
bool writeRows(Database* database, const std::string& folder, std::string* error);

}  // namespace android::codecreport
