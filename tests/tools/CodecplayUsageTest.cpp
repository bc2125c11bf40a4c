// SPDX-License-Identifier: Apache-2.0
// codecplay as a command: options, streams, exit codes, signals.
#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <regex>

#include "CodecplayTest.h"

namespace android::test {

namespace {

ProcessResult codecplay(const std::vector<std::string>& arguments) {
    return runProcess(std::vector<std::string>{CODECPLAY} + arguments);
}

/** Until codecplay, which listens to signals by then, has made its log. */
void waitForFile(const std::string& path) {
    for (int i = 0; i < 2000 && access(path.c_str(), F_OK) != 0; ++i) usleep(10'000);
}

}  // namespace

TEST(CodecplayUsageTest, wrongCommandLinesAreRefused) {
    // One command line a line.
    for (const std::string& arguments : splitLines(R"(
--no-such-option f
--speed -1 f
--speed fast f
--speed
--seek 5 f
--seek 5@ f
--seek 1:2:3:4@5 f
--flush '' f
--drop 0 f
--drop 9-3 f
--stall 3:-5 f
--slow-decode 3: f
--error bad@3 f
--display 0x5 f
--prop name f
--prop =value f
--prop name=$(printf %092d 0) f
--json --metrics - f
--vsync 0 f
--buffers 1 f
--instances 0 f
--loop 99999999999999999999 f)")) {
        const ProcessResult result = runProcess({"sh", "-c", CODECPLAY " " + arguments});
        EXPECT_EQ(result.exitCode, 2) << arguments << result.err;
        EXPECT_NE(result.err, "");
        EXPECT_EQ(result.out, "");
    }
}

TEST(CodecplayUsageTest, missingFileIsNamedAndTheOthersArePlayed) {
    const ProcessResult result = codecplay({"--speed", "0", "/no/such/file", ordinaryClip()});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.err.find("codecplay: /no/such/file: No such file or directory"),
              std::string::npos)
            << result.err;
    EXPECT_NE(result.err.find("packets 120, frames 120, rendered 120"), std::string::npos);
}

TEST(CodecplayUsageTest, standardOutputIsTheLogAndNothingElse) {
    const ProcessResult result = codecplay({"--speed", "0", ordinaryClip()});
    const std::regex line(
            R"(\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} [ \d]{5} [ \d]{5} [VDIWEF] MediaCodecLogger: .*)");
    for (const std::string& text : splitLines(result.out)) {
        EXPECT_TRUE(std::regex_match(text, line)) << text;
    }
    EXPECT_GT(splitLines(result.out).size(), 20U);

    EXPECT_EQ(codecplay({"--speed", "0", "--quiet", ordinaryClip()}).out, "");
    const std::string log = scratchFile("log");
    const ProcessResult apart = codecplay({"--speed", "0", "--log", log, ordinaryClip()});
    EXPECT_NE(apart.out.find("rendered 120"), std::string::npos);
    EXPECT_EQ(apart.out.find("[BRISK]"), std::string::npos);
    EXPECT_NE(readFile(log).find("[BRISK]"), std::string::npos);
}

TEST(CodecplayUsageTest, unwritableOutputEndsWithItsOwnCode) {
    for (const char* arguments : {"--log /no/such/folder/file", "--metrics /no/such/folder/file",
                                  "--log /dev/full", "--json >/dev/full", "--quiet --json >&-"}) {
        const ProcessResult result = runProcess(
                {"sh", "-c", CODECPLAY " --speed 0 " + ordinaryClip() + ' ' + arguments});
        EXPECT_EQ(result.exitCode, 4) << arguments;
        EXPECT_NE(result.err.find("cannot be written: "), std::string::npos) << result.err;
    }
}

TEST(CodecplayUsageTest, signalsEndEveryWait) {
    const std::string fifo = scratchFile("a:b.fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    struct Wait {
        int signal;
        std::vector<std::string> arguments;
        size_t bytes;
    };
    for (const Wait& wait :
         std::vector<Wait>{{SIGINT, {fifo}, 0},
                           {SIGTERM, {fifo}, 30000},
                           {SIGINT, {"--stall", "9:60000", ordinaryClip()}, 0}}) {
        const int feed = open(fifo.c_str(), O_RDWR | O_CLOEXEC);
        const std::string log = scratchFile("log");
        Process process(std::vector<std::string>{CODECPLAY, "--json", "--log", log} +
                        wait.arguments);
        const std::string bytes = readFile(ordinaryClip()).substr(0, wait.bytes);
        ASSERT_EQ(write(feed, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
        waitForFile(log);
        usleep(200'000);
        process.signal(wait.signal);
        const ProcessResult result = process.wait(10'000);
        EXPECT_EQ(result.exitCode, 128 + wait.signal) << result.err;
        const Json json = Json::parse(result.out, nullptr, false);
        EXPECT_FALSE(json.is_discarded()) << result.out;
        close(feed);
        if (wait.arguments.size() == 1) continue;
        // What was played until then is reported.
        const Json& video = json["files"][0]["sessions"][0];
        EXPECT_LT(video["rendered"], 120);
        EXPECT_EQ(accountedFrames(video), video["packets"]);
        EXPECT_NE(readFile(log).find("HW.c2.video.avc.BRISK-P2Ms = "), std::string::npos);
    }
}

TEST(CodecplayUsageTest, serviceThatHangsIsLeftBehind) {
    setenv("HOSTBINDER_DIR", scratchFile("binder").c_str(), 1);
    Process service({CODECLOGGERD});
    ASSERT_TRUE(service.waitForOutput("serving"));
    service.signal(SIGSTOP);
    const std::string log = scratchFile("log");
    Process process({CODECPLAY, "--json", "--log", log, ordinaryClip()});
    waitForFile(log);
    usleep(200'000);
    process.signal(SIGTERM);
    const ProcessResult result = process.wait(20'000);
    EXPECT_EQ(result.exitCode, 143) << result.err;
    EXPECT_NE(result.err.find("does the logger service hang?"), std::string::npos) << result.err;
    EXPECT_FALSE(Json::parse(result.out, nullptr, false).is_discarded()) << result.out;
}

}  // namespace android::test
