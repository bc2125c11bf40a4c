// SPDX-License-Identifier: Apache-2.0
// The way in: announced, queued, handed to the component.

#define LOG_TAG "ZMediaAnalyticV"

#include <mediaCodecLogger/analytics/FrameTracker.h>

#include <inttypes.h>
#include <stdio.h>

#include <algorithm>

#include <log/log.h>

#include <mediaCodecLogger/analytics/RecordVector.h>
#include <mediaCodecLogger/analytics/TrackerClock.h>
#include <mediaCodecLogger/base/AppendText.h>

namespace android {

using namespace analytics;

namespace {

/** Bytes shown of a buffer or of a sub-sample. */
constexpr size_t kShownBytes = 10;

/** Shows the head of the `count` bytes at `offset`, as far as they lie inside the buffer. */
void appendBytes(std::string& text, const uint8_t* data, size_t size, size_t offset, size_t count) {
    if (data == nullptr || offset >= size) return;
    const size_t shown = std::min({count, kShownBytes, size - offset});
    for (size_t i = 0; i < shown; ++i) {
        char byte[4];
        snprintf(byte, sizeof(byte), " %02x", data[offset + i]);
        text.append(byte);
    }
}

void logIv(const uint8_t* iv) {
    ALOGI("iv:%02x %02x %02x %02x %02x %02x %02x %02x %02x %02x %02x %02x %02x %02x %02x %02x",
          iv[0], iv[1], iv[2], iv[3], iv[4], iv[5], iv[6], iv[7], iv[8], iv[9], iv[10], iv[11],
          iv[12], iv[13], iv[14], iv[15]);
}

}  // namespace

bool ZephraMediaAnalytic::FrameTracker::updateInputFrame_pre(
        const uint8_t* data, size_t size, const uint8_t* /*key*/, const uint8_t* iv,
        size_t numSubSamples, const CryptoPlugin::SubSample* subSamples,
        CryptoPlugin::Mode /*mode*/, long timeUs, long nowUs, bool encrypted) {
    Mutex::Autolock lock(mLock);
    mLastInputTimeMs = usToMs(nowUs);
    if (mIsVideo && !mTrackingOff && !appendTsInfo_l(timeUs)) return false;

    if (debugs(DEBUG_BYTES, DEBUG_BYTES_OTHER)) {
        if (encrypted) {
            if (iv != nullptr) logIv(iv);
            logSubSamples_l(data, size, numSubSamples, subSamples, timeUs);
        } else {
            mLine.clear();
            appendText(mLine, "S:", size, " v:", int{mIsVideo}, " t:", timeUs);
            appendBytes(mLine, data, size, 0, size);
            ALOGI("%s", mLine.c_str());
        }
    }
    if (debugs(DUMP_INPUT, DUMP_INPUT_OTHER) && mInputDumpFile.open(mIsVideo ? "video" : "audio") &&
        data != nullptr) {
        mInputDumpFile.write(data, size);
    }
    return true;
}

bool ZephraMediaAnalytic::FrameTracker::appendTsInfo_l(long timeUs) {
    const size_t count = mTsInfos.size();
    // A limit of n lets n + 1 records in; a limit below 1 refuses without a word.
    if (mSettings.mMaxQueueSize < static_cast<ssize_t>(count)) {
        if (mSettings.mMaxQueueSize >= 1) {
            ALOGW("%s queue full:%zu, first ts:%" PRId64 ", last ts:%" PRId64, mLogPrefix.c_str(),
                  count, mTsInfos[0].mTimeUs, timeUs);
        }
        return false;
    }
    // An encoder's frames get records, too. Nothing closes them, so the limit ends its analysis.
    const uint64_t frameNo = mFrameCounter + 1;
    if (frameNo == UINT64_MAX) {
        __android_log_assert("mFrameCounter", LOG_TAG, "frame numbers are used up");
    }
    mFrameCounter = frameNo;

    AnalyticTsInfo rec;
    rec.mTimeUs = timeUs;
    rec.mQueueTimeMs = -1;
    rec.mOutputTimeMs = -1;
    rec.mRenderTimeMs = -1;
    rec.mRenderCallTimeMs = -1;
    rec.mFrameNo = static_cast<int64_t>(frameNo);
    rec.mPreQueueTimeMs = mLastInputTimeMs;
    mTsInfos.push_back(rec);
    return true;
}

void ZephraMediaAnalytic::FrameTracker::logSubSamples_l(const uint8_t* data, size_t size,
                                                        size_t numSubSamples,
                                                        const CryptoPlugin::SubSample* subSamples,
                                                        long timeUs) {
    if (subSamples == nullptr) return;
    size_t offset = 0;
    for (size_t i = 0; i < numSubSamples; ++i) {
        const uint32_t clear = subSamples[i].mNumBytesOfClearData;
        const uint32_t encrypted = subSamples[i].mNumBytesOfEncryptedData;
        const size_t count = checkedCount(clear, encrypted);
        mLine.clear();
        appendText(mLine, "s:", static_cast<int>(i), " v:", int{mIsVideo}, " t:", timeUs,
                   " c:", static_cast<int>(clear), " e:", static_cast<int>(encrypted), " S:", size);
        appendBytes(mLine, data, size, offset, count);
        ALOGI("%s", mLine.c_str());
        offset = checkedCount(offset, count);
    }
}

void ZephraMediaAnalytic::FrameTracker::updateInputFrame(size_t size, long timeUs, bool /*secure*/,
                                                         const AString& formatName) {
    Mutex::Autolock lock(mLock);
    // Told with every buffer, because the registry knows the codec by another name.
    if (mFormatName.empty()) {
        mFormatName = formatName;
        mLogPrefix = mFormatName;
    }
    if (!isVideoDecoder()) {
        if (debugs(DEBUG_INPUT, DEBUG_INPUT_OTHER)) {
            ALOGI("%s %s:%" PRId64 ", size:%zu", mLogPrefix.c_str(), inputEvent(), timeUs, size);
        }
        return;
    }
    if (debugs(DEBUG_INPUT)) {
        ALOGI("%s %s:%" PRId64 " s:%zu tsS:%zu", mLogPrefix.c_str(), inputEvent(), timeUs, size,
              mTsInfos.size());
    }
    const ssize_t index = indexOfTsInfo_l(timeUs);
    if (index < 0) {
        ALOGW("%s Not found when %s ts:%" PRId64, mLogPrefix.c_str(), __func__, timeUs);
        return;
    }
    AnalyticTsInfo& rec = editRecord(mTsInfos, index);
    rec.mQueueTimeMs = monotonicMs();
    if (mIsCodec2) {
        // Codec2 takes the buffer at once and reports no hand-over of its own.
        rec.mCodecInTimeMs = rec.mQueueTimeMs;
        rec.mFramesInCodec = framesInCodec_l();
    }
    if (debugs(DEBUG_TIMELINE)) {
        ALOGI("%s Frame:%zu Decrypt cost:%" PRId64 " ts:%" PRId64 " size:%zu", mLogPrefix.c_str(),
              static_cast<size_t>(rec.mFrameNo), checkedSub(rec.mQueueTimeMs, rec.mPreQueueTimeMs),
              timeUs, size);
    }
}

void ZephraMediaAnalytic::FrameTracker::updateOmxInput(const void* data, size_t size, long timeUs,
                                                       int framesOwned, unsigned flags) {
    Mutex::Autolock lock(mLock);
    if (debugs(DUMP_DECRYPTED, DUMP_DECRYPTED_OTHER) &&
        mDecryptedDumpFile.open(mIsVideo ? "1" : "0") && data != nullptr) {
        mDecryptedDumpFile.write(data, size);
    }
    if (!isVideoDecoder()) {
        if (debugs(DEBUG_INPUT, DEBUG_INPUT_OTHER)) logOmxInput_l(size, timeUs, framesOwned, flags);
        return;
    }
    const ssize_t index = indexOfTsInfo_l(timeUs);
    if (index < 0) {
        ALOGW("%s Not found when %s ts:%" PRId64, mLogPrefix.c_str(), __func__, timeUs);
        return;
    }
    AnalyticTsInfo& rec = editRecord(mTsInfos, index);
    rec.mCodecInTimeMs = monotonicMs();
    rec.mFramesInCodec = framesInCodec_l();
    // The client cannot own them all while the component takes one: a frame went uncounted.
    if (mTsInfos.size() <= mFramesOwnedByUs) {
        ALOGW("%s Omx ETB:%" PRId64 " size:%zu c:%d u:%zu tsS:%zu flag:%x", mLogPrefix.c_str(),
              timeUs, size, framesOwned, mFramesOwnedByUs, mTsInfos.size(), flags);
    }
    if (debugs(DEBUG_INPUT)) logOmxInput_l(size, timeUs, framesOwned, flags);
    if (debugs(DEBUG_TIMELINE)) {
        ALOGI("%s Frame:%zu sent to Omx, ETB(Empty this buffer) Timestamp:%" PRId64
              " size:%zu "
              "frames owned by OMX:%d tsS:%zu flag:%x",
              mLogPrefix.c_str(), static_cast<size_t>(rec.mFrameNo), timeUs, size, framesOwned,
              mTsInfos.size(), flags);
    }
}

void ZephraMediaAnalytic::FrameTracker::logOmxInput_l(size_t size, long timeUs, int framesOwned,
                                                      unsigned flags) const {
    ALOGI("%s Omx ETB:%" PRId64 " size:%zu c:%d tsS:%zu flag:%x", mLogPrefix.c_str(), timeUs, size,
          framesOwned, mTsInfos.size(), flags);
}

}  // namespace android
