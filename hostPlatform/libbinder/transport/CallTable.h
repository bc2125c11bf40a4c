// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <utils/Condition.h>

#include <deque>
#include <map>
#include <memory>

#include "Link.h"

namespace android::transport {

/** The two-way calls that threads of this process wait for. Guarded by the router's lock. */
class CallTable {
  public:
    struct Call {
        explicit Call(const std::shared_ptr<Link>& l) : link(l) {}

        const std::shared_ptr<Link> link;
        bool done = false;
        status_t status = NO_ERROR;
        Payload reply;
        /** Calls that are nested in this one, which the thread that waits serves. */
        std::deque<std::shared_ptr<IncomingCall>> nested;
        Condition changed;
    };

    void add(uint64_t id, Call* call) { mCalls[id] = call; }
    void remove(uint64_t id) { mCalls.erase(id); }

    /** Gives `call` to the thread that waits for `id`; false if none does. */
    bool nest(uint64_t id, const std::shared_ptr<IncomingCall>& call);

    /** Ends the call that `reply` answers; false if none on `link` waits for it. */
    bool settle(const std::shared_ptr<Link>& link, Message* reply);

    /** Fails the calls on `link` whose reply has not come. */
    void fail(const std::shared_ptr<Link>& link);

  private:
    std::map<uint64_t, Call*> mCalls;
};

}  // namespace android::transport
