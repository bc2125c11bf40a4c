// SPDX-License-Identifier: Apache-2.0
#include <tests/analytics/FramePlayer.h>

#include <time.h>

#include <utility>

namespace android::test {

namespace {

long monotonicUs() {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000000L + now.tv_nsec / 1000;
}

}  // namespace

FramePlayer::FramePlayer(const CodecKind& kind)
    : kind(kind),
      key(reinterpret_cast<long>(this)),
      codec(new FakeCodec),
      analytics(ZephraMediaAnalytic::instance()) {
    analytics.addCodec(kind.name, codec, key, key);
    if (kind.isCodec2) {
        analytics.updateCCodecConfigs(codec, kind.isVideo, kind.trackingOff, kind.isDecoder);
    } else {
        buffers(0, 0);
    }
}

FramePlayer::~FramePlayer() {
    analytics.removeCodec(codec);
}

bool FramePlayer::announce(long timeUs) {
    return analytics.updateInputFrame_pre(codec, nullptr, 0, nullptr, nullptr, 0, nullptr,
                                          CryptoPlugin::kMode_Unencrypted, timeUs, monotonicUs(),
                                          false);
}

void FramePlayer::queue(long timeUs) {
    analytics.updateInputFrame(codec, 1000, timeUs, false, kind.name);
}

void FramePlayer::handOver(long timeUs, unsigned flags) {
    if (!kind.isCodec2) analytics.updateOmxInput(codec, nullptr, 1000, timeUs, 3, flags);
}

void FramePlayer::decode(long timeUs) {
    if (kind.isCodec2) {
        analytics.updateC2Output(codec, timeUs, 0);
    } else {
        analytics.updateOmxOutput(key, timeUs, 0, 500);
    }
}

void FramePlayer::output(long timeUs) {
    analytics.updateOutputFrame(codec, timeUs);
}

void FramePlayer::render(long timeUs, int64_t leadMs) {
    renderAt(timeUs, (monotonicUs() / 1000 + leadMs) * 1000000);
}

void FramePlayer::renderAt(long timeUs, long renderTimeNs) {
    analytics.updateFrameRender(codec, renderTimeNs, timeUs);
}

void FramePlayer::drop(long timeUs) {
    analytics.dropFrameAnalyze(codec, timeUs, false);
}

void FramePlayer::feed(long timeUs) {
    announce(timeUs);
    queue(timeUs);
    handOver(timeUs);
}

void FramePlayer::deliver(long timeUs) {
    decode(timeUs);
    output(timeUs);
}

void FramePlayer::toDisplay(uintptr_t buffer, int64_t startMs, int64_t renderMs, long mediaTimeUs) {
    analytics.updateQueueBuffer(codec, startMs * 1000, renderMs * 1000000, mediaTimeUs,
                                reinterpret_cast<const GraphicBuffer*>(buffer));
}

void FramePlayer::fromDisplay(uintptr_t buffer, int64_t startMs, size_t ownedByComponent) {
    analytics.updateDequeueBuffer(codec, startMs * 1000, reinterpret_cast<const void*>(buffer),
                                  ownedByComponent);
}

void FramePlayer::buffers(unsigned port, size_t count, size_t minUndequeued) {
    analytics.updateBuffers(codec, port, count, minUndequeued, kind.isVideo, kind.trackingOff,
                            kind.isDecoder);
}

LogLine info(std::string text) {
    return {ANDROID_LOG_INFO, "ZMediaAnalyticV", std::move(text)};
}

LogLine warning(std::string text) {
    return {ANDROID_LOG_WARN, "ZMediaAnalyticV", std::move(text)};
}

void AnalyticsTest::restartNumbers() {
    FramePlayer().flush();
}

}  // namespace android::test
