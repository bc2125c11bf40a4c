// SPDX-License-Identifier: Apache-2.0
// What the sources of the binder interfaces share; private to them.
#pragma once

#include <stdint.h>

#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <binder/IBinder.h>
#include <binder/IInterface.h>
#include <binder/Parcel.h>
#include <binder/Status.h>
#include <utils/String16.h>
#include <utils/String8.h>

/**
 * Defines what DECLARE_META_INTERFACE declares. The platform's own macro for this refuses
 * interfaces that are not on its list, and keeps the first default implementation in some builds
 * and the last one in others; here the last one counts.
 */
#define DEFINE_META_INTERFACE(NAME, DESCRIPTOR)                                                    \
    const ::android::String16 I##NAME::descriptor(DESCRIPTOR);                                     \
    std::unique_ptr<I##NAME> I##NAME::default_impl;                                                \
    I##NAME::I##NAME() {}                                                                          \
    I##NAME::~I##NAME() {}                                                                         \
    const ::android::String16& I##NAME::getInterfaceDescriptor() const {                           \
        return descriptor;                                                                         \
    }                                                                                              \
    ::android::sp<I##NAME> I##NAME::asInterface(const ::android::sp<::android::IBinder>& binder) { \
        return ::android::wire::localOrProxy<I##NAME, Bp##NAME>(binder);                           \
    }                                                                                              \
    bool I##NAME::setDefaultImpl(std::unique_ptr<I##NAME> impl) {                                  \
        if (!impl) return false;                                                                   \
        default_impl = std::move(impl);                                                            \
        return true;                                                                               \
    }                                                                                              \
    const std::unique_ptr<I##NAME>& I##NAME::getDefaultImpl() {                                    \
        return default_impl;                                                                       \
    }

namespace android::wire {

template <typename Interface, typename Proxy>
sp<Interface> localOrProxy(const sp<IBinder>& binder) {
    if (binder == nullptr) return nullptr;
    sp<Interface> local =
            static_cast<Interface*>(binder->queryLocalInterface(Interface::descriptor).get());
    return local != nullptr ? local : sp<Interface>(new Proxy(binder));
}

/** A text that is sent as bytes up to a NUL, without its length; null is sent as "". */
struct CText {
    const char* text;
};

inline status_t write(Parcel* parcel, int32_t value) {
    return parcel->writeInt32(value);
}
inline status_t write(Parcel* parcel, int64_t value) {
    return parcel->writeInt64(value);
}
inline status_t write(Parcel* parcel, bool value) {
    return parcel->writeBool(value);
}
inline status_t write(Parcel* parcel, const String8& value) {
    return parcel->writeString8(value);
}
inline status_t write(Parcel* parcel, CText value) {
    return parcel->writeCString(value.text != nullptr ? value.text : "");
}
inline status_t write(Parcel* parcel, const std::vector<int64_t>& value) {
    return parcel->writeInt64Vector(value);
}
inline status_t write(Parcel* parcel, const std::unique_ptr<std::string>& value) {
    return parcel->writeUtf8AsUtf16(value);
}
inline status_t write(Parcel* parcel, const std::vector<std::string>& value) {
    return parcel->writeUtf8VectorAsUtf16Vector(value);
}
template <typename Interface>
status_t write(Parcel* parcel, const sp<Interface>& value) {
    return parcel->writeStrongBinder(IInterface::asBinder(value));
}

inline status_t read(const Parcel& parcel, int32_t* value) {
    return parcel.readInt32(value);
}
inline status_t read(const Parcel& parcel, int64_t* value) {
    return parcel.readInt64(value);
}
inline status_t read(const Parcel& parcel, bool* value) {
    return parcel.readBool(value);
}
/**
 * Refuses a list that announces more elements of at least `size` bytes than the parcel still holds.
 * The platform would make room for them all before it looks for the first, which ends a process
 * that has no exceptions: any peer could do that to the service, to an observer and to a codec.
 */
inline status_t checkCount(const Parcel& parcel, size_t size) {
    const size_t start = parcel.dataPosition();
    int32_t count = 0;
    const status_t status = parcel.readInt32(&count);
    const bool fits = count <= 0 || static_cast<size_t>(count) <= parcel.dataAvail() / size;
    parcel.setDataPosition(start);
    // A count that is missing or negative has its own error.
    return status != OK || fits ? status_t{OK} : status_t{NOT_ENOUGH_DATA};
}
inline status_t read(const Parcel& parcel, std::vector<int64_t>* value) {
    const status_t status = checkCount(parcel, sizeof(int64_t));
    return status == OK ? parcel.readInt64Vector(value) : status;
}
inline status_t read(const Parcel& parcel, std::unique_ptr<std::string>* value) {
    return parcel.readUtf8FromUtf16(value);
}
inline status_t read(const Parcel& parcel, std::vector<std::string>* value) {
    constexpr size_t kEmptyText = 8;  // its length, and a terminator of as many bytes
    const status_t status = checkCount(parcel, kEmptyText);
    return status == OK ? parcel.readUtf8VectorFromUtf16Vector(value) : status;
}
template <typename Interface>
status_t read(const Parcel& parcel, sp<Interface>* value) {
    return parcel.readStrongBinder(value);
}

/** Reads the values in order; stops at the first that fails and returns its error. */
template <typename... Values>
status_t readAll(const Parcel& parcel, Values*... values) {
    status_t status = OK;
    (void)(((status = read(parcel, values)) == OK) && ...);
    return status;
}

/** Sends one request: the token of `descriptor`, then the arguments in order. */
template <typename... Arguments>
status_t transact(IBinder* remote, const String16& descriptor, uint32_t code, uint32_t flags,
                  Parcel* reply, const Arguments&... arguments) {
    Parcel data;
    status_t status = data.writeInterfaceToken(descriptor);
    if (status != OK) return status;
    (void)(((status = write(&data, arguments)) == OK) && ...);
    return status == OK ? remote->transact(code, data, reply, flags) : status;
}

}  // namespace android::wire
