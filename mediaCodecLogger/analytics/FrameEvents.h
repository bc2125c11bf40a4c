// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <mediaCodecLogger/ZephraMediaAnalytic.h>
#include <mediaCodecLogger/analytics/FrameTracker.h>

namespace android {

/**
 * The events that the logger passes on to the frame analytics, by reference: the logger keeps its
 * codec itself, and a codec and a format's name passed by value would be paid for with every frame.
 * The registry's operations of the same names are these for everyone else, and document them.
 */
class FrameEvents {
  public:
    explicit FrameEvents(ZephraMediaAnalytic& registry = ZephraMediaAnalytic::instance())
        : mRegistry(registry) {}

    bool updateInputFrame_pre(const sp<CodecBase>& codec, const uint8_t* data, size_t size,
                              const uint8_t* key, const uint8_t* iv, size_t numSubSamples,
                              const CryptoPlugin::SubSample* subSamples, CryptoPlugin::Mode mode,
                              long timeUs, long nowUs, bool encrypted) {
        if (!mRegistry.isEnabled()) return true;
        const ZephraMediaAnalytic::TrackerRef tracker = mRegistry.lookUp(codec.get());
        if (tracker == nullptr) return false;
        if (!tracker.unsafe_get()->updateInputFrame_pre(data, size, key, iv, numSubSamples,
                                                        subSamples, mode, timeUs, nowUs,
                                                        encrypted)) {
            mRegistry.removeCodec(codec);
        }
        return true;
    }

    void updateInputFrame(const sp<CodecBase>& codec, size_t size, long timeUs, bool secure,
                          const AString& formatName) {
        mRegistry.deliver(codec, [&](Tracker& tracker) {
            tracker.updateInputFrame(size, timeUs, secure, formatName);
        });
    }

    void updateOutputFrame(const sp<CodecBase>& codec, long timeUs) {
        mRegistry.deliver(codec, [&](Tracker& tracker) { tracker.updateOutputFrame(timeUs); });
    }

    void updateFrameRender(const sp<CodecBase>& codec, long renderTimeNs, long timeUs) {
        mRegistry.deliver(
                codec, [&](Tracker& tracker) { tracker.updateFrameRender(renderTimeNs, timeUs); });
    }

    void dropFrameAnalyze(const sp<CodecBase>& codec, long timeUs) {
        mRegistry.deliver(codec, [&](Tracker& tracker) { tracker.dropFrameAnalyze(timeUs); });
    }

    void flush(const sp<CodecBase>& codec) {
        mRegistry.deliver(codec, [](Tracker& tracker) { tracker.flush(); });
    }

  private:
    using Tracker = ZephraMediaAnalytic::FrameTracker;

    ZephraMediaAnalytic& mRegistry;
};

}  // namespace android
