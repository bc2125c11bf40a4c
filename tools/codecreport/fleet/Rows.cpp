// SPDX-License-Identifier: Apache-2.0
#include "fleet/Rows.h"

#include <filesystem>

#include "database/Query.h"
#include "database/Schema.h"
#include "output/OutputFile.h"

namespace android::codecreport {

bool writeRows(Database* database, const std::string& folder, std::string* error) {
    std::error_code failure;
    std::filesystem::create_directories(folder, failure);
    if (failure) {
        *error = folder + ": " + failure.message();
        return false;
    }
    if (!writeOutput(folder + "/tables.sql", standardStatements(), error)) return false;
    for (const Table& table : tables()) {
        OutputFile output(folder + "/" + table.name + ".jsonl");
        const std::string sql = std::string("SELECT * FROM ") + table.name;
        if (!output.open()) {
            *error = output.error();
            return false;
        }
        if (!writeQuery(database, sql, RowForm::JSON_LINES, &output, error)) return false;
        if (!output.commit()) {
            *error = output.error();
            return false;
        }
    }
    return true;
}

}  // namespace android::codecreport
