// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <utils/Errors.h>

namespace android::hostplatform {

/**
 * Makes ColorUtils::convertCodecColorAspectsToPlatformAspects() return this status; its results
 * are written all the same. NO_ERROR, the default, gives its own status back. Thread-safe.
 */
void setColorConversionFailure(status_t status);

}  // namespace android::hostplatform
