// SPDX-License-Identifier: Apache-2.0
// The objects of this process (BBinder), what proxies are built on (BpRefBase), and the interfaces
// that both serve (IInterface).
#define LOG_TAG "BBinder"

#include <limits>
#include <memory>

#include <binder/Binder.h>
#include <binder/BpBinder.h>
#include <binder/IInterface.h>
#include <binder/Parcel.h>

#include <unistd.h>

#include <log/log.h>
#include <utils/Mutex.h>
#include <utils/misc.h>

namespace android {

IBinder::IBinder() = default;
IBinder::~IBinder() = default;

sp<IInterface> IBinder::queryLocalInterface(const String16&) {
    return nullptr;
}

BBinder* IBinder::localBinder() {
    return nullptr;
}

BpBinder* IBinder::remoteBinder() {
    return nullptr;
}

bool IBinder::checkSubclass(const void*) const {
    return false;
}

status_t IBinder::getExtension(sp<IBinder>* out) {
    if (BBinder* const local = localBinder(); local != nullptr) {
        *out = local->getExtension();
        return NO_ERROR;
    }
    Parcel data;
    Parcel reply;
    if (const status_t err = transact(EXTENSION_TRANSACTION, data, &reply); err != NO_ERROR)
        return err;
    return reply.readNullableStrongBinder(out);
}

status_t IBinder::getDebugPid(pid_t* outPid) {
    if (BBinder* const local = localBinder(); local != nullptr) {
        *outPid = local->getDebugPid();
        return NO_ERROR;
    }
    Parcel data;
    Parcel reply;
    if (const status_t err = transact(DEBUG_PID_TRANSACTION, data, &reply); err != NO_ERROR)
        return err;
    int32_t pid = 0;
    const status_t err = reply.readInt32(&pid);
    if (err == NO_ERROR) *outPid = pid;
    return err;
}

// What few objects have, made when the first of it is set.
class BBinder::Extras {
  public:
    Mutex mLock;
    BpBinder::ObjectManager mObjects GUARDED_BY(mLock);
    // Set before the object is seen by a second thread.
    bool mRequestingSid = false;
    sp<IBinder> mExtension;
};

BBinder::BBinder() : mExtras(nullptr), mReserved0(nullptr) {
    static_cast<void>(mReserved0);
}

BBinder::~BBinder() {
    delete mExtras.load(std::memory_order_relaxed);
}

BBinder::Extras* BBinder::getOrCreateExtras() {
    Extras* present = mExtras.load(std::memory_order_acquire);
    if (present != nullptr) return present;
    auto made = std::make_unique<Extras>();
    if (mExtras.compare_exchange_strong(present, made.get(), std::memory_order_acq_rel)) {
        return made.release();
    }
    return present;
}

const String16& BBinder::getInterfaceDescriptor() const {
    static const String16& empty = *new String16();
    ALOGW("reached BBinder::getInterfaceDescriptor (this=%p)", this);
    return empty;
}

bool BBinder::isBinderAlive() const {
    return true;
}

status_t BBinder::pingBinder() {
    return NO_ERROR;
}

status_t BBinder::dump(int, const Vector<String16>&) {
    return NO_ERROR;
}

status_t BBinder::transact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) {
    data.setDataPosition(0);
    status_t err = NO_ERROR;
    switch (code) {
        case PING_TRANSACTION:
            err = pingBinder();
            break;
        case EXTENSION_TRANSACTION:
            err = reply != nullptr ? reply->writeStrongBinder(getExtension()) : status_t{BAD_VALUE};
            break;
        case DEBUG_PID_TRANSACTION:
            err = reply != nullptr ? reply->writeInt32(getDebugPid()) : status_t{BAD_VALUE};
            break;
        default:
            err = onTransact(code, data, reply, flags);
            break;
    }
    if (reply != nullptr) reply->setDataPosition(0);
    return err;
}

status_t BBinder::onTransact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t) {
    switch (code) {
        case INTERFACE_TRANSACTION:
            if (reply == nullptr) return BAD_VALUE;
            return reply->writeString16(getInterfaceDescriptor());
        case DUMP_TRANSACTION: {
            const int fd = data.readFileDescriptor();
            const int32_t count = data.readInt32();
            Vector<String16> args;
            for (int32_t i = 0; i < count && data.dataAvail() > 0; i++) {
                args.add(data.readString16());
            }
            return dump(fd, args);
        }
        case SHELL_COMMAND_TRANSACTION:
            return INVALID_OPERATION;  // nobody here has a shell's callbacks
        case SYSPROPS_TRANSACTION:
            report_sysprop_change();
            return NO_ERROR;
        default:
            return UNKNOWN_TRANSACTION;
    }
}

status_t BBinder::linkToDeath(const sp<DeathRecipient>&, void*, uint32_t) {
    return INVALID_OPERATION;
}

status_t BBinder::unlinkToDeath(const wp<DeathRecipient>&, void*, uint32_t, wp<DeathRecipient>*) {
    return INVALID_OPERATION;
}

void BBinder::attachObject(const void* objectID, void* object, void* cleanupCookie,
                           object_cleanup_func func) {
    Extras* const extras = getOrCreateExtras();
    Mutex::Autolock lock(extras->mLock);
    extras->mObjects.attach(objectID, object, cleanupCookie, func);
}

void* BBinder::findObject(const void* objectID) const {
    Extras* const extras = mExtras.load(std::memory_order_acquire);
    if (extras == nullptr) return nullptr;
    Mutex::Autolock lock(extras->mLock);
    return extras->mObjects.find(objectID);
}

void BBinder::detachObject(const void* objectID) {
    Extras* const extras = mExtras.load(std::memory_order_acquire);
    if (extras == nullptr) return;
    Mutex::Autolock lock(extras->mLock);
    extras->mObjects.detach(objectID);
}

BBinder* BBinder::localBinder() {
    return this;
}

bool BBinder::isRequestingSid() {
    const Extras* const extras = mExtras.load(std::memory_order_acquire);
    return extras != nullptr && extras->mRequestingSid;
}

void BBinder::setRequestingSid(bool requestSid) {
    if (requestSid || isRequestingSid()) getOrCreateExtras()->mRequestingSid = requestSid;
}

sp<IBinder> BBinder::getExtension() {
    const Extras* const extras = mExtras.load(std::memory_order_acquire);
    return extras != nullptr ? extras->mExtension : nullptr;
}

void BBinder::setExtension(const sp<IBinder>& extension) {
    getOrCreateExtras()->mExtension = extension;
}

pid_t BBinder::getDebugPid() {
    return getpid();
}

// The proxy keeps the object alive for as long as it is itself referenced strongly. It is never
// brought back by a promotion, so the remote needs no weak reference and no state.
BpRefBase::BpRefBase(const sp<IBinder>& o) : mRemote(o.get()), mRefs(nullptr), mState(0) {
    static_cast<void>(mRefs);
    if (mRemote != nullptr) mRemote->incStrong(this);
}

BpRefBase::~BpRefBase() {
    if (mRemote != nullptr) mRemote->decStrong(this);
}

void BpRefBase::onFirstRef() {}

void BpRefBase::onLastStrongRef(const void*) {}

bool BpRefBase::onIncStrongAttempted(uint32_t flags, const void* id) {
    return RefBase::onIncStrongAttempted(flags, id);
}

IInterface::IInterface() = default;
IInterface::~IInterface() = default;

sp<IBinder> IInterface::asBinder(const IInterface* iface) {
    if (iface == nullptr) return nullptr;
    return const_cast<IInterface*>(iface)->onAsBinder();
}

sp<IBinder> IInterface::asBinder(const sp<IInterface>& iface) {
    return asBinder(iface.get());
}

}  // namespace android
