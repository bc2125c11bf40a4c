// SPDX-License-Identifier: Apache-2.0
// The line of a late or dropped frame, character by character against a format's.
#include <gtest/gtest.h>

#include <inttypes.h>
#include <stdio.h>

#include <limits>

#include <mediaCodecLogger/analytics/LatencyLine.h>
#include <mediaCodecLogger/analytics/RenderStatistics.h>
#include <mediaCodecLogger/base/AppendText.h>

namespace android::analytics {
namespace {

template <typename T>
void expectAsPrinted(T value, const char* format) {
    char printed[64];
    snprintf(printed, sizeof(printed), format, value);
    std::string line = "<";
    appendText(line, "a:", value, ")");
    EXPECT_EQ(std::string("<a:") + printed + ")", line);
}

TEST(AppendText, numbersAreThoseOfAFormat) {
    constexpr int64_t kMin = std::numeric_limits<int64_t>::min();
    constexpr int64_t kMax = std::numeric_limits<int64_t>::max();
    for (const int64_t value : {kMin, kMin + 1, int64_t{INT32_MIN}, int64_t{0}, kMax}) {
        expectAsPrinted(value, "%" PRId64);
        expectAsPrinted(static_cast<uint64_t>(value), "%" PRIu64);
        expectAsPrinted(static_cast<int>(value), "%d");
    }
    for (int64_t power = 1; power <= kMax / 10; power *= 10) {
        for (const int64_t value : {power - 1, power, -power, 1 - power}) {
            expectAsPrinted(value, "%" PRId64);
        }
    }
}

/** A frame that was 100 ms with the component and waited 20 ms for its message. */
AnalyticTsInfo frame(int64_t timeUs, int64_t startMs) {
    AnalyticTsInfo rec;
    rec.mTimeUs = timeUs;
    rec.mPreQueueTimeMs = startMs;
    rec.mQueueTimeMs = rec.mCodecInTimeMs = startMs + 2;
    rec.mFramesInCodec = 3;
    rec.mCodecOutTimeMs = startMs + 102;
    rec.mOutputTimeMs = startMs + 122;
    return rec;
}

TEST(LatencyLine, stagesAndHistoriesOfALateFrame) {
    AnalyticTsInfo last = frame(0, 900);
    last.mRenderTimeMs = 1040;
    last.mRenderCallTimeMs = 1030;
    Vector<AnalyticTsInfo> records;
    records.push_back(frame(16000, 950));
    records.push_back(frame(33000, 1000));
    records.push_back(frame(66000, 1105));
    Vector<FillBufInfo> fills;
    fills.push_back({1110, 1100, 4});

    std::string text = "of the line before";
    const AnalyticTsInfo& rec = records[1];
    LatencyLine line(text, rec, last);
    line.begin("Drop", FrameLatency(rec, last, 2000), 1, 3);
    line.appendDelayHistory(records, fills);
    line.appendDecodeHistory(records);
    line.appendFillHistory(fills);
    EXPECT_EQ(
            "Drop:33000(1967) TD:33 FARD:82(92) FAD:100(20) AL:878(2000) FL:100(120) 1/3"
            "$D:-15(2)Q:-12(10)$I:-100(3:0)I:-150(3:-17)I:-200(3:-33000)",
            text);

    // A client that renders by media time, and then nothing rendered at all.
    last.mTimeUs = 1040000;
    line.begin("Drop", FrameLatency(rec, last, 2000), 1, 3);
    EXPECT_NE(std::string::npos, text.find("FARD:(92)"));
    last = AnalyticTsInfo();
    line.begin("Drop", FrameLatency(rec, last, 2000), 1, 3);
    EXPECT_EQ(0u, text.find("Pre-Render Drop:33000(1967) TD:33 FARD:(1122)"));
}

TEST(RenderStatistics, ofIntervalsThereIsOneLessThanFrames) {
    RenderStatistics statistics;
    EXPECT_EQ(-1, statistics.tsStep.shownMin(1000));
    statistics.tsStep.fold(40000);
    statistics.tsStep.fold(-2000);
    statistics.renderCount = 3;
    EXPECT_EQ(-2, statistics.tsStep.shownMin(1000));
    EXPECT_EQ(19000, statistics.averageStep());
    EXPECT_EQ(20000, statistics.averageInterval(40));
    EXPECT_EQ(0, statistics.averageLead());
}

}  // namespace
}  // namespace android::analytics
