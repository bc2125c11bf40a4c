// SPDX-License-Identifier: Apache-2.0
#define LOG_TAG "Binder"

#include "Channel.h"

#include <errno.h>
#include <log/log.h>
#include <poll.h>
#include <sys/socket.h>

namespace android::transport {

namespace {

constexpr size_t kReadChunk = 64 * 1024;
constexpr size_t kMaxReadPerTurn = 4 * kReadChunk;
// Enough for every thread of a busy process to send a call of the greatest size.
constexpr size_t kMaxOutput = 64 * 1024 * 1024;

bool wouldBlock(int error) {
    return error == EAGAIN || error == EWOULDBLOCK;
}

}  // namespace

void Channel::send(const Message& message) {
    const std::vector<uint8_t> bytes = encodeMessage(message);
    if (mOut.size() - mOutDone + bytes.size() > kMaxOutput) {
        ALOGW("Peer takes no messages; it is cut off");
        cutOff();
        return;
    }
    mOut.insert(mOut.end(), bytes.begin(), bytes.end());
    flush();
}

void Channel::flush() {
    while (hasOutput()) {
        const ssize_t sent = TEMP_FAILURE_RETRY(::send(
                fd(), mOut.data() + mOutDone, mOut.size() - mOutDone, MSG_NOSIGNAL | MSG_DONTWAIT));
        if (sent < 0) {
            if (wouldBlock(errno)) return;
            cutOff();
            break;
        }
        mOutDone += static_cast<size_t>(sent);
    }
    mOut.clear();
    mOutDone = 0;
}

bool Channel::receive(std::vector<Message>* messages) {
    for (size_t total = 0; total < kMaxReadPerTurn;) {
        const size_t before = mIn.size();
        mIn.resize(before + kReadChunk);
        const ssize_t got =
                TEMP_FAILURE_RETRY(recv(fd(), mIn.data() + before, kReadChunk, MSG_DONTWAIT));
        const int error = errno;
        mIn.resize(before + static_cast<size_t>(got > 0 ? got : 0));
        if (got < 0 && wouldBlock(error)) return true;
        if (got <= 0) return false;
        if (!decodeInput(messages)) return false;
        total += static_cast<size_t>(got);
    }
    return true;
}

bool Channel::decodeInput(std::vector<Message>* messages) {
    size_t done = 0;
    bool valid = true;
    while (valid) {
        Message message;
        size_t used = 0;
        const Decoded decoded =
                decodeMessage(mIn.data() + done, mIn.size() - done, &message, &used);
        if (decoded == Decoded::kIncomplete) break;
        valid = decoded == Decoded::kMessage;
        if (!valid) break;
        messages->push_back(std::move(message));
        done += used;
    }
    mIn.erase(mIn.begin(), mIn.begin() + static_cast<ptrdiff_t>(done));
    if (!valid) ALOGW("Peer sent what is no message");
    return valid;
}

void Channel::cutOff() {
    shutdown(fd(), SHUT_RDWR);
    mOut.clear();
    mOutDone = 0;
}

bool Channel::hasHungUp() const {
    pollfd state = {fd(), POLLRDHUP, 0};
    return poll(&state, 1, 0) > 0;
}

void Channel::close() {
    mFd.reset();
}

}  // namespace android::transport
