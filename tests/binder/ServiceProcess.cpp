// SPDX-License-Identifier: Apache-2.0
#include "ServiceProcess.h"

#include <signal.h>
#include <time.h>
#include <unistd.h>

#include <tests/hostPlatform/libbinder/RuntimeFolder.h>

namespace android::test {

namespace {

std::vector<std::string> commandOf(std::vector<std::string> command,
                                   const std::vector<std::string>& arguments) {
    command.insert(command.end(), arguments.begin(), arguments.end());
    return command;
}

}  // namespace

ServiceProcess::ServiceProcess() {
    static const RuntimeFolder folder;  // the binder library of this process looks for it only once
}

void ServiceProcess::startService(const std::vector<std::string>& arguments) {
    mService = std::make_unique<Process>(commandOf({CODECLOGGERD}, arguments));
    ASSERT_TRUE(mService->waitForOutput("serving as zephra_media_codec_logger"))
            << mService->wait(0).err;
}

std::unique_ptr<Process> ServiceProcess::startPlayer(const std::string& package,
                                                     const std::vector<std::string>& kinds) {
    auto player = std::make_unique<Process>(commandOf({TEST_PLAYER, package}, kinds));
    for (const std::string& kind : kinds) {
        EXPECT_TRUE(player->waitForOutput("playing " + kind)) << player->wait(0).err;
    }
    return player;
}

ProcessResult ServiceProcess::control(const std::vector<std::string>& arguments) {
    return runProcess(commandOf({CODECLOGGERCTL}, arguments));
}

std::unique_ptr<Process> ServiceProcess::startControl(const std::vector<std::string>& arguments) {
    return std::make_unique<Process>(commandOf({CODECLOGGERCTL}, arguments));
}

bool ServiceProcess::listShows(const std::string& text) {
    for (const time_t end = time(nullptr) + 20; time(nullptr) < end; usleep(50 * 1000)) {
        if (control({"list"}).out.find(text) != std::string::npos) return true;
    }
    return false;
}

}  // namespace android::test
