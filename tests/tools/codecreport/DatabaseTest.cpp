// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tools/codecreport/database/Database.h>
#include <tools/codecreport/fleet/FleetFigures.h>
#include <tools/codecreport/fleet/LogFiles.h>

#include "ReportSupport.h"
#include "SyntheticLog.h"

namespace android::test {
namespace {

using codecreport::Labels;
using codecreport::labelsOf;
using testing::HasSubstr;

std::string queried(const std::string& database, const std::string& sql) {
    const ProcessResult result = codecreport({"query", database, sql, "--csv"});
    EXPECT_EQ(0, result.exitCode) << result.err;
    return result.out;
}

std::string stutteringLog() {
    Playback playback;
    playback.stalls = {{150, 600}};
    return logOf({playback});
}

TEST(CodecreportDatabase, holdsEachLogOnceUnderAnyName) {
    const std::string text = stutteringLog();
    const std::string log = fileWith(text, "once.log");
    const std::string db = fileWith("", "once.db");
    ASSERT_EQ(0, runProcess({"sh", "-c", "gzip -kf " + log}).exitCode);
    const ProcessResult first = codecreport({"--db", db, log + ".gz", log, fileWith("x\n", "odd"),
                                             "/dev/null", "--label", "build=old"});
    EXPECT_EQ(1, first.exitCode);
    EXPECT_THAT(first.err, HasSubstr("odd: holds no log"));
    EXPECT_THAT(first.err, HasSubstr("1 logs with 1 sessions added, 1 held already, 2 not read"));
    EXPECT_THAT(first.err, HasSubstr("/dev/null: is a pipe or a device"));
    EXPECT_EQ(0, codecreport({"--db", db, log, "--label", "build=new"}).exitCode);
    // Of equal ones the first is kept, though another is read sooner.
    EXPECT_EQ("path,value,verdict\n" + log + ".gz,new,stuttered\n",
              queried(db,
                      "SELECT path, value, verdict FROM log JOIN session USING (log_id) "
                      "JOIN label USING (log_id)"));
}

TEST(CodecreportDatabase, sessionComesOutAsItsLogGaveIt) {
    const std::string text = stutteringLog();
    const std::string db = fileWith("", "same.db");
    const std::string log = fileWith(text, "same.log");
    ASSERT_EQ(0, codecreport({"--db", db, log, "-q"}).exitCode);
    codecreport::Database database;
    ASSERT_TRUE(database.open(db, codecreport::Database::Access::READ)) << database.error();
    codecreport::Statement ids;
    ASSERT_TRUE(database.prepare("SELECT session_id FROM session", &ids) && ids.step());
    Json expected = reportOf(text);
    expected["input"]["files"] = {log};
    EXPECT_EQ(expected, database.reportOf(ids.integer(0)));
    const Json& session = expected["sessions"][0];
    const std::string late = session["lateness"]["max_ms"].dump() + "\n";
    EXPECT_EQ("n,fate,worst\n" + session["counts"]["output_count"].dump() + ",rendered," + late,
              queried(db,
                      "SELECT count(*) AS n, fate, CAST(max(late_ms) AS INTEGER) AS worst FROM "
                      "frame_timeline"));
    ASSERT_EQ(0, codecreport({"rows", db, "-o", db + "-rows"}).exitCode);
    EXPECT_THAT(readFile(db + "-rows/session.jsonl"), HasSubstr(R"("verdict":"stuttered")"));
    EXPECT_EQ("n,cause,late\n1,application," + late,
              queried(db,
                      "SELECT count(*) AS n, cause, CAST(max_ms AS INTEGER) AS late FROM "
                      "incident JOIN distribution USING (session_id) WHERE name = 'lateness'"));
}

TEST(CodecreportDatabase, queryReadsOnlyAndSaysWhatIsWrong) {
    const std::string db = fileWith("", "query.db");
    ASSERT_EQ(0, codecreport({"--db", db, fileWith(stutteringLog(), "query.log"), "-q"}).exitCode);
    EXPECT_EQ("a,b\n\"x,\"\"y\",\n", queried(db, "SELECT 'x,\"y' AS a, NULL AS b"));
    EXPECT_EQ(
            "{\"a\":9007199254740993,\"b\":0.1,\"c\":null}\n",
            codecreport({"query", db, "SELECT 9007199254740993 a, 0.1 b, NULL c", "--jsonl"}).out);
    for (const auto& [file, sql, text] : std::vector<std::array<std::string, 3>>{
                 {db, "DROP TABLE log", "reads only"},
                 {db, "SELECT 1; DELETE FROM log", "one statement"},
                 {db, "SELECT oops", "no such column: oops"},
                 {CODECREPORT, "SELECT 1", "file is not a database"},
                 {db + ".none", "SELECT 1", "unable to open"}}) {
        const ProcessResult result = codecreport({"query", file, sql});
        EXPECT_EQ(1, result.exitCode) << sql;
        EXPECT_THAT(result.err, HasSubstr(text));
    }
}

TEST(CodecreportDatabase, foldersAreComparedAsSets) {
    const std::string base = fileWith("", "sets");
    const std::string folders[] = {base + "-0", base + "-1"};
    ASSERT_EQ(0, runProcess({"mkdir", folders[0], folders[1]}).exitCode);
    for (int i = 0; i < 24; ++i) {
        const int set = i / 12;
        const int n = i % 12;
        Playback playback;
        playback.frames = 100 + n;
        for (int frame = 0; frame < playback.frames; ++frame) {
            playback.slowDecodes[frame] = n + 6 * set;
        }
        fileWith(logOf({playback}), "sets-" + std::to_string(set) + "/" + std::to_string(n));
    }
    const std::string db = folders[0] + ".db";
    ASSERT_EQ(0, codecreport({"--db", db, folders[0], folders[1], "--labels", "{set}/*"}).exitCode);
    for (const auto& [arguments, code, word] :
         std::vector<std::tuple<std::vector<std::string>, int, const char*>>{
                 {{folders[0], "--", folders[1]}, 3, "\nworse\n"},
                 {{folders[1], folders[0]}, 0, "\nbetter\n"},
                 {{folders[0] + "/3", "--", folders[1] + "/4"}, 6, "\ncannot tell\n"},
                 {{"--db", db, "set=sets-0", "--", "set=sets-1", "codec=HW.c2.video.avc"},
                  3,
                  "worse"}}) {
        std::vector<std::string> words = {"compare"};
        words.insert(words.end(), arguments.begin(), arguments.end());
        const ProcessResult result = codecreport(words);
        EXPECT_EQ(code, result.exitCode) << result.out << result.err;
        EXPECT_THAT(result.out, testing::AllOf(HasSubstr(word), HasSubstr("standing_application")));
    }
}

TEST(CodecreportDatabase, fleetSumsUpGroupsAndLeadsToTheWorst) {
    Playback silent;
    silent.frames = 200;
    const std::string db = fileWith("", "fleet.db");
    for (const auto& [build, log] : std::vector<std::pair<std::string, std::string>>{
                 {"build=<1>", stutteringLog()}, {"build=2", logOf({silent})}}) {
        ASSERT_EQ(0,
                  codecreport({"--db", db, fileWith(log, "fleet.log"), "--label", build}).exitCode);
    }
    codecreport::Database database;
    ASSERT_TRUE(database.open(db, codecreport::Database::Access::READ));
    std::string error;
    const auto figures = codecreport::fleetFigures(&database, {{"build", "codec"}}, &error);
    ASSERT_TRUE(figures) << error;
    EXPECT_EQ(2u, figures->all.judged);
    const auto& groups = figures->groupings[0].groups;
    ASSERT_EQ(2u, groups.size());
    EXPECT_EQ("2 · HW.c2.video.avc", groups[0].name);
    EXPECT_EQ(0u, groups[0].stuttered);
    EXPECT_EQ(1u, groups[1].stuttered);
    EXPECT_EQ(150, groups[1].firstFrameMs.percentile(0.5));
    ASSERT_EQ(1u, figures->worst.size());

    const std::string page = db + ".html";
    ASSERT_EQ(0, codecreport({"fleet", db, "-o", page}).exitCode);
    const std::string html = readFile(page);
    EXPECT_THAT(html, HasSubstr("&lt;1&gt;"));
    EXPECT_THAT(html, HasSubstr("application 100&nbsp;%"));
    const std::string worst = "fleet.db-sessions/" + std::to_string(figures->worst[0].id) + ".html";
    EXPECT_THAT(html, HasSubstr("href=\"" + worst + "\""));
    EXPECT_THAT(readFile(db.substr(0, db.size() - 8) + worst), HasSubstr("<!DOCTYPE html>"));
    EXPECT_EQ(2, codecreport({"fleet", db, "-o", db}).exitCode) << "over its own input";
    EXPECT_THAT(codecreport({"fleet", db, "-o", page, "--by", "bild"}).err, HasSubstr("'bild'"));
}

TEST(CodecreportDatabase, labelsComeFromTheEndOfThePath) {
    const struct {
        const char* path;
        const char* pattern;
        std::optional<Labels> labels;
    } kCases[] = {
            {"/a/B12/tv7-mon-1.log", "{build}/{device}-*.log",
             Labels{{"build", "B12"}, {"device", "tv7"}}},
            {"B12/tv7.log.gz", "{device}.log", Labels{{"device", "tv7"}}},
            {"B12/tv7.log", "{device}-*.log", std::nullopt},
            {"a/b/c.log", "a/{x}.log", std::nullopt},
    };
    for (const auto& test : kCases)
        EXPECT_EQ(test.labels, labelsOf(test.path, test.pattern)) << test.path;
}

}  // namespace
}  // namespace android::test
