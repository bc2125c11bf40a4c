// SPDX-License-Identifier: Apache-2.0
// Phases of start-up and stop, registration with the logger service, and decoder errors.
#define LOG_TAG "MediaCodecLogger"

#include <limits>
#include <memory>

#include <stdio.h>

#include <binder/IServiceManager.h>
#include <log/log.h>
#include <media/stagefright/CodecBase.h>
#include <media/stagefright/foundation/AMessage.h>
#include <mediaCodecLogger/LoggerSupport.h>
#include <mediaCodecLogger/MediaCodecLogger.h>
#include <mediaCodecLogger/binder/IMediaCodecLoggerService.h>
#include <mediaCodecLogger/binder/MediaCodecLoggerClient.h>

namespace android {

bool lookUpLoggerService(sp<IMediaCodecLoggerService>& service) {
    const sp<IServiceManager> manager = defaultServiceManager();
    if (manager == nullptr) return false;
    const String16 name(kLoggerServiceName);
    service = IMediaCodecLoggerService::asInterface(manager->getService(name));
    return true;
}

void MediaCodecLogger::profileP2End() {
    mP2EndMs = getSystemTimeMillis();
    ALOGI("[BRISK] %s P2 - %lld", mCodecTag.c_str(), static_cast<long long>(mP2EndMs));
    if (!mLoggingEnabled) return;

    registerWithService();
    const sp<IMediaCodecLoggerService> service = mService;
    if (service != nullptr && isTunneled()) {
        service->updateHidlMediaMetrics(mPackageName.c_str(), mCodecTag.c_str(), mIsDecoder, false);
    }
    subscribeVendorFormat();
}

void MediaCodecLogger::registerWithService() {
    const sp<MediaCodecLoggerClient> client = mClient;
    sp<IMediaCodecLoggerService> service = mService;
    if (service != nullptr) {
        ALOGD("registerClient for %lld, probably moved from un-initialized to configured state",
              static_cast<long long>(clientId()));
        service->registerClient(clientId(), client);
        return;
    }
    if (!lookUpLoggerService(service)) return;
    if (service == nullptr) {
        ALOGW("%s Service unavailable!", kLoggerServiceName);
        return;
    }
    ALOGD("Got %s Service. Calling PID = %d", kLoggerServiceName, mPid);
    client->initialize(mPid, tagHas(TAG_VIDEO), String8(mPackageName.c_str()));
    service->registerClient(clientId(), client);
    mService = service;
}

// Once these are set, the component reports them in its output formats.
void MediaCodecLogger::subscribeVendorFormat() {
    const sp<CodecBase> codec = mCodec;
    if (codec == nullptr || !mIsDecoder || !mCodecName.startsWithIgnoreCase("c2.mtk")) return;
    const sp<AMessage> parameters = new AMessage;
    for (const char* key : {"vendor.mtk-codec2.hdr-type", "vendor.mtk-codec2.scan-type",
                            "vendor.mtk-codec2.color-depth"}) {
        parameters->setInt32(key, 0);
    }
    codec->signalSetParameters(parameters);
    ALOGD("Subscribe MTK C2 hdr-type, scan-type, color-depth parameters");
}

void MediaCodecLogger::profileP3Start() {
    mP3StartMs = getSystemTimeMillis();
    ALOGI("[BRISK] %s P3 + %lld", mCodecTag.c_str(), static_cast<long long>(mP3StartMs));
}

void MediaCodecLogger::profileP3End() {
    mP3EndMs = getSystemTimeMillis();
    ALOGI("[BRISK] %s P3 - %lld", mCodecTag.c_str(), static_cast<long long>(mP3EndMs));
}

void MediaCodecLogger::profileMCStopBegin() {
    if (tagHas(TAG_VIDEO)) mStopBeginMs = getSystemTimeMillis();
}

void MediaCodecLogger::profileMCStopEnd() {
    if (!tagHas(TAG_VIDEO)) return;
    mStopEndMs = getSystemTimeMillis();
    // Readers of the log know the line by this number; it is no position in this file.
    constexpr int kKnownLine = 1462;
    ALOGI("MC Stop Time(start: %llu, stop:%llu :%llu <%s %d>\n",
          static_cast<unsigned long long>(mStopBeginMs),
          static_cast<unsigned long long>(mStopEndMs),
          static_cast<unsigned long long>(wrapSub(mStopEndMs, mStopBeginMs)), __func__, kKnownLine);
}

// Counts every type alike, so what the report calls fatal includes errors that the codec survived.
void MediaCodecLogger::uploadDecoderError(int errorType) {
    ++mFatalErrorCount;
    const char* suffix = errorType == 0   ? ".DecoderErrorFatal"
                         : errorType == 2 ? ".DecoderErrorRecov"
                                          : ".DecoderErrorTrans";
    logToBuffers(MetricKey("%s%s", metricPrefix().c_str(), suffix).c_str(), 1);
    logMetrics();
}

}  // namespace android
