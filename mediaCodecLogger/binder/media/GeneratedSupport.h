// SPDX-License-Identifier: Apache-2.0
// The rules of the platform's interface generator that both interfaces here share; private to them.
#pragma once

#include <mediaCodecLogger/binder/InterfaceSupport.h>

namespace android::media {

/** Sends a call whose reply has no out-value; `method` is what the default implementation does. */
template <typename Proxy, typename Interface, typename... Parameters, typename... Arguments>
binder::Status callForStatus(const Proxy& proxy, IBinder* remote, uint32_t code, uint32_t flags,
                             binder::Status (Interface::*method)(Parameters...),
                             const Arguments&... arguments) {
    Parcel reply;
    const status_t result = wire::transact(remote, proxy.getInterfaceDescriptor(), code, flags,
                                           &reply, arguments...);
    if (result == UNKNOWN_TRANSACTION && Interface::getDefaultImpl()) {
        return (Interface::getDefaultImpl().get()->*method)(arguments...);
    }
    binder::Status status = binder::Status::fromStatusT(result);
    if (status.isOk() && (flags & IBinder::FLAG_ONEWAY) == 0) status.readFromParcel(reply);
    return status;
}

/** Sends a two-way call and reads its out-value, which stays as it was unless all went well. */
template <typename Proxy, typename Interface, typename... Parameters, typename Result,
          typename... Arguments>
binder::Status callForResult(const Proxy& proxy, IBinder* remote, uint32_t code,
                             binder::Status (Interface::*method)(Parameters...), Result* result,
                             const Arguments&... arguments) {
    Parcel reply;
    const status_t sent =
            wire::transact(remote, proxy.getInterfaceDescriptor(), code, 0, &reply, arguments...);
    if (sent == UNKNOWN_TRANSACTION && Interface::getDefaultImpl()) {
        return (Interface::getDefaultImpl().get()->*method)(arguments..., result);
    }
    binder::Status status = binder::Status::fromStatusT(sent);
    if (status.isOk()) status.readFromParcel(reply);
    return status.isOk() ? binder::Status::fromStatusT(wire::read(reply, result)) : status;
}

/** Writes how a method went and, only if it went well, its out-value. */
template <typename Result>
status_t writeAnswer(Parcel* reply, const binder::Status& status, const Result& result) {
    const status_t written = status.writeToParcel(reply);
    return written == OK && status.isOk() ? wire::write(reply, result) : written;
}

/** The end of every stub: a null where none may be is an exception of the caller's. */
inline status_t nullAsException(status_t result, Parcel* reply) {
    if (result != UNEXPECTED_NULL) return result;
    return binder::Status::fromExceptionCode(binder::Status::EX_NULL_POINTER).writeToParcel(reply);
}

}  // namespace android::media
