// SPDX-License-Identifier: Apache-2.0
#include "HandleTable.h"

namespace android::transport {

sp<BpBinder> HandleTable::add(const std::shared_ptr<Link>& link, uint64_t object) {
    while (mEntries.count(mNextHandle) != 0) {
        mNextHandle = mNextHandle == INT32_MAX ? 1 : mNextHandle + 1;
    }
    const sp<BpBinder> proxy = BpBinder::create(mNextHandle);
    mEntries[mNextHandle] = {link, object, proxy, 0};
    if (link != nullptr) mHandles[Key(link.get(), object)] = mNextHandle;
    return proxy;
}

sp<BpBinder> HandleTable::proxyOf(const std::shared_ptr<Link>& link, uint64_t object) const {
    const auto at = mHandles.find(Key(link.get(), object));
    return at != mHandles.end() ? proxyOf(at->second) : nullptr;
}

sp<BpBinder> HandleTable::proxyOf(int32_t handle) const {
    const Entry* const entry = find(handle);
    return entry != nullptr ? entry->proxy.promote() : nullptr;
}

const HandleTable::Entry* HandleTable::find(int32_t handle) const {
    const auto at = mEntries.find(handle);
    return at != mEntries.end() ? &at->second : nullptr;
}

HandleTable::Entry* HandleTable::find(int32_t handle) {
    const auto at = mEntries.find(handle);
    return at != mEntries.end() ? &at->second : nullptr;
}

void HandleTable::remove(int32_t handle) {
    const auto at = mEntries.find(handle);
    if (at == mEntries.end()) return;
    const auto named = mHandles.find(Key(at->second.link.get(), at->second.object));
    // A later proxy may have taken the place of this one already.
    if (named != mHandles.end() && named->second == handle) mHandles.erase(named);
    mEntries.erase(at);
}

std::vector<sp<BpBinder>> HandleTable::proxiesOn(const std::shared_ptr<Link>& link) const {
    std::vector<sp<BpBinder>> proxies;
    for (const auto& [handle, entry] : mEntries) {
        if (entry.link != link) continue;
        sp<BpBinder> proxy = entry.proxy.promote();
        if (proxy != nullptr) proxies.push_back(std::move(proxy));
    }
    return proxies;
}

}  // namespace android::transport
