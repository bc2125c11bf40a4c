// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>

#include "Link.h"

namespace android::transport {

/**
 * The objects of this process that others know, each under a number that is never used twice. An
 * object stays here, and alive, while it has uses or serves a one-way call. Not thread-safe.
 */
class ExportTable {
  public:
    /** Adds a use to |object|, which gets a number if it has none; returns the number. */
    uint64_t hold(const sp<BBinder>& object);

    /** Adds a use; false if there is no such object. */
    bool hold(uint64_t id);

    /** Takes |count| uses away. */
    void letGo(uint64_t id, uint32_t count, Trash* trash);

    /** Null if there is no such object. */
    std::shared_ptr<Export> find(uint64_t id) const;

    /** Lets |entry| go if nothing keeps it. */
    void sweep(const std::shared_ptr<Export>& entry, Trash* trash);

  private:
    std::map<uint64_t, std::shared_ptr<Export>> mById;
    std::map<BBinder*, uint64_t> mIds;
    uint64_t mNextId = 1;
};

}  // namespace android::transport
