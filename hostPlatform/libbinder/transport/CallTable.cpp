// SPDX-License-Identifier: Apache-2.0
#include "CallTable.h"

namespace android::transport {

bool CallTable::nest(uint64_t id, const std::shared_ptr<IncomingCall>& call) {
    const auto at = mCalls.find(id);
    if (at == mCalls.end() || at->second->done) return false;
    at->second->nested.push_back(call);
    at->second->changed.signal();
    return true;
}

bool CallTable::settle(const std::shared_ptr<Link>& link, Message* reply) {
    const auto at = mCalls.find(reply->id);
    if (at == mCalls.end() || at->second->link != link || at->second->done) return false;
    at->second->done = true;
    at->second->status = reply->status;
    at->second->reply = std::move(reply->payload);
    at->second->changed.signal();
    return true;
}

void CallTable::fail(const std::shared_ptr<Link>& link) {
    for (const auto& [id, call] : mCalls) {
        if (call->link != link || call->done) continue;
        call->done = true;
        call->status = DEAD_OBJECT;
        call->changed.signal();
    }
}

}  // namespace android::transport
