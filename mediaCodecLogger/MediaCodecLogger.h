// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <media/hardware/CryptoAPI.h>
#include <media/stagefright/foundation/AString.h>
#include <utils/Errors.h>
#include <utils/RefBase.h>
#include <utils/String8.h>

#include <mediaCodecLogger/base/Relaxed.h>
#include <mediaCodecLogger/logger/CodecIdentity.h>
#include <mediaCodecLogger/logger/InputHistory.h>
#include <mediaCodecLogger/logger/Session.h>
#include <mediaCodecLogger/logger/StreamFormat.h>

namespace android {

struct AMessage;
struct CodecBase;
class IMediaCodecLoggerService;
class MediaCodecLoggerClient;

/**
 * Measures the playback quality of one codec. The media framework creates a logger for every codec,
 * configures it with the codec and then reports each event of the codec; the logger turns them into
 * lines of the system log (tag "MediaCodecLogger"), records for the metrics service and answers for
 * the system's logger service.
 *
 * Words used below:
 * - session: what is measured between two calls of `resetMetricsData()`, normally one
 * configuration;
 * - segment: a stretch of playback whose output timestamps run on without a jump or a flush;
 * - codec tag: class, framework, kind and format of the codec, for example HW.c2.video.avc;
 * - settling: the time from the first output timestamp or a flush until 501 ms after the first
 * frame rendered since; repeated timestamps and dropped frames mean nothing while it lasts;
 * - now: CLOCK_MONOTONIC in milliseconds. A stamp of 0 means "not yet".
 *
 * Threads: the logger owns none. Event operations come from the codec's threads, several at once,
 * but not while `configure()` or `logMetrics()` runs; `getStatus()` and the format getters may be
 * called from any thread at any time. Only format changes and the format getters take the logger's
 * lock; no lock is held over a call to the service. Scalars are relaxed atomics, so a query may see
 * a stale value and of two colliding updates one may be lost. With the frame analytics off, a frame
 * in steady playback costs no allocation, no lock and three clock reads, and codecs on different
 * threads write no common cache line; hence the alignment.
 *
 * Faults are logged and ignored; only a broken precondition, named where it applies, ends the
 * process.
 *
 * The framework links against these operations by their mangled names. Their signatures are
 * therefore fixed, including what looks odd: `long` for 64-bit values, non-const references and
 * getters that are not const.
 */
class alignas(64) MediaCodecLogger : public RefBase {
  public:
    /** A new logger for the codec of process `pid` (-1: the calling process) and user `uid`. */
    static sp<MediaCodecLogger> Create(int pid, unsigned int uid);

    MediaCodecLogger(int pid, unsigned int uid);

    /** The monotonic clock in milliseconds. */
    static int64_t getSystemTimeMillis();

    // Life cycle and configuration

    /**
     * Starts a configuration: ends the session before it, names the codec and stamps the start of
     * start-up phase P2. Empty names end the process.
     *
     * @param flags bit 0: tunneled playback; bit 1: log only every 20th repeated timestamp
     * @param isDecoder when false, format changes, drops and delayed output are not followed
     * @param maxWidth, maxHeight largest size of adaptive playback, 0 when it is not adaptive
     * @param codec the back-end, under which the frame analytics know this codec; may be null
     * @param loggingEnabled whether the session is reported and the codec registered with the
     * service
     */
    void configure(const AString& codecName, const AString& mime, unsigned int flags,
                   bool isDecoder, int maxWidth, int maxHeight, sp<CodecBase> codec,
                   bool loggingEnabled);

    /**
     * Starts a new session. Before that, whenever a service is held and logging is enabled, the
     * client is unregistered from it, also when it is not registered at present.
     */
    void resetMetricsData();

    /** `text` with the package name at its head replaced by the pid; the pid alone for null. */
    AString replacePkgNameWithPid(const char* text);

    /** The resolution class of a width in pixels. */
    int mapResolution(unsigned int size);

    /** Asks for the class of the primary display, unless that is UHD already. */
    void updateDisplaySize();

    /** Appends the short name of the format of `mime` to `out`: "avc" for video/avc. */
    void getCodecFormat(const AString& mime, AString& out);

    // Playback

    /**
     * An output buffer left the codec.
     *
     * @param pts its media timestamp in microseconds
     * @param isEos it ends the stream; nothing is measured then
     * @param count frames that the timestamp stands for, normally 1
     */
    void updatePTSTime(long pts, bool isEos, unsigned long count);

    /** Logs a repeated output timestamp; `repeatCount` is how many there were before it. */
    void logRepeatPTS(int repeatCount, long pts);

    /** Logs and counts `pts` if exactly two of the last 20 input buffers carried it. */
    void checkRepeatedInputPTS(long pts);

    /** The codec was flushed: closes the segment and an open drop run, and starts settling. */
    void updateMetricsForFlush();

    // Stream format

    /**
     * The decoder's output format changed. Takes size, colour, HDR type, bit depth and scan type
     * from the message and closes the segment at the old resolution. Holds the format lock for
     * writing while it reads the message.
     */
    void updateFormatChanged(sp<AMessage>& format);

    /**
     * Maps the colour standard of `format` to the platform's, through its full colour aspects.
     *
     * @param standard written only when OK is returned
     * @return the result of the platform's conversion
     */
    status_t convertExtendedColorToStandard(const sp<AMessage>& format, int& standard);

    /** The decimal value that follows `key` and one separator in `text`; 0 when there is none. */
    long parseMetricValue(const AString& text, const char* key);

    /** Takes drops and non-fatal errors from the statistics that the codec's component returned. */
    void updateVendorMetrics(AString& metrics);

    /**
     * Appends the prefix of warning lines to `out`: markers for long drop runs and repeated
     * timestamps, pid, screen, security and codec tag, for example
     * W.mcfd12.1234.secure.HW.c2.video.avc
     */
    void getEmbeddedWarnings(AString& out);

    // Format getters, for any thread; each holds the format lock for reading while it copies.

    AString getHDRType();
    /** In pixels; 0x0 until the first format change. May pair a new width with the old height. */
    void getResolution(int& width, int& height);
    int getBitDepth();
    AString getScanType();
    /**
     * The colour standard: a platform value, or what the codec reported where that is below 65 or
     * could not be converted.
     */
    void getColorProperties(int& value);

    // Input and bitrate

    /** An input buffer is about to be queued; passed to the frame analytics unchanged. */
    void queueInputBuffer_pre(const unsigned char* data, unsigned long size,
                              const unsigned char* key, const unsigned char* iv,
                              unsigned long numSubSamples,
                              const CryptoPlugin::SubSample* subSamples, CryptoPlugin::Mode mode,
                              long timeUs, long nowUs, bool encrypted);

    /**
     * An input buffer was queued: `size` in bytes, 0 for an end-of-stream marker; `timeUs` its
     * media timestamp.
     */
    void logInputBufferBitrate(unsigned long size, long timeUs, bool secure, bool secureMemoryUsed);

    /** The share of `logInputBufferBitrate()` that measures bitrate and keeps the input history. */
    void performBitrateCalculationAndTracking(unsigned long size, long timeUs);

    /** Whether a raw audio stream carries Dolby Atmos; the audio system is asked once a session. */
    bool isAtmosDetected();

    // Frame drops and notifications

    /** An output buffer with timestamp `timeUs` was released: `rendered` or dropped. */
    void updateFrameDropCounters(long timeUs, bool rendered);

    /** Closes the open run of dropped frames and adds it to the totals. */
    void updateFrameDropCounters();

    /**
     * A frame was rendered.
     *
     * @param renderTimeNs the time that the app asked for, -1 when it did not
     * @param timeUs its media timestamp
     * @param fromTunnelCallback reported by tunneled playback; ignored when the codec is not
     * tunneled
     * @param renderCount frames that the report stands for
     */
    void resetConsecutiveFrameDropFlag(long renderTimeNs, long timeUs, bool fromTunnelCallback,
                                       unsigned long renderCount);

    /** A frame was rendered: tells the service when the one before is a second old or more. */
    void checkAndNotifyOutBufferAvailableAfterDelay();

    /** Tells the service that output resumed after `delayMs`. One-way; a decoder's only. */
    void notifyOutBufferAvailablAfterDelay(long delayMs);

    /** Tells the service that the first frame was rendered. One-way; a decoder's only. */
    void notifyFirstFrameRendered();

    /** Asks the service whether the app is on its allowlist of frame-drop mitigation. Blocks. */
    bool isInMitigateFrameDropAllowlist();

    /** The classification of drops for the metrics service, for example HW_secure_tunneled. */
    AString getFramedropMeta();

    // Report

    /**
     * Ends the session: writes its report to the system log and to the metrics service and starts a
     * new one. Once a configuration; not to be called while another thread does.
     *
     * @return the key values in one line, empty when the report was written before or logging is
     * off
     */
    AString logMetrics();

    /** Logs "key = value", with the package name at the head of `key` replaced by the pid. */
    void logToBuffers(const char* key, unsigned long value);

    /**
     * Sends the average frame rate to the metrics service.
     *
     * @return its class: 15, 24, 30, 50 or 60; 0 when a text is null and nothing was sent
     */
    int logFramerateToPulse(const char* packageName, const char* codec, float fps);

    /** The class of the stream's frame rate: "24", "25", "30", "50" or "60". */
    AString getFramerate();

    /** The class of a playback time in minutes: "0-5", "5-30", "30-120" or "120+". */
    AString getDurationRange(long durationMs);

    // Start-up, stop and errors

    /** Start-up phase P2 ends. Registers the configured codec with the service; may block. */
    void profileP2End();
    void profileP3Start();
    void profileP3End();
    /** The codec is about to be stopped; video only. */
    void profileMCStopBegin();
    /** The codec has stopped; video only. */
    void profileMCStopEnd();

    /** The codec failed: 0 fatally, 2 recoverably, otherwise transiently. Ends the session. */
    void uploadDecoderError(int errorType);

    // Status

    /** A few lines of text on the state of the codec, for people; for any thread. */
    AString getStatus();

  protected:
    ~MediaCodecLogger() override;

  private:
    friend class MediaCodecLoggerClient;

    bool hasAtmos() { return mIdentity.is(logger::TAG_AUDIO) && isAtmosDetected(); }
    int64_t clientId() const { return reinterpret_cast<int64_t>(mClient.get()); }
    AString embeddedWarnings();
    /** Where the time of a closed segment goes; null for what is neither video nor audio. */
    Relaxed<int64_t>* playbackTimeMs();

    void noteSeek(int64_t pts);
    void noteRepeat(int64_t pts, unsigned long count);
    void finishResolutionChange();
    void sendRampupMetric();
    void noteFirstFrameReady();
    void closeSegmentForFormatChange();
    void noteFirstFrameRendered(int64_t renderTimeNs, unsigned long renderCount);
    void closeSession();

    void registerWithService();
    void subscribeVendorFormat();
    template <typename Call>
    void notifyService(Call call);

    // Whose codec it is. Written by the constructor and `configure()`.
    logger::CodecIdentity mIdentity;
    sp<CodecBase> mCodec;

    // Configuration switches. Written by `configure()`, read everywhere.
    Relaxed<bool> mIsDecoder;
    Relaxed<bool> mLoggingEnabled;
    Relaxed<bool> mMetricsLogged;

    // Service link. The service is set at the end of P2 and then kept; its client lives as long as
    // the logger.
    sp<IMediaCodecLoggerService> mService;
    sp<MediaCodecLoggerClient> mClient;

    /** What is measured; `resetMetricsData()` assigns a fresh one. */
    logger::Session mSession;

    // What a reset keeps, because the next session of the codec starts with it.
    logger::StreamFormatTexts mFormatTexts;
    logger::InputHistory mInputHistory;
    /** The last input buffer used secure memory. */
    Relaxed<bool> mSecureMemoryUsed;
    String8 mOldestAudioClientCodec;
};

}  // namespace android
