// SPDX-License-Identifier: Apache-2.0
#define LOG_TAG "Binder"

#include "Channel.h"

#include <errno.h>
#include <log/log.h>
#include <poll.h>
#include <string.h>
#include <sys/socket.h>

namespace android::transport {

namespace {

constexpr size_t kReadChunk = 64 * 1024;
constexpr size_t kMaxReadPerTurn = 4 * kReadChunk;

bool wouldBlock(int error) {
    return error == EAGAIN || error == EWOULDBLOCK;
}

}  // namespace

void Channel::send(Message message) {
    const std::vector<uint8_t> bytes = encodeMessage(message);
    if (!message.payload.fds.empty()) {
        mOutFds.push_back({mOut.size(), std::move(message.payload.fds)});
    }
    mOut.insert(mOut.end(), bytes.begin(), bytes.end());
    flush();
}

// Descriptors go along with the first byte of their message, and what is before it goes by itself.
ssize_t Channel::sendSome() {
    const bool withFds = !mOutFds.empty() && mOutFds.front().offset == mOutDone;
    const size_t next = withFds ? 1 : 0;
    const size_t end = next < mOutFds.size() ? mOutFds[next].offset : mOut.size();
    iovec bytes = {mOut.data() + mOutDone, end - mOutDone};
    msghdr header = {};
    header.msg_iov = &bytes;
    header.msg_iovlen = 1;
    alignas(cmsghdr) uint8_t control[CMSG_SPACE(kMaxFds * sizeof(int))] = {};
    if (withFds) {
        const std::vector<base::unique_fd>& fds = mOutFds.front().fds;
        header.msg_control = control;
        header.msg_controllen = CMSG_SPACE(fds.size() * sizeof(int));
        cmsghdr* const rights = CMSG_FIRSTHDR(&header);
        rights->cmsg_level = SOL_SOCKET;
        rights->cmsg_type = SCM_RIGHTS;
        rights->cmsg_len = CMSG_LEN(fds.size() * sizeof(int));
        for (size_t i = 0; i < fds.size(); i++) {
            const int number = fds[i].get();
            memcpy(CMSG_DATA(rights) + i * sizeof(number), &number, sizeof(number));
        }
    }
    const ssize_t sent = TEMP_FAILURE_RETRY(sendmsg(fd(), &header, MSG_NOSIGNAL | MSG_DONTWAIT));
    if (sent > 0 && withFds) mOutFds.pop_front();
    return sent;
}

void Channel::flush() {
    while (hasOutput()) {
        const ssize_t sent = sendSome();
        if (sent < 0) {
            if (wouldBlock(errno)) return;
            cutOff();
            return;
        }
        mOutDone += static_cast<size_t>(sent);
    }
    mOut.clear();
    mOutDone = 0;
}

ssize_t Channel::receiveSome(uint8_t* at, size_t size) {
    iovec bytes = {at, size};
    alignas(cmsghdr) uint8_t control[CMSG_SPACE(kMaxFds * sizeof(int))];
    msghdr header = {};
    header.msg_iov = &bytes;
    header.msg_iovlen = 1;
    header.msg_control = control;
    header.msg_controllen = sizeof(control);
    const ssize_t got = TEMP_FAILURE_RETRY(recvmsg(fd(), &header, MSG_DONTWAIT | MSG_CMSG_CLOEXEC));
    if (got < 0) return got;
    for (cmsghdr* c = CMSG_FIRSTHDR(&header); c != nullptr; c = CMSG_NXTHDR(&header, c)) {
        if (c->cmsg_level != SOL_SOCKET || c->cmsg_type != SCM_RIGHTS) continue;
        for (size_t i = 0; CMSG_LEN((i + 1) * sizeof(int)) <= c->cmsg_len; i++) {
            int number;
            memcpy(&number, CMSG_DATA(c) + i * sizeof(number), sizeof(number));
            mInFds.emplace_back(number);
        }
    }
    return got;
}

bool Channel::receive(std::vector<Message>* messages) {
    for (size_t total = 0; total < kMaxReadPerTurn;) {
        const size_t before = mIn.size();
        mIn.resize(before + kReadChunk);
        const ssize_t got = receiveSome(mIn.data() + before, kReadChunk);
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
        const size_t fds = decoded == Decoded::kMessage ? message.payload.fdCount() : 0;
        valid = decoded == Decoded::kMessage && fds <= mInFds.size();
        if (!valid) break;
        for (size_t i = 0; i < fds; i++) {
            message.payload.fds.push_back(std::move(mInFds.front()));
            mInFds.pop_front();
        }
        messages->push_back(std::move(message));
        done += used;
    }
    mIn.erase(mIn.begin(), mIn.begin() + static_cast<ptrdiff_t>(done));
    if (mIn.empty()) mInFds.clear();  // of no message
    if (!valid) ALOGW("Peer sent what is no message");
    return valid;
}

void Channel::cutOff() {
    shutdown(fd(), SHUT_RDWR);
    mOut.clear();
    mOutDone = 0;
    mOutFds.clear();
}

bool Channel::hasHungUp() const {
    pollfd state = {fd(), POLLRDHUP, 0};
    return poll(&state, 1, 0) > 0;
}

void Channel::close() {
    mFd.reset();
}

}  // namespace android::transport
