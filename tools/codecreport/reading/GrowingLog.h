// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <string>

namespace android::codecreport {

/**
 * Keeps a copy of a log that is still being written, a file or a pipe, so that it can be read anew
 * from its beginning. A file that was rotated or cut short goes on with what stands in its place.
 * The copy is a file without a name: it is gone with the program.
 */
class GrowingLog {
  public:
    GrowingLog() = default;
    ~GrowingLog();
    GrowingLog(GrowingLog&& other) noexcept;
    GrowingLog(const GrowingLog&) = delete;
    GrowingLog& operator=(const GrowingLog&) = delete;

    /** @param path "-" is standard input */
    bool open(const std::string& path);

    /** Copies what has come by now; does not wait. */
    bool copy();
    /** Something was copied since the last call. */
    bool takeGrown();
    /** A pipe whose writers are gone; a file may always grow. */
    bool hasEnded() const { return mHasEnded; }

    /** To be waited at, or -1 for a file. */
    int pipeFd() const { return mIsPipe && !mHasEnded ? mFd : -1; }
    /** Where the copy is read. */
    std::string copyPath() const;
    const std::string& error() const { return mError; }

  private:
    bool fail();
    void reopenIfReplaced();

    std::string mPath;
    int mFd = -1;
    int mCopyFd = -1;
    off_t mOffset = 0;
    bool mIsPipe = false;
    bool mHasEnded = false;
    bool mGrown = false;
    std::string mError;
};

}  // namespace android::codecreport
