// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace android::bench {

/**
 * The heap as the calling thread used it: the executable's malloc family counts and passes on to
 * the C library's. Bytes are usable sizes, so they include what the allocator rounds up.
 */
struct HeapUse {
    int64_t allocations = 0;
    /** Allocated less freed. */
    int64_t bytes = 0;

    HeapUse operator-(const HeapUse& other) const {
        return {allocations - other.allocations, bytes - other.bytes};
    }
};

/** Since the thread started. */
HeapUse heapUse();

}  // namespace android::bench
