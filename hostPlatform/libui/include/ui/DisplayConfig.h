// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <utils/Timers.h>

#include <type_traits>

#include <ui/Size.h>

namespace android {

/** A mode of a display. */
struct DisplayConfig {
    ui::Size resolution;
    float xDpi = 0;
    float yDpi = 0;
    float refreshRate = 0;
    nsecs_t appVsyncOffset = 0;
    nsecs_t sfVsyncOffset = 0;
    nsecs_t presentationDeadline = 0;
    int configGroup = -1;
};

static_assert(std::is_trivially_copyable_v<DisplayConfig>);

}  // namespace android
