// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <string>
#include <string_view>

#include "reading/TextDecoder.h"

struct archive;

namespace android::codecreport {

/**
 * Reads one input line by line: a file or, as "-", standard input, plain or compressed (gzip, xz,
 * zstd, bzip2, ...) or an archive such as a zipped bug report, whose files are read one after the
 * other. Text is UTF-8, or UTF-16 with its mark. Damage ends the input early and is told by
 * error(); what was read until then stands.
 *
 * Memory: one block of the decompressor and one line of at most kMaxLine bytes; what is longer is
 * cut there.
 */
class LineReader {
  public:
    static constexpr size_t kMaxLine = 64 * 1024;

    LineReader() = default;
    ~LineReader();
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;

    bool open(const std::string& path);

    /** @param line without its line end, good until the next call; false: the end */
    bool next(std::string_view* line);

    /** Which file of an archive the line is of, from 0. */
    int file() const { return mFile; }

    /** Why open() failed or the input ended early; empty: neither. */
    const std::string& error() const { return mError; }

    /** When the input was last written, seconds since 1970; now for a pipe. */
    int64_t referenceSeconds() const { return mReferenceSeconds; }

    /** Bytes of the file itself, compressed as they are; total 0 for a pipe. */
    int64_t bytesRead() const;
    int64_t bytesTotal() const { return mBytesTotal; }

  private:
    bool fill();
    bool nextEntry();

    archive* mArchive = nullptr;
    int mFd = -1;
    TextDecoder mDecoder;
    int mFile = -1;
    /** The block begins another file. */
    bool mBeginsFile = false;
    std::string_view mBlock;
    std::string mPartial;
    bool mPartialDone = false;
    bool mAtEnd = false;
    std::string mError;
    int64_t mReferenceSeconds = 0;
    int64_t mBytesTotal = 0;
};

}  // namespace android::codecreport
