// SPDX-License-Identifier: Apache-2.0
// The stand-ins for the closed libraries, by themselves.
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <closed/AppIdentityManager.h>
#include <closed/PulseLog.h>
#include <tests/support/LogCapture.h>

using android::AppIdentityManager;
using android::test::LogLine;
using testing::Field;
using testing::MatchesRegex;

TEST(StubsTest, recordsGoToTheLogBehindTheirDataAndProcessesHaveNames) {
    android::test::LogCapture log;
    char dataSet[4864] = {};
    __pulse_log_ext_set_data(dataSet, "media", "video", 0);
    __pulse_log_ext_print_v2("Vlog", "src", "id/2", "group", "Name", "com.app", "ms", "HW_avc", 1.5,
                             dataSet, 0, 1);
    EXPECT_THAT(
            log.take(),
            testing::ElementsAre(
                    Field(&LogLine::text, MatchesRegex("0x[0-9a-f]+ media=video")),
                    Field(&LogLine::text,
                          MatchesRegex("Vlog/src/group id/2 Name: com.app \\[HW_avc\\] 1.500000 "
                                       "ms, data 0x[0-9a-f]+, 1"))));
    EXPECT_THAT(AppIdentityManager::getInstance().getPackageNameFromPid(getpid()).string(),
                testing::EndsWith("stubs_test"));
    EXPECT_STREQ(AppIdentityManager::getInstance().getPackageNameFromPid(-1).string(), "");
}
