// SPDX-License-Identifier: Apache-2.0
// Whole frames, and each event of a frame on its own.
#include <benchmarks/Measure.h>
#include <benchmarks/Steps.h>

namespace android::bench {

namespace {

constexpr size_t kUsualInFlight = 8;

template <void (Stream::*Frame)()>
void playFrames(benchmark::State& state, Component component, size_t inFlight) {
    Stream stream(playedCodec(state.thread_index()), component, inFlight);
    (stream.*Frame)();
    HeapMeter heap(state);
    for (auto _ : state) (stream.*Frame)();
}

void frameLoggerOnlyOff(benchmark::State& state) {
    playFrames<&Stream::loggerFrame>(state, Component::kNone, kUsualInFlight);
}
BENCHMARK(frameLoggerOnlyOff)->Name("frame: logger's events, analysis off")->ThreadRange(1, 8);

void frameOff(benchmark::State& state) {
    playFrames<&Stream::frame>(state, Component::kNone, kUsualInFlight);
}
BENCHMARK(frameOff)->Name("frame: all events, analysis off");

void frameLoggerOnlyOn(benchmark::State& state) {
    playFrames<&Stream::loggerFrame>(state, Component::kOmx, kUsualInFlight);
}
BENCHMARK(frameLoggerOnlyOn)->Name("frame: logger's events, analysis on, in flight 8");

void frameOmx(benchmark::State& state) {
    playFrames<&Stream::frame>(state, Component::kOmx, static_cast<size_t>(state.range(0)));
}
BENCHMARK(frameOmx)
        ->Name("frame: all events (OMX), analysis on, in flight")
        ->Arg(1)
        ->Arg(8)
        ->Arg(64)
        ->Arg(128);

void frameCodec2(benchmark::State& state) {
    playFrames<&Stream::frame>(state, Component::kCodec2, static_cast<size_t>(state.range(0)));
}
BENCHMARK(frameCodec2)
        ->Name("frame: all events (Codec2), analysis on, in flight")
        ->Arg(1)
        ->Arg(8)
        ->Arg(64)
        ->Arg(128);

void frameOnThreads(benchmark::State& state) {
    playFrames<&Stream::frame>(state, Component::kOmx, kUsualInFlight);
}
BENCHMARK(frameOnThreads)
        ->Name("frame: all events (OMX), analysis on, in flight 8, own codec")
        ->ThreadRange(2, 8);

void droppedFrame(benchmark::State& state) {
    const auto component = state.range(0) ? Component::kOmx : Component::kNone;
    playFrames<&Stream::droppedFrame>(state, component, kUsualInFlight);
}
BENCHMARK(droppedFrame)->Name("frame dropped: all events, analysis on")->Arg(0)->Arg(1);

/**
 * Times one step of frames that pass all of them. The frames pass in groups, each step for a whole
 * group, so that one pair of clock reads is spread over many events.
 */
template <size_t N>
void timeStep(benchmark::State& state, const Step (&steps)[N], size_t timed, Component component) {
    constexpr int64_t kGroup = 16;
    Stream stream(playedCodec(0), component, 0);
    Laps laps(state);
    while (state.KeepRunningBatch(kGroup)) {
        const int64_t first = stream.codec().next;
        stream.codec().next += kGroup;
        for (size_t i = 0; i < N; ++i) {
            if (i == timed) laps.start();
            for (int64_t n = 0; n < kGroup; ++n) (stream.*steps[i].event)(first + n);
            if (i == timed) laps.stop();
        }
    }
}

template <size_t N>
void registerSteps(const Step (&steps)[N], size_t first, Component component, const char* suffix) {
    for (size_t i = first; i < N; ++i) {
        const std::string name = std::string("event: ") + steps[i].name + suffix;
        benchmark::RegisterBenchmark(name.c_str(), [&steps, i, component](benchmark::State& state) {
            timeStep(state, steps, i, component);
        })->UseManualTime();
    }
}

const bool kRegistered = [] {
    registerSteps(kOmxSteps, 0, Component::kNone, ", analysis off");
    registerSteps(kOmxSteps, 0, Component::kOmx, ", analysis on");
    registerSteps(kCodec2Steps, 2, Component::kCodec2, ", analysis on");
    return true;
}();

}  // namespace

}  // namespace android::bench
