// SPDX-License-Identifier: Apache-2.0
// Life cycle, configuration and reset.
#define LOG_TAG "MediaCodecLogger"

#include <mediaCodecLogger/MediaCodecLogger.h>

#include <limits>
#include <memory>

#include <stdio.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include <binder/IBinder.h>
#include <gui/SurfaceComposerClient.h>
#include <log/log.h>
#include <media/stagefright/CodecBase.h>
#include <mediaCodecLogger/LoggerSupport.h>
#include <mediaCodecLogger/binder/IMediaCodecLoggerService.h>
#include <mediaCodecLogger/binder/MediaCodecLoggerClient.h>
#include <ui/DisplayConfig.h>

namespace android {

namespace {

constexpr char kDefaultPackageName[] = "com.android.mediaplayer";

/** The process name of `pid`: its command line up to the first NUL, at most 69 characters. */
AString readProcessName(int pid) {
    char path[32];
    char line[70] = {};
    snprintf(path, sizeof(path), "/proc/%d/cmdline", pid);
    if (FILE* file = fopen(path, "re")) {
        if (fgets(line, sizeof(line), file) == nullptr) line[0] = '\0';
        fclose(file);
    }
    return AString(line);
}

/** Some mimes carry more than the format's name; the first word that occurs stands for them. */
constexpr const char* kFormatWords[] = {"vp8", "vp9", "mp4v", "amr", "mp4a", "g711"};

/** HD shows as SD: the line tells what adaptive playback is worth on this screen. */
constexpr const char* kScreenWords[MAX_RES_TYPES] = {"SD", "SD", "FHD", "4K"};

}  // namespace

sp<MediaCodecLogger> MediaCodecLogger::Create(int pid, unsigned int uid) {
    return new MediaCodecLogger(pid, uid);
}

// No strong reference to this object may exist before the constructor returns: dropping it would
// destroy the object. The client therefore gets a weak one.
MediaCodecLogger::MediaCodecLogger(int pid, unsigned int uid)
    : mPid(pid == -1 ? getpid() : pid),
      mUid(uid),
      mClient(new MediaCodecLoggerClient(wp<MediaCodecLogger>(this))) {
    pthread_rwlock_init(&mLock, nullptr);
    resetMetricsData();
    AString processName = readProcessName(mPid);
    mPackageName = processName.size() < 3 ? AString(kDefaultPackageName) : processName;
}

MediaCodecLogger::~MediaCodecLogger() {
    ZephraMediaAnalytic::instance().removeCodec(mCodec);
    pthread_rwlock_destroy(&mLock);
    mCodec.clear();
    mClient.clear();
    mService.clear();
}

int64_t MediaCodecLogger::getSystemTimeMillis() {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<int64_t>(static_cast<uint64_t>(now.tv_sec) * 1000 +
                                static_cast<uint64_t>(now.tv_nsec / 1000000));
}

void MediaCodecLogger::configure(const AString& codecName, const AString& mime, unsigned int flags,
                                 bool isDecoder, int maxWidth, int maxHeight, sp<CodecBase> codec,
                                 bool loggingEnabled) {
    const int64_t now = getSystemTimeMillis();
    LOGGER_CHECK(!codecName.empty(), "430", "!codecName.empty()");
    LOGGER_CHECK(!mime.empty(), "431", "!mime.empty()");

    resetMetricsData();
    mCodec = codec;
    mFlags = flags;
    mIsDecoder = isDecoder;
    mLoggingEnabled = loggingEnabled;
    mCodecName = codecName;
    nameCodec(mime);

    mP2StartMs = now;
    mMetricsLogged = false;
    ALOGI("[BRISK] %s P2 + %lld", mCodecTag.c_str(), static_cast<long long>(mP2StartMs));
    if (tagHas(TAG_VIDEO)) updateDisplaySize();
    if (maxWidth != 0 && maxHeight != 0) {
        ALOGI("%s Adaptive Streaming max w:%d h:%d, screen size:%s", mCodecTag.c_str(), maxWidth,
              maxHeight, kScreenWords[mScreenSizeType]);
    }
}

void MediaCodecLogger::nameCodec(const AString& mime) {
    AString tag;
    const bool isVideo = contains(mime, "video");
    if (contains(mCodecName, "google") || mCodecName.startsWithIgnoreCase("c2.android")) {
        tag.append("SW.");
    } else {
        if (isVideo && isTunneled()) tag.append("tunneled.");
        tag.append(isVideo ? "HW." : "VND.");
    }
    if (mCodecName.startsWithIgnoreCase("omx.")) {
        tag.append("omx.");
    } else if (mCodecName.startsWithIgnoreCase("c2.")) {
        tag.append("c2.");
    }
    tag.append(isVideo ? "video." : contains(mime, "audio") ? "audio." : "unknown.");
    AString format;
    getCodecFormat(mime, format);
    tag.append(format);

    static constexpr struct {
        TagWord bit;
        const char* word;
    } kTagWords[] = {{TAG_VIDEO, "video"},
                     {TAG_AUDIO, "audio"},
                     {TAG_HW, "HW"},
                     {TAG_SW, "SW"},
                     {TAG_RAW, "raw"}};
    uint32_t words = 0;
    for (const auto& [bit, word] : kTagWords) {
        if (contains(tag, word)) words |= bit;
    }
    mTagWords = words;

    Mutex::Autolock lock(mTextLock);
    mCodecTag = tag;
    mCodecFormat = format;
}

AString MediaCodecLogger::copyCodecFormat() const {
    Mutex::Autolock lock(mTextLock);
    return mCodecFormat;
}

void MediaCodecLogger::getCodecFormat(const AString& mime, AString& out) {
    for (const char* word : kFormatWords) {
        if (contains(mime, word)) {
            out.append(word);
            return;
        }
    }
    const char* slash = strchr(mime.c_str(), '/');
    out.append(slash != nullptr ? slash + 1 : mime.c_str());
}

int MediaCodecLogger::mapResolution(unsigned int size) {
    return size >= 3840 ? RES_UHD : size >= 1920 ? RES_FHD : size >= 1280 ? RES_HD : RES_SD;
}

void MediaCodecLogger::updateDisplaySize() {
    if (mScreenSizeType == RES_UHD) return;
    const sp<IBinder> display = SurfaceComposerClient::getPhysicalDisplayToken(0);
    if (display == nullptr) return;
    DisplayConfig config;
    if (SurfaceComposerClient::getActiveDisplayConfig(display, &config) != OK) return;
    mScreenSizeType = mapResolution(config.resolution.getWidth());
}

AString MediaCodecLogger::replacePkgNameWithPid(const char* text) {
    AString result;
    result.append(mPid);
    if (text != nullptr) {
        const size_t skip = strlen(text) > mPackageName.size() ? mPackageName.size() : 0;
        result.append(text + skip);
    }
    return result;
}

void MediaCodecLogger::resetMetricsData() {
    const sp<IMediaCodecLoggerService> service = mService;
    if (service != nullptr && mLoggingEnabled) {
        const sp<MediaCodecLoggerClient> client = mClient;
        service->unregisterClient(clientId());
        if (isTunneled()) service->updateHidlMediaMetrics(nullptr, nullptr, mIsDecoder, true);
    }
    mIsSecure = false;
    resetPlayback();
    resetStreamFormat();
    resetStartUpAndErrors();
    resetInput();
    resetFrameDrops();
}

void MediaCodecLogger::resetPlayback() {
    mLastPts = -1;
    mSegmentStartPts = -1;
    mRepeatPtsCount = 0;
    mRepeatInputPtsCount = 0;
    mSegmentFrameCount = 0;
    mPrevSegmentsFrameCount = 0;
    mAudioPlaybackTimeMs = 0;
    for (auto& timeMs : mPlaybackTimeMsByRes) timeMs = 0;
    mIgnoreRepeatCheck = false;
    mFirstRenderAfterFlushMs = 0;
    mFirstPtsAfterFlush = true;
    mFirstInputTimeMs = 0;
    mFirstFrameReadyMs = 0;
    mFirstFrameRenderMs = 0;
}

void MediaCodecLogger::resetStreamFormat() {
    mResolutionType = RES_SD;
    mWidth = 0;
    mHeight = 0;
    mBitDepth = 0;
    mColorStandard = 0;
    mScreenSizeType = RES_SD;
    mPrevWidth = 0;
    mPrevHeight = 0;
    mResChangePending = false;
    mFhdRampupLogged = false;
    mUhdRampupLogged = false;
}

void MediaCodecLogger::resetStartUpAndErrors() {
    mP2StartMs = 0;
    mP2EndMs = 0;
    mP3StartMs = 0;
    mP3EndMs = 0;
    mStopBeginMs = 0;
    mStopEndMs = 0;
    mNonFatalErrorCount = 0;
    mFatalErrorCount = 0;
}

// Keeps the ring of input timestamps: only its write position starts again.
void MediaCodecLogger::resetInput() {
    mIntervalBytes = 0;
    mIntervalStartMs = 0;
    mTotalInputBytes = 0;
    mTotalIntervalMs = 0;
    mBitrateKbps = 0;
    mInputPtsCount = 0;
    mStreamFramerate = 0.0f;
    mInputMinPts = 0;
    mInputMaxPts = 0;
    mInputPtsSampleCount = 0;
    mAtmosChecked = false;
    mAtmosDetected = 0;
}

void MediaCodecLogger::resetFrameDrops() {
    mInDropRun = false;
    mFramesDropped = 0;
    mMaxConsecutiveFramesDropped = 0;
    mConsecutiveFramesDropped = 0;
    mOneConsecutiveDrops = 0;
    mTwoConsecutiveDrops = 0;
    mFiveConsecutiveDrops = 0;
    mTenConsecutiveDrops = 0;
    mDisplayFramesDropped = 0;
    mDropRunStartMs = 0;
    mAwaitingFirstRender = true;
    mRenderedFrameCount = 0;
    mLastRenderTimeMs = 0;
    mLastOutputTimeMs = -1;
}

}  // namespace android
