// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include <tools/codecreport/Analysis.h>
#include <tools/codecreport/output/Compare.h>
#include <tools/codecreport/output/HtmlPage.h>
#include <tools/codecreport/output/JsonReport.h>

#include "ReportSupport.h"
#include "SyntheticLog.h"

namespace android::test {
namespace {

using codecreport::compare;
using codecreport::CompareResult;
using codecreport::Outcome;
using codecreport::parseThreshold;
using codecreport::Reference;
using testing::HasSubstr;
using testing::Not;

/** A playback in which something of everything happens, with lines that are not understood. */
std::string eventfulLog() {
    Playback playback;
    playback.stalls = {{150, 400}};
    playback.drops = {200, 201, 202};
    std::vector<LogMessage> messages = messagesOf(playback);
    const auto add = [&](int64_t ms, const char* tag, const char* text) {
        messages.push_back({ms, playback.pid, playback.tid, tag, text});
    };
    add(105'000, "MediaCodecLogger", "4321.HW.c2.video.avc.bitrateInKbps = 900");
    add(106'000, "MediaCodecLogger", "not of the library");
    add(107'000, "ZMediaAnalyticV",
        "AVSYNC_V:1(2)(3) b:0 rts:4(5) pid:4321 min:-1(-1 )(10) max:0(0)(10) avg:0(0)(10) "
        "cnt:1(0)");
    return writeLog(messages);
}

/** The whole analysis of it, with a problem and a metrics record. */
Json eventfulReport() {
    const Reference reference;
    codecreport::Analysis analysis;
    // In the second log a session was running when it began.
    const std::string running = threadtime({{"ZMediaAnalyticV", "vp9 queue:0 s:5 tsS:1"}});
    codecreport::readLogs(reference,
                          {fileWith(eventfulLog()), fileWith(running, "running"), "/no/such/log"},
                          false, &analysis);
    codecreport::readMetrics(fileWith(R"({"name":"AvgBitrate","value":1})"
                                      "\n",
                                      "metrics"),
                             &analysis);
    return toJson(analysis);
}

/** All keys with "[]" for the elements of lists, as the reference writes them. */
void collectKeys(const Json& json, const std::string& path, std::set<std::string>* keys) {
    if (json.is_object()) {
        for (const auto& [key, value] : json.items()) {
            // Their keys are data.
            static const std::set<std::string> kOpen = {"sessions[].report", "sessions[].causes",
                                                        "sessions[].incidents[].shares",
                                                        "input.formats"};
            const bool isOpen = kOpen.count(path) != 0;
            collectKeys(value, path + (path.empty() ? "" : ".") + (isOpen ? "*" : key), keys);
        }
    } else if (json.is_array()) {
        for (const Json& element : json) collectKeys(element, path + "[]", keys);
    } else {
        keys->insert(path);
    }
}

TEST(JsonReport, everyKeyIsDocumentedAndEveryDocumentedKeyIsThere) {
    std::set<std::string> keys;
    collectKeys(eventfulReport(), "", &keys);
    std::set<std::string> documented;
    const Reference reference;
    for (const Reference::Table& table : reference.tables()) {
        if (table.name != "json") continue;
        for (const auto& entry : table.entries) documented.insert(entry.id);
    }
    for (const std::string& key : keys) EXPECT_EQ(1u, documented.count(key)) << key;
    for (const std::string& key : documented) EXPECT_EQ(1u, keys.count(key)) << key;
}

TEST(JsonReport, bytesThatAreNoTextAreReplaced) {
    const Json report =
            reportOf(threadtime({{"MediaCodecLogger", "[BRISK] HW.video.\xff P2 + 100000"},
                                 {"MediaCodecLogger", "\xc3 </script>"}}));
    const std::string text = codecreport::dump(report, false);
    EXPECT_TRUE(Json::accept(text));
    EXPECT_THAT(text, HasSubstr("HW.video.\xef\xbf\xbd"));
    // Nothing of a log can end the page's data.
    const std::string page = htmlPage(report, Reference());
    EXPECT_THAT(page, HasSubstr("\\u003c/script>"));
    EXPECT_THAT(page, Not(HasSubstr("@PAGE_JS@")));
    EXPECT_THAT(page, HasSubstr("The MIT License"));
}

Json playedWith(std::map<int, int64_t> stalls, std::set<int> drops) {
    Playback playback;
    playback.stalls = std::move(stalls);
    playback.drops = std::move(drops);
    return reportOf(logOf({playback}));
}

TEST(Compare, thresholdsAreHeld) {
    const Json good = playedWith({}, {50});
    const Json bad = playedWith({{150, 400}}, {50, 51, 52});
    struct {
        const char* threshold;
        bool badExceeds;
        bool goodExceeds;
    } const cases[] = {
            // Dropped frames: 1 and 3.
            {"counts.dropped_count=1", true, false},
            {"counts.dropped_count=2", false, false},
            {"counts.dropped_count=199%", true, false},
            {"counts.dropped_count=200%", false, false},
            {"report.total_frames_dropped=0", true, false},
            // Standing pictures: 0 and 1, of 400 ms.
            {"standing.count=50%", true, false},
            {"standing.total_ms=400", false, false},
            {"standing.total_ms=399", true, false},
            {"causes.application.stood_ms=399", true, false},
            {"stages.codec.p50_ms=0", false, false},
            {"0", true, false},
            {"100000", false, false},
    };
    for (const auto& c : cases) {
        const auto threshold = parseThreshold(c.threshold);
        ASSERT_TRUE(threshold) << c.threshold;
        EXPECT_EQ(c.badExceeds, compare(good, bad, {*threshold}).exceeds) << c.threshold;
        // The other way round everything got better.
        EXPECT_EQ(c.goodExceeds, compare(bad, good, {*threshold}).exceeds) << c.threshold;
    }
    // Without one, what a viewer notices counts; so does what is not there any more.
    EXPECT_EQ(Outcome::SAME, compare(good, good, {}).outcome);
    EXPECT_EQ(Outcome::WORSE, compare(good, bad, {}).outcome);
    EXPECT_EQ(Outcome::BETTER, compare(bad, good, {}).outcome);
    Json silent = good;
    silent["sessions"][0]["counts"]["shown_count"] = nullptr;
    EXPECT_EQ(Outcome::WORSE, compare(good, silent, {}).outcome);
    Json broken = good;
    broken["sessions"][0]["verdict"]["word"] = "broke off";
    EXPECT_EQ(Outcome::WORSE, compare(good, broken, {*parseThreshold("100000")}).outcome);
    EXPECT_EQ(Outcome::WORSE, compare(good, {{"sessions", Json::array()}}, {}).outcome);
    // A threshold of its own comes before the one for all.
    std::vector<codecreport::Threshold> own;
    for (const char* text :
         {"0", "counts.dropped_count=1", "report.total_frames_dropped=1", "counts.rendered_count=1",
          "counts.shown_count=1", "counts.never_shown_count=1", "drops.longest_run_frames=1",
          "causes.application.stood_ms=40", "causes.application.never_shown_count=1",
          "frame_interval.p99_ms=100%"}) {
        own.push_back(*parseThreshold(text));
    }
    EXPECT_FALSE(compare(good, playedWith({}, {50, 51}), own).exceeds);
    for (const char* text : {"", "x", "=5", "a=", "a=5x", "a=-1", "a=nan", "5%%", "a=1e99"}) {
        EXPECT_FALSE(parseThreshold(text)) << text;
    }
}

TEST(Compare, sessionsGoTogetherByTheirCodec) {
    Json base = playedWith({}, {});
    Json now = base;
    now["sessions"][0]["codec_tag"] = "SW.c2.video.vp9";
    now["sessions"].push_back(base["sessions"][0]);
    now["sessions"][1]["id"] = 2;
    const CompareResult result = compare(base, now, {});
    EXPECT_EQ(1u, result.pairs);
    EXPECT_EQ(2, result.values[0].newId);
    EXPECT_THAT(result.unmatched, testing::ElementsAre("only in NEW: SW.c2.video.vp9"));
    EXPECT_EQ(0u, compare(base, Json::object(), {}).pairs);
    EXPECT_EQ(0u, compare(Json({{"sessions", 7}}), now, {}).pairs);
}

}  // namespace
}  // namespace android::test
