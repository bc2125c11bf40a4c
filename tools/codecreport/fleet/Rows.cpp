// SPDX-License-Identifier: Apache-2.0
#include "fleet/Rows.h"

#include <stdio.h>
#include <string.h>

#include <filesystem>

#include "database/Query.h"
#include "database/Schema.h"
#include "output/OutputFile.h"

namespace android::codecreport {

bool isDatabase(const std::string& path) {
    static constexpr char kMagic[] = "SQLite format 3";
    char begin[sizeof(kMagic)] = {};
    FILE* file = fopen(path.c_str(), "re");
    if (file == nullptr) return false;
    const size_t size = fread(begin, 1, sizeof(begin), file);
    fclose(file);
    return size == sizeof(begin) && memcmp(begin, kMagic, sizeof(begin)) == 0;
}

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
