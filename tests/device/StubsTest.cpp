// SPDX-License-Identifier: Apache-2.0
// The stand-ins for the closed libraries, which are linked into this executable and so come before
// the host platform's.
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <mediaCodecLogger/AppIdentityManager.h>
#include <mediaCodecLogger/PulseLog.h>
#include <mediaCodecLogger/ZephraMediaAnalytic.h>
#include <tests/support/LogCapture.h>

namespace android::test {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::MatchesRegex;

TEST(StubsTest, recordsGoToTheLogWithTheirData) {
    LogCapture log;
    char dataSet[4864] = {};
    __pulse_log_ext_set_data(dataSet, "media", "video", 0);
    __pulse_log_ext_print_v2("Vlog", "src", "id/2", "group", "Name", "com.app", "ms", "HW_avc", 1.5,
                             dataSet, 0, 1);
    EXPECT_THAT(log.texts(), ElementsAre(MatchesRegex("0x[0-9a-f]+ media=video"),
                                         MatchesRegex("Vlog/src/group id/2 Name: com.app "
                                                      "\\[HW_avc\\] 1.500000 ms, data 0x[0-9a-f]+, "
                                                      "1")));
}

TEST(StubsTest, packageNameIsThatOfTheProcess) {
    const String8 name = AppIdentityManager::getInstance().getPackageNameFromPid(getpid());
    EXPECT_THAT(name.string(), EndsWith("stubs_test"));
    // The library asks the same one.
    EXPECT_STREQ(ZephraMediaAnalytic::getInstance().getPackageName().string(), name.string());
    EXPECT_EQ(AppIdentityManager::getInstance().getPackageNameFromPid(-1).size(), 0u);
}

}  // namespace android::test
