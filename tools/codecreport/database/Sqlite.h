// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sqlite3.h>
#include <stdint.h>

#include <memory>
#include <string>
#include <string_view>

namespace android::codecreport {

/** A prepared statement. Parameters and columns count from 0. */
class Statement {
  public:
    Statement() = default;
    Statement(sqlite3* db, std::string_view sql) { prepare(db, sql); }

    bool prepare(sqlite3* db, std::string_view sql) {
        sqlite3_stmt* statement = nullptr;
        const int result = sqlite3_prepare_v2(db, sql.data(), static_cast<int>(sql.size()),
                                              &statement, &mTail);
        mStatement.reset(statement);
        return result == SQLITE_OK && statement != nullptr;
    }
    /** What follows the statement in its text. */
    const char* tail() const { return mTail; }

    void bind(int index, int64_t value) { sqlite3_bind_int64(get(), index + 1, value); }
    void bind(int index, double value) { sqlite3_bind_double(get(), index + 1, value); }
    void bindNull(int index) { sqlite3_bind_null(get(), index + 1); }
    void bind(int index, std::string_view text) {
        sqlite3_bind_text64(get(), index + 1, text.data(), text.size(), SQLITE_TRANSIENT,
                            SQLITE_UTF8);
    }
    void bindBlob(int index, std::string_view bytes) {
        sqlite3_bind_blob64(get(), index + 1, bytes.data(), bytes.size(), SQLITE_TRANSIENT);
    }

    /** True: a row stands ready. */
    bool step() {
        mResult = sqlite3_step(get());
        return mResult == SQLITE_ROW;
    }
    /** Steps to the end and makes the statement ready for new parameters; false: it failed. */
    bool run() {
        while (step()) {
        }
        return sqlite3_reset(get()) == SQLITE_OK;
    }
    bool isDone() const { return mResult == SQLITE_DONE; }

    int columnCount() const { return sqlite3_column_count(get()); }
    const char* name(int column) const { return sqlite3_column_name(get(), column); }
    int type(int column) const { return sqlite3_column_type(get(), column); }
    bool isNull(int column) const { return type(column) == SQLITE_NULL; }
    int64_t integer(int column) const { return sqlite3_column_int64(get(), column); }
    double real(int column) const { return sqlite3_column_double(get(), column); }
    /** Text or bytes; good until the next step. */
    std::string_view text(int column) const {
        const void* bytes = sqlite3_column_blob(get(), column);
        const size_t size = sqlite3_column_bytes(get(), column);
        return {size == 0 ? "" : static_cast<const char*>(bytes), size};
    }

    sqlite3_stmt* get() const { return mStatement.get(); }

  private:
    struct Finalizer {
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };
    std::unique_ptr<sqlite3_stmt, Finalizer> mStatement;
    const char* mTail = nullptr;
    int mResult = SQLITE_OK;
};

struct ConnectionCloser {
    void operator()(sqlite3* db) const { sqlite3_close(db); }
};
using Connection = std::unique_ptr<sqlite3, ConnectionCloser>;

}  // namespace android::codecreport
