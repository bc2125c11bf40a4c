// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <media/hardware/CryptoAPI.h>
#include <media/stagefright/foundation/AString.h>
#include <utils/Errors.h>
#include <utils/KeyedVector.h>
#include <utils/List.h>
#include <utils/Mutex.h>
#include <utils/RefBase.h>
#include <utils/Singleton.h>
#include <utils/String8.h>

#include <mediaCodecLogger/base/Relaxed.h>

namespace android {

struct CodecBase;
class GraphicBuffer;

/**
 * Process-wide frame analytics: holds one FrameTracker for each registered codec and passes every
 * event of a frame on to the tracker of the codec it belongs to. The trackers write what they find
 * to the system log (tag "ZMediaAnalyticV"); docs/frame-analysis.md explains the lines.
 *
 * The property "mediaanalytic.enable" switches the analytics as a whole. It is read whenever a
 * codec is registered: off stops the analysis of every codec of the process, on starts it for the
 * codecs registered from then on. While it is off, an event costs one read of a flag.
 *
 * Threads: every operation may be called from any thread. The registry's lock is held while a
 * tracker is looked up, added or removed and never while a tracker is called, so the locks do not
 * nest; an event that is under way when its codec is removed completes on the old tracker.
 *
 * Faults: events of unknown codecs are ignored silently. Overflow in time computations ends the
 * process.
 *
 * Memory: at most 101 trackers, and in each by default at most 129 records of 80 bytes.
 *
 * Codec back-ends and the media framework link against these operations by their mangled names,
 * hence `long` for 64-bit values and strong pointers by value.
 */
class ZephraMediaAnalytic : public Singleton<ZephraMediaAnalytic> {
  public:
    class FrameTracker;

    /** The one instance, without the singleton's lock after the first call. */
    static ZephraMediaAnalytic& instance() {
        static ZephraMediaAnalytic& sInstance = getInstance();
        return sInstance;
    }

    /**
     * Whether events are followed. Callers on the path of a frame ask this first and then need not
     * prepare arguments in vain. May be stale; that lets one event pass or be skipped.
     */
    bool isEnabled() const { return mEnabled; }

    // Registration

    /**
     * Starts to follow a codec. A codec that is registered already gets a fresh tracker and the new
     * keys. Does nothing while the analytics are off.
     *
     * @param name starts the codec's log lines until its format is known
     * @param omxKey number by which `updateOmxOutput()` names the codec
     * @param bufferKey number by which `updateBuffers()` names the codec
     * @return 0, or -EMFILE when 101 codecs are registered already
     */
    status_t addCodec(const AString& name, sp<CodecBase> codec, long omxKey, long bufferKey);

    /** Stops following a codec; leaves it registered while the analytics are off. Returns 0. */
    status_t removeCodec(sp<CodecBase> codec);

    /** The package name of this process. */
    String8 getPackageName();

    // Input

    /**
     * An input buffer is about to be queued. A tracker that cannot follow any more frames gives up
     * here and its codec is removed; that is no concern of the caller and still answers true.
     *
     * @param data, size the buffer; read only for logs and dumps that the debug mask asks for
     * @param iv initialisation vector, 16 bytes, or null
     * @param timeUs media timestamp in microseconds
     * @param nowUs the caller's monotonic clock in microseconds
     * @return false only for a codec that is not registered while the analytics are on
     */
    bool updateInputFrame_pre(sp<CodecBase> codec, const uint8_t* data, size_t size,
                              const uint8_t* key, const uint8_t* iv, size_t numSubSamples,
                              const CryptoPlugin::SubSample* subSamples, CryptoPlugin::Mode mode,
                              long timeUs, long nowUs, bool encrypted);

    /** An input buffer was queued. `formatName` starts the codec's log lines from now on. */
    void updateInputFrame(sp<CodecBase> codec, size_t size, long timeUs, bool secure,
                          AString formatName);

    /** A buffer was emptied into the OMX component, which holds `framesOwned` buffers. */
    void updateOmxInput(sp<CodecBase> codec, const void* data, size_t size, long timeUs,
                        int framesOwned, unsigned flags);

    // Output

    /** The client received an output buffer. */
    void updateOutputFrame(sp<CodecBase> codec, long timeUs);

    /** The OMX component registered under `omxKey` filled an output buffer with `size` bytes. */
    void updateOmxOutput(long omxKey, long timeUs, int flags, unsigned size);

    /** The Codec2 component finished an output work item. */
    void updateC2Output(sp<CodecBase> codec, long timeUs, unsigned flags);

    /** Bytes of an output frame, in memory or else in a graphic buffer; for dumps only. */
    void updateACodecOutput(sp<CodecBase> codec, const void* data, GraphicBuffer* graphicBuffer,
                            size_t size);

    /** The codec was flushed: its frames are forgotten and frame numbers restart process-wide. */
    void flush(sp<CodecBase> codec);

    // Configuration

    /** Tells the tracker what kind of Codec2 codec it follows. */
    void updateCCodecConfigs(sp<CodecBase> codec, bool isVideo, bool trackingOff, bool isDecoder);

    /**
     * Buffers of a port were allocated by the OMX component registered under `bufferKey`.
     *
     * @param port 0 is input, anything else output
     * @param minUndequeued buffers that the display keeps
     */
    void updateBuffers(long bufferKey, unsigned port, size_t count, size_t minUndequeued);

    /** The same from ACodec, which also tells what kind of codec the tracker follows. */
    void updateBuffers(sp<CodecBase> codec, unsigned port, size_t count, size_t minUndequeued,
                       bool isVideo, bool trackingOff, bool isDecoder);

    // Render, drop and surface

    /** The client rendered a frame to be shown at `renderTimeNs`. */
    void updateFrameRender(sp<CodecBase> codec, long renderTimeNs, long timeUs);

    /** The client dropped a frame; does nothing when `rendered` is true. */
    void dropFrameAnalyze(sp<CodecBase> codec, long timeUs, bool rendered);

    /**
     * A buffer was queued to the display surface.
     *
     * @param startUs monotonic time at which the queue call began, microseconds
     * @param renderTimeNs display time asked for, 0 for none
     */
    void updateQueueBuffer(sp<CodecBase> codec, long startUs, long renderTimeNs, long mediaTimeUs,
                           const GraphicBuffer* buffer);

    /**
     * A buffer came back from the display surface.
     *
     * @param startUs monotonic time at which the dequeue call began, microseconds
     * @param ownedByComponent buffers that the component holds
     */
    void updateDequeueBuffer(sp<CodecBase> codec, long startUs, const void* buffer,
                             size_t ownedByComponent);

  private:
    friend class Singleton<ZephraMediaAnalytic>;
    friend class FrameEvents;

    /** One registration. */
    struct CodecItem {
        sp<CodecBase> mCodec;
        long mOmxKey;
        long mBufferKey;
    };

    ZephraMediaAnalytic();
    ~ZephraMediaAnalytic();

    /**
     * Keeps a tracker through one event. Trackers live as long as weak references, which cost half
     * of what strong ones do. Null when there is no tracker.
     */
    using TrackerRef = wp<FrameTracker>;

    // Codecs are found by address: the pointers are compared and never dereferenced.

    using KeyIndex = KeyedVector<long, const CodecBase*>;

    /** The tracker of a codec whether or not the analytics are on; null for an unknown codec. */
    TrackerRef lookUp(const CodecBase* codec);
    TrackerRef lookUp_l(const CodecBase* codec) const REQUIRES(mLock);
    /** The tracker of the first codec registered with `key`; null while the analytics are off. */
    TrackerRef trackerOf(KeyIndex ZephraMediaAnalytic::*index, long key);
    /** Finds out anew which codec the keys of `changed` lead to. */
    void indexKeys_l(const CodecItem& changed) REQUIRES(mLock);
    void indexKey_l(KeyIndex& index, long CodecItem::*key, long value) REQUIRES(mLock);

    /** Calls the tracker, outside the lock; nobody listens to the events of no tracker. */
    template <typename Event>
    static void deliver(const TrackerRef& tracker, const Event& event) {
        if (tracker != nullptr) event(*tracker.unsafe_get());
    }
    template <typename Event>
    void deliver(const sp<CodecBase>& codec, const Event& event) {
        if (mEnabled) deliver(lookUp(codec.get()), event);
    }

    /** Guards the members below and writes of the flag. */
    Mutex mLock;
    /** By codec pointer. */
    KeyedVector<sp<CodecBase>, sp<FrameTracker>> mTrackers GUARDED_BY(mLock);
    /** In order of registration. */
    List<CodecItem> mCodecs GUARDED_BY(mLock);
    /** For each key the first of `mCodecs` that has it. */
    KeyIndex mByOmxKey GUARDED_BY(mLock);
    KeyIndex mByBufferKey GUARDED_BY(mLock);
    /** The property as the last `addCodec()` read it; nothing else writes it. */
    Relaxed<bool> mEnabled = false;
};

}  // namespace android
