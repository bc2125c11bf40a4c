// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <string>

#include <hostplatform/AppIdentity.h>
#include <mediaCodecLogger/AppIdentityManager.h>

namespace android {
namespace {

std::string nameOf(int pid) {
    return AppIdentityManager::getInstance().getPackageNameFromPid(pid).string();
}

TEST(AppIdentityTest, nameIsTheFirstWordOfTheCommandLine) {
    std::ifstream file("/proc/self/cmdline");
    const std::string commandLine((std::istreambuf_iterator<char>(file)), {});
    EXPECT_EQ(nameOf(getpid()), commandLine.c_str());
    EXPECT_EQ(nameOf(0), "");
    EXPECT_EQ(nameOf(-1), "");
}

TEST(AppIdentityTest, whenNameIsFixed_itIsGivenForThatProcessOnly) {
    const std::string before = nameOf(getpid());
    hostplatform::setPackageNameForPid(getpid(), "com.example.app");
    hostplatform::setPackageNameForPid(-1, "com.example.other");
    EXPECT_EQ(nameOf(getpid()), "com.example.app");
    EXPECT_EQ(nameOf(-1), "com.example.other");
    hostplatform::setPackageNameForPid(getpid(), nullptr);
    hostplatform::setPackageNameForPid(-1, nullptr);
    EXPECT_EQ(nameOf(getpid()), before);
}

}  // namespace
}  // namespace android
