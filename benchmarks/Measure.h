// SPDX-License-Identifier: Apache-2.0
// What the benchmarks share.
#pragma once

#include <time.h>
#include <unistd.h>

#include <algorithm>

#include <benchmark/benchmark.h>
#include <benchmarks/Heap.h>
#include <benchmarks/Report.h>
#include <benchmarks/Stream.h>

namespace android::bench {

constexpr int kMaxThreads = 8;

/** The codecs that the benchmarks play on: one a thread. */
inline Codec& playedCodec(int index) {
    static const auto& codecs = *new auto(playedCodecs(kMaxThreads, [] { usleep(510000); }));
    return *codecs[static_cast<size_t>(index)];
}

/** Counts the heap's use of a benchmark's iterations, between start() and its end. */
class HeapMeter {
  public:
    explicit HeapMeter(benchmark::State& state) : mState(state) {}
    ~HeapMeter() {
        const HeapUse use = heapUse() - mStart;
        mState.counters[kAllocations] = benchmark::Counter(static_cast<double>(use.allocations),
                                                           benchmark::Counter::kAvgIterations);
    }
    HeapMeter(const HeapMeter&) = delete;
    HeapMeter& operator=(const HeapMeter&) = delete;

  private:
    benchmark::State& mState;
    const HeapUse mStart = heapUse();
};

/** Seconds between its creation and elapsed(). */
class Stopwatch {
  public:
    double elapsed() const { return now() - mStart; }

  private:
    static double now() {
        timespec time;
        clock_gettime(CLOCK_MONOTONIC, &time);
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
    }
    double mStart = now();
};

/**
 * The manual time and the allocations of a benchmark that has more to do than what it measures. The
 * median lap counts for all: on a busy machine a few laps take a hundred times as long.
 */
class Laps {
  public:
    explicit Laps(benchmark::State& state) : mState(state) { mSeconds.reserve(1 << 16); }
    ~Laps() {
        const auto middle = mSeconds.begin() + static_cast<ptrdiff_t>(mSeconds.size() / 2);
        std::nth_element(mSeconds.begin(), middle, mSeconds.end());
        mState.SetIterationTime(*middle * static_cast<double>(mSeconds.size()));
        mState.counters[kAllocations] = benchmark::Counter(static_cast<double>(mAllocations),
                                                           benchmark::Counter::kAvgIterations);
    }
    Laps(const Laps&) = delete;
    Laps& operator=(const Laps&) = delete;

    void start() {
        mHeap = heapUse();
        mWatch = Stopwatch();
    }
    void stop() {
        const double seconds = mWatch.elapsed();
        mAllocations += (heapUse() - mHeap).allocations;
        mSeconds.push_back(seconds);
    }

  private:
    benchmark::State& mState;
    Stopwatch mWatch;
    HeapUse mHeap;
    std::vector<double> mSeconds;
    int64_t mAllocations = 0;
};

}  // namespace android::bench
