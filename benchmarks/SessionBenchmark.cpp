// SPDX-License-Identifier: Apache-2.0
// What happens once in a while or once a session, and what a codec takes of the heap.
#include <benchmarks/Measure.h>

#include <media/stagefright/foundation/AMessage.h>

namespace android::bench {

namespace {

void formatChange(benchmark::State& state) {
    startSecondThread();
    const Codec codec;
    sp<AMessage> formats[2];
    for (int i = 0; i < 2; ++i) {
        formats[i] = new AMessage;
        formats[i]->setInt32("width", i == 0 ? 1920 : 1280);
        formats[i]->setInt32("height", i == 0 ? 1080 : 720);
        formats[i]->setInt32("color-standard", 1);
        formats[i]->setInt32("vendor.mtk-codec2.hdr-type", i);
        formats[i]->setInt32("vendor.mtk-codec2.color-depth", 8 + 2 * i);
    }
    size_t next = 0;
    HeapMeter heap(state);
    for (auto _ : state) codec.logger->updateFormatChanged(formats[next++ % 2]);
}
BENCHMARK(formatChange)->Name("updateFormatChanged");

void status(benchmark::State& state) {
    HeapMeter heap(state);
    for (auto _ : state) benchmark::DoNotOptimize(playedCodec(0).logger->getStatus());
}
BENCHMARK(status)->Name("getStatus");

void flush(benchmark::State& state, Component component) {
    startSecondThread();
    Codec codec;
    Stream stream(codec, component, kUsualInFlight);
    codec.logger->updateMetricsForFlush();
    HeapMeter heap(state);
    for (auto _ : state) codec.logger->updateMetricsForFlush();
}
BENCHMARK_CAPTURE(flush, off, Component::kNone)->Name("updateMetricsForFlush, analysis off");
BENCHMARK_CAPTURE(flush, on, Component::kOmx)->Name("updateMetricsForFlush, analysis on");

/** The report alone; the session before it is not timed. */
void report(benchmark::State& state) {
    startSecondThread();
    Laps laps(state);
    for (auto _ : state) {
        Codec codec;
        {
            Stream stream(codec, Component::kNone, 0);
            for (int i = 0; i < 10; ++i) stream.loggerFrame();
        }
        laps.start();
        const AString text = codec.logger->logMetrics();
        laps.stop();
    }
}
BENCHMARK(report)->Name("logMetrics, no service, records to nowhere")->UseManualTime();

void lifeCycle(benchmark::State& state, bool analysisOn) {
    startSecondThread();
    const sp<CodecBase> backEnd = new test::FakeCodec;
    switchAnalytics(analysisOn);
    int64_t bytes = 0;
    HeapMeter heap(state);
    for (auto _ : state) {
        const HeapUse before = heapUse();
        const sp<MediaCodecLogger> logger = MediaCodecLogger::Create(-1, 10000);
        analytics().addCodec("c2.vendor.avc.decoder", backEnd, 1, 1);
        logger->configure("c2.vendor.avc.decoder", "video/avc", 0, true, 0, 0, backEnd, true);
        bytes = (heapUse() - before).bytes;
    }
    state.counters[kBytes] = static_cast<double>(bytes);
}
BENCHMARK_CAPTURE(lifeCycle, off, false)->Name("Create + configure + destruction, analysis off");
BENCHMARK_CAPTURE(lifeCycle, on, true)
        ->Name("Create + addCodec + configure + destruction, analysis on");

}  // namespace

}  // namespace android::bench
