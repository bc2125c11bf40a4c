// SPDX-License-Identifier: Apache-2.0
#include "hostPlatform/libbinder/transport/Message.h"

#include <gtest/gtest.h>
#include <string.h>

#include <functional>

namespace android::test {
namespace {

using namespace transport;

// All fields are set; each kind carries its own.
Message sample(MessageKind kind) {
    Message message(kind, 0x1122334455667788);
    message.version = 1;
    message.peer = {7, 9};
    message.object = 3;
    message.code = 5;
    message.flags = 0x11;
    message.nestedIn = 4;
    message.status = -74;
    message.payload.data.resize(60, 0xab);
    message.payload.objects = {{4, {{7, 9}, 11}}, {28, {{8, 10}, 12}}};
    return message;
}

Decoded decode(const std::vector<uint8_t>& bytes) {
    Message ignored;
    size_t used;
    return decodeMessage(bytes.data(), bytes.size(), &ignored, &used);
}

TEST(MessageTest, everyKindSurvivesTheWayAndEveryBeginningIsIncomplete) {
    for (uint32_t kind = 1; kind <= static_cast<uint32_t>(MessageKind::kDone); kind++) {
        std::vector<uint8_t> bytes = encodeMessage(sample(static_cast<MessageKind>(kind)));
        bytes.push_back(0xff);  // of the next message
        Message read;
        size_t used = 0;
        ASSERT_EQ(Decoded::kMessage, decodeMessage(bytes.data(), bytes.size(), &read, &used));
        bytes.pop_back();
        EXPECT_EQ(bytes.size(), used) << kind;
        EXPECT_EQ(bytes, encodeMessage(read)) << kind;
        while (!bytes.empty()) {
            bytes.pop_back();
            EXPECT_EQ(Decoded::kIncomplete, decode(bytes)) << kind << " cut to " << bytes.size();
        }
    }
}

TEST(MessageTest, theBytesOfACallAreThoseOfTheProtocol) {
    Message call = sample(MessageKind::kCall);
    call.payload.data = {1, 2, 3, 4};
    call.payload.objects.clear();
    const std::vector<uint8_t> expected = {
            36,   0,    0,    0,    6,    0,    0,    0,     // size of the body, kind
            0x88, 0x77, 0x66, 0x55, 0x44, 0x33, 0x22, 0x11,  // id
            3,    0,    0,    0,    0,    0,    0,    0,     // object
            5,    0,    0,    0,    0x11, 0,    0,    0,     // code, flags
            4,    0,    0,    0,    0,    0,    0,    0,     // nestedIn
            4,    0,    0,    0,    0,    0,    0,    0,     // bytes, objects
            1,    2,    3,    4,
    };
    EXPECT_EQ(expected, encodeMessage(call));
}

TEST(MessageTest, whatNoContinuationMakesAMessageIsInvalid) {
    const auto setWord = [](size_t at, uint32_t value) {
        return [=](std::vector<uint8_t>& b) { memcpy(&b[at], &value, sizeof(value)); };
    };
    // Offsets in a call: body from 16, payload's sizes at 40, its bytes at 48, objects at 108.
    const struct {
        const char* name;
        std::function<void(std::vector<uint8_t>&)> change;
    } cases[] = {
            {"giant length", setWord(0, 0xffffffff)},
            {"length above the limit", setWord(0, kMaxMessageSize)},
            {"kind 0", setWord(4, 0)},
            {"unknown kind", setWord(4, 10)},
            {"kind with another body", setWord(4, 1)},
            {"body longer than its fields",
             [](std::vector<uint8_t>& b) {
                 b[0]++;
                 b.push_back(0);
             }},
            {"body shorter than its fields",
             [](std::vector<uint8_t>& b) {
                 b[0]--;
                 b.pop_back();
             }},
            {"more bytes than there are", setWord(40, 61)},
            {"a giant number of bytes", setWord(40, 0xffffffff)},
            {"more objects than there are", setWord(44, 3)},
            {"a giant number of objects", setWord(44, 0xffffffff)},
            {"unaligned object", setWord(108, 2)},
            {"overlapping objects", setWord(108, 8)},
            {"objects out of order", setWord(108, 32)},
            {"object past the end", setWord(132, 40)},
            {"object far past the end", setWord(132, 0xfffffffc)},
    };
    for (const auto& c : cases) {
        std::vector<uint8_t> bytes = encodeMessage(sample(MessageKind::kCall));
        c.change(bytes);
        EXPECT_EQ(Decoded::kInvalid, decode(bytes)) << c.name;
    }
}

}  // namespace
}  // namespace android::test
