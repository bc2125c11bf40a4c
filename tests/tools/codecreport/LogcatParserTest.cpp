// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tools/codecreport/reading/LogcatParser.h>

namespace android::codecreport {
namespace {

// 2026-03-02 12:00:00: logs of these tests are not later.
constexpr int64_t kReference = 1772452800;
// 2026-03-01 10:20:30.456
constexpr int64_t kTimeUs = 1772360430'456'000;

TEST(LogcatParser, everyFormIsTakenApart) {
    const std::string ids = "  4321  4330 I My Tag  : a (b): c";
    const std::string time = "03-01 10:20:30.456";
    std::vector<std::string> threadtimes = {"2026-" + time + ids, "         1772360430.456" + ids,
                                            "\033[38;5;40m" + time + ids + "\033[0m",
                                            time + ids + "\r"};
    for (const char* more : {"", "789", "789123", " +0100", " 10123", " mediacodec"}) {
        threadtimes.push_back(time + more + ids);
    }
    const std::vector<std::string> times = {time + " I/My Tag  ( 4321): a (b): c",
                                            time + " I/My Tag  (10123: 4321): a (b): c"};
    const struct {
        LogFormat format;
        int64_t timeUs;
        int pid, tid;
        const char* tag;
        std::vector<std::string> lines;
    } cases[] = {
            {LogFormat::THREADTIME, kTimeUs, 4321, 4330, "My Tag", threadtimes},
            {LogFormat::TIME, kTimeUs, 4321, -1, "My Tag", times},
            {LogFormat::BRIEF, 0, 4321, -1, "My Tag", {"I/My Tag  ( 4321): a (b): c"}},
            {LogFormat::TAG, 0, -1, -1, "My Tag", {"I/My Tag  : a (b): c"}},
            {LogFormat::PROCESS, 0, 4321, -1, "My Tag", {"I( 4321) a (b): c  (My Tag)"}},
            {LogFormat::THREAD, 0, 4321, 4330, "", {"I( 4321: 4330) a (b): c"}},
            {LogFormat::LIBLOG,
             kTimeUs - 456'000,
             4321,
             4330,
             "Tag",
             {"Tag W 03-01 10:20:30  4321  4330 a (b): c"}},
            {LogFormat::RAW, 0, -1, -1, "", {"a (b): c"}},
    };
    for (const auto& c : cases) {
        for (const std::string& text : c.lines) {
            SCOPED_TRACE(text);
            LogcatParser parser(kReference);
            LogLine line;
            ASSERT_EQ(LogcatParser::Result::MESSAGE, parser.parse(text, &line));
            EXPECT_STREQ(toString(c.format), toString(line.format));
            EXPECT_EQ(std::make_tuple(c.timeUs != 0, c.pid, c.tid, c.tag, "a (b): c"),
                      std::make_tuple(line.hasTime, line.pid, line.tid, line.tag, line.text));
            EXPECT_EQ(c.timeUs, line.timeUs / 1000 * 1000);
        }
    }
}

TEST(LogcatParser, longFormHoldsItsHeaderUntilAnEmptyLine) {
    LogcatParser parser(kReference);
    LogLine line;
    const auto parse = [&](const char* text) { return parser.parse(text, &line); };
    EXPECT_EQ(LogcatParser::Result::FRAME, parse("[ 03-01 10:20:30.456  4321: 4330 I/My Tag   ]"));
    for (const char* text : {"first line", "second: line"}) {
        ASSERT_EQ(LogcatParser::Result::MESSAGE, parse(text));
        EXPECT_EQ(std::make_tuple(kTimeUs, 4321, 4330, "My Tag", text),
                  std::make_tuple(line.timeUs, line.pid, line.tid, line.tag, line.text));
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

TEST(LogTime, fractionsTellTheResolution) {
    LogTime time(kReference);
    EXPECT_EQ(1'000'000, time.read("03-01 10:20:30").resolutionUs);
    EXPECT_EQ(100'000, time.read("12.5").resolutionUs);
    EXPECT_EQ(1, time.read("12.000000789 x").resolutionUs);
    EXPECT_EQ(0u, time.read("12 13").length) << "a bare number is a process id";
}

}  // namespace
}  // namespace android::codecreport
