// SPDX-License-Identifier: Apache-2.0
// Calls to other processes, and the names under which they are found.
#define LOG_TAG "Binder"

#include "Router.h"

#include <log/log.h>
#include <sys/random.h>
#include <unistd.h>

namespace android::transport {

namespace {

PeerId makeSelf() {
    PeerId self;
    self.pid = static_cast<uint32_t>(getpid());
    TEMP_FAILURE_RETRY(getrandom(&self.nonce, sizeof(self.nonce), 0));
    return self;
}

}  // namespace

Router& Router::instance() {
    static Router& instance = *new Router();
    return instance;
}

Router::Router() : mSelf(makeSelf()) {}

bool Router::ensureListening() {
    Mutex::Autolock listenLock(mListenLock);
    {
        Mutex::Autolock lock(mLock);
        if (mStopping) return false;
        if (mListener.get() >= 0) return true;
    }
    base::unique_fd listener = mDir.listenAs(mSelf);
    if (listener.get() < 0) return false;
    Mutex::Autolock lock(mLock);
    mListener = std::move(listener);
    ensureReader();
    mReader.wake();
    return true;
}

// Gives the link to the process |peer|, making it if there is none; null if that process has gone.
// One that is stopped or busy is not waited for.
std::shared_ptr<Link> Router::linkTo(const PeerId& peer) {
    Mutex::Autolock lock(mLock);
    if (mStopping) return nullptr;
    if (const auto known = mServers.find(peer); known != mServers.end()) {
        // Not to give out a dead service because the reader has not come round to it yet.
        std::shared_ptr<Link> link = known->second;
        while (!link->dead && link->channel.hasHungUp()) mLinksChanged.wait(mLock);
        if (!link->dead) return link;
    }
    mLock.unlock();
    base::unique_fd socket = mDir.connectTo(peer);
    ucred credentials = {};
    const bool ours = socket.get() >= 0 && readPeerCredentials(socket.get(), &credentials);
    mLock.lock();
    if (mStopping || !ours) return nullptr;
    std::shared_ptr<Link>& link = mServers[peer];
    if (link == nullptr) {  // no other thread was faster
        link = std::make_shared<Link>(std::move(socket), false, credentials);
        link->peer = peer;
        mLinks.push_back(link);
        greet(link, MessageKind::kHello);
        ensureReader();
        mReader.wake();
    }
    return link;
}

void Router::await(uint64_t id, CallTable::Call* call) {
    mCalls.add(id, call);
    while (!call->done) {
        if (call->nested.empty()) {
            call->changed.wait(mLock);
            continue;
        }
        std::shared_ptr<IncomingCall> nested = std::move(call->nested.front());
        call->nested.pop_front();
        mLock.unlock();
        serve(nested.get());
        nested.reset();
        mLock.lock();
    }
    mCalls.remove(id);
    // Calls that came in the last moment, from a peer that died or did not wait for their replies.
    for (const auto& nested : call->nested) postCall(nested);
}

void Router::pin(const std::shared_ptr<Link>& link, uint64_t id, Pins* pins) {
    if (pins->exports.empty() && pins->proxies.empty()) return;
    link->pinned[id] = std::move(*pins);
    *pins = Pins();
}

void Router::unpin(Pins* pins) {
    Trash trash;
    {
        Mutex::Autolock lock(mLock);
        letGo(pins, &trash);
    }
}

status_t Router::sendOneway(const std::shared_ptr<Link>& link, Message* message, Pins* pins) {
    const size_t cost = message->payload.cost();
    Mutex::Autolock lock(mLock);
    if (link->dead) return DEAD_OBJECT;
    if (link->onewayCost + cost > kOnewaySpace) {
        ALOGE("Process %d serves one-way calls too slowly; this one is refused", link->pid);
        return FAILED_TRANSACTION;
    }
    message->id = mNextId++;
    pin(link, message->id, pins);
    link->onewayCosts[message->id] = cost;
    link->onewayCost += cost;
    send(link, std::move(*message));
    return NO_ERROR;
}

status_t Router::sendAndAwait(Message* message, Pins* pins, CallTable::Call* call) {
    message->chain = callsServed();
    Mutex::Autolock lock(mLock);
    if (call->link->dead) return DEAD_OBJECT;
    const uint64_t id = message->id = mNextId++;
    pin(call->link, id, pins);
    send(call->link, std::move(*message));
    await(id, call);
    message->id = id;
    return call->status;
}

status_t Router::call(int32_t handle, uint32_t code, uint32_t flags, const Parcel& data,
                      Parcel* reply) {
    Message message(MessageKind::kCall);
    message.code = code;
    message.flags = flags;
    std::shared_ptr<Link> link;
    {
        Mutex::Autolock lock(mLock);
        const HandleTable::Entry* const entry = mHandles.find(handle);
        if (entry == nullptr || entry->link == nullptr || entry->link->dead) return DEAD_OBJECT;
        link = entry->link;
        message.object = entry->object;
    }

    const bool oneway = (flags & IBinder::FLAG_ONEWAY) != 0;
    Pins pins;
    CallTable::Call call(link);
    status_t status = encodeParcel(data, this, &message.payload, &pins);
    if (status == NO_ERROR) {
        status = oneway ? sendOneway(link, &message, &pins) : sendAndAwait(&message, &pins, &call);
    }
    unpin(&pins);
    if (status != NO_ERROR || oneway) return status;

    Parcel unwanted;
    Parcel* const out = reply != nullptr ? reply : &unwanted;
    const size_t cost = call.reply.cost();
    status = receive(&call.reply, link, message.id, out);
    if (status != NO_ERROR) out->freeData();
    Mutex::Autolock lock(mLock);
    mSpaceUsed -= cost;
    return status;
}

status_t Router::publish(const std::string& name, const sp<IBinder>& object) {
    ObjectAddress address;
    Pins pins;
    const bool reachable = addressOf(object, &address, &pins);
    status_t status = reachable && mDir.publish(name, address) ? OK : PERMISSION_DENIED;
    if (status == OK) {
        Mutex::Autolock lock(mLock);
        std::swap(mPublished[name], pins);  // what had the name before is let go
    }
    unpin(&pins);
    return status;
}

sp<IBinder> Router::find(const std::string& name) {
    ObjectAddress address;
    if (!mDir.find(name, &address)) return nullptr;
    if (address.peer != mSelf && linkTo(address.peer) == nullptr) return nullptr;
    const sp<IBinder> object = resolve(address, nullptr);
    // The proxy did not come through a Parcel, which would have told its stability.
    if (object != nullptr && object->remoteBinder() != nullptr) Parcel().writeStrongBinder(object);
    return object;
}

void Router::stop() {
    // A fork that exits has neither threads nor names of its own.
    if (mSelf.pid != static_cast<uint32_t>(getpid())) return;
    bool wasReached;
    bool wasReading;
    {
        Mutex::Autolock lock(mLock);
        if (mStopping) return;
        mStopping = true;
        for (const auto& link : mLinks) {
            link->dead = true;
            link->channel.cutOff();
            mCalls.fail(link);
        }
        mLinksChanged.broadcast();
        wasReached = mListener.get() >= 0;
        wasReading = mReading;
    }
    if (wasReached) mDir.withdraw(mSelf);
    mReader.wake();
    mPool.stop();
    if (wasReading) mReader.awaitEnd();
}

}  // namespace android::transport
