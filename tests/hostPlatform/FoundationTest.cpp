// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include <media/stagefright/foundation/AMessage.h>
#include <media/stagefright/foundation/AString.h>
#include <utils/String8.h>

namespace android {
namespace {

/** The text of an AString after one append. */
template <typename T>
std::string appended(T value) {
    AString text;
    text.append(value);
    return text.c_str();
}

TEST(AStringTest, findRules) {
    const AString text("abcabc");
    EXPECT_EQ(text.find("c"), 2);
    EXPECT_EQ(text.find("c", 3), 5);
    EXPECT_EQ(text.find("x"), -1);
    EXPECT_EQ(text.find("", 4), 4);
    EXPECT_EQ(text.find("", 6), 6);
    EXPECT_EQ(AString("ab\0cd", 5).find("c"), -1);
    EXPECT_DEATH(text.find("", 7), "F/AString");
}

TEST(AStringTest, appendWritesNumbersInFull) {
    EXPECT_EQ(appended(-5), "-5");
    EXPECT_EQ(appended(4294967295u), "4294967295");
    EXPECT_EQ(appended(INT64_MIN), "-9223372036854775808");
    EXPECT_EQ(appended(UINT64_MAX), "18446744073709551615");
    EXPECT_EQ(appended('x'), "x");
    EXPECT_EQ(appended(true), "1");
    EXPECT_EQ(appended(1.5f), "1.500000");
    EXPECT_EQ(appended(12345678.5), "12345678.500000");
    EXPECT_DEATH(appended(123456789.5), "F/AString");
    EXPECT_DEATH(appended(1e10f), "F/AString");
}

TEST(AMessageTest, findsNeedTheExactTypeOfTheLatestValue) {
    const sp<AMessage> message = new AMessage;
    message->setString("narrow", "changes its type");
    message->setInt32("narrow", 32);
    message->setInt64("wide", 64);
    message->setRect("rect", 1, 2, 3, 4);

    int32_t narrow = -1;
    int64_t wide = -1;
    AString text("old");
    EXPECT_FALSE(message->findInt32("wide", &narrow));
    EXPECT_FALSE(message->findInt64("narrow", &wide));
    EXPECT_FALSE(message->findString("narrow", &text));
    EXPECT_FALSE(message->findInt32("absent", &narrow));
    EXPECT_EQ(narrow, -1);
    EXPECT_EQ(wide, -1);
    EXPECT_STREQ(text.c_str(), "old");

    EXPECT_TRUE(message->findAsInt64("narrow", &wide));
    EXPECT_EQ(wide, 32);
    int32_t l, t, r, b;
    ASSERT_TRUE(message->findRect("rect", &l, &t, &r, &b));
    EXPECT_THAT((std::vector<int32_t>{l, t, r, b}), testing::ElementsAre(1, 2, 3, 4));
    EXPECT_EQ(message->countEntries(), 3u);
}

TEST(AMessageTest, whenA65thNameIsSet_dies) {
    const sp<AMessage> message = new AMessage;
    for (int i = 0; i < 64; ++i) message->setInt32(std::to_string(i).c_str(), i);
    message->setInt32("63", -1);
    EXPECT_EQ(message->countEntries(), 64u);
    EXPECT_DEATH(message->setInt32("64", 64), "F/AMessage.*\"64\"");
}

}  // namespace
}  // namespace android
