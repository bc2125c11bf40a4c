// SPDX-License-Identifier: Apache-2.0
// The objects of other processes and the calls to them.
#define LOG_TAG "Binder"

#include "Router.h"

#include <log/log.h>
#include <string.h>
#include <sys/eventfd.h>
#include <sys/random.h>
#include <unistd.h>

#include <algorithm>

#include "../FlatObject.h"

namespace android::transport {

namespace {

ParcelViewer gParcelViewer = nullptr;

PeerId makeSelf() {
    PeerId self;
    self.pid = static_cast<uint32_t>(getpid());
    TEMP_FAILURE_RETRY(getrandom(&self.nonce, sizeof(self.nonce), 0));
    return self;
}

}  // namespace

size_t costOf(const Payload& payload) {
    constexpr size_t kFixed = 64;
    return kFixed + payload.data.size() + payload.objects.size() * sizeof(Payload::Object);
}

Router& Router::instance() {
    static Router& instance = *new Router();
    return instance;
}

Router::Router() : mSelf(makeSelf()), mWake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

bool Router::setParcelViewer(ParcelViewer viewer) {
    gParcelViewer = viewer;
    return true;
}

sp<IBinder> Router::proxyOf(int32_t handle) {
    Mutex::Autolock lock(mLock);
    return mHandles.proxyOf(handle);
}

void Router::forget(int32_t handle) {
    Mutex::Autolock lock(mLock);
    const HandleTable::Entry* const entry = mHandles.find(handle);
    if (entry == nullptr) return;
    if (entry->link != nullptr) {
        release(entry->link, entry->object);
    }
    mHandles.remove(handle);
}

void Router::release(const std::shared_ptr<Link>& link, uint64_t object) {
    Message message(MessageKind::kRelease);
    message.object = object;
    send(link, message);
}

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
    wakeReader();
    return true;
}

// Gives the link to the process |peer|, making it if there is none; null if that fails.
std::shared_ptr<Link> Router::linkTo(const PeerId& peer) {
    Mutex::Autolock lock(mLock);
    if (mStopping) return nullptr;
    if (const auto known = mServers.find(peer); known != mServers.end()) {
        // Not to give out a dead service because the reader has not come round to it yet.
        const std::shared_ptr<Link> link = known->second;
        while (link->channel.hasHungUp() && !link->dead) mLinksChanged.wait(mLock);
    }
    if (mServers.count(peer) == 0) {
        mLock.unlock();
        base::unique_fd socket = mDir.connectTo(peer);
        ucred credentials = {};
        const bool ours = socket.get() >= 0 && readPeerCredentials(socket.get(), &credentials);
        mLock.lock();
        if (mStopping || !ours) return nullptr;
        if (mServers.count(peer) == 0) {  // no other thread was faster
            const auto link = std::make_shared<Link>(std::move(socket), false, credentials);
            link->peer = peer;
            mServers[peer] = link;
            mLinks.push_back(link);
            greet(link, MessageKind::kHello);
            ensureReader();
            wakeReader();
        }
    }
    std::shared_ptr<Link> link = mServers[peer];
    while (!link->greeted && !link->dead) mLinksChanged.wait(mLock);
    return link->dead ? nullptr : link;
}

void Router::await(uint64_t id, PendingCall* call) {
    mPending[id] = call;
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
    mPending.erase(id);
    // Calls that came in the last moment, from a peer that died or did not wait for their replies.
    for (const auto& nested : call->nested) postCall(nested);
}

status_t Router::acquire(const std::shared_ptr<Link>& link, uint64_t object) {
    PendingCall call(link);
    Mutex::Autolock lock(mLock);
    if (link->dead) return DEAD_OBJECT;
    Message message(MessageKind::kAcquire, mNextId++);
    message.object = object;
    send(link, message);
    await(message.id, &call);
    return call.status;
}

// Gives the object at |address|: our own, or a proxy. An object that has died gives a dead proxy
// and false; one of ours that does not exist gives null and false.
bool Router::resolve(const ObjectAddress& address, sp<IBinder>* object) {
    if (address.peer == mSelf) {
        Mutex::Autolock lock(mLock);
        const std::shared_ptr<Export> entry = mExports.find(address.object);
        if (entry != nullptr) *object = entry->object;
        return entry != nullptr;
    }
    sp<BpBinder> proxy;
    const std::shared_ptr<Link> link = linkTo(address.peer);
    if (link != nullptr) {
        Mutex::Autolock lock(mLock);
        proxy = mHandles.proxyOf(link, address.object);
    }
    if (link != nullptr && proxy == nullptr && acquire(link, address.object) == NO_ERROR) {
        Mutex::Autolock lock(mLock);
        proxy = mHandles.proxyOf(link, address.object);
        if (proxy != nullptr) {  // made meanwhile by another thread: one acquisition is too many
            release(link, address.object);
        } else if (!link->dead) {
            proxy = mHandles.add(link, address.object);
        }
    }
    if (proxy != nullptr) {
        *object = proxy;
        return true;
    }
    {
        Mutex::Autolock lock(mLock);
        proxy = mHandles.add(nullptr, 0);
    }
    proxy->sendObituary();
    *object = proxy;
    return false;
}

// Finds out how other processes call |object| and adds to |pins| what keeps that true.
bool Router::addressOf(const sp<IBinder>& object, ObjectAddress* address, Pins* pins) {
    if (BBinder* const local = object->localBinder(); local != nullptr) {
        if (!ensureListening()) return false;
        Mutex::Autolock lock(mLock);
        *address = {mSelf, mExports.hold(local)};
        pins->exports.push_back(address->object);
        return true;
    }
    BpBinder* const proxy = object->remoteBinder();
    if (proxy == nullptr) return false;
    pins->proxies.push_back(object);
    Mutex::Autolock lock(mLock);
    const HandleTable::Entry* const entry = mHandles.find(proxy->handle());
    if (entry == nullptr) return false;
    // The address of one that was dead when it came is that of no process.
    if (entry->link != nullptr) *address = {entry->link->peer, entry->object};
    return true;
}

status_t Router::encodeParcel(const Parcel& parcel, Payload* payload, Pins* pins) {
    const ParcelView view = gParcelViewer(parcel);
    if (view.size > kMaxParcelSize) return FAILED_TRANSACTION;
    payload->data.assign(view.data, view.data + view.size);
    for (size_t i = 0; i < view.objectCount; i++) {
        uint8_t* const at = payload->data.data() + view.objects[i];
        flat_binder_object flat;
        memcpy(&flat, at, sizeof(flat));
        sp<IBinder> object;
        if (flat.type == kTypeHandle) {
            object = proxyOf(static_cast<int32_t>(flat.binder));
        } else {
            object = reinterpret_cast<BBinder*>(static_cast<uintptr_t>(flat.cookie));
        }
        Payload::Object entry;
        entry.offset = static_cast<uint32_t>(view.objects[i]);
        if (object == nullptr || !addressOf(object, &entry.address, pins))
            return FAILED_TRANSACTION;
        payload->objects.push_back(entry);
        flat.type = kTypeHandle;
        flat.binder = 0;
        flat.cookie = 0;
        memcpy(at, &flat, sizeof(flat));
    }
    return NO_ERROR;
}

status_t Router::decodeParcel(const Payload& payload, Parcel* parcel) {
    if (const status_t err = parcel->setData(payload.data.data(), payload.data.size());
        err != NO_ERROR) {
        return err;
    }
    for (const Payload::Object& entry : payload.objects) {
        sp<IBinder> object;
        resolve(entry.address, &object);
        if (object == nullptr) return FAILED_TRANSACTION;
        flat_binder_object flat;
        memcpy(&flat, payload.data.data() + entry.offset, sizeof(flat));
        if (BBinder* const local = object->localBinder(); local != nullptr) {
            flat.type = kTypeBinder;
            flat.binder = reinterpret_cast<uintptr_t>(local->getWeakRefs());
            flat.cookie = reinterpret_cast<uintptr_t>(local);
        } else {
            flat.type = kTypeHandle;
            flat.binder = static_cast<uint32_t>(object->remoteBinder()->handle());
            flat.cookie = 0;
        }
        parcel->setDataPosition(entry.offset);
        if (const status_t err = parcel->writeObject(flat, false); err != NO_ERROR) return err;
    }
    parcel->setDataPosition(0);
    return NO_ERROR;
}

void Router::unpin(Pins* pins) {
    Trash trash;
    {
        Mutex::Autolock lock(mLock);
        letGo(pins, &trash);
    }
}

status_t Router::sendOneway(const std::shared_ptr<Link>& link, Message* message, Pins* pins) {
    const size_t cost = costOf(message->payload);
    Mutex::Autolock lock(mLock);
    if (link->dead) return DEAD_OBJECT;
    if (link->inTransitCost + cost > kMaxOnewaySize) {
        ALOGE("Process %d serves one-way calls too slowly; this one is refused", link->pid);
        return FAILED_TRANSACTION;
    }
    message->id = mNextId++;
    link->inTransit[message->id] = {std::move(*pins), cost};
    *pins = Pins();
    link->inTransitCost += cost;
    send(link, *message);
    return NO_ERROR;
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

    Pins pins;
    PendingCall call(link);
    call.status = encodeParcel(data, &message.payload, &pins);
    if (call.status == NO_ERROR && (flags & IBinder::FLAG_ONEWAY) != 0) {
        call.status = sendOneway(link, &message, &pins);
    } else if (call.status == NO_ERROR) {
        message.nestedIn = servedCallOf(link->peer);
        Mutex::Autolock lock(mLock);
        if (link->dead) {
            call.status = DEAD_OBJECT;
        } else {
            message.id = mNextId++;
            send(link, message);
            await(message.id, &call);
        }
    }
    unpin(&pins);
    if (call.status != NO_ERROR || (flags & IBinder::FLAG_ONEWAY) != 0) return call.status;

    Parcel unwanted;
    Parcel* const out = reply != nullptr ? reply : &unwanted;
    const status_t status = decodeParcel(call.reply, out);
    if (status != NO_ERROR) out->freeData();
    if (!call.reply.objects.empty()) {
        Mutex::Autolock lock(mLock);
        send(link, Message(MessageKind::kTaken, message.id));
    }
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
    sp<IBinder> object;
    if (!mDir.find(name, &address) || !resolve(address, &object)) return nullptr;
    // The proxy did not come through a Parcel, which would have told its stability.
    if (object->remoteBinder() != nullptr) Parcel().writeStrongBinder(object);
    return object;
}

}  // namespace android::transport
