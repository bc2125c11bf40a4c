// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <limits>
#include <memory>

#include <binder/Parcel.h>

#include "Link.h"

namespace android::transport {

/** Knows the objects of this process and of others. Thread-safe. */
class ObjectSpace {
  public:
    /** How other processes call |object|; adds to |pins| what keeps that true. False if they
     * cannot. */
    virtual bool addressOf(const sp<IBinder>& object, ObjectAddress* address, Pins* pins) = 0;

    /**
     * The object at |address|: our own, or a proxy, which may be that of a dead object; null if it
     * would be one of ours that does not exist. |receipt| then waits until it is acquired.
     */
    virtual sp<IBinder> resolve(const ObjectAddress& address,
                                const std::shared_ptr<Receipt>& receipt) = 0;

  protected:
    ~ObjectSpace() = default;
};

/** Makes of a Parcel what travels. */
status_t encodeParcel(const Parcel& parcel, ObjectSpace* objects, Payload* payload, Pins* pins);

/** Makes a Parcel, which then has the payload's descriptors. */
status_t decodeParcel(Payload* payload, ObjectSpace* objects,
                      const std::shared_ptr<Receipt>& receipt, Parcel* parcel);

}  // namespace android::transport
