// SPDX-License-Identifier: Apache-2.0
// Connections to other processes and what comes on them.
#define LOG_TAG "Binder"

#include "Router.h"

#include <errno.h>
#include <log/log.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>

namespace android::transport {

namespace {

// How long connections are left waiting after one could not be accepted for lack of descriptors.
constexpr int kAcceptPauseMs = 100;
// Of connections that have not said whose they are.
constexpr ptrdiff_t kMaxStrangers = 64;
// Few, so that those accepted before can greet first and are no strangers any more.
constexpr int kAcceptsPerTurn = 16;

}  // namespace

void Router::ensureReader() {
    if (mReading) return;
    mReading = true;
    mReader.start(this);
    // Before the destructors of the program's statics, which the threads may still use.
    atexit([] { Router::instance().stop(); });
}

bool Router::prepare(std::vector<pollfd>* fds, int* timeoutMs) {
    Mutex::Autolock lock(mLock);
    if (mStopping) return false;
    // Poll passes over an entry whose descriptor is negative.
    fds->push_back({mAcceptPaused ? -1 : mListener.get(), POLLIN, 0});
    if (mAcceptPaused) *timeoutMs = kAcceptPauseMs;
    mAcceptPaused = false;
    mPolled = mLinks;
    for (const auto& link : mPolled) {
        const short output = link->channel.hasOutput() ? POLLOUT : 0;
        fds->push_back({link->channel.fd(), static_cast<short>(POLLIN | output), 0});
    }
    return true;
}

void Router::handle(const std::vector<pollfd>& fds) {
    Trash trash;
    {
        Mutex::Autolock lock(mLock);
        if (mStopping) return;
        if (fds[0].revents != 0) acceptLinks(&trash);
        for (size_t i = 0; i < mPolled.size(); i++) {
            const std::shared_ptr<Link>& link = mPolled[i];
            if (link->dead) continue;
            const short events = fds[i + 1].revents;
            if ((events & POLLOUT) != 0) link->channel.flush();
            if ((events & ~POLLOUT) != 0 && !readLink(link, &trash)) drop(link, &trash);
        }
    }
    discard(&trash);
}

void Router::acceptLinks(Trash* trash) {
    for (int i = 0; i < kAcceptsPerTurn; i++) {
        base::unique_fd socket(TEMP_FAILURE_RETRY(
                accept4(mListener.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK)));
        if (socket.get() < 0) {
            mAcceptPaused = errno == EMFILE || errno == ENFILE;
            return;
        }
        ucred credentials;
        if (!readPeerCredentials(socket.get(), &credentials)) continue;
        const auto isStranger = [](const auto& link) { return link->incoming && !link->greeted; };
        if (std::count_if(mLinks.begin(), mLinks.end(), isStranger) >= kMaxStrangers) {
            drop(*std::find_if(mLinks.begin(), mLinks.end(), isStranger), trash);
        }
        mLinks.push_back(std::make_shared<Link>(std::move(socket), true, credentials));
    }
}

bool Router::readLink(const std::shared_ptr<Link>& link, Trash* trash) {
    std::vector<Message> messages;
    const bool open = link->channel.receive(&messages);
    for (Message& message : messages) {
        if (takeMessage(link, &message, trash)) continue;
        ALOGW("Process %d breaks the protocol; it is dropped", link->pid);
        return false;
    }
    return open;
}

bool Router::takeMessage(const std::shared_ptr<Link>& link, Message* message, Trash* trash) {
    if (link->greeted) {
        return link->incoming ? takeFromClient(link, message, trash)
                              : takeFromServer(link, message, trash);
    }
    const MessageKind expected = link->incoming ? MessageKind::kHello : MessageKind::kWelcome;
    if (message->kind != expected || message->version != kProtocolVersion) return false;
    if (link->incoming) {
        link->peer = message->peer;
        greet(link, MessageKind::kWelcome);
    } else if (message->peer != link->peer) {
        return false;
    }
    link->greeted = true;
    return true;
}

void Router::greet(const std::shared_ptr<Link>& link, MessageKind kind) {
    Message greeting(kind);
    greeting.version = kProtocolVersion;
    greeting.peer = mSelf;
    send(link, std::move(greeting));
}

bool Router::takeFromClient(const std::shared_ptr<Link>& link, Message* message, Trash* trash) {
    switch (message->kind) {
        case MessageKind::kAcquire: {
            Message answer(MessageKind::kAcquired, message->id);
            answer.status = mExports.hold(message->object) ? OK : DEAD_OBJECT;
            if (answer.status == OK) link->acquired[message->object]++;
            send(link, std::move(answer));
            return true;
        }
        case MessageKind::kRelease: {
            const auto at = link->acquired.find(message->object);
            if (at == link->acquired.end()) return true;  // it was refused
            if (--at->second == 0) link->acquired.erase(at);
            mExports.letGo(message->object, 1, trash);
            return true;
        }
        case MessageKind::kCall:
            takeCall(link, message);
            return true;
        case MessageKind::kTaken:
            taken(link, message->id, trash);
            return true;
        default:
            return false;
    }
}

bool Router::takeFromServer(const std::shared_ptr<Link>& link, Message* message, Trash* trash) {
    switch (message->kind) {
        case MessageKind::kAcquired:
            acquired(link, *message);
            return true;
        case MessageKind::kReply:
            return takeReply(link, message);
        case MessageKind::kTaken:
            taken(link, message->id, trash);
            return true;
        case MessageKind::kDone: {
            const auto at = link->onewayCosts.find(message->id);
            if (at == link->onewayCosts.end()) return false;
            link->onewayCost -= at->second;
            link->onewayCosts.erase(at);
            return true;
        }
        default:
            return false;
    }
}

// A reply that this process has no room for fails the call, as on a device.
bool Router::takeReply(const std::shared_ptr<Link>& link, Message* message) {
    const size_t cost = message->payload.cost();
    const bool fits = mSpaceUsed + cost <= kTransactionSpace;
    if (message->status == OK && !fits) {
        ALOGE("No room for a reply of %zu bytes", cost);
        message->status = FAILED_TRANSACTION;
        message->payload = Payload();
        send(link, Message(MessageKind::kTaken, message->id));
    }
    const bool counts = message->status == OK;
    if (!mCalls.settle(link, message)) return false;
    if (counts) mSpaceUsed += cost;  // until it is read
    return true;
}

void Router::taken(const std::shared_ptr<Link>& link, uint64_t id, Trash* trash) {
    const auto at = link->pinned.find(id);
    if (at == link->pinned.end()) return;
    letGo(&at->second, trash);
    link->pinned.erase(at);
}

void Router::send(const std::shared_ptr<Link>& link, Message message) {
    if (link->dead) return;
    const bool hadOutput = link->channel.hasOutput();
    link->channel.send(std::move(message));
    if (!hadOutput && link->channel.hasOutput()) mReader.wake();
}

void Router::drop(const std::shared_ptr<Link>& link, Trash* trash) {
    link->dead = true;
    link->channel.close();  // the link itself stays for as long as there are proxies on it
    mLinks.erase(std::remove(mLinks.begin(), mLinks.end(), link), mLinks.end());
    mCalls.fail(link);
    while (!link->pinned.empty()) taken(link, link->pinned.begin()->first, trash);
    for (const auto& [object, count] : link->acquired) mExports.letGo(object, count, trash);
    link->acquired.clear();
    for (const auto& [id, acquisition] : link->acquisitions) confirm(acquisition.receipts);
    link->acquisitions.clear();
    if (!link->incoming) {
        mServers.erase(link->peer);
        for (sp<BpBinder>& proxy : mHandles.proxiesOn(link)) {
            trash->push_back(proxy);
            postObituary(std::move(proxy));
        }
    }
    mLinksChanged.broadcast();
}

}  // namespace android::transport
