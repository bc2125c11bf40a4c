// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

namespace android {

// For the measurements of a session: timestamps come from the media and may be anything, and an odd
// number in a report is better than an end of the process.

constexpr int64_t wrapAdd(int64_t a, int64_t b) {
    return static_cast<int64_t>(static_cast<uint64_t>(a) + static_cast<uint64_t>(b));
}

constexpr int64_t wrapSub(int64_t a, int64_t b) {
    return static_cast<int64_t>(static_cast<uint64_t>(a) - static_cast<uint64_t>(b));
}

/** Adds to a 32-bit counter; the upper half of `n` is dropped. */
constexpr int32_t wrapAdd32(int32_t a, uint64_t n) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(n));
}

}  // namespace android
