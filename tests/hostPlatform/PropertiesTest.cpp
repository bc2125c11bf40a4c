// SPDX-License-Identifier: Apache-2.0
#include <cutils/properties.h>
#include <errno.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string.h>

#define ATRACE_TAG ATRACE_TAG_VIDEO
#include <cutils/trace.h>

#include <map>
#include <string>
#include <thread>

#include <hostplatform/Properties.h>
#include <hostplatform/Trace.h>
#include <tests/support/ScopedProperties.h>

namespace android {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

/** property_get's result and value. */
std::pair<int, std::string> get(const char* key, const char* fallback) {
    char value[PROPERTY_VALUE_MAX];
    memset(value, '?', sizeof(value));
    const int length = property_get(key, value, fallback);
    return {length, value};
}

TEST(PropertiesTest, getGivesTheValueOrTheDefault) {
    const test::ScopedProperties properties({{"set", "value"}, {"empty", ""}});
    const std::string longText(200, 'd');
    EXPECT_THAT(get("set", "default"), Pair(5, "value"));
    EXPECT_THAT(get("empty", "default"), Pair(7, "default"));
    EXPECT_THAT(get("unset", "default"), Pair(7, "default"));
    EXPECT_THAT(get("unset", nullptr), Pair(0, ""));
    EXPECT_THAT(get("unset", longText.c_str()), Pair(91, longText.substr(0, 91)));
}

TEST(PropertiesTest, getBoolKnowsExactWordsOnly) {
    test::ScopedProperties properties;
    const std::map<std::string, int> expected = {
            {"1", 1},  {"y", 1},  {"yes", 1},    {"on", 1},     {"true", 1},  {"0", 0},
            {"n", 0},  {"no", 0}, {"off", 0},    {"false", 0},  {"TRUE", -1}, {"Y", -1},
            {"t", -1}, {"2", -1}, {" true", -1}, {"true ", -1}, {"", -1},     {"01", -1},
    };
    for (const auto& [text, result] : expected) {
        properties.set("key", text.c_str());
        EXPECT_EQ(property_get_bool("key", -1), result) << "'" << text << "'";
    }
    EXPECT_EQ(property_get_bool("unset", 1), 1);
    EXPECT_EQ(property_get_bool(nullptr, 0), 0);
}

TEST(PropertiesTest, getIntReadsAsStrtoimaxWithBase0) {
    constexpr int64_t kDefault = -77;
    test::ScopedProperties properties;
    const struct {
        const char* text;
        int64_t as32;
        int64_t as64;
    } cases[] = {
            {"0x10", 16, 16},
            {"010", 8, 8},
            {"08", 0, 0},
            {"-0x10", -16, -16},
            {"+3", 3, 3},
            {"12abc", 12, 12},
            {"  7", 7, 7},
            {"1e3", 1, 1},
            {"0x", 0, 0},
            {"", kDefault, kDefault},
            {"abc", kDefault, kDefault},
            {"-", kDefault, kDefault},
            {"2147483647", INT32_MAX, INT32_MAX},
            {"2147483648", kDefault, 2147483648},
            {"-2147483648", INT32_MIN, INT32_MIN},
            {"-2147483649", kDefault, -2147483649},
            {"9223372036854775807", kDefault, INT64_MAX},
            {"9223372036854775808", kDefault, kDefault},
    };
    errno = EDOM;
    for (const auto& c : cases) {
        properties.set("key", c.text);
        EXPECT_EQ(property_get_int32("key", kDefault), c.as32) << "'" << c.text << "'";
        EXPECT_EQ(property_get_int64("key", kDefault), c.as64) << "'" << c.text << "'";
    }
    EXPECT_EQ(errno, EDOM);
    EXPECT_EQ(property_get_int32("unset", 5), 5);
}

TEST(PropertiesTest, setRefusesLongValuesUnlessReadOnly) {
    const test::ScopedProperties properties;
    const std::string fits(PROPERTY_VALUE_MAX - 1, 'v');
    const std::string tooLong(PROPERTY_VALUE_MAX, 'v');
    EXPECT_EQ(property_set("key", fits.c_str()), 0);
    EXPECT_EQ(property_set("key", tooLong.c_str()), -1);
    EXPECT_THAT(get("key", nullptr), Pair(91, fits));
    EXPECT_EQ(property_set("ro.key", tooLong.c_str()), 0);
    EXPECT_EQ(property_set("key", nullptr), 0);
    EXPECT_THAT(get("key", "default"), Pair(7, "default"));
}

TEST(PropertiesTest, whenPolicyForbids_setFailsAndChangesNothing) {
    const test::ScopedProperties properties({{"key", "old"}});
    hostplatform::failPropertySet(true);
    EXPECT_EQ(property_set("key", "new"), -1);
    EXPECT_THAT(get("key", nullptr), Pair(3, "old"));
}

TEST(PropertiesTest, listShowsEachPropertyAndAllowsChanges) {
    const test::ScopedProperties properties({{"a", "1"}, {"b", "2"}});
    std::map<std::string, std::string> seen;
    const auto visit = [](const char* key, const char* value, void* cookie) {
        (*static_cast<std::map<std::string, std::string>*>(cookie))[key] = value;
        property_set("c", "3");
    };
    EXPECT_EQ(property_list(visit, &seen), 0);
    EXPECT_THAT(seen, ElementsAre(Pair("a", "1"), Pair("b", "2")));
}

TEST(PropertiesTest, whenReadWhileWritten_valueIsWhole) {
    test::ScopedProperties properties({{"key", "aaaaaaaa"}});
    std::thread writer([&properties] {
        for (int i = 0; i < 2000; ++i) properties.set("key", i % 2 == 0 ? "bbbb" : "aaaaaaaa");
    });
    for (int i = 0; i < 2000; ++i) {
        const std::string value = get("key", nullptr).second;
        EXPECT_TRUE(value == "bbbb" || value == "aaaaaaaa") << value;
    }
    writer.join();
}

TEST(TraceTest, whenTagIsEnabled_countersAreKept) {
    ATRACE_INT64("off", 1);
    hostplatform::setTraceTags(ATRACE_TAG_VIDEO);
    ATRACE_INT64("wide", INT64_C(1) << 40);
    ATRACE_INT("narrow", -5);
    atrace_int64(ATRACE_TAG_AUDIO, "other tag", 1);
    hostplatform::setTraceTags(0);

    const auto counters = hostplatform::takeTraceCounters();
    ASSERT_EQ(counters.size(), 2u);
    EXPECT_EQ(counters[0].name, "wide");
    EXPECT_EQ(counters[0].value, INT64_C(1) << 40);
    EXPECT_EQ(counters[1].name, "narrow");
    EXPECT_EQ(counters[1].value, -5);
    EXPECT_THAT(hostplatform::takeTraceCounters(), IsEmpty());
}

}  // namespace
}  // namespace android
