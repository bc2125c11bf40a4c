// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "database/Database.h"
#include "output/OutputFile.h"

namespace android::codecreport {

enum class RowForm {
    /** Columns side by side, for people. */
    TABLE,
    /** RFC 4180, with a line of names. */
    CSV,
    /** A JSON object a line. */
    JSON_LINES,
};

/**
 * Writes the rows of a query. Memory: one row; for TABLE the first thousand, whose widths hold for
 * the rest.
 *
 * @return false with *error if the SQL is wrong, would change anything, or the output failed
 */
bool writeQuery(Database* database, const std::string& sql, RowForm form, OutputFile* output,
                std::string* error);

}  // namespace android::codecreport
