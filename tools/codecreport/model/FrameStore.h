// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <functional>
#include <memory>
#include <string>

#include "model/Frame.h"

struct sqlite3;
struct sqlite3_stmt;

namespace android::codecreport {

/**
 * The frames of all sessions, in a database without a name on disk, because a day of video is more
 * than memory should hold. Whatever it could not write it forgets; error() says so.
 *
 * Memory: a cache of 16 MB.
 */
class FrameStore {
  public:
    FrameStore();
    ~FrameStore();
    FrameStore(const FrameStore&) = delete;
    FrameStore& operator=(const FrameStore&) = delete;

    /** Frames of a session come out in the order in which they are added. */
    void add(int session, const Frame& frame);
    void read(int session, const std::function<void(const Frame&)>& onFrame) const;

    /** Empty unless something went wrong, a full disk for example. */
    const std::string& error() const { return mError; }

  private:
    void run(const char* sql);
    void check(int result) const;

    sqlite3* mDatabase = nullptr;
    sqlite3_stmt* mInsert = nullptr;
    sqlite3_stmt* mSelect = nullptr;
    int64_t mNext = 0;
    mutable std::string mError;
};

}  // namespace android::codecreport
