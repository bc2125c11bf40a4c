// SPDX-License-Identifier: Apache-2.0
// What runs first: the clock, which everything else is compared with, and frames while the process
// has no other thread.
#include <benchmarks/Measure.h>

namespace android::bench {

namespace {

void readClock(benchmark::State& state) {
    for (auto _ : state) {
        timespec now;
        clock_gettime(CLOCK_MONOTONIC, &now);
        benchmark::DoNotOptimize(now);
    }
}
BENCHMARK(readClock)->Name(kClockBenchmark);

void playAlone(benchmark::State& state, Component component) {
    static const auto& codecs = *new auto(playedCodecs(1));
    playFrames<&Stream::frame>(state, *codecs[0], component, kUsualInFlight);
}
BENCHMARK_CAPTURE(playAlone, omx, Component::kOmx)
        ->Name("only thread of the process: frame, all events (OMX), analysis on, in flight 8");
BENCHMARK_CAPTURE(playAlone, codec2, Component::kCodec2)
        ->Name("only thread of the process: frame, all events (Codec2), analysis on, in flight 8");

}  // namespace

}  // namespace android::bench
