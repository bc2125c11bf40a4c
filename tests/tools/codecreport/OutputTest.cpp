// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <set>

#include <tools/codecreport/Analysis.h>
#include <tools/codecreport/output/Compare.h>
#include <tools/codecreport/output/HtmlPage.h>
#include <tools/codecreport/output/JsonReport.h>
#include <tools/codecreport/output/PageReport.h>

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

/** The analysis of two playbacks in which something of everything happens, one not from its begin.
 */
Json eventfulReport() {
    Playback playback;
    playback.stalls = {{150, 400}};
    playback.drops = {200, 201, 202};
    const std::string running =
            threadtime({{"ZMediaAnalyticV", "vp9 queue:0 s:5 tsS:1"},
                        {"MediaCodecLogger", "4321.HW.c2.video.vp9.bitrateInKbps = 900"},
                        {"MediaCodecLogger", "not of the library"},
                        {"ZMediaAnalyticV",
                         "AVSYNC_V:1(2)(3) b:0 rts:4(5) pid:4321 min:-1(-1 )(10) "
                         "max:0(0)(10) avg:0(0)(10) cnt:1(0)"}});
    codecreport::Analysis analysis;
    codecreport::readLogs(
            Reference(),
            {fileWith(logOf({playback})), fileWith(running, "running"), "/no/such/log"}, false,
            &analysis);
    codecreport::readMetrics(fileWith("{\"name\":\"AvgBitrate\",\"value\":1}\n", "metrics"),
                             &analysis);
    return toJson(analysis);
}

TEST(JsonReport, everyKeyIsDocumentedAndEveryDocumentedKeyIsThere) {
    std::set<std::string> documented;
    const Reference reference;
    for (const Reference::Table& table : reference.tables()) {
        if (table.name != "json") continue;
        for (const auto& entry : table.entries) documented.insert(entry.id);
    }
    std::set<std::string> keys;
    const Json report = eventfulReport();
    const Json values = report.flatten();
    for (const auto& [path, value] : values.items()) {
        if (report[Json::json_pointer(path)].is_structured()) continue;  // Empty.
        // Elements of lists, and keys that are data, as the reference writes them.
        std::string key = std::regex_replace(path.substr(1), std::regex("/[0-9]+"), "[]");
        key = std::regex_replace(key, std::regex("/"), ".");
        key = std::regex_replace(key,
                                 std::regex("(sessions..\\.(report|causes|incidents..\\.shares)|"
                                            "input\\.formats)\\.[^.]+"),
                                 "$1.*");
        keys.insert(key);
    }
    EXPECT_EQ(documented, keys);
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

TEST(PageReport, worstIsDrawnAndEachHasItsVerdict) {
    Json report = reportOf(logOf({Playback()}));
    Json& sessions = report["sessions"];
    while (sessions.dump().size() < 6'000'000) sessions.push_back(Json(sessions[0]));
    sessions.back()["causes"] = {{"codec", {{"stood_ms", 7}}}};
    Json shown = codecreport::pageReport(report)["sessions"];
    EXPECT_EQ(sessions.back(), shown[0]);
    EXPECT_FALSE(shown.back().contains("moments"));
    EXPECT_EQ(sessions[0]["verdict"], shown.back()["verdict"]);
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
    EXPECT_TRUE(compare(good, bad,
                        {*parseThreshold("100000"), *parseThreshold("counts.dropped_count=1")})
                        .exceeds);
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
