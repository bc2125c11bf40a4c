// SPDX-License-Identifier: Apache-2.0
#include <mediaCodecLogger/analytics/LatencyLine.h>

#include <mediaCodecLogger/analytics/TrackerClock.h>
#include <mediaCodecLogger/base/AppendText.h>

namespace android::analytics {

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

FrameLatency::FrameLatency(const AnalyticTsInfo& rec, const AnalyticTsInfo& last, int64_t nowMs)
    : nowMs(nowMs),
      mediaCodec(checkedSub(rec.mOutputTimeMs, rec.mQueueTimeMs)),
      codec(checkedSub(rec.mCodecOutTimeMs, rec.mCodecInTimeMs)),
      afterRender(checkedSub(rec.mOutputTimeMs, last.mRenderTimeMs)),
      afterRenderCall(checkedSub(rec.mOutputTimeMs, last.mRenderCallTimeMs)),
      decodeInterval(checkedSub(rec.mCodecOutTimeMs, last.mCodecOutTimeMs)),
      messageDelay(checkedSub(rec.mOutputTimeMs, rec.mCodecOutTimeMs)),
      app(checkedSub(nowMs, rec.mOutputTimeMs)),
      tsDelta(usToMs(checkedSub(rec.mTimeUs, last.mTimeUs))),
      lateness(checkedSub(nowMs, usToMs(rec.mTimeUs))) {}

void LatencyLine::begin(const char* label, const FrameLatency& latency, size_t index,
                        size_t count) {
    mText.clear();
    if (mLast.mRenderTimeMs == 0) mText.append("Pre-Render ");
    mText.append(label);
    appendText(mText, ":", mRec.mTimeUs, "(", latency.lateness, ") TD:", latency.tsDelta, " FARD:");
    // Where the client renders by media time, the distance to the last render says nothing.
    if (mLast.mRenderTimeMs != usToMs(mLast.mTimeUs)) appendText(mText, latency.afterRender);
    appendText(mText, "(", latency.afterRenderCall, ") FAD:", latency.decodeInterval, "(",
               latency.messageDelay, ") AL:", latency.app, "(", latency.nowMs,
               ") FL:", latency.codec, "(", latency.mediaCodec, ") ", index, "/", count);
}

// A late message: the thread that should have passed the frame on was busy with these. The walks
// end at the first that lies outside, because what is older lies outside as well.
void LatencyLine::appendDelayHistory(const Vector<AnalyticTsInfo>& records,
                                     const Vector<FillBufInfo>& fills) {
    const int64_t outputMs = mRec.mOutputTimeMs;
    // Deliberately the low 32 bits, sign-extended: from 2^31 ms of uptime on no stamp is below.
    const int64_t lowerMs = static_cast<int32_t>(mRec.mCodecOutTimeMs);
    const auto counts = [&](int64_t ms) { return ms > lowerMs && ms <= outputMs; };
    const size_t end = mText.size();
    mText.append("$");

    int entries = 0;
    walkBack(records, [&](const AnalyticTsInfo& r) {
        if (entries++ == kDelayEntries || !counts(r.mQueueTimeMs)) return false;
        appendText(mText, "D:-", checkedSub(outputMs, r.mQueueTimeMs), "(",
                   checkedSub(r.mQueueTimeMs, r.mPreQueueTimeMs), ")");
        return true;
    });
    entries = 0;
    walkBack(fills, [&](const FillBufInfo& fill) {
        if (entries++ == kDelayEntries || !counts(fill.mDequeueTimeMs)) return false;
        appendText(mText, "Q:-", checkedSub(outputMs, fill.mDequeueTimeMs), "(",
                   checkedSub(fill.mDequeueTimeMs, fill.mLastQueueStartMs), ")");
        return true;
    });
    if (mText.size() == end + 1) mText.resize(end);
}

// A late decoding: was the component starved, or had it all that it needed? What it got only after
// this frame is skipped; a frame that is shown before this one ends the walk, for those it had
// done.
void LatencyLine::appendDecodeHistory(const Vector<AnalyticTsInfo>& records) {
    const int64_t decodedMs = mRec.mCodecOutTimeMs;
    int entries = 0;
    walkBack(records, [&](const AnalyticTsInfo& r) {
        if (r.mCodecInTimeMs > decodedMs) return true;
        const int64_t aheadUs = checkedSub(r.mTimeUs, mRec.mTimeUs);
        if (entries == 0) mText.append("$");
        appendText(mText, "I:-", checkedSub(decodedMs, r.mCodecInTimeMs), "(",
                   static_cast<size_t>(r.mFramesInCodec), ":", usToMs(aheadUs), ")");
        return ++entries < kDecodeEntries && aheadUs >= 0;
    });
    if (mLast.mRenderTimeMs != 0 && entries > 0) {
        // The distance of the last rendered frame stays in microseconds.
        appendText(mText, "I:-", checkedSub(decodedMs, mLast.mCodecInTimeMs), "(",
                   static_cast<size_t>(mLast.mFramesInCodec), ":",
                   checkedSub(mLast.mTimeUs, mRec.mTimeUs), ")");
    }
}

void LatencyLine::appendFillHistory(const Vector<FillBufInfo>& fills) {
    int entries = 0;
    walkBack(fills, [&](const FillBufInfo& fill) {
        if (fill.mDequeueTimeMs > mRec.mCodecOutTimeMs) return true;
        if (entries == 0) mText.append("$");
        appendText(mText, "F:-", checkedSub(mRec.mCodecOutTimeMs, fill.mDequeueTimeMs), "(",
                   fill.mOwnedByComponent, ":",
                   checkedSub(fill.mDequeueTimeMs, fill.mLastQueueStartMs), ")");
        return ++entries < kFillEntries;
    });
}

}  // namespace android::analytics
