// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <limits>
#include <memory>

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tests/support/Process.h>

namespace android::test {

/**
 * codecloggerd, players and codecloggerctl as processes, in a runtime directory of their own in
 * which the test's process takes part as well.
 */
class ServiceProcess : public testing::Test {
  protected:
    ServiceProcess();

    /** Returns when it serves. */
    void startService(const std::vector<std::string>& arguments = {});
    /** Returns when all its codecs play. */
    std::unique_ptr<Process> startPlayer(const std::string& package,
                                         const std::vector<std::string>& kinds);
    ProcessResult control(const std::vector<std::string>& arguments);
    std::unique_ptr<Process> startControl(const std::vector<std::string>& arguments);
    /** Runs `codecloggerctl list` until it prints `text`; false after 20 seconds. */
    bool listShows(const std::string& text);

    std::unique_ptr<Process> mService;
};

}  // namespace android::test
