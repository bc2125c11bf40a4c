// SPDX-License-Identifier: Apache-2.0
#include "ParcelCodec.h"

#include <binder/BpBinder.h>
#include <binder/ProcessState.h>
#include <fcntl.h>
#include <string.h>

#include "../FlatObject.h"

namespace android::transport {

namespace {

// Where the objects lie in a Parcel is private to it, and its header, which is not ours, names no
// friend that the transport could be. An explicit instantiation may name private members.
template <typename Tag, typename Tag::Member kMember>
struct Reveal {
    friend typename Tag::Member member(Tag) { return kMember; }
};
struct ParcelSize {
    using Member = size_t Parcel::*;
    friend Member member(ParcelSize);
};
struct ParcelObjects {
    using Member = binder_size_t* Parcel::*;
    friend Member member(ParcelObjects);
};
template struct Reveal<ParcelSize, &Parcel::mDataSize>;
template struct Reveal<ParcelObjects, &Parcel::mObjects>;

flat_binder_object flatAt(const Payload& payload, uint32_t offset) {
    flat_binder_object flat;
    memcpy(&flat, payload.data.data() + offset, sizeof(flat));
    return flat;
}

sp<IBinder> objectOf(const flat_binder_object& flat) {
    if (flat.type == kTypeHandle) {
        return ProcessState::self()->getStrongProxyForHandle(static_cast<int32_t>(flat.binder));
    }
    return reinterpret_cast<BBinder*>(static_cast<uintptr_t>(flat.cookie));
}

}  // namespace

status_t encodeParcel(const Parcel& parcel, ObjectSpace* objects, Payload* payload, Pins* pins) {
    const size_t size = parcel.*member(ParcelSize());
    const binder_size_t* const offsets = parcel.*member(ParcelObjects());
    if (size > kTransactionSpace) return FAILED_TRANSACTION;
    payload->data.assign(parcel.data(), parcel.data() + size);
    for (size_t i = 0; i < parcel.objectsCount(); i++) {
        Payload::Object entry;
        entry.offset = static_cast<uint32_t>(offsets[i]);
        flat_binder_object flat = flatAt(*payload, entry.offset);
        if (flat.type == kTypeFd) {
            base::unique_fd copy(fcntl(static_cast<int>(flat.binder), F_DUPFD_CLOEXEC, 0));
            if (copy.get() < 0 || payload->fds.size() == kMaxFds) return FAILED_TRANSACTION;
            payload->fds.push_back(std::move(copy));
        } else {
            const sp<IBinder> object = objectOf(flat);
            if (object == nullptr || !objects->addressOf(object, &entry.address, pins)) {
                return FAILED_TRANSACTION;
            }
            flat.type = kTypeHandle;
        }
        flat.binder = 0;
        flat.cookie = 0;
        memcpy(payload->data.data() + entry.offset, &flat, sizeof(flat));
        payload->objects.push_back(entry);
    }
    return NO_ERROR;
}

status_t decodeParcel(Payload* payload, ObjectSpace* objects,
                      const std::shared_ptr<Receipt>& receipt, Parcel* parcel) {
    if (const status_t err = parcel->setData(payload->data.data(), payload->data.size());
        err != NO_ERROR) {
        return err;
    }
    auto nextFd = payload->fds.begin();
    for (const Payload::Object& entry : payload->objects) {
        flat_binder_object flat = flatAt(*payload, entry.offset);
        sp<IBinder> object;
        if (flat.type == kTypeFd) {
            flat.binder = static_cast<uint32_t>((nextFd++)->release());
            flat.cookie = 1;
        } else {
            object = objects->resolve(entry.address, receipt);
            if (object == nullptr) return FAILED_TRANSACTION;
            BBinder* const local = object->localBinder();
            flat.type = local != nullptr ? kTypeBinder : kTypeHandle;
            flat.binder = local != nullptr
                                  ? reinterpret_cast<uintptr_t>(local->getWeakRefs())
                                  : static_cast<uint32_t>(object->remoteBinder()->handle());
            flat.cookie = reinterpret_cast<uintptr_t>(local);
        }
        parcel->setDataPosition(entry.offset);
        if (const status_t err = parcel->writeObject(flat, true); err != NO_ERROR) return err;
    }
    parcel->setDataPosition(0);
    return NO_ERROR;
}

}  // namespace android::transport
