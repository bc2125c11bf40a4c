// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <string>
#include <vector>

namespace android::hostplatform {

/** One value that was written to the trace: "C|pid|name|value" on a device. */
struct TraceCounter {
    std::string name;
    int64_t value = 0;
};

/** At most so many values wait for takeTraceCounters(); further ones are lost. */
constexpr size_t kMaxTraceCounters = 65536;

/** Enables the given ATRACE_TAG_* bits for the whole process; 0, the default, traces nothing. */
void setTraceTags(uint64_t tags);

/** Returns what was traced since the last call, oldest first. Thread-safe. */
std::vector<TraceCounter> takeTraceCounters();

}  // namespace android::hostplatform
