// SPDX-License-Identifier: Apache-2.0
// Parcel's binder objects and the interface token that opens every request.
#define LOG_TAG "Parcel"

#include <limits>
#include <memory>

#include <binder/BpBinder.h>
#include <binder/IPCThreadState.h>
#include <binder/Parcel.h>
#include <binder/ProcessState.h>
#include <binder/Stability.h>
#include <binder/Status.h>

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>

#include <log/log.h>

#include "FlatObject.h"

namespace android {

namespace {

constexpr int32_t kTokenHeader = B_PACK_CHARS('S', 'Y', 'S', 'T');
// Set in the first word of every token: whoever serves the call gathers strict-mode violations.
constexpr uint32_t kStrictModeGather = 0x80000000u;

flat_binder_object flatObjectAt(const uint8_t* at) {
    flat_binder_object flat;
    memcpy(&flat, at, sizeof(flat));
    return flat;
}

// The object that |flat| stands for, null if it stands for none.
sp<IBinder> binderOf(const flat_binder_object& flat) {
    if (flat.type == kTypeFd) return nullptr;
    if (flat.type == kTypeBinder) {
        return reinterpret_cast<BBinder*>(static_cast<uintptr_t>(flat.cookie));
    }
    return ProcessState::self()->getStrongProxyForHandle(static_cast<int32_t>(flat.binder));
}

}  // namespace

void acquireFlatObject(const uint8_t* at, const void* owner) {
    const sp<IBinder> binder = binderOf(flatObjectAt(at));
    if (binder != nullptr) binder->incStrong(owner);
}

void releaseFlatObject(const uint8_t* at, const void* owner) {
    const sp<IBinder> binder = binderOf(flatObjectAt(at));
    if (binder != nullptr) binder->decStrong(owner);
    const flat_binder_object flat = flatObjectAt(at);
    if (flat.type == kTypeFd && flat.cookie != 0) close(static_cast<int>(flat.binder));
}

void Parcel::releaseObjects() {
    for (size_t i = 0; i < mObjectsSize; i++) releaseFlatObject(mData + mObjects[i], this);
    mObjectsSize = 0;
}

status_t Parcel::writeObject(const flat_binder_object& val, bool nullMetaData) {
    if (const status_t err = growData(sizeof(val)); err != NO_ERROR) return err;
    memcpy(mData + mDataPos, &val, sizeof(val));
    if (nullMetaData || val.binder != 0) {
        if (mObjectsSize == mObjectsCapacity) {
            const size_t capacity = mObjectsCapacity + mObjectsCapacity / 2 + 4;
            void* const grown = realloc(mObjects, capacity * sizeof(binder_size_t));
            if (grown == nullptr) return NO_MEMORY;
            mObjects = static_cast<binder_size_t*>(grown);
            mObjectsCapacity = capacity;
        }
        binder_size_t* const end = mObjects + mObjectsSize;
        binder_size_t* const at =
                std::lower_bound<binder_size_t*, binder_size_t>(mObjects, end, mDataPos);
        memmove(at + 1, at, (end - at) * sizeof(binder_size_t));
        *at = mDataPos;
        mObjectsSize++;
        acquireFlatObject(mData + mDataPos, this);
    }
    return finishWrite(sizeof(val));
}

const flat_binder_object* Parcel::readObject(bool nullMetaData) const {
    if (sizeof(flat_binder_object) > dataAvail()) return nullptr;
    const size_t start = mDataPos;
    const auto* const flat = reinterpret_cast<const flat_binder_object*>(mData + start);
    mDataPos += sizeof(flat_binder_object);
    if (!nullMetaData && flat->binder == 0 && flat->cookie == 0) return flat;
    if (std::binary_search(mObjects, mObjects + mObjectsSize, binder_size_t{start})) return flat;
    ALOGW("Attempt to read object from Parcel %p at offset %zu that is not in the object list",
          this, start);
    return nullptr;
}

status_t Parcel::flattenBinder(const sp<IBinder>& binder) {
    flat_binder_object flat = {kTypeBinder, kFlatAcceptsFds, 0, 0};
    if (!IPCThreadState::self()->backgroundSchedulingDisabled()) flat.flags |= kFlatMinPriority;
    if (binder == nullptr) return finishFlattenBinder(binder, flat);

    if (BBinder* const local = binder->localBinder(); local != nullptr) {
        if (local->isRequestingSid()) flat.flags |= kFlatSecurityContext;
        flat.binder = reinterpret_cast<uintptr_t>(local->getWeakRefs());
        flat.cookie = reinterpret_cast<uintptr_t>(local);
    } else if (BpBinder* const proxy = binder->remoteBinder(); proxy != nullptr) {
        flat.type = kTypeHandle;
        flat.binder = static_cast<uint32_t>(proxy->handle());
    } else {
        ALOGE("Only a BBinder or a BpBinder can be written to a Parcel");
        return BAD_TYPE;
    }
    return finishFlattenBinder(binder, flat);
}

status_t Parcel::finishFlattenBinder(const sp<IBinder>& binder, const flat_binder_object& flat) {
    if (const status_t err = writeObject(flat, false); err != NO_ERROR) return err;
    if (binder == nullptr) return writeInt32(internal::Stability::UNDECLARED);
    internal::Stability::tryMarkCompilationUnit(binder.get());
    return writeInt32(internal::Stability::get(binder.get()));
}

status_t Parcel::unflattenBinder(sp<IBinder>* out) const {
    const flat_binder_object* const flat = readObject(false);
    if (flat == nullptr || (flat->type != kTypeBinder && flat->type != kTypeHandle))
        return BAD_TYPE;
    return finishUnflattenBinder(binderOf(*flat), out);
}

status_t Parcel::finishUnflattenBinder(const sp<IBinder>& binder, sp<IBinder>* out) const {
    int32_t stability;
    if (const status_t err = readInt32(&stability); err != NO_ERROR) return err;
    if (binder != nullptr) {
        const status_t err = internal::Stability::set(binder.get(), stability, true /*log*/);
        if (err != NO_ERROR) return err;
    }
    *out = binder;
    return NO_ERROR;
}

status_t Parcel::writeFileDescriptor(int fd, bool takeOwnership) {
    const flat_binder_object flat = {kTypeFd, kFlatAcceptsFds | kFlatFdPriority,
                                     static_cast<uint32_t>(fd), takeOwnership};
    return writeObject(flat, true);
}

status_t Parcel::writeDupFileDescriptor(int fd) {
    const int copy = fcntl(fd, F_DUPFD_CLOEXEC, 0);
    if (copy < 0) return -errno;
    const status_t err = writeFileDescriptor(copy, true /*takeOwnership*/);
    if (err != NO_ERROR) close(copy);
    return err;
}

int Parcel::readFileDescriptor() const {
    const flat_binder_object* const flat = readObject(true);
    return flat != nullptr && flat->type == kTypeFd ? static_cast<int>(flat->binder) : BAD_TYPE;
}

status_t Parcel::readUniqueFileDescriptor(base::unique_fd* val) const {
    const int fd = readFileDescriptor();
    if (fd == BAD_TYPE) return BAD_TYPE;
    val->reset(fcntl(fd, F_DUPFD_CLOEXEC, 0));
    return val->get() >= 0 ? status_t{NO_ERROR} : status_t{BAD_VALUE};
}

status_t Parcel::writeStrongBinder(const sp<IBinder>& val) {
    return flattenBinder(val);
}

status_t Parcel::readNullableStrongBinder(sp<IBinder>* val) const {
    return unflattenBinder(val);
}

status_t Parcel::readStrongBinder(sp<IBinder>* val) const {
    const status_t err = readNullableStrongBinder(val);
    return err == NO_ERROR && *val == nullptr ? status_t{UNEXPECTED_NULL} : err;
}

sp<IBinder> Parcel::readStrongBinder() const {
    sp<IBinder> binder;
    readNullableStrongBinder(&binder);
    return binder;
}

void Parcel::updateWorkSourceRequestHeaderPosition() const {
    if (mRequestHeaderPresent) return;
    mWorkSourceRequestHeaderPosition = dataPosition();
    mRequestHeaderPresent = true;
}

status_t Parcel::writeInterfaceToken(const String16& interface) {
    const IPCThreadState* const thread = IPCThreadState::self();
    const uint32_t policy = static_cast<uint32_t>(thread->getStrictModePolicy());
    writeInt32(static_cast<int32_t>(policy | kStrictModeGather));
    updateWorkSourceRequestHeaderPosition();
    writeInt32(thread->shouldPropagateWorkSource()
                       ? static_cast<int32_t>(thread->getCallingWorkSourceUid())
                       : IPCThreadState::kUnsetWorkSource);
    writeInt32(kTokenHeader);
    return writeString16(interface);
}

bool Parcel::checkInterface(IBinder* binder) const {
    return enforceInterface(binder->getInterfaceDescriptor());
}

bool Parcel::enforceInterface(const String16& interface, IPCThreadState* thread) const {
    if (thread == nullptr) thread = IPCThreadState::self();
    const int32_t policy = readInt32();
    const bool oneway = thread->getLastTransactionBinderFlags() & IBinder::FLAG_ONEWAY;
    thread->setStrictModePolicy(oneway ? 0
                                       : policy);  // nobody waits for what a one-way call gathers
    updateWorkSourceRequestHeaderPosition();
    thread->setCallingWorkSourceUidWithoutPropagation(static_cast<uid_t>(readInt32()));

    if (const int32_t header = readInt32(); header != kTokenHeader) {
        ALOGE("Expecting header 0x%x but found 0x%x. Mixing copies of libbinder?", kTokenHeader,
              header);
        return false;
    }
    const String16 found = readString16();
    if (found == interface) return true;
    ALOGW("**** enforceInterface() expected '%s' but read '%s'", String8(interface).string(),
          String8(found).string());
    return false;
}

bool Parcel::replaceCallingWorkSourceUid(uid_t uid) {
    if (!mRequestHeaderPresent) return false;
    const size_t position = dataPosition();
    setDataPosition(mWorkSourceRequestHeaderPosition);
    const status_t err = writeInt32(static_cast<int32_t>(uid));
    setDataPosition(position);
    return err == NO_ERROR;
}

uid_t Parcel::readCallingWorkSourceUid() const {
    if (!mRequestHeaderPresent) return static_cast<uid_t>(IPCThreadState::kUnsetWorkSource);
    const size_t position = dataPosition();
    setDataPosition(mWorkSourceRequestHeaderPosition);
    const uid_t uid = static_cast<uid_t>(readInt32());
    setDataPosition(position);
    return uid;
}

status_t Parcel::writeNoException() {
    return binder::Status().writeToParcel(this);
}

int32_t Parcel::readExceptionCode() const {
    binder::Status status;
    status.readFromParcel(*this);
    return status.exceptionCode();
}

}  // namespace android
