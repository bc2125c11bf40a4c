// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <android-base/unique_fd.h>
#include <stddef.h>
#include <stdint.h>

#include <tuple>
#include <vector>

namespace android::transport {

/**
 * The messages between host processes.
 *
 * A link is one Unix-domain stream socket and has a direction: the process that connected asks (the
 * client), the one that listened answers (the server). Two processes that call each other have two
 * links. Every message is a header and a body, all numbers little-endian:
 *
 *     u32 size of the body, u32 kind, u64 id | body
 *
 * | kind      | from   | body                                    | id                             |
 * |-----------|--------|-----------------------------------------|--------------------------------|
 * | kHello    | client | u32 version, peer                       | 0; the first message           |
 * | kWelcome  | server | u32 version, peer                       | 0; the answer to it            |
 * | kAcquire  | client | u64 object                              | new                            |
 * | kAcquired | server | i32 status                              | that of the kAcquire           |
 * | kRelease  | client | u64 object                              | 0                              |
 * | kCall     | client | u64 object, u32 code, u32 flags,        | new                            |
 * |           |        | u32 count, count x call, payload        |                                |
 * | kReply    | server | i32 status, payload                     | that of a two-way kCall        |
 * | kTaken    | both   | -                                       | of what held objects           |
 * | kDone     | server | -                                       | of a one-way kCall, once served|
 *
 *     peer    = u32 pid, u64 nonce
 *     call    = peer, u64 id
 *     payload = u32 bytes, u32 count, the Parcel's bytes, count x (u32 offset, peer, u64 object)
 *
 * Objects. An object's address is the process that hosts it and a number, which that process never
 * uses twice. Whoever holds a proxy has a link to the host and has acquired the object on it, once
 * for each proxy; the host keeps the object alive until that is released or the link is gone. A
 * sender keeps what a payload names alive until the receiver has acquired it, which kTaken tells.
 * Nobody waits for a host to answer, which may be stopped: the proxy is good at once, and dies if
 * the host refuses. So an object may be passed on to a third process as well, and the death of one
 * process is noticed by all that hold its objects: their link to it closes.
 *
 * A file descriptor in a Parcel is an object of no address and travels beside the message.
 *
 * Calls. A kCall names the calls, one for each process, that wait for what its sender serves: the
 * receiver serves it on the thread that waits for the one that is its own. One-way calls wait for
 * nobody. Those of one object are served in the order of their arrival, one at a time. What a
 * client has sent one-way and the server has not yet served is limited, as on a device, and the
 * client refuses to send more.
 */
constexpr uint32_t kProtocolVersion = 2;

/**
 * What a process has room for, as on a device: the Parcels of all calls that it serves or has not
 * yet come to, and of the replies that it has not yet read.
 */
constexpr size_t kTransactionSpace = (1024 - 8) * 1024;
/** The part of it that one-way calls may take, all together and on each link. */
constexpr size_t kOnewaySpace = kTransactionSpace / 2;
/** Of a whole message: a Parcel can be objects from end to end. */
constexpr size_t kMaxMessageSize = 2 * kTransactionSpace + 64 * 1024;
/** As many as one message of a socket takes along. */
constexpr size_t kMaxFds = 253;

/** A process: two that have the same pid one after the other differ in the nonce. */
struct PeerId {
    uint32_t pid = 0;
    uint64_t nonce = 0;

    bool operator==(const PeerId& o) const { return pid == o.pid && nonce == o.nonce; }
    bool operator!=(const PeerId& o) const { return !(*this == o); }
    bool operator<(const PeerId& o) const {
        return std::tie(pid, nonce) < std::tie(o.pid, o.nonce);
    }
};

struct ObjectAddress {
    PeerId peer;
    uint64_t object = 0;
};

/** A two-way call, by the process that made it. */
struct CallId {
    PeerId peer;
    uint64_t id = 0;
};

/** What a Parcel holds, with addresses in place of pointers, handles and descriptors. */
struct Payload {
    struct Object {
        uint32_t offset = 0;
        ObjectAddress address;  // of no process for a descriptor
    };

    std::vector<uint8_t> data;
    /** By ascending offset; none overlaps another or reaches past the data. */
    std::vector<Object> objects;
    /** In the order of the objects that stand for them. */
    std::vector<base::unique_fd> fds;

    bool isFd(const Object& object) const;
    /** How many of the objects stand for descriptors. */
    size_t fdCount() const;
    /** What it takes of the receiver's space. */
    size_t cost() const;
};

enum class MessageKind : uint32_t {
    kHello = 1,
    kWelcome,
    kAcquire,
    kAcquired,
    kRelease,
    kCall,
    kReply,
    kTaken,
    kDone,
};

/** One message; fields that its kind does not have are not sent and read back as 0. */
struct Message {
    Message() = default;
    explicit Message(MessageKind k, uint64_t i = 0) : kind(k), id(i) {}

    MessageKind kind = MessageKind::kHello;
    uint64_t id = 0;

    uint32_t version = 0;
    PeerId peer;
    uint64_t object = 0;
    int32_t status = 0;
    uint32_t code = 0;
    uint32_t flags = 0;
    /** The innermost of each process. */
    std::vector<CallId> chain;
    Payload payload;
};

/** The bytes; the descriptors of the payload are not among them. */
std::vector<uint8_t> encodeMessage(const Message& message);

enum class Decoded {
    kMessage,     // |message| is whole, |used| its size
    kIncomplete,  // a good beginning
    kInvalid,     // no continuation makes it a message
};

/**
 * Decodes the message at the beginning of |bytes|, without descriptors. A pure function, safe for
 * any bytes.
 */
Decoded decodeMessage(const uint8_t* bytes, size_t size, Message* message, size_t* used);

}  // namespace android::transport
