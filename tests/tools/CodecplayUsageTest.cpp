// SPDX-License-Identifier: Apache-2.0
// codecplay as a command: options, streams, exit codes, signals.
#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CodecplayTest.h"

namespace android::test {

using namespace testing;

namespace {

/** Until codecplay, which listens to signals by then, has made its log and written a text to it. */
void waitForLog(const std::string& log, const std::string& text) {
    const auto isThere = [&] {
        return access(log.c_str(), F_OK) == 0 && readFile(log).find(text) != std::string::npos;
    };
    for (int i = 0; i < 3000 && !isThere(); ++i) usleep(10'000);
    EXPECT_TRUE(isThere()) << text;
}

}  // namespace

TEST(CodecplayUsageTest, wrongCommandLinesAreRefused) {
    for (const std::string& arguments : splitLines(R"(
--speed -1 f
--speed fast f
--seek 5 f
--seek 1:2:3:4@5 f
--flush '' f
--drop 0 f
--drop 9-3 f
--stall 3:-5 f
--error bad@3 f
--display 0x5 f
--prop =value f
--prop name=$(printf %092d 0) f
--json --metrics - f
--loop 99999999999999999999 f)")) {
        const ProcessResult result = runProcess(codecplay(arguments));
        EXPECT_EQ(result.exitCode, 2) << arguments << result.err;
        EXPECT_NE(result.err, "");
        EXPECT_EQ(result.out, "");
    }
}

TEST(CodecplayUsageTest, missingFileIsNamedAndTheOthersArePlayed) {
    const ProcessResult result = runProcess(codecplay("--speed 0 /no/such/file " + ordinaryClip()));
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.err, HasSubstr("codecplay: /no/such/file: No such file or directory"));
    EXPECT_THAT(result.err, HasSubstr("packets 120, frames 120, rendered 120"));
    // Standard output is the log and nothing else.
    EXPECT_THAT(splitLines(result.out),
                AllOf(SizeIs(Gt(20)), Each(HasSubstr(" MediaCodecLogger: "))));
}

TEST(CodecplayUsageTest, outputGoesWhereItIsAsked) {
    const ProcessResult quiet =
            runProcess(codecplay("--speed 0 --quiet --flush 1:02:03 " + ordinaryClip()));
    EXPECT_EQ(quiet.out, "");
    EXPECT_THAT(quiet.err, HasSubstr(": playback never reached 3723.0"));
    const std::string log = scratchFile("log");
    // From standard input, which may be a pipe.
    const ProcessResult apart =
            runProcess(codecplay("--speed 0 --log " + log + " - <" + ordinaryClip()));
    EXPECT_THAT(apart.out, AllOf(HasSubstr("rendered 120"), Not(HasSubstr("[BRISK]"))));
    EXPECT_THAT(readFile(log), HasSubstr("[BRISK]"));
    for (const char* arguments : {"--log /no/such/folder/file", "--metrics /no/such/folder/file",
                                  "--log /dev/full", "--json >/dev/full", "--quiet --json >&-"}) {
        const ProcessResult result =
                runProcess(codecplay("--speed 0 " + ordinaryClip() + ' ' + arguments));
        EXPECT_EQ(result.exitCode, 4) << arguments;
        EXPECT_THAT(result.err, HasSubstr("cannot be written: "));
    }
}

TEST(CodecplayUsageTest, signalsEndEveryWait) {
    const std::string fifo = scratchFile("a:b.fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const std::string stall = analysis("0x4") + "--stall 9:60000 " + ordinaryClip();
    // The last one's seventh picture is shown by then.
    for (const auto& [signal, arguments, size, line] :
         std::vector<std::tuple<int, std::string, size_t, std::string>>{
                 {SIGINT, fifo, 0, ""},
                 {SIGTERM, fifo, 30000, ""},
                 {SIGINT, stall, 0, " pts:200000 "}}) {
        const int feed = open(fifo.c_str(), O_RDWR | O_CLOEXEC);
        const std::string log = scratchFile("log");
        Process process(codecplay("--json --log " + log + ' ' + arguments));
        const std::string bytes = readFile(ordinaryClip()).substr(0, size);
        ASSERT_EQ(write(feed, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
        waitForLog(log, line);
        process.signal(signal);
        const ProcessResult result = process.wait(10'000);
        EXPECT_EQ(result.exitCode, 128 + signal) << result.err;
        const Json json = Json::parse(result.out, nullptr, false);
        EXPECT_FALSE(json.is_discarded()) << result.out;
        close(feed);
        if (line.empty()) continue;
        // What was played until then is reported.
        EXPECT_LT(json["files"][0]["sessions"][0]["rendered"], 120);
        EXPECT_THAT(readFile(log), HasSubstr("HW.c2.video.avc.BRISK-P2Ms = "));
    }
}

TEST(CodecplayUsageTest, serviceThatHangsIsLeftBehind) {
    setenv("HOSTBINDER_DIR", scratchFile("binder").c_str(), 1);
    Process service({CODECLOGGERD});
    ASSERT_TRUE(service.waitForOutput("serving"));
    service.signal(SIGSTOP);
    const std::string log = scratchFile("log");
    Process process(codecplay("--json --log " + log + ' ' + ordinaryClip()));
    // Which it asks next.
    waitForLog(log, "Got zephra_media_codec_logger Service.");
    process.signal(SIGTERM);
    const ProcessResult result = process.wait(20'000);
    EXPECT_EQ(result.exitCode, 143);
    EXPECT_THAT(result.err, HasSubstr("does the logger service hang?"));
}

}  // namespace android::test
