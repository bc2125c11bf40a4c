// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tools/codecreport/LogcatParser.h>

namespace android::codecreport {
namespace {

// 2026-03-02 12:00:00: logs of these tests are not later.
constexpr int64_t kReference = 1772452800;
// 2026-03-01 10:20:30.456
constexpr int64_t kTimeUs = 1772360430'456'000;

struct FormCase {
    const char* name;
    const char* line;
    LogFormat format;
    bool hasTime;
    int pid;
    int tid;
    const char* tag;
};

class LogForm : public testing::TestWithParam<FormCase> {};

TEST_P(LogForm, isTakenApart) {
    const FormCase& form = GetParam();
    LogcatParser parser(kReference);
    LogLine line;
    ASSERT_EQ(LogcatParser::Result::MESSAGE, parser.parse(form.line, &line));
    EXPECT_STREQ(toString(form.format), toString(line.format));
    EXPECT_EQ(form.hasTime, line.hasTime);
    if (form.hasTime) {
        EXPECT_EQ(kTimeUs, line.timeUs / 1000 * 1000);
    }
    EXPECT_EQ(form.pid, line.pid);
    EXPECT_EQ(form.tid, line.tid);
    EXPECT_EQ(form.tag, line.tag);
    EXPECT_EQ("a (b): c", line.text);
}

constexpr FormCase kForms[] = {
        {"threadtime", "03-01 10:20:30.456  4321  4330 I My Tag  : a (b): c", LogFormat::THREADTIME,
         true, 4321, 4330, "My Tag"},
        {"year", "2026-03-01 10:20:30.456  4321  4330 I My Tag  : a (b): c", LogFormat::THREADTIME,
         true, 4321, 4330, "My Tag"},
        {"usec", "03-01 10:20:30.456789  4321  4330 I My Tag  : a (b): c", LogFormat::THREADTIME,
         true, 4321, 4330, "My Tag"},
        {"nsec", "03-01 10:20:30.456789123  4321  4330 I My Tag  : a (b): c", LogFormat::THREADTIME,
         true, 4321, 4330, "My Tag"},
        {"zone", "03-01 10:20:30.456 +0100  4321  4330 I My Tag  : a (b): c", LogFormat::THREADTIME,
         true, 4321, 4330, "My Tag"},
        {"epoch", "         1772360430.456  4321  4330 I My Tag  : a (b): c", LogFormat::THREADTIME,
         true, 4321, 4330, "My Tag"},
        {"uid", "03-01 10:20:30.456 10123  4321  4330 I My Tag  : a (b): c", LogFormat::THREADTIME,
         true, 4321, 4330, "My Tag"},
        {"uidName", "03-01 10:20:30.456 mediacodec  4321  4330 W My Tag  : a (b): c",
         LogFormat::THREADTIME, true, 4321, 4330, "My Tag"},
        {"color", "\033[38;5;40m03-01 10:20:30.456  4321  4330 I My Tag  : a (b): c\033[0m",
         LogFormat::THREADTIME, true, 4321, 4330, "My Tag"},
        {"crlf", "03-01 10:20:30.456  4321  4330 I My Tag  : a (b): c\r", LogFormat::THREADTIME,
         true, 4321, 4330, "My Tag"},
        {"time", "03-01 10:20:30.456 I/My Tag  ( 4321): a (b): c", LogFormat::TIME, true, 4321, -1,
         "My Tag"},
        {"timeUid", "03-01 10:20:30.456 I/My Tag  (10123: 4321): a (b): c", LogFormat::TIME, true,
         4321, -1, "My Tag"},
        {"brief", "I/My Tag  ( 4321): a (b): c", LogFormat::BRIEF, false, 4321, -1, "My Tag"},
        {"tag", "I/My Tag  : a (b): c", LogFormat::TAG, false, -1, -1, "My Tag"},
        {"process", "I( 4321) a (b): c  (My Tag)", LogFormat::PROCESS, false, 4321, -1, "My Tag"},
        {"thread", "I( 4321: 4330) a (b): c", LogFormat::THREAD, false, 4321, 4330, ""},
        {"raw", "a (b): c", LogFormat::RAW, false, -1, -1, ""},
};

INSTANTIATE_TEST_SUITE_P(Logcat, LogForm, testing::ValuesIn(kForms),
                         [](const auto& info) { return info.param.name; });

TEST(LogcatParser, hostFormShowsSeconds) {
    LogcatParser parser(kReference);
    LogLine line;
    ASSERT_EQ(LogcatParser::Result::MESSAGE,
              parser.parse("MediaCodecLogger W 03-01 10:20:30  4321  4330 a text", &line));
    EXPECT_EQ(LogFormat::LIBLOG, line.format);
    EXPECT_EQ(kTimeUs / 1'000'000 * 1'000'000, line.timeUs);
    EXPECT_EQ(1'000'000, line.resolutionUs);
    EXPECT_EQ("MediaCodecLogger", line.tag);
    EXPECT_EQ("a text", line.text);
    EXPECT_EQ(4330, line.tid);
}

TEST(LogcatParser, longFormHoldsItsHeaderUntilAnEmptyLine) {
    LogcatParser parser(kReference);
    LogLine line;
    const auto parse = [&](const char* text) { return parser.parse(text, &line); };
    EXPECT_EQ(LogcatParser::Result::FRAME, parse("[ 03-01 10:20:30.456  4321: 4330 I/My Tag   ]"));
    for (const char* text : {"first line", "second: line"}) {
        ASSERT_EQ(LogcatParser::Result::MESSAGE, parse(text));
        EXPECT_EQ(kTimeUs, line.timeUs);
        EXPECT_EQ(4321, line.pid);
        EXPECT_EQ(4330, line.tid);
        EXPECT_EQ("My Tag", line.tag);
        EXPECT_EQ(text, line.text);
    }
    EXPECT_EQ(LogcatParser::Result::FRAME, parse(""));
    EXPECT_EQ(LogcatParser::Result::NOT_A_LOG_LINE, parse("of no message"));
    EXPECT_EQ(LogcatParser::Result::FRAME,
              parse("[ 03-01 10:20:30.456 10123: 4400: 4401 W/Other ]"));
    ASSERT_EQ(LogcatParser::Result::MESSAGE, parse("text"));
    EXPECT_EQ(4400, line.pid);
    EXPECT_EQ("Other", line.tag);
}

TEST(LogcatParser, damageAndStrangersAreNoLogLines) {
    LogcatParser parser(kReference);
    LogLine line;
    // Texts without a header are messages only as long as no line has one.
    ASSERT_EQ(LogcatParser::Result::MESSAGE, parser.parse("V/T: x", &line));
    for (const char* text :
         {"03-01 10:20:30.456  4321  4330 I", "03-01 10:20:30.456  4321 I Tag: text",
          "13-01 10:20:30.456  4321  4330 I Tag: text", "03-01 10:2",
          "== dumpstate ==", "03-01 10:20:30.456  4321  4330 X Tag: text", "[ 03-01 10:20:30.456 ]",
          "I/", "\xff\xfe", "03-01 10:20:30.456 -1 99999999999999999999 I Tag: text"}) {
        EXPECT_EQ(LogcatParser::Result::NOT_A_LOG_LINE, parser.parse(text, &line)) << text;
    }
    for (const char* text :
         {"", "\r", "--------- beginning of main", "--------- switch to system"}) {
        EXPECT_EQ(LogcatParser::Result::FRAME, parser.parse(text, &line)) << text;
    }
}

TEST(LogTime, yearlessDatesGoOnAtNewYear) {
    // The reference is 2026-03-02: December was last year.
    LogTime time(kReference);
    const int64_t before = time.read("12-31 23:59:59.000").timeUs;
    const int64_t after = time.read("01-01 00:00:01.000").timeUs;
    EXPECT_EQ(2'000'000, after - before);
    // 2026-01-01 00:00:01 is 1767225601.
    EXPECT_EQ(1767225601'000'000, after);
    // A line that crossed midnight late.
    EXPECT_EQ(before, time.read("12-31 23:59:59.000").timeUs);
}

TEST(LogTime, readsFractionsByTheirLength) {
    LogTime time(kReference);
    for (const auto& [text, us, resolution, length] :
         {std::make_tuple("12.5", 12'500'000, 100'000, 4),
          std::make_tuple("12.000000789 x", 12'000'000, 1, 12), std::make_tuple("12 13", 0, 0, 0),
          std::make_tuple("x", 0, 0, 0)}) {
        const LogTime::Stamp stamp = time.read(text);
        EXPECT_EQ(us, stamp.timeUs) << text;
        EXPECT_EQ(resolution, stamp.resolutionUs) << text;
        EXPECT_EQ(length, static_cast<int>(stamp.length)) << text;
    }
}

}  // namespace
}  // namespace android::codecreport
