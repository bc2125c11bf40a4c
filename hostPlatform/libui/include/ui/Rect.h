// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

namespace android {

/** A rectangle whose right and bottom edges lie outside; empty but valid as (0, 0, 0, 0). */
struct Rect {
    int32_t left = 0;
    int32_t top = 0;
    int32_t right = 0;
    int32_t bottom = 0;

    Rect() = default;
    Rect(int32_t w, int32_t h) : right(w), bottom(h) {}
    Rect(int32_t l, int32_t t, int32_t r, int32_t b) : left(l), top(t), right(r), bottom(b) {}

    int32_t getWidth() const { return right - left; }
    int32_t getHeight() const { return bottom - top; }
};

}  // namespace android
