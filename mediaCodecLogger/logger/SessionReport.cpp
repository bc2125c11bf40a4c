// SPDX-License-Identifier: Apache-2.0
#define LOG_TAG "MediaCodecLogger"

#include <mediaCodecLogger/logger/SessionReport.h>

#include <inttypes.h>
#include <stdio.h>

#include <log/log.h>

#include <mediaCodecLogger/logger/MetricKey.h>
#include <mediaCodecLogger/logger/MetricRecord.h>
#include <mediaCodecLogger/logger/SessionNames.h>

namespace android::logger {

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

/** One report on its way: the texts it is built from, the summary so far and the data set. */
class Report {
  public:
    explicit Report(const ReportedSession& reported);
    AString write();

  private:
    void writeVideo();
    void writeAudio();
    int writePlayback(uint64_t totalMs);
    void writeResolutions(int framerateClass);
    void writeDrops(uint64_t totalMs);
    void writeDropContext(uint64_t totalMs, uint32_t total);
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
    const char* media() const { return mCodec.is(TAG_VIDEO) ? "video" : "audio"; }
    const char* packageName() const { return mCodec.mPackageName.c_str(); }

    const CodecIdentity& mCodec;
    const Session& mSession;
    const StreamFormatTexts& mFormatTexts;
    const String8& mOldestAudioCodec;
    const char* const mAtmos;
    AString mSummary;
    AString mPrefix;
    AString mDescriptor;
    MetricData mData;
};

Report::Report(const ReportedSession& reported)
    : mCodec(reported.codec),
      mSession(reported.session),
      mFormatTexts(reported.formatTexts),
      mOldestAudioCodec(reported.oldestAudioCodec),
      mAtmos(reported.atmos ? ".atmos" : ""),
      mSummary(metricPrefix(mCodec, mSession)),
      mPrefix(mSummary),
      mDescriptor(codecDescriptor(mCodec, mSession, mAtmos)) {
    mPrefix.append(mAtmos);
}

AString Report::write() {
    if (mCodec.is(TAG_VIDEO)) {
        writeVideo();
    } else if (mCodec.is(TAG_AUDIO)) {
        writeAudio();
    }
    writeErrors();
    writeBitrate();
    return mSummary;
}

// Playback that was short or never seen says nothing of its quality; how it started still does.
void Report::writeVideo() {
    uint64_t totalMs = 0;
    for (const auto& timeMs : mSession.segments.mPlaybackTimeMsByRes) totalMs += timeMs;

    if (totalMs >= kMinReportedMs && mSession.startup.mFirstFrameRenderMs != 0) {
        const int framerateClass = totalMs < kOneDayMs ? writePlayback(totalMs) : 0;
        writeResolutions(framerateClass);
        logRate("StreamFramerate", mSession.framerate.mStreamFramerate);
        logRate("AspectRatio", static_cast<float>(mSession.format.mWidth) /
                                       static_cast<float>(mSession.format.mHeight));
        writeDrops(totalMs);
        writeFirstFrame();
    }
    writePhases();
}

int Report::writePlayback(uint64_t totalMs) {
    log("TotalVideoPlaybackTimeMs", totalMs);
    for (const MetricRecord& record : kVideoPlayback) send(record, totalMs);
    // The timestamps of tunneled output do not show every frame; its stream's rate stands for it.
    const float framerate = mCodec.isTunneled()
                                    ? static_cast<float>(mSession.framerate.mStreamFramerate)
                                    : static_cast<float>(mSession.segments.mPrevSegmentsFrameCount *
                                                         1000.0 / totalMs);
    logRate("StreamAvgFramerate", framerate);
    return sendFramerate(packageName(), mCodec.mCodecFormat.c_str(), framerate);
}

// The class of the frame rate tells 2160p at 24 from 2160p at 60, which ask different things of a
// device.
void Report::writeResolutions(int framerateClass) {
    for (int i = 0; i < MAX_RES_TYPES; ++i) {
        const uint64_t timeMs = mSession.segments.mPlaybackTimeMsByRes[i];
        if (timeMs < 1 || timeMs >= kOneDayMs) continue;
        const AString name = AStringPrintf("videoResolution.%s", kResolutionNames[i]);
        logAndAppend(name.c_str(), timeMs);
        char dimension[16];
        snprintf(dimension, sizeof(dimension), "%s.%d", kResolutionNames[i], framerateClass);
        sendMetric(kResolutionTime, packageName(), dimension, timeMs);
    }
}

void Report::writeDrops(uint64_t totalMs) {
    const DropRuns& drops = mSession.drops;
    const struct {
        const char* name;
        const char* length;
        uint32_t count;
    } kRuns[] = {
            {"OneConsecutiveFramesDropped", "1", drops.mOneConsecutiveDrops},
            {"TwoConsecutiveFramesDropped", "2", drops.mTwoConsecutiveDrops},
            {"FiveConsecutiveFramesDropped", "5", drops.mFiveConsecutiveDrops},
            {"TenConsecutiveFramesDropped", "10", drops.mTenConsecutiveDrops},
    };
    for (const auto& run : kRuns) {
        if (run.count == 0) continue;
        logAndAppend(run.name, run.count);
        send(kDropRunType, run.count, {"ConsecFD", run.length});
    }

    const uint32_t total = drops.mFramesDropped;
    if (total == 0) return;
    writeDropSources(total);
    logAndAppend("TotalFramesDropped", total);
    send(kDropTotal, total);
    writeDropContext(totalMs, total);
    const uint32_t longest = drops.mMaxConsecutiveFramesDropped;
    logAndAppend("MaxConsecutiveFramesDropped", longest);
    send(kDropRunType, longest, {"ConsecFD", "max"});
}

// What else the device was doing: drops are compared among sessions that are alike.
void Report::writeDropContext(uint64_t totalMs, uint32_t total) {
    mData.set({{"audioCodec", mOldestAudioCodec.string()},
               {"videoCodec", mCodec.mCodecFormat.c_str()},
               {"displayFormat", mFormatTexts.copyHdrType().c_str()},
               {"framerate", streamFramerateClass(mSession.framerate.mStreamFramerate)},
               {"duration", durationClass(static_cast<int64_t>(totalMs))}});
    sendMetric(kDropContext, packageName(), framedropMeta(mCodec, mSession).c_str(), total, &mData);
}

// Only when the display dropped frames; the codec's share is then what remains, be it 0.
void Report::writeDropSources(uint32_t total) {
    const uint32_t byDisplay = mSession.drops.mDisplayFramesDropped;
    if (byDisplay == 0) return;
    append("DisplayFramesDropped", byDisplay);
    send(kDropSource, byDisplay, {"FdType", "SFAndHWCDrops"});
    const uint32_t byCodec = total - byDisplay;
    append("MediaCodecFramesDropped", byCodec);
    send(kDropSource, byCodec, {"FdType", "AppAndMcDrops"});
}

void Report::writeFirstFrame() {
    const StartupProfile& startup = mSession.startup;
    const int64_t renderMs = startup.firstFrameRenderMs();
    logAndAppend("BRISK-P5Ms", renderMs);
    if (mCodec.isTunneled()) return;
    send(kFirstFrameReady, static_cast<double>(startup.firstFrameReadyMs()));
    send(kFirstFrameRender, static_cast<double>(renderMs));
}

void Report::writePhases() {
    const StartupProfile& startup = mSession.startup;
    logAndAppend("BRISK-P2Ms", startup.p2Ms());
    logAndAppend("BRISK-P3Ms", startup.p3Ms());
    if (!mCodec.isTunneled()) {
        logAndAppend("FirstFrameReadyMs", startup.firstFrameReadyMs());
    }
    const uint64_t stopMs = startup.stopMs();
    if (stopMs >= kMinReportedStopMs) logAndAppend("TotalMediaCodecStopTimeMs", stopMs);
}

// Of audio only the time is told: it has no picture to be late, and its frames are no frames.
void Report::writeAudio() {
    const uint64_t totalMs = mSession.segments.mAudioPlaybackTimeMs;
    if (!isReportedTime(totalMs)) return;
    logAndAppend("TotalAudioPlaybackTimeMs", totalMs);
    for (const MetricRecord& record : kAudioPlayback) send(record, totalMs);
}

// Log and record of a fatal error say that there was one; the summary says how many.
void Report::writeErrors() {
    const uint32_t nonFatal = mSession.mNonFatalErrorCount;
    if (nonFatal != 0) {
        logAndAppend("CodecNonFatalErrorCount", nonFatal);
        send(kNonFatalErrors, nonFatal, {"media", media()});
    }
    const uint32_t fatal = mSession.mFatalErrorCount;
    if (fatal != 0) {
        log(".DecoderErrorFatal", 1);
        append(".DecoderErrorFatal", fatal);
        send(kFatalError, 1.0, {"media", media()});
    }
}

// Of closed intervals: what the open one measures may be a few buffers of a burst.
void Report::writeBitrate() {
    const uint64_t measuredMs = mSession.bitrate.mTotalIntervalMs;
    if (measuredMs < kMinReportedMs) return;
    const uint64_t kbps = mSession.bitrate.mTotalInputBytes * 8 / measuredMs;
    logAndAppend("StreamAvgBitrateInKbps", kbps);
    send(kAverageBitrate, kbps, {"media", media()});
}

void Report::log(const char* name, uint64_t value) {
    logMetric(mCodec, MetricKey("%s.%s", mPrefix.c_str(), name).c_str(), value);
}

void Report::logRate(const char* name, float value) {
    const MetricKey key("%s.%s", mPrefix.c_str(), name);
    ALOGI("%s = %.3f", mCodec.replacePkgNameWithPid(key.c_str()).c_str(), value);
}

void Report::append(const char* name, uint64_t value) {
    mSummary.append(":");
    mSummary.append(name);
    mSummary.append("=");
    mSummary.append(static_cast<unsigned long long>(value));
}

void Report::logAndAppend(const char* name, uint64_t value) {
    log(name, value);
    append(name, value);
}

void Report::send(const MetricRecord& record, double value) {
    sendMetric(record, packageName(), mDescriptor.c_str(), value);
}

void Report::send(const MetricRecord& record, double value, MetricData::Entry entry) {
    mData.set({entry});
    sendMetric(record, packageName(), mDescriptor.c_str(), value, &mData);
}

}  // namespace

AString writeReport(const ReportedSession& reported) {
    return Report(reported).write();
}

void logMetric(const CodecIdentity& codec, const char* key, uint64_t value) {
    ALOGI("%s = %" PRId64, codec.replacePkgNameWithPid(key).c_str(), static_cast<int64_t>(value));
}

int sendFramerate(const char* packageName, const char* codec, float fps) {
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
const char* streamFramerateClass(float fps) {
    static constexpr struct {
        float below;
        const char* text;
    } kClasses[] = {{24.5f, "24"}, {27.5f, "25"}, {40.0f, "30"}, {55.0f, "50"}};
    for (const auto& framerate : kClasses) {
        if (fps < framerate.below) return framerate.text;
    }
    return "60";
}

const char* durationClass(int64_t ms) {
    static constexpr struct {
        int64_t upTo;
        const char* text;
    } kClasses[] = {{300000, "0-5"}, {1800000, "5-30"}, {7200000, "30-120"}};
    for (const auto& range : kClasses) {
        if (ms <= range.upTo) return range.text;
    }
    return "120+";
}

}  // namespace android::logger
