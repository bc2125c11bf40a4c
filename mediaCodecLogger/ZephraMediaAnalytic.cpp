// SPDX-License-Identifier: Apache-2.0

#define LOG_TAG "ZMediaAnalyticV"

#include <mediaCodecLogger/ZephraMediaAnalytic.h>

#include <errno.h>
#include <unistd.h>

#include <cutils/properties.h>
#include <log/log.h>
#include <media/stagefright/CodecBase.h>

#include <closed/AppIdentityManager.h>
#include <mediaCodecLogger/analytics/FrameEvents.h>

namespace android {

ANDROID_SINGLETON_STATIC_INSTANCE(ZephraMediaAnalytic)

namespace {

using FrameTracker = ZephraMediaAnalytic::FrameTracker;

/** Codecs followed at once; each may keep a queue of records and three dump files. */
constexpr size_t kMaxTrackers = 101;

}  // namespace

ZephraMediaAnalytic::ZephraMediaAnalytic() = default;
ZephraMediaAnalytic::~ZephraMediaAnalytic() = default;

// Registration

status_t ZephraMediaAnalytic::addCodec(const AString& name, sp<CodecBase> codec, long omxKey,
                                       long bufferKey) {
    // Declared before the lock, so that a tracker that goes closes its files after it.
    sp<FrameTracker> tracker;
    sp<FrameTracker> replaced;
    Mutex::Autolock lock(mLock);
    // Read with each codec, so that the analytics can be switched while the device plays.
    mEnabled = property_get_bool("mediaanalytic.enable", false);
    if (!mEnabled) return OK;

    tracker = new FrameTracker(name);
    if (mTrackers.size() >= kMaxTrackers) {
        ALOGW("%s Warning too much track %p 0x%lx c:%s s:%zd", __func__, codec.get(), omxKey,
              name.c_str(), static_cast<ssize_t>(mTrackers.size()));
        return -EMFILE;
    }
    const ssize_t index = mTrackers.indexOfKey(codec);
    if (index >= 0) {
        replaced = mTrackers.valueAt(index);
        for (CodecItem& item : mCodecs) {
            if (item.mCodec != codec) continue;
            const CodecItem old = item;
            item.mOmxKey = omxKey;
            item.mBufferKey = bufferKey;
            indexKeys_l(old);
            indexKeys_l(item);
            mTrackers.editValueAt(index) = tracker;
            return OK;
        }
    }
    mTrackers.add(codec, tracker);
    mCodecs.push_back({codec, omxKey, bufferKey});
    indexKeys_l({codec, omxKey, bufferKey});
    return OK;
}

status_t ZephraMediaAnalytic::removeCodec(sp<CodecBase> codec) {
    // The argument keeps the codec, and this the tracker, until the lock is released.
    sp<FrameTracker> removed;
    Mutex::Autolock lock(mLock);
    if (!mEnabled) return OK;

    const ssize_t index = mTrackers.indexOfKey(codec);
    if (index >= 0) {
        removed = mTrackers.valueAt(index);
        mTrackers.removeItemsAt(index);
    }
    for (auto item = mCodecs.begin(); item != mCodecs.end(); ++item) {
        if (item->mCodec == codec) {
            const CodecItem old = *item;
            mCodecs.erase(item);
            indexKeys_l(old);
            break;
        }
    }
    return OK;
}

String8 ZephraMediaAnalytic::getPackageName() {
    return AppIdentityManager::getInstance().getPackageNameFromPid(getpid());
}

// Routing

ZephraMediaAnalytic::TrackerRef ZephraMediaAnalytic::lookUp(const CodecBase* codec) {
    Mutex::Autolock lock(mLock);
    return lookUp_l(codec);
}

ZephraMediaAnalytic::TrackerRef ZephraMediaAnalytic::lookUp_l(const CodecBase* codec) const {
    // Instead of `indexOfKey()`, which takes and drops a reference to the codec to compare its key.
    size_t low = 0;
    size_t high = mTrackers.size();
    while (low < high) {
        const size_t middle = (low + high) / 2;
        const CodecBase* key = mTrackers.keyAt(middle).get();
        if (key == codec) return TrackerRef(mTrackers.valueAt(middle));
        if (key < codec) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return nullptr;
}

ZephraMediaAnalytic::TrackerRef ZephraMediaAnalytic::trackerOf(KeyIndex ZephraMediaAnalytic::*index,
                                                               long key) {
    if (!mEnabled) return nullptr;
    Mutex::Autolock lock(mLock);
    const KeyIndex& codecs = this->*index;
    const ssize_t position = codecs.indexOfKey(key);
    return position < 0 ? nullptr : lookUp_l(codecs.valueAt(position));
}

void ZephraMediaAnalytic::indexKeys_l(const CodecItem& changed) {
    indexKey_l(mByOmxKey, &CodecItem::mOmxKey, changed.mOmxKey);
    indexKey_l(mByBufferKey, &CodecItem::mBufferKey, changed.mBufferKey);
}

void ZephraMediaAnalytic::indexKey_l(KeyIndex& index, long CodecItem::*key, long value) {
    for (const CodecItem& item : mCodecs) {
        if (item.*key != value) continue;
        index.replaceValueFor(value, item.mCodec.get());
        return;
    }
    index.removeItem(value);
}

bool ZephraMediaAnalytic::updateInputFrame_pre(sp<CodecBase> codec, const uint8_t* data,
                                               size_t size, const uint8_t* key, const uint8_t* iv,
                                               size_t numSubSamples,
                                               const CryptoPlugin::SubSample* subSamples,
                                               CryptoPlugin::Mode mode, long timeUs, long nowUs,
                                               bool encrypted) {
    return FrameEvents(*this).updateInputFrame_pre(codec, data, size, key, iv, numSubSamples,
                                                   subSamples, mode, timeUs, nowUs, encrypted);
}

void ZephraMediaAnalytic::updateInputFrame(sp<CodecBase> codec, size_t size, long timeUs,
                                           bool secure, AString formatName) {
    FrameEvents(*this).updateInputFrame(codec, size, timeUs, secure, formatName);
}

void ZephraMediaAnalytic::updateOmxInput(sp<CodecBase> codec, const void* data, size_t size,
                                         long timeUs, int framesOwned, unsigned flags) {
    deliver(codec, [&](FrameTracker& tracker) {
        tracker.updateOmxInput(data, size, timeUs, framesOwned, flags);
    });
}

void ZephraMediaAnalytic::updateOutputFrame(sp<CodecBase> codec, long timeUs) {
    FrameEvents(*this).updateOutputFrame(codec, timeUs);
}

void ZephraMediaAnalytic::updateOmxOutput(long omxKey, long timeUs, int flags, unsigned size) {
    deliver(trackerOf(&ZephraMediaAnalytic::mByOmxKey, omxKey),
            [&](FrameTracker& tracker) { tracker.updateOmxOutput(timeUs, flags, size); });
}

void ZephraMediaAnalytic::updateC2Output(sp<CodecBase> codec, long timeUs, unsigned flags) {
    deliver(codec, [&](FrameTracker& tracker) { tracker.updateC2Output(timeUs, flags); });
}

void ZephraMediaAnalytic::updateACodecOutput(sp<CodecBase> codec, const void* data,
                                             GraphicBuffer* graphicBuffer, size_t size) {
    deliver(codec,
            [&](FrameTracker& tracker) { tracker.updateACodecOutput(data, graphicBuffer, size); });
}

void ZephraMediaAnalytic::flush(sp<CodecBase> codec) {
    FrameEvents(*this).flush(codec);
}

void ZephraMediaAnalytic::updateCCodecConfigs(sp<CodecBase> codec, bool isVideo, bool trackingOff,
                                              bool isDecoder) {
    deliver(codec, [&](FrameTracker& tracker) {
        tracker.updateConfigs(isVideo, trackingOff, isDecoder, true);
    });
}

void ZephraMediaAnalytic::updateBuffers(long bufferKey, unsigned port, size_t count,
                                        size_t minUndequeued) {
    deliver(trackerOf(&ZephraMediaAnalytic::mByBufferKey, bufferKey),
            [&](FrameTracker& tracker) { tracker.updateBuffers(port, count, minUndequeued); });
}

void ZephraMediaAnalytic::updateBuffers(sp<CodecBase> codec, unsigned port, size_t count,
                                        size_t minUndequeued, bool isVideo, bool trackingOff,
                                        bool isDecoder) {
    deliver(codec, [&](FrameTracker& tracker) {
        tracker.updateConfigs(isVideo, trackingOff, isDecoder, false);
        tracker.updateBuffers(port, count, minUndequeued);
    });
}

void ZephraMediaAnalytic::updateFrameRender(sp<CodecBase> codec, long renderTimeNs, long timeUs) {
    FrameEvents(*this).updateFrameRender(codec, renderTimeNs, timeUs);
}

void ZephraMediaAnalytic::dropFrameAnalyze(sp<CodecBase> codec, long timeUs, bool rendered) {
    if (!rendered) FrameEvents(*this).dropFrameAnalyze(codec, timeUs);
}

void ZephraMediaAnalytic::updateQueueBuffer(sp<CodecBase> codec, long startUs, long renderTimeNs,
                                            long mediaTimeUs, const GraphicBuffer* buffer) {
    deliver(codec, [&](FrameTracker& tracker) {
        tracker.updateQueueBuffer(startUs, renderTimeNs, mediaTimeUs, buffer);
    });
}

void ZephraMediaAnalytic::updateDequeueBuffer(sp<CodecBase> codec, long startUs, const void* buffer,
                                              size_t ownedByComponent) {
    deliver(codec, [&](FrameTracker& tracker) {
        tracker.updateDequeueBuffer(startUs, buffer, ownedByComponent);
    });
}

}  // namespace android
