// SPDX-License-Identifier: Apache-2.0
#include "hostPlatform/libbinder/transport/Message.h"

#include <gtest/gtest.h>
#include <string.h>

#include <functional>

namespace android::test {
namespace {

using namespace transport;

TEST(MessageTest, whatNoContinuationMakesAMessageIsInvalid) {
    const auto setWord = [](size_t at, uint32_t value) {
        return [=](std::vector<uint8_t>& b) { memcpy(&b[at], &value, sizeof(value)); };
    };
    Message message(MessageKind::kCall, 1);
    message.chain = {{{7, 9}, 4}};
    message.payload.data.resize(60);
    message.payload.objects = {{4, {{7, 9}, 11}}, {28, {{8, 10}, 12}}};
    const std::vector<uint8_t> valid = encodeMessage(message);
    // Offsets: body from 16, calls at 32, payload's sizes at 56, its bytes at 64, objects
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
        std::vector<uint8_t> bytes = valid;
        c.change(bytes);
        size_t used;
        EXPECT_EQ(Decoded::kInvalid, decodeMessage(bytes.data(), bytes.size(), &message, &used))
                << c.name;
    }
}

}  // namespace
}  // namespace android::test
