// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <android-base/unique_fd.h>

#include <deque>
#include <vector>

#include "Message.h"

namespace android::transport {

/**
 * One socket that messages go through, with buffers for what has come in part and for what the peer
 * does not take yet. Never blocks. Not thread-safe: the router's lock guards it.
 */
class Channel {
  public:
    /** |fd| is a connected non-blocking stream socket. */
    explicit Channel(base::unique_fd fd) : mFd(std::move(fd)) {}

    int fd() const { return mFd.get(); }

    /** Sends or keeps |message|, and takes its descriptors. */
    void send(Message message);

    /** True while messages wait for room in the socket; flush() is to be called once there is. */
    bool hasOutput() const { return mOutDone < mOut.size(); }
    void flush();

    /**
     * Appends the messages that have come to |messages|, up to a limit that keeps one peer from
     * taking all of the reader's time. False if the peer is gone or has sent what is no message;
     * the messages before that are valid.
     */
    bool receive(std::vector<Message>* messages);

    /** Ends the connection; the reader then finds it closed. */
    void cutOff();

    /** True once the peer has closed its end, even while messages from it wait to be read. */
    bool hasHungUp() const;

    /** Gives the descriptor back; only for the reader, which then must not use it again. */
    void close();

  private:
    /** Descriptors that go with the byte at an offset of what is sent. */
    struct OutFds {
        size_t offset;
        std::vector<base::unique_fd> fds;
    };

    ssize_t sendSome();
    ssize_t receiveSome(uint8_t* at, size_t size);
    bool decodeInput(std::vector<Message>* messages);

    base::unique_fd mFd;
    std::vector<uint8_t> mIn;
    std::deque<base::unique_fd> mInFds;
    std::vector<uint8_t> mOut;
    size_t mOutDone = 0;
    std::deque<OutFds> mOutFds;
};

}  // namespace android::transport
