// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <android-base/unique_fd.h>

#include <vector>

#include "Message.h"

namespace android::transport {

/**
 * One socket that messages go through, with bounded buffers for what has come in part and for what
 * the peer does not take yet. Never blocks. Not thread-safe: the router's lock guards it.
 */
class Channel {
  public:
    /** |fd| is a connected non-blocking stream socket. */
    explicit Channel(base::unique_fd fd) : mFd(std::move(fd)) {}

    int fd() const { return mFd.get(); }

    /** Sends or keeps |message|. A peer that takes nothing for too long is cut off. */
    void send(const Message& message);

    /** True while messages wait for room in the socket; flush() is to be called once there is. */
    bool hasOutput() const { return mOutDone < mOut.size(); }
    void flush();

    /**
     * Appends the messages that have come to |messages|, up to a limit that keeps one peer from
     * taking all of the reader's time. False if the peer is gone or has sent what is no message;
     * the messages before that are valid.
     */
    bool receive(std::vector<Message>* messages);

    /** True while the beginning of a message waits for its rest. */
    bool hasPartialInput() const { return !mIn.empty(); }

    /** Ends the connection; the reader then finds it closed. */
    void cutOff();

    /** True once the peer has closed its end, even while messages from it wait to be read. */
    bool hasHungUp() const;

    /** Gives the descriptor back; only for the reader, which then must not use it again. */
    void close();

  private:
    bool decodeInput(std::vector<Message>* messages);

    base::unique_fd mFd;
    std::vector<uint8_t> mIn;
    std::vector<uint8_t> mOut;
    size_t mOutDone = 0;
};

}  // namespace android::transport
