// SPDX-License-Identifier: Apache-2.0
#include <cutils/properties.h>
#include <errno.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string.h>

#include <map>
#include <string>

#include <tests/support/ScopedProperties.h>

namespace android {
namespace {

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
            {"1", 1}, {"y", 1},  {"yes", 1}, {"on", 1},    {"true", 1},  {"0", 0},
            {"n", 0}, {"no", 0}, {"off", 0}, {"false", 0}, {"TRUE", -1}, {"2", -1},
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
            {"12abc", 12, 12},
            {"", kDefault, kDefault},
            {"abc", kDefault, kDefault},
            {"2147483647", INT32_MAX, INT32_MAX},
            {"2147483648", kDefault, 2147483648},
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

}  // namespace
}  // namespace android
