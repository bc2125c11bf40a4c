// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

namespace android {

using PhysicalDisplayId = uint64_t;

}  // namespace android
