// SPDX-License-Identifier: Apache-2.0
// Sequences of registry operations on three codecs with properties of any content and a clock that
// jumps, against a model of which codecs are registered and which frames they hold.
//
// A timestamp is one of a few that meet again, or a number of up to 48 bits: sums of more would
// overflow, which ends the process on purpose.
#include "Fuzz.h"

#include <deque>
#include <vector>

#include <cutils/properties.h>
#include <mediaCodecLogger/ZephraMediaAnalytic.h>
#include <tests/support/FakeClock.h>
#include <tests/support/FakeCodec.h>
#include <tests/support/LogCapture.h>
#include <tests/support/ScopedProperties.h>

using namespace android;

namespace {

constexpr int kCodecs = 3;
constexpr long kDumpBits = 0x3800380;
constexpr long kEndOfStream = 1;

/** What the registry must know of a codec. */
struct Model {
    bool registered = false;
    bool video = false;
    bool decoder = false;
    int32_t maxQueue = 0;
    std::deque<long> frames;
    size_t owned = 0;
    long omxKey = 0;

    bool holds(long ts) const {
        return std::find(frames.begin(), frames.end(), ts) != frames.end();
    }
    /** True if there is such a frame; it is gone then. */
    bool take(long ts) {
        const auto frame = std::find(frames.begin(), frames.end(), ts);
        if (!registered || !video || frame == frames.end()) return false;
        frames.erase(frame);
        return true;
    }
    void decoded(long ts) {
        if (registered && video && decoder && holds(ts)) ++owned;
    }
    void configure(bool isVideo, bool trackingOff, bool isDecoder) {
        if (!registered) return;
        video = isVideo && !trackingOff;
        decoder = isDecoder;
    }
};

class Session {
  public:
    Session(const uint8_t* data, size_t size) : mIn(data, size) {
        for (auto& codec : mCodecs) codec = new test::FakeCodec;
        const uint8_t settings = mIn.byte();
        if ((settings & 1) != 0) setDebugMask();
        if ((settings & 2) != 0) {
            mMaxQueue = static_cast<int8_t>(mIn.byte());
            property_set("mediaanalytic.maxqueuesize", std::to_string(mMaxQueue).c_str());
        }
        if ((settings & 4) != 0) {
            for (const char* limit :
                 {"maxdequeuetime", "maxqueuetime", "maxmsgdelaytime", "maxdecodetime",
                  "vsyncperiod", "maxerrorframe", "maxearlytime"}) {
                property_set((std::string("mediaanalytic.") + limit).c_str(),
                             std::string(mIn.text()).c_str());
            }
        }
        if ((settings & 8) != 0) mClock.advanceMs(mIn.number<uint32_t>());
    }

    void run() {
        while (!mIn.atEnd()) {
            const uint8_t operation = mIn.byte();
            operate(operation % 16, operation / 16 % kCodecs);
            FUZZ_CHECK(heldLocks() == 0);
        }
        finish();
    }

  private:
    void setDebugMask() {
        const std::string text(mIn.text());
        const bool hex = text.compare(0, 2, "0x") == 0;
        const long mask = hex ? strtol(text.c_str(), nullptr, 16) : atoi(text.c_str());
        // Dumps would fill the disk.
        if ((mask & kDumpBits) == 0) property_set("mediaanalytic.debug", text.c_str());
    }

    long timestamp() {
        const int8_t small = static_cast<int8_t>(mIn.byte());
        if (small != -128) return small * 33333L;
        return mIn.number<int64_t>() % (1L << 48);
    }

    void operate(int operation, int which) {
        const sp<CodecBase>& codec = mCodecs[which];
        switch (operation) {
            case 0:
                add(which);
                break;
            case 1:
                mAnalytics.removeCodec(codec);
                if (mEnabled) forget(which);
                break;
            case 2:
                configure(which);
                break;
            case 3:
            case 4:
                announce(which);
                break;
            case 5:
                mAnalytics.updateInputFrame(codec, mIn.byte(), timestamp(), false,
                                            std::string(mIn.text()).c_str());
                break;
            case 6:
                mAnalytics.updateOmxInput(codec, nullptr, 0, timestamp(), mIn.byte(), mIn.byte());
                break;
            case 7:
                omxOutput();
                break;
            case 8:
                codec2Output(which);
                break;
            case 9:
                mAnalytics.updateOutputFrame(codec, timestamp());
                break;
            case 10:
                render(which);
                break;
            case 11:
                drop(which);
                break;
            case 12:
                flush(which);
                break;
            case 13:
                mAnalytics.updateQueueBuffer(codec, mIn.number<int64_t>(), mIn.number<int64_t>(),
                                             timestamp(), buffer());
                break;
            case 14:
                mAnalytics.updateDequeueBuffer(codec, mIn.number<int64_t>(), buffer(), mIn.byte());
                break;
            case 15:
                if (which == 0) mClock.advanceMs(mIn.byte());
                if (which == 1) mClock.advanceUs(mIn.number<uint32_t>());
                if (which == 2) mAnalytics.updateBuffers(mIn.byte() % 4, 1, mIn.byte(), 8);
                break;
        }
    }

    const GraphicBuffer* buffer() {
        // Told apart, never looked into.
        return reinterpret_cast<const GraphicBuffer*>(uintptr_t{mIn.byte()} % 16 * 64);
    }

    void add(int which) {
        const uint8_t bits = mIn.byte();
        const bool enabled = bits % 16 != 0;
        property_set("mediaanalytic.enable", enabled ? "true" : "no");
        const long omxKey = bits / 16 % 4, bufferKey = bits / 64;
        FUZZ_CHECK(mAnalytics.addCodec("codec %s%n", mCodecs[which], omxKey, bufferKey) == OK);
        mEnabled = enabled;
        if (!enabled) return;
        if (!mModels[which].registered) mOrder.push_back(which);
        mModels[which] = {};
        mModels[which].registered = true;
        mModels[which].maxQueue = mMaxQueue;
        mModels[which].omxKey = omxKey;
    }

    void configure(int which) {
        const sp<CodecBase>& codec = mCodecs[which];
        const uint8_t kind = mIn.byte();
        const bool video = (kind & 1) != 0, off = (kind & 2) != 0, decoder = (kind & 4) == 0;
        if ((kind & 8) != 0) {
            mAnalytics.updateCCodecConfigs(codec, video, off, decoder);
        } else {
            const uint8_t count = mIn.byte();
            mAnalytics.updateBuffers(codec, kind >> 4, count, mIn.byte(), video, off, decoder);
        }
        if (mEnabled) mModels[which].configure(video, off, decoder);
    }

    void forget(int which) {
        mModels[which] = {};
        mOrder.erase(std::remove(mOrder.begin(), mOrder.end(), which), mOrder.end());
    }

    void announce(int which) {
        Model& model = mModels[which];
        const uint8_t bits = mIn.byte();
        const long ts = timestamp();
        const std::string_view data = (bits & 1) != 0 ? mIn.text() : std::string_view();
        static const uint8_t kIv[16] = {};
        CryptoPlugin::SubSample subSamples[4];
        for (auto& sample : subSamples) {
            sample.mNumBytesOfClearData = (bits & 2) != 0 ? mIn.number<uint32_t>() >> 1 : 3;
            sample.mNumBytesOfEncryptedData = (bits & 2) != 0 ? mIn.number<uint32_t>() >> 1 : 4;
        }
        const bool answer = mAnalytics.updateInputFrame_pre(
                mCodecs[which], reinterpret_cast<const uint8_t*>(data.data()), data.size(), nullptr,
                (bits & 4) != 0 ? kIv : nullptr, bits % 5, (bits & 8) != 0 ? subSamples : nullptr,
                CryptoPlugin::kMode_AES_CTR, ts, mClock.nowUs() - bits, (bits & 16) != 0);
        FUZZ_CHECK(answer == (!mEnabled || model.registered));
        if (!mEnabled || !model.registered || !model.video) return;
        if (model.maxQueue < static_cast<int64_t>(model.frames.size())) {
            forget(which);
        } else {
            model.frames.push_back(ts);
        }
    }

    void omxOutput() {
        const long key = mIn.byte() % 4;
        const long ts = timestamp();
        const int flags = mIn.byte();
        const unsigned size = mIn.byte();
        mAnalytics.updateOmxOutput(key, ts, flags, size);
        if (!mEnabled || size == 0 || (flags & kEndOfStream) != 0) return;
        for (const int which : mOrder) {
            if (mModels[which].omxKey != key) continue;
            mModels[which].decoded(ts);
            break;
        }
    }

    void codec2Output(int which) {
        const long ts = timestamp();
        mAnalytics.updateC2Output(mCodecs[which], ts, mIn.byte());
        if (mEnabled) mModels[which].decoded(ts);
    }

    void flush(int which) {
        mAnalytics.flush(mCodecs[which]);
        if (!mEnabled) return;
        mModels[which].frames.clear();
        mModels[which].owned = 0;
    }

    void render(int which) {
        Model& model = mModels[which];
        const long ts = timestamp();
        mAnalytics.updateFrameRender(mCodecs[which], mIn.number<int64_t>(), ts);
        if (mEnabled && model.take(ts) && model.owned > 0) --model.owned;
    }

    void drop(int which) {
        Model& model = mModels[which];
        const long ts = timestamp();
        const bool rendered = mIn.byte() % 8 == 0;
        mLog.take();
        mAnalytics.dropFrameAnalyze(mCodecs[which], ts, rendered);
        const bool dropped = !rendered && mEnabled && model.take(ts);
        const bool unexpected = dropped && model.owned == 0;
        if (dropped && model.owned > 0) --model.owned;
        int warnings = 0;
        for (const auto& line : mLog.take()) {
            warnings += line.text == "mFramesOwnedByUs is 0 unexpectedly";
        }
        FUZZ_CHECK(warnings == unexpected);
    }

    /** As many frames as the model says are left; then nothing is. */
    void finish() {
        if (!mEnabled) {
            property_set("mediaanalytic.enable", "1");
            const sp<CodecBase> switching = new test::FakeCodec;
            mAnalytics.addCodec("", switching, 99, 99);
            mAnalytics.removeCodec(switching);
            FUZZ_CHECK(switching->getStrongCount() == 1);
            mEnabled = true;
        }
        for (int which = 0; which < kCodecs; ++which) {
            Model& model = mModels[which];
            const sp<CodecBase>& codec = mCodecs[which];
            const auto announceOne = [&] {
                return mAnalytics.updateInputFrame_pre(codec, nullptr, 0, nullptr, nullptr, 0,
                                                       nullptr, CryptoPlugin::kMode_Unencrypted, 1,
                                                       1, false);
            };
            int64_t room = 0;
            if (model.video) {
                while (announceOne()) ++room;
                // The one that was refused is among them.
                const int64_t held = static_cast<int64_t>(model.frames.size());
                const int64_t expected = std::max<int64_t>(int64_t{model.maxQueue} + 1 - held, 0);
                FUZZ_CHECK(room == expected + 1, "room for %lld frames, not %lld\n",
                           static_cast<long long>(room - 1), static_cast<long long>(expected));
            } else {
                FUZZ_CHECK(announceOne() == model.registered);
            }
            mAnalytics.removeCodec(codec);
            FUZZ_CHECK(!announceOne());
            FUZZ_CHECK(codec->getStrongCount() == 1, "the registry keeps a codec\n");
        }
        for (const auto& line : mLog.take()) {
            FUZZ_CHECK(line.tag == "ZMediaAnalyticV" && line.priority >= 4 && line.priority <= 5);
        }
    }

    fuzz::Bytes mIn;
    test::ScopedProperties mProperties;
    test::FakeClock mClock{1000};
    test::LogCapture mLog;
    ZephraMediaAnalytic& mAnalytics = ZephraMediaAnalytic::instance();
    sp<CodecBase> mCodecs[kCodecs];
    Model mModels[kCodecs];
    /** The registered codecs in the order of registration. */
    std::vector<int> mOrder;
    bool mEnabled = mAnalytics.isEnabled();
    int32_t mMaxQueue = 128;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // Beyond that, sums of timestamps could overflow.
    if (size > 4096) return 0;
    Session(data, size).run();
    return 0;
}
