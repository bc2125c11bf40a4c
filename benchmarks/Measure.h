// SPDX-License-Identifier: Apache-2.0
// What the benchmarks share.
#pragma once

#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <thread>

#include <benchmark/benchmark.h>
#include <benchmarks/Heap.h>
#include <benchmarks/Report.h>
#include <benchmarks/Stream.h>

namespace android::bench {

constexpr int kMaxThreads = 8;

inline std::vector<std::unique_ptr<Codec>> playedCodecs(size_t count) {
    return playedCodecs(count, [] { usleep(510000); });
}

/**
 * Sees to it that the process has a second thread, as every media process has: the C library's
 * locks take short cuts while there is only one.
 */
inline void startSecondThread() {
    static const bool started = [] {
        std::thread([] { pause(); }).detach();
        return true;
    }();
    benchmark::DoNotOptimize(started);
}

/** The codecs that the benchmarks play on: one a thread. */
inline Codec& playedCodec(int index) {
    static const auto& codecs = *new auto(playedCodecs(kMaxThreads));
    startSecondThread();
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

constexpr size_t kUsualInFlight = 8;

template <void (Stream::*Frame)()>
void playFrames(benchmark::State& state, Codec& codec, Component component, size_t inFlight) {
    Stream stream(codec, component, inFlight);
    for (int i = 0; i < 100; ++i) (stream.*Frame)();
    HeapMeter heap(state);
    for (auto _ : state) (stream.*Frame)();
}

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
 * The manual time of a benchmark that has more to do than what it measures. The median lap counts
 * for all: on a busy machine a few laps take a hundred times as long.
 */
class Laps {
  public:
    explicit Laps(benchmark::State& state) : mState(state) { mSeconds.reserve(1 << 16); }
    ~Laps() {
        const auto middle = mSeconds.begin() + static_cast<ptrdiff_t>(mSeconds.size() / 2);
        std::nth_element(mSeconds.begin(), middle, mSeconds.end());
        mState.SetIterationTime(*middle * static_cast<double>(mSeconds.size()));
    }
    Laps(const Laps&) = delete;
    Laps& operator=(const Laps&) = delete;

    void start() { mWatch = Stopwatch(); }
    void stop() { mSeconds.push_back(mWatch.elapsed()); }

  private:
    benchmark::State& mState;
    Stopwatch mWatch;
    std::vector<double> mSeconds;
};

}  // namespace android::bench
