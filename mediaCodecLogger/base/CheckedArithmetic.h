// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

namespace android {

// For the analysis of frames: a latency that wrapped would lead the reader of the log astray, so
// overflow ends the process instead, through the platform's fatal log.

[[noreturn]] void dieOfOverflow(int64_t a, char operation, int64_t b);

inline int64_t checkedAdd(int64_t a, int64_t b) {
    int64_t result;
    if (__builtin_add_overflow(a, b, &result)) dieOfOverflow(a, '+', b);
    return result;
}

inline int64_t checkedSub(int64_t a, int64_t b) {
    int64_t result;
    if (__builtin_sub_overflow(a, b, &result)) dieOfOverflow(a, '-', b);
    return result;
}

inline int64_t checkedMul(int64_t a, int64_t b) {
    int64_t result;
    if (__builtin_mul_overflow(a, b, &result)) dieOfOverflow(a, '*', b);
    return result;
}

/** For counts and sizes: the sum in the type of `a`. */
template <typename T>
T checkedCount(T a, T b) {
    T result;
    if (__builtin_add_overflow(a, b, &result)) {
        dieOfOverflow(static_cast<int64_t>(a), '+', static_cast<int64_t>(b));
    }
    return result;
}

}  // namespace android
