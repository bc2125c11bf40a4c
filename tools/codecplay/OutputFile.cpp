// SPDX-License-Identifier: Apache-2.0
#include "OutputFile.h"

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <unistd.h>

namespace android::codecplay {

bool OutputFile::fail(int code) {
    if (mError == 0 && code != EPIPE) mError = code;
    if (mFd > STDERR_FILENO) close(mFd);
    mFd = -1;
    return false;
}

bool OutputFile::open(const std::string& path) {
    std::lock_guard<std::mutex> lock(mLock);
    mName = path == "-" ? "standard output" : path;
    mFd = path == "-" ? STDOUT_FILENO
                      : ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    return mFd >= 0 || fail(errno);
}

bool OutputFile::isOpen() const {
    std::lock_guard<std::mutex> lock(mLock);
    return mFd >= 0;
}

bool OutputFile::isTerminal() const {
    std::lock_guard<std::mutex> lock(mLock);
    return mFd >= 0 && isatty(mFd);
}

void OutputFile::write(const std::string& text) {
    std::lock_guard<std::mutex> lock(mLock);
    for (size_t done = 0; mFd >= 0 && done < text.size();) {
        const ssize_t written = ::write(mFd, text.data() + done, text.size() - done);
        if (written >= 0) {
            done += static_cast<size_t>(written);
        } else if (errno != EINTR) {
            fail(errno);
        }
    }
}

std::string OutputFile::error() const {
    std::lock_guard<std::mutex> lock(mLock);
    return mError == 0 ? "" : mName + ": cannot be written: " + strerror(mError);
}

}  // namespace android::codecplay
