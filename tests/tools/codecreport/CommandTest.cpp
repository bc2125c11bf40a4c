// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "ReportSupport.h"
#include "SyntheticLog.h"

namespace android::test {
namespace {

using testing::HasSubstr;

std::string playedLog(std::set<int> drops = {}, int frames = 60) {
    Playback playback;
    playback.frames = frames;
    playback.drops = std::move(drops);
    return logOf({playback});
}

/** An archive of 600 frames whose last bytes are missing. */
std::string cutArchive() {
    const std::string path = fileWith(playedLog({}, 600), "cut") + ".gz";
    runProcess({"sh", "-c", "gzip -c < ${0%.gz} | head -c -100 > $0", path});
    return path;
}

Json fileInFolderOf(const std::string& path, const char* name) {
    return Json::parse(readFile(path.substr(0, path.rfind('/') + 1) + name));
}

TEST(Codecreport, whatIsNotUnderstoodIsSaidAndNotFatal) {
    const std::string log = fileWith(playedLog() +
                                     "03-01 00:10:00.000  4321  4330 I "
                                     "MediaCodecLogger: strange\nrubbish\n");
    const ProcessResult result = codecreport({log, "--json"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_THAT(result.err, HasSubstr("1 lines carry the library's tag and are not understood"));
    EXPECT_THAT(result.err, HasSubstr("1 lines are no log lines"));
    // A log in which the library says nothing is one all the same.
    const ProcessResult silent = codecreport(
            {fileWith("03-01 00:10:00.000  4321  4330 I Zygote: hello\n", "silent"), "--json"});
    EXPECT_EQ(0, silent.exitCode);
    EXPECT_EQ(0u, Json::parse(silent.out)["sessions"].size());
}

TEST(Codecreport, outputTakesItsNameWhenComplete_elseWhatWasThereStays) {
    const std::string log = fileWith(playedLog());
    const std::string folder = log.substr(0, log.rfind('/')) + "/outputs";
    const auto shell = [&](const std::string& command) {
        return runProcess({"sh", "-c", "mkdir -p " + folder + "; cd " + folder + "; " + command});
    };
    // A file size limit is a full disk that needs no mount.
    const std::string report = std::string(CODECREPORT) + " -q " + log;
    const ProcessResult full =
            shell("echo old > page; echo old > trace; trap '' XFSZ; ulimit -f 8; " + report +
                  " -o page --trace trace");
    EXPECT_EQ(4, full.exitCode) << full.err;
    EXPECT_THAT(full.err, HasSubstr("page: File too large"));
    EXPECT_EQ("old\nold\npage\ntrace\n", shell("cat page trace; ls").out);

    // All outputs of one run; a link stays one, and the mode what it was.
    EXPECT_EQ("", shell("chmod 640 page; ln -s page link; " + report +
                        " -o link --trace trace --json=json")
                          .out);
    EXPECT_EQ("<!DOCTYPE html>\n640 page\n1\n",
              shell("head -1 page; test -L link && stat -c '%a %n' page; grep -aq 'HW.c2.video.avc "
                    "#1' trace && echo 1")
                      .out);
    EXPECT_EQ(1u, fileInFolderOf(folder + "/page", "json")["sessions"].size());

    const std::pair<const char*, const char*> refused[] = {
            {" -o ../log", "../log: is an input"},
            {" --json=sub/../new -o new", "new: two outputs cannot be in one file"},
            {" --json >> ", "-: is an input"},
            {" --json -o link > page", "two outputs"},
    };
    for (const auto& [arguments, says] : refused) {
        std::string command = "mkdir -p sub; " + report + arguments;
        if (command.back() == ' ') command += log;
        const ProcessResult result = shell(command);
        EXPECT_EQ(2, result.exitCode) << command;
        EXPECT_THAT(result.err, HasSubstr(says));
    }
    EXPECT_EQ(playedLog(), readFile(log));
    EXPECT_EQ("json\nlink\npage\nsub\ntrace\n", shell("ls").out);
}

TEST(Codecreport, followedLogGivesReportsOnTheWayAndAWholeOneAtTheEnd) {
    const std::string whole = fileWith(playedLog(), "followed");
    const auto follow = [&](const char* script) {
        return runProcess({"sh", "-c", std::string("cd ${1%/*}; rm -f part now first;") + script,
                           CODECREPORT, whole});
    };
    // What is rotated away is not lost; an interrupt ends with all that came.
    const ProcessResult file =
            follow("head -100 $1 > part; $0 part --follow=0.05 --json=now -q & report=$!;"
                   "while ! [ -e now ]; do sleep 0.02; done; cp now first;"
                   "mv part old; tail -n +101 $1 > part;"
                   "while ! grep -q \"line_count.*$(wc -l < $1)\" now; do sleep 0.02; done;"
                   "kill -TERM $report; wait $report");
    EXPECT_EQ(0, file.exitCode) << file.err;
    const Json expected = reportOf(playedLog())["sessions"];
    EXPECT_EQ(expected, fileInFolderOf(whole, "now")["sessions"]);
    expectHas(R"({"line_count": 100, "files": ["part"]})", fileInFolderOf(whole, "first")["input"]);

    const ProcessResult pipe =
            follow("(head -100 $1; while ! [ -e now ]; do sleep 0.02; done; tail -n +101 $1) |"
                   "$0 --follow=0.05 --json=now");
    EXPECT_EQ(0, pipe.exitCode) << pipe.err;
    EXPECT_EQ(expected, fileInFolderOf(whole, "now")["sessions"]);
}

TEST(Codecreport, exitCodesTellWhatWentWrong) {
    const std::string log = fileWith(playedLog());
    struct {
        std::vector<std::string> arguments;
        int exitCode;
        const char* says;
    } const cases[] = {
            {{log}, 2, "nothing to write"},
            {{log, "-o", "-", "--json"}, 2, "only one"},
            {{log, "-o", "-", "--follow"}, 2, "writes to files only"},
            {{log, "-o", "x", "--follow=0"}, 2, "seconds above 0"},
            {{"-", "--metrics", "-", "--json"}, 2, "once only"},
            {{"/no/such/log", "--json"}, 1, "/no/such/log: No such file"},
            {{log, "--metrics", "/no/such/file", "--json"}, 1, "No such file"},
            {{log, "-o", "/no/such/folder/page"}, 4, "No such file"},
            {{log, "--trace", "/dev/full"}, 4, "No space left"},
            {{log, "--json=/dev/full"}, 4, "No space left"},
            {{log, "--db", "x", "--label", "build"}, 2, "KEY=VALUE"},
            {{"compare", log}, 2, "two files"},
            {{"compare", log, log, "--threshold", "x"}, 2, "expected [KEY=]LIMIT[%]"},
            {{"compare", log, log, "--threshold", "no.such=1"}, 2, "that --help lists"},
            {{"compare", log, "/dev/null"}, 1, "/dev/null: holds no log"},
            {{fileWith("any text\n", "text"), "--json"}, 1, "holds no log"},
            {{cutArchive(), "--json"}, 5, "ends early"},
            {{cutArchive(), log, "--json", "-o", "/dev/full"}, 4, "No space left"},
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
    for (const char* command : {" --help", " --version", " explain pts_us"}) {
        const ProcessResult result =
                runProcess({"sh", "-c", CODECREPORT + std::string(command) + " > /dev/full"});
        EXPECT_EQ(4, result.exitCode) << command;
        EXPECT_THAT(result.err, HasSubstr("No space left"));
    }
    // What was read until then stands, standard input's too.
    const ProcessResult cut =
            runProcess({"sh", "-c", "$0 -q --json < $1", CODECREPORT, cutArchive()});
    EXPECT_EQ(5, cut.exitCode) << cut.err;
    EXPECT_LT(400, Json::parse(cut.out)["sessions"][0]["counts"]["rendered_count"]);
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
    }
    const Json values = Json::parse(codecreport({"compare", good, bad, "--json"}).out)["values"];
    EXPECT_TRUE(std::any_of(values.begin(), values.end(), [](const Json& value) {
        return value["key"] == "counts.dropped_count" && value["worse_by"] == 2;
    }));
}

}  // namespace
}  // namespace android::test
