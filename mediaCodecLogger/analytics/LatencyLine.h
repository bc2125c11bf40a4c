// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <string>

#include <utils/Vector.h>

#include <mediaCodecLogger/analytics/FrameRecords.h>

namespace android::analytics {

/** Stages of a frame in milliseconds; "last" is the frame rendered before it. */
struct FrameLatency {
    FrameLatency(const AnalyticTsInfo& rec, const AnalyticTsInfo& last, int64_t nowMs);

    const int64_t nowMs;
    const int64_t mediaCodec;       ///< queued to output
    const int64_t codec;            ///< FL: handed to the component to decoded
    const int64_t afterRender;      ///< FARD: render time of last to output
    const int64_t afterRenderCall;  ///< render call of last to output
    const int64_t decodeInterval;   ///< FAD: last decoded to decoded
    const int64_t messageDelay;     ///< decoded to output
    const int64_t app;              ///< AL: output until now
    const int64_t tsDelta;          ///< TD: media time from last
    const int64_t lateness;         ///< now against the media timestamp
};

/**
 * The line of a frame that was late or dropped: its stages and, where one took too long, what its
 * neighbours did meanwhile. Written without formats, because it comes when the device is in
 * trouble.
 */
class LatencyLine {
  public:
    /** @param text where the line goes; the tracker's, so that its memory is used again */
    LatencyLine(std::string& text, const AnalyticTsInfo& rec, const AnalyticTsInfo& last)
        : mText(text), mRec(rec), mLast(last) {}

    /** Starts the line; the frame is the `index`-th of `count`. */
    void begin(const char* label, const FrameLatency& latency, size_t index, size_t count);

    /** What was queued (D) and dequeued (Q) between the frame's decoding and its output. */
    void appendDelayHistory(const Vector<AnalyticTsInfo>& records,
                            const Vector<FillBufInfo>& fills);
    /** What the component had been given (I) when it returned the frame. */
    void appendDecodeHistory(const Vector<AnalyticTsInfo>& records);
    /** Which output buffers the component had got back (F) when it returned the frame. */
    void appendFillHistory(const Vector<FillBufInfo>& fills);

  private:
    std::string& mText;
    const AnalyticTsInfo& mRec;
    const AnalyticTsInfo& mLast;
};

}  // namespace android::analytics
