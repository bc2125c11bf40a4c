// SPDX-License-Identifier: Apache-2.0
#include "ServiceProcess.h"

#include <ftw.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>
#include <unistd.h>

namespace android::test {

namespace {

std::vector<std::string> commandOf(const char* program, const std::vector<std::string>& arguments) {
    std::vector<std::string> command{program};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return command;
}

/** One for the whole process, because the binder library of this process looks for it only once. */
class RuntimeFolder {
  public:
    RuntimeFolder() : mPath(mkdtemp(mTemplate)) { setenv("HOSTBINDER_DIR", mPath, 1); }
    ~RuntimeFolder() {
        const auto removeEntry = [](const char* path, const struct stat*, int, FTW*) {
            return remove(path);
        };
        nftw(mPath, removeEntry, 16, FTW_DEPTH | FTW_PHYS);
    }

  private:
    char mTemplate[32] = "/tmp/codecloggerXXXXXX";
    const char* const mPath;
};

}  // namespace

ServiceProcess::ServiceProcess() {
    static const RuntimeFolder folder;
}

void ServiceProcess::startService(const std::vector<std::string>& arguments) {
    mService = std::make_unique<Process>(commandOf(CODECLOGGERD, arguments));
    ASSERT_TRUE(mService->waitForOutput("serving as zephra_media_codec_logger"))
            << mService->wait(0).err;
}

std::unique_ptr<Process> ServiceProcess::startPlayer(const std::string& package,
                                                     const std::vector<std::string>& kinds) {
    std::vector<std::string> arguments{package};
    arguments.insert(arguments.end(), kinds.begin(), kinds.end());
    auto player = std::make_unique<Process>(commandOf(TEST_PLAYER, arguments));
    for (const std::string& kind : kinds) {
        EXPECT_TRUE(player->waitForOutput("playing " + kind)) << player->wait(0).err;
    }
    return player;
}

ProcessResult ServiceProcess::control(const std::vector<std::string>& arguments) {
    return runProcess(commandOf(CODECLOGGERCTL, arguments));
}

std::unique_ptr<Process> ServiceProcess::startControl(const std::vector<std::string>& arguments) {
    return std::make_unique<Process>(commandOf(CODECLOGGERCTL, arguments));
}

bool ServiceProcess::listShows(const std::string& text) {
    for (const time_t end = time(nullptr) + 20; time(nullptr) < end; usleep(50 * 1000)) {
        if (control({"list"}).out.find(text) != std::string::npos) return true;
    }
    return false;
}

}  // namespace android::test
