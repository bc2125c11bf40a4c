// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <tools/codeclogger/CodecInfo.h>

namespace android::codecloggerctl {

using codeclogger::Answer;
using codeclogger::CodecInfo;

/** A count since the start and in the last interval. */
struct Count {
    int64_t total = 0;
    int64_t recent = 0;
};

/**
 * Follows the counters of one codec. They fall back to 0 at a flush or a new session, and go on
 * from there: the total is what they counted altogether.
 */
class CodecProgress {
  public:
    void update(const CodecInfo& codec);
    const Count& frames() const { return mFrames.count; }
    const Count& dropped() const { return mDropped.count; }
    const Count& late() const { return mLate.count; }

  private:
    struct Counter {
        Count count;
        int64_t last = 0;
        bool started = false;
        void update(int64_t value);
    };
    Counter mFrames;
    Counter mDropped;
    Counter mLate;
};

}  // namespace android::codecloggerctl
