// SPDX-License-Identifier: Apache-2.0
#include "MediaInput.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace android::codecplay {

MediaInput::~MediaInput() {
    freeContext();
    if (mFd > STDERR_FILENO) close(mFd);
}

bool MediaInput::open(const std::string& file, std::string* error) {
    // Without O_NONBLOCK a pipe that nobody writes to would not even open.
    mFd = file == "-" ? STDIN_FILENO : ::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    struct stat status {};
    if (mFd < 0 || fstat(mFd, &status) != 0) {
        *error = strerror(errno);
        return false;
    }
    mSeekable = S_ISREG(status.st_mode) || S_ISBLK(status.st_mode);
    return true;
}

void MediaInput::freeContext() {
    if (!mContext) return;
    av_freep(&mContext->buffer);
    avio_context_free(&mContext);
}

AVIOContext* MediaInput::begin() {
    constexpr int kBufferSize = 1 << 16;
    freeContext();
    if (mSeekable) lseek(mFd, 0, SEEK_SET);
    mContext = avio_alloc_context(static_cast<unsigned char*>(av_malloc(kBufferSize)), kBufferSize,
                                  0, this, onRead, nullptr, mSeekable ? onSeek : nullptr);
    return mContext;
}

std::vector<uint8_t> MediaInput::firstBytes(size_t count) const {
    std::vector<uint8_t> bytes(count);
    const ssize_t got = mSeekable ? pread(mFd, bytes.data(), count, 0) : 0;
    bytes.resize(static_cast<size_t>(std::max<ssize_t>(got, 0)));
    return bytes;
}

bool MediaInput::waitForBytes() const {
    constexpr int kLookForStopMs = 50;
    while (!mStop) {
        pollfd waited{mFd, POLLIN, 0};
        if (poll(&waited, 1, kLookForStopMs) > 0) return true;
    }
    return false;
}

int MediaInput::onRead(void* self, uint8_t* to, int size) {
    const auto* input = static_cast<MediaInput*>(self);
    for (;;) {
        if (input->mStop || (!input->mSeekable && !input->waitForBytes())) return AVERROR_EXIT;
        const ssize_t got = read(input->mFd, to, static_cast<size_t>(size));
        if (got > 0) return static_cast<int>(got);
        if (got == 0) return AVERROR_EOF;
        if (errno != EINTR && errno != EAGAIN) return AVERROR(errno);
    }
}

int64_t MediaInput::onSeek(void* self, int64_t offset, int whence) {
    const auto* input = static_cast<MediaInput*>(self);
    const int64_t at = lseek(input->mFd, whence & AVSEEK_SIZE ? 0 : offset,
                             whence & AVSEEK_SIZE ? SEEK_CUR : whence & ~AVSEEK_FORCE);
    if (at < 0) return AVERROR(errno);
    if (!(whence & AVSEEK_SIZE)) return at;
    const int64_t size = lseek(input->mFd, 0, SEEK_END);
    lseek(input->mFd, at, SEEK_SET);
    return size < 0 ? AVERROR(errno) : size;
}

}  // namespace android::codecplay
