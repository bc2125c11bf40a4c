// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

namespace android::ui {

/** A width and a height; (-1, -1) where there is none. */
struct Size {
    int32_t width = -1;
    int32_t height = -1;

    Size() = default;
    Size(int32_t w, int32_t h) : width(w), height(h) {}

    int32_t getWidth() const { return width; }
    int32_t getHeight() const { return height; }
    bool isValid() const { return width >= 0 && height >= 0; }

    bool operator==(const Size& other) const {
        return width == other.width && height == other.height;
    }
    bool operator!=(const Size& other) const { return !(*this == other); }
};

}  // namespace android::ui
