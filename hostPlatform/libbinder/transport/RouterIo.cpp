// SPDX-License-Identifier: Apache-2.0
// The thread that reads all links.
#define LOG_TAG "Binder"

#include "Router.h"

#include <errno.h>
#include <log/log.h>
#include <pthread.h>
#include <stdlib.h>
#include <string.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <thread>

namespace android::transport {

namespace {

// For a peer to greet, and for the rest of a message once its beginning has come. The peer's reader
// does nothing else, so only one that is stopped or no binder process at all takes that long.
constexpr int64_t kPatienceMs = 5000;
// How long connections are left waiting after one could not be accepted for lack of descriptors.
constexpr int64_t kAcceptPauseMs = 100;
constexpr size_t kMaxStrangers = 64;
constexpr int kEndTries = 1000;
constexpr useconds_t kEndPauseUs = 1000;

// The kernel's clock, whatever the program puts in the place of clock_gettime().
int64_t nowMs() {
    timespec now = {};
    syscall(SYS_clock_gettime, CLOCK_MONOTONIC, &now);
    return int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1000000;
}

}  // namespace

void Router::ensureReader() {
    if (mReading) return;
    mReading = true;
    std::thread([this] { read(); }).detach();
    // Before the destructors of the program's statics, which the threads may still use.
    atexit([] { Router::instance().stop(); });
}

void Router::wakeReader() {
    const uint64_t one = 1;
    TEMP_FAILURE_RETRY(write(mWake.get(), &one, sizeof(one)));
}

void Router::read() {
    pthread_setname_np(pthread_self(), "BinderReader");
    for (;;) {
        std::vector<pollfd> fds = {{mWake.get(), POLLIN, 0}};
        std::vector<std::shared_ptr<Link>> links;
        int64_t deadlineMs = INT64_MAX;
        {
            Mutex::Autolock lock(mLock);
            if (mStopping) break;
            // Poll passes over an entry whose descriptor is negative.
            fds.push_back({mAcceptAgainMs == 0 ? mListener.get() : -1, POLLIN, 0});
            if (mAcceptAgainMs != 0) deadlineMs = mAcceptAgainMs;
            links = mLinks;
            for (const auto& link : links) {
                const short output = link->channel.hasOutput() ? POLLOUT : 0;
                fds.push_back({link->channel.fd(), static_cast<short>(POLLIN | output), 0});
                if (link->deadlineMs != 0) deadlineMs = std::min(deadlineMs, link->deadlineMs);
            }
        }
        const int64_t waitMs = std::max<int64_t>(deadlineMs - nowMs(), 0);
        poll(fds.data(), fds.size(), deadlineMs == INT64_MAX ? -1 : static_cast<int>(waitMs));
        uint64_t ignored;
        TEMP_FAILURE_RETRY(::read(mWake.get(), &ignored, sizeof(ignored)));
        readTurn(fds, links);
    }
    Mutex::Autolock lock(mLock);
    mReading = false;
}

void Router::readTurn(const std::vector<pollfd>& fds,
                      const std::vector<std::shared_ptr<Link>>& links) {
    Trash trash;
    {
        Mutex::Autolock lock(mLock);
        if (mStopping) return;
        const int64_t now = nowMs();
        if (mAcceptAgainMs != 0 && now >= mAcceptAgainMs) mAcceptAgainMs = 0;
        if (fds[1].revents != 0) acceptLinks(&trash);
        for (size_t i = 0; i < links.size(); i++) {
            const std::shared_ptr<Link>& link = links[i];
            if (link->dead) continue;
            const short events = fds[i + 2].revents;
            if ((events & POLLOUT) != 0) link->channel.flush();
            const bool readable = (events & ~POLLOUT) != 0;
            if (readable && !readLink(link, &trash)) drop(link, &trash);
            if (link->dead || link->deadlineMs == 0 || now < link->deadlineMs) continue;
            ALOGW("Process %d does not speak; it is dropped", link->pid);
            drop(link, &trash);
        }
    }
    discard(&trash);
}

void Router::acceptLinks(Trash* trash) {
    for (;;) {
        base::unique_fd socket(TEMP_FAILURE_RETRY(
                accept4(mListener.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK)));
        if (socket.get() < 0) {
            if (errno == EMFILE || errno == ENFILE) mAcceptAgainMs = nowMs() + kAcceptPauseMs;
            return;
        }
        ucred credentials;
        if (!readPeerCredentials(socket.get(), &credentials)) continue;
        const auto isStranger = [](const auto& link) { return link->incoming && !link->greeted; };
        if (std::count_if(mLinks.begin(), mLinks.end(), isStranger) >=
            static_cast<ptrdiff_t>(kMaxStrangers)) {
            drop(*std::find_if(mLinks.begin(), mLinks.end(), isStranger), trash);
        }
        const auto link = std::make_shared<Link>(std::move(socket), true, credentials);
        link->deadlineMs = nowMs() + kPatienceMs;
        mLinks.push_back(link);
    }
}

bool Router::readLink(const std::shared_ptr<Link>& link, Trash* trash) {
    std::vector<Message> messages;
    const bool open = link->channel.receive(&messages);
    for (Message& message : messages) {
        if (!takeMessage(link, &message, trash)) {
            ALOGW("Process %d breaks the protocol; it is dropped", link->pid);
            return false;
        }
    }
    if (!link->greeted) return open;
    if (!link->channel.hasPartialInput()) {
        link->deadlineMs = 0;
    } else if (link->deadlineMs == 0 || !messages.empty()) {
        link->deadlineMs = nowMs() + kPatienceMs;
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
    mLinksChanged.broadcast();
    return true;
}

void Router::greet(const std::shared_ptr<Link>& link, MessageKind kind) {
    Message greeting(kind);
    greeting.version = kProtocolVersion;
    greeting.peer = mSelf;
    link->deadlineMs = nowMs() + kPatienceMs;
    send(link, greeting);
}

bool Router::takeFromClient(const std::shared_ptr<Link>& link, Message* message, Trash* trash) {
    switch (message->kind) {
        case MessageKind::kAcquire: {
            Message answer(MessageKind::kAcquired, message->id);
            answer.status = mExports.hold(message->object) ? OK : DEAD_OBJECT;
            if (answer.status == OK) link->acquired[message->object]++;
            send(link, answer);
            return true;
        }
        case MessageKind::kRelease: {
            const auto at = link->acquired.find(message->object);
            if (at == link->acquired.end()) return false;
            if (--at->second == 0) link->acquired.erase(at);
            mExports.letGo(message->object, 1, trash);
            return true;
        }
        case MessageKind::kCall:
            return takeCall(link, message);
        case MessageKind::kTaken:
            endTransit(link, message->id, trash);
            return true;
        default:
            return false;
    }
}

bool Router::takeFromServer(const std::shared_ptr<Link>& link, Message* message, Trash* trash) {
    switch (message->kind) {
        case MessageKind::kAcquired:
        case MessageKind::kReply:
            return settle(link, message);
        case MessageKind::kDone:
            endTransit(link, message->id, trash);
            return true;
        default:
            return false;
    }
}

bool Router::settle(const std::shared_ptr<Link>& link, Message* message) {
    const auto at = mPending.find(message->id);
    if (at == mPending.end() || at->second->link != link || at->second->done) return false;
    PendingCall* const call = at->second;
    call->done = true;
    call->status = message->status;
    call->reply = std::move(message->payload);
    call->changed.signal();
    return true;
}

void Router::send(const std::shared_ptr<Link>& link, const Message& message) {
    if (link->dead) return;
    const bool hadOutput = link->channel.hasOutput();
    link->channel.send(message);
    if (!hadOutput && link->channel.hasOutput()) wakeReader();
}

void Router::drop(const std::shared_ptr<Link>& link, Trash* trash) {
    link->dead = true;
    link->channel.close();  // the link itself stays for as long as there are proxies on it
    mLinks.erase(std::remove(mLinks.begin(), mLinks.end(), link), mLinks.end());
    failCalls(link);
    while (!link->inTransit.empty()) endTransit(link, link->inTransit.begin()->first, trash);
    for (const auto& [object, count] : link->acquired) mExports.letGo(object, count, trash);
    link->acquired.clear();
    if (!link->incoming) {
        mServers.erase(link->peer);
        for (sp<BpBinder>& proxy : mHandles.proxiesOn(link)) {
            mPool.postChore([proxy] { proxy->sendObituary(); });
            trash->push_back(std::move(proxy));
        }
    }
    mLinksChanged.broadcast();
}

// A call whose reply has come before the end is not among them.
void Router::failCalls(const std::shared_ptr<Link>& link) {
    for (auto& [id, call] : mPending) {
        if (call->link != link || call->done) continue;
        call->done = true;
        call->status = DEAD_OBJECT;
        call->changed.signal();
    }
}

void Router::endTransit(const std::shared_ptr<Link>& link, uint64_t id, Trash* trash) {
    const auto at = link->inTransit.find(id);
    if (at == link->inTransit.end()) return;
    link->inTransitCost -= at->second.cost;
    letGo(&at->second.pins, trash);
    link->inTransit.erase(at);
}

void Router::letGo(Pins* pins, Trash* trash) {
    for (const uint64_t id : pins->exports) mExports.letGo(id, 1, trash);
    trash->insert(trash->end(), pins->proxies.begin(), pins->proxies.end());
    *pins = Pins();
}

// Drops references where foreign destructors may run.
void Router::discard(Trash* trash) {
    if (trash->empty()) return;
    auto kept = std::make_shared<Trash>(std::move(*trash));
    mPool.postChore([kept] { kept->clear(); });
}

void Router::stop() {
    // A fork that exits has neither threads nor names of its own.
    if (mSelf.pid != static_cast<uint32_t>(getpid())) return;
    bool wasReached;
    {
        Mutex::Autolock lock(mLock);
        if (mStopping) return;
        mStopping = true;
        for (const auto& link : mLinks) {
            link->dead = true;
            link->channel.cutOff();
            failCalls(link);
        }
        mLinksChanged.broadcast();
        wasReached = mListener.get() >= 0;
    }
    if (wasReached) mDir.withdraw(mSelf);
    wakeReader();
    mPool.stop();
    mPool.awaitEnd();
    for (int i = 0; i < kEndTries; i++) {
        {
            Mutex::Autolock lock(mLock);
            if (!mReading) return;
        }
        usleep(kEndPauseUs);
    }
}

}  // namespace android::transport
