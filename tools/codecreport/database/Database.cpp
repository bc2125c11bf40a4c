// SPDX-License-Identifier: Apache-2.0
#include "database/Database.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <xxhash.h>
#include <zstd.h>

#include "database/FrameRows.h"
#include "database/Schema.h"
#include "output/JsonReport.h"

namespace android::codecreport {

namespace {

using Json = nlohmann::ordered_json;

/** "MCLr" in the file's header tells our databases from others. */
constexpr int kApplicationId = 0x4d434c72;
/** Another process may write a log meanwhile. */
constexpr int kBusyMs = 60'000;
constexpr int kZstdLevel = 3;
/** More would be no report of ours. */
constexpr size_t kMaxUnpacked = 256 << 20;

std::string pack(const Json& json) {
    const std::string text = dump(json, false);
    std::string packed(ZSTD_compressBound(text.size()), '\0');
    packed.resize(
            ZSTD_compress(packed.data(), packed.size(), text.data(), text.size(), kZstdLevel));
    return packed;
}

std::optional<Json> unpack(std::string_view packed) {
    const unsigned long long size = ZSTD_getFrameContentSize(packed.data(), packed.size());
    if (size > kMaxUnpacked) return std::nullopt;
    std::string text(size, '\0');
    if (ZSTD_decompress(text.data(), size, packed.data(), packed.size()) != size) {
        return std::nullopt;
    }
    Json json = Json::parse(text, nullptr, false);
    if (!json.is_object()) return std::nullopt;
    return json;
}

void bindValue(Statement* insert, int index, const Json& value) {
    if (value.is_null()) {
        insert->bindNull(index);
    } else if (value.is_boolean()) {
        insert->bind(index, static_cast<int64_t>(value.get<bool>()));
    } else if (value.is_number_integer()) {
        insert->bind(index, value.get<int64_t>());
    } else if (value.is_number()) {
        insert->bind(index, value.get<double>());
    } else if (value.is_string()) {
        insert->bind(index, value.get_ref<const std::string&>());
    } else {
        insert->bind(index, dump(value, false));
    }
}

const Json& at(const Json& row, const Column& column) {
    static const Json kNull;
    const Json::json_pointer pointer(column.pointer);
    return row.is_object() && row.contains(pointer) ? row[pointer] : kNull;
}

size_t indexOf(const char* table) {
    return &tableNamed(table) - tables().data();
}

}  // namespace

void LogRecord::pack() {
    for (Json& session : report["sessions"]) {
        packedSessions.push_back(codecreport::pack(session));
    }
    packedRest = codecreport::pack({{"schema_version", report["schema_version"]},
                                    {"input", report["input"]},
                                    {"metrics", report["metrics"]}});
}

bool isDatabase(const std::string& path) {
    static constexpr char kMagic[] = "SQLite format 3";
    char begin[sizeof(kMagic)] = {};
    FILE* file = fopen(path.c_str(), "re");
    if (file == nullptr) return false;
    const size_t size = fread(begin, 1, sizeof(begin), file);
    fclose(file);
    return size == sizeof(begin) && memcmp(begin, kMagic, sizeof(begin)) == 0;
}

int64_t logId(const std::string& hash) {
    return static_cast<int64_t>(strtoull(hash.substr(0, 16).c_str(), nullptr, 16) >> 1);
}

int64_t sessionId(const std::string& hash, int64_t sessionNo) {
    return static_cast<int64_t>(XXH3_64bits_withSeed(hash.data(), hash.size(), sessionNo) >> 1);
}

bool Database::fail(const std::string& what) {
    mError = mPath + ": " + (what.empty() ? sqlite3_errmsg(mDb.get()) : what);
    return false;
}

bool Database::execute(const std::string& sql) {
    return sqlite3_exec(mDb.get(), sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK || fail();
}

bool Database::prepare(const std::string& sql, Statement* statement) {
    if (statement->prepare(mDb.get(), sql)) return true;
    return fail(sqlite3_errcode(mDb.get()) == SQLITE_OK ? "there is no SQL in '" + sql + "'" : "");
}

bool Database::open(const std::string& path, Access access) {
    mPath = path.empty() ? "temporary database" : path;
    const int flags = access == Access::READ    ? SQLITE_OPEN_READONLY
                      : access == Access::WRITE ? SQLITE_OPEN_READWRITE
                                                : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    sqlite3* db = nullptr;
    const int result = sqlite3_open_v2(path.c_str(), &db, flags, nullptr);
    mDb.reset(db);
    if (result != SQLITE_OK) return fail();
    sqlite3_busy_timeout(db, kBusyMs);
    if (access == Access::READ) return check(false);
    // A log that a crash of the machine takes away can be added again.
    if (!execute("PRAGMA synchronous = NORMAL; PRAGMA cache_size = -65536; BEGIN IMMEDIATE")) {
        return false;
    }
    Statement count;
    if (!prepare("SELECT count(*) FROM sqlite_schema", &count) || !count.step()) return fail();
    const bool isNew = count.integer(0) == 0;
    count.run();
    if (!check(isNew)) return false;
    if (!execute("COMMIT")) return false;
    mInserts.resize(tables().size());
    for (size_t i = 0; i < tables().size(); ++i) {
        if (!prepare(insertStatement(tables()[i]), &mInserts[i])) return false;
    }
    return true;
}

bool Database::check(bool isNew) {
    if (isNew) {
        return execute("PRAGMA application_id = " + std::to_string(kApplicationId) +
                       "; PRAGMA user_version = " + std::to_string(kDatabaseVersion) + ";" +
                       createStatements());
    }
    Statement id;
    Statement version;
    if (!prepare("PRAGMA application_id", &id) || !prepare("PRAGMA user_version", &version)) {
        return false;
    }
    if (!id.step() || !version.step()) return fail();
    if (id.integer(0) != kApplicationId) return fail("no database of codecreport");
    if (version.integer(0) != kDatabaseVersion) {
        return fail("made by another version of codecreport, with tables of version " +
                    std::to_string(version.integer(0)));
    }
    return true;
}

bool Database::holds(const std::string& hash) {
    Statement find;
    if (!prepare("SELECT 1 FROM log WHERE log_id = ?", &find)) return false;
    find.bind(0, logId(hash));
    return find.step();
}

bool Database::add(const LogRecord& log) {
    if (!execute("BEGIN IMMEDIATE")) return false;
    if (write(log)) return execute("COMMIT");
    const std::string error = mError;
    execute("ROLLBACK");
    mError = error;
    return false;
}

bool Database::write(const LogRecord& log) {
    const int64_t id = logId(log.hash);
    Json input = log.report["input"];
    Statement& insert = mInserts[indexOf("log")];
    const Table& table = tableNamed("log");
    for (size_t i = 4; i < table.columns.size(); ++i) {
        bindValue(&insert, static_cast<int>(i), at(input, table.columns[i]));
    }
    insert.bind(0, id);
    insert.bind(1, log.hash);
    insert.bind(2, log.isMetrics ? "metrics" : "log");
    insert.bind(3, log.path);
    if (!insert.run()) return fail();
    Statement rest;
    if (!prepare("INSERT INTO log_report VALUES (?, ?)", &rest)) return false;
    rest.bind(0, id);
    rest.bindBlob(1, log.packedRest);
    if (!rest.run()) return fail();
    if (!label(log.hash, log.labels)) return false;
    for (size_t i = 0; i < log.report["sessions"].size(); ++i) {
        if (!writeSession(log, i)) return false;
    }
    for (const Json& metric : log.report["metrics"]) {
        if (!writeRow(indexOf("metric"), id, metric)) return false;
    }
    return true;
}

bool Database::writeSession(const LogRecord& log, size_t index) {
    const Json& session = log.report["sessions"][index];
    const int64_t id = sessionId(log.hash, session["id"]);
    mInserts[indexOf("session")].bind(1, logId(log.hash));
    bool ok = true;
    for (size_t i = 0; i < tables().size(); ++i) {
        if (tables()[i].expand == nullptr) continue;
        tables()[i].expand(session, [&](const Json& row) { ok = ok && writeRow(i, id, row); });
    }
    if (ok && log.frames != nullptr) {
        Statement& insert = mInserts[indexOf("frame")];
        ok = writeFrames(*log.frames, *(*log.sessions)[index], id, &insert) || fail();
    }
    Statement report;
    if (!ok || !prepare("INSERT INTO session_report VALUES (?, ?)", &report)) return false;
    report.bind(0, id);
    report.bindBlob(1, log.packedSessions[index]);
    return report.run() || fail();
}

/** Columns without a pointer are bound already, but for the id, which comes first. */
bool Database::writeRow(size_t table, int64_t id, const Json& row) {
    Statement& insert = mInserts[table];
    const std::vector<Column>& columns = tables()[table].columns;
    insert.bind(0, id);
    for (size_t i = 1; i < columns.size(); ++i) {
        if (columns[i].pointer != nullptr) {
            bindValue(&insert, static_cast<int>(i), at(row, columns[i]));
        }
    }
    return insert.run() || fail();
}

bool Database::label(const std::string& hash, const Labels& labels) {
    Statement insert;
    if (!prepare("INSERT OR REPLACE INTO label VALUES (?, ?, ?)", &insert)) return false;
    for (const auto& [name, value] : labels) {
        insert.bind(0, logId(hash));
        insert.bind(1, name);
        insert.bind(2, value);
        if (!insert.run()) return fail();
    }
    return true;
}

std::optional<Json> Database::reportOf(int64_t sessionId) {
    Statement find;
    if (!prepare("SELECT s.json_zstd, l.json_zstd FROM session_report s JOIN session USING "
                 "(session_id) JOIN log_report l USING (log_id) WHERE session_id = ?",
                 &find)) {
        return std::nullopt;
    }
    find.bind(0, sessionId);
    if (!find.step()) {
        fail("no session " + std::to_string(sessionId));
        return std::nullopt;
    }
    std::optional<Json> session = unpack(find.text(0));
    std::optional<Json> report = unpack(find.text(1));
    if (!session || !report) {
        fail("the report of session " + std::to_string(sessionId) + " is damaged");
        return std::nullopt;
    }
    const Json metrics = (*report)["metrics"];
    (*report)["sessions"] = Json::array({*session});
    report->erase("metrics");
    (*report)["metrics"] = metrics;
    return report;
}

}  // namespace android::codecreport
