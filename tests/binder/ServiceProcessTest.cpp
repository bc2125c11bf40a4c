// SPDX-License-Identifier: Apache-2.0
// A service, players and the control program on one machine, each killed in turn.
#include "ServiceProcess.h"

#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <set>
#include <sstream>
#include <thread>

#include <android/codeclogger/ICodecLoggerAdmin.h>
#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>
#include <mediaCodecLogger/binder/IMediaCodecLoggerService.h>

namespace android::test {

using testing::HasSubstr;
using testing::Not;

TEST_F(ServiceProcess, withoutService_everyCommandSaysSo) {
    for (const char* command : {"list", "watch", "listen", "dump"}) {
        const ProcessResult result = control({command});
        EXPECT_EQ(result.exitCode, 4) << command;
        EXPECT_EQ(result.out, "");
        EXPECT_THAT(result.err, HasSubstr("no logger service is running"));
    }
}

TEST_F(ServiceProcess, twoPlayers_areListedAndDescribed) {
    startService();
    const auto first = startPlayer("com.test.first", {"video", "audio"});
    const auto second = startPlayer("com.test.second", {"video"});

    const std::string list = control({"list"}).out;
    for (const char* text :
         {"com.test.first", "com.test.second", "hevc", "mp4a", "1280x720", "*"}) {
        EXPECT_THAT(list, HasSubstr(text));
    }
    EXPECT_THAT(list, HasSubstr(std::to_string(first->pid())));
    EXPECT_EQ(splitLines(list).size(), 4u);

    const ProcessResult status = control({"status", "3"});
    EXPECT_EQ(status.exitCode, 0);
    EXPECT_THAT(status.out, HasSubstr("Codec #3 (active): com.test.second (pid " +
                                      std::to_string(second->pid()) + "), video hevc 1280x720\n"));
    EXPECT_THAT(status.out, HasSubstr("\tCodec Type: VIDEO\n\tHW: YES\n\tFormat: hevc\n"));
    EXPECT_THAT(status.out, HasSubstr("\tFirst Frame Rendered: YES\n"));
    EXPECT_THAT(status.out, Not(HasSubstr("com.test.first")));

    // What ends in good order unregisters.
    second->signal(SIGTERM);
    EXPECT_EQ(second->wait().exitCode, 0);
    EXPECT_EQ(splitLines(control({"list"}).out).size(), 3u);
}

TEST_F(ServiceProcess, watch_countsFramesByInterval) {
    startService();
    const auto player = startPlayer("com.test.app", {"video"});
    const auto lines = splitLines(control({"watch", "--json", "-n", "3", "-i", "0.3"}).out);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_THAT(lines[0], HasSubstr("\"in_interval\":{\"frames\":0,"));
    EXPECT_THAT(lines[2], Not(HasSubstr("\"in_interval\":{\"frames\":0,")));
    const auto watch = startControl({"watch"});
    EXPECT_TRUE(watch->waitForOutput("com.test.app"));
    // Interrupted even while the service hangs.
    mService->signal(SIGSTOP);
    watch->signal(SIGINT);
    EXPECT_EQ(watch->wait().exitCode, 130);
    mService->signal(SIGCONT);
}

TEST_F(ServiceProcess, listen_printsEventsUntilTheServiceGoes) {
    startService();
    const auto listener = startControl({"listen"});
    ASSERT_TRUE(listener->waitForOutput("listening"));
    auto player = startPlayer("com.test.app", {"late"});
    EXPECT_TRUE(listener->waitForOutput("video hevc: first frame rendered"));
    EXPECT_TRUE(listener->waitForOutput("video hevc: output after 1"));
    player->signal(SIGKILL);
    EXPECT_TRUE(listener->waitForOutput("#1 com.test.app (pid " + std::to_string(player->pid()) +
                                        "), video hevc: left"));
    EXPECT_EQ(control({"list"}).out, "No codec is registered.\n");

    mService->signal(SIGKILL);
    const ProcessResult result = listener->wait();
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_THAT(result.err, HasSubstr("the logger service has gone"));
}

TEST_F(ServiceProcess, killedService_doesNotStopPlaybackAndCanBeReplaced) {
    startService();
    const auto player = startPlayer("com.test.old", {"video"});
    mService->signal(SIGKILL);
    EXPECT_EQ(control({"list"}).exitCode, 4);

    startService();
    EXPECT_EQ(control({"list"}).out, "No codec is registered.\n");
    const auto next = startPlayer("com.test.new", {"video", "audio"});
    EXPECT_TRUE(listShows("com.test.new"));

    // The old one played on; at its end it finds nobody to unregister from.
    player->signal(SIGTERM);
    const ProcessResult result = player->wait();
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.err, HasSubstr("unregisterClient fail id:"));
}

// The same facts by both ways, and as dumpsys asks.
TEST_F(ServiceProcess, stoppedPlayer_costsItsOwnRowOnly) {
    startService();
    const auto player = startPlayer("com.test.stopped", {"video", "audio"});
    const auto other = startPlayer("com.test.other", {"video"});
    player->signal(SIGSTOP);
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"list"}, {"dump", "list"}, {"dump"}}) {
        const auto start = std::chrono::steady_clock::now();
        const std::vector<std::string> rows = splitLines(control(command).out);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
        ASSERT_EQ(rows.size(), 4u);
        EXPECT_THAT(rows[1], HasSubstr("  stopped  "));
        EXPECT_THAT(rows[2], HasSubstr("  stopped  "));
        EXPECT_THAT(rows[3], HasSubstr(" ms  "));
    }
    // The service is not held up either, as codecs that come and go show.
    other->signal(SIGTERM);
    EXPECT_EQ(other->wait().exitCode, 0);
    const auto next = startPlayer("com.test.next", {"video"});
    EXPECT_TRUE(listShows("com.test.next"));
    player->signal(SIGCONT);
    EXPECT_THAT(control({"dump", "status", "1", "--json"}).out, HasSubstr("\"answer\": \"given\""));
}

TEST_F(ServiceProcess, dump_saysWhatIsWrongAndOutlivesItsReader) {
    startService();
    const auto player = startPlayer("com.test.app", {"video"});
    const ProcessResult usage = control({"dump", "lst"});
    EXPECT_EQ(usage.exitCode, 2);
    EXPECT_THAT(usage.out, HasSubstr("lst: not expected\nUsage: [list|status"));
    const ProcessResult unknown = control({"dump", "status", "7"});
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_THAT(unknown.out, HasSubstr("no codec has number or id 7"));
    runProcess({"/bin/sh", "-c", CODECLOGGERCTL " dump status | true"});
    EXPECT_EQ(control({"dump", "status"}).exitCode, 0);
}

TEST_F(ServiceProcess, stoppedService_doesNotAnswerButRuns) {
    startService();
    mService->signal(SIGSTOP);
    for (const char* command : {"list", "dump"}) {
        const ProcessResult result = control({command});
        EXPECT_EQ(result.exitCode, 4);
        EXPECT_THAT(result.err, HasSubstr("does not answer"));
    }
    EXPECT_THAT(runProcess({CODECLOGGERD}).err, HasSubstr("does not answer; --replace takes over"));
    mService->signal(SIGCONT);
    EXPECT_EQ(control({"list"}).exitCode, 0);
}

TEST_F(ServiceProcess, allowlist_reachesThePlayers) {
    startService();
    EXPECT_EQ(control({"allowlist", "set", "com.tv.*", "com.a", "--except", "com.tv.kids",
                       "--label", "living rooms"})
                      .exitCode,
              0);
    EXPECT_EQ(control({"allowlist", "show"}).out,
              "# living rooms\ncom.tv.*\ncom.a\nexcept com.tv.kids\n");
    const sp<IMediaCodecLoggerService> service = IMediaCodecLoggerService::asInterface(
            defaultServiceManager()->checkService(String16(kLoggerServiceName)));
    const struct {
        const char* package;
        int32_t listed;
    } kPackages[] = {
            {"com.tv.main", 1}, {"com.tv.", 1}, {"com.tv.kids", 0}, {"com.tv", 0}, {"com.a", 1},
            {"com.ab", 0},      {"", 0}};
    for (const auto& [package, listed] : kPackages) {
        EXPECT_EQ(service->isInMitigateFrameDropAllowlist(package), listed) << package;
    }
    EXPECT_EQ(control({"allowlist", "set", "\xff"}).exitCode, 1);
}

TEST_F(ServiceProcess, secondService_startsOnlyToReplace) {
    startService();
    const auto early = startPlayer("com.test.early", {"video"});
    const ProcessResult refused = runProcess({CODECLOGGERD});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.err, HasSubstr("runs already"));
    const std::unique_ptr<Process> first = std::move(mService);
    startService({"--replace"});
    EXPECT_TRUE(mService->waitForOutput("codecs that stay with the service of process " +
                                        std::to_string(first->pid())));
    const auto player = startPlayer("com.test.app", {"video"});
    EXPECT_TRUE(listShows("com.test.app"));
    first->signal(SIGTERM);
    EXPECT_EQ(first->wait().exitCode, 0);
    EXPECT_TRUE(listShows("com.test.app"));
}

// Meant for the thread sanitizer as well: the player, the service and this process are all built
// with it.
TEST_F(ServiceProcess, manyThreads_queryWhileCodecsComeAndGo) {
    startService();
    auto player = startPlayer("com.test.busy", {"busy", "busy", "audio"});
    ProcessState::self()->startThreadPool();
    const sp<codeclogger::ICodecLoggerAdmin> admin = codeclogger::ICodecLoggerAdmin::asInterface(
            defaultServiceManager()->checkService(codeclogger::ICodecLoggerAdmin::SERVICE_NAME()));
    const sp<IMediaCodecLoggerService> service = IMediaCodecLoggerService::asInterface(
            defaultServiceManager()->checkService(String16(kLoggerServiceName)));
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
                    const std::string status = client->getStatus().string();
                    if (!status.empty()) {
                        EXPECT_THAT(status, testing::StartsWith("\tCodec Type: "));
                        ++answers;
                    }
                    EXPECT_EQ(formats.count(client->getClientCodecFormat().string()), 1u);
                    int width = 0;
                    int height = 0;
                    client->getClientResolution(width, height);
                    client->getClientHDRType();
                    int64_t count = 0;
                    service->getBufferCountSinceLastFlush(entry.id, &count);
                }
            }
        });
    }
    for (int i = 0; i < 3; ++i) {
        // The codecs are reconfigured many times, and then they die amidst questions.
        const int enough = answers + 500;
        for (int tries = 0; answers < enough && tries < 20000; ++tries) usleep(1000);
        EXPECT_GE(answers, enough);
        player->signal(i == 1 ? SIGTERM : SIGKILL);
        const ProcessResult result = player->wait();
        EXPECT_EQ(result.exitCode, i == 1 ? 0 : 128 + SIGKILL);
        EXPECT_THAT(result.err, Not(HasSubstr("ThreadSanitizer")));
        player = startPlayer("com.test.busy", {"busy", "audio"});
    }
    done = true;
    for (std::thread& thread : threads) thread.join();
    mService->signal(SIGTERM);
    const ProcessResult result = mService->wait();
    EXPECT_EQ(result.exitCode, 0) << result.err;
}

TEST(CodecloggerctlUsage, wrongCommandLines_areRefused) {
    for (const char* const line :
         {"", "show", "list 1", "status x", "watch -i 0", "watch -i nan", "watch -n 0",
          "watch --openmetrics", "list -n 1", "list --label a", "allowlist",
          "allowlist show --label a", "--unknown"}) {
        std::istringstream words(line);
        std::vector<std::string> command{CODECLOGGERCTL};
        for (std::string word; words >> word;) command.push_back(word);
        const ProcessResult result = runProcess(command);
        EXPECT_EQ(result.exitCode, 2) << line;
        EXPECT_EQ(result.out, "");
        EXPECT_THAT(result.err, HasSubstr("codecloggerctl: "));
    }
}

}  // namespace android::test
