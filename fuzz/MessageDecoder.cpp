// SPDX-License-Identifier: Apache-2.0
// The messages between host processes: any bytes, in one piece and in pieces through a socket.
#include "Fuzz.h"

#include <errno.h>
#include <sys/socket.h>
#include <unistd.h>

#include <vector>

#include <hostPlatform/libbinder/transport/Channel.h>
#include <hostPlatform/libbinder/transport/Message.h>
#include <tests/support/LogCapture.h>

using namespace android::transport;

namespace {

using Frames = std::vector<std::vector<uint8_t>>;

/** The messages at the beginning of the bytes, encoded again. */
Frames decodeAll(const uint8_t* data, size_t size, Decoded* end) {
    Frames frames;
    while (true) {
        Message message;
        size_t used = 0;
        *end = decodeMessage(data, size, &message, &used);
        if (*end != Decoded::kMessage) return frames;
        FUZZ_CHECK(used > 0 && used <= size);
        FUZZ_CHECK(message.payload.data.size() <= kTransactionSpace);
        frames.push_back(encodeMessage(message));
        FUZZ_CHECK(frames.back() == std::vector<uint8_t>(data, data + used));
        // Every beginning of a message may still become one.
        for (const size_t cut : {used - 1, used / 2, size_t{1}}) {
            Message ignored;
            size_t ignoredUsed;
            if (cut >= used) continue;
            FUZZ_CHECK(decodeMessage(data, cut, &ignored, &ignoredUsed) == Decoded::kIncomplete);
        }
        data += used;
        size -= used;
    }
}

/** The same through a socket, `step` bytes at a time. */
Frames receiveAll(const uint8_t* data, size_t size, size_t step, bool* valid) {
    int ends[2];
    FUZZ_CHECK(socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, ends) == 0);
    Channel channel{android::base::unique_fd(ends[0])};
    std::vector<Message> messages;
    *valid = true;
    for (size_t done = 0; done < size && *valid; done += step) {
        const size_t piece = std::min(step, size - done);
        FUZZ_CHECK(write(ends[1], data + done, piece) == static_cast<ssize_t>(piece));
        *valid = channel.receive(&messages);
    }
    close(ends[1]);
    Frames frames;
    for (const Message& message : messages) frames.push_back(encodeMessage(message));
    return frames;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    static android::test::LogCapture& log = *new android::test::LogCapture;
    const size_t step = 1 + data[0] + data[1] * size_t{16};
    Decoded end;
    const Frames direct = decodeAll(data + 2, size - 2, &end);
    bool valid;
    const Frames received = receiveAll(data + 2, size - 2, step, &valid);
    FUZZ_CHECK(direct == received);
    FUZZ_CHECK(valid == (end == Decoded::kIncomplete));
    log.take();
    return 0;
}
