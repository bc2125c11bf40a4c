// SPDX-License-Identifier: Apache-2.0
// Life cycle, configuration, the link to the service, report and answers to queries.
#define LOG_TAG "MediaCodecLogger"

#include <mediaCodecLogger/MediaCodecLogger.h>

#include <inttypes.h>

#include <binder/IBinder.h>
#include <binder/IServiceManager.h>
#include <gui/SurfaceComposerClient.h>
#include <log/log.h>
#include <media/stagefright/CodecBase.h>
#include <media/stagefright/foundation/AMessage.h>
#include <ui/DisplayConfig.h>

#include <mediaCodecLogger/ZephraMediaAnalytic.h>
#include <mediaCodecLogger/base/Clock.h>
#include <mediaCodecLogger/base/LoggerCheck.h>
#include <mediaCodecLogger/base/ScopedRwLock.h>
#include <mediaCodecLogger/binder/IMediaCodecLoggerService.h>
#include <mediaCodecLogger/binder/MediaCodecLoggerClient.h>
#include <mediaCodecLogger/logger/MetricKey.h>
#include <mediaCodecLogger/logger/SessionNames.h>
#include <mediaCodecLogger/logger/SessionReport.h>
#include <mediaCodecLogger/logger/StatusText.h>
#include <mediaCodecLogger/logger/VendorKeys.h>

namespace android {

using namespace logger;

namespace {

/** HD shows as SD: the line tells what adaptive playback is worth on this screen. */
constexpr const char* kScreenWords[MAX_RES_TYPES] = {"SD", "SD", "FHD", "4K"};

/**
 * Looks the logger service up; `service` is null when it is not registered.
 *
 * @return false when there is no service manager to ask
 */
bool lookUpLoggerService(sp<IMediaCodecLoggerService>& service) {
    const sp<IServiceManager> manager = defaultServiceManager();
    if (manager == nullptr) return false;
    const String16 name(kLoggerServiceName);
    service = IMediaCodecLoggerService::asInterface(manager->getService(name));
    return true;
}

}  // namespace

// Life cycle and configuration

sp<MediaCodecLogger> MediaCodecLogger::Create(int pid, unsigned int uid) {
    return new MediaCodecLogger(pid, uid);
}

// No strong reference to this object may exist before the constructor returns: dropping it would
// destroy the object. The client therefore gets a weak one.
MediaCodecLogger::MediaCodecLogger(int pid, unsigned int uid)
    : mIdentity(pid, uid), mClient(new MediaCodecLoggerClient(wp<MediaCodecLogger>(this))) {}

MediaCodecLogger::~MediaCodecLogger() {
    ZephraMediaAnalytic::instance().removeCodec(mCodec);
    // In this order, which is not that of the members.
    mCodec.clear();
    mClient.clear();
    mService.clear();
}

int64_t MediaCodecLogger::getSystemTimeMillis() {
    return readClockMs([](int64_t seconds, int64_t nanoseconds) {
        return wrapAdd(static_cast<int64_t>(static_cast<uint64_t>(seconds) * 1000),
                       nanoseconds / 1000000);
    });
}

void MediaCodecLogger::configure(const AString& codecName, const AString& mime, unsigned int flags,
                                 bool isDecoder, int maxWidth, int maxHeight, sp<CodecBase> codec,
                                 bool loggingEnabled) {
    const int64_t now = getSystemTimeMillis();
    LOGGER_CHECK(!codecName.empty(), "430", "!codecName.empty()");
    LOGGER_CHECK(!mime.empty(), "431", "!mime.empty()");

    // With the switches of the configuration before, by which the client is registered.
    resetMetricsData();
    mCodec = codec;
    mIsDecoder = isDecoder;
    mLoggingEnabled = loggingEnabled;
    mIdentity.configure(codecName, mime, flags);

    mSession.startup.mP2StartMs = now;
    mMetricsLogged = false;
    const char* tag = mIdentity.mCodecTag.c_str();
    ALOGI("[BRISK] %s P2 + %" PRId64, tag, now);
    if (mIdentity.is(TAG_VIDEO)) updateDisplaySize();
    if (maxWidth != 0 && maxHeight != 0) {
        ALOGI("%s Adaptive Streaming max w:%d h:%d, screen size:%s", tag, maxWidth, maxHeight,
              kScreenWords[mSession.format.mScreenSizeType]);
    }
}

void MediaCodecLogger::resetMetricsData() {
    const sp<IMediaCodecLoggerService> service = mService;
    if (service != nullptr && mLoggingEnabled) {
        const sp<MediaCodecLoggerClient> client = mClient;
        service->unregisterClient(clientId());
        if (mIdentity.isTunneled()) {
            service->updateHidlMediaMetrics(nullptr, nullptr, mIsDecoder, true);
        }
    }
    mSession = Session();
    mInputHistory.restart();
}

AString MediaCodecLogger::replacePkgNameWithPid(const char* text) {
    return mIdentity.replacePkgNameWithPid(text);
}

int MediaCodecLogger::mapResolution(unsigned int size) {
    return resolutionOf(size);
}

// A UHD screen is the largest class there is, so that it need not be asked again.
void MediaCodecLogger::updateDisplaySize() {
    auto& screen = mSession.format.mScreenSizeType;
    if (screen == RES_UHD) return;
    const sp<IBinder> display = SurfaceComposerClient::getPhysicalDisplayToken(0);
    if (display == nullptr) return;
    DisplayConfig config;
    if (SurfaceComposerClient::getActiveDisplayConfig(display, &config) != OK) return;
    screen = resolutionOf(config.resolution.getWidth());
}

void MediaCodecLogger::getCodecFormat(const AString& mime, AString& out) {
    appendCodecFormat(mime, out);
}

// Start-up, stop and errors

void MediaCodecLogger::profileP2End() {
    const int64_t now = getSystemTimeMillis();
    mSession.startup.mP2EndMs = now;
    ALOGI("[BRISK] %s P2 - %" PRId64, mIdentity.mCodecTag.c_str(), now);
    if (!mLoggingEnabled) return;

    registerWithService();
    const sp<IMediaCodecLoggerService> service = mService;
    if (service != nullptr && mIdentity.isTunneled()) {
        service->updateHidlMediaMetrics(mIdentity.mPackageName.c_str(), mIdentity.mCodecTag.c_str(),
                                        mIsDecoder, false);
    }
    subscribeVendorFormat();
}

void MediaCodecLogger::registerWithService() {
    const sp<MediaCodecLoggerClient> client = mClient;
    sp<IMediaCodecLoggerService> service = mService;
    if (service != nullptr) {
        ALOGD("registerClient for %" PRId64
              ", probably moved from un-initialized to configured state",
              clientId());
        service->registerClient(clientId(), client);
        return;
    }
    if (!lookUpLoggerService(service)) return;
    if (service == nullptr) {
        ALOGW("%s Service unavailable!", kLoggerServiceName);
        return;
    }
    ALOGD("Got %s Service. Calling PID = %d", kLoggerServiceName, mIdentity.mPid);
    client->initialize(mIdentity.mPid, mIdentity.is(TAG_VIDEO),
                       String8(mIdentity.mPackageName.c_str()));
    service->registerClient(clientId(), client);
    mService = service;
}

// Once these are set, the component reports them in its output formats.
void MediaCodecLogger::subscribeVendorFormat() {
    const sp<CodecBase> codec = mCodec;
    if (codec == nullptr || !mIsDecoder || !mIdentity.mCodecName.startsWithIgnoreCase("c2.mtk")) {
        return;
    }
    const sp<AMessage> parameters = new AMessage;
    for (const VendorKey& key : {kHdrTypeKey, kScanTypeKey, kBitDepthKey}) {
        parameters->setInt32(key.codec2, 0);
    }
    codec->signalSetParameters(parameters);
    ALOGD("Subscribe MTK C2 hdr-type, scan-type, color-depth parameters");
}

void MediaCodecLogger::profileP3Start() {
    const int64_t now = getSystemTimeMillis();
    mSession.startup.mP3StartMs = now;
    ALOGI("[BRISK] %s P3 + %" PRId64, mIdentity.mCodecTag.c_str(), now);
}

void MediaCodecLogger::profileP3End() {
    const int64_t now = getSystemTimeMillis();
    mSession.startup.mP3EndMs = now;
    ALOGI("[BRISK] %s P3 - %" PRId64, mIdentity.mCodecTag.c_str(), now);
}

void MediaCodecLogger::profileMCStopBegin() {
    if (mIdentity.is(TAG_VIDEO)) mSession.startup.mStopBeginMs = getSystemTimeMillis();
}

void MediaCodecLogger::profileMCStopEnd() {
    if (!mIdentity.is(TAG_VIDEO)) return;
    StartupProfile& startup = mSession.startup;
    startup.mStopEndMs = getSystemTimeMillis();
    // Readers of the log know the line by this number; it is no position in this file.
    constexpr int kKnownLine = 1462;
    ALOGI("MC Stop Time(start: %" PRIu64 ", stop:%" PRIu64 " :%" PRIu64 " <%s %d>\n",
          static_cast<uint64_t>(startup.mStopBeginMs), static_cast<uint64_t>(startup.mStopEndMs),
          static_cast<uint64_t>(startup.stopMs()), __func__, kKnownLine);
}

// Counts every type alike, so what the report calls fatal includes errors that the codec survived.
void MediaCodecLogger::uploadDecoderError(int errorType) {
    ++mSession.mFatalErrorCount;
    const char* suffix = errorType == 0   ? ".DecoderErrorFatal"
                         : errorType == 2 ? ".DecoderErrorRecov"
                                          : ".DecoderErrorTrans";
    const AString prefix = metricPrefix(mIdentity, mSession);
    logMetric(mIdentity, MetricKey("%s%s", prefix.c_str(), suffix).c_str(), 1);
    logMetrics();
}

// Notifications and questions to the service

template <typename Call>
void MediaCodecLogger::notifyService(Call call) {
    const sp<IMediaCodecLoggerService> service = mService;
    if (service == nullptr) {
        ALOGW("MediaCodecLoggerService in NULL");
        return;
    }
    if (!mIsDecoder) return;
    // The service knows the client by its address, so it must not go during the call.
    const sp<MediaCodecLoggerClient> client = mClient;
    call(service);
}

void MediaCodecLogger::notifyOutBufferAvailablAfterDelay(long delayMs) {
    notifyService([&](const sp<IMediaCodecLoggerService>& service) {
        service->onOutBufferAvailableAfterDelay(clientId(), delayMs);
    });
}

void MediaCodecLogger::notifyFirstFrameRendered() {
    notifyService([&](const sp<IMediaCodecLoggerService>& service) {
        service->onFirstFrameRendered(clientId());
    });
}

// Asks afresh each time: the allowlist matters before the codec is registered, too.
bool MediaCodecLogger::isInMitigateFrameDropAllowlist() {
    sp<IMediaCodecLoggerService> service;
    if (!lookUpLoggerService(service) || service == nullptr) return false;
    return service->isInMitigateFrameDropAllowlist(mIdentity.mPackageName.c_str()) != 0;
}

// Report

AString MediaCodecLogger::logMetrics() {
    if (mMetricsLogged || !mLoggingEnabled) return AString();
    mMetricsLogged = true;
    const bool atmos = hasAtmos();
    closeSession();
    AString summary =
            writeReport({mIdentity, mSession, mFormatTexts, mOldestAudioClientCodec, atmos});
    resetMetricsData();
    return summary;
}

// Adds the segment that is still open. An open drop run stays out of the report.
void MediaCodecLogger::closeSession() {
    PlaybackSegments& segments = mSession.segments;
    if (mIdentity.is(TAG_VIDEO)) {
        LOGGER_CHECK(static_cast<uint32_t>(mSession.format.mResolutionType) < MAX_RES_TYPES, "904",
                     "videoType < MAX_RES_TYPES");
        segments.addOpenTime(*playbackTimeMs());
        segments.foldFrames();
    } else if (mIdentity.is(TAG_AUDIO)) {
        segments.addOpenTime(*playbackTimeMs());
    }
}

void MediaCodecLogger::logToBuffers(const char* key, unsigned long value) {
    logMetric(mIdentity, key, value);
}

int MediaCodecLogger::logFramerateToPulse(const char* packageName, const char* codec, float fps) {
    return sendFramerate(packageName, codec, fps);
}

AString MediaCodecLogger::getFramerate() {
    return streamFramerateClass(mSession.framerate.mStreamFramerate);
}

AString MediaCodecLogger::getDurationRange(long durationMs) {
    return durationClass(durationMs);
}

AString MediaCodecLogger::getFramedropMeta() {
    return framedropMeta(mIdentity, mSession);
}

void MediaCodecLogger::getEmbeddedWarnings(AString& out) {
    appendWarningsPrefix(mIdentity, mSession, mSecureMemoryUsed, hasAtmos(), out);
}

AString MediaCodecLogger::embeddedWarnings() {
    AString warnings;
    getEmbeddedWarnings(warnings);
    return warnings;
}

// Queries

AString MediaCodecLogger::getStatus() {
    return statusText(mIdentity, mSession, mSecureMemoryUsed, hasAtmos());
}

bool MediaCodecLogger::isAtmosDetected() {
    return mSession.atmos.isDetected(mIdentity.is(TAG_RAW));
}

AString MediaCodecLogger::getHDRType() {
    return mFormatTexts.copyHdrType();
}

void MediaCodecLogger::getResolution(int& width, int& height) {
    ReadLock lock(mFormatTexts.mLock);
    width = mSession.format.mWidth;
    height = mSession.format.mHeight;
}

int MediaCodecLogger::getBitDepth() {
    ReadLock lock(mFormatTexts.mLock);
    return mSession.format.mBitDepth;
}

AString MediaCodecLogger::getScanType() {
    return mFormatTexts.copyScanType();
}

void MediaCodecLogger::getColorProperties(int& value) {
    ReadLock lock(mFormatTexts.mLock);
    value = mSession.format.mColorStandard;
}

}  // namespace android
