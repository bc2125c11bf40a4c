// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "ReportSupport.h"
#include "SyntheticLog.h"
#include "tests/support/Process.h"

namespace android::test {
namespace {

using codecreport::LogFormat;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

std::string playedLog(std::set<int> drops = {}) {
    Playback playback;
    playback.frames = 60;
    playback.drops = std::move(drops);
    return writeLog(messagesOf(playback), LogFormat::THREADTIME);
}

ProcessResult codecreport(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), CODECREPORT);
    return runProcess(arguments);
}

TEST(Codecreport, writesPageTraceAndJson) {
    const std::string log = fileWith(playedLog());
    const std::string page = fileWith("", "page");
    const std::string trace = fileWith("", "trace");
    const std::string json = fileWith("", "json");
    const ProcessResult result = codecreport({log, "-o", page, "--trace", trace, "--json=" + json});
    EXPECT_EQ(0, result.exitCode) << result.err;
    EXPECT_THAT(result.out, IsEmpty());
    EXPECT_THAT(result.err, HasSubstr("1 sessions"));
    EXPECT_THAT(readFile(page), StartsWith("<!DOCTYPE html>"));
    EXPECT_EQ(1, Json::parse(readFile(json))["schema_version"]);
    // protoc knows the trace's messages by their numbers only.
    const ProcessResult decoded = runProcess({"sh", "-c", "protoc --decode_raw < " + trace});
    EXPECT_EQ(0, decoded.exitCode) << decoded.err;
    EXPECT_THAT(decoded.out, HasSubstr("HW.c2.video.avc #1"));
}

TEST(Codecreport, readsStandardInputPlainAndCompressed) {
    const std::string log = fileWith(playedLog());
    for (const char* command :
         {"cat %s | %s --json", "gzip -c %s | %s - --json -q", "xz -c %s | %s --json=- -q"}) {
        char line[400];
        snprintf(line, sizeof(line), command, log.c_str(), CODECREPORT);
        const ProcessResult result = runProcess({"sh", "-c", line});
        ASSERT_EQ(0, result.exitCode) << result.err;
        EXPECT_EQ(60, Json::parse(result.out)["sessions"][0]["counts"]["rendered_count"]) << line;
    }
}

TEST(Codecreport, whatIsNotUnderstoodIsSaidAndNotFatal) {
    const std::string log = fileWith(playedLog() +
                                     "03-01 00:10:00.000  4321  4330 I "
                                     "MediaCodecLogger: strange\nrubbish\n");
    const ProcessResult result = codecreport({log, "--json"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_THAT(result.err, HasSubstr("1 lines carry the library's tag and are not understood"));
    EXPECT_THAT(result.err, HasSubstr("1 lines are no log lines"));
    const ProcessResult empty = codecreport({fileWith("", "empty"), "--json"});
    EXPECT_EQ(0, empty.exitCode);
    EXPECT_EQ(0u, Json::parse(empty.out)["sessions"].size());
}

TEST(Codecreport, exitCodesTellWhatWentWrong) {
    const std::string log = fileWith(playedLog());
    struct {
        std::vector<std::string> arguments;
        int exitCode;
        const char* says;
    } const cases[] = {
            {{log}, 2, "nothing to write"},
            {{log, "--nonsense"}, 2, "unknown option --nonsense"},
            {{log, "-o"}, 2, "a value is missing after -o"},
            {{log, "-o", "-", "--json"}, 2, "only one"},
            {{"-", "--metrics", "-", "--json"}, 2, "once only"},
            {{"/no/such/log", "--json"}, 1, "/no/such/log: No such file"},
            {{log, "--metrics", "/no/such/file", "--json"}, 1, "No such file"},
            {{log, "-o", "/no/such/folder/page"}, 4, "No such file"},
            {{log, "--trace", "/no/such/folder/trace"}, 4, "No such file"},
            {{log, "--trace", "/dev/full"}, 4, "cannot be written"},
            {{log, "--json=/dev/full"}, 4, "No space left"},
            {{"compare", log}, 2, "two files"},
            {{"compare", log, log, "--threshold", "x"}, 2, "--threshold takes"},
            {{"compare", log, log, "--threshold", "no.such=1"}, 2, "no value 'no.such'"},
            {{"compare", log, "/dev/null"}, 1, "no codec in common"},
            {{"compare", log, fileWith("{\"schema_version\": 99}", "json")}, 1, "no report"},
            {{"explain"}, 2, "takes a KEY"},
            {{"explain", "no such thing"}, 1, "nothing is known"},
            {{"explain", "--markdown", "nothing"}, 1, "there are: logger"},
    };
    for (const auto& c : cases) {
        const ProcessResult result = codecreport(c.arguments);
        EXPECT_EQ(c.exitCode, result.exitCode) << c.says;
        EXPECT_THAT(result.err, HasSubstr(c.says));
    }
    EXPECT_EQ(0, codecreport({"--help"}).exitCode);
    EXPECT_THAT(codecreport({"--version"}).out, StartsWith("codecreport "));
}

TEST(Codecreport, comparesLogsAndReports) {
    const std::string good = fileWith(playedLog(), "good");
    const std::string bad = fileWith(playedLog({30, 31}), "bad");
    const std::string json = fileWith(codecreport({good, "--json"}).out, "good.json");
    for (const std::string& base : {good, json}) {
        const ProcessResult result =
                codecreport({"compare", base, bad, "--threshold", "counts.dropped_count=1"});
        EXPECT_EQ(3, result.exitCode) << result.err;
        EXPECT_THAT(result.out, HasSubstr("WORSE, past the threshold"));
        EXPECT_EQ(0, codecreport({"compare", base, good, "--threshold", "0"}).exitCode);
        EXPECT_EQ(0, codecreport({"compare", base, bad}).exitCode);
    }
    const ProcessResult result = codecreport({"compare", good, bad, "--json"});
    const Json comparison = Json::parse(result.out);
    EXPECT_FALSE(comparison["exceeds"].get<bool>());
    EXPECT_THAT(comparison["values"], testing::Contains(testing::ResultOf(
                                              [](const Json& value) {
                                                  return value["key"] == "counts.dropped_count" &&
                                                         value["worse_by"] == 2;
                                              },
                                              true)));
}

}  // namespace
}  // namespace android::test
