// SPDX-License-Identifier: Apache-2.0
#include <cutils/trace.h>

#include <atomic>
#include <mutex>
#include <utility>

#include <hostplatform/Trace.h>

namespace {

using android::hostplatform::TraceCounter;

std::atomic<uint64_t> gTags{0};

struct Counters {
    std::mutex lock;
    std::vector<TraceCounter> written;
};

// Never destroyed: threads may still trace while the process exits.
Counters& counters() {
    static Counters& instance = *new Counters;
    return instance;
}

}  // namespace

extern "C" {

uint64_t atrace_get_enabled_tags() {
    return gTags.load(std::memory_order_relaxed);
}

// cutils/trace.h declares the bodies only inside the inline functions that call them.
void atrace_int64_body(const char* name, int64_t value);
void atrace_int_body(const char* name, int32_t value);

void atrace_int64_body(const char* name, int64_t value) {
    std::lock_guard<std::mutex> guard(counters().lock);
    if (counters().written.size() == android::hostplatform::kMaxTraceCounters) return;
    counters().written.push_back({name, value});
}

void atrace_int_body(const char* name, int32_t value) {
    atrace_int64_body(name, value);
}

}  // extern "C"

namespace android::hostplatform {

void setTraceTags(uint64_t tags) {
    gTags.store(tags, std::memory_order_relaxed);
}

std::vector<TraceCounter> takeTraceCounters() {
    std::lock_guard<std::mutex> guard(counters().lock);
    return std::exchange(counters().written, {});
}

}  // namespace android::hostplatform
