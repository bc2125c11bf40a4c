// SPDX-License-Identifier: Apache-2.0
// The stand-ins for the closed libraries, by themselves.
#include <stdarg.h>
#include <stdio.h>
#include <unistd.h>

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <closed/AppIdentityManager.h>
#include <closed/PulseLog.h>

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::MatchesRegex;

static std::vector<std::string> gLog;

/** Comes before liblog's. */
extern "C" int __android_log_print(int /*priority*/, const char* tag, const char* format, ...) {
    char text[500];
    va_list args;
    va_start(args, format);
    vsnprintf(text, sizeof(text), format, args);
    va_end(args);
    gLog.push_back(std::string(tag) + ": " + text);
    return 1;
}

TEST(StubsTest, recordsGoToTheLogBehindTheirData) {
    char dataSet[4864] = {};
    __pulse_log_ext_set_data(dataSet, "media", "video", 0);
    __pulse_log_ext_print_v2("Vlog", "src", "id/2", "group", "Name", "com.app", "ms", "HW_avc", 1.5,
                             dataSet, 0, 1);
    EXPECT_THAT(gLog, ElementsAre(MatchesRegex("PulseLog: 0x[0-9a-f]+ media=video"),
                                  MatchesRegex("PulseLog: Vlog/src/group id/2 Name: com.app "
                                               "\\[HW_avc\\] 1.500000 ms, data 0x[0-9a-f]+, 1")));
}

TEST(StubsTest, packageNameIsThatOfTheProcess) {
    using android::AppIdentityManager;
    EXPECT_THAT(AppIdentityManager::getInstance().getPackageNameFromPid(getpid()).string(),
                EndsWith("stubs_test"));
    EXPECT_STREQ(AppIdentityManager::getInstance().getPackageNameFromPid(-1).string(), "");
}
