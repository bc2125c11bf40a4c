// SPDX-License-Identifier: Apache-2.0
#include "reading/LineReader.h"

#include <archive.h>
#include <archive_entry.h>
#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

namespace android::codecreport {

namespace {
constexpr size_t kReadSize = 256 * 1024;
}  // namespace

LineReader::~LineReader() {
    if (mArchive != nullptr) archive_read_free(mArchive);
    if (mFd > STDIN_FILENO) close(mFd);
}

bool LineReader::open(const std::string& path) {
    mFd = path == "-" ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status = {};
    if (mFd < 0 || fstat(mFd, &status) != 0) {
        mError = strerror(errno);
        return false;
    }
    if (S_ISDIR(status.st_mode)) {
        mError = strerror(EISDIR);
        return false;
    }
    const bool isFile = S_ISREG(status.st_mode);
    mReferenceSeconds = isFile ? status.st_mtime : time(nullptr);
    mBytesTotal = isFile ? status.st_size : 0;

    mArchive = archive_read_new();
    archive_read_support_filter_all(mArchive);
    archive_read_support_format_zip(mArchive);
    archive_read_support_format_tar(mArchive);
    archive_read_support_format_raw(mArchive);
    archive_read_support_format_empty(mArchive);
    if (archive_read_open_fd(mArchive, mFd, kReadSize) != ARCHIVE_OK) {
        mError = archive_error_string(mArchive);
        return false;
    }
    nextEntry();
    return mError.empty();
}

bool LineReader::nextEntry() {
    archive_entry* entry = nullptr;
    const int result = archive_read_next_header(mArchive, &entry);
    if (result == ARCHIVE_OK || result == ARCHIVE_WARN) {
        mDecoder.restart();
        mBeginsFile = true;
        return true;
    }
    mAtEnd = true;
    if (result != ARCHIVE_EOF) mError = archive_error_string(mArchive);
    return false;
}

bool LineReader::fill() {
    while (!mAtEnd) {
        const void* data = nullptr;
        size_t size = 0;
        la_int64_t offset = 0;
        const int result = archive_read_data_block(mArchive, &data, &size, &offset);
        if (result == ARCHIVE_OK || result == ARCHIVE_WARN) {
            mBlock = mDecoder.decode({static_cast<const char*>(data), size});
            if (mBlock.empty()) continue;
            return true;
        }
        if (result != ARCHIVE_EOF) {
            mAtEnd = true;
            mError = archive_error_string(mArchive);
            return false;
        }
        nextEntry();
    }
    return false;
}

bool LineReader::next(std::string_view* line) {
    if (mPartialDone) mPartial.clear();
    mPartialDone = false;
    while (true) {
        if (mBlock.empty() && !fill()) {
            if (mPartial.empty()) return false;
            break;
        }
        if (mBeginsFile) {
            if (!mPartial.empty()) break;
            mBeginsFile = false;
            ++mFile;
        }
        const size_t end = mBlock.find('\n');
        const std::string_view piece = mBlock.substr(0, end);
        const bool whole = end != std::string_view::npos;
        mBlock.remove_prefix(whole ? end + 1 : mBlock.size());
        if (whole && mPartial.empty()) {
            *line = piece.substr(0, kMaxLine);
            return true;
        }
        mPartial.append(piece.substr(0, kMaxLine - std::min(kMaxLine, mPartial.size())));
        if (whole) break;
    }
    *line = mPartial;
    mPartialDone = true;
    return true;
}

int64_t LineReader::bytesRead() const {
    return mArchive == nullptr ? 0 : archive_filter_bytes(mArchive, -1);
}

}  // namespace android::codecreport
