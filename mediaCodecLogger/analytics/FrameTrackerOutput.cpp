// SPDX-License-Identifier: Apache-2.0
// The way out: decoded by the component, handed to the client; and the flush that forgets it all.

#define LOG_TAG "ZMediaAnalyticV"

#include <mediaCodecLogger/analytics/FrameTracker.h>

#include <inttypes.h>
#include <string.h>

#include <hardware/gralloc.h>
#include <log/log.h>
#include <ui/GraphicBuffer.h>

#include <mediaCodecLogger/analytics/RecordVector.h>
#include <mediaCodecLogger/analytics/TrackerClock.h>

namespace android {

using namespace analytics;

void ZephraMediaAnalytic::FrameTracker::updateOmxOutput(long timeUs, int flags, unsigned size) {
    constexpr int kFlagEndOfStream = 0x1;

    Mutex::Autolock lock(mLock);
    if (!isVideoDecoder()) {
        if (debugs(DEBUG_OUTPUT, DEBUG_OUTPUT_OTHER)) {
            ALOGI("%s OMX FBD mediaTs:%" PRId64 " f:%d s:%u%zu", mLogPrefix.c_str(), timeUs, flags,
                  size, mTsInfos.size());
        }
        return;
    }
    // The marker has a timestamp that may be that of a frame.
    if (flags & kFlagEndOfStream) return;
    const ssize_t index = indexOfTsInfo_l(timeUs);
    if (index >= 0 && size != 0) {
        const AnalyticTsInfo& rec = markDecoded_l(index);
        if (debugs(DEBUG_OUTPUT)) {
            ALOGI("%s OMX FBD FL:%" PRId64 " mediaTs:%" PRId64 " f:%d s:%u%zd/%zu",
                  mLogPrefix.c_str(), checkedSub(rec.mCodecOutTimeMs, rec.mCodecInTimeMs), timeUs,
                  flags, size, index, mTsInfos.size());
        }
    } else if (size != 0 || debugs(DEBUG_OUTPUT)) {
        ALOGW("%s not found ts:%" PRId64 " size:%u infos Size:%zu flag:%d when %s",
              mLogPrefix.c_str(), timeUs, size, mTsInfos.size(), flags, __func__);
    }
}

void ZephraMediaAnalytic::FrameTracker::updateC2Output(long timeUs, unsigned flags) {
    Mutex::Autolock lock(mLock);
    if (!isVideoDecoder()) {
        if (debugs(DEBUG_OUTPUT, DEBUG_OUTPUT_OTHER)) {
            ALOGI("%s C2 OWD mediaTs:%" PRId64 " f:%d %zu", mLogPrefix.c_str(), timeUs,
                  static_cast<int>(flags), mTsInfos.size());
        }
        return;
    }
    const ssize_t index = indexOfTsInfo_l(timeUs);
    if (index >= 0) {
        const AnalyticTsInfo& rec = markDecoded_l(index);
        if (debugs(DEBUG_OUTPUT)) {
            ALOGI("%s C2 OWD FL:%" PRId64 " mediaTs:%" PRId64 " f:%d %zd/%zu", mLogPrefix.c_str(),
                  checkedSub(rec.mCodecOutTimeMs, rec.mCodecInTimeMs), timeUs,
                  static_cast<int>(flags), index, mTsInfos.size());
        }
    } else if (debugs(DEBUG_OUTPUT)) {
        ALOGW("%s not found ts:%" PRId64 " infos Size:%zu flag:%d when %s", mLogPrefix.c_str(),
              timeUs, mTsInfos.size(), static_cast<int>(flags), __func__);
    }
}

const AnalyticTsInfo& ZephraMediaAnalytic::FrameTracker::markDecoded_l(size_t index) {
    AnalyticTsInfo& rec = editRecord(mTsInfos, index);
    rec.mCodecOutTimeMs = monotonicMs();
    mFramesOwnedByUs = checkedCount(mFramesOwnedByUs, size_t{1});
    return rec;
}

void ZephraMediaAnalytic::FrameTracker::updateOutputFrame(long timeUs) {
    Mutex::Autolock lock(mLock);
    if (!isVideoDecoder()) {
        if (debugs(DEBUG_OUTPUT, DEBUG_OUTPUT_OTHER)) {
            ALOGI("%s %s:%" PRId64, mLogPrefix.c_str(), outputEvent(), timeUs);
        }
        return;
    }
    const ssize_t index = indexOfTsInfo_l(timeUs);
    if (index < 0) {
        if (takeErrorFrame_l()) ALOGW("%s not found ts when %s", mLogPrefix.c_str(), __func__);
        return;
    }
    if (mFirstOutputTs == -1) mFirstOutputTs = timeUs;
    AnalyticTsInfo& rec = editRecord(mTsInfos, index);
    rec.mOutputTimeMs = monotonicMs();
    // Each of the two bits has its own line and analysis, for readers of the one or the other.
    if (debugs(DEBUG_TIMELINE)) {
        ALOGI("%s Frame:%zu Decoded and filled into output buffer, %s mediaTs:%" PRId64 ", %zd/%zu",
              mLogPrefix.c_str(), static_cast<size_t>(rec.mFrameNo),
              mIsCodec2 ? "Output onWorkDone" : "FBD(Fill buffer done)", timeUs, index,
              mTsInfos.size());
        frameAnalyze_l(timeUs, mLogPrefix.c_str(), false);
    }
    if (debugs(DEBUG_OUTPUT)) {
        ALOGI("%s %s mediaTs:%" PRId64 ", %zd/%zu", mLogPrefix.c_str(), outputEvent(), timeUs,
              index, mTsInfos.size());
        frameAnalyze_l(timeUs, outputEvent(), false);
    }
}

void ZephraMediaAnalytic::FrameTracker::updateACodecOutput(const void* data,
                                                           GraphicBuffer* graphicBuffer,
                                                           size_t size) {
    Mutex::Autolock lock(mLock);
    if (!debugs(DUMP_OUTPUT, DUMP_OUTPUT_OTHER)) return;
    if (!mOutputDumpFile.open(mIsVideo ? "video" : "audio")) return;

    if (graphicBuffer != nullptr) {
        void* mapped = nullptr;
        const status_t status = graphicBuffer->lock(GRALLOC_USAGE_SW_READ_OFTEN, &mapped);
        if (status != OK) {
            // Unsigned, because the smallest status has no negative.
            const int error = static_cast<int>(0u - static_cast<unsigned>(status));
            char text[64];
            ALOGW("lock graphic buffer fail: %s (%d)", strerror_r(error, text, sizeof(text)),
                  error);
            return;
        }
        if (mapped != nullptr) mOutputDumpFile.write(mapped, size);
        graphicBuffer->unlock();
    } else if (data != nullptr) {
        mOutputDumpFile.write(data, size);
    } else {
        return;
    }
    ALOGI("write output size:%zu", size);
}

void ZephraMediaAnalytic::FrameTracker::flush() {
    Mutex::Autolock lock(mLock);
    mTsInfos.clear();
    mLastRendered = {};
    // Unlike a fresh tracker's mark: the statistics of a stream say "First" once.
    mLastAvSyncLogMs = kFlushed;
    resetRenderStatusInfo_l();
    mFirstOutputTs = -1;
    mFramesOwnedByUs = 0;
    mAnalyzed = false;
    // Of all trackers: who reads the log counts frames from a seek on.
    mFrameCounter = 0;
    mErrorFrameCount = 0;
}

}  // namespace android
