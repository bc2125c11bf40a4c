// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Link.h"

#include <binder/BpBinder.h>

#include <map>
#include <vector>

namespace android::transport {

/**
 * The objects of other processes that this one has proxies for. While the proxy of an object lives,
 * that object has no other. Not thread-safe; proxies that it returns must not be dropped under the
 * router's lock.
 */
class HandleTable {
  public:
    struct Entry {
        std::shared_ptr<Link> link;  // null for an object that was dead when it came
        uint64_t object = 0;
        wp<BpBinder> proxy;
        /** The request for the object on the link, 0 once it was answered. */
        uint64_t acquisition = 0;
    };

    /** Makes the proxy of |object|. */
    sp<BpBinder> add(const std::shared_ptr<Link>& link, uint64_t object);

    /** The living proxy, or null. */
    sp<BpBinder> proxyOf(const std::shared_ptr<Link>& link, uint64_t object) const;
    sp<BpBinder> proxyOf(int32_t handle) const;

    /** Null if there is no such handle. */
    const Entry* find(int32_t handle) const;
    Entry* find(int32_t handle);

    void remove(int32_t handle);

    std::vector<sp<BpBinder>> proxiesOn(const std::shared_ptr<Link>& link) const;

  private:
    using Key = std::pair<const Link*, uint64_t>;

    std::map<int32_t, Entry> mEntries;
    std::map<Key, int32_t> mHandles;
    int32_t mNextHandle = 1;  // 0 is the service manager's on a device
};

}  // namespace android::transport
