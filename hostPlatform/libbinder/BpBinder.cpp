// SPDX-License-Identifier: Apache-2.0
// The proxy of an object of another process. The router knows it by its handle.
#define LOG_TAG "BpBinder"

#include <limits>
#include <memory>

#include <binder/BpBinder.h>
#include <binder/IPCThreadState.h>
#include <binder/Parcel.h>
#include <binder/Stability.h>

#include <log/log.h>

#include "transport/Router.h"

namespace android {

BpBinder::ObjectManager::ObjectManager() = default;

BpBinder::ObjectManager::~ObjectManager() {
    kill();
}

void BpBinder::ObjectManager::attach(const void* objectID, void* object, void* cleanupCookie,
                                     IBinder::object_cleanup_func func) {
    if (mObjects.indexOfKey(objectID) >= 0) {
        ALOGE("Trying to attach object ID %p to %p, where it is in use already", objectID, this);
        return;
    }
    mObjects.add(objectID, entry_t{object, cleanupCookie, func});
}

void* BpBinder::ObjectManager::find(const void* objectID) const {
    const ssize_t i = mObjects.indexOfKey(objectID);
    return i >= 0 ? mObjects.valueAt(static_cast<size_t>(i)).object : nullptr;
}

void BpBinder::ObjectManager::detach(const void* objectID) {
    mObjects.removeItem(objectID);
}

void BpBinder::ObjectManager::kill() {
    for (size_t i = 0; i < mObjects.size(); i++) {
        const entry_t& entry = mObjects.valueAt(i);
        if (entry.func != nullptr) entry.func(mObjects.keyAt(i), entry.object, entry.cleanupCookie);
    }
    mObjects.clear();
}

BpBinder* BpBinder::create(int32_t handle) {
    return new BpBinder(handle, -1 /*trackedUid*/);
}

BpBinder::BpBinder(int32_t handle, int32_t trackedUid)
    : mHandle(handle),
      mAlive(1),
      mObitsSent(0),
      mObituaries(nullptr),
      mConstantData(nullptr),
      mTrackedUid(trackedUid) {
    static_cast<void>(mConstantData);
    static_cast<void>(mTrackedUid);
}

BpBinder::~BpBinder() {
    transport::Router::instance().forget(mHandle);
    delete mObituaries;
}

void BpBinder::onFirstRef() {}

void BpBinder::onLastStrongRef(const void*) {}

bool BpBinder::onIncStrongAttempted(uint32_t flags, const void* id) {
    return RefBase::onIncStrongAttempted(flags, id);
}

int32_t BpBinder::handle() const {
    return mHandle;
}

BpBinder* BpBinder::remoteBinder() {
    return this;
}

bool BpBinder::isDescriptorCached() const {
    Mutex::Autolock lock(mLock);
    return mDescriptorCache.size() > 0;
}

const String16& BpBinder::getInterfaceDescriptor() const {
    if (isDescriptorCached()) return mDescriptorCache;
    Parcel data;
    Parcel reply;
    // Asked without the lock, because the call may be served by one that wants it.
    auto* const self = const_cast<BpBinder*>(this);
    if (self->transact(INTERFACE_TRANSACTION, data, &reply) == NO_ERROR) {
        const String16 descriptor = reply.readString16();
        Mutex::Autolock lock(mLock);
        // Written once: others may hold a reference to it by now.
        if (mDescriptorCache.size() == 0) mDescriptorCache = descriptor;
    }
    return mDescriptorCache;
}

bool BpBinder::isBinderAlive() const {
    Mutex::Autolock lock(mLock);
    return mAlive != 0;
}

status_t BpBinder::pingBinder() {
    Parcel data;
    Parcel reply;
    return transact(PING_TRANSACTION, data, &reply);
}

status_t BpBinder::dump(int fd, const Vector<String16>& args) {
    Parcel data;
    Parcel reply;
    data.writeFileDescriptor(fd);
    data.writeInt32(static_cast<int32_t>(args.size()));
    for (const String16& arg : args) data.writeString16(arg);
    return transact(DUMP_TRANSACTION, data, &reply);
}

status_t BpBinder::transact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) {
    if (!isBinderAlive()) return DEAD_OBJECT;
    if (code >= FIRST_CALL_TRANSACTION && code <= LAST_CALL_TRANSACTION) {
        using internal::Stability;
        const auto stability = Stability::get(this);
        if (!Stability::check(stability, Stability::kLocalStability)) {
            ALOGE("Cannot do a user transaction on a %s binder in a %s context.",
                  Stability::stabilityString(stability).c_str(),
                  Stability::stabilityString(Stability::kLocalStability).c_str());
            return BAD_TYPE;
        }
    }
    const status_t status = IPCThreadState::self()->transact(mHandle, code, data, reply, flags);
    if (status == DEAD_OBJECT) {
        Mutex::Autolock lock(mLock);
        mAlive = 0;
    }
    return status;
}

status_t BpBinder::linkToDeath(const sp<DeathRecipient>& recipient, void* cookie, uint32_t flags) {
    LOG_ALWAYS_FATAL_IF(recipient == nullptr, "linkToDeath(): recipient must be non-NULL");
    {
        Mutex::Autolock lock(mLock);
        if (mObitsSent != 0) return DEAD_OBJECT;
        if (mObituaries == nullptr) mObituaries = new Vector<Obituary>();
        mObituaries->add(Obituary{recipient, cookie, flags});
    }
    // Nobody was told yet of a death before the first link.
    transport::Router::instance().watch(mHandle);
    return NO_ERROR;
}

status_t BpBinder::unlinkToDeath(const wp<DeathRecipient>& recipient, void* cookie, uint32_t flags,
                                 wp<DeathRecipient>* outRecipient) {
    Mutex::Autolock lock(mLock);
    if (mObitsSent != 0) return DEAD_OBJECT;
    const size_t count = mObituaries != nullptr ? mObituaries->size() : 0;
    for (size_t i = 0; i < count; i++) {
        const Obituary& obituary = mObituaries->itemAt(i);
        const bool named = obituary.recipient == recipient ||
                           (recipient == nullptr && obituary.cookie == cookie);
        if (!named || obituary.flags != flags) continue;
        if (outRecipient != nullptr) *outRecipient = obituary.recipient;
        mObituaries->removeAt(i);
        if (mObituaries->isEmpty()) {
            delete mObituaries;
            mObituaries = nullptr;
        }
        return NO_ERROR;
    }
    return NAME_NOT_FOUND;
}

// Called once the object is known to have gone. As on a device, a proxy whose death nobody wants to
// hear of stays alive until a call fails; otherwise the recipients are told, once.
void BpBinder::sendObituary() {
    std::unique_ptr<Vector<Obituary>> obituaries;
    {
        Mutex::Autolock lock(mLock);
        if (mObituaries == nullptr) return;
        mAlive = 0;
        mObitsSent = 1;
        obituaries.reset(mObituaries);
        mObituaries = nullptr;
    }
    for (const Obituary& obituary : *obituaries) reportOneDeath(obituary);
}

void BpBinder::reportOneDeath(const Obituary& obituary) {
    const sp<DeathRecipient> recipient = obituary.recipient.promote();
    if (recipient != nullptr) recipient->binderDied(wp<BpBinder>(this));
}

void BpBinder::attachObject(const void* objectID, void* object, void* cleanupCookie,
                            object_cleanup_func func) {
    Mutex::Autolock lock(mLock);
    mObjects.attach(objectID, object, cleanupCookie, func);
}

void* BpBinder::findObject(const void* objectID) const {
    Mutex::Autolock lock(mLock);
    return mObjects.find(objectID);
}

void BpBinder::detachObject(const void* objectID) {
    Mutex::Autolock lock(mLock);
    mObjects.detach(objectID);
}

}  // namespace android
