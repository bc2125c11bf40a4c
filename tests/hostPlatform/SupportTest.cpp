// SPDX-License-Identifier: Apache-2.0
// The executable's clock and log functions must be the ones that libraries call, Debian's own and
// those of a sanitizer's runtime notwithstanding.

#include <android/log.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <time.h>

#include <string>

#include <media/stagefright/foundation/ALooper.h>
#include <media/stagefright/foundation/AString.h>
#include <tests/support/FakeClock.h>
#include <tests/support/LogCapture.h>
#include <utils/Timers.h>

namespace android::test {
namespace {

TEST(FakeClockTest, whenFrozen_isSoForEveryLibrary) {
    FakeClock clock(5000);
    EXPECT_EQ(ALooper::GetNowUs(), 5000000);
    EXPECT_EQ(systemTime(SYSTEM_TIME_MONOTONIC), 5000000000);
    clock.advanceMs(7);
    clock.advanceUs(3);
    EXPECT_EQ(ALooper::GetNowUs(), 5007003);
    EXPECT_EQ(clock.nowUs(), 5007003);
    EXPECT_EQ(clock.nowMs(), 5007);
    EXPECT_EQ(clock.reads(), 3);
    timespec realtime = {};
    ASSERT_EQ(clock_gettime(CLOCK_REALTIME, &realtime), 0);
    EXPECT_GT(realtime.tv_sec, 1000000000) << "other clocks go on";
}

TEST(LogCaptureTest, keepsLinesOfEveryLibraryCutAsTheSystemLogDoes) {
    LogCapture log;
    const AString fromNull(static_cast<const char*>(nullptr));
    __android_log_print(ANDROID_LOG_VERBOSE, "Tag", "%s", std::string(2000, 'x').c_str());
    ASSERT_EQ(log.lines().size(), 2u);
    EXPECT_EQ(log.lines()[0].tag, "AString");
    EXPECT_EQ(log.lines()[1], (LogLine{ANDROID_LOG_VERBOSE, "Tag", std::string(1023, 'x')}));
}

}  // namespace
}  // namespace android::test
