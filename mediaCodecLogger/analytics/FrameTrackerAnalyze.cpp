// SPDX-License-Identifier: Apache-2.0
// Where one frame spent its time, and what went on around it when that was too long.

#define LOG_TAG "ZMediaAnalyticV"

#include <cutils/properties.h>
#include <cutils/trace.h>
#include <log/log.h>
#include <mediaCodecLogger/analytics/AnalyticSupport.h>
#include <mediaCodecLogger/analytics/FrameTracker.h>

namespace android {

namespace {

// Most entries of each history.
constexpr int kDelayEntries = 6;
constexpr int kDecodeEntries = 16;
constexpr int kFillEntries = 5;

/** Lets `visit` see the items from the newest back until it answers false. */
template <typename T, typename Visitor>
void walkBack(const Vector<T>& items, const Visitor& visit) {
    for (size_t i = items.size(); i > 0 && visit(items[i - 1]); --i) {
    }
}

}  // namespace

/** Stages of a frame in milliseconds; "last" is the frame rendered before it. */
struct ZephraMediaAnalytic::FrameTracker::FrameLatency {
    int64_t nowMs;
    int64_t mediaCodec;       ///< queued to output
    int64_t codec;            ///< FL: handed to the component to decoded
    int64_t afterRender;      ///< FARD: render time of last to output
    int64_t afterRenderCall;  ///< render call of last to output
    int64_t decodeInterval;   ///< FAD: last decoded to decoded
    int64_t messageDelay;     ///< decoded to output
    int64_t app;              ///< AL: output until now
    int64_t tsDelta;          ///< TD: media time from last
    int64_t lateness;         ///< now against the media timestamp
};

ZephraMediaAnalytic::FrameTracker::FrameLatency ZephraMediaAnalytic::FrameTracker::frameLatency_l(
        const AnalyticTsInfo& rec) const {
    const AnalyticTsInfo& last = mLastRendered;
    FrameLatency latency;
    latency.nowMs = monotonicMs();
    latency.mediaCodec = checkedSub(rec.mOutputTimeMs, rec.mQueueTimeMs);
    latency.codec = checkedSub(rec.mCodecOutTimeMs, rec.mCodecInTimeMs);
    latency.afterRender = checkedSub(rec.mOutputTimeMs, last.mRenderTimeMs);
    latency.afterRenderCall = checkedSub(rec.mOutputTimeMs, last.mRenderCallTimeMs);
    latency.decodeInterval = checkedSub(rec.mCodecOutTimeMs, last.mCodecOutTimeMs);
    latency.messageDelay = checkedSub(rec.mOutputTimeMs, rec.mCodecOutTimeMs);
    latency.app = checkedSub(latency.nowMs, rec.mOutputTimeMs);
    latency.tsDelta = usToMs(checkedSub(rec.mTimeUs, last.mTimeUs));
    latency.lateness = checkedSub(latency.nowMs, usToMs(rec.mTimeUs));
    return latency;
}

void ZephraMediaAnalytic::FrameTracker::frameAnalyze_l(long timeUs, const char* label,
                                                       bool retire) {
    const ssize_t index = indexOfTsInfo_l(timeUs);
    if (index < 0) return;
    mAnalyzed = true;
    const AnalyticTsInfo& rec = mTsInfos[index];
    const FrameLatency latency = frameLatency_l(rec);
    if (debugs(kDebugTimeline)) {
        const size_t frameNo = static_cast<size_t>(rec.mFrameNo);
        ALOGI("%s Frame:%zu Frame latency in MediaCodec: %lld Frame latency in Codec: %lld %lld "
              "s:%zu i:%zu",
              mLogPrefix.c_str(), frameNo, ll(latency.mediaCodec), ll(latency.codec), ll(timeUs),
              mTsInfos.size(), static_cast<size_t>(index));
        ALOGI("%s Frame:%zu AL: App Latency: time spent by frame after it is ready in MediaCodec "
              "but before app handles it %lld",
              mLogPrefix.c_str(), frameNo, ll(latency.app));
    }
    mLine.clear();
    appendLatency_l(mLine, rec, latency, label, index);
    if (latency.messageDelay > mMaxMsgDelayTime) appendDelayHistory_l(mLine, rec);
    if (latency.afterRenderCall > mMaxDecodeTime ||
        checkedSub(latency.decodeInterval, latency.messageDelay) > mMaxDecodeTime ||
        latency.afterRender > mMaxDecodeTime) {
        appendDecodeHistory_l(mLine, rec);
        appendFillHistory_l(mLine, rec);
    }
    ALOGI("%s", mLine.c_str());
    if (retire) retire_l(index);
}

void ZephraMediaAnalytic::FrameTracker::appendLatency_l(std::string& line,
                                                        const AnalyticTsInfo& rec,
                                                        const FrameLatency& latency,
                                                        const char* label, size_t index) const {
    const AnalyticTsInfo& last = mLastRendered;
    // Where the client renders by media time, the distance to the last render says nothing.
    char afterRender[24] = "";
    if (last.mRenderTimeMs != usToMs(last.mTimeUs)) {
        snprintf(afterRender, sizeof(afterRender), "%lld", ll(latency.afterRender));
    }
    if (last.mRenderTimeMs == 0) line.append("Pre-Render ");
    appendFormat(line,
                 "%s:%lld(%lld) TD:%lld FARD:%s(%lld) FAD:%lld(%lld) AL:%lld(%lld) FL:%lld(%lld) "
                 "%zu/%zu",
                 label, ll(rec.mTimeUs), ll(latency.lateness), ll(latency.tsDelta), afterRender,
                 ll(latency.afterRenderCall), ll(latency.decodeInterval), ll(latency.messageDelay),
                 ll(latency.app), ll(latency.nowMs), ll(latency.codec), ll(latency.mediaCodec),
                 index, mTsInfos.size());
}

/** What was queued (D) and dequeued (Q) between the frame's decoding and its way to the client. */
void ZephraMediaAnalytic::FrameTracker::appendDelayHistory_l(std::string& line,
                                                             const AnalyticTsInfo& rec) const {
    // Deliberately the low 32 bits, sign-extended: from 2^31 ms of uptime on no stamp is below.
    const int64_t lowerMs = static_cast<int32_t>(rec.mCodecOutTimeMs);
    const auto counts = [&](int64_t ms) { return ms > lowerMs && ms <= rec.mOutputTimeMs; };
    const size_t end = line.size();
    line.append("$");

    int entries = 0;
    walkBack(mTsInfos, [&](const AnalyticTsInfo& r) {
        if (entries++ == kDelayEntries || !counts(r.mQueueTimeMs)) return false;
        appendFormat(line, "D:-%lld(%lld)", ll(checkedSub(rec.mOutputTimeMs, r.mQueueTimeMs)),
                     ll(checkedSub(r.mQueueTimeMs, r.mPreQueueTimeMs)));
        return true;
    });
    entries = 0;
    walkBack(mFillBufInfos, [&](const FillBufInfo& fill) {
        if (entries++ == kDelayEntries || !counts(fill.mDequeueTimeMs)) return false;
        appendFormat(line, "Q:-%lld(%lld)", ll(checkedSub(rec.mOutputTimeMs, fill.mDequeueTimeMs)),
                     ll(checkedSub(fill.mDequeueTimeMs, fill.mLastQueueStartMs)));
        return true;
    });
    if (line.size() == end + 1) line.resize(end);
}

/** What the component had been given (I) when it returned the frame. */
void ZephraMediaAnalytic::FrameTracker::appendDecodeHistory_l(std::string& line,
                                                              const AnalyticTsInfo& rec) const {
    const size_t end = line.size();
    int entries = 0;
    walkBack(mTsInfos, [&](const AnalyticTsInfo& r) {
        if (r.mCodecInTimeMs > rec.mCodecOutTimeMs) return true;
        const int64_t aheadUs = checkedSub(r.mTimeUs, rec.mTimeUs);
        appendFormat(line, "%sI:-%lld(%zu:%lld)", entries == 0 ? "$" : "",
                     ll(checkedSub(rec.mCodecOutTimeMs, r.mCodecInTimeMs)),
                     static_cast<size_t>(r.mFramesInCodec), ll(usToMs(aheadUs)));
        return ++entries < kDecodeEntries && aheadUs >= 0;
    });
    const AnalyticTsInfo& last = mLastRendered;
    if (last.mRenderTimeMs != 0 && line.size() > end) {
        // The distance of the last rendered frame stays in microseconds.
        appendFormat(line, "I:-%lld(%zu:%lld)",
                     ll(checkedSub(rec.mCodecOutTimeMs, last.mCodecInTimeMs)),
                     static_cast<size_t>(last.mFramesInCodec),
                     ll(checkedSub(last.mTimeUs, rec.mTimeUs)));
    }
}

/** Which output buffers the component had got back (F) when it returned the frame. */
void ZephraMediaAnalytic::FrameTracker::appendFillHistory_l(std::string& line,
                                                            const AnalyticTsInfo& rec) const {
    int entries = 0;
    walkBack(mFillBufInfos, [&](const FillBufInfo& fill) {
        if (fill.mDequeueTimeMs > rec.mCodecOutTimeMs) return true;
        appendFormat(line, "%sF:-%lld(%zu:%lld)", entries == 0 ? "$" : "",
                     ll(checkedSub(rec.mCodecOutTimeMs, fill.mDequeueTimeMs)),
                     fill.mOwnedByComponent,
                     ll(checkedSub(fill.mDequeueTimeMs, fill.mLastQueueStartMs)));
        return ++entries < kFillEntries;
    });
}

void ZephraMediaAnalytic::FrameTracker::retire_l(size_t index) {
    removeRecord(mTsInfos, index);
    if (mFramesOwnedByUs == 0) {
        ALOGW("mFramesOwnedByUs is 0 unexpectedly");
    } else {
        --mFramesOwnedByUs;
    }
    if (debugs(kDebugTrace)) {
        property_set("mediaanalytic.atrace", "on");
        atrace_int64(ATRACE_TAG_VIDEO, "drop_sysTime", monotonicMs());
    }
}

}  // namespace android
