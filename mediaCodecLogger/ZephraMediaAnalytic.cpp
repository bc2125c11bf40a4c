// SPDX-License-Identifier: Apache-2.0

#define LOG_TAG "ZMediaAnalyticV"

#include <mediaCodecLogger/ZephraMediaAnalytic.h>

#include <errno.h>
#include <unistd.h>

#include <cutils/properties.h>
#include <log/log.h>
#include <media/stagefright/CodecBase.h>
#include <mediaCodecLogger/AppIdentityManager.h>

namespace android {

ANDROID_SINGLETON_STATIC_INSTANCE(ZephraMediaAnalytic)

namespace {

using FrameTracker = ZephraMediaAnalytic::FrameTracker;

/** Codecs followed at once; each may keep a queue of records and three dump files. */
constexpr size_t kMaxTrackers = 101;

/** Passes an event on, outside the registry's lock; nobody listens to the events of no tracker. */
template <typename... Params, typename... Args>
void deliver(const sp<FrameTracker>& tracker, void (FrameTracker::*event)(Params...),
             const Args&... args) {
    if (tracker != nullptr) (tracker.get()->*event)(args...);
}

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
            item.mOmxKey = omxKey;
            item.mBufferKey = bufferKey;
            mTrackers.editValueAt(index) = tracker;
            return OK;
        }
    }
    mTrackers.add(codec, tracker);
    mCodecs.push_back({codec, omxKey, bufferKey});
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
            mCodecs.erase(item);
            break;
        }
    }
    return OK;
}

String8 ZephraMediaAnalytic::getPackageName() {
    return AppIdentityManager::getInstance().getPackageNameFromPid(getpid());
}

// Routing

sp<FrameTracker> ZephraMediaAnalytic::lookUp(const sp<CodecBase>& codec) {
    Mutex::Autolock lock(mLock);
    return lookUp_l(codec);
}

sp<FrameTracker> ZephraMediaAnalytic::lookUp_l(const sp<CodecBase>& codec) const {
    // Instead of indexOfKey(), which takes and drops a reference to the codec to compare its key.
    size_t low = 0;
    size_t high = mTrackers.size();
    while (low < high) {
        const size_t middle = (low + high) / 2;
        const sp<CodecBase>& key = mTrackers.keyAt(middle);
        if (key == codec) return mTrackers.valueAt(middle);
        if (key < codec) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return nullptr;
}

sp<FrameTracker> ZephraMediaAnalytic::trackerOf(const sp<CodecBase>& codec) {
    return mEnabled ? lookUp(codec) : nullptr;
}

sp<FrameTracker> ZephraMediaAnalytic::trackerOf(long CodecItem::*key, long value) {
    if (!mEnabled) return nullptr;
    Mutex::Autolock lock(mLock);
    for (const CodecItem& item : mCodecs) {
        if (item.*key == value) return lookUp_l(item.mCodec);
    }
    return nullptr;
}

bool ZephraMediaAnalytic::updateInputFrame_pre(sp<CodecBase> codec, const uint8_t* data,
                                               size_t size, const uint8_t* key, const uint8_t* iv,
                                               size_t numSubSamples,
                                               const CryptoPlugin::SubSample* subSamples,
                                               CryptoPlugin::Mode mode, long timeUs, long nowUs,
                                               bool encrypted) {
    if (!mEnabled) return true;
    const sp<FrameTracker> tracker = lookUp(codec);
    if (tracker == nullptr) return false;
    if (!tracker->updateInputFrame_pre(data, size, key, iv, numSubSamples, subSamples, mode, timeUs,
                                       nowUs, encrypted)) {
        removeCodec(codec);
    }
    return true;
}

void ZephraMediaAnalytic::updateInputFrame(sp<CodecBase> codec, size_t size, long timeUs,
                                           bool secure, AString formatName) {
    deliver(trackerOf(codec), &FrameTracker::updateInputFrame, size, timeUs, secure, formatName);
}

void ZephraMediaAnalytic::updateOmxInput(sp<CodecBase> codec, const void* data, size_t size,
                                         long timeUs, int framesOwned, unsigned flags) {
    deliver(trackerOf(codec), &FrameTracker::updateOmxInput, data, size, timeUs, framesOwned,
            flags);
}

void ZephraMediaAnalytic::updateOutputFrame(sp<CodecBase> codec, long timeUs) {
    deliver(trackerOf(codec), &FrameTracker::updateOutputFrame, timeUs);
}

void ZephraMediaAnalytic::updateOmxOutput(long omxKey, long timeUs, int flags, unsigned size) {
    deliver(trackerOf(&CodecItem::mOmxKey, omxKey), &FrameTracker::updateOmxOutput, timeUs, flags,
            size);
}

void ZephraMediaAnalytic::updateC2Output(sp<CodecBase> codec, long timeUs, unsigned flags) {
    deliver(trackerOf(codec), &FrameTracker::updateC2Output, timeUs, flags);
}

void ZephraMediaAnalytic::updateACodecOutput(sp<CodecBase> codec, const void* data,
                                             GraphicBuffer* graphicBuffer, size_t size) {
    deliver(trackerOf(codec), &FrameTracker::updateACodecOutput, data, graphicBuffer, size);
}

void ZephraMediaAnalytic::flush(sp<CodecBase> codec) {
    deliver(trackerOf(codec), &FrameTracker::flush);
}

void ZephraMediaAnalytic::updateCCodecConfigs(sp<CodecBase> codec, bool isVideo, bool trackingOff,
                                              bool isDecoder) {
    deliver(trackerOf(codec), &FrameTracker::updateConfigs, isVideo, trackingOff, isDecoder, true);
}

void ZephraMediaAnalytic::updateBuffers(long bufferKey, unsigned port, size_t count,
                                        size_t minUndequeued) {
    deliver(trackerOf(&CodecItem::mBufferKey, bufferKey), &FrameTracker::updateBuffers, port, count,
            minUndequeued);
}

void ZephraMediaAnalytic::updateBuffers(sp<CodecBase> codec, unsigned port, size_t count,
                                        size_t minUndequeued, bool isVideo, bool trackingOff,
                                        bool isDecoder) {
    const sp<FrameTracker> tracker = trackerOf(codec);
    deliver(tracker, &FrameTracker::updateConfigs, isVideo, trackingOff, isDecoder, false);
    deliver(tracker, &FrameTracker::updateBuffers, port, count, minUndequeued);
}

void ZephraMediaAnalytic::updateFrameRender(sp<CodecBase> codec, long renderTimeNs, long timeUs) {
    deliver(trackerOf(codec), &FrameTracker::updateFrameRender, renderTimeNs, timeUs);
}

void ZephraMediaAnalytic::dropFrameAnalyze(sp<CodecBase> codec, long timeUs, bool rendered) {
    if (!rendered) deliver(trackerOf(codec), &FrameTracker::dropFrameAnalyze, timeUs);
}

void ZephraMediaAnalytic::updateQueueBuffer(sp<CodecBase> codec, long startUs, long renderTimeNs,
                                            long mediaTimeUs, const GraphicBuffer* buffer) {
    deliver(trackerOf(codec), &FrameTracker::updateQueueBuffer, startUs, renderTimeNs, mediaTimeUs,
            buffer);
}

void ZephraMediaAnalytic::updateDequeueBuffer(sp<CodecBase> codec, long startUs, const void* buffer,
                                              size_t ownedByComponent) {
    deliver(trackerOf(codec), &FrameTracker::updateDequeueBuffer, startUs, buffer,
            ownedByComponent);
}

}  // namespace android
