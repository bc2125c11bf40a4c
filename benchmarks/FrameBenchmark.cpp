// SPDX-License-Identifier: Apache-2.0
// Whole frames, and each event of a frame on its own.
#include <benchmarks/Measure.h>
#include <benchmarks/Steps.h>

namespace android::bench {

namespace {

template <void (Stream::*Frame)(), Component kComponent>
void play(benchmark::State& state) {
    playFrames<Frame>(state, playedCodec(state.thread_index()), kComponent, kUsualInFlight);
}

template <Component kComponent>
void playWithInFlight(benchmark::State& state) {
    playFrames<&Stream::frame>(state, playedCodec(0), kComponent,
                               static_cast<size_t>(state.range(0)));
}

BENCHMARK_TEMPLATE(play, &Stream::loggerFrame, Component::kNone)
        ->Name("frame, logger's events, analysis off")
        ->ThreadRange(1, kMaxThreads);
BENCHMARK_TEMPLATE(play, &Stream::frame, Component::kNone)->Name("frame, all events, analysis off");
BENCHMARK_TEMPLATE(play, &Stream::loggerFrame, Component::kOmx)
        ->Name("frame, logger's events, analysis on, in flight 8");
BENCHMARK_TEMPLATE(playWithInFlight, Component::kOmx)
        ->Name("frame, all events (OMX), analysis on, in flight")
        ->ArgsProduct({{1, 8, 64, 128}});
BENCHMARK_TEMPLATE(playWithInFlight, Component::kCodec2)
        ->Name("frame, all events (Codec2), analysis on, in flight")
        ->ArgsProduct({{1, 8, 64, 128}});
BENCHMARK_TEMPLATE(play, &Stream::frame, Component::kOmx)
        ->Name("frame, all events (OMX), analysis on, in flight 8,")
        ->ThreadRange(2, kMaxThreads);
BENCHMARK_TEMPLATE(play, &Stream::droppedFrame, Component::kNone)
        ->Name("frame dropped, all events, analysis off");
BENCHMARK_TEMPLATE(play, &Stream::droppedFrame, Component::kOmx)
        ->Name("frame dropped, all events (OMX), analysis on, in flight 8");

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
