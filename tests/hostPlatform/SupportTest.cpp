// SPDX-License-Identifier: Apache-2.0
// The executable's clock and log functions must be the ones that libraries call, Debian's own and
// those of a sanitizer's runtime notwithstanding.

#include <android/log.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <time.h>

#include <string>
#include <thread>
#include <vector>

#include <log/log.h>
#include <media/stagefright/foundation/ALooper.h>
#include <media/stagefright/foundation/AMessage.h>
#include <media/stagefright/foundation/AString.h>
#include <tests/support/FakeClock.h>
#include <tests/support/FakeCodec.h>
#include <tests/support/LogCapture.h>
#include <utils/SystemClock.h>
#include <utils/Timers.h>

namespace android::test {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

TEST(FakeClockTest, whenFrozen_ruledForEveryLibrary) {
    FakeClock clock(5000);
    EXPECT_EQ(ALooper::GetNowUs(), 5000000);
    EXPECT_EQ(systemTime(SYSTEM_TIME_MONOTONIC), 5000000000);
    clock.advanceMs(7);
    clock.advanceUs(3);
    EXPECT_EQ(ALooper::GetNowUs(), 5007003);
    EXPECT_EQ(clock.nowUs(), 5007003);
    EXPECT_EQ(clock.nowMs(), 5007);
    EXPECT_EQ(clock.reads(), 3);
}

TEST(FakeClockTest, whenFrozen_otherClocksGoOn) {
    FakeClock clock(0);
    timespec realtime = {};
    ASSERT_EQ(clock_gettime(CLOCK_REALTIME, &realtime), 0);
    EXPECT_GT(realtime.tv_sec, 1000000000);
    EXPECT_EQ(clock.reads(), 0);
}

TEST(FakeClockTest, whenGone_timePasses) {
    { FakeClock clock(0); }
    const int64_t before = ALooper::GetNowUs();
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
    EXPECT_GE(ALooper::GetNowUs() - before, 2000);
}

TEST(FakeClockTest, whenReadAndAdvancedByThreads_losesNothing) {
    FakeClock clock(0);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&clock] {
            for (int i = 0; i < 1000; ++i) {
                clock.advanceUs(1);
                ALooper::GetNowUs();
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(clock.nowUs(), 4000);
    EXPECT_EQ(clock.reads(), 4000);
}

TEST(LogCaptureTest, keepsLinesOfEveryPriorityAndLibrary) {
    LogCapture log;
    AString fromNull(static_cast<const char*>(nullptr));
    __android_log_print(ANDROID_LOG_VERBOSE, "Tag", "%d and %s", 7, "text");
    const LogLine own{ANDROID_LOG_VERBOSE, "Tag", "7 and text"};
    const std::vector<LogLine> lines = log.lines();
    ASSERT_THAT(lines, SizeIs(2));
    EXPECT_EQ(lines[0].priority, ANDROID_LOG_WARN);
    EXPECT_EQ(lines[0].tag, "AString");
    EXPECT_EQ(lines[1], own);
    EXPECT_THAT(log.take(), SizeIs(2));
    EXPECT_THAT(log.texts(), SizeIs(0));
}

TEST(LogCaptureTest, cutsLinesAsTheSystemLogDoes) {
    LogCapture log;
    __android_log_print(ANDROID_LOG_INFO, "Tag", "%s", std::string(2000, 'x').c_str());
    EXPECT_THAT(log.texts(), ElementsAre(std::string(1023, 'x')));
}

TEST(LogCaptureTest, whenGone_linesGoToStandardError) {
    { LogCapture log; }
    testing::internal::CaptureStderr();
    __android_log_print(ANDROID_LOG_INFO, "Tag", "one line");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "I/Tag: one line\n");
}

TEST(LogAssertDeathTest, showsTagConditionAndMessage) {
    EXPECT_DEATH(__android_log_assert("!(a < b)", "Tag", "%s:%d failed", "file", 3),
                 "^F/Tag: !\\(a < b\\): file:3 failed\n$");
    EXPECT_DEATH(AString("abc").find("b", 4), "^F/AString: start > size\\(\\): ");
}

TEST(FakeCodecTest, keepsParameters) {
    const sp<FakeCodec> codec = new FakeCodec;
    const sp<AMessage> first = new AMessage;
    const sp<AMessage> second = new AMessage;
    const sp<CodecBase> base = codec;
    base->signalSetParameters(first);
    base->signalSetParameters(second);
    EXPECT_THAT(codec->parameters(), ElementsAre(first, second));
}

}  // namespace
}  // namespace android::test
