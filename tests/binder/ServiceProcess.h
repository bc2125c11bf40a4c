// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <limits>
#include <memory>

#include <time.h>
#include <unistd.h>

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tests/hostPlatform/libbinder/RuntimeFolder.h>
#include <tests/support/Process.h>

namespace android::test {

using Words = std::vector<std::string>;

inline Words operator+(Words first, const Words& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

/**
 * codecloggerd, players and codecloggerctl as processes, in a runtime directory of their own in
 * which the test's process takes part as well.
 */
class ServiceProcess : public testing::Test {
  protected:
    // The binder library of this process looks for it only once.
    ServiceProcess() { static const RuntimeFolder folder; }

    /** Returns when it serves. */
    void startService(const Words& arguments = {}) {
        mService = std::make_unique<Process>(Words{CODECLOGGERD} + arguments);
        ASSERT_TRUE(mService->waitForOutput("serving as zephra_media_codec_logger"))
                << mService->wait(0).err;
    }
    /** Returns when all its codecs play. */
    std::unique_ptr<Process> startPlayer(const std::string& package, const Words& kinds) {
        auto player = std::make_unique<Process>(Words{TEST_PLAYER, package} + kinds);
        for (const std::string& kind : kinds) {
            EXPECT_TRUE(player->waitForOutput("playing " + kind)) << player->wait(0).err;
        }
        return player;
    }
    ProcessResult control(const Words& words) { return runProcess(Words{CODECLOGGERCTL} + words); }
    std::unique_ptr<Process> startControl(const Words& words) {
        return std::make_unique<Process>(Words{CODECLOGGERCTL} + words);
    }
    /** Runs `codecloggerctl list` until it prints `text`; false after 20 seconds. */
    bool listShows(const std::string& text) {
        for (const time_t end = time(nullptr) + 20; time(nullptr) < end; usleep(50 * 1000)) {
            if (control({"list"}).out.find(text) != std::string::npos) return true;
        }
        return false;
    }

    std::unique_ptr<Process> mService;
};

}  // namespace android::test
