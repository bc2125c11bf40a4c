// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "database/Sqlite.h"
#include "model/FrameStore.h"
#include "model/Session.h"

namespace android::codecreport {

/** Name and value of what is known of a log from outside, such as its build. */
using Labels = std::map<std::string, std::string>;

/** What of a log goes into the database. */
struct LogRecord {
    std::string path;
    /** As contentHash() makes it. */
    std::string hash;
    bool isMetrics = false;
    Labels labels;
    /** Of the sessions in the report, in its order; null: frames are left out. */
    const std::vector<std::unique_ptr<Session>>* sessions = nullptr;
    const FrameStore* frames = nullptr;
    /** The report as toJson() makes it. */
    nlohmann::ordered_json report;
    /** The same, packed: each session's part, and the rest. */
    std::vector<std::string> packedSessions;
    std::string packedRest;

    /** Fills the packed parts; apart from writing, for it can be done on another thread. */
    void pack();
};

/** Does the file begin as an SQLite database does? */
bool isDatabase(const std::string& path);

/** Ids that are the same in every database, so that rows of many databases can be put together. */
int64_t logId(const std::string& hash);
int64_t sessionId(const std::string& hash, int64_t sessionNo);

/**
 * Sessions of many logs in one SQLite file; docs/database.md describes its tables.
 *
 * Each function that fails leaves why in error(). Not for two threads at once; other processes may
 * write to the same file, each log in one transaction.
 */
class Database {
  public:
    enum class Access { READ, WRITE, CREATE };

    /** CREATE makes a new file or goes on with one; "" is a database that is gone at the end. */
    bool open(const std::string& path, Access access);
    const std::string& error() const { return mError; }
    sqlite3* handle() const { return mDb.get(); }

    bool holds(const std::string& hash);
    /** Adds a log that the database does not hold. */
    bool add(const LogRecord& log);
    /** Sets labels of a log that the database holds. */
    bool label(const std::string& hash, const Labels& labels);

    /** The report that the session's log gave, with this session only. */
    std::optional<nlohmann::ordered_json> reportOf(int64_t sessionId);

    /** Reads on behalf of something else; false with error() if the SQL is wrong. */
    bool prepare(const std::string& sql, Statement* statement);

  private:
    bool fail(const std::string& what = "");
    bool execute(const std::string& sql);
    bool check(bool isNew);
    bool write(const LogRecord& log);
    bool writeSession(const LogRecord& log, size_t index);
    bool writeRow(size_t table, int64_t id, const nlohmann::ordered_json& row);

    std::string mPath;
    std::string mError;
    Connection mDb;
    /** By the table's place in tables(). */
    std::vector<Statement> mInserts;
};

}  // namespace android::codecreport
