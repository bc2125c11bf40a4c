// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stddef.h>
#include <stdio.h>

namespace android::analytics {

/**
 * Raw bytes without a header in "/data/tmp/dump<what>_<kind>_<pid>_<tid>.raw". A tracker has one
 * for each thing dumped; the thread in the name is the one that opened it.
 */
class DumpFile {
  public:
    explicit DumpFile(const char* what) : mWhat(what) {}
    ~DumpFile() { close(); }
    DumpFile(const DumpFile&) = delete;
    DumpFile& operator=(const DumpFile&) = delete;

    /** Starts the file afresh unless it is open; whether it is open now. A failure is logged. */
    bool open(const char* kind);

    /** Writes to an open file. A short write is logged and closes it, so that it starts over. */
    void write(const void* data, size_t size);

  private:
    void close();

    const char* const mWhat;
    FILE* mFile = nullptr;
};

}  // namespace android::analytics
