// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "reference/Reference.h"

namespace android::codecreport {

/** A value of a row: where it comes from and what it means. */
struct Column {
    const char* name;
    /** "INTEGER", "REAL" or "TEXT". */
    const char* type;
    /**
     * JSON pointer into what the row is made of; "#key" is the name of a member, "#value" the
     * whole; null: the writer knows it.
     */
    const char* pointer;
    /** Null: what the JSON report's key means. */
    const char* meaning = nullptr;
};

struct Table {
    const char* name;
    const char* meaning;
    /** Columns of the primary key, commas between. */
    const char* key;
    /** The report's key that the rows are made of, such as "sessions[].incidents[]". */
    const char* source;
    /** Hands out what each row of a session is made of; null: the rows are no session's. */
    void (*expand)(const nlohmann::ordered_json& session,
                   const std::function<void(const nlohmann::ordered_json&)>& row);
    std::vector<Column> columns;
};

/** Raised when a table or a column changes its meaning or goes; new ones leave it. */
constexpr int kDatabaseVersion = 1;

/**
 * The tables, those of a session's JSON first to last in the order in which they are written. This
 * one list makes the SQL, the rows for other engines and the document.
 */
const std::vector<Table>& tables();
const Table& tableNamed(const std::string& name);

/** CREATE TABLE and CREATE VIEW of everything. */
std::string createStatements();
/** Tables, without keys, and views in SQL for engines other than SQLite. */
std::string standardStatements();
/** INSERT with a parameter for each column. */
std::string insertStatement(const Table& table);
/** The tables and views as docs/database.md shows them. */
std::string schemaMarkdown(const Reference& reference);

}  // namespace android::codecreport
