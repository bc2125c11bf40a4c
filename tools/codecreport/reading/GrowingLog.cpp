// SPDX-License-Identifier: Apache-2.0
#include "reading/GrowingLog.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>

namespace android::codecreport {

namespace {

/** A file that has no name, where temporary files go. */
int openNameless() {
    const char* folder = getenv("TMPDIR");
    std::string path = std::string(folder != nullptr ? folder : "/tmp") + "/codecreport.XXXXXX";
    const int fd = mkostemp(path.data(), O_CLOEXEC);
    if (fd >= 0) unlink(path.c_str());
    return fd;
}

bool writeAll(int fd, const char* bytes, ssize_t size) {
    while (size > 0) {
        const ssize_t written = write(fd, bytes, size);
        if (written < 0) return false;
        bytes += written;
        size -= written;
    }
    return true;
}

}  // namespace

GrowingLog::~GrowingLog() {
    if (mFd > STDIN_FILENO) close(mFd);
    if (mCopyFd >= 0) close(mCopyFd);
}

GrowingLog::GrowingLog(GrowingLog&& other) noexcept
    : mPath(std::move(other.mPath)),
      mFd(std::exchange(other.mFd, -1)),
      mCopyFd(std::exchange(other.mCopyFd, -1)),
      mOffset(other.mOffset),
      mIsPipe(other.mIsPipe),
      mHasEnded(other.mHasEnded),
      mGrown(other.mGrown),
      mError(std::move(other.mError)) {}

bool GrowingLog::fail() {
    mError = mPath + ": " + strerror(errno);
    return false;
}

bool GrowingLog::open(const std::string& path) {
    mPath = path;
    mFd = path == "-" ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status = {};
    if (mFd < 0 || fstat(mFd, &status) != 0) return fail();
    if (S_ISDIR(status.st_mode)) {
        errno = EISDIR;
        return fail();
    }
    mIsPipe = !S_ISREG(status.st_mode);
    mCopyFd = openNameless();
    return mCopyFd >= 0 || fail();
}

bool GrowingLog::copy() {
    char block[65536];
    while (!mHasEnded) {
        pollfd ready = {mFd, POLLIN, 0};
        if (mIsPipe && poll(&ready, 1, 0) <= 0) return true;
        const ssize_t size = read(mFd, block, sizeof(block));
        if (size < 0) return fail();
        if (size == 0) break;
        if (!writeAll(mCopyFd, block, size)) return fail();
        mOffset += size;
        mGrown = true;
    }
    if (mIsPipe) {
        mHasEnded = true;
    } else {
        reopenIfReplaced();
    }
    return true;
}

void GrowingLog::reopenIfReplaced() {
    struct stat named = {};
    struct stat open = {};
    if (mPath == "-" || stat(mPath.c_str(), &named) != 0 || fstat(mFd, &open) != 0) return;
    if (named.st_ino == open.st_ino && named.st_dev == open.st_dev) {
        if (named.st_size < mOffset) mOffset = lseek(mFd, 0, SEEK_SET);
        return;
    }
    const int fd = ::open(mPath.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return;
    close(std::exchange(mFd, fd));
    mOffset = 0;
}

bool GrowingLog::takeGrown() {
    return std::exchange(mGrown, false);
}

std::string GrowingLog::copyPath() const {
    return "/proc/self/fd/" + std::to_string(mCopyFd);
}

}  // namespace android::codecreport
