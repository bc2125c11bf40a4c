// SPDX-License-Identifier: Apache-2.0
// The objects of this process and of others, and what keeps them alive.
#include "Router.h"

namespace android::transport {

sp<IBinder> Router::proxyOf(int32_t handle) {
    Mutex::Autolock lock(mLock);
    return mHandles.proxyOf(handle);
}

void Router::forget(int32_t handle) {
    Mutex::Autolock lock(mLock);
    const HandleTable::Entry* const entry = mHandles.find(handle);
    if (entry == nullptr) return;
    if (entry->link != nullptr) {
        Message message(MessageKind::kRelease);
        message.object = entry->object;
        send(entry->link, std::move(message));
    }
    mHandles.remove(handle);
}

void Router::watch(int32_t handle) {
    Mutex::Autolock lock(mLock);
    const HandleTable::Entry* const entry = mHandles.find(handle);
    if (entry == nullptr || (entry->link != nullptr && !entry->link->dead)) return;
    postObituary(entry->proxy.promote());
}

void Router::postObituary(sp<BpBinder> proxy) {
    if (proxy != nullptr) mPool.post([proxy = std::move(proxy)] { proxy->sendObituary(); });
}

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

sp<IBinder> Router::resolve(const ObjectAddress& address, const std::shared_ptr<Receipt>& receipt) {
    if (address.peer == mSelf) {
        Mutex::Autolock lock(mLock);
        const std::shared_ptr<Export> entry = mExports.find(address.object);
        return entry != nullptr ? entry->object : nullptr;
    }
    std::shared_ptr<Link> link = linkTo(address.peer);
    Mutex::Autolock lock(mLock);
    if (link != nullptr && link->dead) link = nullptr;
    sp<BpBinder> proxy;
    if (link != nullptr) proxy = mHandles.proxyOf(link, address.object);
    if (proxy == nullptr) {
        proxy = mHandles.add(link, address.object);
        if (link == nullptr) return proxy;
        Message request(MessageKind::kAcquire, mNextId++);
        request.object = address.object;
        mHandles.find(proxy->handle())->acquisition = request.id;
        link->acquisitions[request.id].handle = proxy->handle();
        send(link, std::move(request));
    }
    const uint64_t pending = mHandles.find(proxy->handle())->acquisition;
    if (receipt != nullptr && pending != 0) {
        receipt->open++;
        link->acquisitions[pending].receipts.push_back(receipt);
    }
    return proxy;
}

// An object that its process refuses has died on the way.
void Router::acquired(const std::shared_ptr<Link>& link, const Message& answer) {
    const auto at = link->acquisitions.find(answer.id);
    if (at == link->acquisitions.end()) return;
    HandleTable::Entry* const entry = mHandles.find(at->second.handle);
    if (entry != nullptr && entry->acquisition == answer.id) {
        entry->acquisition = 0;
        if (answer.status != OK) {
            entry->link = nullptr;
            postObituary(entry->proxy.promote());
        }
    }
    confirm(at->second.receipts);
    link->acquisitions.erase(at);
}

void Router::confirm(const std::vector<std::shared_ptr<Receipt>>& receipts) {
    for (const auto& receipt : receipts) {
        if (--receipt->open == 0) send(receipt->link, Message(MessageKind::kTaken, receipt->id));
    }
}

// Reads what came on |link| with the call or reply |id|.
status_t Router::receive(Payload* payload, const std::shared_ptr<Link>& link, uint64_t id,
                         Parcel* parcel) {
    if (payload->objects.size() == payload->fds.size()) {
        return decodeParcel(payload, this, nullptr, parcel);
    }
    const auto receipt = std::make_shared<Receipt>(Receipt{link, id});
    const status_t status = decodeParcel(payload, this, receipt, parcel);
    Mutex::Autolock lock(mLock);
    confirm({receipt});
    return status;
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
    mPool.post([kept] { kept->clear(); });
}

}  // namespace android::transport
