// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

namespace android {

/** Resolution classes of streams and displays, by width: from 1280 HD, 1920 FHD, 3840 UHD. */
enum ResolutionType { RES_SD = 0, RES_HD, RES_FHD, RES_UHD, MAX_RES_TYPES };

constexpr ResolutionType resolutionOf(uint32_t width) {
    return width >= 3840 ? RES_UHD : width >= 1920 ? RES_FHD : width >= 1280 ? RES_HD : RES_SD;
}

}  // namespace android
