// SPDX-License-Identifier: Apache-2.0
#include "model/FrameStore.h"

#include <sqlite3.h>

namespace android::codecreport {

namespace {

constexpr int64_t Frame::*kColumns[] = {&Frame::ptsUs,
                                        &Frame::number,
                                        &Frame::sizeBytes,
                                        &Frame::announcedUs,
                                        &Frame::queuedUs,
                                        &Frame::codecInUs,
                                        &Frame::codecOutUs,
                                        &Frame::outputUs,
                                        &Frame::displayUs,
                                        &Frame::renderCallUs,
                                        &Frame::insideBefore,
                                        &Frame::inside,
                                        &Frame::dequeueWaitUs,
                                        &Frame::queueWaitUs,
                                        &Frame::decryptWaitUs,
                                        &Frame::messageQueueWaitUs,
                                        &Frame::messageDecryptWaitUs,
                                        &Frame::begunUs,
                                        &Frame::dueUs};
constexpr int kColumnCount = sizeof(kColumns) / sizeof(kColumns[0]);

constexpr char kCreate[] =
        "CREATE TABLE frame(session INTEGER, place INTEGER, rendered INTEGER, dropped INTEGER, "
        "begins INTEGER, pts_us, number, size_bytes, announced_us, queued_us, codec_in_us, "
        "codec_out_us, output_us, display_us, render_call_us, inside_before, inside, "
        "dequeue_wait_us, "
        "queue_wait_us, decrypt_wait_us, message_queue_wait_us, "
        "message_decrypt_wait_us, begun_us, due_us, PRIMARY KEY(session, place)) WITHOUT "
        "ROWID";
constexpr char kInsert[] =
        "INSERT INTO frame VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, "
        "?, ?, ?)";
constexpr char kSelect[] = "SELECT * FROM frame WHERE session = ? ORDER BY place";
constexpr int kFirstColumn = 5;

}  // namespace

FrameStore::FrameStore() {
    // An empty name is a temporary file that SQLite unlinks when it has opened it.
    check(sqlite3_open_v2("", &mDatabase, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr));
    run("PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF; PRAGMA cache_size = -16000; "
        "PRAGMA locking_mode = EXCLUSIVE; BEGIN");
    run(kCreate);
    check(sqlite3_prepare_v2(mDatabase, kInsert, -1, &mInsert, nullptr));
    check(sqlite3_prepare_v2(mDatabase, kSelect, -1, &mSelect, nullptr));
}

FrameStore::~FrameStore() {
    sqlite3_finalize(mInsert);
    sqlite3_finalize(mSelect);
    sqlite3_close(mDatabase);
}

void FrameStore::run(const char* sql) {
    check(sqlite3_exec(mDatabase, sql, nullptr, nullptr, nullptr));
}

void FrameStore::check(int result) const {
    const bool good = result == SQLITE_OK || result == SQLITE_DONE || result == SQLITE_ROW;
    if (!good && mError.empty()) mError = std::string("frames: ") + sqlite3_errmsg(mDatabase);
}

void FrameStore::add(int session, const Frame& frame) {
    const int64_t head[kFirstColumn] = {session, mNext++, frame.rendered, frame.dropped,
                                        static_cast<int64_t>(frame.begins)};
    for (int i = 0; i < kFirstColumn; ++i) sqlite3_bind_int64(mInsert, i + 1, head[i]);
    for (int i = 0; i < kColumnCount; ++i) {
        const int64_t value = frame.*kColumns[i];
        if (value == kNoTime) {
            sqlite3_bind_null(mInsert, kFirstColumn + i + 1);
        } else {
            sqlite3_bind_int64(mInsert, kFirstColumn + i + 1, value);
        }
    }
    check(sqlite3_step(mInsert));
    sqlite3_reset(mInsert);
}

void FrameStore::read(int session, const std::function<void(const Frame&)>& onFrame) const {
    sqlite3_bind_int64(mSelect, 1, session);
    int result;
    while ((result = sqlite3_step(mSelect)) == SQLITE_ROW) {
        Frame frame;
        frame.rendered = sqlite3_column_int(mSelect, 2) != 0;
        frame.dropped = sqlite3_column_int(mSelect, 3) != 0;
        frame.begins = static_cast<Place>(sqlite3_column_int(mSelect, 4));
        for (int i = 0; i < kColumnCount; ++i) {
            const int column = kFirstColumn + i;
            frame.*kColumns[i] = sqlite3_column_type(mSelect, column) == SQLITE_NULL
                                         ? kNoTime
                                         : sqlite3_column_int64(mSelect, column);
        }
        onFrame(frame);
    }
    check(result);
    sqlite3_reset(mSelect);
}

}  // namespace android::codecreport
