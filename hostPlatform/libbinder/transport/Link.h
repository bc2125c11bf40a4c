// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <limits>
#include <memory>

#include <binder/Binder.h>

#include <sys/types.h>

#include <deque>
#include <map>
#include <vector>

#include "Channel.h"

namespace android::transport {

struct Link;

/** References that the router's lock must not see dropped: the last may run any destructor. */
using Trash = std::vector<sp<RefBase>>;

/** What a message in transit keeps alive until its receiver has acquired it. */
struct Pins {
    std::vector<uint64_t> exports;
    std::vector<sp<IBinder>> proxies;
};

/** What a receiver owes for a message with objects: word that it has acquired them all. */
struct Receipt {
    std::shared_ptr<Link> link;
    uint64_t id = 0;
    /** Acquisitions that are not confirmed yet, and one for as long as the objects are read. */
    size_t open = 1;
};

/** An object that its process has been asked for. */
struct Acquisition {
    int32_t handle = 0;
    std::vector<std::shared_ptr<Receipt>> receipts;
};

/** A connection to another process and what is under way on it. Guarded by the router's lock. */
struct Link {
    Link(base::unique_fd fd, bool isIncoming, const ucred& credentials)
        : channel(std::move(fd)),
          incoming(isIncoming),
          pid(credentials.pid),
          uid(credentials.uid) {}

    Channel channel;
    /** True if the peer connected to us, so that it calls and we serve. */
    const bool incoming;
    const pid_t pid;
    const uid_t uid;
    PeerId peer;
    /** The peer has said who it is. */
    bool greeted = false;
    /** Closed; nothing is sent or comes any more. */
    bool dead = false;

    /** By call: what our calls (outgoing) or replies (incoming) hold that is not yet acquired. */
    std::map<uint64_t, Pins> pinned;

    /** Outgoing, by the id of the request. */
    std::map<uint64_t, Acquisition> acquisitions;
    /** Outgoing: the costs of one-way calls that are not yet served, by call, and their sum. */
    std::map<uint64_t, size_t> onewayCosts;
    size_t onewayCost = 0;

    /** Incoming: how many references to each of our objects the peer has acquired. */
    std::map<uint64_t, uint32_t> acquired;
};

struct Export;

/** A call that has come in. */
struct IncomingCall {
    std::shared_ptr<Link> link;
    uint64_t id = 0;
    std::shared_ptr<Export> target;
    uint32_t code = 0;
    uint32_t flags = 0;
    std::vector<CallId> chain;
    Payload payload;
    size_t cost = 0;

    bool isOneway() const { return (flags & IBinder::FLAG_ONEWAY) != 0; }
};

/** An object of ours that other processes know. */
struct Export {
    Export(uint64_t number, const sp<BBinder>& binder) : id(number), object(binder) {}

    const uint64_t id;
    const sp<BBinder> object;
    /** References of peers, and of payloads and names that mention it. */
    uint32_t uses = 0;
    /** One-way calls that wait for their turn. */
    std::deque<std::shared_ptr<IncomingCall>> oneways;
    /** A one-way call is being served or about to be. */
    bool busy = false;
};

}  // namespace android::transport
