// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

#include <string>

#include <media/hardware/CryptoAPI.h>
#include <media/stagefright/foundation/AString.h>
#include <utils/Mutex.h>
#include <utils/RefBase.h>
#include <utils/Vector.h>

#include <mediaCodecLogger/ZephraMediaAnalytic.h>
#include <mediaCodecLogger/analytics/DebugBits.h>
#include <mediaCodecLogger/analytics/DumpFile.h>
#include <mediaCodecLogger/analytics/FrameRecords.h>
#include <mediaCodecLogger/analytics/RenderStatistics.h>
#include <mediaCodecLogger/analytics/TrackerSettings.h>
#include <mediaCodecLogger/base/Relaxed.h>

namespace android {

/**
 * Follows the frames of one codec. The registry's operations of the same names lead here and
 * document the arguments.
 *
 * A video decoder's frame gets a record when its input buffer is announced. Each later event finds
 * the record by the frame's media timestamp (of two with the same one the older), stamps it, and
 * the frame's render or drop, or a flush, removes it. Trackers of audio codecs, and of video with
 * tracking off, only log and dump what the debug mask asks for. A video encoder's records are
 * opened but never removed, so its tracker soon refuses input and the registry stops following it.
 *
 * A tracker lives until its last reference goes, weak ones included.
 *
 * Threads: every operation holds the tracker's lock for its whole run, file writes included.
 * `updateConfigs()` alone takes none: what it sets is settled before frames flow.
 */
class ZephraMediaAnalytic::FrameTracker : public RefBase {
  public:
    /** Reads the settings; `name` starts the log lines until the format's name is known. */
    explicit FrameTracker(const AString& name);

    // Configuration

    /** What kind of codec this is. Video with tracking off is treated as audio from then on. */
    void updateConfigs(bool isVideo, bool trackingOff, bool isDecoder, bool isCodec2);
    void updateBuffers(unsigned port, size_t count, size_t minUndequeued);

    // Input

    /** Opens the frame's record; false when there are too many and the tracker gives up. */
    bool updateInputFrame_pre(const uint8_t* data, size_t size, const uint8_t* key,
                              const uint8_t* iv, size_t numSubSamples,
                              const CryptoPlugin::SubSample* subSamples, CryptoPlugin::Mode mode,
                              long timeUs, long nowUs, bool encrypted);
    void updateInputFrame(size_t size, long timeUs, bool secure, const AString& formatName);
    void updateOmxInput(const void* data, size_t size, long timeUs, int framesOwned,
                        unsigned flags);

    // Output

    void updateOmxOutput(long timeUs, int flags, unsigned size);
    void updateC2Output(long timeUs, unsigned flags);
    void updateOutputFrame(long timeUs);
    void updateACodecOutput(const void* data, GraphicBuffer* graphicBuffer, size_t size);

    /** Forgets all frames; configuration, buffer counts and open dump files stay. */
    void flush();

    // Render and drop

    void updateFrameRender(long renderTimeNs, long timeUs);
    void dropFrameAnalyze(long timeUs);

    /** Starts a new period of render statistics. */
    void resetRenderStatusInfo();

    // Surface

    void updateQueueBuffer(long startUs, long renderTimeNs, long mediaTimeUs, const void* buffer);
    void updateDequeueBuffer(long startUs, const void* buffer, size_t ownedByComponent);

  protected:
    ~FrameTracker() override = default;

  private:
    // Marks of `mLastAvSyncLogMs`.
    static constexpr int64_t kNeverLogged = -1;
    static constexpr int64_t kFlushed = -2;

    /** Whether the debug mask has a bit: one counts for video, the other for the rest. */
    bool debugs(int32_t videoBits, int32_t otherBits) const {
        return mSettings.debugs(mIsVideo ? videoBits : otherBits);
    }
    bool debugs(int32_t bits) const { return mSettings.debugs(bits); }
    bool isVideoDecoder() const { return mIsVideo && mIsDecoder; }

    const char* inputEvent() const;
    const char* outputEvent() const;

    /** Index of the first record with this timestamp, -1 if there is none. */
    ssize_t indexOfTsInfo_l(long timeUs) const REQUIRES(mLock);
    /** Frames that went in and have not come out. */
    int64_t framesInCodec_l() const REQUIRES(mLock);
    /** A warning of the output and render paths is due; at most a set number between flushes. */
    bool takeErrorFrame_l() REQUIRES(mLock);

    bool appendTsInfo_l(long timeUs) REQUIRES(mLock);
    void logSubSamples_l(const uint8_t* data, size_t size, size_t numSubSamples,
                         const CryptoPlugin::SubSample* subSamples, long timeUs) REQUIRES(mLock);
    void logOmxInput_l(size_t size, long timeUs, int framesOwned, unsigned flags) const
            REQUIRES(mLock);
    const AnalyticTsInfo& markDecoded_l(size_t index) REQUIRES(mLock);

    /**
     * Logs where the frame spent its time, with histories of its neighbours when a stage took too
     * long. With `retire` the frame ends here: its record is removed. Silent for unknown frames.
     */
    void frameAnalyze_l(long timeUs, const char* label, bool retire) REQUIRES(mLock);

    void retire_l(size_t index) REQUIRES(mLock);

    void foldRender_l(const AnalyticTsInfo& rec, int64_t leadMs) REQUIRES(mLock);
    void logAvSync_l(int64_t leadMs, long renderTimeNs) const REQUIRES(mLock);
    void resetRenderStatusInfo_l() REQUIRES(mLock);

    void judgeQueue_l(const QueueBufInfo& queued, long mediaTimeUs) const REQUIRES(mLock);
    struct Dequeue;
    /** Takes the buffer off those queued and finds out when it could come back at the earliest. */
    void takeQueued_l(const void* buffer, int64_t startMs, Dequeue& dequeue) REQUIRES(mLock);

    // Process-wide label of the next frame. Trackers race on it, which at worst repeats a number.
    static Relaxed<uint64_t> mFrameCounter;

    const analytics::TrackerSettings mSettings;

    // Kind of codec; written without the lock before frames flow.
    Relaxed<bool> mIsCodec2 = false;
    Relaxed<bool> mIsVideo = false;
    Relaxed<bool> mIsDecoder = false;
    Relaxed<bool> mTrackingOff = false;

    /** Guards everything below. */
    Mutex mLock;

    // Surface: buffers queued and not dequeued, in queue order; the last 11 dequeues, oldest first.
    Vector<QueueBufInfo> mQueueBufInfos GUARDED_BY(mLock);
    Vector<FillBufInfo> mFillBufInfos GUARDED_BY(mLock);

    // Buffer counts of the ports, and how early a buffer may be queued to the display.
    size_t mOutputBufferCount GUARDED_BY(mLock) = 0;
    size_t mInputBufferCount GUARDED_BY(mLock) = 0;
    int32_t mMaxEarlyTime GUARDED_BY(mLock) = 200;

    // Position of the pipeline.
    int64_t mLastInputTimeMs GUARDED_BY(mLock) = 0;
    int64_t mFirstOutputTs GUARDED_BY(mLock) = -1;
    size_t mFramesOwnedByUs GUARDED_BY(mLock) = 0;

    /** Warnings about unknown timestamps since start or flush. */
    int32_t mErrorFrameCount GUARDED_BY(mLock) = 0;
    /** A frame was analysed since the last render; only a dump of memory shows it. */
    bool mAnalyzed GUARDED_BY(mLock) = false;

    // Names. The prefix is the name, which only a dump of memory shows afterwards, and from the
    // first queued input on the format's name.
    AString mFormatName GUARDED_BY(mLock);
    const AString mName;
    AString mLogPrefix GUARDED_BY(mLock);
    /** Marks a tracker in a dump of memory. */
    const AString mQaTag{"MMSW_QA_TEST"};

    // Dumps, opened when first written.
    analytics::DumpFile mInputDumpFile GUARDED_BY(mLock){"input"};
    analytics::DumpFile mOutputDumpFile GUARDED_BY(mLock){"output"};
    analytics::DumpFile mDecryptedDumpFile GUARDED_BY(mLock){"decrypted"};

    // Frames in input order, and the last one rendered.
    Vector<AnalyticTsInfo> mTsInfos GUARDED_BY(mLock);
    AnalyticTsInfo mLastRendered GUARDED_BY(mLock);

    analytics::RenderStatistics mStatistics GUARDED_BY(mLock);
    /** When their last line was written, or one of the marks. */
    int64_t mLastAvSyncLogMs GUARDED_BY(mLock) = kNeverLogged;

    /** Text of the analysis under way; a member so that its memory is used again. */
    std::string mLine GUARDED_BY(mLock);
};

}  // namespace android
