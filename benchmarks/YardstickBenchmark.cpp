// SPDX-License-Identifier: Apache-2.0
// For scale: what an event is made of, and what a line in a log or a trace costs.
#include <fcntl.h>
#include <inttypes.h>
#include <stdio.h>
#include <sys/socket.h>
#include <unistd.h>

#include <benchmarks/Measure.h>
#include <benchmarks/NullLog.h>
#include <utils/Mutex.h>

namespace android::bench {

namespace {

void lockAndUnlock(benchmark::State& state) {
    startSecondThread();
    Mutex mutex;
    for (auto _ : state) {
        Mutex::Autolock lock(mutex);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(lockAndUnlock)->Name("Mutex, locked and unlocked");

template <template <typename> class Pointer>
void takeReference(benchmark::State& state) {
    const sp<CodecBase> object = new test::FakeCodec;
    for (auto _ : state) {
        const Pointer<CodecBase> copy(object);
        benchmark::DoNotOptimize(copy);
    }
}
BENCHMARK_TEMPLATE(takeReference, sp)->Name("sp<>, copied and dropped");
BENCHMARK_TEMPLATE(takeReference, wp)->Name("wp<>, made and dropped");

void logFrames(benchmark::State& state) {
    startSecondThread();
    HeapMeter heap(state);
    int64_t frame = 0;
    for (auto _ : state) {
        __android_log_print(ANDROID_LOG_INFO, "Benchmark",
                            "%s frame %" PRId64 " queued at %" PRId64 ", size %zu",
                            "c2.vendor.avc.decoder", frame, frame * 33, sizeof(frame));
        ++frame;
    }
}

void logToNowhere(benchmark::State& state) {
    discardLog();
    logFrames(state);
}
BENCHMARK(logToNowhere)->Name("log line, formatted and thrown away");

void logToDevNull(benchmark::State& state) {
    const int standardError = dup(STDERR_FILENO);
    const int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(null, STDERR_FILENO);
    logToStandardError();
    logFrames(state);
    discardLog();
    dup2(standardError, STDERR_FILENO);
    close(null);
    close(standardError);
}
BENCHMARK(logToDevNull)->Name("log line, liblog's standard error to /dev/null");

int gLogSocket[2] = {-1, -1};

/** A device's liblog sends each line to the log daemon as a datagram; here nobody is woken by it.
 */
void logToSocket(benchmark::State& state) {
    if (socketpair(AF_UNIX, SOCK_DGRAM, 0, gLogSocket) != 0) {
        state.SkipWithError("no socket pair");
        return;
    }
    __android_log_set_logger([](const __android_logger_data*, const char* message) {
        char received[1024];
        if (write(gLogSocket[0], message, strlen(message)) < 0 ||
            read(gLogSocket[1], received, sizeof(received)) < 0) {
            abort();
        }
    });
    logFrames(state);
    discardLog();
    for (const int end : gLogSocket) close(end);
}
BENCHMARK(logToSocket)->Name("log line, datagram sent and received, as to a log daemon");

/** A counter in the format of the kernel's trace marker, into the marker where it can be opened. */
void traceEvent(benchmark::State& state) {
    int marker = open("/sys/kernel/tracing/trace_marker", O_WRONLY | O_CLOEXEC);
    state.SetLabel(marker >= 0 ? "trace_marker" : "/dev/null");
    if (marker < 0) marker = open("/dev/null", O_WRONLY | O_CLOEXEC);
    HeapMeter heap(state);
    int64_t value = 0;
    for (auto _ : state) {
        char text[128];
        const int length =
                snprintf(text, sizeof(text), "C|%d|%s|%" PRId64, getpid(), "frames", ++value);
        if (write(marker, text, static_cast<size_t>(length)) < 0) abort();
    }
    close(marker);
}
BENCHMARK(traceEvent)->Name("trace event");

}  // namespace

}  // namespace android::bench
