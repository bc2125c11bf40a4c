// SPDX-License-Identifier: Apache-2.0
// The report that ends a session.
#define LOG_TAG "MediaCodecLogger"

#include <limits>
#include <memory>

#include <stdio.h>

#include <log/log.h>
#include <mediaCodecLogger/LoggerSupport.h>
#include <mediaCodecLogger/MediaCodecLogger.h>
#include <mediaCodecLogger/MetricRecord.h>

namespace android {

namespace {

/** What lasted less says nothing about playback. */
constexpr uint64_t kMinReportedMs = 5001;
/** From a day on the clock or the timestamps cannot be trusted. */
constexpr uint64_t kOneDayMs = 86400000;
constexpr uint64_t kMinReportedStopMs = 501;

constexpr const char* kResolutionNames[MAX_RES_TYPES] = {"SD", "HD", "FHD", "UHD"};

constexpr MetricRecord kVideoPlayback[] = {
        {"j2w8/2/02330410", "VideoCodec", "ms", 0},
        {"qkuh/2/02330410", "TotalVideoPlaybackTimeMs", "ms", 0},
};
constexpr MetricRecord kAudioPlayback[] = {
        {"v8xh/2/02330410", "TotalAudioPlaybackTimeMs", "ms", 0},
        {"20fc/2/02330410", "AudioCodec", "ms", 0},
};
constexpr MetricRecord kResolutionTime = {"k29r/2/02330410", "videoResolution", "ms", 0};
constexpr MetricRecord kAverageFramerate = {"21qt/2/02330410", "StreamAvgFramerate", "fps", 1};
constexpr MetricRecord kDropRunType = {"lxcd/2/02330410", "FramedropType", "frames", 1};
constexpr MetricRecord kDropSource = {"tbo7/2/02330470", "FramedropSource", "frames", 1};
constexpr MetricRecord kDropTotal = {"w9lq/2/02330410", "TotalFramesDropped", "frames", 1};
constexpr MetricRecord kDropContext = {"x28y/2/02330470", "TotalFrameDrops", "frames", 1};
constexpr MetricRecord kFirstFrameReady = {"csyv/2/02330410", "FirstFrameReadyMs", "ms", 0};
constexpr MetricRecord kFirstFrameRender = {"pb8a/2/02330410", "FirstFrameRenderMs", "ms", 0};
constexpr MetricRecord kNonFatalErrors = {"6snt/2/02330410", "CodecNonFatalErrorCount", "frames",
                                          1};
constexpr MetricRecord kFatalError = {"68pc/2/03330470", ".DecoderErrorFatal", "errors", 1};
constexpr MetricRecord kAverageBitrate = {"jn5x/2/02330410", "AvgBitrate", "kbps", 1};

bool isReportedTime(uint64_t ms) {
    return ms >= kMinReportedMs && ms < kOneDayMs;
}

/** What a counter of 32 bits can hold of a rate; nothing for a rate that is no number. */
uint32_t saturate(float rate) {
    constexpr float kLimit = 4294967296.0f;
    if (!(rate > 0.0f)) return 0;
    return rate < kLimit ? static_cast<uint32_t>(rate) : UINT32_MAX;
}

}  // namespace

/** One report on its way: the texts it is built from, the summary so far and the data set. */
class MediaCodecLogger::Report {
  public:
    explicit Report(MediaCodecLogger& logger);
    AString write();

  private:
    void writeVideo();
    void writeAudio();
    int writePlayback(uint64_t totalMs);
    void writeResolutions(int framerateClass);
    void writeDrops(uint64_t totalMs);
    void writeDropSources(uint32_t total);
    void writeFirstFrame();
    void writePhases();
    void writeErrors();
    void writeBitrate();

    void log(const char* name, uint64_t value);
    void logRate(const char* name, float value);
    void append(const char* name, uint64_t value);
    void logAndAppend(const char* name, uint64_t value);
    void send(const MetricRecord& record, double value);
    void send(const MetricRecord& record, double value, MetricData::Entry entry);
    const char* media() const { return mLogger.tagHas(TAG_VIDEO) ? "video" : "audio"; }
    int64_t addOpenSegment(Relaxed<int64_t>& timeMs);

    MediaCodecLogger& mLogger;
    const char* const mAtmos;
    AString mSummary;
    AString mPrefix;
    AString mDescriptor;
    MetricData mData;
};

MediaCodecLogger::Report::Report(MediaCodecLogger& logger)
    : mLogger(logger),
      mAtmos(logger.tagHas(TAG_AUDIO) && logger.isAtmosDetected() ? ".atmos" : ""),
      mSummary(logger.metricPrefix()),
      mPrefix(mSummary),
      mDescriptor(logger.codecDescriptor(mAtmos)) {
    mPrefix.append(mAtmos);
}

AString MediaCodecLogger::Report::write() {
    if (mLogger.tagHas(TAG_VIDEO)) {
        writeVideo();
    } else if (mLogger.tagHas(TAG_AUDIO)) {
        writeAudio();
    }
    writeErrors();
    writeBitrate();
    return mSummary;
}

void MediaCodecLogger::Report::writeVideo() {
    const int32_t resolution = mLogger.mResolutionType;
    LOGGER_CHECK(static_cast<uint32_t>(resolution) < MAX_RES_TYPES, "904",
                 "videoType < MAX_RES_TYPES");
    addOpenSegment(mLogger.mPlaybackTimeMsByRes[resolution]);
    uint64_t totalMs = 0;
    for (const auto& timeMs : mLogger.mPlaybackTimeMsByRes) totalMs += timeMs;
    mLogger.mPrevSegmentsFrameCount += mLogger.mSegmentFrameCount;

    if (totalMs >= kMinReportedMs && mLogger.mFirstFrameRenderMs != 0) {
        const int framerateClass = totalMs < kOneDayMs ? writePlayback(totalMs) : 0;
        writeResolutions(framerateClass);
        logRate("StreamFramerate", mLogger.mStreamFramerate);
        logRate("AspectRatio",
                static_cast<float>(mLogger.mWidth) / static_cast<float>(mLogger.mHeight));
        writeDrops(totalMs);
        writeFirstFrame();
    }
    mLogger.mSegmentFrameCount = 0;
    writePhases();
}

int64_t MediaCodecLogger::Report::addOpenSegment(Relaxed<int64_t>& timeMs) {
    const int64_t openUs = wrapSub(mLogger.mLastPts, mLogger.mSegmentStartPts);
    return timeMs = wrapAdd(timeMs, openUs / 1000);
}

int MediaCodecLogger::Report::writePlayback(uint64_t totalMs) {
    log("TotalVideoPlaybackTimeMs", totalMs);
    for (const MetricRecord& record : kVideoPlayback) send(record, totalMs);
    // The timestamps of tunneled output do not show every frame; its stream's rate stands for it.
    const float framerate =
            mLogger.isTunneled()
                    ? static_cast<float>(mLogger.mStreamFramerate)
                    : static_cast<float>(mLogger.mPrevSegmentsFrameCount * 1000.0 / totalMs);
    logRate("StreamAvgFramerate", framerate);
    return mLogger.logFramerateToPulse(mLogger.mPackageName.c_str(), mLogger.mCodecFormat.c_str(),
                                       framerate);
}

void MediaCodecLogger::Report::writeResolutions(int framerateClass) {
    for (int i = 0; i < MAX_RES_TYPES; ++i) {
        const uint64_t timeMs = mLogger.mPlaybackTimeMsByRes[i];
        if (timeMs < 1 || timeMs >= kOneDayMs) continue;
        const AString name = AStringPrintf("videoResolution.%s", kResolutionNames[i]);
        logAndAppend(name.c_str(), timeMs);
        char dimension[16];
        snprintf(dimension, sizeof(dimension), "%s.%d", kResolutionNames[i], framerateClass);
        sendMetric(kResolutionTime, mLogger.mPackageName.c_str(), dimension, timeMs);
    }
}

void MediaCodecLogger::Report::writeDrops(uint64_t totalMs) {
    const struct {
        const char* name;
        const char* length;
        uint32_t count;
    } kRuns[] = {
            {"OneConsecutiveFramesDropped", "1", mLogger.mOneConsecutiveDrops},
            {"TwoConsecutiveFramesDropped", "2", mLogger.mTwoConsecutiveDrops},
            {"FiveConsecutiveFramesDropped", "5", mLogger.mFiveConsecutiveDrops},
            {"TenConsecutiveFramesDropped", "10", mLogger.mTenConsecutiveDrops},
    };
    for (const auto& run : kRuns) {
        if (run.count == 0) continue;
        logAndAppend(run.name, run.count);
        send(kDropRunType, run.count, {"ConsecFD", run.length});
    }

    const uint32_t total = mLogger.mFramesDropped;
    if (total == 0) return;
    writeDropSources(total);
    logAndAppend("TotalFramesDropped", total);
    send(kDropTotal, total);
    mData.set({{"audioCodec", mLogger.mOldestAudioClientCodec.string()},
               {"videoCodec", mLogger.mCodecFormat.c_str()},
               {"displayFormat", mLogger.getHDRType().c_str()},
               {"framerate", mLogger.getFramerate().c_str()},
               {"duration", mLogger.getDurationRange(static_cast<long>(totalMs)).c_str()}});
    sendMetric(kDropContext, mLogger.mPackageName.c_str(), mLogger.getFramedropMeta().c_str(),
               total, &mData);
    const uint32_t longest = mLogger.mMaxConsecutiveFramesDropped;
    logAndAppend("MaxConsecutiveFramesDropped", longest);
    send(kDropRunType, longest, {"ConsecFD", "max"});
}

// Only when the display dropped frames; the codec's share is then what remains, be it 0.
void MediaCodecLogger::Report::writeDropSources(uint32_t total) {
    const uint32_t byDisplay = mLogger.mDisplayFramesDropped;
    if (byDisplay == 0) return;
    append("DisplayFramesDropped", byDisplay);
    send(kDropSource, byDisplay, {"FdType", "SFAndHWCDrops"});
    const uint32_t byCodec = total - byDisplay;
    append("MediaCodecFramesDropped", byCodec);
    send(kDropSource, byCodec, {"FdType", "AppAndMcDrops"});
}

void MediaCodecLogger::Report::writeFirstFrame() {
    const int64_t inputMs = mLogger.mFirstInputTimeMs;
    const int64_t renderMs = wrapSub(mLogger.mFirstFrameRenderMs, inputMs);
    logAndAppend("BRISK-P5Ms", renderMs);
    if (mLogger.isTunneled()) return;
    send(kFirstFrameReady, static_cast<double>(wrapSub(mLogger.mFirstFrameReadyMs, inputMs)));
    send(kFirstFrameRender, static_cast<double>(renderMs));
}

// The differences as they stand: a phase that was never stamped shows as the odd value it gives.
void MediaCodecLogger::Report::writePhases() {
    logAndAppend("BRISK-P2Ms", wrapSub(mLogger.mP2EndMs, mLogger.mP2StartMs));
    logAndAppend("BRISK-P3Ms", wrapSub(mLogger.mP3EndMs, mLogger.mP3StartMs));
    if (!mLogger.isTunneled()) {
        logAndAppend("FirstFrameReadyMs",
                     wrapSub(mLogger.mFirstFrameReadyMs, mLogger.mFirstInputTimeMs));
    }
    const uint64_t stopMs = wrapSub(mLogger.mStopEndMs, mLogger.mStopBeginMs);
    if (stopMs >= kMinReportedStopMs) logAndAppend("TotalMediaCodecStopTimeMs", stopMs);
}

void MediaCodecLogger::Report::writeAudio() {
    const uint64_t totalMs = addOpenSegment(mLogger.mAudioPlaybackTimeMs);
    if (!isReportedTime(totalMs)) return;
    logAndAppend("TotalAudioPlaybackTimeMs", totalMs);
    for (const MetricRecord& record : kAudioPlayback) send(record, totalMs);
}

// Log and record of a fatal error say that there was one; the summary says how many.
void MediaCodecLogger::Report::writeErrors() {
    const uint32_t nonFatal = mLogger.mNonFatalErrorCount;
    if (nonFatal != 0) {
        logAndAppend("CodecNonFatalErrorCount", nonFatal);
        send(kNonFatalErrors, nonFatal, {"media", media()});
    }
    const uint32_t fatal = mLogger.mFatalErrorCount;
    if (fatal != 0) {
        log(".DecoderErrorFatal", 1);
        append(".DecoderErrorFatal", fatal);
        send(kFatalError, 1.0, {"media", media()});
    }
}

void MediaCodecLogger::Report::writeBitrate() {
    const uint64_t measuredMs = mLogger.mTotalIntervalMs;
    if (measuredMs < kMinReportedMs) return;
    const uint64_t kbps = mLogger.mTotalInputBytes * 8 / measuredMs;
    logAndAppend("StreamAvgBitrateInKbps", kbps);
    send(kAverageBitrate, kbps, {"media", media()});
}

void MediaCodecLogger::Report::log(const char* name, uint64_t value) {
    mLogger.logToBuffers(MetricKey("%s.%s", mPrefix.c_str(), name).c_str(), value);
}

void MediaCodecLogger::Report::logRate(const char* name, float value) {
    const MetricKey key("%s.%s", mPrefix.c_str(), name);
    ALOGI("%s = %.3f", mLogger.replacePkgNameWithPid(key.c_str()).c_str(), value);
}

void MediaCodecLogger::Report::append(const char* name, uint64_t value) {
    mSummary.append(":");
    mSummary.append(name);
    mSummary.append("=");
    mSummary.append(static_cast<unsigned long long>(value));
}

void MediaCodecLogger::Report::logAndAppend(const char* name, uint64_t value) {
    log(name, value);
    append(name, value);
}

void MediaCodecLogger::Report::send(const MetricRecord& record, double value) {
    sendMetric(record, mLogger.mPackageName.c_str(), mDescriptor.c_str(), value);
}

void MediaCodecLogger::Report::send(const MetricRecord& record, double value,
                                    MetricData::Entry entry) {
    mData.set({entry});
    sendMetric(record, mLogger.mPackageName.c_str(), mDescriptor.c_str(), value, &mData);
}

AString MediaCodecLogger::logMetrics() {
    if (mMetricsLogged || !mLoggingEnabled) return AString();
    mMetricsLogged = true;
    AString summary = Report(*this).write();
    resetMetricsData();
    return summary;
}

void MediaCodecLogger::logToBuffers(const char* key, unsigned long value) {
    ALOGI("%s = %lld", replacePkgNameWithPid(key).c_str(), static_cast<long long>(value));
}

int MediaCodecLogger::logFramerateToPulse(const char* packageName, const char* codec, float fps) {
    if (packageName == nullptr || codec == nullptr) return 0;
    static constexpr struct {
        float upTo;
        int value;
        const char* text;
    } kClasses[] = {{17.0f, 15, "15"}, {26.0f, 24, "24"}, {32.0f, 30, "30"}, {52.0f, 50, "50"}};
    int value = 60;
    const char* text = "60";
    for (const auto& framerate : kClasses) {
        if (fps <= framerate.upTo) {
            value = framerate.value;
            text = framerate.text;
            break;
        }
    }
    MetricData data;
    data.set({{"fps", text}});
    sendMetric(kAverageFramerate, packageName, codec, saturate(fps), &data);
    return value;
}

// Other bounds than the average's: this classifies the rate that the stream declares.
AString MediaCodecLogger::getFramerate() {
    static constexpr struct {
        float below;
        const char* text;
    } kClasses[] = {{24.5f, "24"}, {27.5f, "25"}, {40.0f, "30"}, {55.0f, "50"}};
    for (const auto& framerate : kClasses) {
        if (mStreamFramerate < framerate.below) return framerate.text;
    }
    return "60";
}

AString MediaCodecLogger::getDurationRange(long durationMs) {
    static constexpr struct {
        long upTo;
        const char* text;
    } kClasses[] = {{300000, "0-5"}, {1800000, "5-30"}, {7200000, "30-120"}};
    for (const auto& range : kClasses) {
        if (durationMs <= range.upTo) return range.text;
    }
    return "120+";
}

}  // namespace android
