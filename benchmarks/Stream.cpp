// SPDX-License-Identifier: Apache-2.0
#include <benchmarks/Stream.h>

#include <cutils/properties.h>

namespace android::bench {

namespace {

constexpr unsigned kOutputPort = 1;

}  // namespace

const uint8_t Stream::kData[kOutputBuffers] = {};

void switchAnalytics(bool on) {
    const sp<CodecBase> anyCodec = new test::FakeCodec;
    property_set("mediaanalytic.enable", on ? "true" : "false");
    analytics().addCodec("switch", anyCodec, -1, -1);
    analytics().removeCodec(anyCodec);
}

Codec::Codec() : logger(MediaCodecLogger::Create(-1, 10000)) {
    logger->configure("c2.vendor.avc.decoder", "video/avc", 0, true /* isDecoder */, 0, 0, backEnd,
                      true /* loggingEnabled */);
}

std::vector<std::unique_ptr<Codec>> playedCodecs(size_t count, void (*wait)()) {
    std::vector<std::unique_ptr<Codec>> codecs;
    for (size_t i = 0; i < count; ++i) codecs.push_back(std::make_unique<Codec>());
    const auto play = [&] {
        for (const auto& codec : codecs) {
            Stream stream(*codec, Component::kNone, 0);
            for (int i = 0; i < 3; ++i) stream.loggerFrame();
        }
    };
    play();
    wait();
    play();
    return codecs;
}

Stream::Stream(Codec& codec, Component component, size_t inFlight)
    : mCodec(codec),
      mLogger(*codec.logger),
      mComponent(component),
      mInFlight(inFlight),
      mKey(reinterpret_cast<long>(&codec)) {
    switchAnalytics(component != Component::kNone);
    analytics().addCodec("benchmark", codec.backEnd, mKey, mKey);
    if (component == Component::kCodec2) {
        analytics().updateCCodecConfigs(codec.backEnd, true, false, true);
        analytics().updateBuffers(mKey, kOutputPort, kOutputBuffers, kOutputBuffers);
    } else {
        analytics().updateBuffers(codec.backEnd, kOutputPort, kOutputBuffers, kOutputBuffers, true,
                                  false, true);
    }
    for (int64_t frame = mCodec.next; frame < newest(); ++frame) announce(frame);
}

Stream::~Stream() {
    analytics().removeCodec(mCodec.backEnd);
    mCodec.next = newest();
}

void Stream::input() {
    const int64_t frame = newest();
    announce(frame);
    queue(frame);
    if (mComponent != Component::kCodec2) omxInput(frame);
}

void Stream::loggerFrame() {
    announce(newest());
    queue(newest());
    output(mCodec.next);
    release(mCodec.next);
    render(mCodec.next);
    ++mCodec.next;
}

void Stream::frame() {
    input();
    const int64_t frame = mCodec.next;
    if (mComponent == Component::kCodec2) {
        codec2Output(frame);
    } else {
        omxOutput(frame);
    }
    output(frame);
    release(frame);
    render(frame);
    toDisplay(frame);
    fromDisplay(frame);
    ++mCodec.next;
}

void Stream::droppedFrame() {
    input();
    const int64_t frame = mCodec.next;
    output(frame);
    drop(frame);
    ++mCodec.next;
}

}  // namespace android::bench
