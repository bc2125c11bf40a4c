// SPDX-License-Identifier: Apache-2.0
// A service, players and the control program on one machine, each killed in turn.
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <iterator>
#include <limits>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <android/codeclogger/ICodecLoggerAdmin.h>
#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <mediaCodecLogger/binder/IMediaCodecLoggerService.h>
#include <tests/hostPlatform/libbinder/RuntimeFolder.h>
#include <tests/support/Process.h>

namespace android::test {

using testing::HasSubstr;
using testing::Not;
using namespace std::string_literals;

std::vector<std::string> command(const std::string& line) {
    std::istringstream words(line);
    return {std::istream_iterator<std::string>(words), {}};
}

/**
 * codecloggerd, players and codecloggerctl as processes, in a runtime directory of their own in
 * which the test's process takes part as well. Their arguments are words of one text.
 */
class ServiceProcess : public testing::Test {
  protected:
    /** Returns when it serves. */
    void startService(const char* arguments = "") {
        mService = std::make_unique<Process>(command(CODECLOGGERD " "s + arguments));
        ASSERT_TRUE(mService->waitForOutput("serving as zephra_media_codec_logger"))
                << mService->wait(0).err;
    }
    static sp<IMediaCodecLoggerService> service() {
        return IMediaCodecLoggerService::asInterface(
                defaultServiceManager()->checkService(String16(kLoggerServiceName)));
    }
    /** A player with a package name and kinds of codecs. Returns when all of them play. */
    std::unique_ptr<Process> startPlayer(const std::string& arguments) {
        auto player = std::make_unique<Process>(command(TEST_PLAYER " " + arguments));
        EXPECT_TRUE(player->waitForOutput("all play")) << player->wait(0).err;
        return player;
    }
    ProcessResult control(const std::string& arguments) {
        return runProcess(command(CODECLOGGERCTL " " + arguments));
    }
    /** Runs codecloggerctl, which ends with a code and prints `text` among others. */
    void expectOutcome(const std::string& arguments, int exitCode, const std::string& text) {
        const ProcessResult result = control(arguments);
        EXPECT_EQ(result.exitCode, exitCode) << arguments << "\n" << result.err;
        EXPECT_THAT(result.out + result.err, HasSubstr(text)) << arguments;
    }
    const RuntimeFolder mFolder;
    std::unique_ptr<Process> mService;
};

TEST_F(ServiceProcess, twoPlayers_areListedAndDescribed) {
    startService();
    const auto first = startPlayer("com.test.first video audio");
    const auto second = startPlayer("com.test.second video");

    const std::string list = control("list").out;
    for (const char* text : {"com.test.first", "com.test.second", "mp4a", "1280x720", "*"}) {
        EXPECT_THAT(list, HasSubstr(text));
    }
    EXPECT_EQ(splitLines(list).size(), 4u);

    const ProcessResult status = control("status 3");
    EXPECT_EQ(status.exitCode, 0);
    EXPECT_THAT(status.out, HasSubstr("Codec #3 (active): com.test.second (pid " +
                                      std::to_string(second->pid()) + "), video hevc 1280x720\n"));
    EXPECT_THAT(status.out, HasSubstr("\tCodec Type: VIDEO\n\tHW: YES\n\tFormat: hevc\n"));
    EXPECT_THAT(status.out, HasSubstr("\tFirst Frame Rendered: YES\n"));
    EXPECT_THAT(status.out, Not(HasSubstr("com.test.first")));

    expectOutcome("dump lst", 2, "lst: not expected\nUsage: [list|status");
    expectOutcome("dump status 7", 1, "no codec has number or id 7");
    // The service outlives who does not read what it asked for.
    runProcess({"/bin/sh", "-c", CODECLOGGERCTL " dump status | true"});
    EXPECT_EQ(control("dump status").exitCode, 0);

    // What ends in good order unregisters.
    second->signal(SIGTERM);
    EXPECT_EQ(second->wait().exitCode, 0);
    EXPECT_EQ(splitLines(control("list").out).size(), 3u);
}

TEST_F(ServiceProcess, watch_countsFramesByIntervalAndEndsWithAServiceThatHangs) {
    startService();
    const auto player = startPlayer("com.test.app video");
    const auto lines = splitLines(control("watch --json -n 3 -i 0.3").out);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_THAT(lines[0], HasSubstr("\"in_interval\":{\"frames\":0,"));
    EXPECT_THAT(lines[2], Not(HasSubstr("\"in_interval\":{\"frames\":0,")));
    Process watch({CODECLOGGERCTL, "watch"});
    EXPECT_TRUE(watch.waitForOutput("com.test.app"));
    // Interrupted even while the service hangs.
    mService->signal(SIGSTOP);
    watch.signal(SIGINT);
    EXPECT_EQ(watch.wait().exitCode, 130);
    for (const char* arguments : {"list", "dump"}) expectOutcome(arguments, 4, "does not answer");
    EXPECT_THAT(runProcess({CODECLOGGERD}).err, HasSubstr("does not answer; --replace takes over"));
    mService->signal(SIGCONT);
    EXPECT_EQ(control("list").exitCode, 0);
}

TEST_F(ServiceProcess, listen_printsEventsUntilTheServiceGoes) {
    startService();
    Process listener({CODECLOGGERCTL, "listen"});
    ASSERT_TRUE(listener.waitForOutput("listening"));
    auto player = startPlayer("com.test.app late");
    EXPECT_TRUE(listener.waitForOutput("video hevc: first frame rendered"));
    EXPECT_TRUE(listener.waitForOutput("video hevc: output after 1"));
    player->signal(SIGKILL);
    EXPECT_TRUE(listener.waitForOutput("#1 com.test.app (pid " + std::to_string(player->pid()) +
                                       "), video hevc: left"));
    EXPECT_EQ(control("list").out, "No codec is registered.\n");

    mService->signal(SIGKILL);
    const ProcessResult result = listener.wait();
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_THAT(result.err, HasSubstr("the logger service has gone"));
}

TEST_F(ServiceProcess, killedService_doesNotStopPlaybackAndCanBeReplaced) {
    startService();
    const auto player = startPlayer("com.test.old video");
    mService->signal(SIGKILL);
    for (const char* arguments : {"list", "watch", "listen", "dump"}) {
        expectOutcome(arguments, 4, "no logger service is running");
    }
    startService();
    EXPECT_EQ(control("list").out, "No codec is registered.\n");
    const auto next = startPlayer("com.test.new video audio");
    expectOutcome("list", 0, "com.test.new");

    // The old one played on; at its end it finds nobody to unregister from.
    player->signal(SIGTERM);
    const ProcessResult result = player->wait();
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.err, HasSubstr("unregisterClient fail id:"));
}

// The same facts by both ways, and as dumpsys asks.
TEST_F(ServiceProcess, stoppedPlayer_costsItsOwnRowOnly) {
    startService();
    const auto player = startPlayer("com.test.stopped video audio");
    const auto other = startPlayer("com.test.other video");
    player->signal(SIGSTOP);
    for (const char* arguments : {"list", "dump"}) {
        const std::vector<std::string> rows = splitLines(control(arguments).out);
        ASSERT_EQ(rows.size(), 4u);
        EXPECT_THAT(rows[1], HasSubstr("  stopped  "));
        EXPECT_THAT(rows[2], HasSubstr("  stopped  "));
        EXPECT_THAT(rows[3], HasSubstr(" ms  "));
    }
    // The service is not held up either, as codecs that come and go show.
    other->signal(SIGTERM);
    EXPECT_EQ(other->wait().exitCode, 0);
    const auto next = startPlayer("com.test.next video");
    expectOutcome("list", 0, "com.test.next");
    player->signal(SIGCONT);
    EXPECT_THAT(control("dump --json status #1").out, HasSubstr("\"answer\": \"given\""));
}

TEST_F(ServiceProcess, allowlist_reachesThePlayers) {
    startService();
    control("allowlist set com.tv.* com.a --except com.tv.kids --label tv");
    expectOutcome("allowlist show", 0, "# tv\ncom.tv.*\ncom.a\nexcept com.tv.kids\n");
    for (const char* package : {"com.tv.main", "com.tv.", "com.a"}) {
        EXPECT_EQ(service()->isInMitigateFrameDropAllowlist(package), 1) << package;
    }
    for (const char* package : {"com.tv.kids", "com.tv", "com.ab", ""}) {
        EXPECT_EQ(service()->isInMitigateFrameDropAllowlist(package), 0) << package;
    }
    expectOutcome("allowlist set \xff", 1, "");
}

TEST_F(ServiceProcess, secondService_startsOnlyToReplace) {
    startService();
    const auto early = startPlayer("com.test.early video");
    const ProcessResult refused = runProcess({CODECLOGGERD});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.err, HasSubstr("runs already"));
    const std::unique_ptr<Process> first = std::move(mService);
    startService("--replace");
    EXPECT_TRUE(mService->waitForOutput("codecs that stay with the service of process " +
                                        std::to_string(first->pid())));
    const auto player = startPlayer("com.test.app video");
    expectOutcome("list", 0, "com.test.app");
    first->signal(SIGTERM);
    EXPECT_EQ(first->wait().exitCode, 0);
    expectOutcome("list", 0, "com.test.app");
}

// Meant for the thread sanitizer as well: the player, the service and this process are all built
// with it.
TEST_F(ServiceProcess, manyThreads_queryWhileCodecsComeAndGo) {
    startService();
    auto player = startPlayer("com.test.busy busy busy audio");
    ProcessState::self()->startThreadPool();
    const sp<codeclogger::ICodecLoggerAdmin> admin = codeclogger::ICodecLoggerAdmin::asInterface(
            defaultServiceManager()->checkService(codeclogger::ICodecLoggerAdmin::SERVICE_NAME()));
    ASSERT_NE(admin, nullptr);
    std::atomic<bool> done{false};
    std::atomic<int> answers{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            const std::set<std::string> formats{"", "avc", "hevc", "mp4a"};
            while (!done) {
                codeclogger::ServiceState state{};
                if (!admin->getState(&state).isOk()) continue;
                for (const auto& entry : state.clients) {
                    const auto client = IMediaCodecLoggerClient::asInterface(entry.client);
                    answers += client->getStatus().isEmpty() ? 0 : 1;
                    EXPECT_EQ(formats.count(client->getClientCodecFormat().string()), 1u);
                    client->getClientHDRType();
                    int64_t count = 0;
                    service()->getBufferCountSinceLastFlush(entry.id, &count);
                }
            }
        });
    }
    // The codecs are reconfigured many times, and then they die amidst questions.
    for (const int end : {SIGKILL, SIGTERM}) {
        const int enough = answers + 500;
        for (int tries = 0; answers < enough && tries < 20000; ++tries) usleep(1000);
        EXPECT_GE(answers, enough);
        player->signal(end);
        const ProcessResult result = player->wait();
        EXPECT_EQ(result.exitCode, end == SIGTERM ? 0 : 128 + end);
        EXPECT_THAT(result.err, Not(HasSubstr("ThreadSanitizer")));
        player = startPlayer("com.test.busy busy audio");
    }
    done = true;
    for (std::thread& thread : threads) thread.join();
    mService->signal(SIGTERM);
    const ProcessResult result = mService->wait();
    EXPECT_EQ(result.exitCode, 0) << result.err;
}

TEST_F(ServiceProcess, wrongCommandLines_areRefused) {
    for (const char* arguments :
         {"", "show", "list 1", "status x", "watch -i nan", "watch -n 0", "watch --openmetrics",
          "list -n 1", "allowlist", "allowlist show --label a"}) {
        expectOutcome(arguments, 2, "codecloggerctl: ");
    }
}

}  // namespace android::test
