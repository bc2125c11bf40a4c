// SPDX-License-Identifier: Apache-2.0
#include "Faults.h"

#include <unistd.h>

#include <algorithm>
#include <utility>

#include "MediaClock.h"

namespace android::codecplay {

Faults::Faults(std::vector<Delay> delays, std::vector<FrameRange> drops,
               const std::atomic<bool>& stop)
    : mDelays(std::move(delays)), mDrops(std::move(drops)), mStop(stop) {}

int64_t Faults::delayNs(Fault fault, int64_t frame) const {
    int64_t delayMs = 0;
    for (const Delay& delay : mDelays) {
        if (delay.fault == fault && delay.frames.contains(frame)) delayMs += delay.delayMs;
    }
    return delayMs * 1'000'000;
}

void Faults::hold(Fault fault, int64_t frame) const {
    // In steps, because who presses Ctrl-C does not want to wait for the rest of a minute.
    constexpr int64_t kStepNs = 50'000'000;
    const int64_t delayNs = this->delayNs(fault, frame);
    if (delayNs == 0) return;
    const int64_t untilNs = monotonicNs() + delayNs;
    for (int64_t leftNs = delayNs; leftNs > 0 && !mStop; leftNs = untilNs - monotonicNs()) {
        usleep(static_cast<useconds_t>(std::min(leftNs, kStepNs) / 1000 + 1));
    }
}

bool Faults::drops(int64_t frame) const {
    return std::any_of(mDrops.begin(), mDrops.end(),
                       [&](const FrameRange& range) { return range.contains(frame); });
}

}  // namespace android::codecplay
