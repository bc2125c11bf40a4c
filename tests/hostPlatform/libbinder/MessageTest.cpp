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
    message.chain = {{{7, 9}, 4}};
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

TEST(MessageTest, whatNoContinuationMakesAMessageIsInvalid) {
    const auto setWord = [](size_t at, uint32_t value) {
        return [=](std::vector<uint8_t>& b) { memcpy(&b[at], &value, sizeof(value)); };
    };
    // Offsets in a call: body from 16, calls at 32, payload's sizes at 56, its bytes at 64, objects
    // at 124.
    const struct {
        const char* name;
        std::function<void(std::vector<uint8_t>&)> change;
    } cases[] = {
            {"giant length", setWord(0, 0xffffffff)},
            {"body longer than its fields",
             [](std::vector<uint8_t>& b) {
                 b[0]++;
                 b.push_back(0);
             }},
            {"a giant number of calls", setWord(32, 0xffffffff)},
            {"a giant number of objects", setWord(60, 0xffffffff)},
            {"unaligned object", setWord(124, 2)},
            {"overlapping objects", setWord(124, 8)},
            {"object past the end", setWord(148, 40)},
    };
    for (const auto& c : cases) {
        std::vector<uint8_t> bytes = encodeMessage(sample(MessageKind::kCall));
        c.change(bytes);
        EXPECT_EQ(Decoded::kInvalid, decode(bytes)) << c.name;
    }
}

}  // namespace
}  // namespace android::test
