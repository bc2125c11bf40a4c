// SPDX-License-Identifier: Apache-2.0
// Events of playback: input, output, rendering and drops, flush, format changes and the component's
// statistics. Each is handed to the parts of the session that it concerns, in order, and logged.
#define LOG_TAG "MediaCodecLogger"

#include <mediaCodecLogger/MediaCodecLogger.h>

#include <inttypes.h>

#include <log/log.h>
#include <media/stagefright/CodecBase.h>

#include <mediaCodecLogger/analytics/FrameEvents.h>
#include <mediaCodecLogger/base/LoggerCheck.h>
#include <mediaCodecLogger/binder/IMediaCodecLoggerService.h>
#include <mediaCodecLogger/logger/MetricRecord.h>
#include <mediaCodecLogger/logger/SessionNames.h>
#include <mediaCodecLogger/logger/VendorStatistics.h>

namespace android {

using namespace logger;

namespace {

/** The app left the render time to the platform. */
constexpr int64_t kNoRenderTime = -1;

constexpr MetricRecord kFhdRampup = {"c48a/2/02330410", "FHDRampupTime", "ms", 0};
constexpr MetricRecord kUhdRampup = {"p61w/2/02330410", "UHDRampupTime", "ms", 0};

}  // namespace

// Input

void MediaCodecLogger::queueInputBuffer_pre(const unsigned char* data, unsigned long size,
                                            const unsigned char* key, const unsigned char* iv,
                                            unsigned long numSubSamples,
                                            const CryptoPlugin::SubSample* subSamples,
                                            CryptoPlugin::Mode mode, long timeUs, long nowUs,
                                            bool encrypted) {
    FrameEvents().updateInputFrame_pre(mCodec, data, size, key, iv, numSubSamples, subSamples, mode,
                                       timeUs, nowUs, encrypted);
}

void MediaCodecLogger::logInputBufferBitrate(unsigned long size, long timeUs, bool secure,
                                             bool secureMemoryUsed) {
    mSession.mIsSecure = secure;
    mSecureMemoryUsed = secureMemoryUsed;
    performBitrateCalculationAndTracking(size, timeUs);
    FrameEvents().updateInputFrame(mCodec, size, timeUs, secure, mIdentity.mCodecFormat);
    mSession.framerate.add(timeUs);
}

void MediaCodecLogger::performBitrateCalculationAndTracking(unsigned long size, long timeUs) {
    const int64_t now = getSystemTimeMillis();
    // An empty buffer, such as an end-of-stream marker, is no first input.
    if (size != 0 && mSession.startup.mFirstInputTimeMs == 0) {
        mSession.startup.mFirstInputTimeMs = now;
        ALOGI("[BRISK] %s Got First Input Frame %" PRId64 " pts:%" PRId64,
              mIdentity.mCodecTag.c_str(), now, timeUs);
    }
    mInputHistory.add(timeUs);
    if (!mSession.bitrate.add(size, now)) return;
    ALOGI("%s.%s = %" PRId64, embeddedWarnings().c_str(), "bitrateInKbps",
          static_cast<int64_t>(mSession.bitrate.mBitrateKbps));
}

// Output

void MediaCodecLogger::updatePTSTime(long pts, bool isEos, unsigned long count) {
    FrameEvents().updateOutputFrame(mCodec, pts);

    PlaybackSegments& segments = mSession.segments;
    Settling& settling = mSession.settling;
    if (settling.mFirstPtsAfterFlush) {
        ALOGI("%s [%s] First PTS after Flush or reset = %" PRId64, __func__,
              mIdentity.mCodecTag.c_str(), pts);
        settling.mFirstPtsAfterFlush = false;
    }
    if (isEos) {
        ALOGI("%s [%s] EOS pts:%" PRId64, __func__, mIdentity.mCodecTag.c_str(), pts);
        return;
    }

    switch (segments.step(pts, count)) {
        case PlaybackSegments::Step::FIRST:
            settling.begin();
            break;
        case PlaybackSegments::Step::SEEKS:
            noteSeek(pts);
            break;
        case PlaybackSegments::Step::CONTINUES:
            break;
    }
    if (settling.mayEnd()) settling.endIfDue(getSystemTimeMillis());
    if (pts >= 0 && !settling.mIgnoreRepeatCheck) {
        if (pts == segments.mLastPts) noteRepeat(pts, count);
        // Without a frame rendered before there is no gap to tell of.
        if (mSession.resolutionChange.mResChangePending &&
            mSession.rendering.mLastRenderTimeMs != 0) {
            finishResolutionChange();
        }
    }
    segments.mLastPts = pts;
    if (mSession.startup.awaitsFrameReady()) noteFirstFrameReady();
}

Relaxed<int64_t>* MediaCodecLogger::playbackTimeMs() {
    PlaybackSegments& segments = mSession.segments;
    if (mIdentity.is(TAG_VIDEO)) {
        return &segments.mPlaybackTimeMsByRes[mSession.format.mResolutionType];
    }
    return mIdentity.is(TAG_AUDIO) ? &segments.mAudioPlaybackTimeMs : nullptr;
}

void MediaCodecLogger::noteSeek(int64_t pts) {
    ALOGI("%s Possible seek found! last pts:%" PRId64 " cur pts:%" PRId64, "updatePTSTime",
          int64_t{mSession.segments.mLastPts}, pts);
    mSession.segments.close(playbackTimeMs(), pts);
}

void MediaCodecLogger::noteRepeat(int64_t pts, unsigned long count) {
    logRepeatPTS(mSession.repeats.mRepeatPtsCount, pts);
    mSession.repeats.addOutput(count);
    checkRepeatedInputPTS(pts);
}

void MediaCodecLogger::logRepeatPTS(int repeatCount, long pts) {
    if (!RepeatedTimestamps::isLogged(repeatCount, mIdentity.throttlesRepeats())) return;
    ALOGI("%s Repeating PTS in Output = %" PRId64, embeddedWarnings().c_str(), pts);
}

void MediaCodecLogger::checkRepeatedInputPTS(long pts) {
    if (mInputHistory.occurrencesOf(pts) != RepeatedTimestamps::kReportedInputOccurrences) return;
    ALOGW("%s Repeating PTS in Input = %" PRId64, embeddedWarnings().c_str(), pts);
    mSession.repeats.addInput();
}

// The gap that the change caused: since the last frame rendered before this one.
void MediaCodecLogger::finishResolutionChange() {
    ResolutionChange& change = mSession.resolutionChange;
    change.mResChangePending = false;
    const int64_t gapMs = mSession.rendering.sinceLastRenderMs(getSystemTimeMillis());
    ALOGI("%s Resolution change from %dx%d to %dx%d took = %" PRId64, embeddedWarnings().c_str(),
          int{change.mPrevWidth}, int{change.mPrevHeight}, int{mSession.format.mWidth},
          int{mSession.format.mHeight}, gapMs);
    sendRampupMetric();
}

void MediaCodecLogger::sendRampupMetric() {
    const auto rampup =
            mSession.resolutionChange.takeRampup(mSession.format.mWidth, mSession.format.mHeight);
    if (rampup == ResolutionChange::Rampup::NONE) return;
    // Unsigned, as the service has always been told it: huge when nothing was rendered yet.
    const uint64_t rampupMs = mSession.startup.sinceFirstFrameRenderMs(getSystemTimeMillis());
    sendMetric(rampup == ResolutionChange::Rampup::UHD ? kUhdRampup : kFhdRampup,
               mIdentity.mPackageName.c_str(), codecDescriptor(mIdentity, mSession, "").c_str(),
               static_cast<double>(rampupMs));
}

void MediaCodecLogger::noteFirstFrameReady() {
    StartupProfile& startup = mSession.startup;
    startup.mFirstFrameReadyMs = getSystemTimeMillis();
    const sp<IMediaCodecLoggerService> service = mService;
    if (service != nullptr) mOldestAudioClientCodec = service->getOldestAudioClientCodec();
    ALOGI("[BRISK] %s Got First Frame Ready %" PRId64 "(%" PRId64 ")", mIdentity.mCodecTag.c_str(),
          int64_t{startup.mFirstFrameReadyMs}, startup.firstFrameReadyMs());
}

// The segment keeps its start, so that the first timestamp after the flush reads as a seek where it
// is one.
void MediaCodecLogger::updateMetricsForFlush() {
    mSession.settling.restart();
    if (mIdentity.is(TAG_VIDEO)) {
        PlaybackSegments& segments = mSession.segments;
        if (segments.mLastPts > segments.mSegmentStartPts) {
            ALOGI("Flushing: %s.framerate = %.3f fps", embeddedWarnings().c_str(),
                  segments.framerateOver(segments.openSpanUs()));
        }
        segments.foldFrames();
        if (mSession.drops.mInDropRun) {
            mSession.drops.forgiveIfYoung(getSystemTimeMillis());
            updateFrameDropCounters();
        }
    }
    FrameEvents().flush(mCodec);
}

// Rendered and dropped frames

void MediaCodecLogger::updateFrameDropCounters(long timeUs, bool rendered) {
    if (!mLoggingEnabled) return;
    Settling& settling = mSession.settling;
    if (rendered) {
        ++mSession.rendering.mRenderedFrameCount;
        checkAndNotifyOutBufferAvailableAfterDelay();
        if (settling.mAwaitingFirstRender) {
            settling.mAwaitingFirstRender = false;
            settling.mFirstRenderAfterFlushMs = getSystemTimeMillis();
            ALOGI("Rendering first frame after starting or flushing.");
        }
        return;
    }
    FrameEvents().dropFrameAnalyze(mCodec, timeUs);
    if (!mIsDecoder || settling.mIgnoreRepeatCheck) return;
    mSession.drops.add(getSystemTimeMillis);
}

void MediaCodecLogger::updateFrameDropCounters() {
    if (!mLoggingEnabled || !mIsDecoder) return;
    DropRuns& drops = mSession.drops;
    const uint32_t total = drops.totalWithRun();
    if (DropRuns::isLogged(total)) {
        // Before the run closes: the markers at its head tell of the runs before this one.
        ALOGI("%s Dropped %d frames", embeddedWarnings().c_str(), static_cast<int>(total));
    }
    drops.close();
}

void MediaCodecLogger::resetConsecutiveFrameDropFlag(long renderTimeNs, long timeUs,
                                                     bool fromTunnelCallback,
                                                     unsigned long renderCount) {
    if (fromTunnelCallback) {
        if (!mIdentity.isTunneled()) return;
        updatePTSTime(timeUs, false /* isEos */, renderCount);
    }
    FrameEvents().updateFrameRender(mCodec, renderTimeNs, timeUs);
    if (!mIsDecoder) return;
    if (mSession.drops.mInDropRun) updateFrameDropCounters();
    mSession.rendering.mLastRenderTimeMs = getSystemTimeMillis();
    if (mSession.startup.awaitsFrameRender() && mIdentity.is(TAG_VIDEO)) {
        noteFirstFrameRendered(renderTimeNs, renderCount);
    }
}

void MediaCodecLogger::noteFirstFrameRendered(int64_t renderTimeNs, unsigned long renderCount) {
    StartupProfile& startup = mSession.startup;
    startup.mFirstFrameRenderMs = getSystemTimeMillis();
    // A player that reports no released buffers settles from here on.
    auto& firstRenderMs = mSession.settling.mFirstRenderAfterFlushMs;
    if (firstRenderMs == 0) firstRenderMs = startup.mFirstFrameRenderMs;
    ALOGI("[BRISK] %s Got First Frame Render %" PRId64 "(%" PRId64 "), renderNum = %zu",
          mIdentity.mCodecTag.c_str(), int64_t{startup.mFirstFrameRenderMs},
          startup.firstFrameRenderMs(), static_cast<size_t>(renderCount));
    notifyFirstFrameRendered();
    if (renderTimeNs != kNoRenderTime) ALOGI("App sets Timestamps for render in SurfaceFlinger");
}

void MediaCodecLogger::checkAndNotifyOutBufferAvailableAfterDelay() {
    if (!mIsDecoder) return;
    Rendering& rendering = mSession.rendering;
    const int64_t now = getSystemTimeMillis();
    if (rendering.isDelayed(now)) {
        const int64_t gapMs = rendering.sinceLastOutputMs(now);
        ALOGI("the latest buffer is %" PRId64 " old with packageName %s. Possible resume detected",
              gapMs, mIdentity.mPackageName.c_str());
        notifyOutBufferAvailablAfterDelay(gapMs);
    }
    rendering.mLastOutputTimeMs = now;
}

// Format changes and the component's statistics

void MediaCodecLogger::updateFormatChanged(sp<AMessage>& format) {
    if (!mIsDecoder) return;
    FormatUpdate update;
    update.take(format, mSession.format, mFormatTexts);
    if (update.convertedFrom != FormatUpdate::kAbsent) {
        ALOGI("%s convert extend color changed from [%d] to standard [%d] !", __func__,
              update.convertedFrom, update.colorStandard);
    }
    ALOGI("%s width = %d height = %d, hdrType = %d, scanType = %d, bitDepth = %d, "
          "colorStandard = %d",
          __func__, update.width, update.height, update.hdrType, update.scanType, update.bitDepth,
          update.colorStandard);
    LOGGER_CHECK(static_cast<uint32_t>(mSession.format.mResolutionType) < MAX_RES_TYPES, "685",
                 "videoType < MAX_RES_TYPES");

    StreamFormat& stream = mSession.format;
    mSession.resolutionChange.arm(stream.mWidth, stream.mHeight);
    stream.mWidth = update.width;
    stream.mHeight = update.height;
    closeSegmentForFormatChange();
    // By the width alone: portrait video counts by its narrow side.
    stream.mResolutionType = resolutionOf(update.width);
    updateDisplaySize();
}

// At the old size, whose class the time belongs to, whatever the codec is.
void MediaCodecLogger::closeSegmentForFormatChange() {
    PlaybackSegments& segments = mSession.segments;
    const int64_t spanUs = segments.openSpanUs();
    if (spanUs <= 0) {
        segments.mSegmentStartPts = segments.mLastPts;
        return;
    }
    ALOGI("%s.framerate = %.3f fps", embeddedWarnings().c_str(), segments.framerateOver(spanUs));
    segments.close(&segments.mPlaybackTimeMsByRes[mSession.format.mResolutionType],
                   segments.mLastPts);
}

status_t MediaCodecLogger::convertExtendedColorToStandard(const sp<AMessage>& format,
                                                          int& standard) {
    return convertExtendedColor(format, standard);
}

long MediaCodecLogger::parseMetricValue(const AString& text, const char* key) {
    return VendorStatistics(text).valueOf(key);
}

void MediaCodecLogger::updateVendorMetrics(AString& metrics) {
    if (metrics.empty()) return;
    const VendorStatistics statistics(metrics);
    DropRuns& drops = mSession.drops;
    mSession.mNonFatalErrorCount = statistics.nonFatalErrors();
    if (mIdentity.isTunneled()) {
        drops.addDroppedInTunnel(statistics.droppedInTunnel());
    } else {
        const uint32_t dropped = drops.addDroppedByDisplay(mSession.rendering.mRenderedFrameCount,
                                                           statistics.shownByDisplay());
        if (dropped != 0) {
            ALOGI("%d frames were dropped in SurfaceFlinger or HWC.", static_cast<int>(dropped));
        }
    }
    drops.raiseLongest(statistics.longestDropRun());
}

}  // namespace android
