// SPDX-License-Identifier: Apache-2.0
#include <tests/support/FakeClock.h>

#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <atomic>

namespace {

constexpr int64_t kNsPerSecond = 1000000000;

std::atomic<bool> gIsFrozen{false};
std::atomic<int64_t> gNowNs{0};
std::atomic<int64_t> gReads{0};
std::atomic<uint64_t> gLeapSeconds{0};  // unsigned, because it may come near the limits

}  // namespace

// Takes precedence over the C library's for every library of the process. The system call needs no
// set-up, so that this works before constructors have run.
extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept {
    if (clock != CLOCK_MONOTONIC || !gIsFrozen.load(std::memory_order_acquire)) {
        return static_cast<int>(syscall(SYS_clock_gettime, clock, time));
    }
    gReads.fetch_add(1, std::memory_order_relaxed);
    const int64_t now = gNowNs.load(std::memory_order_relaxed);
    time->tv_sec =
            static_cast<time_t>(gLeapSeconds.load(std::memory_order_relaxed) + now / kNsPerSecond);
    time->tv_nsec = now % kNsPerSecond;
    return 0;
}

namespace android::test {

FakeClock::FakeClock(int64_t startMs) {
    gNowNs = startMs * 1000000;
    gReads = 0;
    gLeapSeconds = 0;
    gIsFrozen = true;
}

FakeClock::~FakeClock() {
    gIsFrozen = false;
}

void FakeClock::leapTo(int64_t seconds) {
    gLeapSeconds = static_cast<uint64_t>(seconds) - gNowNs / kNsPerSecond;
}

int64_t FakeClock::nowUs() const {
    return gNowNs / 1000;
}

int64_t FakeClock::reads() const {
    return gReads;
}

void FakeClock::advanceUs(int64_t us) {
    gNowNs += us * 1000;
}

}  // namespace android::test
